#include "OvObservers.h"

#include <rnlib/RnLogFile.h>

#include <exception>

void ovLogException(const char* inContext, const char* inWhat)
{
    try {
        throw;
    } catch (const std::exception& failure) {
        getTheLogInstance().tracef(3, inContext, "%s failed: %s", inWhat, failure.what());
    } catch (...) {
        getTheLogInstance().tracef(3, inContext, "%s failed", inWhat);
    }
}

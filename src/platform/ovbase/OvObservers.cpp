#include "OvObservers.h"

#include <rnlib/RnLogFile.h>

#include <exception>

namespace {

constexpr const char* LogContext = "OvPropertyPool";

} // namespace

void ovLogException(const char* inWhat)
{
    try {
        throw;
    } catch (const std::exception& failure) {
        getTheLogInstance().tracef(3, LogContext, "%s failed: %s", inWhat, failure.what());
    } catch (...) {
        getTheLogInstance().tracef(3, LogContext, "%s failed", inWhat);
    }
}

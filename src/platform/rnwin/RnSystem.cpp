// What this system has of the ports.

#include "RnCom.h"
#include "RnWindows.h"

#ifdef _WIN32
#include "RnWin32Com.h"
#include "RnWin32Windows.h"

std::unique_ptr<RnWindows> RnWindows::ofSystem()
{
    return std::make_unique<RnWin32Windows>();
}

std::unique_ptr<RnCom> RnCom::ofSystem()
{
    return std::make_unique<RnWin32Com>();
}
#else
std::unique_ptr<RnWindows> RnWindows::ofSystem()
{
    return nullptr;
}

std::unique_ptr<RnCom> RnCom::ofSystem()
{
    return nullptr;
}
#endif

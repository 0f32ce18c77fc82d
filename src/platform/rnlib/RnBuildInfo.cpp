#include "RnBuildInfo.h"

#ifndef RN_VERSION
#error "RN_VERSION must be the version of the build as a string, such as \"1.2.3\""
#endif

namespace {

#ifdef NDEBUG
constexpr const char* Kind = "release";
#else
constexpr const char* Kind = "debug";
#endif

#if defined(__clang__)
constexpr const char* Compiler = "Clang " __clang_version__;
#elif defined(__GNUC__)
constexpr const char* Compiler = "GCC " __VERSION__;
#else
constexpr const char* Compiler = "unknown compiler";
#endif

} // namespace

std::string RnBuildInfo::getBuildString(int inDetail)
{
    const std::string version = RN_VERSION;
    if (inDetail <= 0)
        return version.substr(0, version.rfind('.'));
    if (inDetail == 1)
        return version;
    return version + " (" + Kind + ", " + Compiler + ")";
}

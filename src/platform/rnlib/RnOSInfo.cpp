#include "RnOSInfo.h"

#include <fstream>
#include <string>
#include <sys/utsname.h>

namespace {

/// A value of os-release(5) without its quotes and backslashes.
std::string unquoted(const std::string& inValue)
{
    const bool quoted = inValue.size() >= 2 && (inValue.front() == '"' || inValue.front() == '\'');
    const std::string inner = quoted ? inValue.substr(1, inValue.size() - 2) : inValue;
    std::string out;
    for (std::size_t i = 0; i < inner.size(); ++i) {
        if (inner[i] == '\\' && i + 1 < inner.size())
            ++i;
        out += inner[i];
    }
    return out;
}

std::string prettyName(const char* inPath)
{
    constexpr std::string_view Key = "PRETTY_NAME=";
    std::ifstream file(inPath);
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(Key))
            return unquoted(line.substr(Key.size()));
    return {};
}

std::string kernelName()
{
    utsname names{};
    if (uname(&names) != 0)
        return {};
    return std::string(names.sysname) + ' ' + names.release;
}

} // namespace

RnString RnOSInfo::getOSName(bool inWithKernel)
{
    std::string name = prettyName("/etc/os-release");
    if (name.empty())
        name = prettyName("/usr/lib/os-release");
    if (name.empty())
        name = "Unknown";
    const std::string kernel = inWithKernel ? kernelName() : std::string();
    return kernel.empty() ? name : name + ", " + kernel;
}

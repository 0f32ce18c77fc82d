#pragma once

#include "RnString.h"

/// Facts of the operating system.
class RnOSInfo
{
public:
    /// Name and version for people, such as "Debian GNU/Linux 12 (bookworm)"; with \a inWithKernel also the
    /// kernel's name and release, behind a comma. "Unknown" when the system does not tell.
    static RnString getOSName(bool inWithKernel);
};

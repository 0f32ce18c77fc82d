#pragma once

#include <string>

/// Facts of this build.
class RnBuildInfo
{
public:
    /// The version as text in UTF-8: \a inDetail 0 gives "1.2", 1 gives "1.2.3", 2 and more give "1.2.3"
    /// followed by the kind of build and the compiler in parentheses.
    static std::string getBuildString(int inDetail);
};

#pragma once

#include <string>
#include <string_view>

/// The code page 1252, Windows' extension of Latin-1.
class RnCodePage1252
{
public:
    RnCodePage1252() = delete;

    /// Each unit that the code page does not have becomes a question mark.
    static std::string encoded(std::u16string_view inText);
    static std::u16string decoded(std::string_view inText);
};

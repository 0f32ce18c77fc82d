#include "RnCodePage1252.h"

#include <algorithm>
#include <array>

namespace {

/// 0x80 to 0x9F; the five that stand for nothing are the control characters of Latin-1.
constexpr std::array<char16_t, 32> sUpper = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                             0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                             0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                             0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char encodedUnit(char16_t inUnit)
{
    if (inUnit < 0x80 || (inUnit >= 0xA0 && inUnit <= 0xFF))
        return char(inUnit);
    const auto found = std::find(sUpper.begin(), sUpper.end(), inUnit);
    return found == sUpper.end() ? '?' : char(0x80 + (found - sUpper.begin()));
}

} // namespace

std::string RnCodePage1252::encoded(std::u16string_view inText)
{
    std::string bytes(inText.size(), '\0');
    std::transform(inText.begin(), inText.end(), bytes.begin(), encodedUnit);
    return bytes;
}

std::u16string RnCodePage1252::decoded(std::string_view inText)
{
    std::u16string text(inText.size(), u'\0');
    std::transform(inText.begin(), inText.end(), text.begin(), [](char inByte) {
        const auto byte = static_cast<unsigned char>(inByte);
        return byte >= 0x80 && byte < 0xA0 ? sUpper[byte - 0x80] : char16_t(byte);
    });
    return text;
}

#include "OvCodeHeader.h"

namespace {

using Code = std::vector<unsigned char>;

unsigned littleLongAt(const Code& inCode, std::size_t inPlace)
{
    return inCode[inPlace] | unsigned(inCode[inPlace + 1]) << 8 | unsigned(inCode[inPlace + 2]) << 16 |
           unsigned(inCode[inPlace + 3]) << 24;
}

int bigShortAt(const Code& inCode, std::size_t inPlace)
{
    return inCode[inPlace] << 8 | inCode[inPlace + 1];
}

bool isFrameHeader(int inMarker)
{
    const bool isTable = inMarker == 0xC4 || inMarker == 0xC8 || inMarker == 0xCC;
    return (inMarker >= 0xC0 && inMarker <= 0xCF && !isTable) || inMarker == 0xF7;
}

} // namespace

OvJpegHeader OvJpegHeader::of(const Code& inCode)
{
    constexpr std::size_t headerSize = 10;
    if (inCode.size() < 4 || inCode[0] != 0xFF || inCode[1] != 0xD8)
        return {};
    std::size_t place = 2;
    while (place + headerSize <= inCode.size() && inCode[place] == 0xFF) {
        const int marker = inCode[place + 1];
        if (isFrameHeader(marker))
            return {.precision = inCode[place + 4],
                    .columns = bigShortAt(inCode, place + 7),
                    .rows = bigShortAt(inCode, place + 5),
                    .components = inCode[place + 9]};
        // A marker may have any number of fill bytes in front of it.
        place += marker == 0xFF ? 1 : 2 + std::size_t(bigShortAt(inCode, place + 2));
    }
    return {};
}

bool isRleCode(const Code& inCode, unsigned inSegments)
{
    constexpr std::size_t headerSize = 64;
    constexpr unsigned mostSegments = 15;
    if (inCode.size() < headerSize || inSegments > mostSegments || littleLongAt(inCode, 0) != inSegments)
        return false;
    std::size_t least = headerSize;
    for (std::size_t i = 0; i < inSegments; ++i) {
        const std::size_t offset = littleLongAt(inCode, 4 + 4 * i);
        if (offset < least || offset >= inCode.size())
            return false;
        least = offset + 1;
    }
    return true;
}

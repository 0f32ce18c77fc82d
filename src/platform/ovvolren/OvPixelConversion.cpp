#include "OvPixelConversion.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

/// Takes the stored bits out of a cell and extends their sign.
struct StoredBits
{
    explicit StoredBits(const OvPixelCoding& inCoding)
        : shift(inCoding.highBit + 1 - inCoding.bitsStored)
        , mask(inCoding.bitsStored >= 32 ? 0xFFFFFFFFU : (1U << inCoding.bitsStored) - 1)
        , sign(inCoding.isSigned ? 1U << (inCoding.bitsStored - 1) : 0)
    {}

    std::uint32_t operator()(std::uint32_t inCell) const { return ((inCell >> shift & mask) ^ sign) - sign; }

    const int shift;
    const std::uint32_t mask;
    const std::uint32_t sign;
};

template <class Cell, class Pixel>
void copyCells(const OvPixelCoding& inCoding, const unsigned char* inCells, Pixel* outPixels,
               std::size_t inCount)
{
    if (sizeof(Cell) == sizeof(Pixel) && inCoding.bitsStored == inCoding.bitsAllocated) {
        std::memcpy(outPixels, inCells, inCount * sizeof(Pixel));
        return;
    }
    const StoredBits stored(inCoding);
    const auto* cells = reinterpret_cast<const Cell*>(inCells);
    for (std::size_t i = 0; i < inCount; ++i)
        outPixels[i] = static_cast<Pixel>(stored(cells[i]));
}

template <class Pixel>
void unpackBits(const unsigned char* inBytes, int inSkipped, Pixel* outPixels, std::size_t inCount)
{
    for (std::size_t i = 0; i < inCount; ++i) {
        const std::size_t bit = i + std::size_t(inSkipped);
        outPixels[i] = static_cast<Pixel>(inBytes[bit / 8] >> (bit % 8) & 1);
    }
}

template <class Pixel>
void fromCells(const OvPixelCoding& inCoding, const unsigned char* inCells, int inSkippedBits,
               Pixel* outPixels, std::size_t inCount)
{
    switch (inCoding.bitsAllocated) {
    case 1:
        return unpackBits(inCells, inSkippedBits, outPixels, inCount);
    case 8:
        return copyCells<std::uint8_t>(inCoding, inCells, outPixels, inCount);
    case 16:
        return copyCells<std::uint16_t>(inCoding, inCells, outPixels, inCount);
    default:
        return copyCells<std::uint32_t>(inCoding, inCells, outPixels, inCount);
    }
}

std::uint16_t lookedUp(const OvImageInfo& inImage, std::int64_t inValue)
{
    const auto& lut = *inImage.modalityLut;
    const auto last = static_cast<std::int64_t>(lut.size()) - 1;
    return lut[static_cast<std::size_t>(
        std::clamp<std::int64_t>(inValue - inImage.modalityLutFirst, 0, last))];
}

/// Through the look-up table: \a inValues has the stored values.
void lookUp(const OvImageInfo& inImage, const std::vector<std::int32_t>& inValues, OvPixels& outPixels)
{
    auto* pixels = outPixels.as<std::uint16_t>();
    for (std::size_t i = 0; i < inValues.size(); ++i)
        pixels[i] = lookedUp(inImage, inValues[i]);
}

void prepare(const OvImageInfo& inImage, OvPixels& outPixels)
{
    outPixels.format = inImage.format;
    outPixels.bytes.resize(inImage.format.bytes());
}

std::size_t pixelCount(const OvImageInfo& inImage)
{
    return std::size_t(inImage.format.columns) * std::size_t(inImage.format.rows);
}

template <class Pixel, class Wanted>
void findRange(const Pixel* inPixels, std::size_t inCount, Wanted isWanted, OvPixels& outPixels)
{
    Pixel least = std::numeric_limits<Pixel>::max();
    Pixel greatest = std::numeric_limits<Pixel>::lowest();
    bool found = false;
    for (std::size_t i = 0; i < inCount; ++i) {
        const Pixel pixel = inPixels[i];
        const bool wanted = isWanted(pixel);
        least = wanted && pixel < least ? pixel : least;
        greatest = wanted && pixel > greatest ? pixel : greatest;
        found = found || wanted;
    }
    outPixels.least = found ? double(least) : 0;
    outPixels.greatest = found ? double(greatest) : 0;
}

template <class Pixel>
void noteRangeOf(const OvImageInfo& inImage, OvPixels& ioPixels)
{
    const auto* pixels = ioPixels.as<Pixel>();
    if (!inImage.padding) {
        const auto isNumber = [](Pixel inPixel) { return inPixel == inPixel; };
        findRange(pixels, pixelCount(inImage), isNumber, ioPixels);
        return;
    }
    const auto [first, last] = *inImage.padding;
    const auto isImage = [first = first, last = last](Pixel inPixel) {
        return double(inPixel) < first || double(inPixel) > last;
    };
    findRange(pixels, pixelCount(inImage), isImage, ioPixels);
}

} // namespace

void OvPixelConversion::noteRange(const OvImageInfo& inImage, OvPixels& ioPixels)
{
    withPixelType(ioPixels.format.type, [&](const auto* inType) {
        noteRangeOf<std::remove_cvref_t<decltype(*inType)>>(inImage, ioPixels);
    });
}

void OvPixelConversion::grey(const OvImageInfo& inImage, const OvBytes& inCells, int inSkippedBits,
                             OvPixels& outPixels)
{
    const std::size_t count = pixelCount(inImage);
    prepare(inImage, outPixels);
    if (inImage.modalityLut) {
        std::vector<std::int32_t> values(count);
        fromCells(inImage.coding, inCells.data(), inSkippedBits, values.data(), count);
        lookUp(inImage, values, outPixels);
    } else {
        withPixelType(inImage.format.type, [&](const auto* inType) {
            using Pixel = std::remove_cvref_t<decltype(*inType)>;
            if constexpr (std::is_integral_v<Pixel>)
                fromCells(inImage.coding, inCells.data(), inSkippedBits, outPixels.as<Pixel>(), count);
        });
    }
    noteRange(inImage, outPixels);
}

bool OvPixelConversion::fitsInPlace(const OvImageInfo& inImage)
{
    return !inImage.modalityLut &&
           inImage.format.bytesPerPixel() * 8 == std::size_t(inImage.coding.bitsAllocated);
}

void OvPixelConversion::greyInPlace(const OvImageInfo& inImage, OvPixels& ioPixels)
{
    const OvPixelCoding& coding = inImage.coding;
    if (coding.bitsStored < coding.bitsAllocated) {
        const StoredBits stored(coding);
        withPixelType(inImage.format.type, [&](const auto* inType) {
            using Pixel = std::remove_cvref_t<decltype(*inType)>;
            if constexpr (std::is_integral_v<Pixel>) {
                auto* pixels = ioPixels.as<Pixel>();
                for (std::size_t i = 0; i < pixelCount(inImage); ++i)
                    pixels[i] =
                        static_cast<Pixel>(stored(static_cast<std::make_unsigned_t<Pixel>>(pixels[i])));
            }
        });
    }
    noteRange(inImage, ioPixels);
}

void OvPixelConversion::grey(const OvImageInfo& inImage, const std::vector<std::int32_t>& inValues,
                             OvPixels& outPixels)
{
    const StoredBits stored(inImage.coding);
    prepare(inImage, outPixels);
    std::vector<std::int32_t> values(inValues.size());
    // Bits above the stored ones would be shifted cells; decoded values have none.
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] =
            static_cast<std::int32_t>(stored(static_cast<std::uint32_t>(inValues[i]) << stored.shift));
    if (inImage.modalityLut) {
        lookUp(inImage, values, outPixels);
    } else {
        withPixelType(inImage.format.type, [&](const auto* inType) {
            using Pixel = std::remove_cvref_t<decltype(*inType)>;
            std::transform(values.begin(), values.end(), outPixels.as<Pixel>(),
                           [](std::int32_t v) { return static_cast<Pixel>(v); });
        });
    }
    noteRange(inImage, outPixels);
}

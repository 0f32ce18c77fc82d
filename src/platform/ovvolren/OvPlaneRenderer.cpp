#include "OvPlaneRenderer.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace {

constexpr std::uint32_t Black = 0xFF000000;

std::uint32_t greyOf(double inBrightness)
{
    const auto level = static_cast<std::uint32_t>(inBrightness * 255 + 0.5);
    return Black | level << 16 | level << 8 | level;
}

std::uint32_t rgbAt(const unsigned char* inBytes)
{
    return Black | std::uint32_t(inBytes[0]) << 16 | std::uint32_t(inBytes[1]) << 8 | inBytes[2];
}

/// An interval without a number in it, for no padding.
constexpr std::pair<double, double> nothing{1, 0};

} // namespace

std::uint32_t OvPlaneRenderer::colourOf(const OvImageInfo& inImage, double inPixel) const
{
    const auto [first, last] = inImage.padding.value_or(nothing);
    const bool isPadding = inPixel >= first && inPixel <= last;
    if (isPadding || inPixel != inPixel)
        return Black;
    const double brightness = mWindow.brightness(inImage.toValue(inPixel));
    return greyOf(inImage.inverted != mInverted ? 1 - brightness : brightness);
}

/// Makes the table for the pixels of this image, unless it has them. It holds the range of all images that it
/// was made for, as long as they mean the same.
void OvPlaneRenderer::prepareTable(const OvImageInfo& inImage, const OvPixels& inPixels)
{
    const auto padding = inImage.padding.value_or(nothing);
    Key key{.window = mWindow,
            .inverted = inImage.inverted != mInverted,
            .slope = inImage.slope,
            .intercept = inImage.intercept,
            .padding = padding,
            .first = mKey.first,
            .last = mKey.last};
    double least = inPixels.least;
    double greatest = inPixels.greatest;
    if (inImage.padding) {
        const double lowest = inPixels.format.type == OvPixelFormat::Int16 ? -32768 : 0;
        least = std::min(least, std::max(padding.first, lowest));
        greatest = std::max(greatest, std::min(padding.second, lowest + 65535));
    }
    if (key == mKey && least >= mKey.first && greatest <= mKey.last)
        return;
    const bool grows = key == mKey;
    key.first = grows ? std::min(mKey.first, int(least)) : int(least);
    key.last = grows ? std::max(mKey.last, int(greatest)) : int(greatest);
    mKey = key;
    mTable.resize(std::size_t(key.last - key.first) + 1);
    for (int pixel = key.first; pixel <= key.last; ++pixel)
        mTable[std::size_t(pixel - key.first)] = colourOf(inImage, pixel);
}

void OvPlaneRenderer::drawLine(const OvImageInfo& inImage, const OvPixels& inPixels, const Line& inLine)
{
    std::uint32_t* to = inLine.to;
    if (inImage.isColour()) {
        const unsigned char* bytes = inPixels.bytes.data() + 3 * inLine.from;
        for (int i = 0; i < inLine.count; ++i, to += inLine.toStep, bytes += 3 * inLine.fromStep)
            *to = rgbAt(bytes);
        return;
    }
    withPixelType(inPixels.format.type, [&](const auto* inType) {
        using Pixel = std::remove_cvref_t<decltype(*inType)>;
        const Pixel* from = inPixels.as<Pixel>() + inLine.from;
        if constexpr (sizeof(Pixel) <= 2) {
            const std::uint32_t* table = mTable.data();
            const int first = mKey.first;
            if (inLine.fromStep == 1 && inLine.toStep == 1) { // the lines of the images: by far the most
                for (int i = 0; i < inLine.count; ++i)
                    to[i] = table[from[i] - first];
                return;
            }
            for (int i = 0; i < inLine.count; ++i, to += inLine.toStep, from += inLine.fromStep)
                *to = table[*from - first];
        } else {
            for (int i = 0; i < inLine.count; ++i, to += inLine.toStep, from += inLine.fromStep)
                *to = colourOf(inImage, double(*from));
        }
    });
}

void OvPlaneRenderer::drawLine(int inImage, const Line& inLine)
{
    const OvPixels* pixels = mContent->pixels(inImage);
    if (pixels) {
        const OvImageInfo& image = mContent->image(inImage);
        if (pixels->format.bytesPerPixel() <= 2)
            prepareTable(image, *pixels);
        drawLine(image, *pixels, inLine);
        return;
    }
    const bool waits = inImage >= 0 && mContent->problem(inImage).isEmpty();
    std::uint32_t* to = inLine.to;
    for (int i = 0; i < inLine.count; ++i, to += inLine.toStep)
        *to = waits ? WaitingColour : MissingColour;
}

void OvPlaneRenderer::draw(const OvPlane& inPlane, const OvWindow& inWindow, bool inInverted,
                           std::uint32_t* outPixels, std::ptrdiff_t inStride)
{
    mContent = &inPlane.content();
    mWindow = inWindow;
    mInverted = inInverted;
    const int width = inPlane.width();
    const int height = inPlane.height();
    if (inPlane.image() >= 0) {
        for (int y = 0; y < height; ++y)
            drawLine(inPlane.image(), {.from = std::ptrdiff_t(y) * width,
                                       .fromStep = 1,
                                       .to = outPixels + y * inStride,
                                       .toStep = 1,
                                       .count = width});
        return;
    }
    const OvPlane::Walk& walk = inPlane.walk();
    const std::ptrdiff_t columns = mContent->geometry().countAlong(0);
    const std::ptrdiff_t first = inPlane.axis() == 0 ? inPlane.number() : inPlane.number() * columns;
    const bool imagesGoDown = walk.downAxis == OvPlane::AcrossImages;
    // Lines of one image each: along the axis that is not the one through the images.
    const std::ptrdiff_t step = inPlane.axis() == 0 ? columns : 1;
    const bool lineFlipped = imagesGoDown ? walk.rightFlipped : walk.downFlipped;
    const bool imagesFlipped = imagesGoDown ? walk.downFlipped : walk.rightFlipped;
    const int lineLength = imagesGoDown ? width : height;
    const int lines = imagesGoDown ? height : width;
    for (int i = 0; i < lines; ++i) {
        const int image = mContent->geometry().grid()[std::size_t(imagesFlipped ? lines - 1 - i : i)];
        drawLine(image, {.from = lineFlipped ? first + (lineLength - 1) * step : first,
                         .fromStep = lineFlipped ? -step : step,
                         .to = imagesGoDown ? outPixels + i * inStride : outPixels + i,
                         .toStep = imagesGoDown ? 1 : inStride,
                         .count = lineLength});
    }
}

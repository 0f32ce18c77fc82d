#pragma once

#include "OvPlane.h"

#include <cstdint>
#include <vector>

/// Draws planes as pixels for the screen, 0xFFRRGGBB each. Keeps its look-up table from plane to plane; one
/// for each viewer.
class OvPlaneRenderer
{
public:
    /// Where a plane has no image, or one that can't be read, and where one is still on its way.
    static constexpr std::uint32_t MissingColour = 0xFF3A1010;
    static constexpr std::uint32_t WaitingColour = 0xFF1C1C1C;

    /// Draws \a inPlane into \a outPixels, whose lines are \a inStride pixels apart and have room for it.
    /// With \a inInverted black and white change places. Colour images have no window.
    void draw(const OvPlane& inPlane, const OvWindow& inWindow, bool inInverted, std::uint32_t* outPixels,
              std::ptrdiff_t inStride);

private:
    /// A line of pixels of one image, and where it goes to.
    struct Line
    {
        std::ptrdiff_t from;
        std::ptrdiff_t fromStep;
        std::uint32_t* to;
        std::ptrdiff_t toStep;
        int count;
    };

    void drawLine(int inImage, const Line& inLine);
    void drawLine(const OvImageInfo& inImage, const OvPixels& inPixels, const Line& inLine);
    void prepareTable(const OvImageInfo& inImage, const OvPixels& inPixels);
    std::uint32_t colourOf(const OvImageInfo& inImage, double inPixel) const;

    /// What the table depends on.
    struct Key
    {
        OvWindow window;
        bool inverted = false;
        double slope = 0;
        double intercept = 0;
        std::pair<double, double> padding;
        int first = 0;
        int last = -1;

        bool operator==(const Key&) const = default;
    };

    const OvVolumeContent* mContent = nullptr;
    OvWindow mWindow;
    bool mInverted = false;
    Key mKey;
    std::vector<std::uint32_t> mTable;
};

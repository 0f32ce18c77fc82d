#include "OvFusion.h"

#include "OvTexts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>

namespace {

constexpr int Shades = 256;

using Shaded = std::array<std::uint32_t, Shades>;

const Shaded& shades()
{
    static const Shaded made = [] {
        Shaded colours{};
        for (int i = 0; i < Shades; ++i)
            colours[std::size_t(i)] = OvFusion::colour(double(i) / (Shades - 1));
        return colours;
    }();
    return made;
}

/// A place in a volume in voxels along its axes.
using Place = std::array<double, 3>;

Place directionIn(const OvVolumeGeometry& inGeometry, const OvVector3& inDirection)
{
    Place place{};
    for (int axis = 0; axis < 3; ++axis) {
        const OvVector3 step = inGeometry.stepAlong(axis);
        place[std::size_t(axis)] = inDirection.dot(step) / step.dot(step);
    }
    return place;
}

Place placeIn(const OvVolumeGeometry& inGeometry, const OvVector3& inPoint)
{
    return directionIn(inGeometry, inPoint - inGeometry.origin());
}

/// Values between the voxels of a volume.
template <class Pixel>
class Sampler
{
public:
    explicit Sampler(const OvVolumeContent& inVolume)
        : mVolume(inVolume)
        , mColumns(inVolume.geometry().countAlong(0))
        , mRows(inVolume.geometry().countAlong(1))
        , mPlanes(inVolume.geometry().grid().size())
    {
        for (std::size_t i = 0; i < mPlanes.size(); ++i) {
            const int image = inVolume.geometry().grid()[i];
            const OvPixels* pixels = inVolume.pixels(image);
            if (!pixels)
                continue;
            const OvImageInfo& info = inVolume.image(image);
            mPlanes[i] = {pixels->as<Pixel>(), info.slope, info.intercept};
        }
    }

    /// False outside, where the outermost voxels end, and beside missing images.
    bool sample(const Place& inPlace, double& outValue) const
    {
        const double k = inPlace[2];
        if (!(inPlace[0] >= -0.5 && inPlace[0] <= mColumns - 0.5 && inPlace[1] >= -0.5 &&
              inPlace[1] <= mRows - 0.5 && k >= -0.5 && k <= double(mPlanes.size()) - 0.5))
            return false;
        const double inside = std::clamp(k, 0.0, double(mPlanes.size() - 1));
        const auto below = static_cast<std::size_t>(inside);
        const double part = inside - double(below);
        const Plane& first = mPlanes[below];
        const Plane& second = part > 0 ? mPlanes[below + 1] : first;
        if (!first.pixels || !second.pixels)
            return false;
        outValue = valueIn(first, inPlace) * (1 - part);
        if (part > 0)
            outValue += valueIn(second, inPlace) * part;
        return outValue == outValue;
    }

private:
    struct Plane
    {
        const Pixel* pixels = nullptr;
        double slope = 1;
        double intercept = 0;
    };

    double valueIn(const Plane& inPlane, const Place& inPlace) const
    {
        const double i = std::clamp(inPlace[0], 0.0, double(mColumns - 1));
        const double j = std::clamp(inPlace[1], 0.0, double(mRows - 1));
        const int left = int(i);
        const int upper = int(j);
        const std::ptrdiff_t toRight = left + 1 < mColumns ? 1 : 0;
        const std::ptrdiff_t toLower = upper + 1 < mRows ? mColumns : 0;
        const Pixel* at = inPlane.pixels + std::ptrdiff_t(upper) * mColumns + left;
        const double x = i - left;
        const double y = j - upper;
        const double above = double(at[0]) * (1 - x) + double(at[toRight]) * x;
        const double below = double(at[toLower]) * (1 - x) + double(at[toLower + toRight]) * x;
        return (above * (1 - y) + below * y) * inPlane.slope + inPlane.intercept;
    }

    const OvVolumeContent& mVolume;
    const int mColumns;
    const int mRows;
    std::vector<Plane> mPlanes;
};

/// \a inWeight from 0 to 256.
std::uint32_t mixed(std::uint32_t inBase, std::uint32_t inOver, std::uint32_t inWeight)
{
    const std::uint32_t rest = 256 - inWeight;
    const std::uint32_t redBlue =
        (((inBase & 0xFF00FF) * rest + (inOver & 0xFF00FF) * inWeight) >> 8) & 0xFF00FF;
    const std::uint32_t green =
        (((inBase & 0x00FF00) * rest + (inOver & 0x00FF00) * inWeight) >> 8) & 0x00FF00;
    return 0xFF000000 | redBlue | green;
}

Place moved(const Place& inPlace, const Place& inStep, double inTimes)
{
    return {inPlace[0] + inStep[0] * inTimes, inPlace[1] + inStep[1] * inTimes,
            inPlace[2] + inStep[2] * inTimes};
}

/// The number of an image, with a fraction, for a place between the planes of the grid.
double imageNumberAt(const std::vector<int>& inGrid, double inPlace)
{
    const auto last = double(inGrid.size() - 1);
    const double place = std::clamp(inPlace, 0.0, last);
    auto below = static_cast<std::size_t>(place);
    std::size_t above = std::min(below + 1, inGrid.size() - 1);
    while (inGrid[below] < 0)
        --below;
    while (inGrid[above] < 0)
        ++above;
    const double part = above > below ? (place - double(below)) / double(above - below) : 0;
    return inGrid[below] + part * (inGrid[above] - inGrid[below]) + (inPlace - place);
}

} // namespace

QString OvFusion::obstacle(const OvVolumeContent& inFirst, const OvVolumeContent& inSecond)
{
    if (inFirst.count() == 0 || inSecond.count() == 0)
        return OvTexts::tr("There are no images to fuse.");
    if (!inSecond.geometry().isVolume())
        return OvTexts::tr("The images of the second series make up no volume.");
    if (inSecond.image(0).isColour())
        return OvTexts::tr("Colour images cannot be fused into others.");
    if (!inFirst.image(0).placement.isComplete())
        return OvTexts::tr("The images of the first series do not say where they lie.");
    const std::string& frame = inFirst.image(0).placement.frameOfReference;
    if (frame.empty() || frame != inSecond.image(0).placement.frameOfReference)
        return OvTexts::tr("The two series have no common frame of reference.");
    return QString();
}

float OvFusion::sliceNumber(const OvPlane& inPlane, const OvVolumeContent& inSecond)
{
    if (!inPlane.hasPlace() || !obstacle(inPlane.content(), inSecond).isEmpty())
        return -1;
    const OvVolumeGeometry& geometry = inSecond.geometry();
    const OvVector3 normal = inPlane.right().cross(inPlane.down());
    int best = 0;
    for (int axis = 1; axis < 3; ++axis) {
        const auto turned = [&](int inAxis) {
            const OvVector3 step = geometry.stepAlong(inAxis);
            return std::fabs(step.dot(normal)) / step.length();
        };
        best = turned(axis) > turned(best) ? axis : best;
    }
    const double place = placeIn(geometry, inPlane.centre())[std::size_t(best)];
    if (!(place >= -0.5 && place <= geometry.countAlong(best) - 0.5))
        return -1;
    // The half a plane before the first one belongs to it.
    const double number = best == 2 ? imageNumberAt(geometry.grid(), place) : place;
    return std::max(0.0F, float(number));
}

void OvFusion::blend(const OvPlane& inPlane, const OvVolumeContent& inSecond, const OvWindow& inWindow,
                     double inWeight, std::uint32_t* ioPixels, std::ptrdiff_t inStride)
{
    const auto weight = static_cast<std::uint32_t>(std::lround(std::clamp(inWeight, 0.0, 1.0) * 256));
    if (weight == 0 || !inPlane.hasPlace() || !obstacle(inPlane.content(), inSecond).isEmpty())
        return;
    const OvVolumeGeometry& geometry = inSecond.geometry();
    const Place origin = placeIn(geometry, inPlane.origin());
    const Place right = directionIn(geometry, inPlane.right());
    const Place down = directionIn(geometry, inPlane.down());
    withPixelType(inSecond.image(0).format.type, [&](const auto* inType) {
        const Sampler<std::remove_cvref_t<decltype(*inType)>> sampler(inSecond);
        for (int y = 0; y < inPlane.height(); ++y) {
            const Place start = moved(origin, down, y);
            std::uint32_t* line = ioPixels + y * inStride;
            for (int x = 0; x < inPlane.width(); ++x) {
                double value = 0;
                if (!sampler.sample(moved(start, right, x), value))
                    continue;
                const auto shade = static_cast<std::size_t>(inWindow.brightness(value) * (Shades - 1) + 0.5);
                line[x] = mixed(line[x], shades()[shade], weight);
            }
        }
    });
}

std::uint32_t OvFusion::colour(double inBrightness)
{
    const auto part = [&](double inFirst, double inLast) {
        const double level = std::clamp((inBrightness - inFirst) / (inLast - inFirst), 0.0, 1.0);
        return static_cast<std::uint32_t>(level * 255 + 0.5);
    };
    return 0xFF000000 | part(0, 0.4) << 16 | part(0.4, 0.8) << 8 | part(0.8, 1);
}

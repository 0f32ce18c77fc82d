#include "OvVolumeGeometry.h"

#include "OvTexts.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace {

using Images = std::vector<OvImageInfo>;

constexpr double Parallel = 0.9999;  ///< The cosine of 0.8 degrees.
constexpr double Close = 0.8;        ///< The cosine of 37 degrees.
constexpr double SameSpacing = 0.01; ///< Of a spacing.
/// How far a distance may be off, in parts of the least: positions have few digits.
constexpr double SameDistance = 0.05;
/// How far planes may shift sideways from one to the next, in parts of their distance: half a degree.
constexpr double Sideways = 0.01;
constexpr std::size_t MostPlanes = 20000;

bool isSame(double inA, double inB, double inTolerance)
{
    return std::fabs(inA - inB) <= inTolerance * std::max(std::fabs(inA), std::fabs(inB));
}

bool isParallel(const OvPlacement& inA, const OvPlacement& inB)
{
    return inA.axes->row.dot(inB.axes->row) >= Parallel && inA.axes->column.dot(inB.axes->column) >= Parallel;
}

void sortByNumber(Images& ioImages)
{
    std::stable_sort(ioImages.begin(), ioImages.end(), [](const OvImageInfo& inA, const OvImageInfo& inB) {
        return inA.instanceNumber < inB.instanceNumber;
    });
}

/// Sorts by place along \a inNormal, or against it when the instance numbers grow that way.
void sortByPlace(Images& ioImages, const OvVector3& inNormal)
{
    const auto place = [&](const OvImageInfo& inImage) { return inImage.placement.position->dot(inNormal); };
    std::stable_sort(ioImages.begin(), ioImages.end(),
                     [&](const OvImageInfo& inA, const OvImageInfo& inB) { return place(inA) < place(inB); });
    const OvImageInfo& first = ioImages.front();
    const OvImageInfo& last = ioImages.back();
    const bool against = first.instanceNumber != last.instanceNumber
                             ? first.instanceNumber > last.instanceNumber
                             : first.frame > last.frame;
    if (against)
        std::reverse(ioImages.begin(), ioImages.end());
}

/// What differs between the images, or nothing.
QString differenceOf(const Images& inImages)
{
    const OvImageInfo& first = inImages.front();
    const auto all = [&](auto inSame) { return std::all_of(inImages.begin(), inImages.end(), inSame); };
    if (!all([&](const OvImageInfo& i) { return i.format == first.format; }))
        return OvTexts::tr("The images are not all of one size and kind");
    const OvPlacement& placement = first.placement;
    if (!all([&](const OvImageInfo& i) { return isParallel(i.placement, placement); }))
        return OvTexts::tr("The images are not parallel");
    if (!all([&](const OvImageInfo& i) {
            return isSame(i.placement.rowSpacing, placement.rowSpacing, SameSpacing) &&
                   isSame(i.placement.columnSpacing, placement.columnSpacing, SameSpacing);
        }))
        return OvTexts::tr("The pixel spacings of the images differ");
    if (!all(
            [&](const OvImageInfo& i) { return i.placement.frameOfReference == placement.frameOfReference; }))
        return OvTexts::tr("The images have different frames of reference");
    return QString();
}

} // namespace

OvSlice::Orientation orientationOf(const OvVector3& inNormal)
{
    const double length = inNormal.length();
    constexpr OvSlice::Orientation orientations[] = {OvSlice::Sagittal, OvSlice::Coronal, OvSlice::Axial};
    for (int axis = 0; axis < 3 && length > 0; ++axis) {
        if (std::fabs(inNormal.along(axis)) >= Close * length)
            return orientations[axis];
    }
    return length > 0 ? OvSlice::Oblique : OvSlice::Unknown;
}

OvVolumeGeometry::OvVolumeGeometry(Images& ioImages, QStringList& outNotices)
{
    const auto placed = std::count_if(ioImages.begin(), ioImages.end(),
                                      [](const OvImageInfo& i) { return i.placement.isComplete(); });
    const bool allPlaced = placed == std::ptrdiff_t(ioImages.size());
    if (ioImages.size() > 1 && allPlaced) {
        const QString reason = findVolume(ioImages);
        mIsVolume = reason.isEmpty();
        if (!mIsVolume)
            outNotices += reason + OvTexts::tr(": no other orientations");
    } else {
        sortByNumber(ioImages);
        if (placed > 0 && !allPlaced)
            outNotices += OvTexts::tr("Some images do not say where they lie: no other orientations");
    }
    if (mMissing > 0)
        outNotices += mMissing == 1 ? OvTexts::tr("1 image is missing between the others")
                                    : OvTexts::tr("%1 images are missing between the others").arg(mMissing);
}

QString OvVolumeGeometry::findVolume(Images& ioImages)
{
    const QString difference = differenceOf(ioImages);
    if (!difference.isEmpty()) {
        sortByNumber(ioImages);
        return difference;
    }
    Images inOrder = ioImages;
    const OvVector3 normal = inOrder.front().placement.axes->normal();
    sortByPlace(inOrder, normal);
    const OvPlacement& first = inOrder.front().placement;
    const OvVector3 way = *inOrder.back().placement.position - *first.position;
    const double sign = way.dot(normal) < 0 ? -1 : 1;
    std::vector<double> places;
    for (const OvImageInfo& image : inOrder) {
        const OvVector3 offset = *image.placement.position - *first.position;
        places.push_back(offset.dot(normal) * sign);
        const OvVector3 aside = offset - normal * offset.dot(normal);
        if (aside.length() > Sideways * std::fabs(offset.dot(normal)) + first.columnSpacing / 10) {
            sortByNumber(ioImages);
            return OvTexts::tr("The images lie aslant behind each other, as with a tilted gantry");
        }
    }
    const QString reason = makeGrid(places);
    if (!reason.isEmpty()) {
        sortByNumber(ioImages);
        return reason;
    }
    ioImages = std::move(inOrder);
    const OvImageInfo& image = ioImages.front();
    mOrigin = *image.placement.position;
    mStep = normal * (sign * places.back() / double(mGrid.size() - 1));
    mSteps[0] = image.placement.axes->row * image.placement.columnSpacing;
    mSteps[1] = image.placement.axes->column * image.placement.rowSpacing;
    mCounts[0] = image.format.columns;
    mCounts[1] = image.format.rows;
    assignAxes();
    return QString();
}

QString OvVolumeGeometry::makeGrid(const std::vector<double>& inPlaces)
{
    std::vector<double> gaps(inPlaces.size());
    std::adjacent_difference(inPlaces.begin(), inPlaces.end(), gaps.begin());
    gaps.erase(gaps.begin());
    const double least = *std::min_element(gaps.begin(), gaps.end());
    constexpr double LeastDistance = 1e-3; // mm
    if (least < LeastDistance)
        return OvTexts::tr("Several images lie at the same place");
    const double planes = std::round(inPlaces.back() / least) + 1;
    if (planes > double(MostPlanes))
        return OvTexts::tr("The images lie too far from each other");

    // The least gap is off by its own rounding; a better distance comes from all gaps together.
    double steps = 0;
    for (const double gap : gaps)
        steps += std::round(gap / least);
    const double distance = inPlaces.back() / steps;
    std::vector<int> grid{0};
    for (std::size_t i = 0; i < gaps.size(); ++i) {
        const double count = std::round(gaps[i] / distance);
        if (count < 1 || std::fabs(gaps[i] - count * distance) > SameDistance * distance)
            return OvTexts::tr("The distances between the images differ");
        grid.resize(grid.size() + std::size_t(count), -1);
        grid.back() = int(i) + 1;
    }
    mGrid = std::move(grid);
    mMissing = int(mGrid.size() - inPlaces.size());
    return QString();
}

/// Of all ways to give each axis of the patient one of the volume, the one that turns them least.
void OvVolumeGeometry::assignAxes()
{
    std::array<int, 3> order{0, 1, 2};
    double best = -1;
    do {
        double sum = 0;
        for (int axis = 0; axis < 3; ++axis) {
            const OvVector3 step = stepAlong(order[std::size_t(axis)]);
            sum += std::fabs(step.along(axis)) / step.length();
        }
        if (sum > best + 1e-9) {
            best = sum;
            std::copy(order.begin(), order.end(), mAxes);
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

OvVector3 OvVolumeGeometry::stepAlong(int inVolumeAxis) const
{
    return inVolumeAxis == 2 ? mStep : mSteps[inVolumeAxis];
}

int OvVolumeGeometry::countAlong(int inVolumeAxis) const
{
    return inVolumeAxis == 2 ? int(mGrid.size()) : mCounts[inVolumeAxis];
}

#include "OvPlane.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

/// The axes of the patient that a plane across another one shows, and whether they run towards the right and
/// downwards.
struct Look
{
    int right;
    int down;
    int downSign;
};

constexpr Look looks[] = {
    {.right = 1, .down = 2, .downSign = -1}, // sagittal: the front on the left, the head above
    {.right = 0, .down = 2, .downSign = -1}, // coronal: the patient's right on the left, the head above
    {.right = 0, .down = 1, .downSign = 1},  // axial: the patient's right on the left, the front above
};

} // namespace

int OvPlane::count(const OvVolumeContent& inContent, int inAxis)
{
    if (inAxis == AcrossImages)
        return inContent.count();
    return inContent.geometry().isVolume() && inAxis >= 0 && inAxis < 3
               ? inContent.geometry().countAlong(inAxis)
               : 0;
}

int OvPlane::axisFor(const OvVolumeContent& inContent, OvSlice::Orientation inOrientation)
{
    if (inContent.count() == 0)
        return -1;
    if (!inContent.geometry().isVolume()) {
        const bool same = OvPlane(inContent, AcrossImages, 0).orientation() == inOrientation;
        return same ? AcrossImages : -1;
    }
    switch (inOrientation) {
    case OvSlice::Sagittal:
        return inContent.geometry().volumeAxisFor(0);
    case OvSlice::Coronal:
        return inContent.geometry().volumeAxisFor(1);
    case OvSlice::Axial:
        return inContent.geometry().volumeAxisFor(2);
    default:
        return -1;
    }
}

OvPlane::OvPlane(const OvVolumeContent& inContent, int inAxis, int inNumber)
    : mContent(&inContent)
    , mAxis(count(inContent, inAxis) > 0 ? inAxis : AcrossImages)
    , mNumber(std::clamp(inNumber, 0, std::max(0, count(inContent, mAxis) - 1)))
{
    if (mAxis == AcrossImages)
        placeImage();
    else
        cutThrough();
}

void OvPlane::placeImage()
{
    if (mContent->count() == 0)
        return;
    const OvImageInfo& image = mContent->image(mNumber);
    const OvPlacement& placement = image.placement;
    mWidth = image.format.columns;
    mHeight = image.format.rows;
    mAspect = placement.aspect;
    mHasPlace = placement.isComplete();
    if (!placement.axes)
        return;
    const bool spaced = placement.columnSpacing > 0;
    mRight = placement.axes->row * (spaced ? placement.columnSpacing : 1);
    mDown = placement.axes->column * (spaced ? placement.rowSpacing : 1);
    mOrigin = placement.position.value_or(OvVector3());
}

void OvPlane::cutThrough()
{
    const OvVolumeGeometry& geometry = mContent->geometry();
    int patientAxis = 0;
    while (geometry.volumeAxisFor(patientAxis) != mAxis)
        ++patientAxis;
    const Look& look = looks[patientAxis];
    mWalk.rightAxis = geometry.volumeAxisFor(look.right);
    mWalk.downAxis = geometry.volumeAxisFor(look.down);
    mRight = geometry.stepAlong(mWalk.rightAxis);
    mDown = geometry.stepAlong(mWalk.downAxis);
    mWalk.rightFlipped = mRight.along(look.right) < 0;
    mWalk.downFlipped = mDown.along(look.down) * look.downSign < 0;
    mWidth = geometry.countAlong(mWalk.rightAxis);
    mHeight = geometry.countAlong(mWalk.downAxis);
    mAspect = mDown.length() / mRight.length();
    mHasPlace = true;
    mOrigin = geometry.origin() + geometry.stepAlong(mAxis) * mNumber;
    if (mWalk.rightFlipped) {
        mOrigin = mOrigin + mRight * (mWidth - 1);
        mRight = mRight * -1;
    }
    if (mWalk.downFlipped) {
        mOrigin = mOrigin + mDown * (mHeight - 1);
        mDown = mDown * -1;
    }
}

OvVector3 OvPlane::centre() const
{
    return mOrigin + mRight * ((mWidth - 1) / 2.0) + mDown * ((mHeight - 1) / 2.0);
}

QString OvPlane::letters(const OvVector3& inDirection)
{
    constexpr double Least = 0.3; // of the whole length
    constexpr char Names[3][2] = {{'R', 'L'}, {'A', 'P'}, {'F', 'H'}};
    const double length = inDirection.length();
    std::array<std::pair<double, char>, 3> parts;
    for (int axis = 0; axis < 3; ++axis) {
        const double part = inDirection.along(axis);
        parts[std::size_t(axis)] = {length > 0 ? std::fabs(part) / length : 0, Names[axis][part > 0 ? 1 : 0]};
    }
    std::stable_sort(parts.begin(), parts.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    QString letters;
    for (const auto& [part, letter] : parts) {
        if (part >= Least)
            letters += QLatin1Char(letter);
    }
    return letters;
}

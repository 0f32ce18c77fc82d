#pragma once

#include "OvImageInfo.h"
#include "OvSlice.h"

/// How the images of a series stand to each other: their order, and whether they make up a volume. A value.
///
/// They do when all have one size and one pixel spacing, are parallel, and lie one behind the other at equal
/// distances along their normal. Images may be missing in between, at distances that are multiples of the
/// least one. Then there is a grid of planes, each with its image or without one. Anything else is a stack:
/// images to be looked at one by one, with nothing said about what lies between them.
class OvVolumeGeometry
{
public:
    /// A stack of nothing.
    OvVolumeGeometry() = default;

    /// Brings \a ioImages into order: those of a volume by place, along the normal or against it, as their
    /// instance numbers grow; those of a stack by instance number, then as they come. \a outNotices gets why
    /// images that have places make up no volume, and what a volume lacks.
    OvVolumeGeometry(std::vector<OvImageInfo>& ioImages, QStringList& outNotices);

    bool isVolume() const { return mIsVolume; }

    /// The image in each plane of the grid, from the first to the last; -1 where one is missing. Empty for a
    /// stack.
    const std::vector<int>& grid() const { return mGrid; }
    /// From plane to plane of the grid, in mm. A zero vector for a stack.
    const OvVector3& step() const { return mStep; }
    int missing() const { return mMissing; }

    /// Steps from voxel to voxel: along a row, along a column, and from plane to plane. Zero for a stack.
    OvVector3 stepAlong(int inVolumeAxis) const;
    /// The voxels along one of these.
    int countAlong(int inVolumeAxis) const;
    /// The centre of the first voxel.
    const OvVector3& origin() const { return mOrigin; }

    /// The axis of the volume that comes closest to that of the patient, from left to right, from front to
    /// back and from feet to head. Each axis of the volume belongs to one.
    int volumeAxisFor(int inPatientAxis) const { return mAxes[inPatientAxis]; }

private:
    /// Why the images make up no volume, and nothing for images that were never meant to.
    QString findVolume(std::vector<OvImageInfo>& ioImages);
    QString makeGrid(const std::vector<double>& inPlaces);
    void assignAxes();

    bool mIsVolume = false;
    std::vector<int> mGrid;
    OvVector3 mOrigin;
    OvVector3 mStep;
    OvVector3 mSteps[2];
    int mCounts[2] = {0, 0};
    int mAxes[3] = {0, 1, 2};
    int mMissing = 0;
};

/// The orientation of a plane with that normal: the axis of the patient that it is close to.
OvSlice::Orientation orientationOf(const OvVector3& inNormal);

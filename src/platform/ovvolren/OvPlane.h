#pragma once

#include "OvVolumeContent.h"

/// One plane of a volume as it is looked at: which voxels, which way round, and where they lie. A value that
/// refers to its volume.
///
/// Planes lie across one axis of the volume. Across axis 2 they are the images, as they are stored, of stacks
/// too. Across 0 and 1 they cut through all images, and are turned as people are used to: the patient's right
/// on the left, and the front or the head above.
class OvPlane
{
public:
    static constexpr int AcrossImages = 2;

    /// \a inNumber counts from 0, and is brought to the nearest that there is.
    OvPlane(const OvVolumeContent& inContent, int inAxis, int inNumber);

    /// Number of planes across the axis \a inAxis; 0 across the others of a stack.
    static int count(const OvVolumeContent& inContent, int inAxis);
    /// The axis across which the planes have that orientation, or come closest to it; -1 when there is none.
    static int axisFor(const OvVolumeContent& inContent, OvSlice::Orientation inOrientation);

    const OvVolumeContent& content() const { return *mContent; }
    int axis() const { return mAxis; }
    int number() const { return mNumber; }
    /// The image that the plane is; -1 when it cuts through all of them.
    int image() const { return mAxis == AcrossImages ? mNumber : -1; }

    int width() const { return mWidth; }
    int height() const { return mHeight; }
    /// The height of a pixel by its width.
    double aspect() const { return mAspect; }

    OvSlice::Orientation orientation() const { return orientationOf(mRight.cross(mDown)); }

    /// Whether the plane is known to lie somewhere. The others are zero without.
    bool hasPlace() const { return mHasPlace; }
    /// The centre of the upper left pixel, and the steps to the next pixels to the right and down.
    const OvVector3& origin() const { return mOrigin; }
    const OvVector3& right() const { return mRight; }
    const OvVector3& down() const { return mDown; }
    OvVector3 centre() const;

    /// Where a direction points to in the patient: letters of R L A P H F, the strongest first, such as "LA".
    static QString letters(const OvVector3& inDirection);

    /// How the pixels of the plane lie in the images.
    struct Walk
    {
        int rightAxis; ///< The axis of the volume that goes to the right.
        int downAxis;
        bool rightFlipped;
        bool downFlipped;
    };
    const Walk& walk() const { return mWalk; }

private:
    void placeImage();
    void cutThrough();

    const OvVolumeContent* mContent;
    int mAxis;
    int mNumber;
    int mWidth = 0;
    int mHeight = 0;
    double mAspect = 1;
    bool mHasPlace = false;
    OvVector3 mOrigin;
    OvVector3 mRight;
    OvVector3 mDown;
    Walk mWalk{.rightAxis = 0, .downAxis = 1, .rightFlipped = false, .downFlipped = false};
};

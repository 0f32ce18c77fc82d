#pragma once

#include "KyDICOMObjectInterface.h"

#include <ovvolren/OvVolume.h>
#include <rnlib/RnHandle.h>

/// The DICOM elements of one image of a volume. Keeps the volume while it lives.
class KyDICOMAccessOvVolume final : public KyDICOMObjectInterface
{
public:
    /// A null \a inVolume has no elements: every tag gives the default. A \a inSliceNumber that is none of
    /// the volume's, such as -1 for none on show, leaves the elements that all images share.
    KyDICOMAccessOvVolume(const OvVolume* inVolume, int inSliceNumber);

    const OvVolume* volume() const override { return mVolume.get(); }
    QVariant tag(const KyDICOMObjectInfo::TagKey& inKey, KyDICOMObjectInfo::Warnings* outWarnings,
                 const QVariant& inDefault) const override;
    QVariant sharedTag(const KyDICOMObjectInfo::TagKey& inKey, KyDICOMObjectInfo::Warnings* outWarnings,
                       const QVariant& inDefault) const override;

private:
    const RnHandle<const OvVolume> mVolume;
    const int mSliceNumber;
};

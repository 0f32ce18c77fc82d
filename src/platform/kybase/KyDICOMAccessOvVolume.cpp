#include "KyDICOMAccessOvVolume.h"

#include <ovwebservice/DicomHeader.h>

namespace {

QVariant valueOf(const Ovg::DicomHeader& inHeader, const KyDICOMObjectInfo::TagKey& inKey,
                 KyDICOMObjectInfo::Warnings* outWarnings)
{
    return inHeader.value(inKey.path(), outWarnings ? &outWarnings->texts : nullptr);
}

} // namespace

KyDICOMAccessOvVolume::KyDICOMAccessOvVolume(const OvVolume* inVolume, int inSliceNumber)
    : mVolume(inVolume)
    , mSliceNumber(inSliceNumber)
{}

QVariant KyDICOMAccessOvVolume::tag(const KyDICOMObjectInfo::TagKey& inKey,
                                    KyDICOMObjectInfo::Warnings* outWarnings, const QVariant& inDefault) const
{
    const Ovg::DicomHeader* header = mVolume ? mVolume->header(mSliceNumber) : nullptr;
    if (!header)
        return sharedTag(inKey, outWarnings, inDefault);
    const QVariant value = valueOf(*header, inKey, outWarnings);
    return value.isValid() ? value : inDefault;
}

QVariant KyDICOMAccessOvVolume::sharedTag(const KyDICOMObjectInfo::TagKey& inKey,
                                          KyDICOMObjectInfo::Warnings* outWarnings,
                                          const QVariant& inDefault) const
{
    const Ovg::DicomHeader* first = mVolume ? mVolume->header(0) : nullptr;
    if (!first)
        return inDefault;
    const QVariant value = valueOf(*first, inKey, outWarnings);
    for (int image = 1; value.isValid() && image < mVolume->imageCount(); ++image) {
        const Ovg::DicomHeader* header = mVolume->header(image);
        // The frames of one object have one header.
        if (header != first && (!header || valueOf(*header, inKey, nullptr) != value))
            return inDefault;
    }
    return value.isValid() ? value : inDefault;
}

#pragma once

#include "KyDICOMObjectInfo.h"

#include <QVariant>

/// Something that has DICOM elements: a study, an image.
class KyDICOMObjectInterface
{
public:
    virtual ~KyDICOMObjectInterface();

    /// The volume that the object is an image of; null for any other object.
    virtual const OvVolume* volume() const { return nullptr; }

    /// The value of the element \a inKey, or \a inDefault when the object lacks it. Oddities of the value are
    /// added to \a outWarnings, if not null. Types are those of Ovg::DicomHeader::value().
    virtual QVariant tag(const KyDICOMObjectInfo::TagKey& inKey, KyDICOMObjectInfo::Warnings* outWarnings,
                         const QVariant& inDefault) const = 0;

    /// The same where the object is one of several images: the value that all of them have, or \a inDefault
    /// when they differ. For any other object as tag().
    virtual QVariant sharedTag(const KyDICOMObjectInfo::TagKey& inKey,
                               KyDICOMObjectInfo::Warnings* outWarnings, const QVariant& inDefault) const;
};

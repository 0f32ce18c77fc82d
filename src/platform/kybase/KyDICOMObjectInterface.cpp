#include "KyDICOMObjectInterface.h"

KyDICOMObjectInterface::~KyDICOMObjectInterface() = default;

QVariant KyDICOMObjectInterface::sharedTag(const KyDICOMObjectInfo::TagKey& inKey,
                                           KyDICOMObjectInfo::Warnings* outWarnings,
                                           const QVariant& inDefault) const
{
    return tag(inKey, outWarnings, inDefault);
}

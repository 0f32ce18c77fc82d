#include "KyDICOMAccessDicomDirectoryEntry.h"

#include <utility>

KyDICOMAccessDicomDirectoryEntry::KyDICOMAccessDicomDirectoryEntry(
    std::shared_ptr<Ovg::DicomDirectoryEntry> inEntry)
    : mEntry(std::move(inEntry))
{}

QVariant KyDICOMAccessDicomDirectoryEntry::tag(const KyDICOMObjectInfo::TagKey& inKey,
                                               KyDICOMObjectInfo::Warnings* outWarnings,
                                               const QVariant& inDefault) const
{
    const QVariant value =
        mEntry ? mEntry->value(inKey.path(), outWarnings ? &outWarnings->texts : nullptr) : QVariant();
    return value.isValid() ? value : inDefault;
}

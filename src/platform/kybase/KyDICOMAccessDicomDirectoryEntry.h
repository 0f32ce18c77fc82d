#pragma once

#include "KyDICOMObjectInterface.h"

#include <ovwebservice/DicomDirectoryEntry.h>

#include <memory>

/// The DICOM elements of a study. Shares the ownership of the study.
class KyDICOMAccessDicomDirectoryEntry final : public KyDICOMObjectInterface
{
public:
    /// A null \a inEntry has no elements: every tag gives the default.
    explicit KyDICOMAccessDicomDirectoryEntry(std::shared_ptr<Ovg::DicomDirectoryEntry> inEntry);

    QVariant tag(const KyDICOMObjectInfo::TagKey& inKey, KyDICOMObjectInfo::Warnings* outWarnings,
                 const QVariant& inDefault) const override;

    const std::shared_ptr<Ovg::DicomDirectoryEntry>& entry() const { return mEntry; }

private:
    const std::shared_ptr<Ovg::DicomDirectoryEntry> mEntry;
};

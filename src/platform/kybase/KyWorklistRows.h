#pragma once

#include <ovwebservice/WorklistEntry.h>

#include <memory>
#include <string>
#include <unordered_map>

namespace Ovg {
class DicomDirectoryEntry;
}

/// The rows of a worklist, found by study. A value, which the stores keep.
class KyWorklistRows
{
public:
    /// A row is about a study by its UID, or by its accession number when it has no UID.
    static bool namesAStudy(const Ovg::WorklistEntry& inEntry);

    /// Adds a row in place of the one about the same study. A row that names none is left out.
    void put(const Ovg::WorklistEntry& inEntry);

    /// See KyWorklistStore::find().
    std::shared_ptr<Ovg::WorklistEntry> find(const Ovg::DicomDirectoryEntry& inStudy) const;

private:
    using Row = std::shared_ptr<Ovg::WorklistEntry>;

    Row findByAccession(const Ovg::DicomDirectoryEntry& inStudy) const;

    std::unordered_map<std::string, Row> mByStudy;
    std::unordered_multimap<std::string, Row> mByAccession;
};

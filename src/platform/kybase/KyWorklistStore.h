#pragma once

#include <ovwebservice/WorklistEntry.h>
#include <rnlib/RnResult.h>

#include <memory>

namespace Ovg {
class DicomDirectoryEntry;
}

/// Port: where the rows of the reading worklist come from. KyFileWorklistStore, KyMemoryWorklistStore.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. GUI
/// thread only.
class KyWorklistStore
{
public:
    KyWorklistStore();
    virtual ~KyWorklistStore();
    KyWorklistStore(const KyWorklistStore&) = delete;
    KyWorklistStore& operator=(const KyWorklistStore&) = delete;

    /// Null when there is no worklist.
    static KyWorklistStore* instance();

    /// The row about \a inStudy: that with its study instance UID, else one without a UID that has its
    /// accession number and, where the row names a patient, its patient ID. Null when there is none.
    virtual std::shared_ptr<Ovg::WorklistEntry> find(const Ovg::DicomDirectoryEntry& inStudy) = 0;

    /// Adds a row, or replaces the one about the same study. A row that names neither a study nor an
    /// accession number is refused.
    virtual RnResult put(const Ovg::WorklistEntry& inEntry) = 0;
};

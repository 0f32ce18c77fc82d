#pragma once

#include "DicomInstanceFacts.h"
#include "StudySource.h"

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace Ovg {

/// Sorts instances into studies. What comes out depends on the order of add() in one thing only: of instances
/// with the same SOP instance UID the first stays.
class StudyGrouping
{
public:
    enum class Added
    {
        Yes,
        Duplicate,
        NoStudy, ///< Without a study instance UID there is no place for it.
    };

    Added add(const DicomInstanceFacts& inFacts);

    /// The instances of each study in the order of series number, instance number, SOP instance UID, and
    /// origin; the studies in the order in which they came.
    std::vector<std::vector<DicomInstanceFacts>> studies() const;

private:
    std::vector<std::vector<DicomInstanceFacts>> mStudies;
    std::unordered_map<std::string, size_t> mIndexOfUid;
    std::unordered_set<std::string> mSopInstanceUids;
};

/// The study that \a inInstances, sorted as above, make up, with the values of \a inRepresentative.
std::shared_ptr<DicomDirectoryEntry> makeStudy(const DicomHeader& inRepresentative,
                                               const std::vector<DicomInstanceFacts>& inInstances);

/// The facts as they stand in \a inHeader.
DicomInstanceFacts factsOf(const DicomHeader& inHeader);

/// Sorts the studies of \a ioResult and counts their instances.
void finish(StudySourceResult& ioResult);

} // namespace Ovg

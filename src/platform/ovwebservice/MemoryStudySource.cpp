#include "MemoryStudySource.h"

#include "StudyGrouping.h"

namespace Ovg {

void MemoryStudySource::add(const DicomHeader& inHeader)
{
    mHeaders.push_back(inHeader);
}

StudySourceResult MemoryStudySource::load(const Progress& inProgress)
{
    StudySourceResult result;
    StudyGrouping grouping;
    const int total = static_cast<int>(mHeaders.size());
    while (result.files < total && !result.cancelled) {
        DicomInstanceFacts facts = factsOf(mHeaders[static_cast<size_t>(result.files)]);
        facts.origin = result.files++;
        const StudyGrouping::Added added = grouping.add(facts);
        result.duplicates += added == StudyGrouping::Added::Duplicate ? 1 : 0;
        result.noStudy += added == StudyGrouping::Added::NoStudy ? 1 : 0;
        result.cancelled = inProgress && !inProgress(result.files, total);
    }
    for (const auto& instances : grouping.studies())
        result.studies.push_back(
            makeStudy(mHeaders[static_cast<size_t>(instances.front().origin)], instances));
    finish(result);
    return result;
}

} // namespace Ovg

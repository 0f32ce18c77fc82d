#include "KyWorklistRows.h"

#include <ovwebservice/DicomDirectoryEntry.h>

bool KyWorklistRows::namesAStudy(const Ovg::WorklistEntry& inEntry)
{
    return !inEntry.studyInstanceUid.empty() || !inEntry.accessionNumber.empty();
}

void KyWorklistRows::put(const Ovg::WorklistEntry& inEntry)
{
    const auto row = std::make_shared<Ovg::WorklistEntry>(inEntry);
    if (!inEntry.studyInstanceUid.empty()) {
        mByStudy[inEntry.studyInstanceUid] = row;
        return;
    }
    if (inEntry.accessionNumber.empty())
        return;
    const auto [begin, end] = mByAccession.equal_range(inEntry.accessionNumber);
    for (auto it = begin; it != end; ++it) {
        if (it->second->patientId == inEntry.patientId) {
            it->second = row;
            return;
        }
    }
    mByAccession.emplace(inEntry.accessionNumber, row);
}

std::shared_ptr<Ovg::WorklistEntry> KyWorklistRows::find(const Ovg::DicomDirectoryEntry& inStudy) const
{
    const auto found = mByStudy.find(inStudy.studyInstanceUid());
    return found == mByStudy.end() ? findByAccession(inStudy) : found->second;
}

KyWorklistRows::Row KyWorklistRows::findByAccession(const Ovg::DicomDirectoryEntry& inStudy) const
{
    const std::string patientId = inStudy.patientId().toStdString();
    Row forAnyPatient;
    const auto [begin, end] = mByAccession.equal_range(inStudy.accessionNumber());
    for (auto it = begin; it != end; ++it) {
        if (it->second->patientId.empty())
            forAnyPatient = it->second;
        else if (it->second->patientId == patientId)
            return it->second;
    }
    return forAnyPatient;
}

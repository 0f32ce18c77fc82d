#pragma once

#include "KyJsonFile.h"
#include "KyWorklistRows.h"
#include "KyWorklistStore.h"

/// The worklist in a JSON file of the profile, which other programs may write too:
///
///     { "entries": [ { "studyInstanceUid": "1.2.3", "accessionNumber": "A7", "patientId": "P1",
///                      "assignee": "meier", "status": "DRAFT", "flags": 2,
///                      "attributes": { "Priority": "HIGH" } } ] }
///
/// Members may be missing; rows that name no study are passed over. The file is read again when it has
/// changed. What becomes of a damaged file stands at KyJsonFile.
class KyFileWorklistStore final : public KyWorklistStore
{
public:
    explicit KyFileWorklistStore(QString inPath);

    std::shared_ptr<Ovg::WorklistEntry> find(const Ovg::DicomDirectoryEntry& inStudy) override;
    RnResult put(const Ovg::WorklistEntry& inEntry) override;

private:
    void readRows();

    KyJsonFile mFile;
    KyWorklistRows mRows;
};

#pragma once

#include "KyWorklistRows.h"
#include "KyWorklistStore.h"

/// A worklist that lasts as long as the object. Filled by put().
class KyMemoryWorklistStore final : public KyWorklistStore
{
public:
    std::shared_ptr<Ovg::WorklistEntry> find(const Ovg::DicomDirectoryEntry& inStudy) override;
    RnResult put(const Ovg::WorklistEntry& inEntry) override;

private:
    KyWorklistRows mRows;
};

#include "KyMemoryWorklistStore.h"

std::shared_ptr<Ovg::WorklistEntry> KyMemoryWorklistStore::find(const Ovg::DicomDirectoryEntry& inStudy)
{
    return mRows.find(inStudy);
}

RnResult KyMemoryWorklistStore::put(const Ovg::WorklistEntry& inEntry)
{
    if (!KyWorklistRows::namesAStudy(inEntry))
        return RnResult::failure("The row names no study");
    mRows.put(inEntry);
    return RnResult::ok();
}

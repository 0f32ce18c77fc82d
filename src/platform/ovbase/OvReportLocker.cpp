#include "OvReportLocker.h"

#include "OvObservers.h"

#include <algorithm>

OvReportLocker::OvReportLocker(LockFunction inLock)
    : mLock(std::move(inLock))
{}

bool OvReportLocker::lockFromScript(const std::vector<Entry>& inEntries)
{
    bool areAllLocked = true;
    for (const Entry& entry : inEntries)
        areAllLocked = (!entry || lock(entry)) && areAllLocked;
    return areAllLocked;
}

bool OvReportLocker::lock(const Entry& inEntry)
{
    if (std::find(mLocked.begin(), mLocked.end(), inEntry) != mLocked.end())
        return true;
    try {
        if (!mLock || !mLock(inEntry))
            return false;
    } catch (...) {
        ovLogException("OvReportLocker", "locking a worklist entry");
        return false;
    }
    mLocked.push_back(inEntry);
    return true;
}

std::vector<OvReportLocker::Entry> OvReportLocker::release()
{
    return std::exchange(mLocked, {});
}

#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace Ovg {
struct WorklistEntry;
}

/// Locks worklist entries for reporting, so that no other user reports on them meanwhile.
///
/// Somebody's object: its owner gives the function that locks one entry in the worklist of the department,
/// and unlocks what is given back. GUI thread.
class OvReportLocker
{
public:
    using Entry = std::shared_ptr<Ovg::WorklistEntry>;
    /// Locks one entry, never a null one, for this user. False when another user holds it, or when the
    /// worklist can't be reached.
    using LockFunction = std::function<bool(const Entry&)>;

    /// With an empty \a inLock no entry can be locked.
    explicit OvReportLocker(LockFunction inLock);

    /// Locks the entries, in their order. True when all of them are locked now, by this call or before; null
    /// ones are passed over, and an empty list is true. A failure doesn't stop the others, and what could be
    /// locked stays locked. An entry that this locker holds is not asked for again. What the function throws
    /// counts as a failure and is logged.
    bool lockFromScript(const std::vector<Entry>& inEntries);

    /// What this locker holds, in the order in which it was locked.
    const std::vector<Entry>& locked() const { return mLocked; }

    /// Hands over what this locker holds, and holds nothing any more.
    std::vector<Entry> release();

private:
    bool lock(const Entry& inEntry);

    const LockFunction mLock;
    std::vector<Entry> mLocked;
};

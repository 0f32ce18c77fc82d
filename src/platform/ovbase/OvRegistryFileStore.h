#pragma once

#include "OvRegistryJournal.h"
#include "OvRegistryStore.h"

#include <QByteArray>
#include <QDateTime>

#include <chrono>

/// Layers in one file, shared by all processes of a user.
///
/// The file is a journal in UTF-8: a first line that names the format and this writing of the file, then one
/// JSON object per line, `{"id":"General.DateFormat","layer":1000,"source":"kyrun","value":"dd.MM.yyyy"}` or
/// `{"id":"General.DateFormat","layer":1000,"removed":true}`. A later line overrides an earlier one. A change
/// is one line appended; when most lines have been overridden, the whole file is written anew and replaced at
/// once. So a process that is killed at any moment leaves a readable file with every change that apply() has
/// confirmed. (What the system itself had not written out when it went down may be missing.)
///
/// Each change is made under the lock "FILE.lock" and on top of what other processes have stored meanwhile;
/// the system gives the lock back when its holder dies.
///
/// A file that is damaged is copied to "FILE.damaged-TIME", and what can be read of it is kept, on top of
/// what this process had read of it before. A file that can't be read, or is something else altogether, is
/// renamed so. Where that fails the file is left alone: values are read as far as they can, and none is
/// stored. Each of this is one line of level 3 in the log. A file that does not exist is no failure; it is
/// made, with its folder and for the user alone, by the first change.
class OvRegistryFileStore final : public OvRegistryStore
{
public:
    static constexpr std::chrono::milliseconds DefaultLockTimeout{5000};

    /// \a inLockTimeout is how long a change waits for the lock of others before it fails.
    explicit OvRegistryFileStore(const QString& inPath,
                                 std::chrono::milliseconds inLockTimeout = DefaultLockTimeout);

    const QString& path() const { return mPath; }

    const Content& content() override;
    bool apply(const Change& inChange) override;

private:
    /// What shows that others have written.
    struct Stamp
    {
        bool exists = false;
        qint64 size = 0;
        QDateTime modified;

        friend bool operator==(const Stamp&, const Stamp&) = default;
    };

    Stamp stampOnDisk() const;
    /// Whether the file is as this object left it, to be asked under the lock.
    bool isCurrent() const;
    bool canAppend() const;

    /// Takes over the file, or its absence. False, with no change, when it is not a sound journal.
    bool load();
    /// Brings a file that can't be loaded out of the way, keeping what can be read of it. With an obstacle,
    /// as without the lock, nothing on disk is touched.
    bool repair(const QString& inObstacle);
    bool setAside(const QString& inReason);
    bool recover(const QString& inReason, const QByteArray& inText);

    bool append(const Change& inChange);
    /// Writes the file anew, with one more change if there is one.
    bool rewrite(const Change* inChange);

    /// Notes that the damaged file on disk must not be written. Always false.
    bool giveUp(const QString& inReason, const QString& inObstacle);
    /// Logs a failure, unless it is the same as the last one. Always false.
    bool fail(const QString& inReason);

    const QString mPath;
    const std::chrono::milliseconds mLockTimeout;
    Content mContent;
    Stamp mStamp;
    QByteArray mHeader; ///< The first line of the file; empty without one.
    int mLines = 0;
    int mLinesNeeded = 0; ///< That a file written anew would have had, at the last reading or writing.
    bool mEndsWithBreak = true;
    bool mIsDamaged = false; ///< The file is damaged and could not be repaired.
    QString mFailure;        ///< The reason last logged; empty after a success.
};

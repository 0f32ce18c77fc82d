#pragma once

#include <QString>

#include <chrono>

/// A lock that processes share through a file: held from construction to destruction, and given back by the
/// system when the holder dies. The file stays; its content means nothing.
class OvFileLock
{
public:
    /// Waits at most \a inTimeout for others. The folder must exist.
    OvFileLock(const QString& inPath, std::chrono::milliseconds inTimeout);
    ~OvFileLock();
    OvFileLock(const OvFileLock&) = delete;
    OvFileLock& operator=(const OvFileLock&) = delete;

    bool isHeld() const { return mErrorText.isEmpty(); }
    /// Why the lock could not be had; empty when it is held.
    const QString& errorText() const { return mErrorText; }

private:
    int mFile = -1;
    QString mErrorText;
};

#include "OvFileLock.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

QString systemText(int inError)
{
    return QString::fromLocal8Bit(strerror(inError));
}

/// 0 when the lock was taken, else the number of the error.
int takeLock(int inFile, Clock::time_point inDeadline)
{
    std::chrono::microseconds pause(100);
    while (flock(inFile, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return errno;
        if (Clock::now() >= inDeadline)
            return EWOULDBLOCK;
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::microseconds(5000));
    }
    return 0;
}

} // namespace

OvFileLock::OvFileLock(const QString& inPath, std::chrono::milliseconds inTimeout)
{
    mFile = open(QFile::encodeName(inPath).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (mFile < 0) {
        mErrorText = systemText(errno);
        return;
    }
    const int error = takeLock(mFile, Clock::now() + inTimeout);
    if (error == EWOULDBLOCK)
        mErrorText = QStringLiteral("another process holds the lock %1").arg(inPath);
    else if (error != 0)
        mErrorText = systemText(error);
}

OvFileLock::~OvFileLock()
{
    if (mFile >= 0)
        close(mFile);
}

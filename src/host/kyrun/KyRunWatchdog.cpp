#include "KyRunWatchdog.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <poll.h>
#include <unistd.h>

namespace {

/// Past the streams, whose locks the other thread may hold, and not to a reader who has stopped reading.
void tell(int inSeconds)
{
    char text[64];
    const int length = std::snprintf(text, sizeof text, "kyrun: still running after %d seconds\n", inSeconds);
    pollfd target = {STDERR_FILENO, POLLOUT, 0};
    if (poll(&target, 1, 0) == 1 && (target.revents & POLLOUT)) [[maybe_unused]]
        const auto written = write(STDERR_FILENO, text, size_t(length));
}

} // namespace

KyRunWatchdog::KyRunWatchdog(int inSeconds)
{
    if (inSeconds <= 0)
        return;
    mThread = std::thread([this, inSeconds] {
        std::unique_lock lock(mMutex);
        if (mCalledOff.wait_for(lock, std::chrono::seconds(inSeconds), [this] { return mIsCalledOff; }))
            return;
        tell(inSeconds);
        std::_Exit(ExitStatus); // the other thread may be anywhere: nothing can be destroyed in order
    });
}

KyRunWatchdog::~KyRunWatchdog()
{
    if (!mThread.joinable())
        return;
    {
        const std::lock_guard lock(mMutex);
        mIsCalledOff = true;
    }
    mCalledOff.notify_one();
    mThread.join();
}

#include "KyRunWatchdog.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

KyRunWatchdog::KyRunWatchdog(int inSeconds)
{
    if (inSeconds <= 0)
        return;
    mThread = std::thread([this, inSeconds] {
        std::unique_lock lock(mMutex);
        if (mCalledOff.wait_for(lock, std::chrono::seconds(inSeconds), [this] { return mIsCalledOff; }))
            return;
        std::fprintf(stderr, "kyrun: still running after %d seconds\n", inSeconds);
        std::fflush(stdout);
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

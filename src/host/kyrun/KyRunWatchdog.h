#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

/// Ends the process with exit status 124 when its time is over, also while a script never comes to an end.
/// Destruction calls it off.
class KyRunWatchdog
{
public:
    static constexpr int ExitStatus = 124;

    /// 0 seconds watch nothing.
    explicit KyRunWatchdog(int inSeconds);
    ~KyRunWatchdog();
    KyRunWatchdog(const KyRunWatchdog&) = delete;
    KyRunWatchdog& operator=(const KyRunWatchdog&) = delete;

private:
    std::mutex mMutex;
    std::condition_variable mCalledOff;
    bool mIsCalledOff = false;
    std::thread mThread;
};

#pragma once

#include <chrono>

/// A stopwatch that starts at construction and runs on the monotonic clock.
class RnWatch
{
public:
    RnWatch()
        : mStart(std::chrono::steady_clock::now())
    {}

    void restart() { mStart = std::chrono::steady_clock::now(); }

    /// Whole milliseconds since the start, cut off.
    long long milliseconds() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                     mStart)
            .count();
    }

private:
    std::chrono::steady_clock::time_point mStart;
};

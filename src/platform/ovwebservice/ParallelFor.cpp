#include "ParallelFor.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace Ovg {

namespace {

constexpr std::chrono::milliseconds progressInterval{50};

/// As many workers as there are cores, or fewer when the system gives no more threads.
std::vector<std::jthread> startWorkers(int inCount, const std::function<void()>& inWork)
{
    const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    std::vector<std::jthread> workers;
    try {
        for (int i = 0; i < std::min(cores, inCount); ++i)
            workers.emplace_back(inWork);
    } catch (const std::system_error&) {
        return workers;
    }
    return workers;
}

bool onThisThread(int inCount, const std::function<void(int)>& inTask,
                  const std::function<bool(int, int)>& inProgress)
{
    for (int i = 0; i < inCount; ++i) {
        inTask(i);
        if (inProgress && !inProgress(i + 1, inCount))
            return false;
    }
    return true;
}

} // namespace

bool parallelFor(int inCount, const std::function<void(int)>& inTask,
                 const std::function<bool(int, int)>& inProgress)
{
    std::atomic<int> next{0};
    std::atomic<int> done{0};
    std::atomic<bool> stopped{false};
    std::mutex mutex;
    std::condition_variable finished;
    const auto work = [&] {
        for (int i = next++; i < inCount && !stopped; i = next++) {
            inTask(i);
            if (++done < inCount)
                continue;
            const std::scoped_lock lock(mutex);
            finished.notify_one();
        }
    };
    std::vector<std::jthread> workers = startWorkers(inCount, work);
    if (workers.empty())
        return onThisThread(inCount, inTask, inProgress);
    std::unique_lock lock(mutex);
    while (!stopped && !finished.wait_for(lock, progressInterval, [&] { return done == inCount; }))
        stopped = inProgress && !inProgress(done, inCount);
    lock.unlock();
    workers.clear();
    if (!stopped && inCount > 0 && inProgress)
        stopped = !inProgress(inCount, inCount);
    return !stopped;
}

} // namespace Ovg

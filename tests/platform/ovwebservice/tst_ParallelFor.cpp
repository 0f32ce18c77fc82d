#include <support/KyTest.h>

#include <ovwebservice/ParallelFor.h>

#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

#ifdef Q_OS_LINUX
#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>

namespace {

std::atomic<int> threadsLeft{-1}; // -1: no limit

} // namespace

/// Stands before the one of the system, which so refuses more threads than threadsLeft.
extern "C" int pthread_create(pthread_t* outThread, const pthread_attr_t* inAttributes,
                              void* (*inStart)(void*), void* inArgument) noexcept
{
    if (threadsLeft == 0)
        return EAGAIN;
    if (threadsLeft > 0)
        --threadsLeft;
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    return original(outThread, inAttributes, inStart, inArgument);
}
#endif

using Ovg::parallelFor;

class TestParallelFor final : public QObject
{
    Q_OBJECT

private slots:
    void eachNumberComesOnce()
    {
        std::vector<std::atomic<int>> calls(1000);
        QVERIFY(parallelFor(1000, [&calls](int i) { ++calls[size_t(i)]; }));
        QVERIFY(std::all_of(calls.begin(), calls.end(), [](const auto& n) { return n == 1; }));
    }

    void nothingToDoIsDoneAtOnce()
    {
        int calls = 0;
        QVERIFY(parallelFor(
            0, [&calls](int) { ++calls; },
            [&calls](int, int) {
                ++calls;
                return false;
            }));
        QCOMPARE(calls, 0);
    }

#ifdef Q_OS_LINUX
    void cleanup()
    {
        threadsLeft = -1;
    }

    void fewerThreadsDoTheSame_data()
    {
        QTest::addColumn<int>("threads");
        QTest::newRow("none") << 0;
        QTest::newRow("one") << 1;
    }
    void fewerThreadsDoTheSame()
    {
        QFETCH(int, threads);
        std::vector<std::atomic<int>> calls(100);
        QList<int> done;
        std::atomic<int> onCaller{0};
        const auto caller = std::this_thread::get_id();
        threadsLeft = threads;
        const bool finished = parallelFor(
            100,
            [&](int i) {
                ++calls[size_t(i)];
                onCaller += std::this_thread::get_id() == caller;
            },
            [&done](int now, int) {
                done += now;
                return true;
            });
        QVERIFY(finished);
        QCOMPARE(int(threadsLeft), 0);
        QVERIFY(std::all_of(calls.begin(), calls.end(), [](const auto& n) { return n == 1; }));
        QCOMPARE(int(onCaller), threads == 0 ? 100 : 0);
        QCOMPARE(done.last(), 100);
    }

    void withoutThreadsItCanBeStopped()
    {
        int calls = 0;
        threadsLeft = 0;
        QVERIFY(!parallelFor(
            100, [&calls](int) { ++calls; }, [](int now, int) { return now < 7; }));
        QCOMPARE(calls, 7);
    }
#endif
};

KY_TEST_MAIN(TestParallelFor)

#include "tst_ParallelFor.moc"

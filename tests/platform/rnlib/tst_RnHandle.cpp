#include <support/ContractWatch.h>
#include <support/KyTest.h>

#include <rnlib/RnHandle.h>

#include <set>
#include <thread>
#include <vector>

namespace {

class Thing : public RnHandable
{
public:
    explicit Thing(int* ioDeaths = nullptr)
        : mDeaths(ioDeaths)
    {}
    ~Thing() override
    {
        if (mDeaths)
            ++*mDeaths;
    }

    int answer() const { return 42; }

private:
    int* const mDeaths;
};

class SpecialThing final : public Thing
{
public:
    using Thing::Thing;
};

class SharedThing final : public RnHandableThreaded
{
public:
    explicit SharedThing(int* ioDeaths = nullptr)
        : mDeaths(ioDeaths)
    {}
    ~SharedThing() override
    {
        if (mDeaths)
            ++*mDeaths;
    }

private:
    int* const mDeaths;
};

} // namespace

class TestRnHandle final : public QObject
{
    Q_OBJECT

private slots:
    void init() { mWatch = std::make_unique<ContractWatch>(); }
    void cleanup() { mWatch.reset(); }

    void objectStartsUncounted()
    {
        const Thing thing;
        QCOMPARE(thing.refCount(), 0);
    }

    void lastHandleDeletesTheObject()
    {
        int deaths = 0;
        {
            RnHandle<Thing> first(new Thing(&deaths));
            QCOMPARE(first->refCount(), 1);
            {
                const RnHandle<Thing> second = first;
                QCOMPARE(first->refCount(), 2);
                QVERIFY(first == second);
            }
            QCOMPARE(first->refCount(), 1);
            QCOMPARE(deaths, 0);
        }
        QCOMPARE(deaths, 1);
    }

    void moveKeepsTheCount()
    {
        int deaths = 0;
        RnHandle<Thing> first(new Thing(&deaths));
        const RnHandle<Thing> second = std::move(first);
        QVERIFY(first.isNull());
        QCOMPARE(second->refCount(), 1);
        QCOMPARE(deaths, 0);
    }

    void assignmentReleasesTheOldObject()
    {
        int oldDeaths = 0;
        int newDeaths = 0;
        RnHandle<Thing> handle(new Thing(&oldDeaths));
        handle = new Thing(&newDeaths);
        QCOMPARE(oldDeaths, 1);
        handle = nullptr;
        QCOMPARE(newDeaths, 1);
        QVERIFY(!handle);
    }

    void selfAssignmentKeepsTheObject()
    {
        int deaths = 0;
        RnHandle<Thing> handle(new Thing(&deaths));
        const RnHandle<Thing>& same = handle;
        handle = same;
        QCOMPARE(deaths, 0);
        QCOMPARE(handle->refCount(), 1);
    }

    void resetReleasesOnce()
    {
        int deaths = 0;
        RnHandle<Thing> handle(new Thing(&deaths));
        handle.reset();
        handle.reset();
        QCOMPARE(deaths, 1);
        QVERIFY(handle.isNull());
    }

    void handleOfADerivedClassConverts()
    {
        int deaths = 0;
        RnHandle<Thing> base;
        {
            const RnHandle<SpecialThing> special(new SpecialThing(&deaths));
            base = special;
            QVERIFY(base == special);
        }
        QCOMPARE(deaths, 0);
        const RnHandle<const Thing> constant = base;
        QCOMPARE(constant->answer(), 42);
        QCOMPARE(base->refCount(), 2);
    }

    void nullHandleIsNormal()
    {
        const RnHandle<Thing> null;
        QVERIFY(null.isNull() && !null.isNotNull() && !null && !null.get());
        QVERIFY(null == RnHandle<Thing>(nullptr));
        QVERIFY(null == nullptr);
    }

    void nullHandleReportsAContract()
    {
        mWatch->expect(QStringLiteral("isNotNull()"));
        const RnHandle<Thing> null;
        QVERIFY(!null.operator->());
        QCOMPARE(mWatch->verify(), QString());
    }

    void filledHandleDereferences()
    {
        const RnHandle<Thing> handle(new Thing);
        QCOMPARE((*handle).answer(), 42);
        QCOMPARE(handle->answer(), 42);
    }

    void handlesHaveAnOrder()
    {
        const RnHandle<Thing> a(new Thing);
        const RnHandle<Thing> b(new Thing);
        const std::set<RnHandle<Thing>> handles{a, b, a};
        QCOMPARE(handles.size(), std::size_t(2));
        QVERIFY(a != b && (a < b) != (b < a));
    }

    void unrefWithoutRefReportsAContract_data()
    {
        QTest::addColumn<bool>("threaded");
        QTest::newRow("plain") << false;
        QTest::newRow("threaded") << true;
    }
    void unrefWithoutRefReportsAContract()
    {
        QFETCH(bool, threaded);
        mWatch->expect(QStringLiteral("mCount > 0"));
        int deaths = 0;
        const Thing plain(&deaths);
        const SharedThing shared(&deaths);
        if (threaded)
            shared.unref();
        else
            plain.unref();
        QCOMPARE(mWatch->verify(), QString());
        QCOMPARE(deaths, 0);
        QCOMPARE(plain.refCount() + shared.refCount(), 0);
    }

    void liveObjectsAreCountedByKind()
    {
        const std::size_t plainBefore = RnHandable::liveCount();
        const std::size_t threadedBefore = RnHandableThreaded::liveCount();
        {
            const RnHandle<Thing> one(new Thing);
            const RnHandle<Thing> two(new SpecialThing);
            const RnHandle<SharedThing> shared(new SharedThing);
            QCOMPARE(RnHandable::liveCount(), plainBefore + 2);
            QCOMPARE(RnHandableThreaded::liveCount(), threadedBefore + 1);
        }
        QCOMPARE(RnHandable::liveCount(), plainBefore);
        QCOMPARE(RnHandableThreaded::liveCount(), threadedBefore);
    }

    void threadedHandlesCountAcrossThreads()
    {
        int deaths = 0;
        RnHandle<SharedThing> handle(new SharedThing(&deaths));
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([copy = handle] {
                for (int n = 0; n < 10000; ++n)
                    const RnHandle<SharedThing> another = copy;
            });
        for (std::thread& thread : threads)
            thread.join();
        threads.clear();
        QCOMPARE(handle->refCount(), 1);
        handle.reset();
        QCOMPARE(deaths, 1);
    }

private:
    std::unique_ptr<ContractWatch> mWatch;
};

KY_TEST_MAIN(TestRnHandle)

#include "tst_RnHandle.moc"

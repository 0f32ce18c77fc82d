#include <support/KyTest.h>

#include <rnlib/RnUniqueID.h>

#include <set>
#include <thread>
#include <vector>

class TestRnUniqueID final : public QObject
{
    Q_OBJECT

private slots:
    void aDefaultIdIsEmpty()
    {
        constexpr RnUniqueID id;
        QVERIFY(id.isEmpty());
        QCOMPARE(id.value(), std::uint64_t(0));
        QVERIFY(id == RnUniqueID());
    }

    void aCreatedIdIsNew()
    {
        const RnUniqueID a = RnUniqueID::create();
        const RnUniqueID b = RnUniqueID::create();
        QVERIFY(!a.isEmpty() && !b.isEmpty());
        QVERIFY(a != b);
        const RnUniqueID copy = a;
        QVERIFY(copy == a);
    }

    void theEmptyIdComesFirstInTheOrder()
    {
        const RnUniqueID a = RnUniqueID::create();
        const RnUniqueID b = RnUniqueID::create();
        QVERIFY(RnUniqueID() < a);
        QVERIFY(a < b && !(b < a) && !(a < a));
    }

    void threadsGetDifferentIds()
    {
        std::vector<std::vector<RnUniqueID>> made(4);
        std::vector<std::thread> threads;
        for (std::vector<RnUniqueID>& own : made)
            threads.emplace_back([&own] {
                for (int i = 0; i < 1000; ++i)
                    own.push_back(RnUniqueID::create());
            });
        for (std::thread& thread : threads)
            thread.join();
        std::set<RnUniqueID> all;
        for (const std::vector<RnUniqueID>& own : made)
            all.insert(own.begin(), own.end());
        QCOMPARE(all.size(), std::size_t(4000));
    }
};

KY_TEST_MAIN(TestRnUniqueID)

#include "tst_RnUniqueID.moc"

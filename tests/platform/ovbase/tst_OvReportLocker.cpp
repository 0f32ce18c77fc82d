#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <ovbase/OvReportLocker.h>

#include <stdexcept>

namespace Ovg {

// What it is does not matter to the locker.
class WorklistEntry
{
public:
    bool isOthers = false;
};

} // namespace Ovg

namespace {

OvReportLocker::Entry entry(bool inIsOthers = false)
{
    auto made = std::make_shared<Ovg::WorklistEntry>();
    made->isOthers = inIsOthers;
    return made;
}

} // namespace

class TestOvReportLocker final : public QObject
{
    Q_OBJECT

private slots:
    void init() { mAsked.clear(); }

    void freeEntriesAreLockedInTheirOrder()
    {
        OvReportLocker locker = makeLocker();
        const auto a = entry();
        const auto b = entry();
        QVERIFY(locker.lockFromScript({b, a}));
        QCOMPARE(mAsked, (Entries{b, a}));
        QCOMPARE(locker.locked(), (Entries{b, a}));
    }

    void anEntryOfAnotherUserMakesItFalseAndTheRestIsLocked()
    {
        OvReportLocker locker = makeLocker();
        const auto a = entry();
        const auto others = entry(true);
        const auto b = entry();
        QVERIFY(!locker.lockFromScript({a, others, b}));
        QCOMPARE(mAsked, (Entries{a, others, b}));
        QCOMPARE(locker.locked(), (Entries{a, b}));
    }

    void aRefusedEntryIsAskedForAgain()
    {
        OvReportLocker locker = makeLocker();
        const auto others = entry(true);
        QVERIFY(!locker.lockFromScript({others}));
        others->isOthers = false;
        QVERIFY(locker.lockFromScript({others}));
        QCOMPARE(locker.locked(), Entries{others});
    }

    void aHeldEntryCountsAsLockedAndIsNotAskedForAgain()
    {
        OvReportLocker locker = makeLocker();
        const auto a = entry();
        QVERIFY(locker.lockFromScript({a, a}));
        QVERIFY(locker.lockFromScript({a}));
        QCOMPARE(mAsked, Entries{a});
        QCOMPARE(locker.locked(), Entries{a});
    }

    void nullEntriesArePassedOver()
    {
        OvReportLocker locker = makeLocker();
        const auto a = entry();
        QVERIFY(locker.lockFromScript({nullptr, a}));
        QVERIFY(locker.lockFromScript({nullptr}));
        QCOMPARE(mAsked, Entries{a});
    }

    void anEmptyListIsTrue() { QVERIFY(makeLocker().lockFromScript({})); }

    void withoutAFunctionNothingIsLocked()
    {
        OvReportLocker locker({});
        QVERIFY(!locker.lockFromScript({entry()}));
        QVERIFY(locker.lockFromScript({}));
        QVERIFY(locker.locked().empty());
    }

    void whatTheFunctionThrowsIsAFailure()
    {
        const LogCapture log;
        OvReportLocker locker([](const auto&) -> bool { throw std::runtime_error("worklist is down"); });
        QVERIFY(!locker.lockFromScript({entry()}));
        QVERIFY(locker.locked().empty());
        QCOMPARE(log.toStrings(),
                 QStringList{"3|OvReportLocker|locking a worklist entry failed: worklist is down"});
    }

    void releaseHandsOverAndForgets()
    {
        OvReportLocker locker = makeLocker();
        const auto a = entry();
        QVERIFY(locker.lockFromScript({a}));
        QCOMPARE(locker.release(), Entries{a});
        QVERIFY(locker.locked().empty());
        QVERIFY(locker.release().empty());
        QVERIFY(locker.lockFromScript({a}));
        QCOMPARE(mAsked, (Entries{a, a}));
    }

private:
    using Entries = std::vector<OvReportLocker::Entry>;

    OvReportLocker makeLocker()
    {
        return OvReportLocker([this](const OvReportLocker::Entry& asked) {
            mAsked.push_back(asked);
            return !asked->isOthers;
        });
    }

    Entries mAsked;
};

KY_TEST_MAIN(TestOvReportLocker)

#include "tst_OvReportLocker.moc"

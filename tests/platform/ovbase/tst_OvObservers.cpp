#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <ovbase/OvObservers.h>

#include <stdexcept>

class TestOvObservers final : public QObject
{
    Q_OBJECT

private slots:
    void functionsAreCalledInTheirOrder()
    {
        OvObservers<int> observers;
        QList<int> heard;
        observers.add(nullptr, [&](int value) { heard.append(value); });
        observers.add(nullptr, [&](int value) { heard.append(value * 10); });
        observers.tell(3);
        QCOMPARE(heard, (QList<int>{3, 30}));
    }

    void anEmptyFunctionIsIgnored()
    {
        OvObservers<> observers;
        observers.add(nullptr, {});
        QVERIFY(observers.isEmpty());
        observers.tell();
    }

    void aFunctionEndsWithItsContext()
    {
        OvObservers<> observers;
        int calls = 0;
        {
            const QObject context;
            observers.add(&context, [&] { ++calls; });
            observers.tell();
        }
        observers.tell();
        QCOMPARE(calls, 1);
        QVERIFY(observers.isEmpty());
    }

    void removeDropsAllFunctionsOfTheContext()
    {
        OvObservers<> observers;
        const QObject context;
        const QObject other;
        int calls = 0;
        observers.add(&context, [&] { ++calls; });
        observers.add(&other, [&] { calls += 10; });
        observers.add(&context, [&] { ++calls; });
        observers.remove(&context);
        observers.tell();
        QCOMPARE(calls, 10);
    }

    void whoIsRemovedMeanwhileIsNotCalled()
    {
        OvObservers<> observers;
        const QObject late;
        int calls = 0;
        observers.add(nullptr, [&] { observers.remove(&late); });
        observers.add(&late, [&] { ++calls; });
        observers.tell();
        QCOMPARE(calls, 0);
    }

    void whoseContextDiesMeanwhileIsNotCalled()
    {
        OvObservers<> observers;
        auto late = std::make_unique<QObject>();
        int calls = 0;
        observers.add(nullptr, [&] { late.reset(); });
        observers.add(late.get(), [&] { ++calls; });
        observers.tell();
        QCOMPARE(calls, 0);
    }

    void whoIsAddedMeanwhileIsCalledFromTheNextTime()
    {
        OvObservers<> observers;
        int calls = 0;
        observers.add(nullptr, [&] { observers.add(nullptr, [&] { ++calls; }); });
        observers.tell();
        QCOMPARE(calls, 0);
        observers.tell();
        QCOMPARE(calls, 1);
    }

    void theListMayEndMeanwhile()
    {
        auto observers = std::make_unique<OvObservers<>>();
        int calls = 0;
        observers->add(nullptr, [&] { observers.reset(); });
        observers->add(nullptr, [&] { ++calls; });
        observers->tell();
        QVERIFY(!observers);
        QCOMPARE(calls, 1);
    }

    void whatAFunctionThrowsIsLoggedAndStopsNothing()
    {
        const LogCapture log;
        OvObservers<> observers;
        int calls = 0;
        observers.add(nullptr, [] { throw std::runtime_error("no room"); });
        observers.add(nullptr, [] { throw 5; });
        observers.add(nullptr, [&] { ++calls; });
        observers.tell();
        QCOMPARE(calls, 1);
        QCOMPARE(log.toStrings(), (QStringList{"3|OvObservers|an observer failed: no room",
                                               "3|OvObservers|an observer failed"}));
    }
};

KY_TEST_MAIN(TestOvObservers)

#include "tst_OvObservers.moc"

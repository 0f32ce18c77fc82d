#include <support/KyTest.h>

#include <kyscript/KyScriptKeeper.h>

class tst_KyScriptKeeper : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mObject = new QObject;
        mKeeper = new KyScriptKeeper(mObject);
    }
    void cleanup() { delete mObject; }

    void deletionGoesThroughAtRest()
    {
        mObject->deleteLater();
        flush();
        QVERIFY(!mObject);
    }

    void deletionWaitsForTheHandling()
    {
        {
            const KyScriptKeeper::Scope scope(mKeeper);
            mObject->deleteLater();
            flush();
            QVERIFY(mObject);
        }
        QVERIFY(mObject); // Not at once: who has handled may still use it.
        flush();
        QVERIFY(!mObject);
    }

    void deletionWaitsForTheOutermostHandling()
    {
        {
            const KyScriptKeeper::Scope outer(mKeeper);
            {
                const KyScriptKeeper::Scope inner(mKeeper);
                mObject->deleteLater();
                flush();
            }
            flush();
            QVERIFY(mObject);
        }
        flush();
        QVERIFY(!mObject);
    }

    /// Qt forgets a second deleteLater() of an object for which anything else is waiting.
    void deletionIsNotLostBehindOtherEvents()
    {
        {
            const KyScriptKeeper::Scope scope(mKeeper);
            mObject->deleteLater();
            flush();
            QCoreApplication::postEvent(mObject, new QEvent(QEvent::User));
        }
        flush();
        QVERIFY(!mObject);
    }

    void deletionWaitsForAnotherHandling()
    {
        {
            const KyScriptKeeper::Scope scope(mKeeper);
            mObject->deleteLater();
            flush();
        }
        {
            const KyScriptKeeper::Scope scope(mKeeper);
            flush();
            QVERIFY(mObject);
        }
        QVERIFY(mObject);
        flush();
        QVERIFY(!mObject);
    }

    /// What ends a handling may be inside other functions, which go on after a loop of their own.
    void deletionWaitsForTheLoopThatItBelongsTo()
    {
        QEventLoop outer;
        bool isThere = false;
        QTimer::singleShot(0, &outer, [&] {
            {
                const KyScriptKeeper::Scope scope(mKeeper);
                QEventLoop inner;
                QTimer::singleShot(0, mObject, [&] {
                    mObject->deleteLater();
                    inner.quit();
                });
                inner.exec();
                flush();
            }
            QEventLoop later;
            QTimer::singleShot(5, &later, &QEventLoop::quit);
            later.exec();
            isThere = !mObject.isNull();
            outer.quit();
        });
        outer.exec();
        QVERIFY(isThere);
        QTRY_VERIFY(!mObject);
    }

    void objectMayEndAtOnceWhileItsDeletionWaits()
    {
        {
            const KyScriptKeeper::Scope scope(mKeeper);
            mObject->deleteLater();
            flush();
        }
        delete mObject;
        flush();
        QVERIFY(!mKeeper);
    }

    void objectThatNobodyDeletesStays()
    {
        {
            const KyScriptKeeper::Scope scope(mKeeper);
        }
        flush();
        QVERIFY(mObject);
    }

    void objectMayEndAtOnceInTheHandling()
    {
        const KyScriptKeeper::Scope scope(mKeeper);
        delete mObject;
        QVERIFY(!mKeeper);
    }

    void otherEventsGoThrough()
    {
        const KyScriptKeeper::Scope scope(mKeeper);
        int calls = 0;
        QMetaObject::invokeMethod(
            mObject, [&] { ++calls; }, Qt::QueuedConnection);
        QCoreApplication::sendPostedEvents(mObject);
        QCOMPARE(calls, 1);
    }

private:
    static void flush() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    QPointer<QObject> mObject;
    QPointer<KyScriptKeeper> mKeeper;
};

KY_TEST_MAIN(tst_KyScriptKeeper)
#include "tst_KyScriptKeeper.moc"

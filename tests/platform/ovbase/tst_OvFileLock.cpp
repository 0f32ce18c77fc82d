#include <support/KyTest.h>

#include <ovbase/OvFileLock.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

using namespace std::chrono_literals;

class TestOvFileLock final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mDir = std::make_unique<QTemporaryDir>();
        mPath = mDir->filePath("a.lock");
    }
    void cleanup() { mDir.reset(); }

    void oneHolderAtATime()
    {
        const OvFileLock first(mPath, 0ms);
        QVERIFY(first.isHeld());
        QCOMPARE(first.errorText(), QString());
        const OvFileLock second(mPath, 20ms);
        QVERIFY(!second.isHeld());
        QCOMPARE(second.errorText(), "another process holds the lock " + mPath);
    }

    void theLockIsFreeAfterItsHolder()
    {
        {
            const OvFileLock first(mPath, 0ms);
        }
        const OvFileLock second(mPath, 0ms);
        QVERIFY(second.isHeld());
    }

    void theWaitLastsAsLongAsAllowed()
    {
        const OvFileLock first(mPath, 0ms);
        QElapsedTimer timer;
        timer.start();
        const OvFileLock second(mPath, 60ms);
        QVERIFY(!second.isHeld());
        QVERIFY2(timer.elapsed() >= 60, qPrintable(QString::number(timer.elapsed())));
    }

    void aFolderThatIsMissingIsAFailure()
    {
        const OvFileLock lock(mDir->filePath("none/a.lock"), 10s);
        QVERIFY(!lock.isHeld());
        QCOMPARE(lock.errorText(), "No such file or directory");
    }

    void otherProcessesAreKeptOutAndLetInAtTheirHoldersDeath()
    {
        QProcess holder;
        holder.start(REGISTRY_SAMPLE, {"hold", mPath});
        QTRY_VERIFY(holder.canReadLine());
        QCOMPARE(holder.readLine(), QByteArray("held\n"));
        {
            const OvFileLock refused(mPath, 5ms);
            QVERIFY(!refused.isHeld());
        }
        holder.kill();
        const OvFileLock lock(mPath, 30s);
        QVERIFY(lock.isHeld());
        QVERIFY(holder.waitForFinished());
    }

private:
    std::unique_ptr<QTemporaryDir> mDir;
    QString mPath;
};

KY_TEST_MAIN(TestOvFileLock)

#include "tst_OvFileLock.moc"

#include <support/KyTest.h>
#include <support/LogCapture.h>

#include "SettingsFolder.h"

#include <ovbase/OvRegistryFileStore.h>

#include <QProcess>

#include <unistd.h>

namespace {

constexpr int Wait = 60000;

} // namespace

/// Several processes on one settings file: at once, killed, without room, without rights.
class TestOvRegistryProcesses final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mFolder = std::make_unique<SettingsFolder>();
        mLog = std::make_unique<LogCapture>();
    }
    void cleanup()
    {
        const QStringList unexpected = mLog->take();
        mLog.reset();
        mFolder.reset();
        QCOMPARE(unexpected, QStringList());
    }

    void processesThatWriteAtOnceNeitherLoseNorMixChanges()
    {
        constexpr int Count = 400;
        const QStringList prefixes{"A", "B", "C"};
        std::vector<std::unique_ptr<QProcess>> writers;
        for (const QString& prefix : prefixes)
            writers.push_back(writer(prefix, Count));
        for (const auto& process : writers) {
            QVERIFY(process->waitForFinished(Wait));
            QCOMPARE(process->readAllStandardError(), QByteArray());
            QCOMPARE(process->exitCode(), 0);
        }
        OvRegistryFileStore store(mFolder->file());
        for (const QString& prefix : prefixes)
            compareWritten(store.content(), prefix, Count - 1);
        QCOMPARE(store.content().size(), prefixes.size() * (Count / 2 + 1));
        QCOMPARE(mFolder->names(), (QStringList{"settings.jsonl", "settings.jsonl.lock"}));
    }

    void aRunningStoreSeesAndKeepsWhatAnotherProcessWrites()
    {
        OvRegistryFileStore store(mFolder->file());
        const auto process = writer("A", 200);
        int own = 0;
        while (process->state() != QProcess::NotRunning) {
            QVERIFY(store.apply({"own", 1000, OvRegistryValue{QString::number(++own), "test"}}));
            process->waitForFinished(1);
        }
        QCOMPARE(process->exitCode(), 0);
        QVERIFY(own > 1);
        compareWritten(store.content(), "A", 199);
        QCOMPARE(store.content().value("own").at(1000).value, QString::number(own));
    }

    void aKilledProcessLosesNothingThatItHadStored()
    {
        for (int round = 0; round < 10; ++round) {
            mFolder = std::make_unique<SettingsFolder>();
            const auto process = writer("K", 1000000);
            QTRY_VERIFY_WITH_TIMEOUT(process->bytesAvailable() > 200 + 400 * round, Wait);
            process->kill();
            QVERIFY(process->waitForFinished(Wait));
            QCOMPARE(process->exitStatus(), QProcess::CrashExit);
            const QList<QByteArray> lines = process->readAllStandardOutput().split('\n');
            // The last line may have been cut.
            const int stored = lines.at(lines.size() - 2).toInt();
            QVERIFY(stored > 0);

            OvRegistryFileStore store(mFolder->file());
            const OvRegistryStore::Content content = store.content();
            for (int i = 0; i <= stored; ++i)
                QCOMPARE(content.contains("K." + QString::number(i)), i % 2 == 0);
            QVERIFY(content.value("K").at(1000).value.toInt() >= stored);
            QVERIFY(store.apply({"after", 1000, OvRegistryValue{"x", ""}}));
            // A line cut in the middle is reported; it was not stored yet.
            QCOMPARE(mLog->take().size(), mFolder->asides().size());
        }
    }

    void aFullDiskKeepsTheOldValues_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::newRow("no room for the file") << 50;
        QTest::newRow("room for some lines") << 4096;
        QTest::newRow("room for no whole line more") << 4100;
        QTest::newRow("room until it is written anew") << 100000;
    }
    void aFullDiskKeepsTheOldValues()
    {
        QFETCH(int, bytes);
        QProcess process;
        process.start(REGISTRY_SAMPLE, {"limit", mFolder->file(), QString::number(bytes), "100000"});
        QVERIFY(process.waitForFinished(Wait));
        QCOMPARE(process.exitCode(), 1);
        const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
        const int stored = lines.size() < 2 ? -1 : lines.at(lines.size() - 2).toInt();
        const QByteArray log = process.readAllStandardError();
        QCOMPARE(log.count('\n'), 1);
        QVERIFY2(log.contains("] settings file \"") && log.contains("can't be written (File too large)"),
                 log);

        OvRegistryFileStore store(mFolder->file());
        const OvRegistryStore::Content content = store.content();
        QCOMPARE(content.isEmpty(), bytes == 50);
        for (int i = 0; i <= stored; ++i)
            QCOMPARE(content.contains("L." + QString::number(i)), i % 2 == 0);
        QVERIFY(mFolder->asides().isEmpty());
        QVERIFY(mFolder->names().filter(QRegularExpression("jsonl\\..*")).size() == 1);
    }

    void withoutRoomForACopyADamagedFileIsLeftAlone()
    {
        QByteArray text = OvRegistryJournal::newHeader();
        text += OvRegistryJournal::line({"a.b", 1000, OvRegistryValue{QString(3000, 'x'), ""}}) + "{";
        QVERIFY(mFolder->setText(text));
        QProcess process;
        process.start(REGISTRY_SAMPLE, {"limit", mFolder->file(), "2000", "3"});
        QVERIFY(process.waitForFinished(Wait));
        QCOMPARE(process.exitCode(), 1);
        const QByteArray log = process.readAllStandardError();
        QCOMPARE(log.count('\n'), 1);
        QVERIFY2(log.contains("and can't be set aside (File too large); nothing is stored"), log);
        QCOMPARE(mFolder->text(), text);
        QVERIFY(mFolder->asides().isEmpty());
    }

    void anUnreadableFileIsSetAside()
    {
        QVERIFY(mFolder->setText("secret"));
        letNobodyIn();
        QVERIFY(QFile::setPermissions(mFolder->file(), {}));
        QProcess process;
        process.start(REGISTRY_SAMPLE, {"write", mFolder->file(), "W", "3", "nobody"});
        QVERIFY(process.waitForFinished(Wait));
        QCOMPARE(process.exitCode(), 0);
        const QByteArray log = process.readAllStandardError();
        QCOMPARE(log.count('\n'), 1);
        QVERIFY2(log.contains("can't be read (Permission denied); set aside as \""), log);
        QCOMPARE(mFolder->asides().size(), 1);
        QFile::setPermissions(mFolder->asides()[0], QFile::ReadOwner);
        QCOMPARE(SettingsFolder::textOf(mFolder->asides()[0]), QByteArray("secret"));
        OvRegistryFileStore store(mFolder->file());
        compareWritten(store.content(), "W", 2);
    }

    void anUnreadableFileThatCannotBeSetAsideIsLeftAlone()
    {
        QVERIFY(mFolder->setText("secret"));
        letNobodyIn();
        QVERIFY(QFile(mFolder->file() + ".lock").open(QIODevice::WriteOnly));
        QVERIFY(QFile::setPermissions(mFolder->file() + ".lock", QFile::Permissions(0x6666)));
        QVERIFY(QFile::setPermissions(mFolder->file(), {}));
        closeFolder();
        QProcess process;
        process.start(REGISTRY_SAMPLE, {"write", mFolder->file(), "W", "3", "nobody"});
        QVERIFY(process.waitForFinished(Wait));
        openFolder();
        QCOMPARE(process.exitCode(), 1);
        const QByteArray log = process.readAllStandardError();
        QCOMPARE(log.count('\n'), 1);
        QVERIFY2(log.contains("can't be read (Permission denied), and can't be set aside ("), log);
        QVERIFY2(log.contains("; nothing is stored"), log);
        QFile::setPermissions(mFolder->file(), QFile::ReadOwner);
        QCOMPARE(mFolder->text(), QByteArray("secret"));
    }

    void aFolderWithoutWriteRightsIsReadAndNotWritten()
    {
        {
            OvRegistryFileStore store(mFolder->file());
            QVERIFY(store.apply({"a.b", 1000, OvRegistryValue{"x", ""}}));
        }
        QVERIFY(QFile::remove(mFolder->file() + ".lock"));
        QVERIFY(QFile::setPermissions(mFolder->file(), QFile::Permissions(0x4444)));
        const QByteArray before = mFolder->text();
        closeFolder();
        QProcess reader;
        reader.start(REGISTRY_SAMPLE, {"read", mFolder->file(), "a.b", "nobody"});
        QVERIFY(reader.waitForFinished(Wait));
        QProcess writes;
        writes.start(REGISTRY_SAMPLE, {"write", mFolder->file(), "W", "3", "nobody"});
        QVERIFY(writes.waitForFinished(Wait));
        openFolder();
        QCOMPARE(reader.readAllStandardOutput(), QByteArray("x\n"));
        QCOMPARE(reader.readAllStandardError(), QByteArray());
        QCOMPARE(writes.exitCode(), 1);
        const QByteArray log = writes.readAllStandardError();
        QCOMPARE(log.count('\n'), 1);
        QVERIFY2(log.contains("Permission denied"), log);
        QCOMPARE(mFolder->text(), before);
    }

private:
    std::unique_ptr<QProcess> writer(const QString& inPrefix, int inCount) const
    {
        auto process = std::make_unique<QProcess>();
        process->start(REGISTRY_SAMPLE, {"write", mFolder->file(), inPrefix, QString::number(inCount)});
        return process;
    }

    /// What a writer leaves whose last number was \a inLast.
    static void compareWritten(const OvRegistryStore::Content& inContent, const QString& inPrefix, int inLast)
    {
        for (int i = 0; i <= inLast; ++i) {
            const QString id = inPrefix + "." + QString::number(i);
            QCOMPARE(inContent.contains(id), i % 2 == 0);
            if (i % 2 == 0)
                QCOMPARE(inContent.value(id).at(3000).value, id);
        }
        QCOMPARE(inContent.value(inPrefix).at(1000).value, QString::number(inLast));
    }

    /// A test of root works as another user, who needs the folder; another user's test works as itself.
    void letNobodyIn() const { QVERIFY(QFile::setPermissions(mFolder->path(), QFile::Permissions(0x7777))); }
    void closeFolder() const { QVERIFY(QFile::setPermissions(mFolder->path(), QFile::Permissions(0x5555))); }
    void openFolder() const { QVERIFY(QFile::setPermissions(mFolder->path(), QFile::Permissions(0x7777))); }

    std::unique_ptr<SettingsFolder> mFolder;
    std::unique_ptr<LogCapture> mLog;
};

KY_TEST_MAIN(TestOvRegistryProcesses)

#include "tst_OvRegistryProcesses.moc"

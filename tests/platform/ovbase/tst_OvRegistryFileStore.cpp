#include <support/KyTest.h>
#include <support/LogCapture.h>

#include "SettingsFolder.h"

#include <ovbase/OvFileLock.h>
#include <ovbase/OvRegistry.h>
#include <ovbase/OvRegistryFileStore.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace std::chrono_literals;

namespace {

const QByteArray Header = "{\"format\":\"OvRegistry\",\"version\":1,\"writing\":\"by hand\"}\n";

QByteArray line(const char* inId, int inLayer, const char* inValue)
{
    return OvRegistryJournal::line(
        {QString::fromUtf8(inId), inLayer, OvRegistryValue{QString::fromUtf8(inValue), "hand"}});
}

} // namespace

class TestOvRegistryFileStore final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mFolder = std::make_unique<SettingsFolder>();
        mLog = std::make_unique<LogCapture>();
        start();
    }
    void cleanup()
    {
        mRegistry.reset();
        const QStringList unexpected = mLog->take();
        mLog.reset();
        mFolder.reset();
        QCOMPARE(unexpected, QStringList());
    }

    void readingLeavesNoTrace()
    {
        QCOMPARE(value("a.b"), "(none)");
        QCOMPARE(mFolder->names(), QStringList());
    }

    void valuesAreThereAtTheNextStart()
    {
        QVERIFY(mRegistry->setProperty("a.b", "user", OvRegistry::UserPriority));
        QVERIFY(mRegistry->setProperty("a.b", "script", OvRegistry::ScriptPriority));
        QVERIFY(mRegistry->setProperty("a.b", "session", OvRegistry::SessionPriority));
        start();
        QCOMPARE(mRegistry->layers("a.b"), (std::vector<int>{1000, 3000}));
        QCOMPARE(value("a.b"), "script");
        QCOMPARE(value("a.b", OvRegistry::UserPriority), "user");
        QVERIFY(mRegistry->removeProperty("a.b", OvRegistry::ScriptPriority));
        start();
        QCOMPARE(value("a.b"), "user");
    }

    void everyTextComesBackExactly_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << "";
        QTest::newRow("quotes") << "say \"a\\b\"";
        QTest::newRow("line breaks") << "a\r\nb\u2028c";
        QTest::newRow("NUL") << QStringLiteral("a") + QChar(0) + QLatin1Char('b');
        QTest::newRow("controls") << "\t\b\x1b";
        QTest::newRow("Cyrillic") << QStringLiteral("Череп");
        QTest::newRow("outside the first plane") << QStringLiteral("\U0001F9E0");
        QTest::newRow("half a character") << QString(QChar(0xd800)) + "x" + QChar(0xdc00);
        QTest::newRow("byte order mark") << QString(QChar(0xfeff));
        QTest::newRow("100 000 characters") << QString(100000, 'x');
    }
    void everyTextComesBackExactly()
    {
        QFETCH(QString, text);
        QVERIFY(mRegistry->setProperty("a.b", text, 1000));
        QVERIFY(mRegistry->setProperty("id " + text, "x", 1000));
        start();
        QCOMPARE(value("a.b"), text);
        QCOMPARE(value("id " + text), "x");
    }

    void theWriterIsKept()
    {
        mRegistry->setProperty("a.b", "x", 1000);
        start();
        OvRegistry::Value found;
        QVERIFY(mRegistry->getProperty("a.b", found));
        QCOMPARE(found.source, QCoreApplication::applicationName());
    }

    void eachChangeIsOneLineAppended()
    {
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        const QByteArray before = mFolder->text();
        QVERIFY(mRegistry->setProperty("a.b", "y", 3000));
        const QByteArray behind = mFolder->text();
        QVERIFY(behind.startsWith(before));
        const QByteArray added = behind.mid(before.size());
        QCOMPARE(added.count('\n'), 1);
        QCOMPARE(QJsonDocument::fromJson(added).object(),
                 (QJsonObject{{"id", "a.b"}, {"layer", 3000}, {"value", "y"}, {"source", "kytest"}}));
        QVERIFY(mRegistry->removeProperty("a.b", 3000));
        QCOMPARE(QJsonDocument::fromJson(mFolder->text().mid(behind.size())).object(),
                 (QJsonObject{{"id", "a.b"}, {"layer", 3000}, {"removed", true}}));
    }

    void theFileAndItsFolderAreMadeAtTheFirstChange()
    {
        const QString path = mFolder->path() + "/deep/er/settings.jsonl";
        mRegistry = std::make_unique<OvRegistry>(std::make_shared<OvRegistryFileStore>(path));
        QVERIFY(!QFile::exists(mFolder->path() + "/deep"));
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        QVERIFY(QFile::exists(path));
    }

    void theFileIsForTheUserAlone()
    {
        mRegistry->setProperty("a.b", "x", 1000);
        const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QVERIFY(!(QFile::permissions(mFolder->file()) & others));
    }

    void aFileThatOthersMayReadStaysSoWhenWrittenAnew()
    {
        mRegistry->setProperty("a.b", "0", 1000);
        const auto shared = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
        QVERIFY(QFile::setPermissions(mFolder->file(), shared));
        const QByteArray header = mFolder->text().left(60);
        for (int i = 1; i < 1100; ++i)
            mRegistry->setProperty("a.b", QString::number(i), 1000);
        QVERIFY(mFolder->text().left(60) != header);
        QVERIFY(QFile::permissions(mFolder->file()) & QFile::ReadGroup);
    }

    void theFileDoesNotGrowWithEveryChange()
    {
        mRegistry->setProperty("kept", "x", 3000);
        for (int i = 0; i < 5000; ++i)
            QVERIFY(mRegistry->setProperty("a.b", QString::number(i), 1000));
        QVERIFY2(mFolder->text().count('\n') < 1100,
                 qPrintable(QString::number(mFolder->text().count('\n'))));
        start();
        QCOMPARE(value("a.b"), "4999");
        QCOMPARE(value("kept"), "x");
        QCOMPARE(mFolder->names(), (QStringList{"settings.jsonl", "settings.jsonl.lock"}));
    }

    void twoStoresSeeEachOthersChanges()
    {
        OvRegistryFileStore other(mFolder->file());
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        QCOMPARE(other.content().value("a.b").at(1000).value, "x");
        QVERIFY(other.apply({"a.b", 3000, OvRegistryValue{"y", "other"}}));
        QCOMPARE(value("a.b"), "y");
        QVERIFY(mRegistry->removeProperty("a.b", 3000));
        QCOMPARE(other.content().value("a.b").size(), std::size_t(1));
    }

    void twoStoresDoNotLoseEachOthersChanges()
    {
        OvRegistryFileStore other(mFolder->file());
        for (int i = 0; i < 600; ++i) {
            QVERIFY(mRegistry->setProperty("mine", QString::number(i), 1000));
            QVERIFY(other.apply({"theirs", 1000, OvRegistryValue{QString::number(i), "other"}}));
        }
        start();
        QCOMPARE(value("mine"), "599");
        QCOMPARE(value("theirs"), "599");
    }

    void aWritingOfTheSameSizeIsSeenByTheNextChange()
    {
        QVERIFY(mFolder->setText(Header + line("a.b", 1000, "old")));
        QCOMPARE(value("a.b"), "old");
        // Same size, same time: only the first line tells.
        QFile file(mFolder->file());
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QDateTime time = file.fileTime(QFileDevice::FileModificationTime);
        QByteArray anew = Header + line("a.b", 1000, "new");
        anew.replace("by hand", "by Hand");
        QCOMPARE(file.write(anew), anew.size());
        QVERIFY(file.flush());
        QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
        file.close();
        QVERIFY(mRegistry->setProperty("a.c", "x", 1000));
        QCOMPARE(value("a.b"), "new");
    }

    void aFileDeletedMeanwhileIsEmpty()
    {
        mRegistry->setProperty("a.b", "x", 1000);
        QVERIFY(QFile::remove(mFolder->file()));
        QCOMPARE(value("a.b"), "(none)");
        QVERIFY(mRegistry->setProperty("a.c", "y", 1000));
        start();
        QCOMPARE(value("a.b"), "(none)");
        QCOMPARE(value("a.c"), "y");
    }

    void aFileMayBeWrittenByHand_data()
    {
        QTest::addColumn<QByteArray>("text");
        const QByteArray entry = line("a.b", 1000, "x");
        QTest::newRow("plain") << Header + entry;
        QTest::newRow("no break at the end") << Header + entry.trimmed();
        QTest::newRow("breaks of another system") << Header.trimmed() + "\r\n" + entry.trimmed() + "\r\n";
        QTest::newRow("empty lines") << Header + "\n  \n" + entry + "\n";
        QTest::newRow("byte order mark") << "\xef\xbb\xbf" + Header + entry;
        QTest::newRow("overridden") << Header + line("a.b", 1000, "old") + entry;
        QTest::newRow("keys of later versions")
            << Header + "{\"id\":\"a.b\",\"layer\":1000,\"value\":\"x\",\"more\":1}\n";
        QTest::newRow("no writer") << Header + "{\"value\":\"x\",\"layer\":1000,\"id\":\"a.b\"}\n";
        QTest::newRow("removals") << Header + line("a.c", 1000, "y") + entry +
                                         "{\"id\":\"a.c\",\"layer\":1000,\"removed\":true}\n"
                                         "{\"id\":\"a.d\",\"layer\":1000,\"removed\":true}\n";
    }
    void aFileMayBeWrittenByHand()
    {
        QFETCH(QByteArray, text);
        QVERIFY(mFolder->setText(text));
        QCOMPARE(value("a.b"), "x");
        QCOMPARE(value("a.c"), "(none)");
        QVERIFY(mRegistry->setProperty("a.e", "z", 1000));
        start();
        QCOMPARE(value("a.b"), "x");
        QCOMPARE(value("a.c"), "(none)");
        QCOMPARE(value("a.e"), "z");
        QVERIFY(mFolder->asides().isEmpty());
    }

    void aFileOfTheHeaderAloneIsEmptyAndSound()
    {
        QVERIFY(mFolder->setText(Header.trimmed()));
        QCOMPARE(value("a.b"), "(none)");
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        start();
        QCOMPARE(value("a.b"), "x");
    }

    void damagedLinesAreReportedAndTheRestIsKept_data()
    {
        QTest::addColumn<QByteArray>("damage");
        QTest::addColumn<int>("lines");
        QTest::newRow("truncated line") << line("a.c", 1000, "y").chopped(5) << 1;
        QTest::newRow("a brace") << QByteArray("{") << 1;
        QTest::newRow("not JSON") << QByteArray("a.c = y\n") << 1;
        QTest::newRow("not an object") << QByteArray("[1]\n") << 1;
        QTest::newRow("zeros") << QByteArray(100, '\0') << 1;
        QTest::newRow("no id") << QByteArray("{\"layer\":1000,\"value\":\"y\"}\n") << 1;
        QTest::newRow("no layer") << QByteArray("{\"id\":\"a.c\",\"value\":\"y\"}\n") << 1;
        QTest::newRow("layer 0") << QByteArray("{\"id\":\"a.c\",\"layer\":0,\"value\":\"y\"}\n") << 1;
        QTest::newRow("no value") << QByteArray("{\"id\":\"a.c\",\"layer\":1000}\n") << 1;
        QTest::newRow("a number as value")
            << QByteArray("{\"id\":\"a.c\",\"layer\":1000,\"value\":5}\n") << 1;
        QTest::newRow("two lines") << QByteArray("x\ny\n") << 2;
        QTest::newRow("not UTF-8") << QByteArray("{\"id\":\"a.c\",\"layer\":1000,\"value\":\"\xff\xfe\"}\n")
                                   << 1;
    }
    void damagedLinesAreReportedAndTheRestIsKept()
    {
        QFETCH(QByteArray, damage);
        QFETCH(int, lines);
        const QByteArray text = Header + line("a.b", 1000, "x") + line("a.b", 3000, "y") + damage;
        QVERIFY(mFolder->setText(text));
        QCOMPARE(value("a.b"), "y");
        const QStringList asides = mFolder->asides();
        QCOMPARE(asides.size(), 1);
        QCOMPARE(SettingsFolder::textOf(asides[0]), text);
        QCOMPARE(
            mLog->take(),
            QStringList{QStringLiteral("3|OvRegistry|settings file \"%1\": damaged, unreadable lines: %2; a "
                                       "copy as it was is \"%3\", 2 values were kept")
                            .arg(mFolder->file())
                            .arg(lines)
                            .arg(asides[0])});
        QVERIFY(mRegistry->setProperty("a.d", "z", 1000));
        start();
        QCOMPARE(value("a.b"), "y");
        QCOMPARE(value("a.b", 1000), "x");
        QCOMPARE(value("a.c"), "(none)");
        QCOMPARE(value("a.d"), "z");
        QCOMPARE(mFolder->asides().size(), 1);
    }

    void aFileTruncatedAnywhereLosesOnlyWhatIsBehind()
    {
        const QByteArray first = line("a.b", 1000, "x");
        const QByteArray text = Header + first + line("a.c", 1000, "y");
        for (qsizetype size = Header.size() + first.size() + 1; size < text.size() - 1; ++size) {
            mFolder = std::make_unique<SettingsFolder>();
            QVERIFY(mFolder->setText(text.left(size)));
            start();
            QCOMPARE(value("a.b"), "x");
            QCOMPARE(value("a.c"), "(none)");
            QCOMPARE(mFolder->asides().size(), 1);
            QCOMPARE(SettingsFolder::textOf(mFolder->asides()[0]), text.left(size));
            QCOMPARE(mLog->take().size(), 1);
        }
    }

    void aFileOfAnotherKindIsSetAside_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("truncated header") << Header.left(20);
        QTest::newRow("other JSON") << QByteArray("{\"a\":1}\n");
        QTest::newRow("other text") << QByteArray("[General]\na=1\n");
        QTest::newRow("later version") << QByteArray("{\"format\":\"OvRegistry\",\"version\":2}\n");
        QTest::newRow("binary") << QByteArray("\x00\x01\xff\n", 4);
    }
    void aFileOfAnotherKindIsSetAside()
    {
        QFETCH(QByteArray, text);
        QVERIFY(mFolder->setText(text));
        QCOMPARE(value("a.b"), "(none)");
        const QStringList asides = mFolder->asides();
        QCOMPARE(asides.size(), 1);
        QCOMPARE(SettingsFolder::textOf(asides[0]), text);
        QCOMPARE(mLog->take(),
                 QStringList{
                     QStringLiteral("3|OvRegistry|settings file \"%1\": damaged, its first line is not that "
                                    "of a settings file; set aside as \"%2\"")
                         .arg(mFolder->file(), asides[0])});
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        start();
        QCOMPARE(value("a.b"), "x");
    }

    void theNameOfWhatIsSetAsideTellsTheTime()
    {
        QVERIFY(mFolder->setText("x"));
        QCOMPARE(value("a.b"), "(none)");
        const QRegularExpression name("/settings\\.jsonl\\.damaged-[0-9]{17}$");
        QVERIFY2(mFolder->asides().value(0).contains(name), qPrintable(mFolder->asides().value(0)));
        mLog->take();
    }

    void severalFilesAreSetAsideUnderTheirOwnNames()
    {
        for (int i = 0; i < 20; ++i) {
            QVERIFY(mFolder->setText("x"));
            QCOMPARE(value("a.b"), "(none)");
        }
        QCOMPARE(mFolder->asides().size(), 20);
        QCOMPARE(mLog->take().size(), 20);
    }

    void aFileDamagedMeanwhileKeepsTheOldValues_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("damaged") << Header + "{\n" + line("a.c", 1000, "new");
        QTest::newRow("of another kind") << QByteArray("x");
        QTest::newRow("empty") << QByteArray();
    }
    void aFileDamagedMeanwhileKeepsTheOldValues()
    {
        QFETCH(QByteArray, text);
        QVERIFY(mRegistry->setProperty("a.b", "old", 1000));
        QVERIFY(mFolder->setText(text));
        QCOMPARE(value("a.b"), "old");
        QCOMPARE(mFolder->asides().size(), 1);
        QCOMPARE(mLog->take().size(), 1);
        start();
        QCOMPARE(value("a.b"), "old");
        QCOMPARE(value("a.c"), text.contains("new") ? "new" : "(none)");
    }

    void damageIsFoundByAChangeToo()
    {
        QVERIFY(mRegistry->setProperty("a.b", "old", 1000));
        QVERIFY(mFolder->setText(Header + "{"));
        OvRegistryFileStore other(mFolder->file());
        QVERIFY(other.apply({"a.c", 1000, OvRegistryValue{"new", ""}}));
        QCOMPARE(mFolder->asides().size(), 1);
        QCOMPARE(mLog->take().size(), 1);
        QCOMPARE(value("a.c"), "new");
    }

    void aFolderInPlaceOfTheFileIsSetAside()
    {
        QVERIFY(QDir().mkdir(mFolder->file()));
        QCOMPARE(value("a.b"), "(none)");
        QCOMPARE(mFolder->asides().size(), 1);
        QVERIFY(QFileInfo(mFolder->asides()[0]).isDir());
        const QStringList lines = mLog->take();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines[0].contains("can't be read") && lines[0].contains("set aside as"),
                 qPrintable(lines[0]));
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        start();
        QCOMPARE(value("a.b"), "x");
    }

    void aLinkToTheFileStaysALink()
    {
        const QString target = mFolder->path() + "/elsewhere.jsonl";
        mRegistry = std::make_unique<OvRegistry>(std::make_shared<OvRegistryFileStore>(target));
        mRegistry->setProperty("a.b", "x", 1000);
        QVERIFY(QFile::link(target, mFolder->file()));
        start();
        QCOMPARE(value("a.b"), "x");
        for (int i = 0; i < 1200; ++i)
            mRegistry->setProperty("a.c", QString::number(i), 1000);
        QVERIFY(QFileInfo(mFolder->file()).isSymLink());
        QVERIFY(SettingsFolder::textOf(target).contains("1199"));
    }

    void aChangeWaitsForTheLockAndGivesUpInTime()
    {
        mRegistry =
            std::make_unique<OvRegistry>(std::make_shared<OvRegistryFileStore>(mFolder->file(), 20ms));
        QVERIFY(mRegistry->setProperty("a.b", "old", 1000));
        const QString lockPath = mFolder->file() + ".lock";
        {
            const OvFileLock lock(lockPath, 0ms);
            QVERIFY(!mRegistry->setProperty("a.b", "new", 1000));
            QVERIFY(!mRegistry->setProperty("a.c", "new", 1000));
            QCOMPARE(value("a.b"), "old");
        }
        QCOMPARE(mLog->take(),
                 QStringList{QStringLiteral("3|OvRegistry|settings file \"%1\": another process holds "
                                            "the lock %2")
                                 .arg(mFolder->file(), lockPath)});
        QVERIFY(mRegistry->setProperty("a.b", "new", 1000));
    }

    void aFailureIsLoggedAgainAfterASuccess()
    {
        mRegistry = std::make_unique<OvRegistry>(std::make_shared<OvRegistryFileStore>(mFolder->file(), 5ms));
        for (int i = 0; i < 2; ++i) {
            {
                const OvFileLock lock(mFolder->file() + ".lock", 0ms);
                QVERIFY(!mRegistry->setProperty("a.b", "refused", 1000));
            }
            QVERIFY(mRegistry->setProperty("a.b", QString::number(i), 1000));
        }
        QCOMPARE(mLog->take().size(), 2);
    }

    void readingDoesNotWaitForTheLock()
    {
        QVERIFY(mRegistry->setProperty("a.b", "x", 1000));
        const OvFileLock lock(mFolder->file() + ".lock", 0ms);
        start();
        QCOMPARE(value("a.b"), "x");
    }

    void damageIsLeftAloneWhileTheLockIsNotToBeHad()
    {
        const QByteArray text = Header + line("a.b", 1000, "x") + "{";
        QVERIFY(mFolder->setText(text));
        mRegistry = std::make_unique<OvRegistry>(std::make_shared<OvRegistryFileStore>(mFolder->file(), 5ms));
        {
            const OvFileLock lock(mFolder->file() + ".lock", 0ms);
            QCOMPARE(value("a.b"), "x");
            QCOMPARE(mFolder->text(), text);
        }
        QCOMPARE(mLog->take(),
                 QStringList{QStringLiteral("3|OvRegistry|settings file \"%1\": damaged, unreadable lines: "
                                            "1, and can't be set aside (another process holds "
                                            "the lock %1.lock); nothing is stored")
                                 .arg(mFolder->file())});
        QVERIFY(mRegistry->setProperty("a.c", "y", 1000));
        QCOMPARE(mLog->take().size(), 1);
        QCOMPARE(value("a.b"), "x");
        QCOMPARE(mFolder->asides().size(), 1);
    }

    void aPathThatLeadsThroughAFileCannotBeStored()
    {
        QVERIFY(mFolder->setText(Header));
        const QString path = mFolder->file() + "/below/settings.jsonl";
        mRegistry = std::make_unique<OvRegistry>(std::make_shared<OvRegistryFileStore>(path));
        QCOMPARE(value("a.b"), "(none)");
        QVERIFY(!mRegistry->setProperty("a.b", "x", 1000));
        QVERIFY(!mRegistry->setProperty("a.c", "x", 1000));
        QCOMPARE(
            mLog->take(),
            QStringList{
                QStringLiteral("3|OvRegistry|settings file \"%1\": its folder can't be made").arg(path)});
    }

    void tenThousandValuesAreKeptApart()
    {
        for (int i = 0; i < 10000; ++i)
            QVERIFY(mRegistry->setProperty("P." + QString::number(i), QString::number(i), 1000));
        start();
        for (int i = 0; i < 10000; ++i)
            QCOMPARE(value("P." + QString::number(i)), QString::number(i));
    }

private:
    /// As the next start of the application does.
    void start()
    {
        mRegistry.reset();
        mRegistry = std::make_unique<OvRegistry>(std::make_shared<OvRegistryFileStore>(mFolder->file()));
    }

    /// "(none)" when there is none.
    QString value(const QString& inId, OvRegistry::Priority inPriority = OvRegistry::EffectivePriority) const
    {
        OvRegistry::Value found;
        return mRegistry->getProperty(inId, found, inPriority) ? found.value : QStringLiteral("(none)");
    }

    std::unique_ptr<SettingsFolder> mFolder;
    std::unique_ptr<LogCapture> mLog;
    std::unique_ptr<OvRegistry> mRegistry;
};

KY_TEST_MAIN(TestOvRegistryFileStore)

#include "tst_OvRegistryFileStore.moc"

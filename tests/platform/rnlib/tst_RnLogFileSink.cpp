#include <support/KyTest.h>

#include <rnlib/RnLogFileSink.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <unistd.h>

namespace {

RnLogRecord record(const std::string& inText)
{
    return {std::chrono::system_clock::now(), 1, "C", inText};
}

/// Length in bytes of a record's line.
std::uint64_t lineLength(const std::string& inText)
{
    return RnLogFile::format(record(inText)).size();
}

} // namespace

class TestRnLogFileSink final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mDir = std::make_unique<QTemporaryDir>();
        QVERIFY(mDir->isValid());
    }
    void cleanup() { mDir.reset(); }

    void linesAreInTheFileAtOnce()
    {
        RnLogFileSink sink(path("a.log"));
        QVERIFY(sink.isOpen());
        QCOMPARE(sink.path(), path("a.log"));
        sink.write({std::chrono::system_clock::time_point(std::chrono::milliseconds(1769864709120)), 3, "Ctx",
                    "one\ntwo"});
        QCOMPARE(content("a.log"), QByteArray("2026-01-31 14:05:09.120 3 [Ctx] one\n  two\n"));
        QVERIFY(sink.errorText().empty());
    }

    void anExistingFileIsAppendedTo()
    {
        RnLogFileSink(path("a.log")).write(record("first"));
        RnLogFileSink(path("a.log")).write(record("second"));
        QCOMPARE(texts("a.log"), QStringList({QStringLiteral("first"), QStringLiteral("second")}));
    }

    void theFileIsUtf8()
    {
        RnLogFileSink sink(path("a.log"));
        sink.write(record("M\xFCller"));
        sink.write(record("\xE2\x82\xAC"));
        QCOMPARE(texts("a.log"), QStringList({QStringLiteral("M\u00FCller"), QStringLiteral("\u20AC")}));
    }

    void thePathIsUtf8()
    {
        RnLogFileSink sink(path("\xC3\xBC\xE6\x97\xA5.log"));
        QVERIFY(sink.isOpen());
        QCOMPARE(QDir(mDir->path()).entryList(QDir::Files), QStringList{QStringLiteral("\u00FC\u65E5.log")});
    }

    void anUnwritablePathIsToldAndTakesLines_data()
    {
        QTest::addColumn<QString>("below");
        QTest::newRow("missing folder") << QStringLiteral("missing/a.log");
        QTest::newRow("a folder") << QString();
    }
    void anUnwritablePathIsToldAndTakesLines()
    {
        QFETCH(QString, below);
        RnLogFileSink sink((mDir->path() + u'/' + below).toStdString());
        QVERIFY(!sink.isOpen());
        QVERIFY(!sink.errorText().empty());
        sink.write(record("lost"));
        QVERIFY(QDir(mDir->path()).isEmpty());
    }

    void aWriteErrorIsToldAndDoesNotEndTheSink()
    {
        if (!QFile::exists(QStringLiteral("/dev/full")))
            QSKIP("needs /dev/full");
        RnLogFileSink sink("/dev/full", 0);
        QVERIFY(sink.isOpen());
        QVERIFY(sink.errorText().empty());
        sink.write(record("lost"));
        QVERIFY(!sink.errorText().empty());
        QVERIFY(sink.isOpen());
    }

    void theFileRotatesBeforeItGrowsTooLarge()
    {
        RnLogFileSink sink(path("a.log"), 2 * lineLength("1"), 2);
        for (const char* text : {"1", "2", "3", "4", "5", "6", "7"})
            sink.write(record(text));
        QCOMPARE(texts("a.log"), QStringList{QStringLiteral("7")});
        QCOMPARE(texts("a.log.1"), QStringList({QStringLiteral("5"), QStringLiteral("6")}));
        QCOMPARE(texts("a.log.2"), QStringList({QStringLiteral("3"), QStringLiteral("4")}));
        QCOMPARE(QDir(mDir->path()).entryList(QDir::Files).size(), 3);
    }

    void theSizeOfAnExistingFileCounts()
    {
        RnLogFileSink(path("a.log")).write(record("1"));
        RnLogFileSink(path("a.log"), lineLength("1")).write(record("2"));
        QCOMPARE(texts("a.log"), QStringList{QStringLiteral("2")});
        QCOMPARE(texts("a.log.1"), QStringList{QStringLiteral("1")});
    }

    void aLineAtTheLimitStillFits()
    {
        RnLogFileSink sink(path("a.log"), lineLength("1"));
        sink.write(record("1"));
        QVERIFY(!QFile::exists(qpath("a.log.1")));
        sink.write(record("2"));
        QVERIFY(QFile::exists(qpath("a.log.1")));
    }

    void aLineLongerThanTheLimitIsWrittenWhole()
    {
        const std::string text(500, 'x');
        RnLogFileSink sink(path("a.log"), 100);
        sink.write(record(text));
        QCOMPARE(texts("a.log"), QStringList{QString::fromStdString(text)});
        QVERIFY(!QFile::exists(qpath("a.log.1")));
        sink.write(record("next"));
        QCOMPARE(texts("a.log.1"), QStringList{QString::fromStdString(text)});
        QCOMPARE(texts("a.log"), QStringList{QStringLiteral("next")});
    }

    void withoutKeptFilesTheOldLinesGo_data()
    {
        QTest::addColumn<int>("kept");
        QTest::newRow("none") << 0;
        QTest::newRow("negative") << -3;
    }
    void withoutKeptFilesTheOldLinesGo()
    {
        QFETCH(int, kept);
        RnLogFileSink sink(path("a.log"), lineLength("1"), kept);
        sink.write(record("1"));
        sink.write(record("2"));
        QCOMPARE(texts("a.log"), QStringList{QStringLiteral("2")});
        QCOMPARE(QDir(mDir->path()).entryList(QDir::Files), QStringList{QStringLiteral("a.log")});
    }

    void zeroNeverRotates()
    {
        RnLogFileSink sink(path("a.log"), 0);
        for (int i = 0; i < 1000; ++i)
            sink.write(record("x"));
        QCOMPARE(texts("a.log").size(), 1000);
        QVERIFY(!QFile::exists(qpath("a.log.1")));
    }

    void aRotationThatFailsKeepsTheLines()
    {
        // The place of the old file is taken by a folder that can't be replaced.
        QVERIFY(QDir(mDir->path()).mkpath(QStringLiteral("a.log.1/full")));
        RnLogFileSink sink(path("a.log"), lineLength("1"), 1);
        sink.write(record("1"));
        sink.write(record("2"));
        QVERIFY(sink.isOpen());
        QVERIFY(!sink.errorText().empty());
        QCOMPARE(texts("a.log"), QStringList({QStringLiteral("1"), QStringLiteral("2")}));
    }

    void aStartedProgramDoesNotInheritTheFile()
    {
        const RnLogFileSink sink(path("a.log"));
        QProcess process;
        process.start(QStringLiteral("/bin/ls"), {QStringLiteral("-l"), QStringLiteral("/proc/self/fd")});
        QVERIFY(process.waitForFinished());
        const QString open = QString::fromUtf8(process.readAllStandardOutput());
        QVERIFY(open.contains(QLatin1String("->")));
        QVERIFY2(!open.contains(QLatin1String("a.log")), qPrintable(open));
    }

    void theLogWritesThroughTheSink()
    {
        const auto sink = std::make_shared<RnLogFileSink>(path("a.log"));
        RnLogFile log;
        log.addSink(sink, 2);
        log.print("C", "no");
        log.errorf("%s", "yes");
        QCOMPARE(texts("a.log"), QStringList{QStringLiteral("yes")});
    }

private:
    std::string path(const char* inName) const { return mDir->path().toStdString() + '/' + inName; }
    QString qpath(const char* inName) const { return QString::fromStdString(path(inName)); }

    QByteArray content(const char* inName) const
    {
        QFile file(qpath(inName));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }

    /// The texts of the lines, without time, level and context.
    QStringList texts(const char* inName) const
    {
        QStringList lines = QString::fromUtf8(content(inName)).split(u'\n', Qt::SkipEmptyParts);
        for (QString& line : lines)
            line = line.section(u' ', line.contains(u'[') ? 4 : 3);
        return lines;
    }

    std::unique_ptr<QTemporaryDir> mDir;
};

KY_TEST_MAIN(TestRnLogFileSink)

#include "tst_RnLogFileSink.moc"

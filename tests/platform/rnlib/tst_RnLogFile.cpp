#include <support/KyTest.h>

#include <rnlib/RnLogFile.h>

#include <QSemaphore>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

/// Keeps its lines as "LEVEL|Context|text" and then does what it was told.
class Sink final : public RnLogSink
{
public:
    explicit Sink(std::function<void(const RnLogRecord&)> inThen = {})
        : mThen(std::move(inThen))
    {}

    void write(const RnLogRecord& inRecord) override
    {
        lines.append(QStringLiteral("%1|%2|%3")
                         .arg(QString::number(inRecord.level), QString::fromStdString(inRecord.context),
                              QString::fromStdString(inRecord.text)));
        if (mThen)
            mThen(inRecord);
    }

    QStringList lines;

private:
    const std::function<void(const RnLogRecord&)> mThen;
};

std::shared_ptr<Sink> addSink(RnLogFile& ioLog, std::function<void(const RnLogRecord&)> inThen = {})
{
    auto sink = std::make_shared<Sink>(std::move(inThen));
    ioLog.addSink(sink);
    return sink;
}

/// 2026-01-31 14:05:09.120 in the time zone of the tests, Europe/Berlin.
std::chrono::system_clock::time_point sampleTime()
{
    return std::chrono::system_clock::time_point(std::chrono::milliseconds(1769864709120));
}

QString formatted(const std::string& inContext, const std::string& inText)
{
    return QString::fromStdString(RnLogFile::format({sampleTime(), 2, inContext, inText}));
}

} // namespace

class TestRnLogFile final : public QObject
{
    Q_OBJECT

private slots:
    // Writing

    void everyOperationHasItsLevel()
    {
        RnLogFile log;
        const auto sink = addSink(log);
        log.trace(0, "C", "trace");
        log.tracef(7, "C", "%s %d", "tracef", 7);
        log.print("C", "print");
        log.printf("%s", "printf");
        log.warn("C", "warn");
        log.warnf("%s", "warnf");
        log.error("C", "error");
        log.errorf("%s", "errorf");
        QCOMPARE(sink->lines, QStringList({QStringLiteral("0|C|trace"), QStringLiteral("7|C|tracef 7"),
                                           QStringLiteral("1|C|print"), QStringLiteral("1||printf"),
                                           QStringLiteral("2|C|warn"), QStringLiteral("2||warnf"),
                                           QStringLiteral("3|C|error"), QStringLiteral("3||errorf")}));
    }

    void nullPointersAreEmptyTexts()
    {
        RnLogFile log;
        const auto sink = addSink(log);
        const char* const none = nullptr;
        log.trace(1, none, none);
        log.tracef(1, none, "%s", "x");
        QCOMPARE(sink->lines, QStringList({QStringLiteral("1||"), QStringLiteral("1||x")}));
    }

    void plainTextIsNoFormat()
    {
        RnLogFile log;
        const auto sink = addSink(log);
        log.print("%s", "100%s %n");
        QCOMPARE(sink->lines, QStringList{QStringLiteral("1|%s|100%s %n")});
    }

    void formattedTextsOfAnyLengthAreWhole_data()
    {
        QTest::addColumn<int>("length");
        for (const int length : {0, 1, 510, 511, 512, 513, 100000})
            QTest::addRow("%d", length) << length;
    }
    void formattedTextsOfAnyLengthAreWhole()
    {
        QFETCH(int, length);
        RnLogFile log;
        const auto sink = addSink(log);
        const std::string text(static_cast<std::size_t>(length), 'x');
        log.printf("%s", text.c_str());
        QCOMPARE(sink->lines, QStringList{QStringLiteral("1||") + QString::fromStdString(text)});
    }

    void theRecordHasTheTimeOfTheCall()
    {
        RnLogFile log;
        std::vector<std::chrono::system_clock::time_point> times;
        const auto sink = addSink(log, [&](const RnLogRecord& inRecord) { times.push_back(inRecord.time); });
        const auto before = std::chrono::system_clock::now();
        log.print("C", "text");
        const auto after = std::chrono::system_clock::now();
        QCOMPARE(times.size(), std::size_t(1));
        QVERIFY(before <= times[0] && times[0] <= after);
    }

    // Sinks

    void aSinkGetsItsLevels()
    {
        RnLogFile log;
        const auto all = std::make_shared<Sink>();
        const auto severe = std::make_shared<Sink>();
        log.addSink(all);
        log.addSink(severe, 2);
        for (int level = 0; level < 4; ++level)
            log.trace(level, "C", "x");
        QCOMPARE(all->lines.size(), 4);
        QCOMPARE(severe->lines, QStringList({QStringLiteral("2|C|x"), QStringLiteral("3|C|x")}));
    }

    void negativeLevelsNeedASinkThatTakesThem()
    {
        RnLogFile log;
        const auto usual = addSink(log);
        const auto lower = std::make_shared<Sink>();
        log.addSink(lower, -5);
        log.trace(-5, "C", "x");
        QCOMPARE(usual->lines, QStringList());
        QCOMPARE(lower->lines, QStringList{QStringLiteral("-5|C|x")});
    }

    void aSinkAddedTwiceOnlyChangesItsLevel()
    {
        RnLogFile log;
        const auto sink = std::make_shared<Sink>();
        log.addSink(sink, 0);
        log.addSink(sink, 3);
        log.warn("C", "no");
        log.error("C", "once");
        QCOMPARE(sink->lines, QStringList{QStringLiteral("3|C|once")});
        log.addSink(sink, 1);
        log.print("C", "again");
        QCOMPARE(sink->lines.size(), 2);
    }

    void aRemovedSinkGetsNothingAndIsLetGo()
    {
        RnLogFile log;
        auto sink = addSink(log);
        const auto stays = addSink(log);
        log.removeSink(sink.get());
        log.print("C", "x");
        QCOMPARE(sink->lines, QStringList());
        QCOMPARE(stays->lines.size(), 1);
        const std::weak_ptr<Sink> weak = sink;
        sink.reset();
        QVERIFY(weak.expired());
    }

    void nullAndUnknownSinksAreIgnored()
    {
        RnLogFile log;
        log.addSink(nullptr);
        log.removeSink(nullptr);
        const Sink stranger;
        log.removeSink(&stranger);
        log.error("C", "into nothing");
        const auto sink = addSink(log);
        log.print("C", "x");
        QCOMPARE(sink->lines.size(), 1);
    }

    void withoutASinkForTheLevelNothingIsFormatted()
    {
        RnLogFile log;
        const auto severe = std::make_shared<Sink>();
        log.addSink(severe, 3);
        int written = -1;
        // The only conversion with an effect tells whether the format was run at all.
        const auto format = [&](RnLogLevel inLevel) { log.tracef(inLevel, "C", "abc%n", &written); };
        format(2);
        QCOMPARE(written, -1);
        format(3);
        QCOMPARE(written, 3);
    }

    // Sinks that log

    void aSinkThatLogsIsNotCalledForItsOwnLine()
    {
        RnLogFile log;
        const auto talker =
            addSink(log, [&](const RnLogRecord& inRecord) { log.warn("Talker", inRecord.text.c_str()); });
        const auto listener = addSink(log);
        log.print("C", "x");
        QCOMPARE(talker->lines, QStringList{QStringLiteral("1|C|x")});
        QCOMPARE(listener->lines, QStringList({QStringLiteral("1|C|x"), QStringLiteral("2|Talker|x")}));
    }

    void sinksThatAnswerEachOtherComeToAnEnd()
    {
        RnLogFile log;
        const auto first = addSink(log, [&](const RnLogRecord&) { log.print("First", "x"); });
        const auto second = addSink(log, [&](const RnLogRecord&) { log.print("Second", "x"); });
        const auto listener = addSink(log);
        log.print("C", "x");
        QCOMPARE(first->lines, QStringList({QStringLiteral("1|C|x"), QStringLiteral("1|Second|x")}));
        QCOMPARE(second->lines, QStringList({QStringLiteral("1|C|x"), QStringLiteral("1|First|x")}));
        QCOMPARE(listener->lines, QStringList({QStringLiteral("1|C|x"), QStringLiteral("1|First|x"),
                                               QStringLiteral("1|Second|x"), QStringLiteral("1|Second|x"),
                                               QStringLiteral("1|First|x")}));
    }

    void aSinkMayLogToAnotherLog()
    {
        RnLogFile log;
        RnLogFile other;
        const auto sink = addSink(log, [&](const RnLogRecord&) { other.print("C", "there"); });
        const auto there = addSink(other, [&](const RnLogRecord&) { log.print("C", "and back"); });
        const auto listener = addSink(log);
        log.print("C", "here");
        QCOMPARE(there->lines, QStringList{QStringLiteral("1|C|there")});
        QCOMPARE(sink->lines, QStringList{QStringLiteral("1|C|here")});
        QCOMPARE(listener->lines, QStringList({QStringLiteral("1|C|here"), QStringLiteral("1|C|and back")}));
    }

    void aSinkMayRemoveItselfAndAddAnother()
    {
        RnLogFile log;
        const auto next = std::make_shared<Sink>();
        std::shared_ptr<Sink> sink;
        sink = std::make_shared<Sink>([&](const RnLogRecord&) {
            log.addSink(next);
            log.removeSink(sink.get());
        });
        log.addSink(sink);
        log.print("C", "one");
        log.print("C", "two");
        QCOMPARE(sink->lines, QStringList{QStringLiteral("1|C|one")});
        QCOMPARE(next->lines, QStringList{QStringLiteral("1|C|two")});
    }

    void writingIsToldOnlyInsideASink()
    {
        RnLogFile log;
        bool inside = false;
        const auto sink = addSink(log, [&](const RnLogRecord&) { inside = RnLogFile::isWriting(); });
        QVERIFY(!RnLogFile::isWriting());
        log.print("C", "x");
        QVERIFY(inside);
        QVERIFY(!RnLogFile::isWriting());
    }

    // Threads

    void linesOfAThreadKeepTheirOrder()
    {
        constexpr int Threads = 4;
        constexpr int Lines = 1000;
        RnLogFile log;
        std::vector<std::vector<int>> numbers(Threads);
        const auto sink = addSink(log, [&](const RnLogRecord& inRecord) {
            numbers[static_cast<std::size_t>(inRecord.level)].push_back(std::stoi(inRecord.text));
        });
        std::vector<std::thread> threads;
        for (int level = 0; level < Threads; ++level)
            threads.emplace_back([&log, level] {
                for (int i = 0; i < Lines; ++i)
                    log.tracef(level, "C", "%d", i);
            });
        for (std::thread& thread : threads)
            thread.join();
        for (const std::vector<int>& own : numbers) {
            QCOMPARE(own.size(), std::size_t(Lines));
            QVERIFY(std::is_sorted(own.begin(), own.end()));
        }
    }

    void threadsInSinksThatLogDoNotBlockEachOther()
    {
        constexpr int Lines = 2000;
        RnLogFile log;
        const auto first = addSink(log, [&](const RnLogRecord&) { log.print("First", "x"); });
        const auto second = addSink(log, [&](const RnLogRecord&) { log.print("Second", "x"); });
        const auto work = [&log] {
            for (int i = 0; i < Lines; ++i)
                log.print("C", "x");
        };
        std::thread thread(work);
        work();
        thread.join();
        // Each sink: the lines, and the other's line for each of them.
        QCOMPARE(first->lines.size(), 2 * 2 * Lines);
        QCOMPARE(second->lines.size(), 2 * 2 * Lines);
    }

    void removalWaitsForOtherThreads()
    {
        RnLogFile log;
        QSemaphore entered;
        std::atomic<bool> removing{false};
        std::atomic<bool> left{false};
        const auto sink = addSink(log, [&](const RnLogRecord&) {
            entered.release();
            while (!removing)
                std::this_thread::yield();
            // Some time for a removal that doesn't wait to show.
            for (int i = 0; i < 1000; ++i)
                std::this_thread::yield();
            left = true;
        });
        std::thread writer([&] { log.print("C", "x"); });
        entered.acquire();
        removing = true;
        log.removeSink(sink.get());
        QVERIFY(left);
        writer.join();
        QCOMPARE(sink->lines.size(), 1);
    }

    void sinksComeAndGoWhileThreadsWrite()
    {
        RnLogFile log;
        std::atomic<bool> stop{false};
        std::atomic<int> lines{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 2; ++i)
            threads.emplace_back([&] {
                while (!stop)
                    log.print("C", "x");
            });
        for (int i = 0; i < 200; ++i) {
            std::atomic<bool> alive{true};
            const int before = lines;
            const auto sink = addSink(log, [&](const RnLogRecord&) { lines += alive ? 1 : 1000000; });
            while (lines == before)
                std::this_thread::yield();
            log.removeSink(sink.get());
            alive = false;
        }
        stop = true;
        for (std::thread& thread : threads)
            thread.join();
        QVERIFY(lines >= 200 && lines < 1000000);
    }

    // Text form

    void aLineHasTimeLevelContextAndText()
    {
        QCOMPARE(formatted("Script Interface", "text"),
                 QStringLiteral("2026-01-31 14:05:09.120 2 [Script Interface] text\n"));
    }

    void millisecondsHaveThreeDigitsAlsoBefore1970()
    {
        using namespace std::chrono;
        const auto early = system_clock::time_point(milliseconds(-1));
        QCOMPARE(QString::fromStdString(RnLogFile::format({early, 0, "", "x"})),
                 QStringLiteral("1970-01-01 00:59:59.999 0 x\n"));
        const auto later = system_clock::time_point(milliseconds(1007));
        QCOMPARE(QString::fromStdString(RnLogFile::format({later, 0, "", "x"})),
                 QStringLiteral("1970-01-01 01:00:01.007 0 x\n"));
    }

    void contextAndTextAreWrittenInOneLineEach_data()
    {
        QTest::addColumn<QByteArray>("context");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("rest");
        const auto row = [](const char* inName, const char* inContext, const char* inText,
                            const QString& inRest) {
            QTest::newRow(inName) << QByteArray(inContext) << QByteArray(inText) << inRest;
        };
        row("no context", "", "text", QStringLiteral("text"));
        row("empty", "", "", QString());
        row("empty text", "C", "", QStringLiteral("[C] "));
        row("further lines", "C", "one\ntwo\n\nfour", QStringLiteral("[C] one\n  two\n  \n  four"));
        row("crlf", "C", "one\r\ntwo", QStringLiteral("[C] one\n  two"));
        row("cr", "C", "one\rtwo\r\rfour", QStringLiteral("[C] one\n  two\n  \n  four"));
        row("breaks at the end", "C", "one\r\n\n", QStringLiteral("[C] one"));
        row("only breaks", "C", "\n\r\n", QStringLiteral("[C] "));
        row("break at the start", "C", "\none", QStringLiteral("[C] \n  one"));
        row("break in the context", "C\nD\r\nE", "x", QStringLiteral("[C D E] x"));
        row("Latin-1", "\xC4", "M\xFCller", QStringLiteral("[\u00C4] M\u00FCller"));
        row("UTF-8", "\xC3\x84", "M\xC3\xBCller", QStringLiteral("[\u00C4] M\u00FCller"));
        row("both", "\xC4", "M\xC3\xBCller", QStringLiteral("[\u00C4] M\u00FCller"));
    }
    void contextAndTextAreWrittenInOneLineEach()
    {
        QFETCH(QByteArray, context);
        QFETCH(QByteArray, text);
        QFETCH(QString, rest);
        QCOMPARE(formatted(context.toStdString(), text.toStdString()),
                 QStringLiteral("2026-01-31 14:05:09.120 2 ") + rest + u'\n');
    }

    void onlyWellFormedUtf8Stays_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("stays");
        const auto row = [](const char* inName, const char* inText, bool inStays) {
            QTest::newRow(inName) << QByteArray(inText) << inStays;
        };
        row("empty", "", true);
        row("ascii", "plain ~", true);
        row("two bytes", "\xC2\x80 \xDF\xBF", true);
        row("three bytes", "\xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xEF\xBF\xBF", true);
        row("four bytes", "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF", true);
        row("lone continuation", "\x80", false);
        row("lone lead", "a\xC3", false);
        row("lead before ascii", "\xC3 a", false);
        row("overlong two", "\xC0\x80", false);
        row("overlong slash", "\xC1\xAF", false);
        row("overlong three", "\xE0\x9F\xBF", false);
        row("overlong four", "\xF0\x8F\xBF\xBF", false);
        row("surrogate", "\xED\xA0\x80", false);
        row("beyond Unicode", "\xF4\x90\x80\x80", false);
        row("lead too high", "\xF5\x80\x80\x80", false);
        row("cut three", "\xE2\x82", false);
        row("cut four", "\xF0\x9F\x98", false);
        row("bad third", "\xE2\x82z", false);
        row("bad fourth", "\xF0\x9F\x98z", false);
    }
    void onlyWellFormedUtf8Stays()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, stays);
        const std::string expected = stays ? text.toStdString() : QString::fromLatin1(text).toStdString();
        QCOMPARE(RnLogFile::toUtf8(text.toStdString()), expected);
    }
};

KY_TEST_MAIN(TestRnLogFile)

#include "tst_RnLogFile.moc"

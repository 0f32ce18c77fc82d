#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <rnlib/RnContract.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace {

class Observer final : public RnContractObserver
{
public:
    explicit Observer(std::function<void(const RnContractReport&)> inThen = {})
        : mThen(std::move(inThen))
    {}

    void contractBroken(const RnContractReport& inReport) override
    {
        reports.push_back(inReport);
        if (mThen)
            mThen(inReport);
    }

    std::vector<RnContractReport> reports;

private:
    const std::function<void(const RnContractReport&)> mThen;
};

/// A sink that reports a contract on the lines of one context.
class ReportingSink final : public RnLogSink
{
public:
    void write(const RnLogRecord& inRecord) override
    {
        if (inRecord.context == "Report")
            dbc_event(RnContractType::Check, "0", "sink.cpp", 3, "write", inRecord.text.c_str());
    }
};

} // namespace

class TestRnContract final : public QObject
{
    Q_OBJECT

private slots:
    void observerGetsAllFields()
    {
        Observer observer;
        dbc_event(RnContractType::Postcondition, "a > 0", "file.cpp", 12, "run", "too small");
        QCOMPARE(observer.reports.size(), std::size_t(1));
        const RnContractReport report = observer.reports.front();
        QVERIFY(report.type == RnContractType::Postcondition);
        QCOMPARE(report.condition, std::string("a > 0"));
        QCOMPARE(report.file, std::string("file.cpp"));
        QCOMPARE(report.line, 12);
        QCOMPARE(report.function, std::string("run"));
        QCOMPARE(report.message, std::string("too small"));
    }

    void nullTextsAreEmpty()
    {
        Observer observer;
        dbc_event(RnContractType::Check, nullptr, nullptr, 0, nullptr, nullptr);
        QCOMPARE(observer.reports.size(), std::size_t(1));
        QVERIFY(observer.reports[0].condition.empty() && observer.reports[0].file.empty());
        QVERIFY(observer.reports[0].function.empty() && observer.reports[0].message.empty());
    }

    void withoutAnObserverTheReportIsLogged()
    {
        LogCapture log;
        dbc_event(RnContractType::Check, "ok()", "file.cpp", 5, "run", "why");
        dbc_event(RnContractType::Check, "0", "file.cpp", 6, "run");
        QCOMPARE(log.take(),
                 QStringList({QStringLiteral("3|Contract|Contract broken: ok() (why) in run, file.cpp:5"),
                              QStringLiteral("3|Contract|Contract broken: 0 in run, file.cpp:6")}));
    }

    void withAnObserverNothingIsLogged()
    {
        LogCapture log;
        Observer observer;
        dbc_event(RnContractType::Check, "0", "file.cpp", 6, "run");
        QCOMPARE(observer.reports.size(), std::size_t(1));
        QCOMPARE(log.take(), QStringList());
    }

    void everyObserverHears()
    {
        Observer first;
        Observer second;
        dbc_report("false", nullptr);
        QCOMPARE(first.reports.size(), std::size_t(1));
        QCOMPARE(second.reports.size(), std::size_t(1));
    }

    void endedObserverHearsNoMore()
    {
        Observer stays;
        {
            Observer goes;
            dbc_report("0", nullptr);
            QCOMPARE(goes.reports.size(), std::size_t(1));
        }
        dbc_report("0", nullptr);
        QCOMPARE(stays.reports.size(), std::size_t(2));
    }

    void reportFromInsideAnObserverIsDropped()
    {
        LogCapture log;
        Observer observer([](const RnContractReport&) { dbc_report("0", "nested"); });
        dbc_report("0", "outer");
        QCOMPARE(observer.reports.size(), std::size_t(1));
        dbc_report("0", "next");
        QCOMPARE(observer.reports.size(), std::size_t(2));
        QCOMPARE(observer.reports[1].message, std::string("next"));
        QCOMPARE(log.take(), QStringList());
    }

    void observerMayLog()
    {
        LogCapture log;
        Observer observer([](const RnContractReport& inReport) {
            getTheLogInstance().error("Observer", inReport.condition.c_str());
        });
        dbc_report("x == 1", nullptr);
        QCOMPARE(log.take(), QStringList{QStringLiteral("3|Observer|x == 1")});
    }

    void observerMayEndAnother()
    {
        std::unique_ptr<Observer> second;
        Observer first([&](const RnContractReport&) { second.reset(); });
        second = std::make_unique<Observer>();
        dbc_report("0", nullptr);
        QVERIFY(!second);
        QCOMPARE(first.reports.size(), std::size_t(1));
    }

    void holdsReportsOnlyWhenBroken()
    {
        Observer observer;
        const int three = 3;
        QVERIFY(dbc_holds(three == 3));
        QVERIFY(observer.reports.empty());
        QVERIFY(!dbc_holds(three == 4));
        QCOMPARE(observer.reports.size(), std::size_t(1));
        QCOMPARE(observer.reports[0].condition, std::string("three == 4"));
        QCOMPARE(observer.reports[0].function, std::string("holdsReportsOnlyWhenBroken"));
        QCOMPARE(observer.reports[0].file, std::string(__FILE__));
    }

    void reportFromInsideASinkIsLogged()
    {
        const auto sink = std::make_shared<ReportingSink>();
        LogCapture log;
        Observer observer;
        getTheLogInstance().addSink(sink);
        getTheLogInstance().print("Report", "bad");
        getTheLogInstance().removeSink(sink.get());
        QVERIFY(observer.reports.empty());
        QCOMPARE(log.take(),
                 QStringList({QStringLiteral("1|Report|bad"),
                              QStringLiteral("3|Contract|Contract broken: 0 (bad) in write, sink.cpp:3")}));
    }

    void loggingObserversAndReportingSinksDoNotBlockEachOther()
    {
        const auto sink = std::make_shared<ReportingSink>();
        std::atomic<int> heard{0};
        Observer observer([&](const RnContractReport&) {
            ++heard;
            getTheLogInstance().print("Observer", "heard");
        });
        getTheLogInstance().addSink(sink);
        std::thread reporter([] {
            for (int i = 0; i < 2000; ++i)
                dbc_report("0", "from a thread");
        });
        for (int i = 0; i < 2000; ++i)
            getTheLogInstance().print("Report", "from the log");
        reporter.join();
        getTheLogInstance().removeSink(sink.get());
        QCOMPARE(heard.load(), 2000);
    }

    void reportsOfSeveralThreadsComeOneByOne()
    {
        std::atomic<int> inside{0};
        std::atomic<int> most{0};
        Observer observer([&](const RnContractReport&) {
            most = std::max(most.load(), ++inside);
            --inside;
        });
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([] {
                for (int n = 0; n < 500; ++n)
                    dbc_report("0", nullptr);
            });
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(observer.reports.size(), std::size_t(2000));
        QCOMPARE(most.load(), 1);
    }
};

KY_TEST_MAIN(TestRnContract)

#include "tst_RnContract.moc"

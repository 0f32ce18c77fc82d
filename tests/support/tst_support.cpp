#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QThread>

#include <memory>

namespace {

struct Outcome
{
    int exitCode = -1;
    QString output;
};

Outcome runSample(const QStringList& inArguments, const QString& inSkip = QString())
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("KY_TEST_SKIP"), inSkip);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(SUPPORT_SAMPLE), inArguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString::fromUtf8(process.readAllStandardError()) + process.errorString()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput())};
}

/// The functions that QtTest reports as passed, in their order, rows included.
QStringList passed(const QString& inOutput)
{
    QStringList names;
    for (const QString& line : inOutput.split(u'\n')) {
        const QString name = line.section(QLatin1String("::"), 1);
        if (line.startsWith(QLatin1String("PASS")) && !name.contains(QLatin1String("TestCase()")))
            names.append(name);
    }
    return names;
}

std::unique_ptr<QMessageBox> makeBox(const QString& inText)
{
    auto box = std::make_unique<QMessageBox>();
    box->setText(inText);
    box->setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    return box;
}

ModalAnswer::Answer clicksAndKeepsTextIn(QStringList& ioTexts, const QString& inButton)
{
    return [&ioTexts, inButton](QWidget* inWindow) {
        ioTexts.append(qobject_cast<QMessageBox*>(inWindow)->text());
        ModalAnswer::clicking(inButton)(inWindow);
    };
}

const QString Failing =
    QStringLiteral("forgetsAContractReport,expectsAContractReportInVain,waitsForAWindowInVain,"
                   "endsBeforeAWindowCame,leavesAWindowOpen,opensAFurtherWindowInItsAnswer,"
                   "clicksAMissingButton,comparesDifferentLogLines");

} // namespace

class TestSupport final : public QObject
{
    Q_OBJECT

private slots:
    // LogCapture

    void captureKeepsLevelContextAndText()
    {
        LogCapture log;
        getTheLogInstance().trace(0, "Ctx", "announced");
        getTheLogInstance().warnf("%d of %d", 1, 2);
        const QList<LogCapture::Line> expected{{0, QStringLiteral("Ctx"), QStringLiteral("announced")},
                                               {2, QString(), QStringLiteral("1 of 2")}};
        QCOMPARE(log.lines(), expected);
        QCOMPARE(log.toStrings(),
                 QStringList({QStringLiteral("0|Ctx|announced"), QStringLiteral("2||1 of 2")}));
    }

    void captureIsEmptyAfterTake()
    {
        LogCapture log;
        getTheLogInstance().print("Ctx", "text");
        QCOMPARE(log.take(), QStringList{QStringLiteral("1|Ctx|text")});
        QCOMPARE(log.take(), QStringList());
    }

    void captureLeavesOutLowerLevels()
    {
        LogCapture log(2);
        getTheLogInstance().print("Ctx", "no");
        getTheLogInstance().warn("Ctx", "yes");
        QCOMPARE(log.take(), QStringList{QStringLiteral("2|Ctx|yes")});
    }

    void captureEndsWithItsLife()
    {
        LogCapture outer;
        {
            LogCapture inner;
        }
        getTheLogInstance().print("", "still there");
        QCOMPARE(outer.take(), QStringList{QStringLiteral("1||still there")});
    }

    void captureReadsLatin1AndUtf8()
    {
        LogCapture log;
        getTheLogInstance().print("", "M\xFCller");
        getTheLogInstance().print("", "M\xC3\xBCller");
        const QString line = QStringLiteral("1||M\u00FCller");
        QCOMPARE(log.take(), QStringList({line, line}));
    }

    void captureKeepsLinesOfOtherThreads()
    {
        LogCapture log;
        const std::unique_ptr<QThread> thread(
            QThread::create([] { getTheLogInstance().error("Thread", "from afar"); }));
        thread->start();
        QVERIFY(thread->wait());
        QCOMPARE(log.take(), QStringList{QStringLiteral("3|Thread|from afar")});
    }

    // ContractWatch

    void expectedReportsInOrderVerify()
    {
        ContractWatch watch;
        watch.expect(QStringLiteral("isNotNull()"));
        watch.expect(QStringLiteral("0"), QStringLiteral("bad order"));
        dbc_event(RnContractType::Check, "isNotNull()", "a.cpp", 1, "f");
        dbc_event(RnContractType::Check, "0", "a.cpp", 2, "f", "bad order");
        QCOMPARE(watch.reports().size(), 2);
        QCOMPARE(watch.verify(), QString());
        QVERIFY(watch.reports().isEmpty());
    }

    void differencesAreTold_data()
    {
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QStringList>("came");
        QTest::addColumn<QString>("told");
        const QStringList none;
        const QStringList a{QStringLiteral("a")};
        const QStringList ab{QStringLiteral("a"), QStringLiteral("b")};
        const QStringList ba{QStringLiteral("b"), QStringLiteral("a")};
        QTest::newRow("unexpected") << none << a
                                    << QStringLiteral(
                                           "Contract reports expected: none. Came: a in f, x.cpp:7.");
        QTest::newRow("missing") << a << none << QStringLiteral("Contract reports expected: a. Came: none.");
        QTest::newRow("order") << ab << ba
                               << QStringLiteral("Contract reports expected: a; b. "
                                                 "Came: b in f, x.cpp:7; a in f, x.cpp:7.");
        QTest::newRow("too many") << a << ab
                                  << QStringLiteral("Contract reports expected: a. "
                                                    "Came: a in f, x.cpp:7; b in f, x.cpp:7.");
    }
    void differencesAreTold()
    {
        QFETCH(QStringList, expected);
        QFETCH(QStringList, came);
        QFETCH(QString, told);
        ContractWatch watch;
        for (const QString& condition : expected)
            watch.expect(condition);
        for (const QString& condition : came)
            dbc_event(RnContractType::Check, qPrintable(condition), "x.cpp", 7, "f");
        QCOMPARE(watch.verify(), told);
        QCOMPARE(watch.verify(), QString());
    }

    void messagesAreCompared()
    {
        ContractWatch watch;
        watch.expect(QStringLiteral("0"));
        dbc_event(RnContractType::Check, "0", "x.cpp", 7, "f", "why");
        QCOMPARE(watch.verify(),
                 QStringLiteral("Contract reports expected: 0. Came: 0 (why) in f, x.cpp:7."));
    }

    // ModalAnswer

    void answerClicksTheButton()
    {
        ModalAnswer answer(ModalAnswer::clicking(QStringLiteral("No")));
        QCOMPARE(makeBox(QStringLiteral("sure?"))->exec(), int(QMessageBox::No));
        QVERIFY(answer.happened());
    }

    void answersServeOneWindowEachInTheirOrder()
    {
        QStringList texts;
        ModalAnswer first(clicksAndKeepsTextIn(texts, QStringLiteral("Yes")));
        ModalAnswer second(clicksAndKeepsTextIn(texts, QStringLiteral("No")));
        QCOMPARE(makeBox(QStringLiteral("one"))->exec(), int(QMessageBox::Yes));
        QVERIFY(!second.happened());
        QCOMPARE(makeBox(QStringLiteral("two"))->exec(), int(QMessageBox::No));
        QCOMPARE(texts, QStringList({QStringLiteral("one"), QStringLiteral("two")}));
    }

    void theSameWindowIsAnsweredAgain()
    {
        const auto box = makeBox(QStringLiteral("again"));
        ModalAnswer first(ModalAnswer::clicking(QStringLiteral("Yes")));
        ModalAnswer second(ModalAnswer::clicking(QStringLiteral("No")));
        QCOMPARE(box->exec(), int(QMessageBox::Yes));
        QCOMPARE(box->exec(), int(QMessageBox::No));
    }

    void anAnswerMayOpenTheNextWindow()
    {
        int inner = 0;
        ModalAnswer first([&](QWidget* inWindow) {
            inner = makeBox(QStringLiteral("inner"))->exec();
            ModalAnswer::clicking(QStringLiteral("No"))(inWindow);
        });
        ModalAnswer second(ModalAnswer::clicking(QStringLiteral("Yes")));
        QCOMPARE(makeBox(QStringLiteral("outer"))->exec(), int(QMessageBox::No));
        QCOMPARE(inner, int(QMessageBox::Yes));
    }

    // What must fail a test

    void mistakesFailTheTest_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* inFunction, const char* inText) {
            QTest::newRow(inFunction) << QString::fromLatin1(inFunction) << QString::fromLatin1(inText);
        };
        row("forgetsAContractReport", "Contract reports expected: none. Came: 0 (never here) in ");
        row("expectsAContractReportInVain", "Contract reports expected: isNotNull(). Came: none.");
        row("waitsForAWindowInVain", "No modal window came in time");
        row("endsBeforeAWindowCame", "No modal window came");
        row("leavesAWindowOpen", "The modal window did not close after its answer");
        row("opensAFurtherWindowInItsAnswer", "The modal window did not close after its answer");
        row("comparesDifferentLogLines", "Compared lists differ at index 0.\n"
                                         "   Actual   (log.lines()): \"1|Context|text\"\n"
                                         "   Expected (expected): \"3|Context|text\"");
        row("clicksAMissingButton", "The modal window has no button \"Nowhere\"");
    }
    void mistakesFailTheTest()
    {
        QFETCH(QString, function);
        QFETCH(QString, text);
        const Outcome outcome = runSample({function});
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.output.contains(QLatin1String("FAIL!  : SupportSample::") + function +
                                         QLatin1String("() ") + text),
                 qPrintable(outcome.output));
    }

    // KyTestMain

    void skippedFunctionsAreLeftOut()
    {
        const Outcome outcome = runSample({}, Failing);
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(passed(outcome.output),
                 QStringList({QStringLiteral("passes()"), QStringLiteral("passesToo(one)"),
                              QStringLiteral("passesToo(two)")}));
    }

    void namedFunctionsRunEvenIfSkipped()
    {
        const Outcome outcome =
            runSample({QStringLiteral("passesToo:two")}, QStringLiteral("passes,passesToo"));
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(passed(outcome.output), QStringList{QStringLiteral("passesToo(two)")});
    }

    void optionsStandBesideSkippedFunctions()
    {
        const Outcome outcome =
            runSample({QStringLiteral("-maxwarnings"), QStringLiteral("5"), QStringLiteral("-v1")},
                      Failing + QStringLiteral(",passes"));
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(passed(outcome.output),
                 QStringList({QStringLiteral("passesToo(one)"), QStringLiteral("passesToo(two)")}));
    }

    void nothingRunsWhenAllIsSkipped()
    {
        const Outcome outcome = runSample({}, Failing + QStringLiteral(",passes,passesToo"));
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(outcome.output, QString());
    }

    void functionsAreNamedInTheArguments_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("named");
        const auto row = [](const char* inArguments, bool inNamed) {
            const QStringList arguments = QString::fromLatin1(inArguments).split(u' ', Qt::SkipEmptyParts);
            QTest::newRow(inArguments) << (QStringList{QStringLiteral("program")} + arguments) << inNamed;
        };
        row("", false);
        row("passes", true);
        row("passes:row", true);
        row("-v2", false);
        row("-o out.xml,junitxml", false);
        row("-o out.txt passes", true);
        row("-eventdelay 5 -keydelay 6 -mousedelay 7", false);
        row("-iterations 3 -median 2 passes -silent", true);
        row("-o", false);
    }
    void functionsAreNamedInTheArguments()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, named);
        QCOMPARE(KyTestMain::namesFunction(arguments), named);
    }

    void argumentsStayWithoutSomethingToSkip()
    {
        const QStringList given{QStringLiteral("program"), QStringLiteral("-v1")};
        QCOMPARE(KyTestMain::arguments(given, {QStringLiteral("a")}, {}), given);
    }

    void fixturesAndDataFunctionsAreNoTests()
    {
        const QStringList functions = KyTestMain::functions(staticMetaObject);
        QVERIFY(functions.contains(QStringLiteral("differencesAreTold")));
        QVERIFY(!functions.contains(QStringLiteral("differencesAreTold_data")));
        QVERIFY(!functions.contains(QStringLiteral("cleanup")));
    }

    void cleanup() { QVERIFY(!QApplication::activeModalWidget()); }

    void theApplicationHasItsNames()
    {
        QCOMPARE(QCoreApplication::organizationName(), QStringLiteral("Ky"));
        QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("kytest"));
        QVERIFY(qobject_cast<QApplication*>(QCoreApplication::instance()));
    }

    void runsOnlyWhenNamed()
    {
        QVERIFY(QCoreApplication::arguments().contains(QString::fromLatin1(QTest::currentTestFunction())));
    }
};

KY_TEST_MAIN(TestSupport)

#include "tst_support.moc"

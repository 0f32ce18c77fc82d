// A test program with known outcomes. tst_support runs it and looks at them.

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <QMessageBox>

using namespace std::chrono_literals;

class SupportSample final : public QObject
{
    Q_OBJECT

private slots:
    void passes() { QVERIFY(true); }

    void passesToo_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("one") << 1;
        QTest::newRow("two") << 2;
    }
    void passesToo()
    {
        QFETCH(int, number);
        QVERIFY(number > 0);
    }

    void comparesDifferentLogLines()
    {
        LogCapture log;
        getTheLogInstance().print("Context", "text");
        const QList<LogCapture::Line> expected{{3, QStringLiteral("Context"), QStringLiteral("text")}};
        QCOMPARE(log.lines(), expected);
    }

    void forgetsAContractReport()
    {
        ContractWatch watch;
        dbc_report("0", "never here");
    }

    void expectsAContractReportInVain()
    {
        ContractWatch watch;
        watch.expect(QStringLiteral("isNotNull()"));
    }

    void waitsForAWindowInVain()
    {
        ModalAnswer answer([](QWidget*) {}, 30ms);
        QTRY_VERIFY(QTest::currentTestFailed());
    }

    void endsBeforeAWindowCame()
    {
        ModalAnswer answer([](QWidget*) {});
    }

    void leavesAWindowOpen()
    {
        ModalAnswer answer([](QWidget*) {}, 30ms);
        QMessageBox(QMessageBox::Information, QStringLiteral("title"), QStringLiteral("text")).exec();
    }

    void opensAFurtherWindowInItsAnswer()
    {
        const auto open = [] {
            QMessageBox(QMessageBox::Information, QStringLiteral("title"), QStringLiteral("text")).exec();
        };
        ModalAnswer answer([&](QWidget*) { open(); }, 30ms);
        open();
    }

    void clicksAMissingButton()
    {
        ModalAnswer answer(ModalAnswer::clicking(QStringLiteral("Nowhere")));
        QMessageBox(QMessageBox::Information, QStringLiteral("title"), QStringLiteral("text")).exec();
    }
};

KY_TEST_MAIN(SupportSample)

#include "support_sample.moc"

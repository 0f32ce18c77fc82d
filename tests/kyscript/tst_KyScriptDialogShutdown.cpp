// Dialogs on the screen while their engine, their platform and the application go.

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/ModalAnswer.h>

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptDialog.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRunner.h>

#include <ovvolren/OvServerPeer.h>

#include <QButtonGroup>
#include <QLineEdit>
#include <QPushButton>

#include <cstdio>
#include <cstdlib>

namespace {

/// What has to be gone when the process ends, looked at behind the application.
struct EndOfProcess
{
    ~EndOfProcess()
    {
        for (const auto& dialog : dialogs) {
            if (dialog) {
                std::fputs("a dialog has outlived the application\n", stderr);
                std::_Exit(EXIT_FAILURE);
            }
        }
    }
    QList<QPointer<QObject>> dialogs;
};

EndOfProcess sEnd;
std::shared_ptr<QObject> sKept;

constexpr const char* MakeAll =
    "var hidden = new Dialog({ title: 'hidden' });"
    "var shown = new Dialog({ title: 'shown', fieldText: 'x', showLineEdit: true, lineEditEnabled: true });"
    "var busy = new Dialog({ title: 'busy', autoClose: true }), closed = new Dialog({ title: 'closed' });"
    "var waiting = new Dialog({ title: 'waiting' }), answers = 0;"
    "[shown, busy, closed].forEach(function(x) { x.processed.connect(function() { ++answers; }); x.show(); "
    "});"
    "busy.setStatus(true, 'Working')";

} // namespace

class tst_KyScriptDialogShutdown : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mPlatform = std::make_unique<KyTestPlatform>();
        mContracts = std::make_unique<ContractWatch>();
    }
    void cleanup()
    {
        const QString broken = mContracts->verify();
        mContracts.reset();
        mPlatform.reset();
        QVERIFY2(broken.isEmpty(), qPrintable(broken));
    }

    void engineEndsUnderDialogs();
    void platformEndsUnderDialogs();
    void platformEndsWithoutItsCleanup();
    void mainWindowEndsWithThePlatform();
    void platformEndsInAHandler();
    void platformEndsInAHandlerOfTheLineEdit();
    void runnerEndsUnderDialogs();
    void processEndsUnderDialogs();
    void processEndsUnderDialogsOfAnEngineThatOutlivesIt();
    void processEndsInTheHandsOfTheEventLoop();

private:
    KyScriptInterface& makeAll()
    {
        KyScriptInterface& engine = KyScriptInterface::getInstance("");
        run(MakeAll);
        if (!QTest::qWaitFor([&] { return dialog("shown")->isVisible() && dialog("busy")->isVisible(); }))
            qFatal("no dialog came");
        click(*dialog("closed"));
        run("waiting.show()");
        for (const char* name : {"hidden", "shown", "busy", "closed", "waiting"})
            sEnd.dialogs.append(dialog(name));
        return engine;
    }
    static QString run(const QString& inSource)
    {
        return KyScriptInterface::getInstance("")
            .runScript(KyScriptProgram(inSource, ""), false, false, false)
            .toString();
    }
    static KyScriptDialog* dialog(const char* inName)
    {
        return qobject_cast<KyScriptDialog*>(
            KyScriptInterface::getInstance("").globalObject().property(QLatin1String(inName)).toQObject());
    }
    static void click(const KyScriptDialog& inDialog)
    {
        auto* group = inDialog.findChild<QButtonGroup*>("KyScriptDialog_group");
        QTest::mouseClick(group->button(0), Qt::LeftButton);
    }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

void tst_KyScriptDialogShutdown::engineEndsUnderDialogs()
{
    delete static_cast<QObject*>(&makeAll());
    QCoreApplication::processEvents();
    for (const auto& one : sEnd.dialogs)
        QVERIFY(!one);
    QCOMPARE(run("typeof shown"), QStringLiteral("undefined"));
}

void tst_KyScriptDialogShutdown::platformEndsUnderDialogs()
{
    makeAll();
    KyScriptInterface::cleanupInstances();
    mPlatform.reset();
    QVERIFY(!dialog("shown") && !dialog("busy") && !dialog("closed"));
    QVERIFY(dialog("hidden")); // never shown
    QVERIFY(QApplication::topLevelWidgets().size() == 1);
    QCOMPARE(run("hidden.title()"), QStringLiteral("hidden"));
}

void tst_KyScriptDialogShutdown::platformEndsWithoutItsCleanup()
{
    makeAll();
    mPlatform.reset();
    QVERIFY(dialog("shown")->isVisible());
    QTRY_VERIFY(dialog("waiting")->isVisible());
    QTest::keyClick(dialog("shown")->findChild<QLineEdit*>(), Qt::Key_Return);
    click(*dialog("busy"));
    QTest::keyClick(dialog("waiting"), Qt::Key_Escape);
    QCOMPARE(run("answers"), QStringLiteral("3"));
    run("var late = new Dialog({ message: 'late' }); late.show()");
    QTRY_VERIFY(dialog("late")->isVisible());
}

void tst_KyScriptDialogShutdown::mainWindowEndsWithThePlatform()
{
    auto window = std::make_unique<QWidget>();
    window->show();
    mPlatform->monitors.setMainWindow(window.get());
    makeAll();
    window.reset();
    mPlatform.reset();
    QVERIFY(!dialog("shown")->isVisible() && !dialog("busy")->isVisible());
    QCOMPARE(run("answers"), QStringLiteral("3"));
}

void tst_KyScriptDialogShutdown::platformEndsInAHandler()
{
    makeAll();
    run("var handled = 0; shown.processed.connect(function() { Message.show('wait'); handled = "
        "shown.title(); })");
    QPointer<KyScriptDialog> shown(dialog("shown"));
    const ModalAnswer answer([&](QWidget* box) {
        KyScriptInterface::cleanupInstances();
        mPlatform.reset();
        QTest::qWait(10);
        ModalAnswer::clicking("OK")(box);
    });
    QEventLoop loop;
    QTimer::singleShot(0, this, [&] {
        click(*shown);
        loop.quit();
    });
    loop.exec();
    QCOMPARE(run("handled"), QStringLiteral("shown"));
    QTRY_VERIFY(!shown);
}

void tst_KyScriptDialogShutdown::platformEndsInAHandlerOfTheLineEdit()
{
    makeAll();
    run("var handled = 0; shown.processed.connect(function() { Message.show('wait'); handled = "
        "shown.lineEditText(); })");
    QPointer<KyScriptDialog> shown(dialog("shown"));
    auto* lineEdit = shown->findChild<QLineEdit*>();
    lineEdit->setText("abc");
    const ModalAnswer answer([&](QWidget* box) {
        KyScriptInterface::cleanupInstances();
        mPlatform.reset();
        QTest::qWait(10);
        ModalAnswer::clicking("OK")(box);
    });
    QEventLoop loop;
    QTimer::singleShot(0, this, [&] {
        QTest::keyClick(lineEdit, Qt::Key_Return);
        loop.quit();
    });
    loop.exec();
    QCOMPARE(run("handled"), QStringLiteral("abc"));
    QTRY_VERIFY(!shown);
}

void tst_KyScriptDialogShutdown::runnerEndsUnderDialogs()
{
    QPointer<KyScriptDialog> shown;
    {
        KyScriptEngine engine(nullptr, -1);
        engine.runScript(KyScriptProgram(MakeAll, ""), false);
        shown = qobject_cast<KyScriptDialog*>(engine.globalObject().property("shown").toQObject());
        QTRY_VERIFY(shown->isVisible());
    }
    QVERIFY(!shown);
    QCoreApplication::processEvents();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_KyScriptDialogShutdown::processEndsUnderDialogs()
{
    makeAll();
}

void tst_KyScriptDialogShutdown::processEndsUnderDialogsOfAnEngineThatOutlivesIt()
{
    KyScriptInterface& engine = makeAll();
    engine.setParent(nullptr);
    sKept = std::shared_ptr<QObject>(static_cast<QObject*>(&engine));
}

void tst_KyScriptDialogShutdown::processEndsInTheHandsOfTheEventLoop()
{
    makeAll();
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    QApplication::exec();
}

KY_TEST_MAIN(tst_KyScriptDialogShutdown)
#include "tst_KyScriptDialogShutdown.moc"

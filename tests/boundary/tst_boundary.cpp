// What other modules can reach: only the shared library and the headers that are installed with it.

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptBrowserCtrl.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptExternalMetaObject.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRunner.h>
#include <kyscript/KyScriptStudy.h>
#include <kyscript/KyScriptTool.h>
#include <kyscript/KyUrlCall.h>

#include <kybase/KyToolRegistry.h>

#include <QDomDocument>
#include <QProcess>
#include <QTemporaryFile>
#include <QTest>

class Thing : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE Thing() {}
    Q_INVOKABLE int seven() { return 7; }
};

class ThingClass : public KyScriptExternalMetaObject
{
public:
    ThingClass()
        : KyScriptExternalMetaObject(nullptr, "Thing", &Thing::staticMetaObject)
    {}
    ~ThingClass() override = default;
};

class tst_boundary : public QObject
{
    Q_OBJECT

private slots:
    void namedEngineRunsAScript();
    void facadeReportsErrorsAsText();
    void runnerCallsAFunction();
    void programComesFromAnXmlElement();
    void externalObjectAndClassReachScripts();
    void worklistCallbackIsAssignable();
    void toolsComeFromAFile();
    void urlIsCalled();
    void browserOfAModuleNeedsNoEngine();
    void nothingButTheBoundaryIsExported();
};

void tst_boundary::namedEngineRunsAScript()
{
    auto& facade = KyScriptAbstractInterface::getInstance("boundary");
    QCOMPARE(facade.runScript(KyScriptProgram("return 6 * 7", "x"), true, false, false).toInt(), 42);
    QCOMPARE(facade.jsEngine(true), &KyScriptInterface::getInstance("boundary"));
    KyScriptInterface::cleanupInstances();
    QVERIFY(KyScriptInterface::hasInstances());
}

void tst_boundary::facadeReportsErrorsAsText()
{
    auto& facade = KyScriptAbstractInterface::getInstance("boundary");
    const QJSValue error =
        facade.runScript(KyScriptProgram("throw new Error('x')", "a.js", 3), false, false, false);
    QString message;
    QCOMPARE(facade.errorMessage(error, "here", &message),
             QString("Uncaught exception in here\nException: x\nLine: 3\nBacktrace:\n%entry@file:a.js:3"));
    QCOMPARE(message, QString("x"));
}

void tst_boundary::runnerCallsAFunction()
{
    KyScriptRunner runner;
    QVERIFY(runner.initEngine(0, KyScriptProgram("function add(a, b) { return a + b; }", "x")));
    QCOMPARE(runner.callFunction(runner.getGlobalFunction("add"), 40, 2).toInt(), 42);
}

void tst_boundary::programComesFromAnXmlElement()
{
    QDomDocument document;
    QVERIFY(document.setContent(QByteArray("<s>\n  1 + 1\n</s>")));
    int line = 0;
    QCOMPARE(KyScriptProgram::extractScript(document.documentElement(), line), QString("1 + 1"));
    QCOMPARE(line, 2);
}

void tst_boundary::externalObjectAndClassReachScripts()
{
    const ThingClass thingClass;
    KyScriptExternalObject object(nullptr, "boundaryObject", ScriptExternalKindA);
    KyScriptEngine engine(nullptr, -1);
    QCOMPARE(engine.runScript(KyScriptProgram("return new Thing().seven() + typeof boundaryObject", "x"))
                 .toString(),
             QString("7object"));
}

void tst_boundary::worklistCallbackIsAssignable()
{
    KyScriptStudy::worklistDataCB = [](const Ovg::WorklistEntry&, int) { return QString("x"); };
    QVERIFY(KyScriptStudy::worklistDataCB);
    KyScriptStudy::worklistDataCB = nullptr;
}

void tst_boundary::toolsComeFromAFile()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("<Tools ScriptEngine='boundary'><Tool Id='a'><OnSet>triggered = 7</OnSet></Tool></Tools>");
    file.close();
    KyScriptTool::loadTools(QFile::encodeName(file.fileName()), nullptr);
    const auto tool = KyToolRegistry::getToolByDecorationKey<KyScriptTool>("a", true);
    QVERIFY(tool && tool->process(nullptr, true));
    QCOMPARE(KyScriptInterface::getInstance("boundary").evaluate("triggered").toInt(), 7);
    KyScriptTool::clearTools();
}

void tst_boundary::urlIsCalled()
{
    QObject parent;
    auto* call = new KyUrlCall(&parent);
    call->sendRequest("data:text/plain,called");
    QCOMPARE(call->parent(), &parent);
}

void tst_boundary::browserOfAModuleNeedsNoEngine()
{
    KyScriptBrowserCtrl browser(QStringLiteral("boundary"));
    browser.setCreatedByEngine(false);
    browser.setInstallationDirectory(QStringLiteral("/nowhere"));
    browser.sendCommand(QStringLiteral("HIDE"));
    QVERIFY(!browser.isRunning() && !browser.isInstalled() && browser.isHidden());
    QCOMPARE(KyScriptBrowserCtrl::BrowserCtrlType(KyScriptBrowserCtrl::BrowserCtrlType::WebView()).value(),
             33);
}

void tst_boundary::nothingButTheBoundaryIsExported()
{
    QProcess nm;
    nm.start("nm", {"-DC", "--defined-only", KYSCRIPT_LIBRARY});
    QVERIFY2(nm.waitForFinished(), "nm is part of the compiler's package");
    const QString symbols = QString::fromUtf8(nm.readAllStandardOutput());
    for (const char* exported :
         {"KyScriptEngine::runScript", "KyScriptProgram::extractScript", "KyScriptRunner::initEngine",
          "KyScriptExternalObject::registerExternalCreator", "KyScriptStudy::worklistDataCB",
          "KyUrlCall::sendRequest", "KyScriptTool::loadTools", "KyScriptBrowserCtrl::setCreatedByEngine"})
        QVERIFY2(symbols.contains(exported), exported);
    for (const char* hidden :
         {"KyScriptGlobalLink", "KyScriptOrvane::tool", "KyScriptMessage::show", "KyScriptStudyOrder",
          "KyScriptRunLog", "KyScriptHttpRequest::", "KyScriptProxy",
          "KyScriptWebSocket::", "KyScriptOvBrowserCtrl", "KyScriptWebViewCtrl"})
        QVERIFY2(!symbols.contains(hidden), hidden);
}

QTEST_MAIN(tst_boundary)
#include "tst_boundary.moc"

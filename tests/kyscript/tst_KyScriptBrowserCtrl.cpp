#include <support/BrowserPeer.h>
#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <kyscript/KyScriptBrowserCtrl.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptInterface.h>

#include <kybase/KyGUISizeManager.h>
#include <kywebview/KyWebView.h>
#include <kywebview/KyWebViewBrowser.h>
#include <kywebview/KyWebViewRuntime.h>
#include <kywebview/KyWebViewWidget.h>
#include <ovbase/OvTranslationProperty.h>

#include <QApplication>
#include <QDir>
#include <QPointer>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

#include <sstream>

using Type = KyScriptBrowserCtrl::BrowserCtrlType;

Q_DECLARE_METATYPE(std::shared_ptr<const OvEnumValue>)

class tst_KyScriptBrowserCtrl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    // the enumeration and the property
    void valuesOfTheEnumeration_data();
    void valuesOfTheEnumeration();
    void valuesAreRegisteredInTheirOrder();
    void labelsAreTranslatedInTheirContext();
    void enumerationIsReadAndWrittenAsText_data();
    void enumerationIsReadAndWrittenAsText();
    void propertyIsTheWebViewFromTheStart();
    void propertiesAreComparedByTheirText();
    void propertyIsKept();

    // the choice
    void choiceFollowsPropertyAndRuntime_data();
    void choiceFollowsPropertyAndRuntime();
    void registryIsReadInItsOrder_data();
    void registryIsReadInItsOrder();
    void runtimeOfTheHostCounts();
    void registryCountsBeforeTheHost();
    void laterChangeOfThePropertyIsForNewObjects();
    void withoutAPoolTheWebViewIsWanted();

    // scripts
    void scriptsConstructIt();
    void membersAreVisible();
    void newEngineHasNoEffects();
    void withoutAControlNothingIsThere();
    void callsReachTheProgram();
    void callsReachTheWindow();
    void webViewHasNeitherArgumentsNorDirectory();
    void argumentsAreAListOfTexts_data();
    void argumentsAreAListOfTexts();
    void argumentsOfTheWrongKindAreRefused_data();
    void argumentsOfTheWrongKindAreRefused();
    void programIsCalledBeforeTheWindow();

    // ends
    void firstCommandRegistersWithTheEngine();
    void withoutAnEngineTheContractIsReported();
    void objectOfAModuleNeedsNoEngine();
    void objectRegistersOnceAnEngineKnowsIt();
    void collectionEndsTheBrowser();
    void objectThatNeverSentACommandIsLeftToTheCollector();
    void endOfTheEngineEndsTheBrowser();
    void scriptMayDestroyTheObjectWhileTheBoxIsShown();
    void destroyedObjectIsHarmless();

private:
    QString text(const QString& inSource);
    void setRegistry(const QString& inPlace, const QString& inVersion);
    void setProperty(const char* inText);

    QTemporaryDir mFolder;
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<BrowserPeer> mPeer;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

constexpr const char* NoRuntimeLine =
    "2|BrowseCtrl|WebView2 runtime was not detected on system: using OvBrowser instead if available";
constexpr const char* Guid = "{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}";

QString runtimeLine(const QString& inVersion)
{
    return "1|BrowseCtrl|WebView2 runtime version " + inVersion + " detected: using WebView2 browser";
}

const QStringList& registryPlaces()
{
    static const QStringList places{
        QString("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\EdgeUpdate\\Clients\\") + Guid,
        QString("HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Microsoft\\EdgeUpdate\\Clients\\") + Guid,
        QString("HKEY_CURRENT_USER\\Software\\Microsoft\\EdgeUpdate\\Clients\\") + Guid};
    return places;
}

QList<KyWebViewBrowser*> windows()
{
    QList<KyWebViewBrowser*> found;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* browser = qobject_cast<KyWebViewBrowser*>(window))
            found.append(browser);
    }
    return found;
}

/// An engine behind web views that has none to give: the windows show that.
class Runtime final : public KyWebViewRuntime
{
public:
    QString version() const override { return "102.0"; }
    KyWebView* makeView(const QString&, QWidget*) override { return nullptr; }
};

class Labels final : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* inContext, const char* inText, const char*, int) const override
    {
        return QByteArray(inContext) == "Enumeration.BrowserCtrlType" ? '<' + QString(inText) + '>'
                                                                      : QString();
    }
};

} // namespace

void tst_KyScriptBrowserCtrl::initTestCase()
{
    QVERIFY(QDir::setCurrent(mFolder.path()));
}

void tst_KyScriptBrowserCtrl::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mPeer = std::make_unique<BrowserPeer>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptBrowserCtrl);
    mEngine->globalObject().setProperty("folder", mPeer->folder());
    mEngine->globalObject().setProperty("args", mEngine->toScriptValue(mPeer->arguments()));
}

void tst_KyScriptBrowserCtrl::cleanup()
{
    mEngine.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(windows().size(), 0);
    QCOMPARE(mPeer->sockets(), QStringList());
    mPeer.reset();
    mContracts.reset();
    mPlatform.reset();
    for (const QString& place : registryPlaces())
        QFile::remove(place);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList());
}

QString tst_KyScriptBrowserCtrl::text(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource, "test.js");
    return value.isError() ? "ERROR " + value.toString() : value.toString();
}

/// Where there is no registry, a file of that name stands in for it.
void tst_KyScriptBrowserCtrl::setRegistry(const QString& inPlace, const QString& inVersion)
{
    QSettings settings(inPlace, QSettings::NativeFormat);
    settings.setValue("pv", inVersion);
}

void tst_KyScriptBrowserCtrl::setProperty(const char* inText)
{
    QVERIFY(mPlatform->pool.variant(KyScriptBrowserCtrl::PropertyId)->setValueFromQString(inText));
}

void tst_KyScriptBrowserCtrl::valuesOfTheEnumeration_data()
{
    QTest::addColumn<std::shared_ptr<const OvEnumValue>>("made");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("label");
    QTest::newRow("OvBrowser") << std::shared_ptr<const OvEnumValue>(new Type::OvBrowser) << 32 << "OvBrowser"
                               << "Legacy";
    QTest::newRow("WebView") << std::shared_ptr<const OvEnumValue>(new Type::WebView) << 33 << "WebView"
                             << "Web View";
}

void tst_KyScriptBrowserCtrl::valuesOfTheEnumeration()
{
    QFETCH(std::shared_ptr<const OvEnumValue>, made);
    for (const OvEnumValue* value : {made.get(), static_cast<const OvEnumValue*>(made->clone().release())}) {
        QTEST(value->value(), "value");
        QTEST(QString(value->key()), "key");
        QTEST(value->label(), "label");
        QVERIFY(dynamic_cast<const Type::TypedEnumValue*>(value));
        if (value != made.get())
            delete value;
    }
    Type type(dynamic_cast<const Type::TypedEnumValue&>(*made));
    QTEST(type.value(), "value");
}

void tst_KyScriptBrowserCtrl::valuesAreRegisteredInTheirOrder()
{
    const OvEnum::Values& values = OvEnum::values(Type().name());
    QCOMPARE(int(values.size()), 2);
    QCOMPARE(values[0]->value(), 32);
    QCOMPARE(values[1]->value(), 33);
    QVERIFY(dynamic_cast<const Type::OvBrowser*>(values[0].get()));
    QVERIFY(dynamic_cast<const Type::WebView*>(values[1].get()));
}

void tst_KyScriptBrowserCtrl::labelsAreTranslatedInTheirContext()
{
    Labels labels;
    QCoreApplication::installTranslator(&labels);
    QCOMPARE(Type::OvBrowser().label(), QString("<Legacy>"));
    QCOMPARE(Type::WebView().label(), QString("<Web View>"));
    QCoreApplication::removeTranslator(&labels);
    QCOMPARE(Type::WebView().label(), QString("Web View"));
}

void tst_KyScriptBrowserCtrl::enumerationIsReadAndWrittenAsText_data()
{
    QTest::addColumn<QString>("read");
    QTest::addColumn<QString>("written");
    QTest::newRow("OvBrowser") << "OvBrowser"
                               << "OvBrowser";
    QTest::newRow("WebView") << "WebView"
                             << "WebView";
    QTest::newRow("number") << "32"
                            << "OvBrowser";
    QTest::newRow("another number") << "31"
                                    << "";
    QTest::newRow("another word") << "Browser"
                                  << "";
    QTest::newRow("nothing") << ""
                             << "";
}

void tst_KyScriptBrowserCtrl::enumerationIsReadAndWrittenAsText()
{
    QFETCH(QString, read);
    QFETCH(QString, written);
    OvProperty<Type> property("x", Type(Type::WebView()));
    QCOMPARE(property.fromString(read.toUtf8().constData()), !written.isEmpty());
    QCOMPARE(QString::fromStdString(property.toString()), written.isEmpty() ? QString("WebView") : written);
}

void tst_KyScriptBrowserCtrl::propertyIsTheWebViewFromTheStart()
{
    const OvVariant* property = mPlatform->pool.variant("AdvancedSettings.BrowserCtrlType");
    QVERIFY(property);
    QVERIFY(property->isType<Type>());
    QCOMPARE(property->toQString(), QString("WebView"));
    QCOMPARE(property->enumeration()->value(), 33);
    QCOMPARE(OvTranslationProperty::label("AdvancedSettings.BrowserCtrlType"), QString("Orvane Browser"));
}

void tst_KyScriptBrowserCtrl::propertiesAreComparedByTheirText()
{
    OvProperty<Type> first("a", Type(Type::WebView()));
    OvProperty<Type> second("b", Type(Type::OvBrowser()));
    QVERIFY(!first.isEqual(second));
    QVERIFY(second.fromString("WebView"));
    QVERIFY(first.isEqual(second));
    QVERIFY(!first.isEqual(OvProperty<QString>("c", "WebView")));
}

void tst_KyScriptBrowserCtrl::propertyIsKept()
{
    setProperty("OvBrowser");
    OvRegistry::Value value;
    QVERIFY(
        mPlatform->registry.getProperty("AdvancedSettings.BrowserCtrlType", value, OvRegistry::UserPriority));
    QCOMPARE(value.value, QString("OvBrowser"));
}

void tst_KyScriptBrowserCtrl::choiceFollowsPropertyAndRuntime_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<bool>("hasRuntime");
    QTest::addColumn<bool>("isWindow");
    QTest::newRow("default, no runtime") << "" << false << false;
    QTest::newRow("default, runtime") << "" << true << true;
    QTest::newRow("web view, no runtime") << "WebView" << false << false;
    QTest::newRow("web view, runtime") << "WebView" << true << true;
    QTest::newRow("program, no runtime") << "OvBrowser" << false << false;
    QTest::newRow("program, runtime") << "OvBrowser" << true << false;
}

void tst_KyScriptBrowserCtrl::choiceFollowsPropertyAndRuntime()
{
    QFETCH(QString, property);
    QFETCH(bool, hasRuntime);
    QFETCH(bool, isWindow);
    if (!property.isEmpty())
        setProperty(property.toLatin1());
    if (hasRuntime)
        setRegistry(registryPlaces().first(), "102.0.1245.44");
    LogCapture log;
    text("var browser = new BrowserCtrl('x'); browser.setInstallationDirectory(folder);"
         "browser.setBrowserCmdArgs(args);");
    QCOMPARE(log.take().first(), hasRuntime ? runtimeLine("102.0.1245.44") : QString(NoRuntimeLine));
    text("browser.sendCommand('HIDE')");
    QCOMPARE(text("browser.isRunning()"), QString("true"));
    QCOMPARE(windows().size(), isWindow ? 1 : 0);
    QCOMPARE(mPeer->starts().size(), isWindow ? 0 : 1);
}

void tst_KyScriptBrowserCtrl::registryIsReadInItsOrder_data()
{
    QTest::addColumn<QStringList>("versions"); // of the machine, its 32 bit part, the user
    QTest::addColumn<QString>("found");
    QTest::newRow("none") << QStringList{"-", "-", "-"} << "";
    QTest::newRow("machine") << QStringList{"1.0", "-", "-"} << "1.0";
    QTest::newRow("32 bit") << QStringList{"-", "2.0", "-"} << "2.0";
    QTest::newRow("user alone") << QStringList{"-", "-", "3.0"} << "3.0";
    QTest::newRow("all") << QStringList{"1.0", "2.0", "3.0"} << "1.0";
    QTest::newRow("empty ones are passed over") << QStringList{"", "", "3.0"} << "3.0";
    QTest::newRow("all empty") << QStringList{"", "", ""} << "";
    QTest::newRow("any text counts") << QStringList{"%s no version", "-", "-"} << "%s no version";
    QTest::newRow("zeros count") << QStringList{"0.0.0.0", "-", "-"} << "0.0.0.0";
}

void tst_KyScriptBrowserCtrl::registryIsReadInItsOrder()
{
    QFETCH(QStringList, versions);
    QFETCH(QString, found);
    for (int i = 0; i < 3; ++i) {
        if (versions.at(i) != "-")
            setRegistry(registryPlaces().at(i), versions.at(i));
    }
    LogCapture log;
    const KyScriptBrowserCtrl browser;
    QCOMPARE(log.take(), QStringList(found.isEmpty() ? QString(NoRuntimeLine) : runtimeLine(found)));
}

void tst_KyScriptBrowserCtrl::runtimeOfTheHostCounts()
{
    const Runtime runtime;
    LogCapture log;
    text("var browser = new BrowserCtrl('x'); browser.sendCommand('SHOW')");
    QCOMPARE(log.take(), QStringList(runtimeLine("102.0")));
    QCOMPARE(windows().size(), 1);
    QCOMPARE(text("browser.isInstalled()"), QString("true"));
}

void tst_KyScriptBrowserCtrl::registryCountsBeforeTheHost()
{
    const Runtime runtime;
    setRegistry(registryPlaces().last(), "103");
    LogCapture log;
    const KyScriptBrowserCtrl browser;
    QCOMPARE(log.take(), QStringList(runtimeLine("103")));
}

void tst_KyScriptBrowserCtrl::laterChangeOfThePropertyIsForNewObjects()
{
    const Runtime runtime;
    text("var first = new BrowserCtrl('1')");
    setProperty("OvBrowser");
    text("var second = new BrowserCtrl('2'); second.setInstallationDirectory(folder); "
         "second.setBrowserCmdArgs(args);"
         "first.sendCommand('SHOW'); second.sendCommand('SHOW')");
    QCOMPARE(windows().size(), 1);
    QCOMPARE(mPeer->starts().size(), 1);
}

void tst_KyScriptBrowserCtrl::withoutAPoolTheWebViewIsWanted()
{
    mEngine.reset();
    mPlatform.reset();
    const Runtime runtime;
    KyScriptBrowserCtrl browser("x");
    browser.setCreatedByEngine(false);
    browser.sendCommand("SHOW");
    QCOMPARE(windows().size(), 1);
}

void tst_KyScriptBrowserCtrl::scriptsConstructIt()
{
    QCOMPARE(text("typeof BrowserCtrl + typeof new BrowserCtrl() + typeof new BrowserCtrl('x')"
                  "+ typeof new BrowserCtrl(null) + typeof new BrowserCtrl(undefined) + typeof new "
                  "BrowserCtrl({})"),
             QString("function") + QString("object").repeated(5));
}

void tst_KyScriptBrowserCtrl::membersAreVisible()
{
    text("var browser = new BrowserCtrl()");
    for (const char* name : {"setBrowserCmdArgs", "setSize", "setInstallationDirectory", "sendCommand",
                             "isHidden", "isRunning", "isInstalled"})
        QCOMPARE(name + text(QString("typeof browser.%1").arg(name)), name + QString("function"));
    for (const char* name : {"setCreatedByEngine", "startBrowser", "getWebView2RuntimeVersionFromRegistry"})
        QCOMPARE(name + text(QString("typeof browser.%1").arg(name)), name + QString("undefined"));
    for (const char* call : {"browser.setSize(1, 2)", "browser.setInstallationDirectory('/nowhere')",
                             "browser.setBrowserCmdArgs([])", "browser.sendCommand('HIDE')"})
        QCOMPARE(call + text(call), call + QString("undefined"));
}

/// The check of a new engine makes an object, of which nothing is to be seen.
void tst_KyScriptBrowserCtrl::newEngineHasNoEffects()
{
    LogCapture log;
    const KyScriptEngine engine(nullptr, -1);
    QCOMPARE(log.take(), QStringList());
    OvRegistry::Value value;
    QVERIFY(!mPlatform->registry.getProperty("GUI.Geometry.OrvaneBrowser.Default.Geometry", value));
    // The next object is a whole one.
    text("new BrowserCtrl()");
    QCOMPARE(log.take(), QStringList(NoRuntimeLine));
    QVERIFY(mPlatform->registry.getProperty("GUI.Geometry.OrvaneBrowser.Default.Geometry", value));
}

void tst_KyScriptBrowserCtrl::withoutAControlNothingIsThere()
{
    LogCapture log;
    std::unique_ptr<KyScriptBrowserCtrl> browser;
    {
        const KyScriptBrowserCtrl::Uncontrolled uncontrolled;
        browser = std::make_unique<KyScriptBrowserCtrl>("x");
    }
    browser->setCreatedByEngine(false);
    browser->setBrowserCmdArgs(QStringList("x"));
    browser->setSize(1, 2);
    browser->setInstallationDirectory("x");
    browser->sendCommand("SHOW");
    QVERIFY(browser->isHidden());
    QVERIFY(!browser->isRunning());
    QVERIFY(!browser->isInstalled());
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptBrowserCtrl::callsReachTheProgram()
{
    KyGUISizeManager::storeWidgetGeometry(QRect(5, 6, 7, 8), "OrvaneBrowser.x.Geometry");
    mEngine->globalObject().setProperty("args",
                                        mEngine->toScriptValue(mPeer->arguments({"--answer=ISHIDDEN 0"})));
    QCOMPARE(text("var b = new BrowserCtrl('x'); b.setInstallationDirectory('/nowhere');"
                  "'' + b.isInstalled() + b.isRunning() + b.isHidden()"),
             QString("falsefalsetrue"));
    QCOMPARE(text("b.setInstallationDirectory(folder); b.setBrowserCmdArgs(args); b.setSize(100, 200);"
                  "b.sendCommand('SHOW'); '' + b.isInstalled() + b.isRunning() + b.isHidden()"),
             QString("truetruefalse"));
    QTRY_COMPARE(mPeer->received(), QByteArray("GEOMETRY 6 5 205 104;SHOW;ISHIDDEN;"));
}

void tst_KyScriptBrowserCtrl::callsReachTheWindow()
{
    const Runtime runtime;
    QCOMPARE(text("var b = new BrowserCtrl('x'); '' + b.isInstalled() + b.isRunning() + b.isHidden()"),
             QString("truefalsetrue"));
    QCOMPARE(text("b.sendCommand('SHOW'); b.setSize(300, 200); '' + b.isRunning() + b.isHidden()"),
             QString("truefalse"));
    QCOMPARE(windows().at(0)->size(), QSize(300, 200));
    QCOMPARE(windows().at(0)->windowTitle(), QString("x"));
}

void tst_KyScriptBrowserCtrl::webViewHasNeitherArgumentsNorDirectory()
{
    const Runtime runtime;
    text("var b = new BrowserCtrl('x')");
    LogCapture log;
    text("b.setBrowserCmdArgs(['--flag'])");
    QCOMPARE(
        log.take(),
        QStringList(
            "2|BrowseCtrl|setBrowserCmdArgs() is not supported by KyWebViewBrowser. On Windows, configure "
            "property'Advanced Settings / WebView2 browser arguments' instead, using the format '--<flag1> "
            "--<flag2>'. On macOS / WebKit, no browser arguments can be configured."));
    text("b.setInstallationDirectory('/opt')");
    QCOMPARE(log.take(),
             QStringList("2|BrowseCtrl|setInstallationDirectory() is not supported by KyWebViewBrowser."));
    QCOMPARE(text("b.isRunning()"), QString("false"));
}

void tst_KyScriptBrowserCtrl::argumentsAreAListOfTexts_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QStringList>("passed");
    QTest::newRow("list") << "['--a', '--b=c d']" << QStringList{"--a", "--b=c d"};
    QTest::newRow("empty") << "[]" << QStringList();
    QTest::newRow("text") << "'--a --b'" << QStringList("--a --b");
    QTest::newRow("numbers, nothing") << "[1, null, true]" << QStringList{"1", "", "true"};
    QTest::newRow("object") << "{}" << QStringList();
}

void tst_KyScriptBrowserCtrl::argumentsAreAListOfTexts()
{
    QFETCH(QString, given);
    QFETCH(QStringList, passed);
    // The peer tells of nothing then, and ends for want of a file: the log has what it was given.
    QVERIFY(QFile::remove(mPeer->program()));
    QFile file(mPeer->program());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    text("var b = new BrowserCtrl('x'); b.setInstallationDirectory(folder)");
    QCOMPARE(text("b.setBrowserCmdArgs(" + given + ")"), QString("undefined"));
    LogCapture log(3);
    text("b.sendCommand('HIDE')");
    const QString line = log.take().first();
    const QString start = "3|BrowseCtrl|Failed to start process " + mPeer->program() + ' ' +
                          (passed + QStringList("--named-pipe=")).join(' ');
    QVERIFY2(line.startsWith(start), qPrintable(line));
}

void tst_KyScriptBrowserCtrl::argumentsOfTheWrongKindAreRefused_data()
{
    QTest::addColumn<QString>("call");
    for (const char* call :
         {"b.setBrowserCmdArgs(5)", "b.setBrowserCmdArgs(null)", "b.setBrowserCmdArgs(undefined)",
          "b.setBrowserCmdArgs(Symbol())", "b.setBrowserCmdArgs(b)", "b.setBrowserCmdArgs()", "b.setSize()",
          "b.setSize(1)", "b.setInstallationDirectory()", "b.sendCommand()"})
        QTest::newRow(call) << call;
}

void tst_KyScriptBrowserCtrl::argumentsOfTheWrongKindAreRefused()
{
    QFETCH(QString, call);
    text("var b = new BrowserCtrl('x')");
    const QString result = text(call);
    QVERIFY2(result.contains("Error"), qPrintable(result));
    QCOMPARE(text("b.setBrowserCmdArgs([Symbol()]); b.isRunning()").contains("ERROR"), false);
}

/// Of an object with a program the window is never asked.
void tst_KyScriptBrowserCtrl::programIsCalledBeforeTheWindow()
{
    setRegistry(registryPlaces().first(), "1");
    setProperty("OvBrowser");
    LogCapture log(2);
    text("var b = new BrowserCtrl('x'); b.setInstallationDirectory('/nowhere'); b.setBrowserCmdArgs(['x'])");
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(text("b.isInstalled()"), QString("false"));
}

void tst_KyScriptBrowserCtrl::firstCommandRegistersWithTheEngine()
{
    class Engine final : public KyScriptEngine
    {
    public:
        using KyScriptEngine::cleanup;
        using KyScriptEngine::KyScriptEngine;
    };
    const Runtime runtime;
    Engine engine(nullptr, ScriptBrowserCtrl);
    const auto run = [&](const char* inSource) { return engine.QJSEngine::evaluate(inSource); };
    const QJSValue sender = run("var sender = new BrowserCtrl('x'); var silent = new BrowserCtrl('y');"
                                "sender.sendCommand('SHOW'); sender.sendCommand('SHOW'); sender");
    const QPointer<QObject> object = sender.toQObject();
    const QPointer<QObject> silent = run("silent").toQObject();
    QVERIFY(object && silent);
    engine.cleanup();
    QVERIFY(!object);
    QVERIFY(silent);
    QCOMPARE(windows().size(), 0);
}

void tst_KyScriptBrowserCtrl::withoutAnEngineTheContractIsReported()
{
    const Runtime runtime;
    KyScriptBrowserCtrl browser("x");
    mContracts->expect("ifThen(mCreatedByEngine, engine != nullptr)");
    mContracts->expect("ifThen(mCreatedByEngine, engine != nullptr)");
    browser.sendCommand("SHOW");
    browser.sendCommand("HIDE");
    QCOMPARE(mContracts->verify(), QString());
    QCOMPARE(windows().size(), 1);
}

void tst_KyScriptBrowserCtrl::objectOfAModuleNeedsNoEngine()
{
    const Runtime runtime;
    KyScriptBrowserCtrl browser("x");
    browser.setCreatedByEngine(false);
    browser.sendCommand("SHOW");
    QCOMPARE(mContracts->verify(), QString());
    QCOMPARE(windows().size(), 1);
}

void tst_KyScriptBrowserCtrl::objectRegistersOnceAnEngineKnowsIt()
{
    const Runtime runtime;
    const QPointer<KyScriptBrowserCtrl> browser = new KyScriptBrowserCtrl("x");
    browser->setCreatedByEngine(false);
    browser->sendCommand("SHOW");
    QJSEngine::setObjectOwnership(browser, QJSEngine::CppOwnership);
    mEngine->newQObject(browser);
    browser->sendCommand("SHOW");
    mEngine.reset();
    QVERIFY(!browser);
}

void tst_KyScriptBrowserCtrl::collectionEndsTheBrowser()
{
    text("(function() { var b = new BrowserCtrl('x'); b.setInstallationDirectory(folder); "
         "b.setBrowserCmdArgs(args);"
         "b.sendCommand('SHOW'); })()");
    QCOMPARE(mPeer->ids().size(), 1);
    QVERIFY(BrowserPeer::isAlive(mPeer->ids().at(0)));
    mEngine->collectGarbage();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!BrowserPeer::isAlive(mPeer->ids().at(0)));
    QCOMPARE(mPeer->sockets(), QStringList());
}

void tst_KyScriptBrowserCtrl::objectThatNeverSentACommandIsLeftToTheCollector()
{
    const QPointer<QObject> object = mEngine->QJSEngine::evaluate("new BrowserCtrl('x')").toQObject();
    QVERIFY(object);
    mEngine->collectGarbage();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!object);
}

void tst_KyScriptBrowserCtrl::endOfTheEngineEndsTheBrowser()
{
    text("var b = new BrowserCtrl('x'); b.setInstallationDirectory(folder); b.setBrowserCmdArgs(args);"
         "b.sendCommand('SHOW')");
    QCOMPARE(mPeer->ids().size(), 1);
    mEngine.reset();
    QVERIFY(!BrowserPeer::isAlive(mPeer->ids().at(0)));
}

void tst_KyScriptBrowserCtrl::scriptMayDestroyTheObjectWhileTheBoxIsShown()
{
    text("var b = new BrowserCtrl('x'); b.setInstallationDirectory('/nowhere')");
    const ModalAnswer answer([this](QWidget* box) {
        text("b.destroy()");
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        delete mEngine->globalObject().property("b").toQObject();
        box->close();
    });
    text("b.sendCommand('SHOW')");
    QVERIFY(answer.happened());
}

void tst_KyScriptBrowserCtrl::destroyedObjectIsHarmless()
{
    text("var b = new BrowserCtrl('x'); b.destroy()");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(text("b.sendCommand('SHOW')").contains("TypeError"));
}

KY_TEST_MAIN(tst_KyScriptBrowserCtrl)
#include "tst_KyScriptBrowserCtrl.moc"

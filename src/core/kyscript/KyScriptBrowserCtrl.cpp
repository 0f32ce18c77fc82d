#include "KyScriptBrowserCtrl.h"

#include "KyScriptEngine.h"
#include "KyScriptOvBrowserCtrl.h"
#include "KyScriptTexts.h"
#include "KyScriptWebViewCtrl.h"

#include <kywebview/KyWebViewWidget.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>
#include <rnlib/RnContract.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QSettings>

namespace {

constexpr const char* Context = "BrowseCtrl";
constexpr const char* EnumName = "BrowserCtrlType";
constexpr const char* LabelContext = "Enumeration.BrowserCtrlType";
constexpr const char* OvBrowserLabel = QT_TRANSLATE_NOOP("Enumeration.BrowserCtrlType", "Legacy");
constexpr const char* WebViewLabel = QT_TRANSLATE_NOOP("Enumeration.BrowserCtrlType", "Web View");

constexpr const char* NoRuntime =
    "WebView2 runtime was not detected on system: using OvBrowser instead if available";
constexpr const char* NoArguments =
    "setBrowserCmdArgs() is not supported by KyWebViewBrowser. On Windows, configure property'Advanced "
    "Settings / WebView2 browser arguments' instead, using the format '--<flag1> --<flag2>'. On macOS / "
    "WebKit, no browser arguments can be configured.";
constexpr const char* NoDirectory = "setInstallationDirectory() is not supported by KyWebViewBrowser.";

/// Where the updater of WebView2 keeps its version.
constexpr const char* RuntimeKeys[] = {
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\EdgeUpdate\\Clients\\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}",
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Microsoft\\EdgeUpdate\\Clients\\"
    "{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}",
    "HKEY_CURRENT_USER\\Software\\Microsoft\\EdgeUpdate\\Clients\\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}"};

constexpr bool ifThen(bool inCondition, bool inConsequence)
{
    return !inCondition || inConsequence;
}

} // namespace

using BrowserCtrlType = KyScriptBrowserCtrl::BrowserCtrlType;

bool KyScriptBrowserCtrl::sIsUncontrolled = false;

void KyScriptBrowserCtrl::registerProperties()
{
    OvEnum::prepareRegistration(EnumName);
    OvEnum::registerValue(EnumName, std::make_unique<BrowserCtrlType::OvBrowser>());
    OvEnum::registerValue(EnumName, std::make_unique<BrowserCtrlType::WebView>());
    OvEnum::registerEnum(EnumName);
    OvPropertyPool::addRegisterProperties([](OvPropertyPool& ioPool) {
        const char* label = QT_TRANSLATE_NOOP("OvTranslationProperty", "Orvane Browser");
        ioPool.property<BrowserCtrlType>(OvTranslationProperty::translate(PropertyId, label, nullptr),
                                         BrowserCtrlType(BrowserCtrlType::WebView()),
                                         ioPool.defaultSerializer());
    });
}

KyScriptBrowserCtrl::KyScriptBrowserCtrl(QString inName)
{
    if (sIsUncontrolled)
        return;
    if (isProgramWanted())
        mOvBrowser = std::make_unique<KyScriptOvBrowserCtrl>(inName);
    else
        mWebView = std::make_unique<KyScriptWebViewCtrl>(inName);
}

KyScriptBrowserCtrl::~KyScriptBrowserCtrl() = default;

bool KyScriptBrowserCtrl::isProgramWanted()
{
    BrowserCtrlType type{BrowserCtrlType::WebView()};
    if (const OvPropertyPool* pool = OvPropertyPool::instance())
        type = pool->value<BrowserCtrlType>(PropertyId, type);

    const QString version = runtimeVersion();
    if (version.isEmpty()) {
        getTheLogInstance().trace(2, Context, NoRuntime);
        type = BrowserCtrlType(BrowserCtrlType::OvBrowser());
    } else {
        getTheLogInstance().tracef(1, Context, "WebView2 runtime version %s detected: using WebView2 browser",
                                   version.toLatin1().constData());
    }
    return type.value() == BrowserCtrlType::OvBrowser().value();
}

/// A host with another engine than WebView2 has told it to the library of web views.
QString KyScriptBrowserCtrl::runtimeVersion()
{
    const QString registered = getWebView2RuntimeVersionFromRegistry();
    return registered.isEmpty() ? KyWebViewWidget::runtimeVersion() : registered;
}

QString KyScriptBrowserCtrl::getWebView2RuntimeVersionFromRegistry()
{
    QString version;
    for (const char* key : RuntimeKeys) {
        const QSettings settings(QLatin1String(key), QSettings::NativeFormat);
        version = settings.value(QStringLiteral("pv")).toString();
        if (!version.isEmpty())
            break;
    }
    return version;
}

void KyScriptBrowserCtrl::setCreatedByEngine(bool inCreatedByEngine)
{
    mCreatedByEngine = inCreatedByEngine;
}

void KyScriptBrowserCtrl::setBrowserCmdArgs(QJSValue inBrowserArgs)
{
    const auto arguments = KyScriptTexts::argument(this, inBrowserArgs, QStringLiteral("inBrowserArgs"));
    if (arguments)
        setBrowserCmdArgs(*arguments);
}

void KyScriptBrowserCtrl::setBrowserCmdArgs(const QStringList& inBrowserArgs)
{
    if (mOvBrowser)
        mOvBrowser->setBrowserCmdArgs(inBrowserArgs);
    else if (mWebView)
        getTheLogInstance().trace(2, Context, NoArguments);
}

void KyScriptBrowserCtrl::setSize(int inWidth, int inHeight)
{
    if (mOvBrowser)
        mOvBrowser->setSize(inWidth, inHeight);
    else if (mWebView)
        mWebView->setSize(inWidth, inHeight);
}

void KyScriptBrowserCtrl::setInstallationDirectory(QString inPath)
{
    if (mOvBrowser)
        mOvBrowser->setInstallationDirectory(inPath);
    else if (mWebView)
        getTheLogInstance().trace(2, Context, NoDirectory);
}

/// Nothing follows the call of the control: what it shows may end this object.
void KyScriptBrowserCtrl::sendCommand(QString inCMD)
{
    registerOnce();
    if (mOvBrowser)
        mOvBrowser->sendCommand(inCMD);
    else if (mWebView)
        mWebView->sendCommand(inCMD);
}

void KyScriptBrowserCtrl::registerOnce()
{
    if (mIsRegisteredForDestruction)
        return;
    KyScriptEngine* engine = KyScriptEngine::of(this);
    dbc_holds(ifThen(mCreatedByEngine, engine != nullptr));
    if (!engine)
        return;
    engine->registerForDestruction(this);
    mIsRegisteredForDestruction = true;
}

bool KyScriptBrowserCtrl::isHidden()
{
    if (mOvBrowser)
        return mOvBrowser->isHidden();
    return !mWebView || mWebView->isHidden();
}

bool KyScriptBrowserCtrl::isRunning()
{
    if (mOvBrowser)
        return mOvBrowser->isRunning();
    return mWebView && mWebView->isRunning();
}

bool KyScriptBrowserCtrl::isInstalled()
{
    if (mOvBrowser)
        return mOvBrowser->isInstalled();
    return mWebView && mWebView->isInstalled();
}

BrowserCtrlType::BrowserCtrlType()
    : OvEnum(EnumName)
{}

BrowserCtrlType::BrowserCtrlType(const TypedEnumValue& inValue)
    : OvEnum(EnumName, inValue)
{}

BrowserCtrlType::OvBrowser::~OvBrowser() = default;

int BrowserCtrlType::OvBrowser::value() const
{
    return 32;
}

const char* BrowserCtrlType::OvBrowser::key() const
{
    return "OvBrowser";
}

QString BrowserCtrlType::OvBrowser::label() const
{
    return QCoreApplication::translate(LabelContext, OvBrowserLabel);
}

std::unique_ptr<OvEnumValue> BrowserCtrlType::OvBrowser::clone() const
{
    return std::make_unique<OvBrowser>(*this);
}

BrowserCtrlType::WebView::~WebView() = default;

int BrowserCtrlType::WebView::value() const
{
    return 33;
}

const char* BrowserCtrlType::WebView::key() const
{
    return "WebView";
}

QString BrowserCtrlType::WebView::label() const
{
    return QCoreApplication::translate(LabelContext, WebViewLabel);
}

std::unique_ptr<OvEnumValue> BrowserCtrlType::WebView::clone() const
{
    return std::make_unique<WebView>(*this);
}

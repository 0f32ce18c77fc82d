#pragma once

#include "KyScriptExport.h"

#include <ovbase/OvEnum.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtQml/QJSValue>

#include <memory>

class KyScriptOvBrowserCtrl;
class KyScriptWebViewCtrl;

/// A named browser for scripts: `new BrowserCtrl("help")`.
///
/// It is one of two, chosen at construction: a program of its own (KyScriptOvBrowserCtrl), or a window of the
/// application (KyScriptWebViewCtrl). The property "AdvancedSettings.BrowserCtrlType" tells which is wanted;
/// without the runtime of the web view it is the program. Both follow the commands of
/// docs/browser-protocol.md.
///
/// Owner: the script. With the first command the object also registers with its engine for destruction, since
/// it may hold a window or a process. Failures are lines of the log with the context "BrowseCtrl". GUI thread
/// only.
class KYSCRIPT_EXPORT KyScriptBrowserCtrl : public QObject
{
    Q_OBJECT

public:
    class BrowserCtrlType;

    static constexpr const char* PropertyId = "AdvancedSettings.BrowserCtrlType";

    /// Registers the enumeration and the property. Called when the library is loaded.
    static void registerProperties();

    Q_INVOKABLE explicit KyScriptBrowserCtrl(QString inName = QString());
    ~KyScriptBrowserCtrl() override;

    /// Whether an engine has made this object, as at first. A module that makes one without an engine says
    /// so.
    void setCreatedByEngine(bool inCreatedByEngine);

    /// The arguments of the browser's next start, a list of texts. The web view has none: a line of the log.
    Q_INVOKABLE void setBrowserCmdArgs(QJSValue inBrowserArgs);
    void setBrowserCmdArgs(const QStringList& inBrowserArgs);
    /// In pixels. The web view takes it only once it has a window.
    Q_INVOKABLE void setSize(int inWidth, int inHeight);
    /// The folder of the browser's program. The web view has none: a line of the log.
    Q_INVOKABLE void setInstallationDirectory(QString inPath);
    /// Starts the browser if it isn't running, which may block for 6 seconds, and sends it a command.
    Q_INVOKABLE void sendCommand(QString inCMD);
    /// May block for a second. True when the browser isn't running.
    Q_INVOKABLE bool isHidden();
    Q_INVOKABLE bool isRunning();
    Q_INVOKABLE bool isInstalled();

    /// While one lives, objects are made without a control, at no cost and without effects: for the check of
    /// a new engine, which throws its object away. They answer that nothing is there.
    class Uncontrolled
    {
    public:
        Uncontrolled() { sIsUncontrolled = true; }
        ~Uncontrolled() { sIsUncontrolled = false; }
        Uncontrolled(const Uncontrolled&) = delete;
        Uncontrolled& operator=(const Uncontrolled&) = delete;
    };

private:
    static QString getWebView2RuntimeVersionFromRegistry();
    static QString runtimeVersion();
    static bool isProgramWanted();
    void registerOnce();

    static bool sIsUncontrolled;

    bool mIsRegisteredForDestruction = false;
    bool mCreatedByEngine = true;
    std::unique_ptr<KyScriptOvBrowserCtrl> mOvBrowser;
    std::unique_ptr<KyScriptWebViewCtrl> mWebView;
};

/// Which browser the user wants, for the property "AdvancedSettings.BrowserCtrlType".
class KYSCRIPT_EXPORT KyScriptBrowserCtrl::BrowserCtrlType : public OvEnum
{
public:
    /// Base of the values of this enumeration.
    class TypedEnumValue;
    /// A program of its own: 32, "OvBrowser".
    class OvBrowser;
    /// A window of the application: 33, "WebView".
    class WebView;

    BrowserCtrlType();
    explicit BrowserCtrlType(const TypedEnumValue& inValue);
};

class KYSCRIPT_EXPORT KyScriptBrowserCtrl::BrowserCtrlType::TypedEnumValue : public OvEnumValue
{};

class KYSCRIPT_EXPORT KyScriptBrowserCtrl::BrowserCtrlType::OvBrowser : public TypedEnumValue
{
public:
    ~OvBrowser() override;
    int value() const override;
    const char* key() const override;
    QString label() const override;
    std::unique_ptr<OvEnumValue> clone() const override;
};

class KYSCRIPT_EXPORT KyScriptBrowserCtrl::BrowserCtrlType::WebView : public TypedEnumValue
{
public:
    ~WebView() override;
    int value() const override;
    const char* key() const override;
    QString label() const override;
    std::unique_ptr<OvEnumValue> clone() const override;
};

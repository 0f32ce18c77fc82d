#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>

class KyWebViewBrowser;

/// A browser that is a window of the application. The window is made by the first command, and by the next
/// one after its end.
///
/// Owner: KyScriptBrowserCtrl. The destructor ends the window. An application without windows has no browser
/// either: commands are dropped. GUI thread only.
class KyScriptWebViewCtrl final : public QObject
{
    Q_OBJECT

public:
    /// The browser of the settings "OrvaneBrowser.NAME", "Default" standing for an empty name, with the name
    /// as the title of its window.
    explicit KyScriptWebViewCtrl(const QString& inName);
    ~KyScriptWebViewCtrl() override;

    /// In pixels; nothing without a window, and not remembered.
    void setSize(int inWidth, int inHeight);
    void sendCommand(const QString& inCMD);

    /// True without a window.
    bool isHidden() const;
    /// Whether there is a window.
    bool isRunning() const;
    /// Whether there is an engine that shows pages.
    bool isInstalled() const;

private:
    QPointer<KyWebViewBrowser> mBrowser;
    const QString mSettingsName;
    const QString mWindowTitle;
};

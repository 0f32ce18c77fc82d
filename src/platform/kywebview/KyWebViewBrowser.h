#pragma once

#include <jxbase/JxTopLevelWidget.h>

#include <QRect>
#include <QTimer>

#include <functional>

class KyWebViewWidget;

/// A browser window that is told what to do by commands; docs/browser-protocol.md lists them.
///
/// The window is the same inside a client and as a program of its own, which passes on what comes through a
/// pipe. It answers with messages. Without a receiver of its own it takes them itself: it keeps its place and
/// size in the client's stored geometries, and writes commands that it does not know to the log.
///
/// Closing the window hides it with its page; the next SHOW brings both back. Its title is the page's as long
/// as nobody has set one. It belongs to its parent, or without one to whoever made it. GUI thread only.
class KyWebViewBrowser : public JxTopLevelWidget
{
    Q_OBJECT

public:
    using Receiver = std::function<void(const QString& inMessage)>;

    /// The largest width and height.
    static constexpr int LargestSize = 8192;

    /// \a inName is that of its settings: under it cookies and data of pages are kept, and with ".Geometry"
    /// behind it the place of the window, which it takes up again.
    KyWebViewBrowser(QWidget* inParent, const QString& inName);
    ~KyWebViewBrowser() override;

    /// Follows one command, or several with ";" between them.
    void receiveCommand(const QString& inCommand);

    /// Who gets the messages from now on; an empty function stands for the window itself.
    void setReceiver(Receiver inReceiver);

    KyWebViewWidget& page() const { return *mPage; }

protected:
    void closeEvent(QCloseEvent* inEvent) override;
    void hideEvent(QHideEvent* inEvent) override;
    void moveEvent(QMoveEvent* inEvent) override;
    void resizeEvent(QResizeEvent* inEvent) override;

private:
    using Follow = bool (KyWebViewBrowser::*)(const QString& inArgument);
    struct Command
    {
        const char* word;
        Follow follow;
    };
    static const Command sCommands[];

    void follow(const QString& inCommand);
    bool comeUp(const QString& inArgument);
    bool goAway(const QString& inArgument);
    bool tellHidden(const QString& inArgument);
    bool place(const QString& inArgument);
    bool openUrl(const QString& inArgument);
    bool goBack(const QString& inArgument);
    bool goForward(const QString& inArgument);
    bool reload(const QString& inArgument);
    bool stop(const QString& inArgument);
    bool zoom(const QString& inArgument);
    bool setTitle(const QString& inArgument);

    void tell(const QString& inMessage);
    void keep(const QString& inMessage);
    void watchGeometry();
    void tellGeometry();
    void showTitle();

    const QString mName;
    KyWebViewWidget* const mPage;
    Receiver mReceiver;
    QTimer mSettle;
    QRect mKnown;       ///< The geometry that the receiver knows.
    QString mPageTitle; ///< The title that this window has given itself.
};

#pragma once

#include <QUrl>
#include <QWidget>

class KyWebView;
class QAction;
class QLineEdit;
class QToolBar;

/// A web page with what a user needs to move about in it: back, forward, reload, the address.
///
/// The page is that of the KyWebViewRuntime, or a KyWebViewPlaceholder without one. Belongs to its parent.
/// GUI thread only.
class KyWebViewWidget : public QWidget
{
    Q_OBJECT

public:
    /// \a inProfile is the name under which the page's cookies and data are kept.
    explicit KyWebViewWidget(const QString& inProfile, QWidget* inParent = nullptr);

    /// Whether there is an engine that shows pages.
    static bool isRuntimeInstalled();
    /// Its version; empty without one.
    static QString runtimeVersion();

    KyWebView& view() const { return *mView; }

    /// Goes to what a user or a script calls an address: a URL, the name of a host, or the path of a file.
    /// False, with nothing changed, when it is none.
    bool open(const QString& inAddress);

private:
    static KyWebView* makeView(const QString& inProfile, QWidget* inParent);
    QAction* addButton(const QString& inText, const char* inName, const QKeySequence& inKeys,
                       void (KyWebView::*inDo)());
    void showPage();
    void showLoading(bool inIsLoading);

    KyWebView* const mView;
    QToolBar* const mBar;
    QLineEdit* const mAddress;
    QAction* mBack = nullptr;
    QAction* mForward = nullptr;
    QAction* mReload = nullptr;
    QAction* mStop = nullptr;
};

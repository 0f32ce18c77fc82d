#pragma once

#include <QUrl>
#include <QWidget>

/// Port: one page with its history, as a widget. KyWebViewPlaceholder, or what a KyWebViewRuntime makes.
///
/// Belongs to its parent. GUI thread only.
class KyWebView : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// Goes to \a inUrl. What goes wrong is told on the page.
    virtual void load(const QUrl& inUrl) = 0;
    /// Where the page is; "about:blank" at first.
    virtual QUrl url() const = 0;
    /// What the page calls itself; empty while it has no name.
    virtual QString title() const = 0;

    virtual bool canGoBack() const = 0;
    virtual bool canGoForward() const = 0;
    virtual void back() = 0;
    virtual void forward() = 0;
    virtual void reload() = 0;
    virtual void stop() = 0;

    /// 1 is the natural size.
    virtual void setZoom(double inFactor) = 0;

Q_SIGNALS:
    /// Address, title or history have changed.
    void pageChanged();
    void loadingChanged(bool inIsLoading);
    /// The page wants to be closed.
    void closeWanted();
};

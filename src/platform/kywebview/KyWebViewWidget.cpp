#include "KyWebViewWidget.h"

#include "KyWebViewPlaceholder.h"
#include "KyWebViewRuntime.h"

#include <QAction>
#include <QLineEdit>
#include <QStyle>
#include <QToolBar>
#include <QVBoxLayout>

KyWebViewWidget::KyWebViewWidget(const QString& inProfile, QWidget* inParent)
    : QWidget(inParent)
    , mView(makeView(inProfile, this))
    , mBar(new QToolBar(this))
    , mAddress(new QLineEdit(this))
{
    mBack = addButton(tr("Back"), "back", QKeySequence::Back, &KyWebView::back);
    mForward = addButton(tr("Forward"), "forward", QKeySequence::Forward, &KyWebView::forward);
    mReload = addButton(tr("Reload"), "reload", QKeySequence::Refresh, &KyWebView::reload);
    mStop = addButton(tr("Stop"), "stop", QKeySequence(), &KyWebView::stop);
    mBack->setIcon(style()->standardIcon(QStyle::SP_ArrowBack));
    mForward->setIcon(style()->standardIcon(QStyle::SP_ArrowForward));
    mReload->setIcon(style()->standardIcon(QStyle::SP_BrowserReload));
    mStop->setIcon(style()->standardIcon(QStyle::SP_BrowserStop));
    mAddress->setObjectName(QStringLiteral("address"));
    mAddress->setAccessibleName(tr("Address"));
    mBar->addWidget(mAddress);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(mBar);
    column->addWidget(mView, 1);
    connect(mAddress, &QLineEdit::returnPressed, this, [this] {
        if (open(mAddress->text()))
            mView->setFocus();
    });
    connect(mView, &KyWebView::pageChanged, this, &KyWebViewWidget::showPage);
    connect(mView, &KyWebView::loadingChanged, this, &KyWebViewWidget::showLoading);
    showLoading(false);
    showPage();
}

KyWebView* KyWebViewWidget::makeView(const QString& inProfile, QWidget* inParent)
{
    KyWebViewRuntime* runtime = KyWebViewRuntime::instance();
    KyWebView* view = runtime ? runtime->makeView(inProfile, inParent) : nullptr;
    return view ? view : new KyWebViewPlaceholder(inParent);
}

QAction* KyWebViewWidget::addButton(const QString& inText, const char* inName, const QKeySequence& inKeys,
                                    void (KyWebView::*inDo)())
{
    QAction* action = mBar->addAction(inText);
    action->setObjectName(QLatin1String(inName));
    action->setShortcut(inKeys);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(action);
    connect(action, &QAction::triggered, mView, inDo);
    return action;
}

bool KyWebViewWidget::isRuntimeInstalled()
{
    return KyWebViewRuntime::instance();
}

QString KyWebViewWidget::runtimeVersion()
{
    const KyWebViewRuntime* runtime = KyWebViewRuntime::instance();
    return runtime ? runtime->version() : QString();
}

bool KyWebViewWidget::open(const QString& inAddress)
{
    const QUrl url = QUrl::fromUserInput(inAddress.trimmed());
    const bool needsHost = url.scheme().startsWith(QLatin1String("http"));
    if (!url.isValid() || (needsHost && url.host().isEmpty()))
        return false;
    mAddress->setModified(false);
    mView->load(url);
    return true;
}

/// The address that the user is writing stays.
void KyWebViewWidget::showPage()
{
    mBack->setEnabled(mView->canGoBack());
    mForward->setEnabled(mView->canGoForward());
    const QUrl url = mView->url();
    if (mAddress->hasFocus() && mAddress->isModified())
        return;
    mAddress->setText(url == QUrl(QStringLiteral("about:blank")) ? QString() : url.toDisplayString());
    mAddress->setCursorPosition(0);
}

void KyWebViewWidget::showLoading(bool inIsLoading)
{
    mReload->setVisible(!inIsLoading);
    mStop->setVisible(inIsLoading);
}

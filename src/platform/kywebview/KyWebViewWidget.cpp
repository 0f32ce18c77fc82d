#include "KyWebViewWidget.h"

#include "KyWebViewPlaceholder.h"
#include "KyWebViewRuntime.h"

#include <QAction>
#include <QLineEdit>
#include <QStyle>
#include <QToolBar>
#include <QVBoxLayout>

#include <chrono>

namespace {

/// Time for a window to be painted, and for questions that come with its first commands.
constexpr auto ViewDelay = std::chrono::milliseconds(40);

const QUrl Blank(QStringLiteral("about:blank"));

} // namespace

KyWebViewWidget::KyWebViewWidget(const QString& inProfile, QWidget* inParent)
    : QWidget(inParent)
    , mProfile(inProfile)
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
    column->addStretch(0);
    connect(mAddress, &QLineEdit::returnPressed, this, [this] {
        if (open(mAddress->text()))
            view().setFocus();
    });
    mNeed.setSingleShot(true);
    mNeed.setInterval(ViewDelay);
    connect(&mNeed, &QTimer::timeout, this, &KyWebViewWidget::makeView);
    showLoading(false);
    showPage();
}

void KyWebViewWidget::needView()
{
    if (!mView && !mNeed.isActive())
        mNeed.start();
}

/// It takes the keyboard, unless the user is writing an address.
void KyWebViewWidget::makeView()
{
    if (mView)
        return;
    mNeed.stop();
    KyWebViewRuntime* runtime = KyWebViewRuntime::instance();
    mView = runtime ? runtime->makeView(mProfile, this) : nullptr;
    if (!mView)
        mView = new KyWebViewPlaceholder(this);
    static_cast<QBoxLayout*>(layout())->addWidget(mView, 1);
    connect(mView, &KyWebView::pageChanged, this, &KyWebViewWidget::showPage);
    connect(mView, &KyWebView::loadingChanged, this, &KyWebViewWidget::showLoading);
    connect(mView, &KyWebView::closeWanted, this, &KyWebViewWidget::closeWanted);
    if (!mAddress->isModified())
        mView->setFocus();
    if (!mFirst.isEmpty())
        mView->load(mFirst);
    showPage();
}

KyWebView& KyWebViewWidget::view()
{
    makeView();
    return *mView;
}

QString KyWebViewWidget::title() const
{
    return mView ? mView->title() : QString();
}

void KyWebViewWidget::showEvent(QShowEvent* inEvent)
{
    QWidget::showEvent(inEvent);
    needView();
}

QAction* KyWebViewWidget::addButton(const QString& inText, const char* inName, const QKeySequence& inKeys,
                                    void (KyWebView::*inDo)())
{
    QAction* action = mBar->addAction(inText);
    action->setObjectName(QLatin1String(inName));
    action->setShortcut(inKeys);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(action);
    connect(action, &QAction::triggered, this, [this, inDo] { (view().*inDo)(); });
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
    if (!mView && mFirst.isEmpty()) {
        mFirst = url;
        needView();
        showPage();
    } else {
        view().load(url);
    }
    return true;
}

/// The address that the user is writing stays.
void KyWebViewWidget::showPage()
{
    mBack->setEnabled(mView && mView->canGoBack());
    mForward->setEnabled(mView && mView->canGoForward());
    const QUrl url = mView ? mView->url() : mFirst;
    if (!mAddress->hasFocus() || !mAddress->isModified()) {
        mAddress->setText(url == Blank ? QString() : url.toDisplayString());
        mAddress->setCursorPosition(0);
    }
    Q_EMIT pageChanged();
}

void KyWebViewWidget::showLoading(bool inIsLoading)
{
    mReload->setVisible(!inIsLoading);
    mStop->setVisible(inIsLoading);
}

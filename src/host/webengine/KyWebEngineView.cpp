#include "KyWebEngineView.h"

#include "KyWebEngineProfile.h"

#include <QtWebEngineCore/QWebEngineHistory>
#include <QtWebEngineCore/QWebEngineNewWindowRequest>
#include <QtWebEngineCore/QWebEnginePage>
#include <QtWebEngineWidgets/QWebEngineView>
#include <QtWidgets/QVBoxLayout>

namespace {

const QUrl Blank(QStringLiteral("about:blank"));

} // namespace

KyWebEngineView::KyWebEngineView(std::shared_ptr<KyWebEngineProfile> inProfile, QWidget* inParent)
    : KyWebView(inParent)
    , mProfile(std::move(inProfile))
    , mView(new QWebEngineView(this))
{
    auto* page = new QWebEnginePage(&mProfile->profile(), mView);
    mView->setPage(page);
    setFocusProxy(mView);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(mView);

    connect(page, &QWebEnginePage::urlChanged, this, &KyWebView::pageChanged);
    connect(page, &QWebEnginePage::titleChanged, this, &KyWebView::pageChanged);
    connect(page, &QWebEnginePage::loadStarted, this, [this] { Q_EMIT loadingChanged(true); });
    connect(page, &QWebEnginePage::loadFinished, this, [this] {
        Q_EMIT loadingChanged(false);
        Q_EMIT pageChanged();
    });
    connect(page, &QWebEnginePage::windowCloseRequested, this, &KyWebView::closeWanted);
    connect(page, &QWebEnginePage::newWindowRequested, this, &KyWebEngineView::openHere);
    connect(page, &QWebEnginePage::renderProcessTerminated, this, &KyWebEngineView::tellOfCrash);
}

/// The page before its profile.
KyWebEngineView::~KyWebEngineView()
{
    mView->page()->disconnect(this);
    delete mView;
}

void KyWebEngineView::openHere(QWebEngineNewWindowRequest& ioRequest)
{
    mView->load(ioRequest.requestedUrl());
}

void KyWebEngineView::tellOfCrash()
{
    mView->setHtml(QStringLiteral("<p style='font-family: sans-serif; margin: 3em'>%1</p>")
                       .arg(tr("This page has stopped working. Go back, or load it again.")),
                   url());
}

void KyWebEngineView::load(const QUrl& inUrl)
{
    mView->load(inUrl);
}

QUrl KyWebEngineView::url() const
{
    return mView->url().isEmpty() ? Blank : mView->url();
}

/// Until a page has a title, the engine gives its address.
QString KyWebEngineView::title() const
{
    return url() == Blank ? QString() : mView->title();
}

bool KyWebEngineView::canGoBack() const
{
    return mView->page()->history()->canGoBack();
}

bool KyWebEngineView::canGoForward() const
{
    return mView->page()->history()->canGoForward();
}

void KyWebEngineView::back()
{
    mView->back();
}

void KyWebEngineView::forward()
{
    mView->forward();
}

void KyWebEngineView::reload()
{
    mView->reload();
}

void KyWebEngineView::stop()
{
    mView->stop();
}

void KyWebEngineView::setZoom(double inFactor)
{
    mView->setZoomFactor(inFactor);
}

#include "KyWebViewPlaceholder.h"

#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const QUrl Blank(QStringLiteral("about:blank"));

constexpr qsizetype LongestHistory = 100;

QLabel* makeText(const QString& inText, QWidget* inParent)
{
    auto* label = new QLabel(inText, inParent);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

} // namespace

KyWebViewPlaceholder::KyWebViewPlaceholder(QWidget* inParent)
    : KyWebView(inParent)
    , mAddress(makeText(QString(), this))
    , mOpen(new QPushButton(tr("Open in the Default Browser"), this))
    , mHistory({Blank})
{
    mAddress->setObjectName(QStringLiteral("pageAddress"));
    mAddress->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mOpen->setObjectName(QStringLiteral("openPage"));
    auto* column = new QVBoxLayout(this);
    column->addStretch();
    column->addWidget(makeText(tr("Web pages can't be shown here: no web view is installed."), this));
    column->addWidget(mAddress);
    column->addWidget(mOpen, 0, Qt::AlignCenter);
    column->addStretch();
    connect(mOpen, &QPushButton::clicked, this, [this] { QDesktopServices::openUrl(url()); });
    goTo(0);
}

void KyWebViewPlaceholder::goTo(qsizetype inPlace)
{
    mPlace = inPlace;
    const bool isBlank = url() == Blank;
    mAddress->setText(isBlank ? QString() : url().toDisplayString());
    mOpen->setVisible(!isBlank);
    Q_EMIT pageChanged();
}

void KyWebViewPlaceholder::load(const QUrl& inUrl)
{
    mHistory.resize(mPlace + 1);
    mHistory.append(inUrl);
    if (mHistory.size() > LongestHistory)
        mHistory.removeFirst();
    goTo(mHistory.size() - 1);
}

QUrl KyWebViewPlaceholder::url() const
{
    return mHistory.at(mPlace);
}

QString KyWebViewPlaceholder::title() const
{
    return url() == Blank ? QString() : url().toDisplayString();
}

bool KyWebViewPlaceholder::canGoBack() const
{
    return mPlace > 0;
}

bool KyWebViewPlaceholder::canGoForward() const
{
    return mPlace + 1 < mHistory.size();
}

void KyWebViewPlaceholder::back()
{
    if (canGoBack())
        goTo(mPlace - 1);
}

void KyWebViewPlaceholder::forward()
{
    if (canGoForward())
        goTo(mPlace + 1);
}

void KyWebViewPlaceholder::reload() {}

void KyWebViewPlaceholder::stop() {}

void KyWebViewPlaceholder::setZoom(double) {}

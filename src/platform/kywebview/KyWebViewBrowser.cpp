#include "KyWebViewBrowser.h"

#include "KyWebView.h"
#include "KyWebViewCommands.h"
#include "KyWebViewWidget.h"

#include <ovbase/OvStoredGeometry.h>
#include <rnlib/RnLogFile.h>

#include <QCloseEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace {

constexpr const char* Context = "BrowseCtrl";
constexpr auto SettleTime = std::chrono::milliseconds(400);
constexpr QSize InitialSize(500, 500);

QString geometryKey(const QString& inName)
{
    return inName + QStringLiteral(".Geometry");
}

} // namespace

const KyWebViewBrowser::Command KyWebViewBrowser::sCommands[] = {
    {"SHOW", &KyWebViewBrowser::comeUp},         {"HIDE", &KyWebViewBrowser::goAway},
    {"ISHIDDEN", &KyWebViewBrowser::tellHidden}, {"GEOMETRY", &KyWebViewBrowser::place},
    {"URL", &KyWebViewBrowser::openUrl},         {"BACK", &KyWebViewBrowser::goBack},
    {"FORWARD", &KyWebViewBrowser::goForward},   {"RELOAD", &KyWebViewBrowser::reload},
    {"STOP", &KyWebViewBrowser::stop},           {"ZOOM", &KyWebViewBrowser::zoom},
    {"TITLE", &KyWebViewBrowser::setTitle}};

KyWebViewBrowser::KyWebViewBrowser(QWidget* inParent, const QString& inName)
    : JxTopLevelWidget(inParent, Qt::Window)
    , mName(inName)
    , mPage(new KyWebViewWidget(inName, this))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(mPage);
    setMaximumSize(LargestSize, LargestSize);
    resize(InitialSize);
    mKnown = OvStoredGeometry::read(geometryKey(mName));
    if (!mKnown.isEmpty())
        setGeometry(mKnown);
    mSettle.setSingleShot(true);
    mSettle.setInterval(SettleTime);
    connect(&mSettle, &QTimer::timeout, this, &KyWebViewBrowser::tellGeometry);
    connect(&mPage->view(), &KyWebView::pageChanged, this, &KyWebViewBrowser::showTitle);
    connect(&mPage->view(), &KyWebView::closeWanted, this, &QWidget::close);
}

KyWebViewBrowser::~KyWebViewBrowser() = default;

void KyWebViewBrowser::setReceiver(Receiver inReceiver)
{
    mReceiver = std::move(inReceiver);
}

void KyWebViewBrowser::receiveCommand(const QString& inCommand)
{
    for (const QString& command : KyWebViewCommands::split(inCommand))
        follow(command);
}

void KyWebViewBrowser::follow(const QString& inCommand)
{
    const QString word = KyWebViewCommands::word(inCommand);
    const auto* known = std::find_if(std::begin(sCommands), std::end(sCommands),
                                     [&](const Command& c) { return word == QLatin1String(c.word); });
    const bool isFollowed =
        known != std::end(sCommands) && (this->*known->follow)(KyWebViewCommands::argument(inCommand));
    if (!isFollowed)
        tell(KyWebViewCommands::errorMessage(inCommand));
}

bool KyWebViewBrowser::comeUp(const QString&)
{
    if (isMinimized())
        setWindowState(windowState() & ~Qt::WindowMinimized);
    setVisible(true);
    raise();
    activateWindow();
    mPage->view().setFocus();
    return true;
}

bool KyWebViewBrowser::goAway(const QString&)
{
    setVisible(false);
    return true;
}

bool KyWebViewBrowser::tellHidden(const QString&)
{
    tell(KyWebViewCommands::isHiddenMessage(!isVisible()));
    return true;
}

bool KyWebViewBrowser::place(const QString& inArgument)
{
    const auto geometry = KyWebViewCommands::geometry(inArgument);
    if (!geometry)
        return false;
    if (geometry->isEmpty())
        return true;
    setGeometry(*geometry);
    mKnown = *geometry;
    return true;
}

bool KyWebViewBrowser::openUrl(const QString& inArgument)
{
    return mPage->open(inArgument);
}

bool KyWebViewBrowser::goBack(const QString&)
{
    mPage->view().back();
    return true;
}

bool KyWebViewBrowser::goForward(const QString&)
{
    mPage->view().forward();
    return true;
}

bool KyWebViewBrowser::reload(const QString&)
{
    mPage->view().reload();
    return true;
}

bool KyWebViewBrowser::stop(const QString&)
{
    mPage->view().stop();
    return true;
}

bool KyWebViewBrowser::zoom(const QString& inArgument)
{
    constexpr int least = 25;
    constexpr int most = 500;
    bool isNumber = false;
    const int percent = inArgument.toInt(&isNumber);
    if (!isNumber || percent < least || percent > most)
        return false;
    mPage->view().setZoom(percent / 100.0);
    return true;
}

bool KyWebViewBrowser::setTitle(const QString& inArgument)
{
    setWindowTitle(inArgument);
    if (inArgument.isEmpty())
        showTitle();
    return true;
}

void KyWebViewBrowser::tell(const QString& inMessage)
{
    if (mReceiver)
        mReceiver(inMessage);
    else
        keep(inMessage);
}

void KyWebViewBrowser::keep(const QString& inMessage)
{
    const QString word = KyWebViewCommands::word(inMessage);
    const QString argument = KyWebViewCommands::argument(inMessage);
    if (word == QLatin1String("GEOMETRY"))
        OvStoredGeometry::write(*KyWebViewCommands::geometry(argument), geometryKey(mName));
    else if (word == QLatin1String("ERROR"))
        getTheLogInstance().error(
            Context,
            QStringLiteral("Browser returned invalid command: '%1'").arg(argument).toLatin1().constData());
}

void KyWebViewBrowser::showTitle()
{
    if (!windowTitle().isEmpty() && windowTitle() != mPageTitle)
        return;
    mPageTitle = mPage->view().title();
    setWindowTitle(mPageTitle);
}

void KyWebViewBrowser::watchGeometry()
{
    if (isVisible())
        mSettle.start();
}

/// What a minimized or a maximized window reports is no place for the next start.
void KyWebViewBrowser::tellGeometry()
{
    mSettle.stop();
    if (geometry() == mKnown || isMinimized() || isMaximized())
        return;
    mKnown = geometry();
    tell(KyWebViewCommands::geometryMessage(mKnown));
}

void KyWebViewBrowser::moveEvent(QMoveEvent* inEvent)
{
    JxTopLevelWidget::moveEvent(inEvent);
    watchGeometry();
}

void KyWebViewBrowser::resizeEvent(QResizeEvent* inEvent)
{
    JxTopLevelWidget::resizeEvent(inEvent);
    watchGeometry();
}

void KyWebViewBrowser::hideEvent(QHideEvent* inEvent)
{
    if (mSettle.isActive())
        tellGeometry();
    JxTopLevelWidget::hideEvent(inEvent);
}

/// The page stays as it is: what was written into it is there again with the next SHOW.
void KyWebViewBrowser::closeEvent(QCloseEvent* inEvent)
{
    inEvent->accept();
}

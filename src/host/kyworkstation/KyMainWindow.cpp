#include "KyMainWindow.h"

#include "KyFileMenu.h"
#include "KyHelpMenu.h"
#include "KyLoadingStatus.h"
#include "KyLogPane.h"
#include "KyScriptOutputPane.h"
#include "KyScriptingMenu.h"
#include "KySessionLogPane.h"
#include "KySettingsDialog.h"
#include "KyStoredState.h"
#include "KyStudyFolders.h"
#include "KyStudyListModel.h"
#include "KyStudyListView.h"
#include "KyStudySession.h"

#include <kybase/KyGUISizeManager.h>
#include <kybase/KyMonitorManager.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QPointer>
#include <QtCore/QSortFilterProxyModel>
#include <QtGui/QCloseEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolBar>

namespace {

constexpr const char* DocksState = "Docks";
constexpr const char* CentralState = "CentralArea";
constexpr const char* HeaderState = "StudyList";

constexpr int PanelHeight = 160;

QString withoutMnemonic(QString inText)
{
    return inText.remove(QLatin1Char('&'));
}

} // namespace

KyMainWindow::KyMainWindow()
    : mLoader(new KyStudyLoader(this))
    , mStudies(new KyStudyListModel(this))
    , mStudyList(new KyStudyListView(this))
    , mCentralArea(new QSplitter(Qt::Vertical, this))
    , mViewerArea(new QStackedWidget(this))
    , mStatus(new KyLoadingStatus(*mLoader, *statusBar()))
    , mViewMenu(new QMenu(tr("&View"), this))
    , mScriptOutput(new KyScriptOutputPane(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(tr("Ky Workstation"));
    setAcceptDrops(true);
    makeCentralArea();
    makePanels();
    makeMenus();
    connect(mLoader, &KyStudyLoader::loaded, this,
            [this](const QString&, KyStudyLoader::Kind kind, const Ovg::StudySourceResult& result) {
                KyStudySession::add(result.studies, kind == KyStudyLoader::Kind::Additional);
                showStudies();
            });
    if (KyMonitorManager* monitors = KyMonitorManager::instance()) {
        monitors->setMainWindow(this);
        monitors->content(QLatin1String(KyMonitorContent::View))->addMainWindow(this);
    }
    KyGUISizeManager::makeWidgetGeometryPersistent(this, "MainWindow", QSize(1100, 720), QPoint(40, 40));
    restoreLayout();
    showStudies();
}

KyMainWindow::~KyMainWindow()
{
    if (KyMonitorManager* monitors = KyMonitorManager::instance()) {
        monitors->setMainWindow(nullptr);
        monitors->content(QLatin1String(KyMonitorContent::View))->removeMainWindow(this);
    }
}

void KyMainWindow::makeCentralArea()
{
    auto* sorted = new QSortFilterProxyModel(this);
    sorted->setSourceModel(mStudies);
    sorted->setSortRole(KyStudyListModel::SortRole);
    sorted->setSortCaseSensitivity(Qt::CaseInsensitive);
    sorted->setSortLocaleAware(true);
    mStudyList->setObjectName(QStringLiteral("studyList"));
    mStudyList->setModel(sorted);
    // The order of the session until the user asks for another one.
    mStudyList->sortByColumn(-1, Qt::AscendingOrder);
    const int digit = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    const int widths[] = {26, 18, 14, 14, 34, 14, 8};
    for (int column = 0; column < KyStudyListModel::ColumnCount; ++column)
        mStudyList->setColumnWidth(column, widths[column] * digit);

    mViewerArea->setObjectName(QStringLiteral("viewerArea"));
    mViewerArea->hide();
    mCentralArea->setObjectName(QStringLiteral("centralArea"));
    mCentralArea->addWidget(mStudyList);
    mCentralArea->addWidget(mViewerArea);
    mCentralArea->setStretchFactor(0, 1);
    mCentralArea->setStretchFactor(1, 3);
    mCentralArea->setChildrenCollapsible(false);
    setCentralWidget(mCentralArea);
}

void KyMainWindow::makePanels()
{
    QDockWidget& log = addPanel({QStringLiteral("logDock"), tr("&Log"), QKeySequence(Qt::CTRL | Qt::Key_L)},
                                new KyLogPane(getTheLogInstance(), QStringLiteral("log"), this));
    addPanel({QStringLiteral("scriptOutputDock"), tr("Script &Output"),
              QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L)},
             mScriptOutput);
    addPanel({QStringLiteral("sessionLogDock"), tr("&Session Log"), QKeySequence(Qt::CTRL | Qt::Key_J)},
             new KySessionLogPane(this));
    connect(mScriptOutput, &KyScriptOutputPane::starting, &KyScriptingMenu::addRecentScript);
    log.raise();
    resizeDocks({&log}, {PanelHeight}, Qt::Vertical);
}

QDockWidget& KyMainWindow::addPanel(const Panel& inPanel, QWidget* inContent)
{
    auto present = findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly);
    present.removeIf([&](QDockWidget* other) { return dockWidgetArea(other) != inPanel.area; });
    auto* dock = new QDockWidget(withoutMnemonic(inPanel.title), this);
    dock->setObjectName(inPanel.name);
    dock->setWidget(inContent);
    if (!restoreDockWidget(dock)) {
        addDockWidget(inPanel.area, dock);
        if (!present.isEmpty())
            tabifyDockWidget(present.last(), dock);
        dock->setVisible(inPanel.isOpenAtFirst);
    }

    QAction* entry = dock->toggleViewAction();
    entry->setText(inPanel.title);
    entry->setShortcut(inPanel.keys);
    mViewMenu->addAction(entry);
    return *dock;
}

void KyMainWindow::addTools(QToolBar* inToolBar)
{
    addToolBar(inToolBar);
    restoreState(KyStoredState::read(DocksState));
    inToolBar->toggleViewAction()->setText(tr("&Tool Bar"));
    mViewMenu->addAction(inToolBar->toggleViewAction());
}

void KyMainWindow::makeMenus()
{
    auto* file = new KyFileMenu(this);
    connect(file, &KyFileMenu::folderChosen, this, &KyMainWindow::openFolder);
    connect(file, &KyFileMenu::closeStudiesWanted, this, &KyMainWindow::closeStudies);
    connect(file, &KyFileMenu::settingsWanted, this, &KyMainWindow::showSettings);
    connect(file, &KyFileMenu::quitWanted, this, &KyMainWindow::close);
    auto* scripting = new KyScriptingMenu(this);
    connect(scripting, &KyScriptingMenu::scriptChosen, this, &KyMainWindow::runScript);

    mViewMenu->setObjectName(QStringLiteral("viewMenu"));
    for (QMenu* menu : {static_cast<QMenu*>(file), mViewMenu, static_cast<QMenu*>(scripting),
                        static_cast<QMenu*>(new KyHelpMenu(this))})
        menuBar()->addMenu(menu);
}

void KyMainWindow::setViewerArea(QWidget* inArea)
{
    delete viewerArea();
    if (inArea)
        mViewerArea->addWidget(inArea);
    mViewerArea->setVisible(inArea);
    if (inArea)
        mCentralArea->restoreState(KyStoredState::read(CentralState));
}

QWidget* KyMainWindow::viewerArea() const
{
    return mViewerArea->currentWidget();
}

void KyMainWindow::restoreLayout()
{
    restoreState(KyStoredState::read(DocksState));
    mStudyList->header()->restoreState(KyStoredState::read(HeaderState));
}

void KyMainWindow::storeLayout()
{
    KyStoredState::write(DocksState, saveState());
    KyStoredState::write(HeaderState, mStudyList->header()->saveState());
    if (viewerArea())
        KyStoredState::write(CentralState, mCentralArea->saveState());
}

void KyMainWindow::openFolder(const QString& inPath, KyStudyLoader::Kind inKind)
{
    mLoader->load(KyStudyFolders::of(inPath), inKind);
}

void KyMainWindow::closeStudies()
{
    mLoader->cancel();
    KyStudySession::clear();
    showStudies();
    mStatus->clearResult();
}

void KyMainWindow::showStudies()
{
    mStudies->setStudies(KyStudySession::primary(), KyStudySession::additional());
    mStatus->showTotals(mStudies->rowCount(), mStudies->imageCount());
    Q_EMIT studiesChanged();
}

void KyMainWindow::runScript(const QString& inFile)
{
    auto* dock = findChild<QDockWidget*>(QStringLiteral("scriptOutputDock"));
    dock->show();
    dock->raise();
    mScriptOutput->run(inFile);
}

void KyMainWindow::showSettings()
{
    if (!mSettings)
        mSettings = new KySettingsDialog(this);
    mSettings->show();
    mSettings->raise();
    mSettings->activateWindow();
}

void KyMainWindow::closeEvent(QCloseEvent* inEvent)
{
    mLoader->cancel();
    storeLayout();
    inEvent->accept();
    KyStudySession::clear();
    // The consoles keep their places, too, and would keep the program running. A script that hears of one
    // window's end may end others.
    const auto windows = QApplication::topLevelWidgets();
    for (const QPointer<QWidget>& window : QList<QPointer<QWidget>>(windows.begin(), windows.end())) {
        if (window && window != this && window->isVisible())
            window->close();
    }
    QCoreApplication::quit();
}

void KyMainWindow::dragEnterEvent(QDragEnterEvent* inEvent)
{
    if (!KyStudyFolders::dropped(*inEvent->mimeData()).isEmpty())
        inEvent->acceptProposedAction();
}

void KyMainWindow::dropEvent(QDropEvent* inEvent)
{
    inEvent->acceptProposedAction();
    for (const QString& folder : KyStudyFolders::dropped(*inEvent->mimeData()))
        openFolder(folder);
}

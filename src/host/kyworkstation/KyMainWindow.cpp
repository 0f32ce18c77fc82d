#include "KyMainWindow.h"

#include "KyLogPane.h"
#include "KyScriptingMenu.h"
#include "KySettingsDialog.h"
#include "KyStudyListModel.h"
#include "KyStudyListView.h"
#include "KyStudySession.h"

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <kybase/KyGUISizeManager.h>
#include <kybase/KyMonitorManager.h>
#include <ovbase/OvRegistry.h>
#include <rnlib/RnBuildInfo.h>

#include <QtCore/QFileInfo>
#include <QtCore/QMimeData>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QStringDecoder>
#include <QtGui/QCloseEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QToolButton>

namespace {

constexpr const char* DocksId = "GUI.State.Docks";
constexpr const char* HeaderId = "GUI.State.StudyList";

QByteArray storedState(const char* inId)
{
    OvRegistry::Value stored;
    const OvRegistry* registry = OvRegistry::getInstance();
    if (!registry || !registry->getProperty(QLatin1String(inId), stored))
        return QByteArray();
    return QByteArray::fromBase64(stored.value.toLatin1());
}

void storeState(const char* inId, const QByteArray& inState)
{
    if (OvRegistry* registry = OvRegistry::getInstance())
        registry->setProperty(QLatin1String(inId), QString::fromLatin1(inState.toBase64()),
                              OvRegistry::UserPriority);
}

/// The folders among dropped things; a file counts as its folder.
QStringList droppedFolders(const QMimeData& inData)
{
    QStringList folders;
    for (const QUrl& url : inData.urls()) {
        if (!url.isLocalFile())
            continue;
        const QFileInfo info(url.toLocalFile());
        folders.append(info.isDir() ? info.filePath() : info.path());
    }
    folders.removeDuplicates();
    return folders;
}

} // namespace

KyMainWindow::KyMainWindow()
    : mLoader(new KyStudyLoader(this))
    , mStudies(new KyStudyListModel(this))
    , mStudyList(new KyStudyListView(this))
    , mScriptOutput(new QTextEdit(this))
    , mSummary(new QLabel(this))
    , mProgress(new QProgressBar(this))
    , mCancel(new QToolButton(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(tr("Ky Workstation"));
    setAcceptDrops(true);
    makeStudyList();
    makeDocks();
    makeStatusBar();
    makeMenus();
    followLoader();
    if (KyMonitorManager* monitors = KyMonitorManager::instance())
        monitors->setMainWindow(this);
    KyGUISizeManager::makeWidgetGeometryPersistent(this, "MainWindow", QSize(1100, 720), QPoint(40, 40));
    restoreLayout();
    showStudies();
}

KyMainWindow::~KyMainWindow()
{
    if (KyMonitorManager* monitors = KyMonitorManager::instance())
        monitors->setMainWindow(nullptr);
}

void KyMainWindow::makeStudyList()
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
    setCentralWidget(mStudyList);
}

void KyMainWindow::makeDocks()
{
    mScriptOutput->setObjectName(QStringLiteral("scriptOutputText"));
    mScriptOutput->setReadOnly(true);
    mScriptOutput->setUndoRedoEnabled(false);
    mScriptOutput->setAccessibleName(tr("Script output"));
    auto* log = new QDockWidget(tr("Log"), this);
    log->setObjectName(QStringLiteral("logDock"));
    log->setWidget(new KyLogPane(log));
    auto* output = new QDockWidget(tr("Script Output"), this);
    output->setObjectName(QStringLiteral("scriptOutputDock"));
    output->setWidget(mScriptOutput);
    addDockWidget(Qt::BottomDockWidgetArea, log);
    tabifyDockWidget(log, output);
    log->raise();
    resizeDocks({log}, {220}, Qt::Vertical);
}

void KyMainWindow::makeStatusBar()
{
    mSummary->setObjectName(QStringLiteral("summary"));
    mProgress->setObjectName(QStringLiteral("progress"));
    mProgress->setAccessibleName(tr("Progress of loading"));
    mProgress->setMaximumWidth(220);
    mCancel->setObjectName(QStringLiteral("cancelLoading"));
    mCancel->setText(tr("Cancel"));
    mCancel->setToolTip(tr("Stop loading (Esc)"));
    mCancel->setShortcut(QKeySequence(Qt::Key_Escape));
    connect(mCancel, &QToolButton::clicked, mLoader, &KyStudyLoader::cancel);
    statusBar()->addPermanentWidget(mProgress);
    statusBar()->addPermanentWidget(mCancel);
    statusBar()->addPermanentWidget(mSummary);
    mProgress->hide();
    mCancel->hide();
}

void KyMainWindow::makeMenus()
{
    menuBar()->addMenu(makeFileMenu());
    makeViewMenu();
    auto* scripting = new KyScriptingMenu(this);
    connect(scripting, &KyScriptingMenu::scriptChosen, this, &KyMainWindow::runScript);
    menuBar()->addMenu(scripting);
    makeHelpMenu();
}

QMenu* KyMainWindow::makeFileMenu()
{
    auto* menu = new QMenu(tr("&File"), this);
    const auto add = [&](const QString& text, const QKeySequence& keys, const QString& tip, auto action) {
        QAction* added = menu->addAction(text, this, action);
        added->setShortcut(keys);
        added->setStatusTip(tip);
        return added;
    };
    add(tr("&Open Folder…"), QKeySequence::Open, tr("Open the studies below a folder"),
        [this] { chooseFolder(KyStudyLoader::Kind::Primary); });
    add(tr("Open &Additional Folder…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
        tr("Open the studies below a folder beside the primary ones, such as priors"),
        [this] { chooseFolder(KyStudyLoader::Kind::Additional); });
    add(tr("&Close All Studies"), QKeySequence(Qt::CTRL | Qt::Key_W), tr("Empty the study list"),
        [this] { closeStudies(); });
    menu->addSeparator();
    add(tr("&Settings…"), QKeySequence(Qt::CTRL | Qt::Key_Comma),
        tr("Change the settings of the application"), [this] { showSettings(); })
        ->setMenuRole(QAction::PreferencesRole);
    menu->addSeparator();
    add(tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), tr("End the program"), [this] {
        close();
    })->setMenuRole(QAction::QuitRole);
    return menu;
}

void KyMainWindow::makeViewMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&View"));
    QAction* log = findChild<QDockWidget*>(QStringLiteral("logDock"))->toggleViewAction();
    log->setText(tr("&Log"));
    log->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    QAction* output = findChild<QDockWidget*>(QStringLiteral("scriptOutputDock"))->toggleViewAction();
    output->setText(tr("Script &Output"));
    output->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L));
    menu->addActions({log, output});
}

void KyMainWindow::makeHelpMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Help"));
    QAction* about = menu->addAction(tr("&About Ky Workstation"), this, &KyMainWindow::about);
    about->setShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F1));
    about->setMenuRole(QAction::AboutRole);
}

void KyMainWindow::followLoader()
{
    connect(mLoader, &KyStudyLoader::started, this, [this](const QString& folder) {
        statusBar()->showMessage(tr("Reading %1").arg(folder));
        showProgress(0, 0);
    });
    connect(mLoader, &KyStudyLoader::progressed, this, &KyMainWindow::showProgress);
    connect(mLoader, &KyStudyLoader::loaded, this, &KyMainWindow::addStudies);
    connect(mLoader, &KyStudyLoader::finished, this, &KyMainWindow::loadingFinished);
}

void KyMainWindow::restoreLayout()
{
    restoreState(storedState(DocksId));
    mStudyList->header()->restoreState(storedState(HeaderId));
}

void KyMainWindow::storeLayout()
{
    storeState(DocksId, saveState());
    storeState(HeaderId, mStudyList->header()->saveState());
}

void KyMainWindow::openFolder(const QString& inFolder, KyStudyLoader::Kind inKind)
{
    mLoader->load(inFolder, inKind);
}

void KyMainWindow::chooseFolder(KyStudyLoader::Kind inKind)
{
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Open Folder"));
    if (!folder.isEmpty())
        openFolder(folder, inKind);
}

void KyMainWindow::addStudies(const QString& inFolder, KyStudyLoader::Kind inKind,
                              const Ovg::StudySourceResult& inResult)
{
    if (!inResult.errors.isEmpty())
        mLastResult = inResult.errors.first();
    else if (inResult.studies.empty())
        mLastResult = tr("There is no DICOM study below %1").arg(inFolder);
    else
        mLastResult = tr("Opened %1 (images: %2)").arg(inFolder).arg(inResult.instances);
    const int skipped = inResult.notDicom + inResult.damaged + inResult.noStudy;
    if (skipped > 0)
        mLastResult += tr(" – files skipped: %1, see the log").arg(skipped);
    KyStudySession::add(inResult.studies, inKind == KyStudyLoader::Kind::Additional);
    showStudies();
}

void KyMainWindow::closeStudies()
{
    mLoader->cancel();
    KyStudySession::clear();
    showStudies();
    statusBar()->clearMessage();
}

void KyMainWindow::showStudies()
{
    mStudies->setStudies(KyStudySession::primary(), KyStudySession::additional());
    const QLocale locale;
    mSummary->setText(
        tr("Studies: %1   Images: %2")
            .arg(locale.toString(mStudies->rowCount()), locale.toString(mStudies->imageCount())));
}

void KyMainWindow::showProgress(int inDone, int inTotal)
{
    mProgress->setRange(0, inTotal);
    mProgress->setValue(inDone);
    mProgress->show();
    mCancel->show();
}

void KyMainWindow::loadingFinished(bool inCancelled)
{
    mProgress->hide();
    mCancel->hide();
    statusBar()->showMessage(inCancelled ? tr("Loading was cancelled") : mLastResult);
}

void KyMainWindow::runScript(const QString& inFile)
{
    QFile file(inFile);
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString source = file.open(QIODevice::ReadOnly) ? decoder(file.readAll()) : QString();
    if (file.error() != QFileDevice::NoError || decoder.hasError()) {
        statusBar()->showMessage(
            tr("Cannot read the script %1: %2")
                .arg(inFile, decoder.hasError() ? tr("it is not UTF-8") : file.errorString()));
        return;
    }
    KyScriptingMenu::addRecentScript(inFile);
    auto* dock = findChild<QDockWidget*>(QStringLiteral("scriptOutputDock"));
    dock->show();
    dock->raise();

    KyScriptInterface& engine = KyScriptInterface::getInstance(QString());
    if (engine.globalObject().property(QStringLiteral("print")).isUndefined())
        engine.redirectPrintOutput(mScriptOutput);
    mScriptOutput->append(tr("Running %1").arg(inFile.toHtmlEscaped()));
    const QJSValue value = KyScriptAbstractInterface::getInstance(QString()).runScript(
        KyScriptProgram(source, inFile, 1), false, false, true);
    if (value.isError())
        mScriptOutput->append(engine.errorMessage(value, QString(), nullptr)
                                  .toHtmlEscaped()
                                  .replace(QLatin1Char('\n'), QStringLiteral("<br>")));
    else if (!value.isUndefined())
        mScriptOutput->append(value.toString());
}

void KyMainWindow::showSettings()
{
    if (!mSettings)
        mSettings = new KySettingsDialog(this);
    mSettings->show();
    mSettings->raise();
    mSettings->activateWindow();
}

void KyMainWindow::about()
{
    auto* box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(tr("About Ky Workstation"));
    box->setIconPixmap(windowIcon().pixmap(64));
    box->setText(tr("<b>Ky Workstation</b> %1").arg(QString::fromStdString(RnBuildInfo::getBuildString(1))));
    box->setInformativeText(
        tr("A workstation for DICOM studies that scripts can extend. Not for diagnosis."));
    box->open();
}

void KyMainWindow::closeEvent(QCloseEvent* inEvent)
{
    mLoader->cancel();
    storeLayout();
    inEvent->accept();
    // The consoles keep their places, too, and would keep the program running.
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window != this && window->isVisible())
            window->close();
    }
    QCoreApplication::quit();
}

void KyMainWindow::dragEnterEvent(QDragEnterEvent* inEvent)
{
    if (!droppedFolders(*inEvent->mimeData()).isEmpty())
        inEvent->acceptProposedAction();
}

void KyMainWindow::dropEvent(QDropEvent* inEvent)
{
    inEvent->acceptProposedAction();
    for (const QString& folder : droppedFolders(*inEvent->mimeData()))
        openFolder(folder);
}

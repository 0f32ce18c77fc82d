// Drives the workstation on the display at hand and writes pictures of its windows: screenshots SAMPLE OUTDIR
//
// The script list_studies.js of the examples lies in the current folder.

#include <common/KyHostPlatform.h>
#include <common/KyToolFiles.h>
#include <kyworkstation/KyMainWindow.h>
#include <kyworkstation/KyScriptingMenu.h>
#include <kyworkstation/KyStudySession.h>
#include <kyworkstation/KyViewerArea.h>
#include <kyworkstation/KyWorkstationTools.h>
#include <kyworkstation/KyWorkstationViewers.h>

#include <ovbase/OvPropertyPool.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStyleFactory>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

#include <cstdio>

namespace {

constexpr const char* sSource = "var studies = StudyList.get(\"ALL_STUDIES_OF_PATIENT\");\n"
                                "\n"
                                "studies.forEach(function (study) {\n"
                                "    print(guiDate(study.getTag(\"DICOM.StudyDate\")),\n"
                                "          study.getTag(\"DICOM.StudyDescription\"));\n"
                                "});\n"
                                "studies.length";

/// Settles for a moment: the window manager places and draws its frames.
void settle()
{
    QTest::qWait(400);
}

QWidget* windowTitled(const QString& inTitle)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowTitle() == inTitle)
            return window;
    }
    return nullptr;
}

/// The frame of a window as it stands on the screen, with what lies over it. A window that the manager has
/// pushed over an edge is brought back.
bool take(QWidget& inWindow, const QString& inFile)
{
    const QRect screen = inWindow.screen()->geometry();
    for (int tries = 0; tries < 5 && !screen.contains(inWindow.frameGeometry()); ++tries) {
        inWindow.move(screen.topLeft() + QPoint(10, 10));
        settle();
    }
    const QRect frame = inWindow.frameGeometry();
    if (!screen.contains(frame)) {
        std::fprintf(stderr, "%s is not wholly on the screen\n", qPrintable(inWindow.windowTitle()));
        return false;
    }
    const QPixmap picture =
        inWindow.screen()->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height());
    std::printf("%s %dx%d\n", qPrintable(inFile), picture.width(), picture.height());
    return picture.save(inFile);
}

void useDarkColours()
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(45, 47, 50));
    dark.setColor(QPalette::WindowText, Qt::white);
    dark.setColor(QPalette::Base, QColor(30, 31, 33));
    dark.setColor(QPalette::AlternateBase, QColor(37, 38, 41));
    dark.setColor(QPalette::ToolTipBase, QColor(60, 62, 66));
    dark.setColor(QPalette::ToolTipText, Qt::white);
    dark.setColor(QPalette::Text, Qt::white);
    dark.setColor(QPalette::PlaceholderText, QColor(160, 160, 160));
    dark.setColor(QPalette::Button, QColor(55, 57, 61));
    dark.setColor(QPalette::ButtonText, Qt::white);
    dark.setColor(QPalette::Highlight, QColor(42, 110, 187));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(120, 120, 120));
    QApplication::setPalette(dark);
}

/// As after some work: a study chosen, a script run, the log on view.
bool takeMain(KyMainWindow& inWindow, const QDir& inFolder)
{
    inWindow.runScript(QStringLiteral("list_studies.js"));
    auto* list = inWindow.findChild<QTreeView*>("studyList");
    list->setCurrentIndex(list->model()->index(1, 0));
    inWindow.findChild<QSplitter*>("centralArea")->setSizes({120, 420});
    settle();
    const bool isOk = take(inWindow, inFolder.filePath("workstation-script.png"));
    inWindow.findChild<QDockWidget*>("logDock")->raise();
    settle();
    return take(inWindow, inFolder.filePath("workstation.png")) && isOk;
}

bool isRead(const KyViewerLayout& inViewers)
{
    for (int place = 0; place < inViewers.count(); ++place) {
        for (int layer = 0; inViewers.viewer(place)->seriesVolume(layer); ++layer) {
            if (inViewers.viewer(place)->seriesVolume(layer)->isLoading())
                return false;
        }
    }
    return true;
}

void clickTool(const KyMainWindow& inWindow, const QString& inKey)
{
    QTest::mouseClick(inWindow.findChild<QToolButton*>("tool." + inKey), Qt::LeftButton);
}

/// Four viewers: an axial and a coronal plane, the lung, and a PET fused into its CT.
bool takeViewers(KyMainWindow& inWindow, KyViewerLayout& ioViewers, const QDir& inFolder)
{
    const auto& studies = KyStudySession::primary();
    const auto layer = [&](std::size_t inStudy, std::size_t inSeries) {
        return KyViewerLayer{.study = studies.at(inStudy), .series = inSeries};
    };
    inWindow.findChild<QTreeView*>("studyList")
        ->expand(inWindow.findChild<QTreeView*>("studyList")->model()->index(0, 0));
    inWindow.findChild<QSplitter*>("centralArea")->setSizes({190, 560});
    for (QDockWidget* dock : inWindow.findChildren<QDockWidget*>())
        dock->hide();
    ioViewers.setLayout("2x2");
    for (int place = 0; place < 4; ++place)
        ioViewers.viewer(place)->open(place == 2 ? layer(0, 1) : layer(1, 0));
    ioViewers.viewer(3)->fuse(layer(1, 1));
    if (!QTest::qWaitFor([&] { return isRead(ioViewers); }, 30000))
        return false;
    ioViewers.viewer(1)->setOrientation(OvSlice::Coronal);
    ioViewers.viewer(1)->scrollTo(116);
    KyViewerManager::getInstance()->setActiveViewer(ioViewers.viewer(0));
    clickTool(inWindow, "Site.MeasureReminder");
    settle();
    return take(inWindow, inFolder.filePath("workstation-viewers.png"));
}

/// A report that a tool has filled, beside one viewer.
bool takeTools(KyMainWindow& inWindow, KyViewerLayout& ioViewers, const QDir& inFolder)
{
    ioViewers.setLayout("1x1");
    clickTool(inWindow, "Site.MeasureReminder");
    clickTool(inWindow, "Site.CopyPatient");
    clickTool(inWindow, "Site.ReportTemplate");
    clickTool(inWindow, "Site.FindPrior");
    inWindow.resizeDocks({inWindow.findChild<QDockWidget*>("reportDock")}, {330}, Qt::Horizontal);
    clickTool(inWindow, "Site.WorklistStatus");
    settle();
    QWidget* status = windowTitled("Worklist status");
    status->move(inWindow.pos() + QPoint(120, 560));
    settle();
    const bool isOk = take(inWindow, inFolder.filePath("workstation-tools.png"));
    status->close();
    inWindow.findChild<QDockWidget*>("reportDock")->close();
    return isOk;
}

bool takeAll(KyMainWindow& inWindow, KyViewerLayout& ioViewers, const QDir& inFolder)
{
    inWindow.resize(1240, 840);
    inWindow.move(10, 10);
    settle();
    ioViewers.setLayout("1x2");
    ioViewers.fill(KyStudySession::primary());
    bool isOk = QTest::qWaitFor([&] { return isRead(ioViewers); }, 30000) && takeMain(inWindow, inFolder);

    inWindow.findChild<QAction*>("console.")->trigger();
    settle();
    QWidget* console = windowTitled("Console[QJSEngine]");
    console->move(inWindow.pos() + QPoint(24, 240));
    auto* input = console->findChild<QPlainTextEdit*>("w_InputText");
    input->setPlainText(sSource);
    input->moveCursor(QTextCursor::End);
    input->setFocus();
    QTest::mouseClick(console->findChild<QPushButton*>("w_Evaluate"), Qt::LeftButton);
    settle();
    isOk = take(*console, inFolder.filePath("console.png")) && isOk;
    isOk = take(inWindow, inFolder.filePath("workstation-console.png")) && isOk;
    console->close();

    // The script lies in a folder of this run only.
    OvPropertyPool::instance()->variant("Workstation.RecentScripts")->setValueFromQString(QString());
    for (QAction* action : inWindow.findChildren<QAction*>()) {
        if (action->menuRole() == QAction::PreferencesRole)
            action->trigger();
    }
    settle();
    isOk = take(*inWindow.findChild<QWidget*>("settings"), inFolder.filePath("settings.png")) && isOk;
    inWindow.findChild<QWidget*>("settings")->close();

    isOk = takeViewers(inWindow, ioViewers, inFolder) && isOk;
    isOk = takeTools(inWindow, ioViewers, inFolder) && isOk;
    useDarkColours();
    ioViewers.setLayout("1x2");
    inWindow.findChild<QAction*>("console.")->trigger();
    settle();
    return take(inWindow, inFolder.filePath("workstation-dark.png")) && isOk;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("screenshots SAMPLE OUTDIR\n", stderr);
        return 2;
    }
    QApplication::setWindowIcon(QIcon(":/kyworkstation/icon.png"));
    KyScriptingMenu::registerProperties();
    KyHostPlatform platform{KyHostOptions()};
    KyMainWindow window;
    const KyWorkstationViewers viewers(window);
    KyWorkstationTools tools(window, platform.reportEditor());
    tools.load(QString(), KyToolFiles::in(TOOLS));
    window.show();
    window.openFolder(arguments.at(1));
    auto* list = window.findChild<QTreeView*>("studyList");
    const bool isLoaded = QTest::qWaitFor([&] { return list->model()->rowCount() > 0; }, 20000);
    const QDir folder(arguments.at(2));
    return isLoaded && takeAll(window, viewers.area().viewers(), folder) ? 0 : 1;
}

// Runs the examples of dialogs in the workstation on the display at hand and writes pictures of them:
// screenshots_dialogs SAMPLE SCRIPTS OUTDIR

#include <common/KyHostPlatform.h>
#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptProgram.h>
#include <kyworkstation/KyMainWindow.h>
#include <kyworkstation/KyScriptingMenu.h>

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QStyleFactory>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <QTreeView>

#include <cstdio>

namespace {

/// Settles for a moment: the window manager places and draws its frames.
void settle()
{
    QTest::qWait(400);
}

QDialog& dialogTitled(const QString& inTitle)
{
    QDialog* found = nullptr;
    const bool isThere = QTest::qWaitFor([&] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->windowTitle() == inTitle)
                found = qobject_cast<QDialog*>(window);
        }
        return found != nullptr;
    });
    if (!isThere)
        qFatal("no dialog %s", qPrintable(inTitle));
    return *found;
}

/// A part of the screen.
bool take(const QRect& inRect, const QString& inFile)
{
    const QPixmap picture = QGuiApplication::primaryScreen()->grabWindow(0, inRect.x(), inRect.y(),
                                                                         inRect.width(), inRect.height());
    std::printf("%s %dx%d\n", qPrintable(inFile), picture.width(), picture.height());
    return picture.save(inFile);
}

QDialog& open(KyMainWindow& ioWindow, const QDir& inScripts, const QString& inFile, const QString& inTitle)
{
    ioWindow.runScript(inScripts.filePath("dialogs/" + inFile));
    QDialog& dialog = dialogTitled(inTitle);
    dialog.move(ioWindow.geometry().center() - dialog.rect().center());
    settle();
    return dialog;
}

void useDarkColours()
{
    QPalette dark(QColor(55, 57, 61), QColor(45, 47, 50));
    dark.setColor(QPalette::Base, QColor(30, 31, 33));
    dark.setColor(QPalette::Link, QColor(110, 170, 240));
    dark.setColor(QPalette::Highlight, QColor(42, 110, 187));
    QApplication::setPalette(dark);
}

bool takeExamples(KyMainWindow& ioWindow, const QDir& inScripts, const QDir& inFolder)
{
    QDialog& box = open(ioWindow, inScripts, "message_box.js", "Report");
    auto* later = box.findChildren<QPushButton*>().at(1);
    bool isOk = true;
    QTimer::singleShot(500, &box, [&] {
        const QRect all = box.frameGeometry().united(later->menu()->geometry());
        isOk = take(all, inFolder.filePath("dialog-message-box.png"));
        later->menu()->close();
    });
    QTest::mousePress(later, Qt::LeftButton);
    QTest::qWait(800);
    box.close();

    QDialog& viewer = open(ioWindow, inScripts, "text_viewer.js", "Studies");
    isOk = take(viewer.frameGeometry(), inFolder.filePath("dialog-text-viewer.png")) && isOk;
    viewer.close();

    QDialog& editor = open(ioWindow, inScripts, "editor.js", "Note");
    QTest::keyClicks(editor.findChild<QTextEdit*>("KyScriptDialog_edit"),
                     "Small nodule in the right upper lobe, 4 mm.");
    QTest::mouseClick(editor.findChildren<QPushButton*>().at(0), Qt::LeftButton);
    settle();
    isOk = take(editor.frameGeometry(), inFolder.filePath("dialog-editor.png")) && isOk;
    editor.close();

    QDialog& prompt = open(ioWindow, inScripts, "prompt.js", "Go to Date");
    prompt.findChild<QLineEdit*>()->setText("31.2.2024");
    QTest::keyClick(prompt.findChild<QLineEdit*>(), Qt::Key_Return);
    settle();
    isOk = take(prompt.frameGeometry(), inFolder.filePath("dialog-prompt.png")) && isOk;
    prompt.close();

    QDialog& busy = open(ioWindow, inScripts, "busy.js", "Checking Images");
    isOk = take(busy.frameGeometry(), inFolder.filePath("dialog-busy.png")) && isOk;
    busy.close();
    return isOk;
}

bool takeInWindow(KyMainWindow& ioWindow, const QDir& inScripts, const QDir& inFolder)
{
    useDarkColours();
    QDialog& viewer = open(ioWindow, inScripts, "text_viewer.js", "Studies");
    const bool isOk = take(ioWindow.frameGeometry(), inFolder.filePath("dialog-dark.png"));
    viewer.close();
    return isOk;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 4) {
        std::fputs("screenshots_dialogs SAMPLE SCRIPTS OUTDIR\n", stderr);
        return 2;
    }
    QApplication::setWindowIcon(QIcon(":/kyworkstation/icon.png"));
    KyScriptingMenu::registerProperties();
    KyHostPlatform platform{KyHostOptions()};
    KyMainWindow window;
    window.show();
    window.openFolder(arguments.at(1));
    auto* list = window.findChild<QTreeView*>("studyList");
    const bool isLoaded = QTest::qWaitFor([&] { return list->model()->rowCount() > 0; }, 20000);
    const QDir scripts(arguments.at(2)), folder(arguments.at(3));
    const bool isOk =
        isLoaded && takeExamples(window, scripts, folder) && takeInWindow(window, scripts, folder);
    return isOk ? 0 : 1;
}

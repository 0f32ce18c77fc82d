#pragma once

#include "KyStudyLoader.h"

#include <kybase/KyLoadHelper.h>

#include <QtWidgets/QMainWindow>

class KyScriptingMenu;
class KySettingsDialog;
class KyStudyListModel;
class KyStudyListView;
class QLabel;
class QProgressBar;
class QTextEdit;
class QToolButton;

/// The window of the workstation: the study list, the log, what scripts print, and the menus.
///
/// Made behind the host's platform and ended before it. While it lives it is the main window of the monitor
/// manager. Closing it closes the consoles and ends the program.
class KyMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    KyMainWindow();
    ~KyMainWindow() override;

public Q_SLOTS:
    /// Adds the studies below a folder to the session's primary or additional ones, in the background.
    void openFolder(const QString& inFolder, KyStudyLoader::Kind inKind = KyStudyLoader::Kind::Primary);

    /// Ends the studies of the session.
    void closeStudies();

    /// Runs the script on the default engine. Its errors, its value, and what it prints while no console has
    /// been opened, stand in the pane of script output.
    void runScript(const QString& inFile);

protected:
    void closeEvent(QCloseEvent* inEvent) override;
    void dragEnterEvent(QDragEnterEvent* inEvent) override;
    void dropEvent(QDropEvent* inEvent) override;

private:
    void makeStudyList();
    void makeDocks();
    void makeStatusBar();
    void makeMenus();
    QMenu* makeFileMenu();
    void makeViewMenu();
    void makeHelpMenu();
    void followLoader();
    void restoreLayout();
    void storeLayout();

    void chooseFolder(KyStudyLoader::Kind inKind);
    void addStudies(const QString& inFolder, KyStudyLoader::Kind inKind,
                    const Ovg::StudySourceResult& inResult);
    void showStudies();
    void showProgress(int inDone, int inTotal);
    void loadingFinished(bool inCancelled);
    void showSettings();
    void about();

    KyStudyLoader* const mLoader;
    KyStudyListModel* const mStudies;
    KyStudyListView* const mStudyList;
    QTextEdit* const mScriptOutput;
    QLabel* const mSummary;
    QProgressBar* const mProgress;
    QToolButton* const mCancel;
    KySettingsDialog* mSettings = nullptr;
    QString mLastResult; ///< What the last folder gave, for the status bar.
};

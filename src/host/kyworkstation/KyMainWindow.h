#pragma once

#include "KyStudyLoader.h"

#include <jxbase/JxMainWindow.h>

#include <QtGui/QKeySequence>

class KyLoadingStatus;
class KyScriptOutputPane;
class KySettingsDialog;
class KyStudyListModel;
class KyStudyListView;
class QDockWidget;
class QSplitter;
class QStackedWidget;

/// The window of the workstation: the study list with a place for viewers below it, panels around them, and
/// the menus.
///
/// Each menu and each panel is a class of its own that knows nothing of the window; the window connects them.
/// Made behind the host's platform and ended before it. While it lives it is the main window of the monitor
/// manager. Closing it closes the consoles and ends the program.
class KyMainWindow : public JxMainWindow
{
    Q_OBJECT

public:
    KyMainWindow();
    ~KyMainWindow() override;

    /// A panel: where it stands is kept under its name.
    struct Panel
    {
        QString name;
        QString title; ///< With the mnemonic of its menu entry.
        QKeySequence keys;
        /// Until the user's own state of it is known.
        bool isOpenAtFirst = true;
        Qt::DockWidgetArea area = Qt::BottomDockWidgetArea;
    };

    /// Adds a panel in its area, by default below the central one, as a tab of those that are there, or where
    /// the user has put the one of this name; the View menu gets an entry that shows and hides it. The window
    /// owns \a inContent.
    QDockWidget& addPanel(const Panel& inPanel, QWidget* inContent);

    /// Adds the tool bar, which the window owns, above or where the user has put the one of its object name;
    /// the View menu gets an entry that shows and hides it.
    void addTools(QToolBar* inToolBar);

    /// Puts \a inArea, which the window owns, below the study list, in place of the one before, which is
    /// deleted. Null leaves all the room to the study list, as at first.
    void setViewerArea(QWidget* inArea);
    /// Null when there is none.
    QWidget* viewerArea() const;

public Q_SLOTS:
    /// Adds the studies below a folder to the session's primary or additional ones, in the background. For a
    /// file that is its folder.
    void openFolder(const QString& inPath, KyStudyLoader::Kind inKind = KyStudyLoader::Kind::Primary);

    /// Ends the studies of the session.
    void closeStudies();

    /// Runs the script on the default engine and shows the pane of script output, where its errors, its value
    /// and what it prints stand.
    void runScript(const QString& inFile);

Q_SIGNALS:
    /// The session has other studies now.
    void studiesChanged();

protected:
    void closeEvent(QCloseEvent* inEvent) override;
    void dragEnterEvent(QDragEnterEvent* inEvent) override;
    void dropEvent(QDropEvent* inEvent) override;

private:
    void makeCentralArea();
    void makePanels();
    void makeMenus();
    void restoreLayout();
    void storeLayout();

    void showStudies();
    void showSettings();

    KyStudyLoader* const mLoader;
    KyStudyListModel* const mStudies;
    KyStudyListView* const mStudyList;
    QSplitter* const mCentralArea;
    QStackedWidget* const mViewerArea; ///< Hidden while it is empty.
    KyLoadingStatus* const mStatus;
    QMenu* const mViewMenu;
    KyScriptOutputPane* const mScriptOutput;
    KySettingsDialog* mSettings = nullptr;
};

#pragma once

#include <common/KyViewerLayout.h>

#include <QtWidgets/QMenu>

class QActionGroup;

/// The menu of the viewers: their layout, and how the active one shows what it shows. Also what a right click
/// on a viewer opens.
class KyViewerMenu : public QMenu
{
    Q_OBJECT

public:
    /// The layout stays its owner's, who ends the menu before it.
    KyViewerMenu(KyViewerLayout& inLayout, QWidget* inParent);

private:
    void addLayouts();
    void addOrientations();
    void addWindows();
    void addFusion();
    QAction* addForViewer(const QString& inText, const QKeySequence& inKeys, const QString& inTip,
                          const std::function<void(KyImageViewer&)>& inDo);
    /// Checks and enables the entries by what is so now.
    void refresh();
    void fillFusion();

    KyViewerLayout& mLayout;
    QActionGroup* const mLayouts;
    QActionGroup* const mOrientations;
    QMenu* const mWindows;
    QMenu* const mFusion;
    QAction* mInvert = nullptr;
    QList<QAction*> mForImages; ///< Enabled with something on show.
};

#include "KyWorkstationViewers.h"

#include "KyMainWindow.h"
#include "KyReadingTime.h"
#include "KyStudyListView.h"
#include "KyViewerArea.h"
#include "KyViewerMenu.h"

#include <common/KyViewerTools.h>

#include <QtWidgets/QMenuBar>

KyWorkstationViewers::KyWorkstationViewers(KyMainWindow& inWindow)
    : QObject(&inWindow)
    , mArea(new KyViewerArea)
    , mTools(KyViewerTools::make(mArea->viewers()))
{
    inWindow.setViewerArea(mArea);
    auto* menu = new KyViewerMenu(mArea->viewers(), &inWindow);
    inWindow.menuBar()->insertMenu(inWindow.findChild<QMenu*>(QStringLiteral("scriptingMenu"))->menuAction(),
                                   menu);
    connect(mArea, &KyViewerArea::menuWanted, menu, [menu](const QPoint& place) { menu->popup(place); });
    connect(inWindow.findChild<KyStudyListView*>(), &KyStudyListView::seriesWanted, mArea,
            [this](const KyViewerLayer& layer) { mArea->open(layer); });
    connect(&inWindow, &KyMainWindow::studiesChanged, mArea, &KyViewerArea::followSession);
    mArea->followSession();
    new KyReadingTime(inWindow);
}

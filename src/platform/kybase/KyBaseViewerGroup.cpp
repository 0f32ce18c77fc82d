#include "KyBaseViewerGroup.h"

#include "KyViewerManager.h"

KyBaseViewerGroup::KyBaseViewerGroup(const KyBaseViewer* inViewer, GroupType inGroup, Ky::ViewerType inType)
{
    const auto* manager = KyViewerManager::getInstance();
    for (int i = 0; manager && i < manager->numViewers(); ++i) {
        KyBaseViewer* viewer = manager->viewer(i);
        const bool inTheGroup =
            viewer && (inGroup == ActiveLayout || (inGroup == SingleViewer && viewer == inViewer));
        if (inTheGroup && (inType == Ky::ViewerTypeAny || viewer->viewerType() == inType))
            mViewers.push_back(viewer);
    }
}

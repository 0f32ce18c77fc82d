#include "KyBaseViewer.h"

#include "KyViewerManager.h"

KyBaseViewer::KyBaseViewer(Ky::ViewerType inType)
    : mType(inType)
{
    if (auto* manager = KyViewerManager::getInstance())
        manager->addViewer(this);
}

KyBaseViewer::~KyBaseViewer()
{
    if (auto* manager = KyViewerManager::getInstance())
        manager->removeViewer(this);
}

OvVolume* KyBaseViewer::volume(int)
{
    return nullptr;
}

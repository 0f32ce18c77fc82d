#include "KyBaseViewer.h"

#include "KyViewerManager.h"

KyConditionSource::~KyConditionSource() = default;

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

const std::string& KyBaseViewer::protocolDisplaySetId() const
{
    static const std::string none;
    return none;
}

OvImageSeries* KyBaseViewer::imageSeries(int)
{
    return nullptr;
}

OvVolume* KyBaseViewer::volume(int)
{
    return nullptr;
}

OvSlice* KyBaseViewer::slice(int)
{
    return nullptr;
}

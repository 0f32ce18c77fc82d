#include "KyViewerManager.h"

#include <algorithm>

namespace {

KyViewerManager* sInstance = nullptr;

} // namespace

KyViewerManager::KyViewerManager()
{
    sInstance = this;
}

KyViewerManager::~KyViewerManager()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KyViewerManager* KyViewerManager::getInstance()
{
    return sInstance;
}

KyBaseViewer* KyViewerManager::viewer(int inIndex) const
{
    return inIndex >= 0 && inIndex < KyViewerManager::numViewers()
               ? mViewers[static_cast<std::size_t>(inIndex)]
               : nullptr;
}

void KyViewerManager::setActiveViewer(KyBaseViewer* inViewer)
{
    const bool known = !inViewer || std::find(mViewers.begin(), mViewers.end(), inViewer) != mViewers.end();
    if (!known || inViewer == mActiveViewer)
        return;
    mActiveViewer = inViewer;
    emit activeViewerChanged(inViewer);
}

void KyViewerManager::addViewer(KyBaseViewer* inViewer)
{
    mViewers.push_back(inViewer);
    emit viewersChanged();
}

void KyViewerManager::removeViewer(const KyBaseViewer* inViewer)
{
    if (std::erase(mViewers, inViewer) == 0)
        return;
    if (mActiveViewer == inViewer)
        setActiveViewer(nullptr);
    emit viewersChanged();
}

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
    return inIndex >= 0 && inIndex < numViewers() ? mViewers[static_cast<std::size_t>(inIndex)] : nullptr;
}

void KyViewerManager::setActiveViewer(KyBaseViewer* inViewer)
{
    if (!inViewer || std::find(mViewers.begin(), mViewers.end(), inViewer) != mViewers.end())
        mActiveViewer = inViewer;
}

void KyViewerManager::addViewer(KyBaseViewer* inViewer)
{
    mViewers.push_back(inViewer);
}

void KyViewerManager::removeViewer(const KyBaseViewer* inViewer)
{
    std::erase(mViewers, inViewer);
    if (mActiveViewer == inViewer)
        mActiveViewer = nullptr;
}

#include "KyMonitorManager.h"

namespace {

KyMonitorManager* sInstance = nullptr;

} // namespace

KyMonitorManager::KyMonitorManager()
{
    sInstance = this;
}

KyMonitorManager::~KyMonitorManager()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KyMonitorManager* KyMonitorManager::instance()
{
    return sInstance;
}

QWidget* KyMonitorManager::parentForModalWidget()
{
    return sInstance ? sInstance->mMainWindow.data() : nullptr;
}

QWidget* KyMonitorManager::parentForGlobalNonModalWidget(const QString&)
{
    return sInstance ? sInstance->mMainWindow.data() : nullptr;
}

KyMonitorContent* KyMonitorManager::content(const QString& inId)
{
    return &mContents.try_emplace(inId, inId).first->second;
}

QList<JxMainWindow*> KyMonitorManager::mainWindows(const KyMonitorContent* inContent) const
{
    return inContent ? inContent->mainWindows() : QList<JxMainWindow*>();
}

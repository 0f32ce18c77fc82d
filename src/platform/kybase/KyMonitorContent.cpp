#include "KyMonitorContent.h"

#include <jxbase/JxMainWindow.h>

KyMonitorContent::KyMonitorContent(QString inId)
    : mId(std::move(inId))
{}

QList<JxMainWindow*> KyMonitorContent::mainWindows() const
{
    return QList<JxMainWindow*>(mMainWindows.begin(), mMainWindows.end());
}

void KyMonitorContent::addMainWindow(JxMainWindow* inWindow)
{
    mMainWindows.append(inWindow);
}

void KyMonitorContent::removeMainWindow(const JxMainWindow* inWindow)
{
    mMainWindows.removeIf([&](const QPointer<JxMainWindow>& window) { return window == inWindow; });
}

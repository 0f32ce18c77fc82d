#include "KyTool.h"

#include "KyBaseViewer.h"
#include "KyToolRegistry.h"
#include "KyToolUI.h"

namespace {

bool sTriggeredByScript = false;

} // namespace

KyTool::KyTool(const char* inDecorationKey)
    : mDecorationKey(inDecorationKey ? inDecorationKey : "")
{
    KyToolRegistry::add(*this);
}

/// One by one from the list: to disable a UI may end another one.
KyTool::~KyTool()
{
    KyToolRegistry::remove(*this);
    while (!mUIs.empty()) {
        KyToolUI* const ui = mUIs.back();
        mUIs.pop_back();
        ui->toolEnded();
    }
}

bool KyTool::supportsViewer(const KyBaseViewer* inViewer) const
{
    // To ask what a viewer shows changes nothing, but gives what may be changed.
    auto* viewer = const_cast<KyBaseViewer*>(inViewer);
    return viewer && (viewer->imageSeries(0) || viewer->volume(0));
}

void KyTool::setActive(bool inActive)
{
    const bool isActive = inActive && isActivatable();
    if (isActive == mIsActive)
        return;
    mIsActive = isActive;
    refreshUIs();
}

bool KyTool::trigger(KyBaseViewer* inViewer)
{
    return run(inViewer, !isActivatable() || !mIsActive);
}

bool KyTool::takeBack(KyBaseViewer* inViewer)
{
    return run(inViewer, false);
}

bool KyTool::run(KyBaseViewer* inViewer, bool inFlag)
{
    const auto self = weak_from_this().lock();
    const RnHandle<KyBaseViewer> viewer(inViewer);
    if (!supportsViewer(inViewer))
        return false;
    const bool wasActive = mIsActive;
    setActive(inFlag);
    const bool isDone = process(inViewer, inFlag);
    if (!isDone)
        setActive(wasActive);
    return isDone;
}

std::set<std::string> KyTool::hotKeyScope() const
{
    return {HotKeyInWindow};
}

/// By index: to refresh a UI may make or end others.
void KyTool::refreshUIs() const
{
    const auto self = weak_from_this().lock();
    for (std::size_t i = 0; i < mUIs.size(); ++i)
        mUIs[i]->refresh();
}

void KyTool::addUI(KyToolUI* inUI)
{
    mUIs.push_back(inUI);
}

void KyTool::removeUI(KyToolUI* inUI)
{
    std::erase(mUIs, inUI);
}

void KyTool::setTriggeredByScript(bool inTriggered)
{
    sTriggeredByScript = inTriggered;
}

bool KyTool::triggeredByScript()
{
    return sTriggeredByScript;
}

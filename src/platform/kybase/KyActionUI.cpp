#include "KyActionUI.h"

#include "KyBaseViewer.h"
#include "KyTool.h"
#include "KyViewerManager.h"

#include <QPointer>

namespace {

KyBaseViewer* activeViewer()
{
    const KyViewerManager* manager = KyViewerManager::getInstance();
    return manager ? manager->activeViewer() : nullptr;
}

} // namespace

KyActionUI* KyActionUI::createAction(std::shared_ptr<KyTool> inTool,
                                     const std::set<std::string>& inHotKeyScope, QObject* inParent)
{
    auto* action = new KyActionUI(inTool, inParent);
    if (!inTool) {
        action->setEnabled(false);
        return action;
    }
    action->setShortcutContext(inHotKeyScope.count(KyTool::HotKeyInApplication) ? Qt::ApplicationShortcut
                                                                                : Qt::WindowShortcut);
    if (!inHotKeyScope.empty())
        action->setShortcut(
            QKeySequence::fromString(QString::fromStdString(inTool->hotKey()), QKeySequence::PortableText));
    action->refresh();
    return action;
}

KyActionUI::KyActionUI(const std::shared_ptr<KyTool>& inTool, QObject* inParent)
    : QAction(inParent)
    , KyToolUI(inTool)
{
    connect(this, &QAction::triggered, this, &KyActionUI::triggerTool);
    connect(this, &QAction::toggled, this, &KyActionUI::followState);
    if (const KyViewerManager* manager = KyViewerManager::getInstance()) {
        connect(manager, &KyViewerManager::activeViewerChanged, this, &KyActionUI::followViewer);
        connect(manager, &KyViewerManager::contentChanged, this, [this](const KyBaseViewer* viewer) {
            if (viewer == activeViewer())
                followViewer();
        });
    }
}

void KyActionUI::triggerTool()
{
    const auto ran = tool();
    if (ran && !ran->isActivatable())
        ran->trigger(activeViewer());
}

void KyActionUI::followState(bool inChecked)
{
    const auto turned = tool();
    if (!turned || !turned->isActivatable() || inChecked == turned->isActive())
        return;
    const QPointer<KyActionUI> self(this);
    if (!turned->trigger(activeViewer()) && self)
        self->refresh();
}

void KyActionUI::takeBack()
{
    const auto ran = tool();
    if (ran && !ran->isActivatable())
        ran->takeBack(activeViewer());
}

void KyActionUI::followViewer()
{
    const auto shown = tool();
    setEnabled(shown && shown->supportsViewer(activeViewer()));
}

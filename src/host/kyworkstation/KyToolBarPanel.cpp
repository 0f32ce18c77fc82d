#include "KyToolBarPanel.h"

#include <kybase/KyActionUI.h>
#include <kybase/KyApplication.h>
#include <kybase/KyToolRegistry.h>
#include <rnlib/RnLogFile.h>

#include <QtGui/QMouseEvent>
#include <QtWidgets/QToolButton>

namespace {

constexpr QSize IconSize(24, 24);

/// Those that the registry finds by their keys.
std::vector<std::shared_ptr<KyTool>> toolsInForce()
{
    std::vector<std::shared_ptr<KyTool>> tools = KyToolRegistry::tools();
    std::erase_if(tools, [](const std::shared_ptr<KyTool>& tool) {
        return KyToolRegistry::getToolByDecorationKey<KyTool>(tool->decorationKey().c_str(), true) != tool;
    });
    return tools;
}

QString groupOf(const KyTool& inTool)
{
    const KyApplication* application = KyApplication::instance();
    const KyToolDecorations* decorations = application ? application->toolDecorations() : nullptr;
    return decorations ? decorations->group(inTool.decorationKey().c_str()) : QString();
}

} // namespace

KyToolBarPanel::KyToolBarPanel(QWidget* inParent)
    : QToolBar(tr("Tools"), inParent)
{
    setObjectName(QStringLiteral("toolBar"));
    setIconSize(IconSize);
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
}

void KyToolBarPanel::showTools()
{
    clear();
    qDeleteAll(findChildren<KyActionUI*>(QString(), Qt::FindDirectChildrenOnly));
    auto tools = toolsInForce();
    if (tools.size() > MaxTools) {
        getTheLogInstance().tracef(2, "Tools", "The tool bar shows %d of %d tools", MaxTools,
                                   int(tools.size()));
        tools.resize(MaxTools);
    }
    QString group = tools.empty() ? QString() : groupOf(*tools.front());
    for (const auto& tool : tools) {
        const QString own = groupOf(*tool);
        if (own != group)
            addSeparator();
        group = own;
        addTool(KyActionUI::createAction(tool, tool->hotKeyScope(), this));
    }
}

void KyToolBarPanel::addTool(KyActionUI* inAction)
{
    addAction(inAction);
    updateButton(inAction);
    connect(inAction, &QAction::changed, this, [this, inAction] { updateButton(inAction); });
    if (QWidget* button = widgetForAction(inAction))
        button->installEventFilter(this);
}

/// A label under a missing icon would stand below an empty place.
void KyToolBarPanel::updateButton(KyActionUI* inAction)
{
    auto* button = qobject_cast<QToolButton*>(widgetForAction(inAction));
    if (!button)
        return;
    button->setToolButtonStyle(inAction->icon().isNull() ? Qt::ToolButtonTextOnly : toolButtonStyle());
    button->setObjectName(
        QLatin1String("tool.") +
        QString::fromLatin1(inAction->tool() ? inAction->tool()->decorationKey().c_str() : ""));
}

bool KyToolBarPanel::eventFilter(QObject* inWatched, QEvent* inEvent)
{
    auto* button = qobject_cast<QToolButton*>(inWatched);
    auto* action = button ? qobject_cast<KyActionUI*>(button->defaultAction()) : nullptr;
    if (!action || action->isCheckable() || inEvent->type() != QEvent::MouseButtonRelease)
        return QToolBar::eventFilter(inWatched, inEvent);
    const auto* mouse = static_cast<QMouseEvent*>(inEvent);
    const bool takesBack = mouse->button() == Qt::LeftButton && mouse->modifiers() == Qt::ShiftModifier &&
                           button->isDown() && button->rect().contains(mouse->pos());
    if (!takesBack)
        return QToolBar::eventFilter(inWatched, inEvent);
    button->setDown(false);
    action->takeBack();
    return true;
}

#include "KyCommandTool.h"

#include <kybase/KyApplication.h>

KyCommandTool::KyCommandTool(const char* inKey, Kind inKind, Work inWork)
    : UnDeletable(inKey)
    , mKind(inKind)
    , mWork(std::move(inWork))
{}

std::shared_ptr<KyCommandTool> KyCommandTool::make(const char* inKey, const Looks& inLooks, Kind inKind,
                                                   Work inWork)
{
    const KyApplication* application = KyApplication::instance();
    if (KyToolDecorations* decorations = application ? application->toolDecorations() : nullptr)
        decorations->registerDecoration(QLatin1String(inKey), inLooks.group, inLooks.icon, QString(),
                                        inLooks.toolTip, inLooks.label, QString());
    const std::shared_ptr<KyCommandTool> tool(new KyCommandTool(inKey, inKind, std::move(inWork)));
    tool->setHotKey(inLooks.hotKey);
    return tool;
}

#include "KyViewerTools.h"

#include "KyCommandTool.h"
#include "KyViewerLayout.h"

#include <QtCore/QCoreApplication>

std::vector<std::shared_ptr<KyTool>> KyViewerTools::make(KyViewerLayout& inLayout)
{
    struct Layout
    {
        const char* key;
        const char* layout;
        const char* icon;
        const char* toolTip;
    };
    constexpr Layout layouts[] = {
        {"Viewers.Layout1x1", "1x1", "layout-1x1.svg", QT_TRANSLATE_NOOP("KyViewerTools", "One viewer")},
        {"Viewers.Layout1x2", "1x2", "layout-1x2.svg", QT_TRANSLATE_NOOP("KyViewerTools", "Two viewers")},
        {"Viewers.Layout2x2", "2x2", "layout-2x2.svg", QT_TRANSLATE_NOOP("KyViewerTools", "Four viewers")}};
    std::vector<std::shared_ptr<KyTool>> tools;
    for (const Layout& layout : layouts) {
        const QString name = QLatin1String(layout.layout);
        tools.push_back(
            KyCommandTool::make(layout.key,
                                {.group = QStringLiteral("Viewers"),
                                 .icon = QLatin1String(layout.icon),
                                 .label = name,
                                 .toolTip = QCoreApplication::translate("KyViewerTools", layout.toolTip),
                                 .hotKey = {}},
                                KyCommandTool::Kind::Command,
                                [&inLayout, name](bool on) { return on && inLayout.setLayout(name); }));
    }
    return tools;
}

#include "KyViewerTools.h"

#include "KyCommandTool.h"
#include "KyViewerLayout.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>

namespace {

struct LayoutTool
{
    const char* key;
    const char* layout;
    const char* icon;
    const char* toolTip;
};

constexpr LayoutTool layoutTools[] = {
    {"Viewers.Layout1x1", "1x1", "layout-1x1.svg", QT_TRANSLATE_NOOP("KyViewerTools", "One viewer")},
    {"Viewers.Layout1x2", "1x2", "layout-1x2.svg", QT_TRANSLATE_NOOP("KyViewerTools", "Two viewers")},
    {"Viewers.Layout2x2", "2x2", "layout-2x2.svg", QT_TRANSLATE_NOOP("KyViewerTools", "Four viewers")}};

std::shared_ptr<KyTool> makeTool(const LayoutTool& inWhat, KyViewerLayout& inLayout)
{
    const QString name = QLatin1String(inWhat.layout);
    const auto self = std::make_shared<std::weak_ptr<KyTool>>();
    const QPointer<KyViewerLayout> layout = &inLayout;
    const auto showState = [layout, name, self] {
        const auto tool = self->lock();
        if (tool && layout)
            tool->setActive(layout->layout() == name);
    };
    // Turned off, it is turned on again.
    const auto work = [layout, name, showState](bool) {
        const bool isDone = layout && layout->setLayout(name);
        showState();
        return isDone;
    };
    const auto tool =
        KyCommandTool::make(inWhat.key,
                            {.group = QStringLiteral("Viewers"),
                             .icon = QLatin1String(inWhat.icon),
                             .label = name,
                             .toolTip = QCoreApplication::translate("KyViewerTools", inWhat.toolTip),
                             .hotKey = {}},
                            KyCommandTool::Kind::Switch, work);
    *self = tool;
    QObject::connect(&inLayout, &KyViewerLayout::layoutChanged, &inLayout, showState);
    showState();
    return tool;
}

} // namespace

std::vector<std::shared_ptr<KyTool>> KyViewerTools::make(KyViewerLayout& inLayout)
{
    std::vector<std::shared_ptr<KyTool>> tools;
    for (const LayoutTool& what : layoutTools)
        tools.push_back(makeTool(what, inLayout));
    return tools;
}

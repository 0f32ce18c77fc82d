#include "KyRunTools.h"

#include <common/KyToolFiles.h>
#include <kybase/KyToolRegistry.h>
#include <kybase/KyViewerManager.h>

namespace {

std::shared_ptr<KyTool> toolOf(const QString& inKey)
{
    return KyToolRegistry::getToolByDecorationKey<KyTool>(inKey.toLatin1().constData(), true);
}

QString knownKeys()
{
    constexpr qsizetype MostNamed = 20;
    QStringList keys;
    for (const auto& tool : KyToolRegistry::tools())
        keys.append(QString::fromLatin1(tool->decorationKey().c_str()));
    keys.removeDuplicates();
    if (keys.isEmpty())
        return QStringLiteral("no tools are loaded, see --tools");
    const bool isLong = keys.size() > MostNamed;
    return QStringLiteral("there are ") + keys.mid(0, MostNamed).join(QLatin1String(", ")) +
           (isLong ? QStringLiteral(" …") : QString());
}

} // namespace

QString KyRunTools::load(const QStringList& inFiles)
{
    for (const QString& file : inFiles) {
        const QString error = KyToolFiles::load(file);
        if (!error.isEmpty())
            return error;
    }
    return QString();
}

QString KyRunTools::findUnknown(const QStringList& inKeys)
{
    for (const QString& key : inKeys) {
        if (!toolOf(key))
            return QStringLiteral("There is no tool \"%1\"; %2").arg(key, knownKeys());
    }
    return QString();
}

QString KyRunTools::trigger(const QString& inKey)
{
    const auto tool = toolOf(inKey);
    if (!tool)
        return findUnknown({inKey});
    KyBaseViewer* viewer = KyViewerManager::getInstance()->activeViewer();
    if (!tool->supportsViewer(viewer))
        return viewer
                   ? QStringLiteral("The tool \"%1\" does not support the active viewer").arg(inKey)
                   : QStringLiteral("The tool \"%1\" needs an active viewer, and there is none").arg(inKey);
    return tool->trigger(viewer) ? QString() : QStringLiteral("The tool \"%1\" did nothing").arg(inKey);
}

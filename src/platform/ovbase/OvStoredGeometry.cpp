#include "OvStoredGeometry.h"

#include "OvRegistry.h"

#include <QStringList>

#include <algorithm>

namespace {

int bounded(int inEdge)
{
    return std::clamp(inEdge, -OvStoredGeometry::MaxEdge, OvStoredGeometry::MaxEdge);
}

} // namespace

QString OvStoredGeometry::id(const QString& inKey)
{
    return QStringLiteral("GUI.Geometry.") + inKey;
}

QString OvStoredGeometry::text(const QString& inId)
{
    OvRegistry::Value stored;
    const OvRegistry* registry = OvRegistry::getInstance();
    return registry && registry->getProperty(inId, stored) ? stored.value : QString();
}

void OvStoredGeometry::setText(const QString& inId, const QString& inText)
{
    OvRegistry::Value stored;
    OvRegistry* registry = OvRegistry::getInstance();
    if (registry &&
        !(registry->getProperty(inId, stored, OvRegistry::UserPriority) && stored.value == inText))
        registry->setProperty(inId, inText, OvRegistry::UserPriority);
}

QRect OvStoredGeometry::read(const QString& inKey)
{
    const QStringList edges = text(id(inKey)).split(QLatin1Char(' '));
    if (inKey.isEmpty() || edges.size() != 4)
        return QRect();
    const auto edge = [&](int inIndex) { return bounded(edges.at(inIndex).toInt()); };
    return QRect(QPoint(edge(0), edge(1)), QPoint(edge(2), edge(3)));
}

void OvStoredGeometry::write(const QRect& inGeometry, const QString& inKey)
{
    if (inKey.isEmpty())
        return;
    setText(id(inKey), QStringLiteral("%1 %2 %3 %4")
                           .arg(bounded(inGeometry.left()))
                           .arg(bounded(inGeometry.top()))
                           .arg(bounded(inGeometry.right()))
                           .arg(bounded(inGeometry.bottom())));
}

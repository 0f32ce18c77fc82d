#pragma once

#include <QRect>
#include <QString>

/// Places and sizes of windows in the registry's user layer, under "GUI.Geometry." and a key.
///
/// Always there; without an OvRegistry nothing is kept. GUI thread.
class OvStoredGeometry
{
public:
    OvStoredGeometry() = delete;

    /// Edges beyond this, as no screen has them, are brought to it.
    static constexpr int MaxEdge = (1 << 24) - 1;

    /// What was stored under \a inKey; an empty rectangle when there is nothing.
    static QRect read(const QString& inKey);
    /// Stores a rectangle, an empty one too. With an empty key nothing is kept.
    static void write(const QRect& inGeometry, const QString& inKey);

    /// The id in the registry for a key.
    static QString id(const QString& inKey);
    /// The text that is kept under an id, in effect; empty without one.
    static QString text(const QString& inId);
    /// Keeps a text under an id, unless it stands there already.
    static void setText(const QString& inId, const QString& inText);
};

#pragma once

#include <ovbase/OvStoredGeometry.h>

#include <QAnyStringView>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>

class QWidget;

/// Keeps where the client's windows stand and how large they are, from one start to the next.
///
/// The geometry of a window is kept in the registry's user layer under "GUI.Geometry." and the window's key.
/// Always there; without an OvRegistry nothing is restored and nothing is kept. GUI thread only.
class KyGUISizeManager
{
public:
    /// Gives \a ioWidget the geometry that is stored under \a inKey, or else the initial one, and keeps the
    /// stored geometry current from now on, as long as the widget lives.
    ///
    /// A stored geometry covers size, position, and whether the window is maximized or in full screen; one
    /// that would lie outside the connected screens is moved inside. \a inInitialPosition is the upper left
    /// corner of the frame in the usable area of the widget's screen. An \a inInitialSize that is empty
    /// leaves the size to the widget. Windows may share a key: who changes last is kept. With an empty key
    /// nothing is kept. A null widget is ignored.
    static void makeWidgetGeometryPersistent(QWidget* ioWidget, QAnyStringView inKey,
                                             const QSize& inInitialSize, const QPoint& inInitialPosition);

    /// What storeWidgetGeometry() has stored under \a inKey; an empty rectangle when there is nothing.
    static QRect storedWidgetGeometry(const QString& inKey);
    /// Stores a place and a size, an empty one too, under \a inKey for later runs of the application. Edges
    /// beyond MaxEdge, as no screen has them, are brought to it. With an empty key nothing is kept.
    static void storeWidgetGeometry(const QRect& inGeometry, const QString& inKey);

    static constexpr int MaxEdge = OvStoredGeometry::MaxEdge;
};

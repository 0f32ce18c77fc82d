#include "JxTopLevelWidget.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace {

/// The part of a title bar with which a user can move the window.
constexpr QSize sHandle(48, 16);

int squaredDistance(const QRect& inArea, const QPoint& inPoint)
{
    const int x = std::max({inArea.left() - inPoint.x(), inPoint.x() - inArea.right(), 0});
    const int y = std::max({inArea.top() - inPoint.y(), inPoint.y() - inArea.bottom(), 0});
    return x * x + y * y;
}

} // namespace

JxTopLevelWidget::JxTopLevelWidget(QWidget* inParent, Qt::WindowFlags inFlags)
    : JxTopLevelWidgetWrapper<QWidget>(inParent, inFlags)
{}

QRect JxTopLevelWidget::reachableFrame(const QRect& inFrame, const QList<QRect>& inAreas)
{
    const QRect handle(inFrame.topLeft(), sHandle.boundedTo(inFrame.size()));
    const auto holdsHandle = [&](const QRect& area) { return area.contains(handle); };
    if (inAreas.isEmpty() || std::any_of(inAreas.begin(), inAreas.end(), holdsHandle))
        return inFrame;

    const auto isNearer = [&](const QRect& a, const QRect& b) {
        return squaredDistance(a, inFrame.topLeft()) < squaredDistance(b, inFrame.topLeft());
    };
    const QRect area = *std::min_element(inAreas.begin(), inAreas.end(), isNearer);
    QRect frame(inFrame.topLeft(), inFrame.size().boundedTo(area.size()));
    frame.moveRight(std::min(frame.right(), area.right()));
    frame.moveBottom(std::min(frame.bottom(), area.bottom()));
    frame.moveLeft(std::max(frame.left(), area.left()));
    frame.moveTop(std::max(frame.top(), area.top()));
    return frame;
}

QList<QRect> JxTopLevelWidget::screenAreas()
{
    QList<QRect> areas;
    const auto screens = QGuiApplication::screens();
    for (const QScreen* screen : screens)
        areas.append(screen->availableGeometry());
    return areas;
}

void JxTopLevelWidget::bringBack(QWidget& ioWindow)
{
    if (ioWindow.windowState() != Qt::WindowNoState || !ioWindow.testAttribute(Qt::WA_Moved))
        return;

    const QRect present = ioWindow.frameGeometry();
    const QRect frame = reachableFrame(present, screenAreas());
    if (frame == present)
        return;
    ioWindow.resize(ioWindow.size() - (present.size() - frame.size()));
    ioWindow.move(frame.topLeft());
}

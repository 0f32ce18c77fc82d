#pragma once

#include <QList>
#include <QRect>
#include <QWidget>

/// What all top-level windows of the client have in common, on top of the Qt class that they are.
///
/// A window that becomes visible comes up where the user can reach it: when the monitor on which it stood has
/// gone, it moves to one that is connected.
template <class Base>
class JxTopLevelWidgetWrapper : public Base
{
public:
    using Base::Base;

    void setVisible(bool inVisible) override;
};

/// A plain top-level window of the client.
///
/// It belongs to its parent, or without one to whoever made it. GUI thread only.
class JxTopLevelWidget : public JxTopLevelWidgetWrapper<QWidget>
{
    Q_OBJECT

public:
    explicit JxTopLevelWidget(QWidget* inParent = nullptr, Qt::WindowFlags inFlags = {});

    /// Where a window with the frame \a inFrame is to stand, so that the user can reach it: unchanged when
    /// the upper left part of its title bar lies in one of \a inAreas; otherwise moved into the area that is
    /// nearest, and made smaller when it is larger than that. Unchanged without an area. In pixels of the
    /// desktop.
    static QRect reachableFrame(const QRect& inFrame, const QList<QRect>& inAreas);

    /// The parts of the connected screens that windows may use, the primary screen first.
    static QList<QRect> screenAreas();

    /// Moves \a ioWindow to its reachableFrame() on the connected screens. One that is maximized, minimized
    /// or in full screen stays where it is, as does one that was never moved: the window system places it.
    static void bringBack(QWidget& ioWindow);
};

template <class Base>
void JxTopLevelWidgetWrapper<Base>::setVisible(bool inVisible)
{
    if (inVisible && this->isWindow())
        JxTopLevelWidget::bringBack(*this);
    Base::setVisible(inVisible);
}

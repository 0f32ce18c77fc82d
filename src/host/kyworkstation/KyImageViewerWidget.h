#pragma once

#include "KyPlaneImage.h"
#include "KyTextImage.h"

#include <common/KyViewerTexts.h>

#include <QtWidgets/QWidget>

#include <array>
#include <optional>

class QSlider;

/// Draws one viewer and turns what mouse, wheel and keys do into what it shows.
///
/// | input | effect |
/// |---|---|
/// | wheel; Up, Down; Page Up, Page Down; Home, End | one plane; one; ten; the first, the last |
/// | left button | window: to the right wider, downwards brighter |
/// | middle button, or Shift and the left one | moves the image |
/// | Ctrl and the wheel; Ctrl and the left button; +, - | zoom |
/// | double click | this viewer alone, and back |
/// | right click | menuWanted() |
/// | A, S, C; I; R | axial, sagittal, coronal planes; black and white swapped; all as at first |
///
/// Any click makes the viewer the active one. The background is black whatever the colours of the
/// application, since eyes adapt to what surrounds an image.
class KyImageViewerWidget : public QWidget
{
    Q_OBJECT

public:
    /// Draws \a inViewer, which it keeps.
    explicit KyImageViewerWidget(KyImageViewer& inViewer, QWidget* inParent = nullptr);
    ~KyImageViewerWidget() override;

    /// Good until retire().
    KyImageViewer& viewer() const { return *mViewer; }

    /// Lets go of the viewer, hides the widget, and deletes it when the events that it is in have ended.
    void retire();

    /// Where the plane stands in the widget.
    QRectF imageRect() const;

    void setActive(bool inActive);
    bool isActive() const { return mIsActive; }

Q_SIGNALS:
    void menuWanted(const QPoint& inGlobal);
    /// A double click.
    void aloneWanted();
    void seriesDropped(const KyViewerLayer& inLayer, bool inFuse);

protected:
    void paintEvent(QPaintEvent* inEvent) override;
    void resizeEvent(QResizeEvent* inEvent) override;
    void wheelEvent(QWheelEvent* inEvent) override;
    void keyPressEvent(QKeyEvent* inEvent) override;
    void mousePressEvent(QMouseEvent* inEvent) override;
    void mouseMoveEvent(QMouseEvent* inEvent) override;
    void mouseReleaseEvent(QMouseEvent* inEvent) override;
    void mouseDoubleClickEvent(QMouseEvent* inEvent) override;
    void contextMenuEvent(QContextMenuEvent* inEvent) override;
    void dragEnterEvent(QDragEnterEvent* inEvent) override;
    void dragLeaveEvent(QDragLeaveEvent* inEvent) override;
    void dropEvent(QDropEvent* inEvent) override;
    void focusInEvent(QFocusEvent* inEvent) override;

private:
    enum class Action
    {
        None,
        Window,
        Pan,
        Zoom,
    };

    /// What a drag began with.
    struct Drag
    {
        Action action = Action::None;
        QPointF place;
        OvWindow window;
        KyImageViewer::View view;
    };

    void letGo();
    void viewerChanged();
    void makeSlider();
    /// False when that has retired the widget.
    bool activate();
    void scrollByWheel(const QWheelEvent& inEvent);
    void zoomAround(const QPointF& inPlace, double inFactor);
    void dragWindow(const QPointF& inDistance);
    void dragPan(const QPointF& inDistance);
    void drawTexts(QPainter& ioPainter);
    void drawMessages(QPainter& ioPainter) const;
    void drawFrame(QPainter& ioPainter) const;

    RnHandle<KyImageViewer> mViewer; ///< Null once retired, which any change of the viewer may lead to.
    KyPlaneImage mPlane;
    KyViewerTexts mTexts;
    std::array<KyTextImage, 8> mTextImages; ///< In the order in which they are drawn.
    QSlider* mWeight = nullptr;             ///< Shown with a second layer.
    Drag mDrag;
    double mWheelRest = 0; ///< Of a notch, that touch pads turn in parts.
    bool mIsActive = false;
    bool mIsDropTarget = false;
};

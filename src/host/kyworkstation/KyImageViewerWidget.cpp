#include "KyImageViewerWidget.h"

#include "KySeriesDrag.h"

#include <kybase/KyViewerManager.h>

#include <QtCore/QMimeData>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QSlider>

#include <cmath>
#include <utility>

namespace {

constexpr int Margin = 8;          ///< Of texts from the edge, in pixels.
constexpr double WheelNotch = 120; ///< QWheelEvent::angleDelta of one.
constexpr double ZoomStep = 1.2;
constexpr int PageOfPlanes = 10;
constexpr int SliderSteps = 100;

const QColor TextColour(225, 225, 225);
const QColor LetterColour(150, 200, 255);
const QColor NoticeColour(255, 205, 90);

QString joined(const QStringList& inLines)
{
    return inLines.join(QLatin1Char('\n'));
}

/// Text that is readable over black and over white.
void drawText(QPainter& ioPainter, const QRect& inRect, int inFlags, const QString& inText,
              const QColor& inColour)
{
    if (inText.isEmpty())
        return;
    ioPainter.setPen(Qt::black);
    ioPainter.drawText(inRect.translated(1, 1), inFlags, inText);
    ioPainter.setPen(inColour);
    ioPainter.drawText(inRect, inFlags, inText);
}

/// Text on a plate of its own, for what must be seen; gives the plate.
QRect drawPlate(QPainter& ioPainter, const QRect& inRect, int inFlags, const QString& inText,
                const QColor& inColour)
{
    if (inText.isEmpty())
        return QRect(inRect.topLeft(), QSize(0, 0));
    constexpr int Padding = 6;
    const int flags = inFlags | Qt::TextWordWrap;
    const QRect room = inRect.adjusted(Padding, Padding, -Padding, -Padding);
    const QRect text = ioPainter.boundingRect(room, flags, inText);
    const QRect plate = text.adjusted(-Padding - 2, -Padding + 2, Padding + 2, Padding - 2);
    ioPainter.setRenderHint(QPainter::Antialiasing);
    ioPainter.setPen(Qt::NoPen);
    ioPainter.setBrush(QColor(25, 25, 28, 215));
    ioPainter.drawRoundedRect(plate, 4, 4);
    ioPainter.setPen(inColour);
    ioPainter.drawText(text, flags, inText);
    return plate;
}

} // namespace

KyImageViewerWidget::KyImageViewerWidget(KyImageViewer& inViewer, QWidget* inParent)
    : QWidget(inParent)
    , mViewer(&inViewer)
{
    setObjectName(
        QStringLiteral("imageViewer%1").arg(QString::fromStdString(inViewer.protocolDisplaySetId())));
    setAccessibleName(tr("Viewer %1").arg(QString::fromStdString(inViewer.protocolDisplaySetId())));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    setMinimumSize(120, 100);
    makeSlider();
    mViewer->setWidget(this);
    connect(&inViewer, &KyImageViewer::changed, this, &KyImageViewerWidget::viewerChanged);
    connect(inViewer.contextToolBar(), &KyContextToolBar::displayHintChanged, this,
            &KyImageViewerWidget::viewerChanged);
    viewerChanged();
}

KyImageViewerWidget::~KyImageViewerWidget()
{
    letGo();
}

void KyImageViewerWidget::letGo()
{
    mDrag = Drag();
    const RnHandle<KyImageViewer> viewer = std::exchange(mViewer, nullptr);
    if (!viewer)
        return;
    viewer->disconnect(this);
    viewer->contextToolBar()->disconnect(this);
    if (viewer->widget() == this)
        viewer->setWidget(nullptr);
}

/// Without the focus, which Qt would hand on to the next viewer and so make that the active one.
void KyImageViewerWidget::retire()
{
    QWidget* focused = QApplication::focusWidget();
    if (focused && (focused == this || isAncestorOf(focused)))
        focused->clearFocus();
    hide();
    letGo();
    deleteLater();
}

void KyImageViewerWidget::makeSlider()
{
    mWeight = new QSlider(Qt::Horizontal, this);
    mWeight->setObjectName(QStringLiteral("fusionWeight"));
    mWeight->setAccessibleName(tr("Weight of the second series"));
    mWeight->setToolTip(mWeight->accessibleName());
    mWeight->setRange(0, SliderSteps);
    mWeight->setFocusPolicy(Qt::ClickFocus);
    mWeight->hide();
    connect(mWeight, &QSlider::valueChanged, this, [this](int value) {
        if (mViewer)
            mViewer->setFusionWeight(double(value) / SliderSteps);
    });
}

void KyImageViewerWidget::viewerChanged()
{
    mTexts = KyViewerTexts::of(*mViewer);
    const bool isFused = mViewer->layers().size() > 1;
    mWeight->setVisible(isFused);
    if (isFused) {
        const QSignalBlocker blocker(mWeight);
        mWeight->setValue(int(std::lround(mViewer->fusionWeight() * SliderSteps)));
    }
    update();
}

void KyImageViewerWidget::setActive(bool inActive)
{
    mIsActive = inActive;
    update();
}

bool KyImageViewerWidget::activate()
{
    auto* manager = KyViewerManager::getInstance();
    if (manager && mViewer)
        manager->setActiveViewer(mViewer.get());
    return mViewer.get() != nullptr;
}

QRectF KyImageViewerWidget::imageRect() const
{
    const OvImageSlice* slice = mViewer ? mViewer->imageSlice() : nullptr;
    if (!slice || width() < 1 || height() < 1)
        return QRectF();
    const OvPlane plane = slice->plane();
    QSizeF size(plane.width(), plane.height() * plane.aspect());
    size.scale(QSizeF(this->size()), Qt::KeepAspectRatio);
    const KyImageViewer::View& view = mViewer->view();
    size *= view.zoom;
    const QPointF middle(width() * (0.5 + view.pan.x()), height() * (0.5 + view.pan.y()));
    return QRectF(middle - QPointF(size.width() / 2, size.height() / 2), size);
}

void KyImageViewerWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (!mViewer)
        return painter.fillRect(rect(), Qt::black);
    const QImage& image = mPlane.of(*mViewer);
    const QRectF target = imageRect();
    if (!target.contains(rect()) || image.isNull())
        painter.fillRect(rect(), Qt::black);
    if (!image.isNull() && mTexts.message.isEmpty()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(target, image);
    }
    drawTexts(painter);
    drawMessages(painter);
    drawFrame(painter);
}

void KyImageViewerWidget::drawTexts(QPainter& ioPainter)
{
    const QRect room = rect().adjusted(Margin, Margin, -Margin, -Margin);
    const int slider = mWeight->isVisible() ? mWeight->height() : 0;
    const QRect aboveSlider = room.adjusted(0, 0, 0, -slider);
    auto image = mTextImages.begin();
    const auto draw = [&](const QRect& inRoom, int inFlags, const QString& inText, const QColor& inColour) {
        (image++)->draw(ioPainter, inRoom, inFlags, inText, inColour);
    };
    draw(room, Qt::AlignLeft | Qt::AlignTop, joined(mTexts.upperLeft), TextColour);
    draw(room, Qt::AlignRight | Qt::AlignTop, joined(mTexts.upperRight), TextColour);
    draw(aboveSlider, Qt::AlignLeft | Qt::AlignBottom, joined(mTexts.lowerLeft), TextColour);
    draw(aboveSlider, Qt::AlignRight | Qt::AlignBottom, joined(mTexts.lowerRight), TextColour);
    draw(room, Qt::AlignLeft | Qt::AlignVCenter, mTexts.left, LetterColour);
    draw(room, Qt::AlignRight | Qt::AlignVCenter, mTexts.right, LetterColour);
    draw(room, Qt::AlignHCenter | Qt::AlignTop, mTexts.upper, LetterColour);
    draw(aboveSlider, Qt::AlignHCenter | Qt::AlignBottom, mTexts.lower, LetterColour);
}

void KyImageViewerWidget::drawMessages(QPainter& ioPainter) const
{
    const QRect middle = rect().adjusted(width() / 8, 0, -width() / 8, 0);
    const int line = ioPainter.fontMetrics().height();
    const QRect top = middle.adjusted(0, Margin + 3 * line / 2, 0, 0);
    const QRect hint = drawPlate(ioPainter, top, Qt::AlignHCenter | Qt::AlignTop, mTexts.hint, Qt::white);
    const int below = mTexts.hint.isEmpty() ? top.top() : hint.bottom();
    drawPlate(ioPainter, QRect(middle.left(), below, middle.width(), height() - below),
              Qt::AlignHCenter | Qt::AlignTop, joined(mTexts.notices), NoticeColour);
    drawPlate(ioPainter, middle, Qt::AlignCenter, mTexts.message, TextColour);
    if (mViewer->isEmpty())
        drawText(ioPainter, middle, Qt::AlignCenter | Qt::TextWordWrap,
                 tr("Double-click a series, or drag it here"), QColor(130, 130, 130));
}

void KyImageViewerWidget::drawFrame(QPainter& ioPainter) const
{
    ioPainter.setRenderHint(QPainter::Antialiasing, false);
    ioPainter.setBrush(Qt::NoBrush);
    const QColor active = palette().color(QPalette::Highlight);
    ioPainter.setPen(QPen(mIsDropTarget ? active.lighter()
                          : mIsActive   ? active
                                        : QColor(70, 70, 70),
                          mIsDropTarget || mIsActive ? 2 : 1));
    const int inset = mIsDropTarget || mIsActive ? 1 : 0;
    ioPainter.drawRect(rect().adjusted(inset, inset, -inset - (inset ? 0 : 1), -inset - (inset ? 0 : 1)));
}

void KyImageViewerWidget::resizeEvent(QResizeEvent*)
{
    const int inset = std::min(width() / 4, 160);
    const int tall = mWeight->sizeHint().height();
    mWeight->setGeometry(inset, height() - tall - Margin / 2, width() - 2 * inset, tall);
}

void KyImageViewerWidget::wheelEvent(QWheelEvent* inEvent)
{
    const double notches = inEvent->angleDelta().y() / WheelNotch;
    inEvent->accept();
    if (!activate())
        return;
    if (inEvent->modifiers() & Qt::ControlModifier)
        zoomAround(inEvent->position(), std::pow(ZoomStep, notches));
    else
        scrollByWheel(*inEvent);
}

void KyImageViewerWidget::scrollByWheel(const QWheelEvent& inEvent)
{
    const double turned = mWheelRest - inEvent.angleDelta().y() / WheelNotch;
    const double whole = std::trunc(turned);
    mWheelRest = turned - whole;
    mViewer->scrollBy(int(whole));
}

/// What lies under \a inPlace stays there.
void KyImageViewerWidget::zoomAround(const QPointF& inPlace, double inFactor)
{
    KyImageViewer::View view = mViewer->view();
    const double zoom =
        std::clamp(view.zoom * inFactor, KyImageViewer::SmallestZoom, KyImageViewer::LargestZoom);
    const QPointF part(inPlace.x() / width() - 0.5, inPlace.y() / height() - 0.5);
    view.pan = part + (view.pan - part) * (zoom / view.zoom);
    view.zoom = zoom;
    mViewer->setView(view);
}

void KyImageViewerWidget::keyPressEvent(QKeyEvent* inEvent)
{
    if (!mViewer)
        return;
    const QPointF middle = QRectF(rect()).center();
    switch (inEvent->key()) {
    case Qt::Key_Up:
    case Qt::Key_Left:
        return mViewer->scrollBy(-1);
    case Qt::Key_Down:
    case Qt::Key_Right:
        return mViewer->scrollBy(1);
    case Qt::Key_PageUp:
        return mViewer->scrollBy(-PageOfPlanes);
    case Qt::Key_PageDown:
        return mViewer->scrollBy(PageOfPlanes);
    case Qt::Key_Home:
        return mViewer->scrollTo(0);
    case Qt::Key_End:
        return mViewer->scrollTo(mViewer->planeCount());
    case Qt::Key_Plus:
        return zoomAround(middle, ZoomStep);
    case Qt::Key_Minus:
        return zoomAround(middle, 1 / ZoomStep);
    case Qt::Key_A:
        return mViewer->setOrientation(OvSlice::Axial);
    case Qt::Key_S:
        return mViewer->setOrientation(OvSlice::Sagittal);
    case Qt::Key_C:
        return mViewer->setOrientation(OvSlice::Coronal);
    case Qt::Key_I:
        return mViewer->setInverted(!mViewer->isInverted());
    case Qt::Key_R:
        return mViewer->reset();
    default:
        QWidget::keyPressEvent(inEvent);
    }
}

void KyImageViewerWidget::mousePressEvent(QMouseEvent* inEvent)
{
    if (!activate())
        return;
    const bool isLeft = inEvent->button() == Qt::LeftButton;
    Action action = Action::None;
    if (inEvent->button() == Qt::MiddleButton || (isLeft && inEvent->modifiers() & Qt::ShiftModifier))
        action = Action::Pan;
    else if (isLeft && inEvent->modifiers() & Qt::ControlModifier)
        action = Action::Zoom;
    else if (isLeft)
        action = Action::Window;
    mDrag = {.action = action,
             .place = inEvent->position(),
             .window = mViewer->window(0),
             .view = mViewer->view()};
}

void KyImageViewerWidget::mouseMoveEvent(QMouseEvent* inEvent)
{
    const QPointF distance = inEvent->position() - mDrag.place;
    switch (mDrag.action) {
    case Action::None:
        return;
    case Action::Window:
        return dragWindow(distance);
    case Action::Pan:
        return dragPan(distance);
    case Action::Zoom:
        mViewer->setView(mDrag.view);
        return zoomAround(mDrag.place, std::pow(2, -distance.y() / 100));
    }
}

/// A drag of 256 pixels changes the window by its width, or by 256 for a window that is wider.
void KyImageViewerWidget::dragWindow(const QPointF& inDistance)
{
    const bool started = (inDistance.manhattanLength() >= QApplication::startDragDistance());
    if (!mViewer->imageSlice() || (!started && !mViewer->hasOwnWindow()))
        return;
    constexpr double Whole = 256;
    const double step = std::max(mDrag.window.width / Whole, mDrag.window.width > Whole ? 2.0 : 0.0);
    OvWindow window = mDrag.window;
    const double least =
        window.function == OvWindow::Linear && window.width >= 1 ? 1 : mDrag.window.width / Whole;
    window.width = std::max(least, window.width + inDistance.x() * step);
    window.centre -= inDistance.y() * step;
    mViewer->setWindow(window);
}

void KyImageViewerWidget::dragPan(const QPointF& inDistance)
{
    KyImageViewer::View view = mDrag.view;
    view.pan += QPointF(inDistance.x() / width(), inDistance.y() / height());
    mViewer->setView(view);
}

void KyImageViewerWidget::mouseReleaseEvent(QMouseEvent*)
{
    mDrag = Drag();
}

void KyImageViewerWidget::mouseDoubleClickEvent(QMouseEvent* inEvent)
{
    const bool isHere = activate();
    if (isHere && inEvent->button() == Qt::LeftButton && inEvent->modifiers() == Qt::NoModifier)
        Q_EMIT aloneWanted();
}

void KyImageViewerWidget::contextMenuEvent(QContextMenuEvent* inEvent)
{
    if (activate())
        Q_EMIT menuWanted(inEvent->globalPos());
}

void KyImageViewerWidget::focusInEvent(QFocusEvent* inEvent)
{
    if (inEvent->reason() == Qt::TabFocusReason || inEvent->reason() == Qt::BacktabFocusReason)
        activate();
    QWidget::focusInEvent(inEvent);
}

void KyImageViewerWidget::dragEnterEvent(QDragEnterEvent* inEvent)
{
    if (!KySeriesDrag::layer(*inEvent->mimeData()).isValid())
        return;
    inEvent->acceptProposedAction();
    mIsDropTarget = true;
    update();
}

void KyImageViewerWidget::dragLeaveEvent(QDragLeaveEvent*)
{
    mIsDropTarget = false;
    update();
}

void KyImageViewerWidget::dropEvent(QDropEvent* inEvent)
{
    mIsDropTarget = false;
    update();
    const KyViewerLayer layer = KySeriesDrag::layer(*inEvent->mimeData());
    if (!layer.isValid())
        return;
    inEvent->acceptProposedAction();
    activate();
    Q_EMIT seriesDropped(layer, inEvent->modifiers() & Qt::ControlModifier);
}

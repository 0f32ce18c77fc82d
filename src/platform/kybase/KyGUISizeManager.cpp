#include "KyGUISizeManager.h"

#include <ovbase/OvStoredGeometry.h>

#include <QEvent>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <chrono>

namespace {

constexpr auto sSettleTime = std::chrono::milliseconds(400);

QByteArray storedGeometry(const QString& inId)
{
    return QByteArray::fromBase64(OvStoredGeometry::text(inId).toLatin1());
}

void setInitialGeometry(QWidget& ioWidget, const QSize& inSize, const QPoint& inPosition)
{
    const QRect area = ioWidget.screen() ? ioWidget.screen()->availableGeometry() : QRect();
    if (!inSize.isEmpty())
        ioWidget.resize(area.isEmpty() ? inSize : inSize.boundedTo(area.size()));
    ioWidget.move(area.topLeft() + inPosition);
}

/// Follows one widget and stores its geometry: when it is hidden, and once moving and resizing have come to
/// rest. A child of the widget.
class GeometryKeeper final : public QObject
{
public:
    GeometryKeeper(QWidget& inWidget, QString inId)
        : QObject(&inWidget)
        , mWidget(inWidget)
        , mId(std::move(inId))
    {
        mSettle.setSingleShot(true);
        mSettle.setInterval(sSettleTime);
        connect(&mSettle, &QTimer::timeout, this, &GeometryKeeper::store);
        inWidget.installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* inEvent) override
    {
        switch (inEvent->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::WindowStateChange:
            if (mWidget.isVisible())
                mSettle.start();
            break;
        case QEvent::Hide:
            store();
            break;
        default:
            break;
        }
        return false;
    }

private:
    void store()
    {
        mSettle.stop();
        // What a minimized window reports is no place for the next start.
        if (mWidget.isMinimized())
            return;
        OvStoredGeometry::setText(mId, QString::fromLatin1(mWidget.saveGeometry().toBase64()));
    }

    QWidget& mWidget;
    const QString mId;
    QTimer mSettle;
};

} // namespace

void KyGUISizeManager::makeWidgetGeometryPersistent(QWidget* ioWidget, QAnyStringView inKey,
                                                    const QSize& inInitialSize,
                                                    const QPoint& inInitialPosition)
{
    if (!ioWidget)
        return;
    const QString key = inKey.toString();
    const QString id = OvStoredGeometry::id(key);
    if (key.isEmpty() || !ioWidget->restoreGeometry(storedGeometry(id)))
        setInitialGeometry(*ioWidget, inInitialSize, inInitialPosition);
    if (!key.isEmpty())
        new GeometryKeeper(*ioWidget, id);
}

QRect KyGUISizeManager::storedWidgetGeometry(const QString& inKey)
{
    return OvStoredGeometry::read(inKey);
}

void KyGUISizeManager::storeWidgetGeometry(const QRect& inGeometry, const QString& inKey)
{
    OvStoredGeometry::write(inGeometry, inKey);
}

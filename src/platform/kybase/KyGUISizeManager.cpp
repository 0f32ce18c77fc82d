#include "KyGUISizeManager.h"

#include <ovbase/OvRegistry.h>

#include <QEvent>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <chrono>

namespace {

constexpr auto sSettleTime = std::chrono::milliseconds(400);

QString idOf(const QString& inKey)
{
    return QStringLiteral("GUI.Geometry.") + inKey;
}

QString storedText(const QString& inId)
{
    OvRegistry::Value stored;
    const OvRegistry* registry = OvRegistry::getInstance();
    return registry && registry->getProperty(inId, stored) ? stored.value : QString();
}

/// Writes only what has changed.
void storeText(const QString& inId, const QString& inText)
{
    OvRegistry::Value stored;
    OvRegistry* registry = OvRegistry::getInstance();
    if (registry &&
        !(registry->getProperty(inId, stored, OvRegistry::UserPriority) && stored.value == inText))
        registry->setProperty(inId, inText, OvRegistry::UserPriority);
}

QByteArray storedGeometry(const QString& inId)
{
    return QByteArray::fromBase64(storedText(inId).toLatin1());
}

int bounded(int inEdge)
{
    return std::clamp(inEdge, -KyGUISizeManager::MaxEdge, KyGUISizeManager::MaxEdge);
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
        storeText(mId, QString::fromLatin1(mWidget.saveGeometry().toBase64()));
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
    const QString id = idOf(key);
    if (key.isEmpty() || !ioWidget->restoreGeometry(storedGeometry(id)))
        setInitialGeometry(*ioWidget, inInitialSize, inInitialPosition);
    if (!key.isEmpty())
        new GeometryKeeper(*ioWidget, id);
}

QRect KyGUISizeManager::storedWidgetGeometry(const QString& inKey)
{
    const QStringList edges = storedText(idOf(inKey)).split(QLatin1Char(' '));
    if (inKey.isEmpty() || edges.size() != 4)
        return QRect();
    const auto edge = [&](int inIndex) { return bounded(edges.at(inIndex).toInt()); };
    return QRect(QPoint(edge(0), edge(1)), QPoint(edge(2), edge(3)));
}

void KyGUISizeManager::storeWidgetGeometry(const QRect& inGeometry, const QString& inKey)
{
    if (inKey.isEmpty())
        return;
    storeText(idOf(inKey), QStringLiteral("%1 %2 %3 %4")
                               .arg(bounded(inGeometry.left()))
                               .arg(bounded(inGeometry.top()))
                               .arg(bounded(inGeometry.right()))
                               .arg(bounded(inGeometry.bottom())));
}

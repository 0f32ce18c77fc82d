// A plugin of Qt that ends any Qt Widgets program once its first window has been painted: so a whole process
// can be timed from its start to its first window. QT_QPA_GENERIC_PLUGINS=EndAtFirstPaint, with
// QT_PLUGIN_PATH.

#include <QtGui/QGenericPlugin>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

namespace {

class Watch final : public QObject
{
public:
    bool eventFilter(QObject* inObject, QEvent* inEvent) override
    {
        const auto* widget = qobject_cast<QWidget*>(inObject);
        if (!mHasEnded && inEvent->type() == QEvent::Paint && widget && widget->isWindow()) {
            mHasEnded = true;
            // Once all of the window is painted.
            QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        }
        return false;
    }

private:
    bool mHasEnded = false;
};

} // namespace

class EndAtFirstPaint final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "EndAtFirstPaint.json")

public:
    QObject* create(const QString&, const QString&) override
    {
        auto* watch = new Watch;
        qApp->installEventFilter(watch);
        return watch;
    }
};

#include "EndAtFirstPaint.moc"

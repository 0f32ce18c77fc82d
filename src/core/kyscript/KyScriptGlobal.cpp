#include "KyScriptGlobal.h"

#include <QtCore/QDynamicPropertyChangeEvent>

namespace {

/// QObject cuts a name at a NUL, and its own property takes the name "objectName".
bool canBeDynamicProperty(const QString& inKey)
{
    return inKey != QLatin1String("objectName") && !inKey.contains(QChar(u'\0'));
}

} // namespace

KyScriptGlobal& KyScriptGlobal::instance()
{
    static KyScriptGlobal store;
    return store;
}

void KyScriptGlobal::setValue(const QString& inKey, const QVariant& inValue)
{
    if (canBeDynamicProperty(inKey))
        setProperty(inKey.toUtf8().constData(), inValue);
    else
        mirror(inKey, inValue);
}

bool KyScriptGlobal::event(QEvent* inEvent)
{
    if (inEvent->type() == QEvent::DynamicPropertyChange) {
        const QByteArray name = static_cast<QDynamicPropertyChangeEvent*>(inEvent)->propertyName();
        mirror(QString::fromUtf8(name), property(name.constData()));
    }
    return QObject::event(inEvent);
}

void KyScriptGlobal::mirror(const QString& inKey, const QVariant& inValue)
{
    if (inValue.isValid())
        mValues.insert(inKey, inValue);
    else if (mValues.remove(inKey) == 0)
        return;
    ++mRevision;
}

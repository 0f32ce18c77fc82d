#include "KyScriptOrvane.h"

#include "KyScriptLog.h"
#include "KyScriptVariant.h"

#include <kybase/KyNotifiable.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <algorithm>
#include <cstring>

namespace {

using StringList = QList<QString>;

void report(const QString& inText)
{
    KyScriptLog::line(3, QStringLiteral("Orvane.") + inText);
}

/// A value as the messages show it.
QString shown(const QVariant& inValue)
{
    if (inValue.typeId() == QMetaType::QString)
        return QLatin1Char('"') + inValue.toString() + QLatin1Char('"');
    if (!KyScriptVariant::isList(inValue))
        return inValue.toString();
    QStringList elements;
    for (const QVariant& element : inValue.toList())
        elements.append(shown(element));
    return QLatin1Char('[') + elements.join(QLatin1Char(',')) + QLatin1Char(']');
}

bool isString(const QVariant& inValue)
{
    return inValue.typeId() == QMetaType::QString;
}

/// Whether a list argument that can hold anything holds something else than strings.
bool isMixedList(const QVariant& inValue)
{
    if (inValue.typeId() != QMetaType::QVariantList)
        return false;
    const QVariantList list = inValue.toList();
    return !std::all_of(list.begin(), list.end(), isString);
}

/// Calls \a inFunction with the argument as the type of value that a property can have. False for any other
/// type.
template <class Function>
bool withTyped(const QVariant& inValue, Function inFunction)
{
    switch (inValue.typeId()) {
    case QMetaType::Bool:
        inFunction(inValue.toBool());
        return true;
    case QMetaType::Int:
        inFunction(inValue.toInt());
        return true;
    case QMetaType::Double:
        inFunction(inValue.toDouble());
        return true;
    case QMetaType::QString:
        inFunction(inValue.toString());
        return true;
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        inFunction(StringList(inValue.toStringList()));
        return true;
    default:
        return false;
    }
}

/// By name, since the property may come from another library with a type_info of its own.
template <class T>
bool holds(const OvVariant& inProperty)
{
    return std::strcmp(inProperty.type().name(), typeid(T).name()) == 0;
}

template <class T>
const T& valueOf(const OvVariant& inProperty)
{
    return static_cast<const OvProperty<T>&>(inProperty).value;
}

std::string latin1(const QString& inText)
{
    return inText.toLatin1().toStdString();
}

QString typeNameOf(const OvVariant& inProperty)
{
    return QString::fromLatin1(inProperty.type().name());
}

OvVariant* findProperty(const QString& inId)
{
    const OvPropertyPool* pool = OvPropertyPool::instance();
    const QByteArray id = inId.toLatin1();
    return pool ? pool->variant({id.constData(), std::size_t(id.size())}) : nullptr;
}

void notifyOf(const OvVariant& inProperty)
{
    KyNotifiable::notify(
        KyNotification(KyNotification::PropertyChanged, 0, 0, &inProperty, OvSessionContextID()));
}

/// Runs \a inChange, which tells whether the property's value has changed, with the layer of the scripts as
/// the one to store in, and then tells everybody of the change.
template <class Change>
void changeInScriptLayer(OvVariant& ioProperty, Change inChange)
{
    OvPropertyPool* pool = OvPropertyPool::instance();
    const OvRegistry::Priority saved = pool->defaultSerializationPriority();
    pool->setDefaultSerializationPriority(OvRegistry::ScriptPriority);
    const bool hasChanged = inChange();
    // Somebody who heard of the change may have ended the pool, and the property with it.
    if (OvPropertyPool::instance() != pool)
        return;
    pool->setDefaultSerializationPriority(saved);
    if (hasChanged)
        notifyOf(ioProperty);
}

/// Sets the value and stores it. Whether it has changed; \a inArgument is for messages.
template <class T>
bool setTyped(OvVariant& ioProperty, const T& inValue, const QVariant& inArgument)
{
    const QString id = QString::fromLatin1(ioProperty.identifier().c_str());
    if (!holds<T>(ioProperty)) {
        report(QStringLiteral("setPropertyVariant(\"%1\", %2) - property type '%3' does not match argument")
                   .arg(id, shown(inArgument), typeNameOf(ioProperty)));
        return false;
    }
    if (isMixedList(inArgument)) {
        report(QStringLiteral(
                   "setPropertyVariant(\"%1\", %2) - all elements of a list-type property must be strings")
                   .arg(id, shown(inArgument)));
        return false;
    }
    T& value = static_cast<OvProperty<T>&>(ioProperty).value;
    if (value == inValue)
        return false;
    value = inValue;
    ioProperty.serialize();
    ioProperty.propagate(true);
    return true;
}

/// Labels each level of the id with its part of the label.
void recordLabels(const QStringList& inComponents, const QStringList& inLabels)
{
    QString path;
    for (qsizetype i = 0; i < inComponents.size(); ++i) {
        path += i > 0 ? QLatin1Char('.') + inComponents.at(i) : inComponents.at(i);
        OvTranslationProperty::translate(path.toLatin1().constData(), inLabels.at(i).toUtf8().constData(),
                                         nullptr);
    }
}

template <class T>
void registerTyped(const QString& inId, const QString& inLabel, const T& inDefault,
                   const QVariant& inArgument)
{
    const QStringList components = inId.split(QLatin1Char('.'));
    const QStringList labels = inLabel.split(QLatin1Char('.'));
    if (components.size() != labels.size()) {
        report(
            QStringLiteral("registerProperty() - unmatched components in '%1' and '%2'").arg(inId, inLabel));
        return;
    }
    // No property can have a longer id, and its labels would fill the memory.
    if (inId.size() <= OvPropertyPool::MaxIdLength)
        recordLabels(components, labels);
    if (isMixedList(inArgument)) {
        report(QStringLiteral(
                   "registerProperty(\"%1\"...%2) - all elements of a list-type property must be strings")
                   .arg(inId, shown(inArgument)));
        return;
    }
    OvPropertyPool* pool = OvPropertyPool::instance();
    const OvVariant* present = findProperty(inId);
    if (present && !holds<T>(*present)) {
        report(QStringLiteral(
                   "registerProperty(\"%1\"...%2) - property already registered with different type '%3'")
                   .arg(inId, shown(inArgument), typeNameOf(*present)));
        return;
    }
    if (pool)
        pool->property<T>(latin1(inId), inDefault, pool->defaultSerializer());
}

/// Whether the effective value is still \a inText.
bool isEffective(const QString& inId, const QString& inText)
{
    const OvRegistry* registry = OvRegistry::getInstance();
    OvRegistry::Value value;
    return registry && registry->getProperty(inId, value, OvRegistry::EffectivePriority) &&
           value.value == inText;
}

} // namespace

QString KyScriptOrvane::propertyValue(const QString& inPropertyId) const
{
    const OvVariant* property = findProperty(inPropertyId);
    return property ? property->toQString() : QString();
}

QVariant KyScriptOrvane::propertyVariant(const QString& inPropertyId) const
{
    const OvVariant* property = findProperty(inPropertyId);
    if (!property)
        return QVariant();
    if (holds<bool>(*property))
        return valueOf<bool>(*property);
    if (holds<int>(*property))
        return valueOf<int>(*property);
    if (holds<double>(*property))
        return valueOf<double>(*property);
    if (holds<StringList>(*property))
        return QStringList(valueOf<StringList>(*property));
    return property->toQString();
}

bool KyScriptOrvane::setPropertyValue(const QString& inPropertyId, const QString& inValue)
{
    OvVariant* property = findProperty(inPropertyId);
    if (!property)
        return false;
    const QString before = property->toQString();
    const OvPropertyPool* pool = OvPropertyPool::instance();
    changeInScriptLayer(*property, [&] {
        property->setValueFromQString(inValue);
        return OvPropertyPool::instance() == pool && property->toQString() != before;
    });
    return true;
}

bool KyScriptOrvane::setPropertyVariant(const QString& inPropertyId, const QVariant& inValue)
{
    OvVariant* property = findProperty(inPropertyId);
    if (!property)
        return false;
    const QVariant argument = KyScriptVariant::normalised(inValue, *this);
    changeInScriptLayer(*property, [&] {
        bool hasChanged = false;
        const auto set = [&](const auto& value) { hasChanged = setTyped(*property, value, argument); };
        if (!withTyped(argument, set))
            report(QStringLiteral("setPropertyVariant(\"%1\", %2) - unsupported property type '%3'")
                       .arg(inPropertyId, shown(argument), QLatin1String(argument.typeName())));
        return hasChanged;
    });
    return true;
}

bool KyScriptOrvane::removePropertyValue(const QString& inPropertyId)
{
    OvVariant* property = findProperty(inPropertyId);
    if (!property)
        return false;
    const OvPropertyPool* pool = OvPropertyPool::instance();
    const QString before = property->toQString();
    if (OvRegistry* registry = OvRegistry::getInstance())
        registry->removeProperty(inPropertyId, OvRegistry::ScriptPriority);
    property->deserialize();
    if (OvPropertyPool::instance() == pool && !isEffective(inPropertyId, before))
        notifyOf(*property);
    return true;
}

void KyScriptOrvane::registerProperty(const QString& inPropertyId, const QString& inPropertyLabel,
                                      const QVariant& inDefault)
{
    const QVariant argument = KyScriptVariant::normalised(inDefault, *this);
    const auto add = [&](const auto& value) {
        registerTyped(inPropertyId, inPropertyLabel, value, argument);
    };
    if (!withTyped(argument, add))
        report(QStringLiteral("registerProperty(\"%1\"...%2) - unsupported property type '%3'")
                   .arg(inPropertyId, shown(argument), QLatin1String(argument.typeName())));
}

void KyScriptOrvane::registerPropertyFloatingPoint(const QString& inPropertyId,
                                                   const QString& inPropertyLabel, double inDefault)
{
    registerTyped(inPropertyId, inPropertyLabel, inDefault, QVariant(inDefault));
}

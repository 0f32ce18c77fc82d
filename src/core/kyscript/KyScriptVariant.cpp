#include "KyScriptVariant.h"

#include <QtQml/QJSEngine>
#include <QtQml/QJSValueIterator>

#include <cmath>
#include <limits>

namespace {

bool isQJSValue(const QVariant& inValue)
{
    return inValue.metaType() == QMetaType::fromType<QJSValue>();
}

/// A whole number that an int holds as one, and others as they are.
QVariant withoutPoint(const QVariant& inValue)
{
    if (inValue.typeId() != QMetaType::Double)
        return inValue;
    const double number = inValue.toDouble();
    const bool isInt = number >= std::numeric_limits<int>::min() &&
                       number <= std::numeric_limits<int>::max() && number == std::trunc(number);
    return isInt ? QVariant(static_cast<int>(number)) : inValue;
}

/// One conversion, which counts how much it has met.
class Conversion
{
public:
    explicit Conversion(QJSEngine* inEngine)
        : mEngine(inEngine)
    {}

    bool isTooLarge() const { return mIsTooLarge; }

    QVariant of(const QJSValue& inValue)
    {
        if (!count(1))
            return QVariant();
        // Runs no script: what Qt has no form of its own for stays a QJSValue.
        const QVariant form = inValue.toVariant(QJSValue::RetainJSObjects);
        if (!isQJSValue(form))
            return withoutPoint(form);
        if (!inValue.isObject() || inValue.isCallable() || inValue.isQMetaObject())
            return QVariant();
        ++mDepth;
        const QVariant result = inValue.isArray() ? QVariant(ofArray(inValue)) : QVariant(ofObject(inValue));
        --mDepth;
        return result;
    }

private:
    bool count(double inValues)
    {
        mValues += inValues;
        mIsTooLarge =
            mIsTooLarge || mValues > KyScriptVariant::MaxValues || mDepth > KyScriptVariant::MaxDepth;
        return !mIsTooLarge;
    }

    QVariantList ofArray(const QJSValue& inArray)
    {
        QVariantList list;
        const double length = checked(inArray.property(QStringLiteral("length"))).toNumber();
        if (!count(length))
            return list;
        list.reserve(qsizetype(length));
        for (quint32 i = 0; i < length && !mIsTooLarge; ++i)
            list.append(of(checked(inArray.property(i))));
        return list;
    }

    QVariantMap ofObject(const QJSValue& inObject)
    {
        QVariantMap map;
        QJSValueIterator property(inObject);
        while (!mIsTooLarge && property.next())
            map.insert(property.name(), of(checked(property.value())));
        checked(QJSValue());
        return map;
    }

    /// What a getter has thrown must not reach the script; the property is undefined then.
    QJSValue checked(const QJSValue& inValue)
    {
        if (!mEngine || !mEngine->hasError())
            return inValue;
        mEngine->catchError();
        return QJSValue();
    }

    QJSEngine* const mEngine;
    double mValues = 0;
    int mDepth = 0;
    bool mIsTooLarge = false;
};

} // namespace

QVariant KyScriptVariant::normalised(const QVariant& inArgument, const QObject& inHost)
{
    if (!isQJSValue(inArgument))
        return withoutPoint(inArgument);
    Conversion conversion(qjsEngine(&inHost));
    const QVariant converted = conversion.of(inArgument.value<QJSValue>());
    return converted.isValid() && !conversion.isTooLarge() ? converted : inArgument;
}

bool KyScriptVariant::isList(const QVariant& inValue)
{
    return inValue.typeId() == QMetaType::QVariantList || inValue.typeId() == QMetaType::QStringList;
}

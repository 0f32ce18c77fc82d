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
    enum class Excess
    {
        Refused, ///< Ends the conversion.
        Cut,     ///< Is left out.
    };

    Conversion(QJSEngine* inEngine, Excess inExcess)
        : mEngine(inEngine)
        , mIsCut(inExcess == Excess::Cut)
        , mMaxDepth(mIsCut ? KyScriptVariant::CutDepth : KyScriptVariant::MaxDepth)
        , mMaxValues(mIsCut ? KyScriptVariant::CutValues : KyScriptVariant::MaxValues)
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
        if (mDepth >= mMaxDepth) {
            mIsTooLarge = true;
            return QVariant();
        }
        ++mDepth;
        const QVariant result = inValue.isArray() ? QVariant(ofArray(inValue)) : QVariant(ofObject(inValue));
        --mDepth;
        return result;
    }

private:
    bool count(double inValues)
    {
        mValues += inValues;
        mIsTooLarge = mIsTooLarge || mValues > mMaxValues;
        return mValues <= mMaxValues;
    }

    bool goesOn() const { return mIsCut ? mValues < mMaxValues : !mIsTooLarge; }

    QVariantList ofArray(const QJSValue& inArray)
    {
        QVariantList list;
        const double length = checked(inArray.property(QStringLiteral("length"))).toNumber();
        if (!mIsCut && !count(length))
            return list;
        for (quint32 i = 0; i < length && goesOn(); ++i)
            list.append(of(checked(inArray.property(i))));
        return list;
    }

    QVariantMap ofObject(const QJSValue& inObject)
    {
        QVariantMap map;
        QJSValueIterator property(inObject);
        while (goesOn() && property.next())
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
    const bool mIsCut;
    const int mMaxDepth;
    const double mMaxValues;
    double mValues = 0;
    int mDepth = 0;
    bool mIsTooLarge = false;
};

} // namespace

QVariant KyScriptVariant::normalised(const QVariant& inArgument, const QObject& inHost)
{
    if (!isQJSValue(inArgument))
        return withoutPoint(inArgument);
    Conversion conversion(qjsEngine(&inHost), Conversion::Excess::Refused);
    const QVariant converted = conversion.of(inArgument.value<QJSValue>());
    return converted.isValid() && !conversion.isTooLarge() ? converted : inArgument;
}

QVariant KyScriptVariant::cut(const QVariant& inArgument, const QObject* inHost)
{
    return isQJSValue(inArgument) ? cut(inArgument.value<QJSValue>(), inHost) : withoutPoint(inArgument);
}

QVariant KyScriptVariant::cut(const QJSValue& inArgument, const QObject* inHost)
{
    return Conversion(inHost ? qjsEngine(inHost) : nullptr, Conversion::Excess::Cut).of(inArgument);
}

bool KyScriptVariant::isList(const QVariant& inValue)
{
    return inValue.typeId() == QMetaType::QVariantList || inValue.typeId() == QMetaType::QStringList;
}

QVariantList KyScriptVariant::listOf(const QVariant& inValue)
{
    return isList(inValue) ? inValue.toList() : QVariantList();
}

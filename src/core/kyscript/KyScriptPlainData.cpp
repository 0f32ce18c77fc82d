#include "KyScriptPlainData.h"

#include <QtCore/QDateTime>
#include <QtQml/QJSValueIterator>

namespace {

constexpr int MaxDepth = 8;
constexpr int MaxValues = 65536;

/// One conversion, which ends when it has met too many values.
class Conversion
{
public:
    QVariant of(const QJSValue& inValue)
    {
        --mLeft;
        if (inValue.isString() || inValue.isNumber() || inValue.isBool() || inValue.isNull() ||
            inValue.isDate())
            return inValue.toVariant();
        if (!inValue.isObject() || inValue.isCallable() || inValue.isQObject() || mDepth >= MaxDepth)
            return QVariant();
        ++mDepth;
        const QVariant result = inValue.isArray() ? QVariant(ofArray(inValue)) : QVariant(ofObject(inValue));
        --mDepth;
        return result;
    }

private:
    QVariantList ofArray(const QJSValue& inArray)
    {
        QVariantList list;
        const quint32 size = inArray.property(QStringLiteral("length")).toUInt();
        for (quint32 i = 0; i < size && mLeft > 0; ++i)
            list.append(of(inArray.property(i)));
        return list;
    }

    QVariantMap ofObject(const QJSValue& inObject)
    {
        QVariantMap map;
        QJSValueIterator property(inObject);
        while (mLeft > 0 && property.next())
            map.insert(property.name(), of(property.value()));
        return map;
    }

    int mDepth = 0;
    int mLeft = MaxValues;
};

} // namespace

QVariant KyScriptPlainData::of(const QJSValue& inValue)
{
    return Conversion().of(inValue);
}

QVariant KyScriptPlainData::of(const QVariant& inArgument)
{
    return inArgument.metaType() == QMetaType::fromType<QJSValue>() ? of(inArgument.value<QJSValue>())
                                                                    : inArgument;
}

QVariantMap KyScriptPlainData::mapOf(const QJSValue& inValue)
{
    const QVariant data = of(inValue);
    return data.typeId() == QMetaType::QVariantMap ? data.toMap() : QVariantMap();
}

QVariantList KyScriptPlainData::listOf(const QJSValue& inValue)
{
    return listOf(of(inValue));
}

QVariantList KyScriptPlainData::listOf(const QVariant& inData)
{
    const int type = inData.typeId();
    return type == QMetaType::QVariantList || type == QMetaType::QStringList ? inData.toList()
                                                                             : QVariantList();
}

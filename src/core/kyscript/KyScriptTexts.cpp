#include "KyScriptTexts.h"

#include <QtQml/QJSEngine>

namespace {

constexpr quint32 sLongestList = 1u << 20;

/// Dates, buffers and the like, which Qt converts by their types, and to no list.
bool isHostValue(const QJSValue& inValue)
{
    return inValue.isQObject() || inValue.isQMetaObject() || inValue.isVariant() || inValue.isDate();
}

std::optional<QStringList> elementsOf(const QJSValue& inArray)
{
    const quint32 length = inArray.property(QStringLiteral("length")).toUInt();
    if (length > sLongestList)
        return std::nullopt;
    QStringList texts;
    for (quint32 i = 0; i < length; ++i) {
        const QJSValue element = inArray.property(i);
        texts.append(element.isNull() || element.isUndefined() ? QString() : element.toString());
    }
    return texts;
}

} // namespace

std::optional<QStringList> KyScriptTexts::of(const QJSValue& inValue)
{
    if (inValue.isString())
        return QStringList(inValue.toString());
    if (inValue.isArray())
        return elementsOf(inValue);
    if (!inValue.isObject() || isHostValue(inValue))
        return std::nullopt;
    return QStringList();
}

std::optional<QStringList> KyScriptTexts::argument(const QObject* inCaller, const QJSValue& inValue,
                                                   const QString& inWhat)
{
    auto texts = of(inValue);
    QJSEngine* engine = texts ? nullptr : qjsEngine(inCaller);
    if (engine && !engine->hasError())
        engine->throwError(QJSValue::TypeError, inWhat + QStringLiteral(": not a list of texts"));
    return texts;
}

#include "KyScriptBytes.h"

#include <QtCore/QVariant>
#include <QtQml/QJSValue>

namespace {

/// An array can claim to be longer than what memory holds, or what can be walked through in a while.
constexpr quint32 sLongestArray = 1u << 26;

/// The bytes of an ArrayBuffer; nothing for another value. Objects are not looked into: Qt's conversion of an
/// object that holds a Symbol crashes.
std::optional<QByteArray> bytesOfBuffer(const QJSValue& inValue)
{
    if (!inValue.isObject())
        return std::nullopt;
    const QVariant value = inValue.toVariant(QJSValue::RetainJSObjects);
    if (value.typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return value.toByteArray();
}

/// The part of an ArrayBuffer at which a typed array or a DataView looks; nothing for another value. Only
/// that part is copied: a script may write a large buffer in many pieces.
std::optional<QByteArray> bytesOfView(const QJSValue& inValue)
{
    const QJSValue buffer = inValue.property(QStringLiteral("buffer"));
    const QJSValue offset = inValue.property(QStringLiteral("byteOffset"));
    const QJSValue length = inValue.property(QStringLiteral("byteLength"));
    if (!buffer.isObject() || !offset.isNumber() || !length.isNumber())
        return std::nullopt;
    const QJSValue end(offset.toNumber() + length.toNumber());
    return bytesOfBuffer(buffer.property(QStringLiteral("slice")).callWithInstance(buffer, {offset, end}));
}

std::optional<QByteArray> bytesOfArray(const QJSValue& inValue)
{
    const quint32 length = inValue.property(QStringLiteral("length")).toUInt();
    if (!inValue.isArray() || length > sLongestArray)
        return std::nullopt;
    QByteArray bytes;
    for (quint32 i = 0; i < length; ++i)
        bytes.append(char(inValue.property(i).toInt()));
    return bytes;
}

} // namespace

std::optional<QByteArray> KyScriptBytes::of(const QJSValue& inValue)
{
    if (inValue.isString() || inValue.isNumber() || inValue.isBool())
        return inValue.toString().toUtf8();
    if (inValue.isNull())
        return QByteArray();
    if (!inValue.isObject())
        return std::nullopt;
    for (const auto bytesOfKind : {bytesOfBuffer, bytesOfArray, bytesOfView}) {
        if (const auto bytes = bytesOfKind(inValue))
            return bytes;
    }
    return std::nullopt;
}

#pragma once

#include "KyScriptEngine.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QRect>
#include <QtCore/QRegularExpression>
#include <QtCore/QUrl>
#include <QtCore/QVariantMap>

#include <concepts>
#include <iterator>
#include <string_view>
#include <type_traits>

/// C++ values as arguments of script functions, see KyScriptRunner::callFunction().
///
/// Decided when the caller is compiled: a type without a form that scripts can use is refused there.
namespace KyScriptArgument {

template <class T, class... Types>
concept AnyOf = (std::same_as<T, Types> || ...);

template <class T>
concept Character = AnyOf<T, char, wchar_t, char8_t, char16_t, char32_t, QChar, QLatin1Char>;

template <class T>
concept Number = !Character<T> && !std::same_as<T, bool> && (std::is_arithmetic_v<T> || std::is_enum_v<T>);

template <class T>
concept HostObject = std::convertible_to<const T&, QObject*>;

template <class T>
concept Bytes = AnyOf<T, QByteArray, QByteArrayView>;

template <class T>
concept WideText =
    std::convertible_to<const T&, std::wstring_view> || std::convertible_to<const T&, std::u32string_view>;

template <class T>
concept Text = WideText<T> || std::convertible_to<const T&, std::string_view> ||
    std::convertible_to<const T&, std::u8string_view> || std::convertible_to<const T&, std::u16string_view> ||
    std::convertible_to<const T&, QString> || AnyOf<T, QStringView, QUtf8StringView, QAnyStringView>;

/// Dates and times, which scripts get in the form that KyScriptEngine::convertVariant() gives, and values
/// that may hold one.
template <class T>
concept Dated = AnyOf<T, QDate, QTime, QVariant>;

template <class T>
concept Gadget = requires
{
    T::staticMetaObject.className();
};

/// What QJSEngine::toScriptValue() turns into a value that scripts can use.
template <class T>
concept Known =
    Gadget<T> || AnyOf<T, QVariantMap, QVariantList, QStringList, QDateTime, QUrl, QRegularExpression,
                       QJsonObject, QJsonArray, QJsonValue, QPoint, QPointF, QSize, QSizeF, QRect, QRectF>;

/// Maps with texts as keys.
template <class T>
concept Dictionary = requires(const T& inMap)
{
    typename T::mapped_type;
    inMap.begin() != inMap.end();
    requires Text<typename T::key_type>;
};

template <class T>
concept Sequence = requires(const T& inRange)
{
    std::begin(inRange) != std::end(inRange);
    *std::begin(inRange);
}
&&!requires
{
    typename T::mapped_type;
};

template <Sequence T>
using ElementOf = std::remove_cvref_t<decltype(*std::begin(std::declval<const T&>()))>;

/// Whether \a T can be an argument.
template <class T>
constexpr bool isPossible()
{
    if constexpr (std::same_as<T, QJSValue> || std::same_as<T, bool> || Character<T> || Number<T> ||
                  HostObject<T> || Bytes<T> || Text<T> || Dated<T> || Known<T>)
        return true;
    else if constexpr (Dictionary<T>)
        return isPossible<typename T::mapped_type>();
    else if constexpr (Sequence<T>)
        return !std::same_as<T, ElementOf<T>> && isPossible<ElementOf<T>>();
    else
        return false;
}

template <class T>
struct Unsigned : std::bool_constant<std::is_unsigned_v<T>>
{};

template <class T>
requires std::is_enum_v<T>
struct Unsigned<T> : Unsigned<std::underlying_type_t<T>>
{};

template <Number T>
QJSValue ofNumber(T inNumber)
{
    if constexpr (std::floating_point<T> || sizeof(T) > sizeof(int))
        return QJSValue(double(inNumber));
    else if constexpr (Unsigned<T>::value)
        return QJSValue(uint(inNumber));
    else
        return QJSValue(int(inNumber));
}

template <Character T>
QString ofCharacter(T inCharacter)
{
    if constexpr (AnyOf<T, char, char8_t>)
        return QString(QLatin1Char(char(inCharacter)));
    else if constexpr (AnyOf<T, wchar_t, char32_t>)
        return QStringView(QChar::fromUcs4(char32_t(inCharacter))).toString();
    else
        return QString(QChar(inCharacter));
}

/// Bytes without a type of their own are UTF-8; a null pointer is an empty text.
template <Text T>
QString ofText(const T& inText)
{
    if constexpr (std::is_pointer_v<T>) {
        if (!inText)
            return QString();
    }
    if constexpr (std::convertible_to<const T&, std::wstring_view>) {
        const std::wstring_view text(inText);
        return QString::fromWCharArray(text.data(), int(text.size()));
    } else if constexpr (std::convertible_to<const T&, std::u32string_view>) {
        const std::u32string_view text(inText);
        return QString::fromUcs4(text.data(), qsizetype(text.size()));
    } else if constexpr (std::convertible_to<const T&, QAnyStringView>) {
        return QAnyStringView(inText).toString();
    } else {
        return QString(inText);
    }
}

/// A null array would become a buffer that can't be used.
template <Bytes T>
QByteArray ofBytes(const T& inBytes)
{
    if (inBytes.isNull())
        return QByteArray("");
    if constexpr (std::same_as<T, QByteArray>)
        return inBytes;
    else
        return inBytes.toByteArray();
}

template <class T>
QJSValue of(KyScriptEngine& ioEngine, const T& inValue);

template <Dictionary T>
QVariantMap ofDictionary(KyScriptEngine& ioEngine, const T& inMap)
{
    QVariantMap map;
    for (auto it = inMap.begin(); it != inMap.end(); ++it) {
        if constexpr (requires { it.key(); })
            map.insert(ofText(it.key()), QVariant::fromValue(of(ioEngine, it.value())));
        else
            map.insert(ofText(it->first), QVariant::fromValue(of(ioEngine, it->second)));
    }
    return map;
}

template <Sequence T>
QVariantList ofSequence(KyScriptEngine& ioEngine, const T& inRange)
{
    QVariantList list;
    for (const auto& element : inRange)
        list.append(QVariant::fromValue(of(ioEngine, static_cast<const ElementOf<T>&>(element))));
    return list;
}

template <Dated T>
QJSValue ofDated(KyScriptEngine& ioEngine, const T& inValue)
{
    QVariant value(inValue);
    ioEngine.convertVariant(value);
    return ioEngine.toScriptValue(value);
}

/// \a inValue as a value of \a ioEngine.
template <class T>
QJSValue of(KyScriptEngine& ioEngine, const T& inValue)
{
    if constexpr (std::same_as<T, QJSValue>)
        return inValue;
    else if constexpr (std::same_as<T, bool>)
        return QJSValue(inValue);
    else if constexpr (Character<T>)
        return QJSValue(ofCharacter(inValue));
    else if constexpr (Number<T>)
        return ofNumber(inValue);
    else if constexpr (HostObject<T>)
        return ioEngine.toScriptValue<QObject*>(inValue);
    else if constexpr (Bytes<T>)
        return ioEngine.toScriptValue(ofBytes(inValue));
    else if constexpr (Text<T>)
        return QJSValue(ofText(inValue));
    else if constexpr (Dated<T>)
        return ofDated(ioEngine, inValue);
    else if constexpr (Known<T>)
        return ioEngine.toScriptValue(inValue);
    else if constexpr (Dictionary<T>)
        return ioEngine.toScriptValue(ofDictionary(ioEngine, inValue));
    else
        return ioEngine.toScriptValue(ofSequence(ioEngine, inValue));
}

} // namespace KyScriptArgument

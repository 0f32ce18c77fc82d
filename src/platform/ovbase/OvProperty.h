#pragma once

#include "OvEnum.h"
#include "OvVariant.h"

#include <QList>

#include <concepts>
#include <locale>
#include <sstream>

/// An application property with a value of type T.
///
/// Text forms:
///
/// - int, double: what a default stream writes, so `-5`, and `2.5` with 6 significant digits. It is read by
///   extraction straight into `value`: leading blanks are skipped, what follows the number is ignored, and a
///   failure leaves what the stream leaves, which is 0 or the limit of the type.
/// - bool: `true` or `false`. `1` and `0` are read too, letters in any case and with blanks around. A failure
///   leaves the value.
/// - QString: the string itself. Every text is read.
/// - QList<QString>: the elements with "," between them, quoted as in RFC 4180. An element that is empty,
///   begins or ends with white space, or holds a comma, a double quote, CR or LF stands in double quotes,
///   those inside doubled. The empty text is the empty list. Bare empty elements, as in `a,,b`, are read too.
///   A quote that is not closed, and text behind a closing one, is a failure, which leaves the value.
/// - others: what `operator<<` writes and `operator>>` reads.
///
/// toQString() and fromQString() of the string types keep every value exactly; their toString() is UTF-8.
///
/// A further value type needs a default constructor, copies and the two stream operators; values are compared
/// with `==` where the type has it, else by their text. See OvEnum for enumerations.
template <class T>
class OvProperty final : public OvVariant
{
public:
    explicit OvProperty(std::string inIdentifier, T inValue = T())
        : OvVariant(std::move(inIdentifier))
        , value(std::move(inValue))
    {}

    const std::type_info& type() const override { return typeid(T); }
    const OvEnum* enumeration() const override
    {
        if constexpr (std::derived_from<T, OvEnum>)
            return &value;
        else
            return nullptr;
    }
    bool isStringType() const override { return OvVariant::isStringType(); }
    std::string toString() const override
    {
        std::stringstream stream;
        stream.imbue(std::locale::classic());
        stream << value;
        return stream.str();
    }
    QString toQString() const override { return OvVariant::toQString(); }

    bool isEqual(const OvVariant& inOther) const override
    {
        if (!inOther.isType<T>())
            return false;
        if constexpr (std::equality_comparable<T>)
            return value == static_cast<const OvProperty&>(inOther).value;
        else
            return toString() == inOther.toString();
    }
    std::unique_ptr<OvVariant> clone() const override
    {
        return std::unique_ptr<OvVariant>(new OvProperty(*this));
    }
    bool assign(const OvVariant& inOther) override
    {
        if (!inOther.isType<T>())
            return false;
        value = static_cast<const OvProperty&>(inOther).value;
        return true;
    }

    bool fromString(const char* inText) override
    {
        if (!inText)
            return false;
        std::stringstream stream(inText);
        stream.imbue(std::locale::classic());
        stream >> value;
        return !stream.fail();
    }
    bool fromQString(const QString& inText) override { return OvVariant::fromQString(inText); }

    T value;

private:
    OvProperty(const OvProperty&) = default;
};

template <>
std::string OvProperty<bool>::toString() const;
template <>
bool OvProperty<bool>::fromString(const char* inText);

template <>
bool OvProperty<QString>::isStringType() const;
template <>
std::string OvProperty<QString>::toString() const;
template <>
QString OvProperty<QString>::toQString() const;
template <>
bool OvProperty<QString>::fromString(const char* inText);
template <>
bool OvProperty<QString>::fromQString(const QString& inText);

template <>
bool OvProperty<QList<QString>>::isStringType() const;
template <>
std::string OvProperty<QList<QString>>::toString() const;
template <>
QString OvProperty<QList<QString>>::toQString() const;
template <>
bool OvProperty<QList<QString>>::fromString(const char* inText);
template <>
bool OvProperty<QList<QString>>::fromQString(const QString& inText);

extern template class OvProperty<int>;
extern template class OvProperty<double>;
extern template class OvProperty<bool>;
extern template class OvProperty<QString>;
extern template class OvProperty<QList<QString>>;

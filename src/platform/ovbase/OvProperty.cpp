#include "OvProperty.h"

#include "OvTextList.h"

template <>
std::string OvProperty<bool>::toString() const
{
    return value ? "true" : "false";
}

template <>
bool OvProperty<bool>::fromString(const char* inText)
{
    const QByteArray text = QByteArray(inText).trimmed().toLower();
    const bool isTrue = text == "true" || text == "1";
    if (!isTrue && text != "false" && text != "0")
        return false;
    value = isTrue;
    return true;
}

template <>
bool OvProperty<QString>::isStringType() const
{
    return true;
}

template <>
std::string OvProperty<QString>::toString() const
{
    return value.toStdString();
}

template <>
QString OvProperty<QString>::toQString() const
{
    return value;
}

template <>
bool OvProperty<QString>::fromString(const char* inText)
{
    return inText && fromQString(QString::fromUtf8(inText));
}

template <>
bool OvProperty<QString>::fromQString(const QString& inText)
{
    value = inText;
    return true;
}

template <>
bool OvProperty<QList<QString>>::isStringType() const
{
    return true;
}

template <>
std::string OvProperty<QList<QString>>::toString() const
{
    return toQString().toStdString();
}

template <>
QString OvProperty<QList<QString>>::toQString() const
{
    return OvTextList::toText(value);
}

template <>
bool OvProperty<QList<QString>>::fromString(const char* inText)
{
    return inText && fromQString(QString::fromUtf8(inText));
}

template <>
bool OvProperty<QList<QString>>::fromQString(const QString& inText)
{
    std::optional<QList<QString>> list = OvTextList::fromText(inText);
    if (!list)
        return false;
    value = std::move(*list);
    return true;
}

template class OvProperty<int>;
template class OvProperty<double>;
template class OvProperty<bool>;
template class OvProperty<QString>;
template class OvProperty<QList<QString>>;

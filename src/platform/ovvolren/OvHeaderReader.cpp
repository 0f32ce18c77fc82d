#include "OvHeaderReader.h"

#include <cmath>
#include <limits>

namespace {

std::vector<double> finiteNumbers(const QVariant& inValue)
{
    const QVariantList values =
        inValue.typeId() == QMetaType::QVariantList ? inValue.toList() : QVariantList{inValue};
    std::vector<double> numbers;
    for (const QVariant& value : values) {
        const int type = value.typeId();
        const bool isNumber =
            type == QMetaType::Int || type == QMetaType::LongLong || type == QMetaType::Double;
        if (!isNumber || !std::isfinite(value.toDouble()))
            return {};
        numbers.push_back(value.toDouble());
    }
    return numbers;
}

std::string firstText(const QVariant& inValue)
{
    const bool several = inValue.typeId() == QMetaType::QVariantList;
    const QVariant first = several ? inValue.toList().value(0) : inValue;
    return first.toString().trimmed().toStdString();
}

} // namespace

OvHeaderReader::OvHeaderReader(const Ovg::DicomHeader& inHeader)
    : mHeader(inHeader)
{
    mPerFrame = value(QStringLiteral("PerFrameFunctionalGroupsSequence")).toInt();
    mShared = value(QStringLiteral("SharedFunctionalGroupsSequence")).toInt();
}

QVariant OvHeaderReader::value(const QString& inPath) const
{
    return mHeader.value(Ovg::DicomTagPath::fromText(inPath));
}

QVariant OvHeaderReader::value(int inFrame, const char* inGroup, const char* inKeyword) const
{
    const QString inside = QLatin1String(inGroup) + QLatin1Char('.') + QLatin1String(inKeyword);
    QVariant found;
    if (inFrame < mPerFrame)
        found = value(QStringLiteral("PerFrameFunctionalGroupsSequence[%1].").arg(inFrame) + inside);
    if (!found.isValid() && mShared > 0)
        found = value(QLatin1String("SharedFunctionalGroupsSequence.") + inside);
    return found.isValid() ? found : value(QLatin1String(inKeyword));
}

std::vector<double> OvHeaderReader::numbers(const char* inKeyword) const
{
    return finiteNumbers(value(QLatin1String(inKeyword)));
}

std::vector<double> OvHeaderReader::numbers(int inFrame, const char* inGroup, const char* inKeyword) const
{
    return finiteNumbers(value(inFrame, inGroup, inKeyword));
}

std::optional<double> OvHeaderReader::number(const char* inKeyword) const
{
    const auto all = numbers(inKeyword);
    return all.empty() ? std::nullopt : std::optional(all.front());
}

std::optional<int> OvHeaderReader::integer(const char* inKeyword) const
{
    const auto found = number(inKeyword);
    const bool fits =
        found && *found == std::trunc(*found) && std::fabs(*found) <= double(std::numeric_limits<int>::max());
    return fits ? std::optional(int(*found)) : std::nullopt;
}

std::string OvHeaderReader::text(const char* inKeyword) const
{
    return firstText(value(QLatin1String(inKeyword)));
}

std::string OvHeaderReader::text(int inFrame, const char* inGroup, const char* inKeyword) const
{
    return firstText(value(inFrame, inGroup, inKeyword));
}

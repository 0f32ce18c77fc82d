#include "JxDom.h"

#include <QString>

#include <algorithm>
#include <array>

namespace {

using Words = std::array<QLatin1String, 4>;

constexpr Words TrueWords{QLatin1String("1"), QLatin1String("true"), QLatin1String("yes"),
                          QLatin1String("on")};
constexpr Words FalseWords{QLatin1String("0"), QLatin1String("false"), QLatin1String("no"),
                           QLatin1String("off")};

bool isOneOf(const Words& inWords, QStringView inText)
{
    return std::any_of(inWords.begin(), inWords.end(),
                       [&](QLatin1String word) { return inText.compare(word, Qt::CaseInsensitive) == 0; });
}

} // namespace

bool JxDom::qStringToBool(QStringView inText, const bool& inDefaultValue, bool* outOk)
{
    const QStringView text = inText.trimmed();
    const bool isTrue = isOneOf(TrueWords, text);
    const bool isKnown = isTrue || isOneOf(FalseWords, text);
    if (outOk)
        *outOk = isKnown;
    return isKnown ? isTrue : inDefaultValue;
}

#include "OvFormatText.h"

#include <algorithm>

namespace {

constexpr QLatin1Char Quote('\'');

char fieldOf(QChar inCharacter, std::string_view inFields)
{
    const char letter = inCharacter.toLower().toLatin1();
    const bool isField = std::any_of(inFields.begin(), inFields.end(), [&](char f) {
        return QChar::fromLatin1(f).toLower() == inCharacter.toLower();
    });
    return isField ? letter : '\0';
}

} // namespace

OvFormatText::OvFormatText(const QString& inFormat, std::string_view inFields)
{
    bool isQuoted = false;
    QChar last;
    for (const QChar c : inFormat) {
        isQuoted = isQuoted != (c == Quote);
        const char field = isQuoted ? '\0' : fieldOf(c, inFields);
        const bool goesOn = !mParts.empty() && mParts.back().field == field && (field == 0 || c == last);
        if (!goesOn)
            mParts.push_back({field, QString()});
        mParts.back().text += c;
        last = c;
    }
}

QString OvFormatText::text() const
{
    QString text;
    for (const Part& part : mParts)
        text += part.text;
    return text.trimmed();
}

std::size_t OvFormatText::find(char inField) const
{
    const auto found =
        std::find_if(mParts.begin(), mParts.end(), [&](const Part& part) { return part.field == inField; });
    return std::size_t(found - mParts.begin());
}

bool OvFormatText::has(char inField) const
{
    return find(inField) < mParts.size();
}

QString OvFormatText::between(char inField, char inNext) const
{
    const std::size_t first = find(inField);
    const bool follows = isText(first + 1) && find(inNext) == first + 2;
    return follows ? mParts[first + 1].text : QString();
}

void OvFormatText::replace(std::string_view inRun, const QString& inText)
{
    const QString run = QString::fromLatin1(inRun.data(), qsizetype(inRun.size()));
    for (Part& part : mParts) {
        if (part.field != 0 && part.text == run)
            part.text = inText;
    }
}

void OvFormatText::drop(char inField)
{
    while (has(inField)) {
        const std::size_t at = find(inField);
        erase(at);
        if (at > 0 && isText(at - 1) && isPunctuation(mParts[at - 1].text))
            erase(at - 1);
        else if (isText(at))
            erase(at);
    }
}

void OvFormatText::erase(std::size_t inPart)
{
    mParts.erase(mParts.begin() + std::ptrdiff_t(inPart));
}

void OvFormatText::insertBehind(char inPrevious, char inField, const QString& inSeparator,
                                const QString& inRun)
{
    const std::size_t previous = find(inPrevious);
    if (previous == mParts.size())
        return;
    const auto behind = mParts.begin() + std::ptrdiff_t(previous) + 1;
    mParts.insert(behind, {Part{0, inSeparator}, Part{inField, inRun}});
}

bool OvFormatText::isPunctuation(const QString& inText)
{
    const auto isWord = [](QChar c) { return c.isLetter() || c == Quote; };
    return !inText.isEmpty() && std::none_of(inText.begin(), inText.end(), isWord);
}

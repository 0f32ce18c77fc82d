#include "OvTextList.h"

#include <algorithm>

namespace {

constexpr QLatin1Char Quote('"');
constexpr QLatin1Char Comma(',');

bool needsQuotes(const QString& inElement)
{
    const auto isSpecial = [](QChar c) {
        return c == Quote || c == Comma || c == QLatin1Char('\n') || c == QLatin1Char('\r');
    };
    return inElement.isEmpty() || inElement.front().isSpace() || inElement.back().isSpace() ||
           std::any_of(inElement.begin(), inElement.end(), isSpecial);
}

QString quoted(QString inElement)
{
    return Quote + inElement.replace(Quote, QLatin1String("\"\"")) + Quote;
}

/// Reads the quoted element whose opening quote stands at \a ioAt, and moves behind its closing one.
std::optional<QString> takeQuoted(const QString& inText, qsizetype& ioAt)
{
    QString element;
    for (++ioAt; ioAt < inText.size(); ++ioAt) {
        if (inText[ioAt] == Quote) {
            ++ioAt;
            if (ioAt == inText.size() || inText[ioAt] != Quote)
                return element;
        }
        element += inText[ioAt];
    }
    return std::nullopt;
}

QString takeBare(const QString& inText, qsizetype& ioAt)
{
    const qsizetype comma = inText.indexOf(Comma, ioAt);
    const qsizetype end = comma < 0 ? inText.size() : comma;
    const QString element = inText.mid(ioAt, end - ioAt);
    ioAt = end;
    return element;
}

std::optional<QString> takeElement(const QString& inText, qsizetype& ioAt)
{
    if (ioAt < inText.size() && inText[ioAt] == Quote)
        return takeQuoted(inText, ioAt);
    return takeBare(inText, ioAt);
}

} // namespace

QString OvTextList::toText(const QList<QString>& inList)
{
    QStringList elements;
    elements.reserve(inList.size());
    for (const QString& element : inList)
        elements.append(needsQuotes(element) ? quoted(element) : element);
    return elements.join(Comma);
}

std::optional<QList<QString>> OvTextList::fromText(const QString& inText)
{
    QList<QString> list;
    if (inText.isEmpty())
        return list;
    for (qsizetype at = 0; at <= inText.size(); ++at) {
        std::optional<QString> element = takeElement(inText, at);
        if (!element || (at < inText.size() && inText[at] != Comma))
            return std::nullopt;
        list.append(std::move(*element));
    }
    return list;
}

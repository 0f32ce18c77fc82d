#include "JxXmlStreamReader.h"

#include <algorithm>

namespace {

int lineBreaks(QStringView inText)
{
    int count = 0;
    for (qsizetype i = 0; i < inText.size(); ++i) {
        const bool endsPair = inText[i] == u'\n' && i > 0 && inText[i - 1] == u'\r';
        if ((inText[i] == u'\n' && !endsPair) || inText[i] == u'\r')
            ++count;
    }
    return count;
}

} // namespace

QString JxXmlStreamReader::trim(const QString& inText, int& outLineBreaks)
{
    const auto start = std::find_if_not(inText.begin(), inText.end(), [](QChar c) { return c.isSpace(); });
    outLineBreaks = lineBreaks(QStringView(inText.begin(), start));
    return inText.trimmed();
}

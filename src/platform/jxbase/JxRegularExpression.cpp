#include "JxRegularExpression.h"

namespace {

/// The set that begins at \a inStart, behind its bracket; moves \a ioNext to its closing bracket.
QString convertedSet(QStringView inPattern, qsizetype& ioNext)
{
    QString set(QLatin1Char('['));
    if (ioNext < inPattern.size() && inPattern[ioNext] == QLatin1Char('!')) {
        set += QLatin1Char('^');
        ++ioNext;
    }
    if (ioNext < inPattern.size() && inPattern[ioNext] == QLatin1Char(']'))
        set += inPattern[ioNext++];
    while (ioNext < inPattern.size() && inPattern[ioNext] != QLatin1Char(']')) {
        if (inPattern[ioNext] == QLatin1Char('\\'))
            set += QLatin1Char('\\');
        set += inPattern[ioNext++];
    }
    return set;
}

QString converted(QStringView inPattern)
{
    QString expression;
    for (qsizetype i = 0; i < inPattern.size();) {
        const QChar c = inPattern[i++];
        if (c == QLatin1Char('*'))
            expression += QLatin1String("[\\d\\D]*");
        else if (c == QLatin1Char('?'))
            expression += QLatin1String("[\\d\\D]");
        else if (c == QLatin1Char('['))
            expression += convertedSet(inPattern, i);
        else if (QLatin1String("\\$()+.^{|}").contains(c))
            expression += QLatin1Char('\\') + QString(c);
        else
            expression += c;
    }
    return expression;
}

} // namespace

QRegularExpression JxRegularExpression::fromWildcard(QStringView inPattern, Qt::CaseSensitivity inCase,
                                                     QRegularExpression::WildcardConversionOptions inOptions)
{
    if (!(inOptions & NonPathWildcardConversion))
        return QRegularExpression::fromWildcard(inPattern, inCase, inOptions);
    QString expression = converted(inPattern);
    if (!inOptions.testFlag(QRegularExpression::UnanchoredWildcardConversion))
        expression = QRegularExpression::anchoredPattern(expression);
    return QRegularExpression(expression, inCase == Qt::CaseSensitive
                                              ? QRegularExpression::NoPatternOption
                                              : QRegularExpression::CaseInsensitiveOption);
}

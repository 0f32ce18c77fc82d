#include "DicomDateTime.h"

#include <QTimeZone>

#include <algorithm>

namespace Ovg {

namespace {

bool allDigits(QStringView inText)
{
    return std::all_of(inText.begin(), inText.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

/// The number of \a inDigits digits from \a inFrom on, or \a inDefault when the text is shorter.
int number(QStringView inText, int inFrom, int inDigits, int inDefault)
{
    return inFrom + inDigits <= inText.size() ? inText.mid(inFrom, inDigits).toInt() : inDefault;
}

/// Milliseconds from the digits behind the point.
int milliseconds(QStringView inDigits)
{
    return inDigits.left(3).toString().leftJustified(3, QLatin1Char('0')).toInt();
}

} // namespace

std::optional<QDate> parseDicomDate(QStringView inText)
{
    QString digits = inText.toString();
    if (digits.size() == 10 && digits[4] == QLatin1Char('.') && digits[7] == QLatin1Char('.'))
        digits.remove(QLatin1Char('.'));
    if (digits.size() != 8 || !allDigits(digits))
        return std::nullopt;
    const QDate date(number(digits, 0, 4, 0), number(digits, 4, 2, 0), number(digits, 6, 2, 0));
    return date.isValid() ? std::optional(date) : std::nullopt;
}

std::optional<QTime> parseDicomTime(QStringView inText)
{
    QString text = inText.toString();
    if (text.size() > 2 && text[2] == QLatin1Char(':'))
        text.remove(QLatin1Char(':'));
    const qsizetype point = text.indexOf(QLatin1Char('.'));
    const QString digits = text.left(point);
    const QString fraction = point < 0 ? QString() : text.mid(point + 1);
    const bool rightLengths = point < 0 ? digits.size() == 2 || digits.size() == 4 || digits.size() == 6
                                        : digits.size() == 6 && fraction.size() >= 1 && fraction.size() <= 6;
    if (!rightLengths || !allDigits(digits) || !allDigits(fraction))
        return std::nullopt;
    const QTime time(number(digits, 0, 2, 0), number(digits, 2, 2, 0), number(digits, 4, 2, 0),
                     milliseconds(fraction));
    return time.isValid() ? std::optional(time) : std::nullopt;
}

std::optional<int> parseDicomUtcOffset(QStringView inText)
{
    if (inText.size() != 5 || (inText[0] != u'+' && inText[0] != u'-') || !allDigits(inText.mid(1)))
        return std::nullopt;
    const int hours = number(inText, 1, 2, 0);
    const int minutes = number(inText, 3, 2, 0);
    if (hours > 14 || minutes > 59)
        return std::nullopt;
    return (inText[0] == u'-' ? -1 : 1) * (hours * 60 + minutes) * 60;
}

std::optional<QDateTime> parseDicomDateTime(QStringView inText, std::optional<int> inOffset)
{
    const bool hasOffset =
        inText.size() > 5 && (inText.at(inText.size() - 5) == u'+' || inText.at(inText.size() - 5) == u'-');
    const QStringView main = hasOffset ? inText.chopped(5) : inText;
    const std::optional<int> offset = hasOffset ? parseDicomUtcOffset(inText.right(5)) : inOffset;
    const QStringView day = main.left(8);
    const bool wholeDay = day.size() == 4 || day.size() == 6 || day.size() == 8;
    if (!wholeDay || !allDigits(day) || (hasOffset && !offset))
        return std::nullopt;
    const QDate date(number(day, 0, 4, 0), number(day, 4, 2, 1), number(day, 6, 2, 1));
    const auto time = main.size() > 8 ? parseDicomTime(main.mid(8)) : QTime(0, 0);
    if (!date.isValid() || !time || main.mid(8).contains(u':'))
        return std::nullopt;
    return offset ? QDateTime(date, *time, QTimeZone(*offset)) : QDateTime(date, *time);
}

} // namespace Ovg

#pragma once

#include <QDate>
#include <QString>
#include <QTime>

/// Dates and times as the user reads them: by the properties "General.DateFormat" and "General.TimeFormat"
/// and the default QLocale. Always there; without a property pool the locale alone decides.
///
/// The properties hold formats as QLocale::toString takes them, in their default of an empty text the
/// locale's own.
class OvDateFormatter
{
public:
    /// By the format of the user, or else the locale's short one with the year in four digits. An invalid
    /// date gives an empty string.
    static QString guiDate(const QDate& inDate);

    /// By the format of the user, or else the locale's. Seconds and milliseconds are shown exactly when
    /// asked for, whatever the format says of them; milliseconds bring seconds with them. A format without
    /// seconds shows them behind the minutes, parted as minutes are from hours; milliseconds stand behind the
    /// locale's decimal point. An invalid time gives an empty string.
    static QString guiTime(const QTime& inTime, bool inWithMilliseconds, bool inWithSeconds);
};

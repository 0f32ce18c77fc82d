#include "OvDateFormatter.h"

#include "OvFormatText.h"
#include "OvPropertyPool.h"
#include "OvTranslationProperty.h"

#include <QLocale>

namespace {

constexpr const char* GroupId = "General";
constexpr const char* DateFormatId = "General.DateFormat";
constexpr const char* TimeFormatId = "General.TimeFormat";

void registerProperties(OvPropertyPool& ioPool)
{
    for (const char* id : {DateFormatId, TimeFormatId})
        ioPool.property<QString>(id, QString(), ioPool.defaultSerializer());
}

// The properties that this library itself has; a pool is never there before the library.
[[maybe_unused]] const bool sIsRegistered = [] {
    OvTranslationProperty::translate(GroupId, QT_TRANSLATE_NOOP("OvTranslationProperty", "General"), nullptr);
    OvTranslationProperty::translate(DateFormatId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Date Format"),
                                     nullptr);
    OvTranslationProperty::translate(TimeFormatId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Time Format"),
                                     nullptr);
    OvPropertyPool::addRegisterProperties(registerProperties);
    return true;
}();

/// What the user has set, without blanks around; empty for the locale's own.
QString userFormat(const char* inId)
{
    const OvPropertyPool* pool = OvPropertyPool::instance();
    return pool ? pool->value<QString>(inId, QString()).trimmed() : QString();
}

QString localeDateFormat(const QLocale& inLocale)
{
    OvFormatText format(inLocale.dateFormat(QLocale::ShortFormat), "y");
    format.replace("yy", QStringLiteral("yyyy"));
    return format.text();
}

QString localeTimeFormat(const QLocale& inLocale)
{
    OvFormatText format(inLocale.timeFormat(QLocale::ShortFormat), "B");
    // A part of the day ("in the afternoon"), which some locales have and QLocale::toString can't write.
    format.replace("B", QStringLiteral("AP "));
    return format.text();
}

/// What stands between hours and minutes, if that suits minutes and seconds too.
QString separator(const OvFormatText& inFormat)
{
    const QString text = inFormat.between('h', 'm');
    return OvFormatText::isPunctuation(text) ? text : QStringLiteral(":");
}

} // namespace

QString OvDateFormatter::guiDate(const QDate& inDate)
{
    if (!inDate.isValid())
        return QString();
    const QLocale locale;
    const QString format = userFormat(DateFormatId);
    return locale.toString(inDate, format.isEmpty() ? localeDateFormat(locale) : format);
}

QString OvDateFormatter::guiTime(const QTime& inTime, bool inWithMilliseconds, bool inWithSeconds)
{
    if (!inTime.isValid())
        return QString();
    const QLocale locale;
    const bool withSeconds = inWithSeconds || inWithMilliseconds;
    const QString user = userFormat(TimeFormatId);
    OvFormatText format(user.isEmpty() ? localeTimeFormat(locale) : user, "hmsz");
    if (!inWithMilliseconds)
        format.drop('z');
    if (!withSeconds)
        format.drop('s');
    if (withSeconds && !format.has('s'))
        format.insertBehind('m', 's', separator(format), QStringLiteral("ss"));
    if (inWithMilliseconds && !format.has('z'))
        format.insertBehind('s', 'z', locale.decimalPoint(), QStringLiteral("zzz"));
    return locale.toString(inTime, format.text());
}

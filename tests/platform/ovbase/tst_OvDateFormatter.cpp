#include <support/KyTest.h>

#include <ovbase/OvDateFormatter.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <QLocale>

class TestOvDateFormatter final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        mPool = std::make_unique<OvPropertyPool>();
    }
    void cleanup()
    {
        mPool.reset();
        QLocale::setDefault(QLocale::c());
    }

    void theFormatsArePropertiesWithLabels()
    {
        QCOMPARE(mPool->value<QString>("General.DateFormat", "none"), QString());
        QCOMPARE(mPool->value<QString>("General.TimeFormat", "none"), QString());
        QCOMPARE(mPool->variant("General.DateFormat")->serializer(), mPool->defaultSerializer());
        QCOMPARE(OvTranslationProperty::label("General"), "General");
        QCOMPARE(OvTranslationProperty::label("General.DateFormat"), "Date Format");
        QCOMPARE(OvTranslationProperty::label("General.TimeFormat"), "Time Format");
    }

    void datesFollowTheLocaleWithFourDigitsOfTheYear_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::newRow("German") << "de_DE"
                                << "03.02.1987";
        QTest::newRow("American") << "en_US"
                                  << "2/3/1987";
        QTest::newRow("British") << "en_GB"
                                 << "03/02/1987";
        QTest::newRow("Swedish") << "sv_SE"
                                 << "1987-02-03";
        QTest::newRow("Japanese") << "ja_JP"
                                  << "1987/02/03";
        QTest::newRow("Hungarian") << "hu_HU" << QStringLiteral("1987. 02. 03.");
        QTest::newRow("Bulgarian, with a quoted text") << "bg_BG" << QStringLiteral("3.02.1987 г.");
        QTest::newRow("C") << "C"
                           << "3 Feb 1987";
    }
    void datesFollowTheLocaleWithFourDigitsOfTheYear()
    {
        QFETCH(QString, locale);
        QLocale::setDefault(QLocale(locale));
        QTEST(OvDateFormatter::guiDate(QDate(1987, 2, 3)), "text");
    }

    void datesOfEveryLocaleShowTheYear()
    {
        const QList<QLocale> locales =
            QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory);
        QVERIFY(locales.size() > 300);
        for (const QLocale& locale : locales) {
            QLocale::setDefault(locale);
            const QString year = locale.toString(QDate(1987, 2, 3), QStringLiteral("yyyy"));
            const QString text = OvDateFormatter::guiDate(QDate(1987, 2, 3));
            QVERIFY2(text.contains(year), qPrintable(locale.name() + ' ' + text));
        }
    }

    void datesFollowTheSetting_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("text");
        QTest::newRow("ISO") << "yyyy-MM-dd"
                             << "1987-02-03";
        QTest::newRow("two digits of the year, as asked for") << "d.M.yy"
                                                              << "3.2.87";
        QTest::newRow("names in the locale's language") << "dddd, d. MMMM yyyy"
                                                        << "Dienstag, 3. Februar 1987";
        QTest::newRow("quoted text") << "'am' d.M."
                                     << "am 3.2.";
        QTest::newRow("only blanks") << "  "
                                     << "03.02.1987";
    }
    void datesFollowTheSetting()
    {
        QFETCH(QString, format);
        set("General.DateFormat", format);
        QTEST(OvDateFormatter::guiDate(QDate(1987, 2, 3)), "text");
    }

    void invalidDatesAndTimesAreEmpty()
    {
        QCOMPARE(OvDateFormatter::guiDate(QDate()), QString());
        QCOMPARE(OvDateFormatter::guiDate(QDate(2023, 2, 29)), QString());
        QCOMPARE(OvDateFormatter::guiTime(QTime(), true, true), QString());
        QCOMPARE(OvDateFormatter::guiTime(QTime(24, 0), false, false), QString());
    }

    void datesOutsideTheCommonYearsAreShown()
    {
        QCOMPARE(OvDateFormatter::guiDate(QDate(2000, 2, 29)), "29.02.2000");
        QCOMPARE(OvDateFormatter::guiDate(QDate(987, 2, 3)), "03.02.0987");
        QCOMPARE(OvDateFormatter::guiDate(QDate(9999, 12, 31)), "31.12.9999");
    }

    void timesFollowTheLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("seconds");
        QTest::addColumn<QString>("milliseconds");
        const QString noBreak(QChar(0x202f));
        QTest::newRow("German") << "de_DE"
                                << "14:05"
                                << "14:05:09"
                                << "14:05:09,007";
        QTest::newRow("American") << "en_US"
                                  << "2:05 PM"
                                  << "2:05:09 PM"
                                  << "2:05:09.007 PM";
        QTest::newRow("British") << "en_GB"
                                 << "14:05"
                                 << "14:05:09"
                                 << "14:05:09.007";
        QTest::newRow("Finnish, with dots") << "fi_FI"
                                            << "14.05"
                                            << "14.05.09"
                                            << "14.05.09,007";
        QTest::newRow("Canadian French, with letters") << "fr_CA"
                                                       << "14 h 05"
                                                       << "14 h 05:09"
                                                       << "14 h 05:09,007";
        QTest::newRow("Bulgarian, with a quoted text")
            << "bg_BG" << QStringLiteral("14:05 ч.") << QStringLiteral("14:05:09 ч.")
            << QStringLiteral("14:05:09,007 ч.");
        QTest::newRow("Korean, the part of the day first")
            << "ko_KR" << QStringLiteral("오후 2:05") << QStringLiteral("오후 2:05:09")
            << QStringLiteral("오후 2:05:09.007");
        QTest::newRow("C") << "C"
                           << "14:05:09"
                           << "14:05:09"
                           << "14:05:09.007";
    }
    void timesFollowTheLocale()
    {
        QFETCH(QString, locale);
        QFETCH(QString, plain);
        QFETCH(QString, seconds);
        QFETCH(QString, milliseconds);
        QLocale::setDefault(QLocale(locale));
        const QTime time(14, 5, 9, 7);
        // The C locale's own short format has seconds, which are not shown either.
        QCOMPARE(OvDateFormatter::guiTime(time, false, false), locale == "C" ? "14:05" : plain);
        QCOMPARE(OvDateFormatter::guiTime(time, false, true), seconds);
        QCOMPARE(OvDateFormatter::guiTime(time, true, true), milliseconds);
        QCOMPARE(OvDateFormatter::guiTime(time, true, false), milliseconds);
    }

    void timesOfEveryLocaleTellTheirMinutesAndSeconds()
    {
        const QList<QLocale> locales =
            QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory);
        for (const QLocale& locale : locales) {
            QLocale::setDefault(locale);
            const QString minutes = locale.toString(QTime(14, 35, 49, 7), QStringLiteral("mm"));
            const QString seconds = locale.toString(QTime(14, 35, 49, 7), QStringLiteral("ss"));
            const QString plain = OvDateFormatter::guiTime(QTime(14, 35, 49, 7), false, false);
            const QString full = OvDateFormatter::guiTime(QTime(14, 35, 49, 7), false, true);
            QVERIFY2(plain.contains(minutes) && !plain.contains(seconds),
                     qPrintable(locale.name() + ' ' + plain));
            QVERIFY2(full.indexOf(minutes) >= 0 && full.indexOf(minutes) < full.indexOf(seconds),
                     qPrintable(locale.name() + ' ' + full));
            // No letter of the format is left over.
            const QString names = (locale.amText() + locale.pmText()).toUpper();
            QVERIFY2(names.contains('B') || !full.contains('B'), qPrintable(locale.name() + ' ' + full));
        }
    }

    void timesFollowTheSetting_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("seconds");
        QTest::addColumn<QString>("milliseconds");
        QTest::newRow("minutes") << "HH:mm"
                                 << "14:05"
                                 << "14:05:09"
                                 << "14:05:09,007";
        QTest::newRow("seconds") << "HH:mm:ss"
                                 << "14:05"
                                 << "14:05:09"
                                 << "14:05:09,007";
        QTest::newRow("milliseconds") << "HH:mm:ss.zzz"
                                      << "14:05"
                                      << "14:05:09"
                                      << "14:05:09.007";
        QTest::newRow("short") << "H.m"
                               << "14.5"
                               << "14.5.09"
                               << "14.5.09,007";
        QTest::newRow("twelve hours") << "h:mm AP"
                                      << "2:05 PM"
                                      << "2:05:09 PM"
                                      << "2:05:09,007 PM";
        QTest::newRow("unit behind") << "HH:mm:ss 'Uhr'"
                                     << "14:05 Uhr"
                                     << "14:05:09 Uhr"
                                     << "14:05:09,007 Uhr";
        QTest::newRow("a unit for each") << "HH 'h' mm 'min' ss 's'"
                                         << "14 h 05 min"
                                         << "14 h 05 min 09 s"
                                         << "14 h 05 min 09,007 s";
        QTest::newRow("no parting") << "HHmm"
                                    << "1405"
                                    << "1405:09"
                                    << "1405:09,007";
        QTest::newRow("letters in quotes") << "'ms' HH:mm"
                                           << "ms 14:05"
                                           << "ms 14:05:09"
                                           << "ms 14:05:09,007";
        QTest::newRow("no minutes") << "HH 'Uhr'"
                                    << "14 Uhr"
                                    << "14 Uhr"
                                    << "14 Uhr";
        QTest::newRow("only blanks") << " "
                                     << "14:05"
                                     << "14:05:09"
                                     << "14:05:09,007";
    }
    void timesFollowTheSetting()
    {
        QFETCH(QString, format);
        set("General.TimeFormat", format);
        const QTime time(14, 5, 9, 7);
        QTEST(OvDateFormatter::guiTime(time, false, false), "plain");
        QTEST(OvDateFormatter::guiTime(time, false, true), "seconds");
        QTEST(OvDateFormatter::guiTime(time, true, true), "milliseconds");
    }

    void midnightAndTheLastMomentAreTimes()
    {
        QCOMPARE(OvDateFormatter::guiTime(QTime(0, 0), false, true), "00:00:00");
        QCOMPARE(OvDateFormatter::guiTime(QTime(23, 59, 59, 999), true, true), "23:59:59,999");
    }

    void withoutAPoolTheLocaleDecides()
    {
        set("General.DateFormat", "yyyy");
        mPool.reset();
        QCOMPARE(OvDateFormatter::guiDate(QDate(1987, 2, 3)), "03.02.1987");
        QCOMPARE(OvDateFormatter::guiTime(QTime(14, 5, 9), false, true), "14:05:09");
    }

private:
    void set(const char* inId, const QString& inFormat)
    {
        QVERIFY(mPool->variant(inId)->setValueFromQString(inFormat));
    }

    std::unique_ptr<OvPropertyPool> mPool;
};

KY_TEST_MAIN(TestOvDateFormatter)

#include "tst_OvDateFormatter.moc"

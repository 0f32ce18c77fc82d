#include <support/KyTest.h>

#include "Temperature.h"

#include <ovbase/OvProperty.h>

#include <climits>
#include <limits>
#include <locale>

namespace {

/// A culture that writes 1234.5 as 1.234,5.
class GroupedNumbers final : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

template <class T>
void compareRoundTrip(const T& inValue)
{
    const OvProperty<T> written("a.b", inValue);
    OvProperty<T> read("a.b");
    QVERIFY(read.fromQString(written.toQString()));
    QCOMPARE(read.value, inValue);
    QVERIFY(read.isEqual(written));
}

} // namespace

class TestOvProperty final : public QObject
{
    Q_OBJECT

private slots:
    void typesTellTheirValueType()
    {
        QVERIFY(OvProperty<int>("a").type() == typeid(int));
        QVERIFY(OvProperty<double>("a").type() == typeid(double));
        QVERIFY(OvProperty<bool>("a").type() == typeid(bool));
        QVERIFY(OvProperty<QString>("a").type() == typeid(QString));
        QVERIFY(OvProperty<QList<QString>>("a").type() == typeid(QList<QString>));
        QVERIFY(OvProperty<Temperature>("a").type() == typeid(Temperature));
        QVERIFY(OvProperty<int>("a").isType<int>());
        QVERIFY(!OvProperty<int>("a").isType<double>());
    }

    void stringTypesSaySo()
    {
        QVERIFY(!OvProperty<int>("a").isStringType());
        QVERIFY(!OvProperty<double>("a").isStringType());
        QVERIFY(!OvProperty<bool>("a").isStringType());
        QVERIFY(!OvProperty<Temperature>("a").isStringType());
        QVERIFY(OvProperty<QString>("a").isStringType());
        QVERIFY(OvProperty<QList<QString>>("a").isStringType());
    }

    void aStringListAndAListOfStringsAreOneType()
    {
        QVERIFY(OvProperty<QList<QString>>("a").isType<QStringList>());
    }

    void defaultValuesAreNeutral()
    {
        QCOMPARE(OvProperty<int>("a").value, 0);
        QCOMPARE(OvProperty<double>("a").value, 0.0);
        QCOMPARE(OvProperty<bool>("a").value, false);
        QVERIFY(OvProperty<QString>("a").value.isEmpty());
        QVERIFY(OvProperty<QList<QString>>("a").value.isEmpty());
    }

    void intsAreWrittenPlainly_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0 << QStringLiteral("0");
        QTest::newRow("negative") << -5 << QStringLiteral("-5");
        QTest::newRow("thousands") << 1234567 << QStringLiteral("1234567");
        QTest::newRow("largest") << INT_MAX << QStringLiteral("2147483647");
        QTest::newRow("least") << INT_MIN << QStringLiteral("-2147483648");
    }
    void intsAreWrittenPlainly()
    {
        QFETCH(int, value);
        QFETCH(QString, text);
        QCOMPARE(OvProperty<int>("a", value).toQString(), text);
        QCOMPARE(OvProperty<int>("a", value).toString(), text.toStdString());
        compareRoundTrip(value);
    }

    void intsAreReadByExtraction_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isRead");
        QTest::addColumn<int>("value");
        QTest::newRow("plain") << "42" << true << 42;
        QTest::newRow("sign") << "+42" << true << 42;
        QTest::newRow("blanks before") << " \t\n 42" << true << 42;
        QTest::newRow("text behind") << "42abc" << true << 42;
        QTest::newRow("fraction behind") << "2.5" << true << 2;
        QTest::newRow("empty") << "" << false << 7;
        QTest::newRow("blank") << "  " << false << 7;
        QTest::newRow("word") << "abc" << false << 0;
        QTest::newRow("too large") << "99999999999" << false << INT_MAX;
        QTest::newRow("too small") << "-99999999999" << false << INT_MIN;
        QTest::newRow("hexadecimal") << "0x10" << true << 0;
        QTest::newRow("outside Latin-1") << QString(QChar(0x0665)) << false << 0;
    }
    void intsAreReadByExtraction()
    {
        QFETCH(QString, text);
        QFETCH(bool, isRead);
        OvProperty<int> property("a", 7);
        QCOMPARE(property.fromQString(text), isRead);
        // A stream that meets its end before it has seen anything does not touch the number.
        QTEST(property.value, "value");
    }

    void doublesAreWrittenWithSixDigits_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 2.0 << QStringLiteral("2");
        QTest::newRow("fraction") << 2.5 << QStringLiteral("2.5");
        QTest::newRow("negative") << -0.125 << QStringLiteral("-0.125");
        QTest::newRow("rounded") << 3.14159265358979 << QStringLiteral("3.14159");
        QTest::newRow("large") << 1e21 << QStringLiteral("1e+21");
        QTest::newRow("small") << 1e-7 << QStringLiteral("1e-07");
        QTest::newRow("million") << 1234567.0 << QStringLiteral("1.23457e+06");
    }
    void doublesAreWrittenWithSixDigits()
    {
        QFETCH(double, value);
        QTEST(OvProperty<double>("a", value).toQString(), "text");
    }

    void doublesOfUpToSixDigitsComeBack()
    {
        for (const double value : {0.0, 2.5, -0.125, 123456.0, 0.1, 1e300, 1e-300})
            compareRoundTrip(value);
    }

    void doublesAreReadByExtraction_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isRead");
        QTest::addColumn<double>("value");
        QTest::newRow("fraction") << "2.5" << true << 2.5;
        QTest::newRow("exponent") << "1e3" << true << 1000.0;
        QTest::newRow("many digits") << "0.12345678901234567" << true << 0.12345678901234567;
        QTest::newRow("text behind") << "2.5 mm" << true << 2.5;
        QTest::newRow("decimal comma") << "2,5" << true << 2.0;
        QTest::newRow("word") << "abc" << false << 0.0;
        QTest::newRow("empty") << "" << false << 7.5;
        QTest::newRow("too large") << "1e999" << false << std::numeric_limits<double>::max();
    }
    void doublesAreReadByExtraction()
    {
        QFETCH(QString, text);
        QFETCH(bool, isRead);
        OvProperty<double> property("a", 7.5);
        QCOMPARE(property.fromQString(text), isRead);
        QTEST(property.value, "value");
    }

    void theCultureOfTheProcessDoesNotReachNumbers()
    {
        const std::locale before = std::locale::global(std::locale(std::locale(), new GroupedNumbers));
        const QString whole = OvProperty<int>("a", 1234567).toQString();
        const QString fraction = OvProperty<double>("a", 1234.5).toQString();
        OvProperty<double> read("a");
        const bool isRead = read.fromQString(QStringLiteral("1234.5"));
        std::locale::global(before);
        QCOMPARE(whole, QStringLiteral("1234567"));
        QCOMPARE(fraction, QStringLiteral("1234.5"));
        QVERIFY(isRead);
        QCOMPARE(read.value, 1234.5);
    }

    void boolsAreWords()
    {
        QCOMPARE(OvProperty<bool>("a", true).toQString(), QStringLiteral("true"));
        QCOMPARE(OvProperty<bool>("a", false).toString(), std::string("false"));
        compareRoundTrip(true);
        compareRoundTrip(false);
    }

    void boolsAreReadFromWordsAndDigits_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isRead");
        QTest::addColumn<bool>("value");
        QTest::newRow("true") << "true" << true << true;
        QTest::newRow("false") << "false" << true << false;
        QTest::newRow("capitals") << "TRUE" << true << true;
        QTest::newRow("mixed") << "False" << true << false;
        QTest::newRow("one") << "1" << true << true;
        QTest::newRow("zero") << "0" << true << false;
        QTest::newRow("blanks") << " true\n" << true << true;
        QTest::newRow("empty") << "" << false << true;
        QTest::newRow("two") << "2" << false << true;
        QTest::newRow("yes") << "yes" << false << true;
        QTest::newRow("two words") << "true false" << false << true;
    }
    void boolsAreReadFromWordsAndDigits()
    {
        QFETCH(QString, text);
        QFETCH(bool, isRead);
        QFETCH(bool, value);
        OvProperty<bool> property("a", isRead ? !value : value);
        QCOMPARE(property.fromQString(text), isRead);
        QCOMPARE(property.value, value);
    }

    void stringsComeBackExactly_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("empty") << "";
        QTest::newRow("plain") << "Axial 5 mm";
        QTest::newRow("blanks around") << "  a  ";
        QTest::newRow("quotes and commas") << "\"a\",b";
        QTest::newRow("lines") << "a\r\nb\n";
        QTest::newRow("German") << QStringLiteral("Schädel");
        QTest::newRow("Cyrillic") << QStringLiteral("Череп");
        QTest::newRow("outside the first plane") << QStringLiteral("\U0001F9E0");
        QTest::newRow("NUL") << QStringLiteral("a") + QChar(0) + QLatin1Char('b');
        QTest::newRow("half a character") << QString(QChar(0xd800));
        QTest::newRow("long") << QString(100000, QLatin1Char('x'));
    }
    void stringsComeBackExactly()
    {
        QFETCH(QString, value);
        compareRoundTrip(value);
        QCOMPARE(OvProperty<QString>("a", value).toQString(), value);
    }

    void stringsAreUtf8InNarrowText()
    {
        const OvProperty<QString> written("a", QStringLiteral("Schädel Череп"));
        QCOMPARE(written.toString(), std::string("Schädel Череп"));
        OvProperty<QString> read("a");
        QVERIFY(read.fromString(written.toString().c_str()));
        QCOMPARE(read.value, written.value);
    }

    void listsAreWrittenAsFields_data()
    {
        QTest::addColumn<QStringList>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty list") << QStringList() << QString();
        QTest::newRow("one") << QStringList{"a"} << "a";
        QTest::newRow("three") << QStringList{"a", "b", "c"} << "a,b,c";
        QTest::newRow("one empty") << QStringList{""} << "\"\"";
        QTest::newRow("two empty") << QStringList{"", ""} << "\"\",\"\"";
        QTest::newRow("empty last") << QStringList{"a", ""} << "a,\"\"";
        QTest::newRow("comma") << QStringList{"a,b", "c"} << "\"a,b\",c";
        QTest::newRow("quote") << QStringList{"say \"a\""} << "\"say \"\"a\"\"\"";
        QTest::newRow("only a quote") << QStringList{"\""} << "\"\"\"\"";
        QTest::newRow("line feed") << QStringList{"a\nb"} << "\"a\nb\"";
        QTest::newRow("carriage return") << QStringList{"a\r"} << "\"a\r\"";
        QTest::newRow("blank inside") << QStringList{"a b"} << "a b";
        QTest::newRow("blank before") << QStringList{" a"} << "\" a\"";
        QTest::newRow("tab behind") << QStringList{"a\t"} << "\"a\t\"";
        QTest::newRow("Cyrillic") << QStringList{QStringLiteral("ж"), QStringLiteral("я")}
                                  << QStringLiteral("ж,я");
        QTest::newRow("NUL") << QStringList{QString(QChar(0))} << QString(QChar(0));
    }
    void listsAreWrittenAsFields()
    {
        QFETCH(QStringList, value);
        QFETCH(QString, text);
        QCOMPARE(OvProperty<QList<QString>>("a", value).toQString(), text);
        QCOMPARE(OvProperty<QList<QString>>("a", value).toString(), text.toStdString());
        compareRoundTrip<QList<QString>>(value);
    }

    void listsAreReadFromFields_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isRead");
        QTest::addColumn<QStringList>("value");
        QTest::newRow("bare empty elements") << "a,,b," << true << QStringList{"a", "", "b", ""};
        QTest::newRow("a comma") << "," << true << QStringList{"", ""};
        QTest::newRow("blanks are kept") << "a, b " << true << QStringList{"a", " b "};
        QTest::newRow("quote inside") << "a\"b" << true << QStringList{"a\"b"};
        QTest::newRow("needless quotes") << "\"a\",\"b\"" << true << QStringList{"a", "b"};
        QTest::newRow("open quote") << "\"a" << false << QStringList{"kept"};
        QTest::newRow("only an open quote") << "\"" << false << QStringList{"kept"};
        QTest::newRow("open doubled quote") << "\"a\"\"" << false << QStringList{"kept"};
        QTest::newRow("text behind the quote") << "\"a\"b" << false << QStringList{"kept"};
        QTest::newRow("blank behind the quote") << "\"a\" ,b" << false << QStringList{"kept"};
    }
    void listsAreReadFromFields()
    {
        QFETCH(QString, text);
        QFETCH(bool, isRead);
        OvProperty<QList<QString>> property("a", {QStringLiteral("kept")});
        QCOMPARE(property.fromQString(text), isRead);
        QTEST(property.value, "value");
    }

    void everyListOfAFewCharactersComesBack()
    {
        // All lists of up to three elements of up to two characters each that mean something in the text.
        QStringList elements{QString()};
        const QString characters = QStringLiteral("a,\"\n ");
        for (const QChar first : characters) {
            elements.append(first);
            for (const QChar second : characters)
                elements.append(QString(first) + second);
        }
        int count = 0;
        const auto check = [&](const QStringList& inList) {
            OvProperty<QList<QString>> property("a");
            const bool isSame = property.fromQString(OvProperty<QList<QString>>("a", inList).toQString()) &&
                                property.value == inList;
            count += isSame ? 1 : 0;
        };
        check({});
        for (const QString& a : elements) {
            check({a});
            for (const QString& b : elements) {
                check({a, b});
                for (const QString& c : elements)
                    check({a, b, c});
            }
        }
        const int n = int(elements.size());
        QCOMPARE(n, 31);
        QCOMPARE(count, 1 + n + n * n + n * n * n);
    }

    void nullTextIsNeverRead()
    {
        OvProperty<int> number("a", 1);
        OvProperty<double> fraction("a", 1.5);
        OvProperty<bool> flag("a", true);
        OvProperty<QString> text("a", QStringLiteral("x"));
        OvProperty<QList<QString>> list("a", {QStringLiteral("x")});
        OvProperty<Temperature> other("a", {20});
        for (OvVariant* property :
             std::initializer_list<OvVariant*>{&number, &fraction, &flag, &text, &list, &other})
            QVERIFY(!property->fromString(nullptr));
        QCOMPARE(number.value, 1);
        QCOMPARE(fraction.value, 1.5);
        QCOMPARE(flag.value, true);
        QCOMPARE(text.value, QStringLiteral("x"));
        QCOMPARE(list.value, QStringList{QStringLiteral("x")});
        QCOMPARE(other.value.celsius, 20.0);
    }

    void foreignTypesUseTheirStreamOperators()
    {
        OvProperty<Temperature> property("a", {36.6});
        QCOMPARE(property.toQString(), QStringLiteral("36.6C"));
        QVERIFY(property.fromQString(QStringLiteral("37C")));
        QCOMPARE(property.value.celsius, 37.0);
        QVERIFY(!property.fromQString(QStringLiteral("37F")));
        QCOMPARE(property.value.celsius, 37.0);
    }

    void typesWithoutComparisonAreComparedByText()
    {
        QVERIFY(OvProperty<Temperature>("a", {20}).isEqual(OvProperty<Temperature>("b", {20})));
        QVERIFY(!OvProperty<Temperature>("a", {20}).isEqual(OvProperty<Temperature>("a", {21})));
    }

    void equalityNeedsTypeAndValueOnly()
    {
        QVERIFY(OvProperty<int>("a", 1).isEqual(OvProperty<int>("b", 1)));
        QVERIFY(!OvProperty<int>("a", 1).isEqual(OvProperty<int>("a", 2)));
        QVERIFY(!OvProperty<int>("a", 1).isEqual(OvProperty<double>("a", 1)));
        QVERIFY(!OvProperty<int>("a", 1).isEqual(OvProperty<bool>("a", true)));
        // More digits than the text has.
        QVERIFY(!OvProperty<double>("a", 0.1).isEqual(OvProperty<double>("a", 0.1 + 1e-12)));
    }

    void cloneCopiesIdAndValueExactly()
    {
        const OvProperty<double> property("a.b", 3.14159265358979);
        const std::unique_ptr<OvVariant> copy = property.clone();
        QCOMPARE(copy->identifier(), std::string("a.b"));
        QVERIFY(copy->isType<double>());
        QCOMPARE(static_cast<OvProperty<double>&>(*copy).value, 3.14159265358979);
        QCOMPARE(copy->serializer(), nullptr);
    }

    void assignTakesTheValueAndKeepsTheId()
    {
        OvProperty<QString> property("a", QStringLiteral("old"));
        QVERIFY(property.assign(OvProperty<QString>("b", QStringLiteral("new"))));
        QCOMPARE(property.value, QStringLiteral("new"));
        QCOMPARE(property.identifier(), std::string("a"));
    }

    void assignRefusesAnotherType()
    {
        OvProperty<int> property("a", 1);
        QVERIFY(!property.assign(OvProperty<double>("a", 2)));
        QCOMPARE(property.value, 1);
    }
};

KY_TEST_MAIN(TestOvProperty)

#include "tst_OvProperty.moc"

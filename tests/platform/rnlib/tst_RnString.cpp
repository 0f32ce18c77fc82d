#include <support/KyTest.h>

#include <rnlib/RnString.h>

#include <cstring>
#include <map>

// The trap of a pointer that is never null.
static_assert(!std::is_constructible_v<bool, RnString>);

class TestRnString final : public QObject
{
    Q_OBJECT

private slots:
    void anEmptyStringConvertsToAnEmptyText()
    {
        const RnString text;
        const char* const pointer = text;
        QVERIFY(pointer && *pointer == '\0');
        QVERIFY(text.isEmpty());
        QCOMPARE(text.length(), std::size_t(0));
    }

    void aNullPointerIsTheEmptyString()
    {
        const char* const none = nullptr;
        const RnString text(none);
        QVERIFY(text.isEmpty());
        QVERIFY(text == none);
        QVERIFY(text == "");
    }

    void itIsBuiltFromEveryKindOfText()
    {
        using namespace std::string_literals;
        using namespace std::string_view_literals;
        const RnString expected("abc");
        QVERIFY(RnString("abc"s) == expected);
        QVERIFY(RnString("abcdef"sv.substr(0, 3)) == expected);
        const RnString assigned = "abc";
        QVERIFY(assigned == expected);
        QCOMPARE(assigned.str(), "abc"s);
        QCOMPARE(std::strlen(assigned.c_str()), std::size_t(3));
    }

    void itPassesForACString()
    {
        const RnString text("abc");
        QCOMPARE(std::strcmp(text, "abc"), 0);
        QCOMPARE(std::string(text), std::string("abc"));
    }

    void itPassesForABytesView()
    {
        QCOMPARE(QString::fromLatin1(RnString("M\xFCller")), QStringLiteral("M\u00FCller"));
        QCOMPARE(QString::fromUtf8(RnString("M\xC3\xBCller")), QStringLiteral("M\u00FCller"));
        QCOMPARE(QString::fromLatin1(RnString()), QString());
    }

    void embeddedZerosStay()
    {
        const RnString text(std::string_view("a\0b", 3));
        QCOMPARE(text.length(), std::size_t(3));
        QVERIFY(text != RnString("a"));
        QVERIFY(text != "a");
    }

    void textsAreJoined()
    {
        RnString text("a");
        text += "b";
        text += RnString("c");
        QVERIFY(text + "d" == "abcd");
        QVERIFY("x" + text == "xabc");
        QVERIFY(text == "abc");
        text += text;
        QVERIFY(text == "abcabc");
    }

    void theOrderIsThatOfBytes_data()
    {
        QTest::addColumn<QByteArray>("a");
        QTest::addColumn<QByteArray>("b");
        QTest::addColumn<int>("order");
        QTest::newRow("equal") << QByteArray("a") << QByteArray("a") << 0;
        QTest::newRow("prefix") << QByteArray("a") << QByteArray("aa") << -1;
        QTest::newRow("case") << QByteArray("B") << QByteArray("a") << -1;
        QTest::newRow("empty") << QByteArray("") << QByteArray("a") << -1;
        QTest::newRow("bytes above 127") << QByteArray("z") << QByteArray("\xE4") << -1;
    }
    void theOrderIsThatOfBytes()
    {
        QFETCH(QByteArray, a);
        QFETCH(QByteArray, b);
        QFETCH(int, order);
        const RnString first(a.constData());
        const RnString second(b.constData());
        QCOMPARE(first < second, order < 0);
        QCOMPARE(first == second, order == 0);
        QCOMPARE(first != second, order != 0);
        QCOMPARE(second<first, order> 0);
        QCOMPARE(first < b.constData(), order < 0);
        QCOMPARE(b.constData() > first, order < 0);
        QCOMPARE(first <= b.constData(), order <= 0);
    }

    void itIsAKeyOfAMap()
    {
        std::map<RnString, int> numbers{{"b", 2}, {"a", 1}};
        QCOMPARE(numbers["a"], 1);
        QVERIFY(numbers.begin()->first == "a");
        QCOMPARE(numbers.count("c"), std::size_t(0));
    }
};

KY_TEST_MAIN(TestRnString)

#include "tst_RnString.moc"

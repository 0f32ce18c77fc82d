#include <support/KyTest.h>

#include <jxbase/JxXmlStreamReader.h>

class TestJxXmlStreamReader final : public QObject
{
    Q_OBJECT

private slots:
    void whiteSpaceGoesAndLineBreaksOfTheHeadCount_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("trimmed");
        QTest::addColumn<int>("lineBreaks");
        const auto row = [](const char* inName, const QString& inText, const QString& inTrimmed,
                            int inBreaks) { QTest::newRow(inName) << inText << inTrimmed << inBreaks; };
        row("empty", QString(), QString(), 0);
        row("nothing to cut", QStringLiteral("a b"), QStringLiteral("a b"), 0);
        row("blanks", QStringLiteral("  a\t "), QStringLiteral("a"), 0);
        row("head", QStringLiteral("\n\n  a"), QStringLiteral("a"), 2);
        row("tail doesn't count", QStringLiteral("a\n\n"), QStringLiteral("a"), 0);
        row("middle stays", QStringLiteral("\na\nb\n"), QStringLiteral("a\nb"), 1);
        row("crlf", QStringLiteral("\r\n\r\na"), QStringLiteral("a"), 2);
        row("cr", QStringLiteral("\r\ra"), QStringLiteral("a"), 2);
        row("lf cr", QStringLiteral("\n\ra"), QStringLiteral("a"), 2);
        row("cr cr lf", QStringLiteral("\r\r\na"), QStringLiteral("a"), 2);
        row("cr blank lf", QStringLiteral("\r \na"), QStringLiteral("a"), 2);
        row("mixed", QStringLiteral(" \n\t\r\n \r a"), QStringLiteral("a"), 3);
        row("only blanks", QStringLiteral(" \t "), QString(), 0);
        row("only white space", QStringLiteral(" \n \r\n "), QString(), 2);
        row("no-break space", QStringLiteral("\u00A0\na\u00A0"), QStringLiteral("a"), 1);
        row("line separator is no line break", QStringLiteral("\u2028\na"), QStringLiteral("a"), 1);
    }
    void whiteSpaceGoesAndLineBreaksOfTheHeadCount()
    {
        QFETCH(QString, text);
        QFETCH(QString, trimmed);
        QFETCH(int, lineBreaks);
        int counted = 99;
        QCOMPARE(JxXmlStreamReader::trim(text, counted), trimmed);
        QCOMPARE(counted, lineBreaks);
    }
};

KY_TEST_MAIN(TestJxXmlStreamReader)

#include "tst_JxXmlStreamReader.moc"

#include <support/KyTest.h>

#include <ovwebservice/DicomCharacterSet.h>

using Ovg::DicomCharacterSet;
using Structure = DicomCharacterSet::Structure;

namespace {

std::string_view view(const QByteArray& inBytes)
{
    return {inBytes.constData(), static_cast<size_t>(inBytes.size())};
}

void columns()
{
    QTest::addColumn<QByteArray>("terms");
    QTest::addColumn<Structure>("structure");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("expected");
}

void row(const char* inName, const char* inTerms, Structure inStructure, const QByteArray& inBytes,
         const QStringList& inExpected)
{
    QTest::newRow(inName) << QByteArray(inTerms) << inStructure << inBytes << inExpected;
}

} // namespace

class TestDicomCharacterSet final : public QObject
{
    Q_OBJECT

private slots:
    void everySetOfTheStandardIsDecoded_data()
    {
        columns();
        const auto values = Structure::Values;
        row("default", "", values, "Jane", {"Jane"});
        row("ASCII by name", "ISO_IR 6", values, "Jane", {"Jane"});
        row("Latin 1", "ISO_IR 100", values, "M\xfcller", {"Müller"});
        row("Latin 2", "ISO_IR 101", values, "\xb1", {"ą"});
        row("Latin 3", "ISO_IR 109", values, "\xa1", {"Ħ"});
        row("Latin 4", "ISO_IR 110", values, "\xa1", {"Ą"});
        row("Cyrillic", "ISO_IR 144", values, "\xbb", {"Л"});
        row("Arabic", "ISO_IR 127", values, "\xc7", {"ا"});
        row("Greek", "ISO_IR 126", values, "\xc4", {"Δ"});
        row("Hebrew", "ISO_IR 138", values, "\xe9", {"י"});
        row("Latin 5", "ISO_IR 148", values, "\xf0", {"ğ"});
        row("Latin 9", "ISO_IR 203", values, "\xa4", {"€"});
        row("Thai", "ISO_IR 166", values, "\xa1", {"ก"});
        row("Katakana", "ISO_IR 13", values, "\xd4\xcf\xc0\xde", {"ﾔﾏﾀﾞ"});
        row("Roman of JIS", "ISO_IR 13", Structure::Plain, "a\\b~", {"a¥b‾"});
        row("UTF-8", "ISO_IR 192", values, "\xe7\x8e\x8b^\xf0\xa0\x80\x8b", {"王^𠀋"});
        row("GB18030", "GB18030", values, "\xcd\xf5\x95\x32\x83\x37", {"王𠀋"});
        row("GBK", "GBK", values, "\xcd\xf5", {"王"});
    }
    void everySetOfTheStandardIsDecoded() { decodes(); }

    void codeExtensionsSwitchTheSet_data()
    {
        columns();
        const auto values = Structure::Values;
        row("Latin 1, then Cyrillic", "ISO 2022 IR 100\\ISO 2022 IR 144", values, "\xc4\x1b-L\xbb", {"ÄЛ"});
        row("back to Latin 1", "ISO 2022 IR 100\\ISO 2022 IR 144", values, "\x1b-L\xbb\x1b-A\xc4", {"ЛÄ"});
        row("Latin 2", "\\ISO 2022 IR 101", values, "\x1b-B\xb1", {"ą"});
        row("Latin 3", "\\ISO 2022 IR 109", values, "\x1b-C\xa1", {"Ħ"});
        row("Latin 4", "\\ISO 2022 IR 110", values, "\x1b-D\xa1", {"Ą"});
        row("Arabic", "\\ISO 2022 IR 127", values, "\x1b-G\xc7", {"ا"});
        row("Greek", "\\ISO 2022 IR 126", values, "\x1b-F\xc4", {"Δ"});
        row("Hebrew", "\\ISO 2022 IR 138", values, "\x1b-H\xe9", {"י"});
        row("Latin 5", "\\ISO 2022 IR 148", values, "\x1b-M\xf0", {"ğ"});
        row("Latin 9", "\\ISO 2022 IR 203", values, "\x1b-b\xa4", {"€"});
        row("Thai", "\\ISO 2022 IR 166", values, "\x1b-T\xa1", {"ก"});
        row("Kanji", "\\ISO 2022 IR 87", values, "\x1b$B;3ED\x1b(B!", {"山田!"});
        row("Kanji by the older name", "\\ISO 2022 IR 87", values, "\x1b$@;3ED\x1b(J~", {"山田‾"});
        row("supplementary Kanji", "\\ISO 2022 IR 159", values, "\x1b$(D0!\x1b(B", {"丂"});
        row("Katakana and Kanji", "ISO 2022 IR 13\\ISO 2022 IR 87", values, "\xd4\x1b$B;3\x1b(J\xcf",
            {"ﾔ山ﾏ"});
        row("Katakana by name", "\\ISO 2022 IR 13", values, "\x1b)I\xd4", {"ﾔ"});
        row("Korean", "\\ISO 2022 IR 149", values, "\x1b$)C\xb1\xe8\xc8\xf1\xc1\xdf Kim", {"김희중 Kim"});
        row("Chinese", "\\ISO 2022 IR 58", values, "\x1b$)A\xcd\xf5\xd0\xa1\xb6\xab", {"王小东"});
        row("Kanji after a line", "\\ISO 2022 IR 87", Structure::Plain, "\x1b$B;3\x1b(B\r\n\x1b$BED\x1b(B",
            {"山\r\n田"});
    }
    void codeExtensionsSwitchTheSet() { decodes(); }

    void valuesAndNamesAreSplitInText_data()
    {
        columns();
        row("values", "ISO_IR 100", Structure::Values, "\xc4\\b\\", {"Ä", "b", ""});
        row("values of ASCII", "", Structure::Values, "a\\b", {"a", "b"});
        row("plain text keeps backslashes", "ISO_IR 100", Structure::Plain, "\xc4\\b", {"Ä\\b"});
        row("plain ASCII keeps backslashes", "", Structure::Plain, "a\\b", {"a\\b"});
        row("values of UTF-8", "ISO_IR 192", Structure::Values, "\xc3\x84\\b", {"Ä", "b"});
        row("GB18030: a backslash inside a character", "GB18030", Structure::Values, "\x81\x5c\\b",
            {"乗", "b"});
        row("Kanji: a backslash inside a character", "\\ISO 2022 IR 87", Structure::Values,
            "\x1b$B\x30\x5c\x1b(B\\b", {"移", "b"});
        row("the set ends with the value", "ISO 2022 IR 100\\ISO 2022 IR 144", Structure::Values,
            "\x1b-L\xbb\\\xc4", {"Л", "Ä"});
        row("the set ends with the name's part", "ISO 2022 IR 100\\ISO 2022 IR 144", Structure::Names,
            "\x1b-L\xbb^\xc4=\xc4", {"Л^Ä=Ä"});
        row("other texts go on behind a caret", "ISO 2022 IR 100\\ISO 2022 IR 144", Structure::Values,
            "\x1b-L\xbb^\xbb", {"Л^Л"});
        row("a set that nothing replaces goes on", "\\ISO 2022 IR 149", Structure::Names,
            "\x1b$)C\xb1\xe8^\xc8\xf1", {"김^희"});
        row("empty", "ISO_IR 100", Structure::Values, "", {""});
    }
    void valuesAndNamesAreSplitInText() { decodes(); }

    void namesThatAreOftenWrittenWronglyCountAsMeant_data()
    {
        columns();
        for (const char* term : {"ISO_IR 100", "ISO-IR 100", "ISO IR 100", "ISO_IR_100", " ISO_IR 100 ",
                                 "ISO 2022 IR 100", "ISO 2022-IR 100", "ISO_2022_IR_100", "ISO_IR 100\\"})
            row(term, term, Structure::Values, "\xc4", {"Ä"});
    }
    void namesThatAreOftenWrittenWronglyCountAsMeant() { decodes(); }

    void textThatDoesNotFitIsReadAsLatin1_data()
    {
        columns();
        QTest::addColumn<QString>("problem");
        const auto problemRow = [](const char* name, const char* terms, const QByteArray& bytes,
                                   const QStringList& expected, const char* problem) {
            QTest::newRow(name) << QByteArray(terms) << Structure::Values << bytes << expected
                                << QString(problem);
        };
        problemRow("high bytes without a set", "", "M\xfcller", {"Müller"},
                   "text doesn't fit the character set \"\" and is read as Latin-1");
        problemRow("Latin 1 said to be UTF-8", "ISO_IR 192", "M\xfcller\\x", {"Müller", "x"},
                   "text doesn't fit the character set \"ISO_IR 192\" and is read as Latin-1");
        problemRow("cut UTF-8", "ISO_IR 192", "\xc3", {"Ã"},
                   "text doesn't fit the character set \"ISO_IR 192\" and is read as Latin-1");
        problemRow("unknown set", "ISO_IR 999", "M\xfcller", {"Müller"},
                   "unknown character set \"ISO_IR 999\", text is read as Latin-1");
        problemRow("no set at all", "UTF8", "\xc3\xbc", {"Ã¼"},
                   "unknown character set \"UTF8\", text is read as Latin-1");
        problemRow("unknown further set", "\\ISO 2022 IR 999", "\xfc", {"ü"},
                   "unknown character set \"\\ISO 2022 IR 999\", text is read as Latin-1");
        problemRow(
            "unknown escape", "ISO 2022 IR 100\\ISO 2022 IR 144", "\x1b%G\xc4", {"%GÄ"},
            "text doesn't fit the character set \"ISO 2022 IR 100\\ISO 2022 IR 144\" and is read as Latin-1");
        problemRow("half a character", "\\ISO 2022 IR 149", "\x1b$)C\xb1", {"±"},
                   "text doesn't fit the character set \"\\ISO 2022 IR 149\" and is read as Latin-1");
        problemRow("no Katakana", "ISO_IR 13", "\xfc", {"ü"},
                   "text doesn't fit the character set \"ISO_IR 13\" and is read as Latin-1");
        problemRow("an escape at the end", "", "a\x1b", {"a"},
                   "text doesn't fit the character set \"\" and is read as Latin-1");
    }
    void textThatDoesNotFitIsReadAsLatin1()
    {
        QFETCH(QByteArray, terms);
        QFETCH(Structure, structure);
        QFETCH(QByteArray, bytes);
        QString problem;
        QTEST(DicomCharacterSet(view(terms)).decode(view(bytes), structure, problem), "expected");
        QTEST(problem, "problem");
    }

    void asciiNeedsNoKnownSet()
    {
        QString problem;
        QCOMPARE(DicomCharacterSet("ISO_IR 999").decode("Jane", Structure::Names, problem),
                 QStringList("Jane"));
        QCOMPARE(problem, QString());
    }

    /// Whatever the bytes, decoding ends and gives a value.
    void noBytesMakeItFail()
    {
        unsigned seed = 1;
        const std::string terms[] = {"",          "ISO_IR 192",       "GB18030",
                                     "ISO_IR 13", "\\ISO 2022 IR 87", "ISO_IR 999"};
        for (int i = 0; i < 3000; ++i) {
            std::string bytes;
            for (unsigned length = seed % 12; bytes.size() < length;) {
                seed = seed * 1103515245 + 12345;
                const char* const known[] = {"\x1b", "\x1b$B", "\x1b$(D", "\x1b$)C", "\x1b(B", "\\", "^"};
                bytes +=
                    seed >> 16 & 1 ? std::string(known[(seed >> 20) % 7]) : std::string(1, char(seed >> 24));
            }
            seed = seed * 1103515245 + 12345;
            QString problem;
            QVERIFY(!DicomCharacterSet(terms[i % 6]).decode(bytes, Structure::Names, problem).isEmpty());
        }
    }

private:
    static void decodes()
    {
        QFETCH(QByteArray, terms);
        QFETCH(Structure, structure);
        QFETCH(QByteArray, bytes);
        QString problem;
        QTEST(DicomCharacterSet(view(terms)).decode(view(bytes), structure, problem), "expected");
        QCOMPARE(problem, QString());
    }
};

KY_TEST_MAIN(TestDicomCharacterSet)

#include "tst_DicomCharacterSet.moc"

#include <support/KyTest.h>

#include <rnwin/RnCodePage1252.h>

class tst_RnCodePage1252 : public QObject
{
    Q_OBJECT

private slots:
    void everyByteComesBack();
    void charactersHaveTheirBytes_data();
    void charactersHaveTheirBytes();
    void othersBecomeQuestionMarks_data();
    void othersBecomeQuestionMarks();
};

void tst_RnCodePage1252::everyByteComesBack()
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += char(byte);
    const std::u16string text = RnCodePage1252::decoded(bytes);
    QCOMPARE(text.size(), std::size_t(256));
    QCOMPARE(RnCodePage1252::encoded(text), bytes);
}

void tst_RnCodePage1252::charactersHaveTheirBytes_data()
{
    QTest::addColumn<QString>("character");
    QTest::addColumn<int>("byte");
    QTest::newRow("A") << "A" << 0x41;
    QTest::newRow("a umlaut") << QString(QChar(0xE4)) << 0xE4;
    QTest::newRow("no-break space") << QString(QChar(0xA0)) << 0xA0;
    QTest::newRow("euro") << QString(QChar(0x20AC)) << 0x80;
    QTest::newRow("low quote") << QString(QChar(0x201E)) << 0x84;
    QTest::newRow("right quote") << QString(QChar(0x2019)) << 0x92;
    QTest::newRow("dash") << QString(QChar(0x2013)) << 0x96;
    QTest::newRow("y with diaeresis") << QString(QChar(0x178)) << 0x9F;
}

void tst_RnCodePage1252::charactersHaveTheirBytes()
{
    QFETCH(QString, character);
    QFETCH(int, byte);
    const std::string bytes = RnCodePage1252::encoded(character.toStdU16String());
    QCOMPARE(bytes, std::string(1, char(byte)));
    QCOMPARE(RnCodePage1252::decoded(bytes), character.toStdU16String());
}

void tst_RnCodePage1252::othersBecomeQuestionMarks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("Greek") << QString(QChar(0x3B1)) << QByteArray("?");
    QTest::newRow("Kanji") << QString::fromUtf8("\xE6\x97\xA5") << QByteArray("?");
    QTest::newRow("surrogate pair") << QString::fromUtf8("\xF0\x9F\x99\x82") << QByteArray("??");
    QTest::newRow("among others") << QString::fromUtf8("a\xCE\xB1z") << QByteArray("a?z");
}

void tst_RnCodePage1252::othersBecomeQuestionMarks()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    QCOMPARE(QByteArray::fromStdString(RnCodePage1252::encoded(text.toStdU16String())), bytes);
}

KY_TEST_MAIN(tst_RnCodePage1252)
#include "tst_RnCodePage1252.moc"

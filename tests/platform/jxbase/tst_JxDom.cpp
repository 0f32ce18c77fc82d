#include <jxbase/JxDom.h>

#include <QTest>

class tst_JxDom : public QObject
{
    Q_OBJECT

private slots:
    void wordsAreBooleans_data();
    void wordsAreBooleans();
    void otherTextsGiveTheDefault_data();
    void otherTextsGiveTheDefault();
};

void tst_JxDom::wordsAreBooleans_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("value");
    for (const char* word : {"1", "true", "True", "TRUE", "yes", "YES", "on", "On", " true\n"})
        QTest::newRow(word) << word << true;
    for (const char* word : {"0", "false", "False", "FALSE", "no", "NO", "off", "Off", "\t0 "})
        QTest::newRow(word) << word << false;
}

void tst_JxDom::wordsAreBooleans()
{
    QFETCH(QString, text);
    QFETCH(bool, value);
    for (const bool byDefault : {false, true}) {
        bool ok = false;
        QCOMPARE(JxDom::qStringToBool(text, byDefault, &ok), value);
        QVERIFY(ok);
        QCOMPARE(JxDom::qStringToBool(text, byDefault), value);
    }
}

void tst_JxDom::otherTextsGiveTheDefault_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("null") << QString();
    for (const char* word : {"", " ", "2", "-1", "01", "truee", "tru", "y", "t", "enabled", "1 0"})
        QTest::newRow(word) << word;
}

void tst_JxDom::otherTextsGiveTheDefault()
{
    QFETCH(QString, text);
    for (const bool byDefault : {false, true}) {
        bool ok = true;
        QCOMPARE(JxDom::qStringToBool(text, byDefault, &ok), byDefault);
        QVERIFY(!ok);
        QCOMPARE(JxDom::qStringToBool(text, byDefault, nullptr), byDefault);
    }
}

QTEST_APPLESS_MAIN(tst_JxDom)
#include "tst_JxDom.moc"

// WordCtrl from JavaScript on a stand-in word processor, by the COM of Windows under Wine. What its document
// holds is told by the word processor itself.

#include "DriverPorts.h"

#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>

class tst_windows_word : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void wordThatDoesNotRunIsTold();
    void textTakesThePlaceOfTheSelection_data();
    void textTakesThePlaceOfTheSelection();
    void templateIsFilled();
    void templateIsFilledByTheOtherTools();
    void templateIsFilledByAModuleInWine();
    void callsArriveAsTheyAre();
    void referencesEnd();
    void failuresAreTold_data();
    void failuresAreTold();

private:
    void insert(const QString& inText)
    {
        mEngine->evaluate("(function (text) { new WordCtrl().insertString(text); })")
            .call({mEngine->toScriptValue(inText)});
    }
    void start()
    {
        mWord = std::make_unique<WineProgram>(WORD);
        QVERIFY(mWord->isReady());
    }
    void set(const QString& inText, int inStart, int inEnd)
    {
        mWord->ask("set " + WineProgram::hex(inText) + " " + std::to_string(inStart) + " " +
                   std::to_string(inEnd));
    }
    QString content() { return mWord->text("content"); }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::unique_ptr<WineProgram> mDriver;
    std::unique_ptr<DriverCom> mCom;
    std::unique_ptr<WineProgram> mWord;
    std::unique_ptr<LogCapture> mLog;
};

void tst_windows_word::initTestCase()
{
    if (!QFile::exists(DRIVER))
        QSKIP("The compiler for Windows is not installed; scripts/setup --tests does that");
    if (!Wine::missing().isEmpty())
        QSKIP("Wine is not installed; scripts/setup --tests does that");
    QCOMPARE(Wine::prepare(), QString());
    mPlatform = std::make_unique<KyTestPlatform>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptWordCtrl);
    mDriver = std::make_unique<WineProgram>(DRIVER);
    QVERIFY(mDriver->isReady());
    mCom = std::make_unique<DriverCom>(*mDriver);
}

void tst_windows_word::cleanupTestCase()
{
    const bool isUsed = mDriver != nullptr;
    mCom.reset();
    mDriver.reset();
    mWord.reset();
    mEngine.reset();
    mPlatform.reset();
    if (isUsed)
        Wine::leave();
}

void tst_windows_word::init()
{
    mLog = std::make_unique<LogCapture>();
}

void tst_windows_word::cleanup()
{
    mLog.reset();
}

/// The first test: nothing has been started yet.
void tst_windows_word::wordThatDoesNotRunIsTold()
{
    insert("new");
    QCOMPARE(mLog->take(), QStringList("3||Could not get Word Instance."));
    start();
    insert("new");
    QCOMPARE(mLog->take(), QStringList());
    mWord.reset();
    insert("new");
    QCOMPARE(mLog->take(), QStringList("3||Could not get Word Instance."));
    start();
}

void tst_windows_word::textTakesThePlaceOfTheSelection_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("document");
    QTest::addColumn<int>("place");
    const QString face = QString::fromUtf8("\xF0\x9F\x99\x82");
    QTest::newRow("text") << "brand new"
                          << "Some brand new text" << 14;
    QTest::newRow("empty text deletes") << ""
                                        << "Some  text" << 5;
    QTest::newRow("any character") << QString::fromUtf8("\xC3\xA4\xE6\x97\xA5")
                                   << QString::fromUtf8("Some \xC3\xA4\xE6\x97\xA5 text") << 7;
    QTest::newRow("surrogate pair counts two") << face << "Some " + face + " text" << 7;
    QTest::newRow("up to a NUL") << QString(QLatin1String("ab\0cd", 5)) << "Some ab text" << 10;
}

/// The count of characters is that of the whole text.
void tst_windows_word::textTakesThePlaceOfTheSelection()
{
    QFETCH(QString, text);
    QFETCH(int, place);
    set("Some old text", 5, 8);
    insert(text);
    QTEST(content(), "document");
    QCOMPARE(mWord->words("selection").at(0).toInt(), place);
    QCOMPARE(mLog->take(), QStringList());
}

void tst_windows_word::templateIsFilled()
{
    set("Findings: [X]", 10, 13);
    insert("none, ");
    insert("nothing else");
    QCOMPARE(content(), QStringLiteral("Findings: none, nothing else"));
}

void tst_windows_word::templateIsFilledByTheOtherTools()
{
    if (!QFile::exists(OTHER_DRIVER))
        QSKIP("Wine's tools are not installed; scripts/setup --tests does that");
    WineProgram driver(OTHER_DRIVER);
    QVERIFY(driver.isReady());
    const DriverCom com(driver);
    QCOMPARE(RnCom::instance(), &com);
    set("Findings: [X]", 10, 13);
    insert("none");
    QCOMPARE(content(), QStringLiteral("Findings: none"));
    mCom = std::make_unique<DriverCom>(*mDriver);
}

/// Without a pipe between the module and COM.
void tst_windows_word::templateIsFilledByAModuleInWine()
{
    if (!QFile::exists(MODULE))
        QSKIP("This build has no module for Wine: its tools are not installed, or sanitizers are on");
    WineProgram module(MODULE);
    QVERIFY(module.isReady());
    set("Findings: [X]", 10, 13);
    module.text(
        WineProgram::hex("var w = new WordCtrl(); w.insertString('none, '); w.insertString('nothing else')"));
    QCOMPARE(content(), QStringLiteral("Findings: none, nothing else"));
    QCOMPARE(mWord->words("selection").at(0).toInt(), 28);
}

void tst_windows_word::callsArriveAsTheyAre()
{
    set("Some old text", 5, 8);
    insert("new");
    // Names: one at a time, in the user's locale. Calls: id, flags, locale, arguments, named ones.
    QCOMPARE(mWord->words("calls"),
             QStringList({"id:ActiveDocument:1:1024", "3:2:1024:0:0", "id:Selection:1:1024", "5:2:1024:0:0",
                          "id:Range:1:1024", "400:2:1024:0:0", "id:Text:1:1024", "0:4:1024:1:1",
                          "id:MoveStart:1:1024", "111:1:1024:2:0"}));
}

void tst_windows_word::referencesEnd()
{
    for (int i = 0; i < 5; ++i)
        insert("x");
    // The application's object is that of the word processor itself. What clients have held ends with a call
    // that the system makes later.
    QTRY_COMPARE_WITH_TIMEOUT(mWord->ask("objects"), std::string("1"), 60000);
}

void tst_windows_word::failuresAreTold_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<QStringList>("messages");
    const QStringList replaced{"Could not replace Selection."};
    QTest::newRow("5, lookup") << "id:ActiveDocument"
                               << QStringList{"Failed to get the ID of the property 'ActiveDocument'.",
                                              "Could not get Active Document."};
    QTest::newRow("5, read")
        << "3"
        << QStringList{"Failed to invoke the property get method for obtaining the active document.",
                       "Could not get Active Document."};
    QTest::newRow("6") << "id:Selection"
                       << QStringList{"Failed to get the ID of the property 'Selection'."} + replaced;
    QTest::newRow("7")
        << "5"
        << QStringList{"Failed to invoke the property get method for obtaining the selection."} + replaced;
    QTest::newRow("8") << "id:Range"
                       << QStringList{"Failed to get the ID of the property 'Range'."} + replaced;
    QTest::newRow("9") << "400"
                       << QStringList{"Failed to invoke the property get method for obtaining the range."} +
                              replaced;
    QTest::newRow("10") << "id:Text"
                        << QStringList{"Failed to get the ID of the property 'Text'."} + replaced;
    QTest::newRow("11") << "0"
                        << QStringList{"Failed to invoke the property put method for setting the text."} +
                               replaced;
    QTest::newRow("12") << "id:MoveStart"
                        << QStringList{"Failed to get the ID of the property 'MoveStart'"} + replaced;
    QTest::newRow("13") << "111" << QStringList{"Failed to invoke the MoveStart method."} + replaced;
}

void tst_windows_word::failuresAreTold()
{
    QFETCH(QString, failing);
    QFETCH(QStringList, messages);
    set("Some old text", 5, 8);
    mWord->ask("fail " + failing.toStdString());
    insert("new");
    QStringList lines;
    for (const QString& message : messages)
        lines.append("3||" + message);
    QCOMPARE(mLog->take(), lines);
    set("Some old text", 5, 8);
    insert("new");
    QCOMPARE(content(), QStringLiteral("Some new text"));
}

KY_TEST_MAIN(tst_windows_word)
#include "tst_windows_word.moc"

// The parts of the interactive mode that need no terminal.

#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyrun/KyRunPrompt.h>
#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <QTest>

class tst_KyRunPrompt : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void textGoesOnWhileSomethingIsOpen_data();
    void textGoesOnWhileSomethingIsOpen();
    void globalsAreCompleted();
    void membersAreCompleted_data();
    void membersAreCompleted();
    void completionRunsNoGetterOfAScript();

private:
    QStringList completed(const QString& inWord);

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<KyRunPrompt> mPrompt;
};

void tst_KyRunPrompt::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mPrompt = std::make_unique<KyRunPrompt>(
        KyScriptAbstractInterface::getInstance(QString()), [](const QString&, const QString&) {}, QString());
}

void tst_KyRunPrompt::cleanup()
{
    mPrompt.reset();
    KyScriptInterface::cleanupInstances();
    mPlatform.reset();
}

QStringList tst_KyRunPrompt::completed(const QString& inWord)
{
    return mPrompt->completions(inWord);
}

void tst_KyRunPrompt::textGoesOnWhileSomethingIsOpen_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isOpen");
    const auto row = [](const char* name, const char* text, bool isOpen) {
        QTest::newRow(name) << QString::fromUtf8(text) << isOpen;
    };
    row("nothing", "", false);
    row("a whole statement", "f(1);\n", false);
    row("a block", "function f() {\n", true);
    row("a closed block", "function f() {\n}\n", false);
    row("a call", "f(1,\n", true);
    row("a list", "[1,\n", true);
    row("too many closed", "f))\n", false);
    row("a bracket in a text", "'('\n", false);
    row("a bracket in the other text", "\"{\\\"{\"\n", false);
    row("a text that ends with its line", "'abc\n", false);
    row("a template", "`a\n", true);
    row("a closed template", "`a\n(`\n", false);
    row("a comment", "/* (\n", true);
    row("a closed comment", "/* ( */\n", false);
    row("a comment of a line", "1 // (\n", false);
    row("a comment of the last line", "1 // (", false);
}

void tst_KyRunPrompt::textGoesOnWhileSomethingIsOpen()
{
    QFETCH(QString, text);
    QTEST(KyRunPrompt::isOpen(text), "isOpen");
}

void tst_KyRunPrompt::globalsAreCompleted()
{
    QCOMPARE(completed("StudyLi"), QStringList({"StudyList"}));
    QVERIFY(completed("").contains("Orvane"));
    QVERIFY(completed("Orv").contains("Orvane"));
    QCOMPARE(completed("noSuchName"), QStringList());
}

void tst_KyRunPrompt::membersAreCompleted_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("one");
    QTest::newRow("method of a global") << "StudyList.ge"
                                        << "StudyList.get";
    QTest::newRow("method of a prototype") << "Math.PI.toFi"
                                           << "Math.PI.toFixed";
    QTest::newRow("member of a variable") << "mine.first.se"
                                          << "mine.first.second";
    QTest::newRow("method of a text") << "mine.text.sub"
                                      << "mine.text.substring";
}

void tst_KyRunPrompt::membersAreCompleted()
{
    QFETCH(QString, word);
    QFETCH(QString, one);
    KyScriptAbstractInterface::getInstance(QString()).runScript(
        KyScriptProgram("var mine = {text: 'a', first: {second: 1}};", "test"), false);
    QVERIFY2(completed(word).contains(one), qPrintable(completed(word).join(' ')));
    for (const QString& each : completed(word))
        QVERIFY(each.startsWith(word));
    QCOMPARE(completed("mine.nothing.x"), QStringList());
}

void tst_KyRunPrompt::completionRunsNoGetterOfAScript()
{
    auto& facade = KyScriptAbstractInterface::getInstance(QString());
    facade.runScript(
        KyScriptProgram("var calls = 0; var mine = {get a() { ++calls; return {b: 1}; }};", "test"), false);
    QCOMPARE(completed("mine."), QStringList({"mine.a"}) + completed("mine.").mid(1));
    QCOMPARE(completed("mine.a.b"), QStringList());
    QCOMPARE(facade.globalObject().property("calls").toInt(), 0);
}

KY_TEST_MAIN(tst_KyRunPrompt)

#include "tst_KyRunPrompt.moc"

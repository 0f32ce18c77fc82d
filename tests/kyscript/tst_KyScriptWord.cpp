// Word automation, with a word processor in memory that can fail at every step.

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptWord.h>

#include <rnwin/RnSimulatedCom.h>

namespace {

QStringList toList(const std::vector<std::string>& inLines)
{
    QStringList lines;
    for (const std::string& line : inLines)
        lines.append(QString::fromStdString(line));
    return lines;
}

/// All steps where everything works.
const QStringList sAllCalls{"CoInitialize",
                            "CLSIDFromProgID Word.Application",
                            "GetActiveObject",
                            "QueryInterface Application",
                            "Release Application",
                            "GetIDsOfNames Application.ActiveDocument",
                            "Invoke 2 Application.ActiveDocument",
                            "GetIDsOfNames Application.Selection",
                            "Invoke 2 Application.Selection",
                            "GetIDsOfNames Selection.Range",
                            "Invoke 2 Selection.Range",
                            "GetIDsOfNames Range.Text",
                            "Invoke 4 Range.Text",
                            "GetIDsOfNames Range.MoveStart",
                            "Invoke 1 Selection.MoveStart",
                            "Release Range",
                            "Release Selection",
                            "CoUninitialize",
                            "Release Document",
                            "Release Application"};

} // namespace

class tst_KyScriptWord : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void isAlwaysAvailable();
    void stepsGoInTheirOrder();
    void failureEndsAtItsStep_data();
    void failureEndsAtItsStep();
    void unknownNamesFail_data();
    void unknownNamesFail();
    void emptyAnswerIsNoFailure_data();
    void emptyAnswerIsNoFailure();
    void systemWithoutComEndsAtOnce();
    void wordThatIsNotInstalled();
    void wordThatDoesNotRun();
    void wordWithoutADocument_data();
    void wordWithoutADocument();

    void textTakesThePlaceOfTheSelection_data();
    void textTakesThePlaceOfTheSelection();
    void followingTextGoesToTheEnd();
    void callsHaveTheirParameters_data();
    void callsHaveTheirParameters();
    void anyNumberOfCallsLeavesNothing();
    void argumentsOfScripts_data();
    void argumentsOfScripts();

private:
    void insert(const QString& inText) { KyScriptWord().insertString(inText); }
    QStringList log() { return mLog->take(); }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<RnSimulatedCom> mCom;
    std::unique_ptr<LogCapture> mLog;

    RnSimulatedCom::Object* mApplication = nullptr;
    RnSimulatedCom::Object* mDocument = nullptr;
    RnSimulatedCom::Object* mSelection = nullptr;
    RnSimulatedCom::Object* mRange = nullptr;

    /// The document, and what is selected in it.
    std::u16string mText;
    std::size_t mStart = 0;
    std::size_t mEnd = 0;
    std::vector<RnInvocation> mCalls;
};

void tst_KyScriptWord::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mCom = std::make_unique<RnSimulatedCom>();
    mLog = std::make_unique<LogCapture>();
    mText = u"Some old text";
    mStart = 5;
    mEnd = 8;
    mCalls.clear();

    mApplication = &mCom->make("Application");
    mDocument = &mCom->make("Document");
    mSelection = &mCom->make("Selection");
    mRange = &mCom->make("Range");
    mCom->registerProgram(u"Word.Application", mApplication);
    mApplication->setProperty(u"ActiveDocument", mDocument);
    mApplication->setProperty(u"Selection", mSelection);
    mSelection->setProperty(u"Range", mRange);
    mRange->setMember(u"Text", [this](const RnInvocation& inCall) {
        mCalls.push_back(inCall);
        const auto& text = std::get<std::u16string>(inCall.arguments.at(0));
        mText.replace(mStart, mEnd - mStart, text);
        mEnd = mStart + text.size();
        return RnSimulatedCom::Ok;
    });
    const auto moveStart = [this](const RnInvocation& inCall) {
        mCalls.push_back(inCall);
        mStart = std::min(mStart + std::size_t(std::get<std::int32_t>(inCall.arguments.at(0))), mText.size());
        mEnd = std::max(mStart, mEnd);
        return RnSimulatedCom::Ok;
    };
    // The id of one of the two serves for both.
    mRange->setMember(u"MoveStart", moveStart);
    mSelection->setMember(u"MoveStart", moveStart);
}

void tst_KyScriptWord::cleanup()
{
    const QString broken = mContracts->verify();
    const int references = mCom ? mCom->references() : 0;
    const int depth = mCom ? mCom->depth() : 0;
    mLog.reset();
    mCom.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QCOMPARE(references, 0);
    QCOMPARE(depth, 0);
}

void tst_KyScriptWord::isAlwaysAvailable()
{
    QVERIFY(KyScriptWord().isAvailable());
    QCOMPARE(mCom->calls().size(), std::size_t(0));
    mCom.reset();
    KyScriptEngine engine(nullptr, ScriptWordCtrl);
    QVERIFY(engine.evaluate("new WordCtrl().isAvailable()").toBool());
    QCOMPARE(log(), QStringList());
}

void tst_KyScriptWord::stepsGoInTheirOrder()
{
    insert("new");
    QCOMPARE(toList(mCom->calls()), sAllCalls);
    QCOMPARE(log(), QStringList());
    QVERIFY(mText == u"Some new text");
}

void tst_KyScriptWord::failureEndsAtItsStep_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QStringList>("exit");
    const QStringList replaced{"Could not replace Selection."};
    const QStringList left{"CoUninitialize"};
    const QStringList exit{"CoUninitialize", "Release Document", "Release Application"};
    const QStringList exitWithoutDocument{"CoUninitialize", "Release Application"};
    const QStringList exitWithSelection = QStringList{"Release Selection"} + exit;
    const QStringList exitWithBoth = QStringList{"Release Range"} + exitWithSelection;
    QTest::newRow("1") << "CoInitialize" << QStringList{"Could not initialize COM."} << QStringList();
    QTest::newRow("2") << "CLSIDFromProgID Word.Application"
                       << QStringList{"Could not retrieve Class Identifier."} << left;
    QTest::newRow("3") << "GetActiveObject" << QStringList{"Could not get Word Instance."} << left;
    QTest::newRow("4") << "QueryInterface Application" << QStringList{"Could not get Word Instance."}
                       << QStringList{"Release Application"} + left;
    QTest::newRow("5, lookup") << "GetIDsOfNames Application.ActiveDocument"
                               << QStringList{"Failed to get the ID of the property 'ActiveDocument'.",
                                              "Could not get Active Document."}
                               << exitWithoutDocument;
    QTest::newRow("5, read")
        << "Invoke 2 Application.ActiveDocument"
        << QStringList{"Failed to invoke the property get method for obtaining the active document.",
                       "Could not get Active Document."}
        << exitWithoutDocument;
    QTest::newRow("6") << "GetIDsOfNames Application.Selection"
                       << QStringList{"Failed to get the ID of the property 'Selection'."} + replaced << exit;
    QTest::newRow("7")
        << "Invoke 2 Application.Selection"
        << QStringList{"Failed to invoke the property get method for obtaining the selection."} + replaced
        << exit;
    QTest::newRow("8") << "GetIDsOfNames Selection.Range"
                       << QStringList{"Failed to get the ID of the property 'Range'."} + replaced
                       << exitWithSelection;
    QTest::newRow("9") << "Invoke 2 Selection.Range"
                       << QStringList{"Failed to invoke the property get method for obtaining the range."} +
                              replaced
                       << exitWithSelection;
    QTest::newRow("10") << "GetIDsOfNames Range.Text"
                        << QStringList{"Failed to get the ID of the property 'Text'."} + replaced
                        << exitWithBoth;
    QTest::newRow("11") << "Invoke 4 Range.Text"
                        << QStringList{"Failed to invoke the property put method for setting the text."} +
                               replaced
                        << exitWithBoth;
    QTest::newRow("12") << "GetIDsOfNames Range.MoveStart"
                        << QStringList{"Failed to get the ID of the property 'MoveStart'"} + replaced
                        << exitWithBoth;
    QTest::newRow("13") << "Invoke 1 Selection.MoveStart"
                        << QStringList{"Failed to invoke the MoveStart method."} + replaced << exitWithBoth;
}

void tst_KyScriptWord::failureEndsAtItsStep()
{
    QFETCH(QString, step);
    QFETCH(QStringList, messages);
    QFETCH(QStringList, exit);
    mCom->setResult(step.toStdString(), RnSimulatedCom::Fail);
    insert("new");
    QStringList lines;
    for (const QString& message : messages)
        lines.append("3||" + message);
    QCOMPARE(log(), lines);
    QVERIFY(sAllCalls.contains(step));
    QCOMPARE(toList(mCom->calls()), sAllCalls.mid(0, sAllCalls.indexOf(step) + 1) + exit);
    QCOMPARE(mCom->references(), 0);

    // Nothing is left behind that would trouble the next call.
    mCom->setResult(step.toStdString(), RnSimulatedCom::Ok);
    mText = u"Some old text";
    mStart = 5;
    mEnd = 8;
    insert("new");
    QVERIFY(mText == u"Some new text");
    QCOMPARE(log(), QStringList());
}

void tst_KyScriptWord::unknownNamesFail_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<QString>("message");
    QTest::newRow("Text") << 0 << "3||Failed to get the ID of the property 'Text'.";
    QTest::newRow("MoveStart") << 1 << "3||Failed to get the ID of the property 'MoveStart'";
}

void tst_KyScriptWord::unknownNamesFail()
{
    QFETCH(int, step);
    QFETCH(QString, message);
    auto& other = mCom->make("Other");
    if (step == 1)
        other.setMember(u"Text", [](const RnInvocation&) { return RnSimulatedCom::Ok; });
    mSelection->setProperty(u"Range", &other);
    insert("new");
    QCOMPARE(log(), QStringList({message, "3||Could not replace Selection."}));
}

void tst_KyScriptWord::emptyAnswerIsNoFailure_data()
{
    QTest::addColumn<bool>("isRange");
    QTest::addColumn<QStringList>("exit");
    const QStringList exit{"CoUninitialize", "Release Document", "Release Application"};
    QTest::newRow("selection") << false << exit;
    QTest::newRow("range") << true << QStringList{"Release Selection"} + exit;
}

/// No line of the log, and the application goes on.
void tst_KyScriptWord::emptyAnswerIsNoFailure()
{
    QFETCH(bool, isRange);
    QFETCH(QStringList, exit);
    if (isRange)
        mSelection->setProperty(u"Range", nullptr);
    else
        mApplication->setProperty(u"Selection", nullptr);
    insert("new");
    QCOMPARE(log(), QStringList());
    const QStringList calls = toList(mCom->calls());
    QCOMPARE(calls.mid(calls.size() - exit.size()), exit);
    QCOMPARE(calls.at(calls.size() - exit.size() - 1),
             QString(isRange ? "Invoke 2 Selection.Range" : "Invoke 2 Application.Selection"));
    QVERIFY(mText == u"Some old text");
}

void tst_KyScriptWord::systemWithoutComEndsAtOnce()
{
    mCom.reset();
    insert("new");
    QCOMPARE(log(), QStringList("3||Could not initialize COM."));
#ifndef Q_OS_WIN
    QVERIFY(!RnCom::ofSystem());
#endif
}

void tst_KyScriptWord::wordThatIsNotInstalled()
{
    RnSimulatedCom other;
    insert("new");
    QCOMPARE(log(), QStringList("3||Could not retrieve Class Identifier."));
    QCOMPARE(toList(other.calls()),
             QStringList({"CoInitialize", "CLSIDFromProgID Word.Application", "CoUninitialize"}));
}

void tst_KyScriptWord::wordThatDoesNotRun()
{
    mCom->registerProgram(u"Word.Application", nullptr);
    insert("new");
    QCOMPARE(log(), QStringList("3||Could not get Word Instance."));
}

void tst_KyScriptWord::wordWithoutADocument_data()
{
    QTest::addColumn<bool>("isFailure");
    QTest::newRow("read fails") << true;
    QTest::newRow("null document") << false;
}

void tst_KyScriptWord::wordWithoutADocument()
{
    QFETCH(bool, isFailure);
    QStringList lines{"3||Could not get Active Document."};
    if (isFailure) {
        mCom->setResult("Invoke 2 Application.ActiveDocument", RnSimulatedCom::Fail);
        lines.prepend("3||Failed to invoke the property get method for obtaining the active document.");
    } else {
        mApplication->setProperty(u"ActiveDocument", nullptr);
    }
    insert("new");
    QCOMPARE(log(), lines);
    QVERIFY(mText == u"Some old text");
}

void tst_KyScriptWord::textTakesThePlaceOfTheSelection_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("document");
    QTest::addColumn<int>("count");
    QTest::newRow("text") << "brand new"
                          << "Some brand new text" << 9;
    QTest::newRow("empty text deletes") << ""
                                        << "Some  text" << 0;
    QTest::newRow("null text") << QString() << "Some  text" << 0;
    QTest::newRow("surrogate pair") << QString::fromUtf8("\xF0\x9F\x99\x82")
                                    << QString::fromUtf8("Some \xF0\x9F\x99\x82 text") << 2;
    QTest::newRow("lines") << "a\r\nb"
                           << "Some a\r\nb text" << 4;
}

void tst_KyScriptWord::textTakesThePlaceOfTheSelection()
{
    QFETCH(QString, text);
    QFETCH(int, count);
    insert(text);
    QTEST(QString::fromStdU16String(mText), "document");
    QCOMPARE(std::get<std::int32_t>(mCalls.at(1).arguments.at(0)), count);
    QCOMPARE(mStart, std::size_t(5 + count));
    QCOMPARE(mEnd, mStart);
    QCOMPARE(log(), QStringList());
}

void tst_KyScriptWord::followingTextGoesToTheEnd()
{
    insert("one, ");
    insert("two");
    QVERIFY(mText == u"Some one, two text");
}

void tst_KyScriptWord::callsHaveTheirParameters_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<int>("flags");
    QTest::addColumn<QList<int>>("named");
    QTest::newRow("property put") << 0 << 4 << QList<int>{-3};
    QTest::newRow("method") << 1 << 1 << QList<int>();
}

void tst_KyScriptWord::callsHaveTheirParameters()
{
    QFETCH(int, call);
    insert("new");
    QCOMPARE(mCalls.size(), std::size_t(2));
    const RnInvocation& made = mCalls.at(std::size_t(call));
    QTEST(int(made.flags), "flags");
    QCOMPARE(made.locale, 0x400u);
    QTEST(QList<int>(made.namedArguments.begin(), made.namedArguments.end()), "named");
    QCOMPARE(made.wantsException, call == 1);
    if (call == 0) {
        QCOMPARE(made.arguments.size(), std::size_t(1));
        QVERIFY(std::get<std::u16string>(made.arguments.at(0)) == u"new");
        return;
    }
    // In the order of COM: Count, Unit.
    QCOMPARE(made.arguments.size(), std::size_t(2));
    QCOMPARE(std::get<std::int32_t>(made.arguments.at(0)), 3);
    QCOMPARE(std::get<std::int32_t>(made.arguments.at(1)), 1);
}

void tst_KyScriptWord::anyNumberOfCallsLeavesNothing()
{
    for (int i = 0; i < 100; ++i)
        insert("x");
    QCOMPARE(mCom->references(), 0);
    QCOMPARE(mCom->depth(), 0);
}

void tst_KyScriptWord::argumentsOfScripts_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("text");
    QTest::newRow("text") << "'x'"
                          << "x";
    QTest::newRow("number") << "5"
                            << "5";
    QTest::newRow("null") << "null"
                          << "";
    QTest::newRow("undefined") << "undefined, 1"
                               << "";
    QTest::newRow("array") << "['a', 'b']"
                           << "a,b";
    QTest::newRow("object") << "{ toString: function () { return 'o'; } }"
                            << "o";
}

void tst_KyScriptWord::argumentsOfScripts()
{
    QFETCH(QString, arguments);
    KyScriptEngine engine(nullptr, ScriptWordCtrl);
    QVERIFY(engine.evaluate("new WordCtrl().insertString(" + arguments + ")").isUndefined());
    QCOMPARE(mCalls.size(), std::size_t(2));
    QTEST(QString::fromStdU16String(std::get<std::u16string>(mCalls.at(0).arguments.at(0))), "text");
    QVERIFY(engine.evaluate("try { new WordCtrl().insertString() } catch (e) { e.name }").toString() ==
            "Error");
}

KY_TEST_MAIN(tst_KyScriptWord)
#include "tst_KyScriptWord.moc"

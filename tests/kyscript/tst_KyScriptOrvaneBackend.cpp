#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptOrvane.h>
#include <kyscript/KyScriptProgram.h>

#include <ovbase/OvBackend.h>
#include <ovbase/OvBackendScriptResponseReceiver.h>
#include <ovbase/OvDatabase.h>

#include <QEventLoop>
#include <QPointer>
#include <QTimer>

#include <stdexcept>

namespace {

/// Keeps what it is asked, and answers with what it is told to.
class TestDatabase final : public OvDatabase
{
public:
    RnResult execStoredProcedure(const std::string& inName, const Parameters& inParameters, Rows& outRows,
                                 std::vector<std::string>& outColumnTypes) override
    {
        name = inName;
        parameters = inParameters;
        ++calls;
        outRows = rows;
        outColumnTypes = columnTypes;
        return result;
    }

    std::string name;
    Parameters parameters;
    int calls = 0;
    Rows rows;
    std::vector<std::string> columnTypes;
    RnResult result;
};

/// Keeps its calls until the test answers them.
class SlowBackend final : public OvBackend
{
public:
    void start(const OvBackendCall& inCall, const Reply& inReply) override
    {
        calls.append(inCall);
        replies.append(inReply);
    }

    QList<OvBackendCall> calls;
    QList<Reply> replies;
};

QString shown(const OvDatabase::Parameters& inParameters)
{
    QStringList texts;
    for (const auto& [name, value] : inParameters)
        texts.append(QString::fromLatin1(name.c_str()) + '=' +
                     (value ? "'" + QString::fromLatin1(value->c_str()) + "'" : QStringLiteral("NULL")));
    return texts.join(' ');
}

} // namespace

/// What scripts call to have an event loop inside a call, as a message box does.
class NestedLoop : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void turn()
    {
        QEventLoop loop;
        QTimer::singleShot(0, &loop, &QEventLoop::quit);
        loop.exec();
    }
};

class tst_KyScriptOrvaneBackend : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void procedureGetsItsNameAndParameters();
    void parametersCrossAsText_data();
    void parametersCrossAsText();
    void keysCrossInLatin1AndTheFirstCounts();
    void parametersThatAreNoObjectAreRefused_data();
    void parametersThatAreNoObjectAreRefused();
    void objectsWithoutNamesAreEmpty_data();
    void objectsWithoutNamesAreEmpty();
    void hostileParametersDoNoHarm_data();
    void hostileParametersDoNoHarm();
    void valuesAreDecodedByTheirTypeWord_data();
    void valuesAreDecodedByTheirTypeWord();
    void typeWordsAreCompared_data();
    void typeWordsAreCompared();
    void aValueBeyondTheColumnTypesStaysText();
    void aNullColumnIsInvalidAtItsPlace();
    void aProcedureWithoutRowsGivesAnEmptyList();
    void rowsKeepTheirOrderAndTheirLengths();
    void resultForCppIsAListOfLists();
    void aFailureIsAScriptError();
    void aFailureMayBeCaught();
    void aFailureWithoutAnEngineIsInvalid();
    void withoutADatabaseItFails();
    void whatTheDatabaseThrowsIsAFailure();
    void eachCallIsOne();

    void methodGetsItsNamesAndParameters();
    void parametersCrossAsJson_data();
    void parametersCrossAsJson();
    void parametersThatAreNoListAreRefused_data();
    void parametersThatAreNoListAreRefused();
    void objectsThatAreNoArraysAreEmptyLists();
    void hugeAndDeepParametersAreRefused();
    void withoutAnEngineItIsReported();
    void theCallReturnsBeforeTheAnswer();
    void resultsAreDecoded_data();
    void resultsAreDecoded();
    void noResultIsUndefinedWhateverTheJson();
    void noJsonIsUndefinedAndLogged_data();
    void noJsonIsUndefinedAndLogged();
    void failureGivesTheMessage();
    void eachCallAnswersItsOwnCallbacks();
    void aCallIsAnsweredOnce();
    void manyCallsInFlight();
    void callbacksOfEndedScriptsAreKept();
    void callbacksThatAreNoFunctions_data();
    void callbacksThatAreNoFunctions();
    void whatACallbackThrowsIsDropped();
    void receiverIsReleasedAfterEachAnswer_data();
    void receiverIsReleasedAfterEachAnswer();
    void noCallbackAfterTheObject();
    void aCallbackMayCallAgain();
    void aCallbackComesWhileAnotherScriptWaits();
    void aDroppedCallFails();
    void withoutABackendTheCallFails();
    void aBackendThatThrowsFails();
    void answersFromOtherThreads();

private:
    QJSValue run(const QString& inSource)
    {
        return mEngine->runScript(KyScriptProgram(inSource, ""), false, false, false);
    }
    QString text(const QString& inSource) { return run(inSource).toString(); }
    /// Calls the backend; what comes back stands in `got`.
    void callBackend(const QString& inParameters = QStringLiteral("[]"))
    {
        run(QStringLiteral("var got = []; Orvane.execScriptOnBackend('C', 'm', %1, function() {"
                           " got.push(['ok'].concat(Array.prototype.slice.call(arguments))) }, function() {"
                           " got.push(['failed'].concat(Array.prototype.slice.call(arguments))) })")
                .arg(inParameters));
    }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<LogCapture> mLog;
    std::unique_ptr<TestDatabase> mDatabase;
    std::unique_ptr<SlowBackend> mBackend;
    std::unique_ptr<KyScriptEngine> mEngine;
    NestedLoop mLoop;
    std::size_t mHandables = 0;
};

void tst_KyScriptOrvaneBackend::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mLog = std::make_unique<LogCapture>(2);
    mDatabase = std::make_unique<TestDatabase>();
    mBackend = std::make_unique<SlowBackend>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
    QJSEngine::setObjectOwnership(&mLoop, QJSEngine::CppOwnership);
    mEngine->globalObject().setProperty("loop", mEngine->newQObject(&mLoop));
    mHandables = RnHandable::liveCount();
}

void tst_KyScriptOrvaneBackend::cleanup()
{
    const QString broken = mContracts->verify();
    const QStringList lines = mLog->take();
    mEngine.reset();
    mBackend.reset();
    mDatabase.reset();
    mLog.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QCOMPARE(lines, QStringList());
}

void tst_KyScriptOrvaneBackend::procedureGetsItsNameAndParameters()
{
    run("Orvane.execStoredProcedure('GetPatients', {station: 'CT 1', limit: 20})");
    QCOMPARE(mDatabase->name, std::string("GetPatients"));
    QCOMPARE(shown(mDatabase->parameters), QStringLiteral("limit='20' station='CT 1'"));
    run("Orvane.execStoredProcedure('Z\\u00fcrich\\u4e2d', {})");
    QCOMPARE(mDatabase->name, std::string("Z\xfcrich?"));
    QVERIFY(mDatabase->parameters.empty());
}

void tst_KyScriptOrvaneBackend::parametersCrossAsText_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("null") << "null"
                          << "v=NULL";
    QTest::newRow("undefined") << "undefined"
                               << "v=NULL";
    QTest::newRow("empty text") << "''"
                                << "v=''";
    QTest::newRow("text") << "'it\\'s'"
                          << "v='it's'";
    QTest::newRow("text beyond Latin-1") << "'\\u00e9\\u4e2d'" << QString::fromUtf8("v='é?'");
    QTest::newRow("int") << "42"
                         << "v='42'";
    QTest::newRow("negative") << "-7"
                              << "v='-7'";
    QTest::newRow("computed whole number") << "Math.round(2.4)"
                                           << "v='2'";
    QTest::newRow("double") << "2.5"
                            << "v='2.5'";
    QTest::newRow("tenth") << "0.1"
                           << "v='0.1'";
    QTest::newRow("beyond int") << "4294967296"
                                << "v='4294967296'";
    QTest::newRow("largest whole number") << "9007199254740992"
                                          << "v='9007199254740992'";
    QTest::newRow("whole number with an exponent") << "-1e15"
                                                   << "v='-1000000000000000'";
    QTest::newRow("beyond whole numbers") << "1e21"
                                          << "v='1e+21'";
    QTest::newRow("not a number") << "NaN"
                                  << "v='nan'";
    QTest::newRow("true") << "true"
                          << "v='true'";
    QTest::newRow("false") << "false"
                           << "v='false'";
    QTest::newRow("date") << "new Date(2026, 0, 31, 14, 5, 9, 120)"
                          << "v='2026-01-31T14:05:09.120'";
    QTest::newRow("object") << "{a: 1}"
                            << "v=''";
    QTest::newRow("list") << "['x']"
                          << "v=''";
    QTest::newRow("function") << "function() {}"
                              << "v=''";
    QTest::newRow("symbol") << "Symbol('s')"
                            << "v=''";
    QTest::newRow("host object") << "Orvane"
                                 << "v=''";
}

void tst_KyScriptOrvaneBackend::parametersCrossAsText()
{
    QFETCH(QString, value);
    QFETCH(QString, expected);
    QVERIFY(!run(QStringLiteral("Orvane.execStoredProcedure('p', {v: %1})").arg(value)).isError());
    QCOMPARE(shown(mDatabase->parameters), expected);
}

void tst_KyScriptOrvaneBackend::keysCrossInLatin1AndTheFirstCounts()
{
    run("Orvane.execStoredProcedure('p', {'\\u4e2d': 'second', '\\u4e01': 'first', '\\u00e9': 'e'})");
    QCOMPARE(shown(mDatabase->parameters), QString::fromUtf8("?='first' é='e'"));
}

void tst_KyScriptOrvaneBackend::parametersThatAreNoObjectAreRefused_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value : {"null", "undefined", "5", "'text'", "true", "new Date()", "Orvane", "Symbol()",
                              "new ArrayBuffer(2)", "/x/"})
        QTest::newRow(value) << QString::fromLatin1(value);
}

void tst_KyScriptOrvaneBackend::parametersThatAreNoObjectAreRefused()
{
    QFETCH(QString, value);
    QCOMPARE(text(QStringLiteral("try { Orvane.execStoredProcedure('p', %1); 'none' } catch (e) {"
                                 " e.name + ': ' + e.message }")
                      .arg(value)),
             QStringLiteral("TypeError: Orvane.execStoredProcedure: the parameters are no object"));
    QCOMPARE(mDatabase->calls, 0);
    QCOMPARE(text("try { Orvane.execStoredProcedure('p'); 'none' } catch (e) { e.name }"),
             QStringLiteral("Error"));
}

void tst_KyScriptOrvaneBackend::objectsWithoutNamesAreEmpty_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value : {"{}", "[1, 2]", "function() {}", "new Map([['a', 1]])"})
        QTest::newRow(value) << QString::fromLatin1(value);
}

void tst_KyScriptOrvaneBackend::objectsWithoutNamesAreEmpty()
{
    QFETCH(QString, value);
    run(QStringLiteral("Orvane.execStoredProcedure('p', %1)").arg(value));
    QCOMPARE(mDatabase->calls, 1);
    QVERIFY(mDatabase->parameters.empty());
}

void tst_KyScriptOrvaneBackend::hostileParametersDoNoHarm_data()
{
    QTest::addColumn<QString>("parameters");
    QTest::addColumn<QString>("expected");
    QTest::newRow("list with a symbol") << "{a: [Symbol()], b: 1}"
                                        << "a='' b='1'";
    QTest::newRow("object with a symbol") << "{a: {x: Symbol()}}"
                                          << "a=''";
    QTest::newRow("throwing getter") << "{get a() { throw new Error('x') }, b: 1}"
                                     << "a=NULL b='1'";
    QTest::newRow("cycle") << "(function() { var o = {b: 2}; o.a = o; return o })()"
                           << "a='' b='2'";
    QTest::newRow("deep")
        << "(function() { var o = {}; for (var i = 0; i < 100000; ++i) o = {a: o}; return o })()"
        << "a=''";
    QTest::newRow("long list") << "{a: new Array(4294967295)}"
                               << "a=''";
}

void tst_KyScriptOrvaneBackend::hostileParametersDoNoHarm()
{
    QFETCH(QString, parameters);
    QFETCH(QString, expected);
    QVERIFY(!run(QStringLiteral("Orvane.execStoredProcedure('p', %1)").arg(parameters)).isError());
    QCOMPARE(shown(mDatabase->parameters), expected);
}

void tst_KyScriptOrvaneBackend::valuesAreDecodedByTheirTypeWord_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QVariant>("expected");
    const auto row = [](const char* inName, const char* inWord, const char* inValue,
                        const QVariant& inExpected) {
        QTest::addRow("%s: %s", inWord, inName) << QByteArray(inWord) << QByteArray(inValue) << inExpected;
    };
    row("True", "bit", "True", true);
    row("true", "bit", "true", true);
    row("TRUE", "bit", "TRUE", true);
    row("False", "bit", "False", false);
    row("digit", "bit", "1", false);
    row("empty", "bit", "", false);
    for (const char* word : {"smallint", "int", "tinyint"}) {
        row("number", word, "-12", -12);
        row("no number", word, "12x", 0);
        row("empty", word, "", 0);
        row("too large", word, "2147483648", 0);
        row("hexadecimal", word, "0x10", 0);
    }
    for (const char* word : {"bigint", "float", "real"}) {
        row("number", word, "-12", -12.0);
        row("fraction", word, "2.5", 2.5);
        row("exponent", word, "1e3", 1000.0);
        row("no number", word, "x", 0.0);
    }
    row("beyond 2^53", "bigint", "9007199254740993", 9007199254740992.0);
    const QDateTime time(QDate(2026, 1, 31), QTime(14, 5, 9, 120));
    for (const char* word : {"datetime", "smalldatetime", "datetime2", "datetimeoffset"}) {
        row("milliseconds", word, "2026-01-31T14:05:09.120", time);
        row("no time", word, "2026-01-31", QDateTime(QDate(2026, 1, 31), QTime(0, 0)));
        row("no date", word, "yesterday", QDateTime());
    }
    row("blanks", "int", " 5 ", 5);
    row("plus", "int", "+5", 5);
    row("fraction", "int", "5.0", 0);
    row("blanks", "float", " 2.5 ", 2.5);
    row("bare point", "float", "2.", 2.0);
    row("beyond", "float", "1e999", QStringLiteral("1e999").toDouble());
    row("no such day", "datetime", "2026-02-30T14:05:09.120", QDateTime());
    row("no such hour", "datetime", "2026-01-31T25:05:09.120", QDateTime());
    row("hour that summer time leaves out", "datetime", "2026-03-29T02:30:00.000",
        QDateTime::fromString("2026-03-29T02:30:00.000", Qt::ISODateWithMs));
    row("hour that comes twice", "datetime", "2026-10-25T02:30:00.000",
        QDateTime::fromString("2026-10-25T02:30:00.000", Qt::ISODateWithMs));
    row("blank in place of T", "datetime", "2026-01-31 14:05:09.120", time);
    row("offset", "datetimeoffset", "2026-01-31T14:05:09.120+05:30",
        QDateTime(time.date(), time.time(), Qt::OffsetFromUTC, 19800));
    row("UTC", "datetimeoffset", "2026-01-31T14:05:09.120Z", QDateTime(time.date(), time.time(), Qt::UTC));
    row("text", "nvarchar", "M\xfcller", QString::fromUtf8("Müller"));
    row("true", "nvarchar", "True", QStringLiteral("True"));
    row("empty", "varchar", "", QString(""));
    row("number", "decimal", "1.50", QStringLiteral("1.50"));
    row("number", "", "7", QStringLiteral("7"));
}

void tst_KyScriptOrvaneBackend::valuesAreDecodedByTheirTypeWord()
{
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, value);
    QFETCH(QVariant, expected);
    mDatabase->columnTypes = {word.toStdString()};
    mDatabase->rows = {{value.toStdString()}};
    KyScriptOrvane orvane(nullptr);
    const QVariant result = orvane.execStoredProcedure(QStringLiteral("p"), QVariantMap());
    const QVariant decoded = result.toList().value(0).toList().value(0);
    QCOMPARE(decoded.typeId(), expected.typeId());
    QCOMPARE(decoded, expected);
    if (expected.typeId() == QMetaType::QDateTime)
        QCOMPARE(decoded.toDateTime().offsetFromUtc(), expected.toDateTime().offsetFromUtc());
}

void tst_KyScriptOrvaneBackend::typeWordsAreCompared_data()
{
    QTest::addColumn<QByteArray>("word");
    for (const char* word : {"Bit", "BIT", " bit", "bit ", "bits", "boolean"})
        QTest::newRow(word) << QByteArray(word);
}

void tst_KyScriptOrvaneBackend::typeWordsAreCompared()
{
    QFETCH(QByteArray, word);
    mDatabase->columnTypes = {word.toStdString()};
    mDatabase->rows = {{"True"}};
    QCOMPARE(text("typeof Orvane.execStoredProcedure('p', {})[0][0]"), QStringLiteral("string"));
}

void tst_KyScriptOrvaneBackend::aValueBeyondTheColumnTypesStaysText()
{
    mDatabase->columnTypes = {"int"};
    mDatabase->rows = {{"1", "2"}};
    QCOMPARE(text("JSON.stringify(Orvane.execStoredProcedure('p', {}))"), QStringLiteral("[[1,\"2\"]]"));
}

void tst_KyScriptOrvaneBackend::aNullColumnIsInvalidAtItsPlace()
{
    mDatabase->columnTypes = {"int", "datetime", "nvarchar", "bit"};
    mDatabase->rows = {{std::nullopt, std::nullopt, std::nullopt, "True"},
                       {"1", std::nullopt, "", std::nullopt}};
    QCOMPARE(text("var rows = Orvane.execStoredProcedure('p', {}); rows.map(function(r) {"
                  " return r.length + ':' + r.map(function(v) { return typeof v }).join() }).join(';')"),
             QStringLiteral("4:undefined,undefined,undefined,boolean;4:number,undefined,string,undefined"));
    KyScriptOrvane orvane(nullptr);
    const QVariantList rows = orvane.execStoredProcedure(QStringLiteral("p"), QVariantMap()).toList();
    QVERIFY(!rows.at(0).toList().at(0).isValid());
}

void tst_KyScriptOrvaneBackend::aProcedureWithoutRowsGivesAnEmptyList()
{
    mDatabase->columnTypes = {"int"};
    QCOMPARE(text("var r = Orvane.execStoredProcedure('p', {}); Array.isArray(r) + ' ' + r.length"),
             QStringLiteral("true 0"));
    KyScriptOrvane orvane(nullptr);
    const QVariant result = orvane.execStoredProcedure(QStringLiteral("p"), QVariantMap());
    QVERIFY(result.isValid());
    QCOMPARE(result.typeId(), int(QMetaType::QVariantList));
    QVERIFY(result.toList().isEmpty());
}

void tst_KyScriptOrvaneBackend::rowsKeepTheirOrderAndTheirLengths()
{
    mDatabase->columnTypes = {"nvarchar", "int"};
    mDatabase->rows = {{"b", "1"}, {}, {"a"}, {"b", "1"}};
    QCOMPARE(text("JSON.stringify(Orvane.execStoredProcedure('p', {}))"),
             QStringLiteral("[[\"b\",1],[],[\"a\"],[\"b\",1]]"));
}

void tst_KyScriptOrvaneBackend::resultForCppIsAListOfLists()
{
    mDatabase->columnTypes = {"int"};
    mDatabase->rows = {{"1"}};
    KyScriptOrvane orvane(nullptr);
    const QVariant result = orvane.execStoredProcedure(QStringLiteral("p"), QVariantMap{{"a", QVariant()}});
    QCOMPARE(result, QVariant(QVariantList{QVariant(QVariantList{1})}));
    QCOMPARE(shown(mDatabase->parameters), QStringLiteral("a=NULL"));
}

void tst_KyScriptOrvaneBackend::aFailureIsAScriptError()
{
    mDatabase->result = RnResult::failure("no such table: pat\xefnt");
    mDatabase->rows = {{"1"}};
    const QJSValue value = run("Orvane.execStoredProcedure('p', {})");
    QVERIFY(value.isError());
    QCOMPARE(value.property("message").toString(), QString::fromUtf8("no such table: patïnt"));
    QCOMPARE(value.property("name").toString(), QStringLiteral("Error"));
    QCOMPARE(mLog->take().size(), 1); // the uncaught error
}

void tst_KyScriptOrvaneBackend::aFailureMayBeCaught()
{
    mDatabase->result = RnResult::failure("");
    QCOMPARE(text("try { Orvane.execStoredProcedure('p', {}); 'none' } catch (e) { '<' + e.message + '>' }"),
             QStringLiteral("<>"));
    mDatabase->result = RnResult::ok();
    QCOMPARE(text("Orvane.execStoredProcedure('p', {}).length"), QStringLiteral("0"));
}

void tst_KyScriptOrvaneBackend::aFailureWithoutAnEngineIsInvalid()
{
    mDatabase->result = RnResult::failure("broken");
    KyScriptOrvane orvane(nullptr);
    QVERIFY(!orvane.execStoredProcedure(QStringLiteral("p"), QVariantMap()).isValid());
    QCOMPARE(mLog->take(), QStringList());
}

void tst_KyScriptOrvaneBackend::withoutADatabaseItFails()
{
    mDatabase.reset();
    QCOMPARE(text("try { Orvane.execStoredProcedure('p', {}) } catch (e) { e.message }"),
             QStringLiteral("This client has no database"));
}

void tst_KyScriptOrvaneBackend::whatTheDatabaseThrowsIsAFailure()
{
    OvMemoryDatabase memory;
    memory.add("p", [](auto&, auto&, auto&) -> RnResult { throw std::runtime_error("out of disk"); });
    QCOMPARE(text("try { Orvane.execStoredProcedure('p', {}) } catch (e) { e.message }"),
             QStringLiteral("out of disk"));
    QCOMPARE(mLog->take(), QStringList("3|OvWebServices|a procedure failed: out of disk"));
}

void tst_KyScriptOrvaneBackend::eachCallIsOne()
{
    run("for (var i = 0; i < 5; ++i) Orvane.execStoredProcedure('p', {})");
    QCOMPARE(mDatabase->calls, 5);
    QCOMPARE(RnHandable::liveCount(), mHandables);
}

void tst_KyScriptOrvaneBackend::methodGetsItsNamesAndParameters()
{
    run("Orvane.execScriptOnBackend('Kl\\u00e4sse', '\\u4e2d', [1, 'a'], null, null)");
    QCOMPARE(mBackend->calls.size(), 1);
    QCOMPARE(mBackend->calls.at(0).className, std::string("Kl\xc3\xa4sse"));
    QCOMPARE(mBackend->calls.at(0).methodName, std::string("\xe4\xb8\xad"));
    QCOMPARE(mBackend->calls.at(0).parameters, (std::vector<std::string>{"1", "\"a\""}));
}

void tst_KyScriptOrvaneBackend::parametersCrossAsJson_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("text") << "'a\"b\\u4e2d'" << QByteArray("\"a\\\"b\xe4\xb8\xad\"");
    QTest::newRow("empty text") << "''" << QByteArray("\"\"");
    QTest::newRow("int") << "5" << QByteArray("5");
    QTest::newRow("computed whole number") << "Math.round(4.7)" << QByteArray("5");
    QTest::newRow("double") << "2.5" << QByteArray("2.5");
    QTest::newRow("large") << "9007199254740992" << QByteArray("9007199254740992");
    QTest::newRow("true") << "true" << QByteArray("true");
    QTest::newRow("null") << "null" << QByteArray("null");
    QTest::newRow("undefined") << "undefined" << QByteArray("null");
    QTest::newRow("not a number") << "NaN" << QByteArray("null");
    QTest::newRow("function") << "function() {}" << QByteArray("null");
    QTest::newRow("symbol") << "Symbol()" << QByteArray("null");
    QTest::newRow("list") << "[1, [], 'x', null]" << QByteArray("[1,[],\"x\",null]");
    QTest::newRow("list with a symbol") << "[Symbol()]" << QByteArray("[null]");
    QTest::newRow("object") << "{b: {c: [1.5]}, a: ''}" << QByteArray("{\"a\":\"\",\"b\":{\"c\":[1.5]}}");
    QTest::newRow("empty object") << "{}" << QByteArray("{}");
    QTest::newRow("date") << "new Date(Date.UTC(2026, 0, 31, 13, 5, 9, 120))"
                          << QByteArray("\"2026-01-31T14:05:09.120+01:00\"");
}

void tst_KyScriptOrvaneBackend::parametersCrossAsJson()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, json);
    run(QStringLiteral("Orvane.execScriptOnBackend('C', 'm', [%1], null, null)").arg(value));
    QCOMPARE(mBackend->calls.size(), 1);
    QCOMPARE(mBackend->calls.at(0).parameters.size(), std::size_t(1));
    const QByteArray crossed = QByteArray::fromStdString(mBackend->calls.at(0).parameters.at(0));
    if (value.startsWith("new Date")) // the offset may be left out, as a local time
        QCOMPARE(crossed.left(24), json.left(24));
    else
        QCOMPARE(crossed, json);
}

void tst_KyScriptOrvaneBackend::parametersThatAreNoListAreRefused_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value : {"null", "undefined", "5", "'abc'", "true", "Orvane", "new Date()", "Symbol()"})
        QTest::newRow(value) << QString::fromLatin1(value);
}

void tst_KyScriptOrvaneBackend::parametersThatAreNoListAreRefused()
{
    QFETCH(QString, value);
    QCOMPARE(text(QStringLiteral("try { Orvane.execScriptOnBackend('C', 'm', %1, null, null); 'none' }"
                                 " catch (e) { e.name + ': ' + e.message }")
                      .arg(value)),
             QStringLiteral("TypeError: Orvane.execScriptOnBackend: the parameters are no list"));
    QVERIFY(mBackend->calls.isEmpty());
}

void tst_KyScriptOrvaneBackend::objectsThatAreNoArraysAreEmptyLists()
{
    run("Orvane.execScriptOnBackend('C', 'm', {a: 1}, null, null)");
    run("Orvane.execScriptOnBackend('C', 'm', new Set([1]), null, null)");
    QCOMPARE(mBackend->calls.size(), 2);
    QVERIFY(mBackend->calls.at(0).parameters.empty());
    QVERIFY(mBackend->calls.at(1).parameters.empty());
}

void tst_KyScriptOrvaneBackend::hugeAndDeepParametersAreRefused()
{
    for (const char* value :
         {"new Array(4294967295)", "(function() { var a = []; a.push(a); return a })()",
          "(function() { var a = []; for (var i = 0; i < 100000; ++i) a = [a]; return a })()"})
        QCOMPARE(text(QStringLiteral("try { Orvane.execScriptOnBackend('C', 'm', %1, null, null); 'none' }"
                                     " catch (e) { e.name }")
                          .arg(value)),
                 QStringLiteral("TypeError"));
    QVERIFY(mBackend->calls.isEmpty());
}

void tst_KyScriptOrvaneBackend::withoutAnEngineItIsReported()
{
    mContracts->expect("scriptEngine");
    KyScriptOrvane orvane(nullptr);
    orvane.execScriptOnBackend(QStringLiteral("C"), QStringLiteral("m"), QVariantList(), QJSValue(),
                               QJSValue());
    QVERIFY(mBackend->calls.isEmpty());
}

void tst_KyScriptOrvaneBackend::theCallReturnsBeforeTheAnswer()
{
    OvMemoryBackend atOnce;
    atOnce.add("C", "m", [](auto&, const OvBackend::Reply& inReply) { inReply->succeed("1"); });
    callBackend();
    QCOMPARE(text("got.length"), QStringLiteral("0"));
    QTRY_COMPARE(text("got.join()"), QStringLiteral("ok,1"));
}

void tst_KyScriptOrvaneBackend::resultsAreDecoded_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("value");
    QTest::newRow("number") << "12"
                            << "number"
                            << "12";
    QTest::newRow("fraction") << "1.5"
                              << "number"
                              << "1.5";
    QTest::newRow("text") << "\"a\\u4e2d\\\"\""
                          << "string" << QStringLiteral("\"a\u4e2d\\\"\"");
    QTest::newRow("true") << "true"
                          << "boolean"
                          << "true";
    QTest::newRow("null") << "null"
                          << "object"
                          << "null";
    QTest::newRow("object") << "{\"b\":[1,{}],\"a\":null}"
                            << "object"
                            << "{\"a\":null,\"b\":[1,{}]}";
    QTest::newRow("list") << "[[1],[2,3]]"
                          << "array"
                          << "[[1],[2,3]]";
    QTest::newRow("blanks") << " \n7 "
                            << "number"
                            << "7";
    QTest::newRow("two values") << "7,8"
                                << "number"
                                << "7";
}

void tst_KyScriptOrvaneBackend::resultsAreDecoded()
{
    QFETCH(QString, json);
    QFETCH(QString, type);
    QFETCH(QString, value);
    callBackend();
    mBackend->replies.takeFirst()->succeed(json);
    QTRY_COMPARE(text("got.length"), QStringLiteral("1"));
    QCOMPARE(text("got[0][0] + got[0].length"), QStringLiteral("ok2"));
    QCOMPARE(text("Array.isArray(got[0][1]) ? 'array' : typeof got[0][1]"), type);
    QCOMPARE(text("JSON.stringify(got[0][1])"), value);
}

void tst_KyScriptOrvaneBackend::noResultIsUndefinedWhateverTheJson()
{
    callBackend();
    mBackend->replies.takeFirst()->succeed();
    QTRY_COMPARE(text("got.length"), QStringLiteral("1"));
    QCOMPARE(text("got[0].length + typeof got[0][1]"), QStringLiteral("2undefined"));

    callBackend();
    const RnHandle<OvBackendScriptExecutor> executor(new OvBackendScriptExecutor(nullptr));
    OvBackendScriptResponseReceiver receiver(executor, nullptr);
    bool none = false;
    connect(&receiver, &OvBackendScriptResponseReceiver::succeeded, this,
            [&none](const QString& inJson, bool inNoResult) { none = inNoResult && inJson.isEmpty(); });
    executor->execScriptOnBackend("C", "m", {});
    mBackend->replies.takeLast()->succeed();
    QTRY_VERIFY(none);
    mBackend->replies.clear();
    QTRY_COMPARE(text("got.join()"), QStringLiteral("failed,The backend gave no answer"));
}

void tst_KyScriptOrvaneBackend::noJsonIsUndefinedAndLogged_data()
{
    QTest::addColumn<QString>("json");
    for (const char* json : {"", "{", "nope", "<html>", "\"open", "]["})
        QTest::newRow(json) << QString::fromLatin1(json);
}

void tst_KyScriptOrvaneBackend::noJsonIsUndefinedAndLogged()
{
    QFETCH(QString, json);
    callBackend();
    mBackend->replies.takeFirst()->succeed(json);
    QTRY_COMPARE(text("got.length"), QStringLiteral("1"));
    QCOMPARE(text("got[0][0] + got[0].length + typeof got[0][1]"), QStringLiteral("ok2undefined"));
    QCOMPARE(mLog->take(), QStringList("2|Script Interface|The backend's answer is no JSON: " + json));
}

void tst_KyScriptOrvaneBackend::failureGivesTheMessage()
{
    callBackend();
    mBackend->replies.takeFirst()->fail(QStringLiteral("no \u4e2d \"x\""));
    QTRY_COMPARE(text("got.length"), QStringLiteral("1"));
    QCOMPARE(text("JSON.stringify(got)"), QStringLiteral("[[\"failed\",\"no \u4e2d \\\"x\\\"\"]]"));
}

void tst_KyScriptOrvaneBackend::eachCallAnswersItsOwnCallbacks()
{
    run("var log = []; ['a', 'b', 'c'].forEach(function(n) { Orvane.execScriptOnBackend('C', n, [],"
        " function(r) { log.push(n + ' ok ' + r) }, function(m) { log.push(n + ' failed ' + m) }) })");
    QCOMPARE(mBackend->replies.size(), 3);
    mBackend->replies.at(2)->succeed("3");
    mBackend->replies.at(0)->fail("no");
    mBackend->replies.at(1)->succeed("2");
    QTRY_COMPARE(text("log.join(';')"), QStringLiteral("c ok 3;a failed no;b ok 2"));
}

void tst_KyScriptOrvaneBackend::aCallIsAnsweredOnce()
{
    callBackend();
    const OvBackend::Reply reply = mBackend->replies.takeFirst();
    reply->succeed("1");
    reply->fail("late");
    reply->succeed("2");
    QTRY_COMPARE(text("got.join()"), QStringLiteral("ok,1"));
    QCoreApplication::sendPostedEvents();
    QCOMPARE(text("got.length"), QStringLiteral("1"));
}

void tst_KyScriptOrvaneBackend::manyCallsInFlight()
{
    run("var sum = 0; for (var i = 0; i < 200; ++i) (function(i) { Orvane.execScriptOnBackend('C', 'm', [i],"
        " function(r) { if (r === i) sum += r }, null) })(i)");
    QCOMPARE(mBackend->replies.size(), 200);
    while (!mBackend->replies.isEmpty())
        mBackend->replies.takeLast()->succeed(
            QString::fromStdString(mBackend->calls.at(mBackend->replies.size()).parameters.at(0)));
    QTRY_COMPARE(text("sum"), QStringLiteral("19900"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(RnHandable::liveCount(), mHandables);
}

void tst_KyScriptOrvaneBackend::callbacksOfEndedScriptsAreKept()
{
    run("var seen; (function() { var local = {n: 4}; Orvane.execScriptOnBackend('C', 'm', [],"
        " function(r) { seen = local.n + r }, null) })()");
    mEngine->collectGarbage();
    mBackend->replies.takeFirst()->succeed("3");
    QTRY_COMPARE(text("seen"), QStringLiteral("7"));
}

void tst_KyScriptOrvaneBackend::callbacksThatAreNoFunctions_data()
{
    QTest::addColumn<QString>("value");
    for (const char* value : {"null", "undefined", "5", "'text'", "{}", "[]", "Orvane"})
        QTest::newRow(value) << QString::fromLatin1(value);
}

void tst_KyScriptOrvaneBackend::callbacksThatAreNoFunctions()
{
    QFETCH(QString, value);
    for (int i = 0; i < 2; ++i)
        run(QStringLiteral("Orvane.execScriptOnBackend('C', 'm', [], %1, %1)").arg(value));
    mBackend->replies.takeFirst()->succeed("1");
    mBackend->replies.takeFirst()->fail("x");
    QTRY_COMPARE(RnHandable::liveCount(), mHandables);
}

void tst_KyScriptOrvaneBackend::whatACallbackThrowsIsDropped()
{
    run("var n = 0; for (var i = 0; i < 2; ++i) Orvane.execScriptOnBackend('C', 'm', [],"
        " function() { ++n; throw new Error('a') }, function() { ++n; throw new Error('b') })");
    mBackend->replies.takeFirst()->succeed("1");
    mBackend->replies.takeFirst()->fail("x");
    QTRY_COMPARE(text("n"), QStringLiteral("2"));
    QVERIFY(!mEngine->hasError());
    QTRY_COMPARE(RnHandable::liveCount(), mHandables);
}

void tst_KyScriptOrvaneBackend::receiverIsReleasedAfterEachAnswer_data()
{
    QTest::addColumn<bool>("succeeds");
    QTest::newRow("success") << true;
    QTest::newRow("failure") << false;
}

void tst_KyScriptOrvaneBackend::receiverIsReleasedAfterEachAnswer()
{
    QFETCH(bool, succeeds);
    callBackend();
    QCOMPARE(RnHandable::liveCount(), mHandables + 1);
    if (succeeds)
        mBackend->replies.takeFirst()->succeed("1");
    else
        mBackend->replies.takeFirst()->fail("x");
    QTRY_COMPARE(RnHandable::liveCount(), mHandables);
}

void tst_KyScriptOrvaneBackend::noCallbackAfterTheObject()
{
    callBackend();
    mEngine.reset();
    mBackend->replies.takeFirst()->succeed("1");
    QCoreApplication::sendPostedEvents();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptOrvane);
}

void tst_KyScriptOrvaneBackend::aCallbackMayCallAgain()
{
    run("var chain = []; function next(r) { chain.push(r); if (r < 3)"
        " Orvane.execScriptOnBackend('C', 'm', [r], next, null) } next(0)");
    for (int i = 1; i <= 3; ++i) {
        QTRY_COMPARE(mBackend->replies.size(), 1);
        mBackend->replies.takeFirst()->succeed(QString::number(i));
    }
    QTRY_COMPARE(text("chain.join()"), QStringLiteral("0,1,2,3"));
}

void tst_KyScriptOrvaneBackend::aCallbackComesWhileAnotherScriptWaits()
{
    callBackend();
    mBackend->replies.takeFirst()->succeed("1");
    QCOMPARE(text("'use strict'; loop.turn(); got.join()"), QStringLiteral("ok,1"));
}

void tst_KyScriptOrvaneBackend::aDroppedCallFails()
{
    callBackend();
    mBackend->replies.clear();
    QTRY_COMPARE(text("got.join()"), QStringLiteral("failed,The backend gave no answer"));
}

void tst_KyScriptOrvaneBackend::withoutABackendTheCallFails()
{
    mBackend.reset();
    callBackend();
    QTRY_COMPARE(text("got.join()"), QStringLiteral("failed,This client has no backend"));
}

void tst_KyScriptOrvaneBackend::aBackendThatThrowsFails()
{
    OvMemoryBackend memory;
    memory.add("C", "m", [](auto&, auto&) { throw std::runtime_error("gone"); });
    callBackend();
    QTRY_COMPARE(text("got.join()"), QStringLiteral("failed,The backend failed"));
    QCOMPARE(mLog->take(), QStringList("3|OvBackendScriptExecutor|the backend failed: gone"));
    run("Orvane.execScriptOnBackend('C', 'other', [], null, function(m) { got = m })");
    QTRY_COMPARE(text("got"), QStringLiteral("There is no method C.other"));
}

void tst_KyScriptOrvaneBackend::answersFromOtherThreads()
{
    callBackend();
    std::unique_ptr<QThread> thread(QThread::create([reply = mBackend->replies.takeFirst()]() mutable {
        reply->succeed("5");
        reply.reset();
    }));
    thread->start();
    QTRY_COMPARE(text("got.join()"), QStringLiteral("ok,5"));
    QVERIFY(thread->wait());
}

KY_TEST_MAIN(tst_KyScriptOrvaneBackend)
#include "tst_KyScriptOrvaneBackend.moc"

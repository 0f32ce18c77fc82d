// What kyrun has for those who write scripts: --test, --check, --file and --interactive, as a process.

#include <support/KyTest.h>

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

class tst_kyrun_authors : public QObject
{
    Q_OBJECT

private slots:
    void testsAreToldInTap();
    void testFailsByWhatItThrows_data();
    void testFailsByWhatItThrows();
    void expectationHoldsOrFails_data();
    void expectationHoldsOrFails();
    void asynchronousTestIsAwaited_data();
    void asynchronousTestIsAwaited();
    void testThatTakesTooLongFails();
    void errorInAHandlerFailsTheTest();
    void skippedAndPlannedTestsAreNoFailures();
    void preparationAndCleaningSurroundEachTest();
    void failureOfThePreparationSkipsTheTest();
    void badFileFailsAndTheNextIsRun_data();
    void badFileFailsAndTheNextIsRun();
    void filesAreApart();
    void outputOfTheTestIsAComment();
    void namesAndReasonsAreEscaped();
    void scriptThatLeavesBailsOut();
    void testsHaveTheStudies();
    void guideShowsWhatIsPrinted();
    void badDefinitionIsAnError_data();
    void badDefinitionIsAnError();

    void syntaxIsCheckedAndNothingRun_data();
    void syntaxIsCheckedAndNothingRun();
    void allFilesAreChecked();

    void filesAreRunFirst();
    void failureOfAFirstFileEndsTheRun();
    void badCombinationIsToldInOneLine_data();
    void badCombinationIsToldInOneLine();

    void promptEvaluatesLines();
    void promptServesEventsBetweenTheLines();
    void promptCompletesNames();
    void promptKeepsItsHistory();
    void promptEndsWithTheStatusOfExit();

private:
    struct Outcome
    {
        int status;
        QString out;
        QString err;
    };
    Outcome run(const QStringList& inArguments) const;
    Outcome runTests(const QByteArray& inText) { return run({"--test", write("a.test.js", inText)}); }
    QString write(const QString& inName, const QByteArray& inText) const;

    QTemporaryDir mFolder;
};

namespace {

/// kyrun on a terminal of its own.
class Terminal
{
public:
    explicit Terminal(const QString& inStateFolder)
        : mMaster(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
        if (mMaster < 0 || grantpt(mMaster) != 0 || unlockpt(mMaster) != 0)
            qFatal("no terminal");
        const QByteArray slave = ptsname(mMaster);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TERM", "xterm");
        environment.insert("XDG_STATE_HOME", inStateFolder);
        mProcess.setProcessEnvironment(environment);
        mProcess.setChildProcessModifier([slave] {
            setsid();
            const int terminal = open(slave.constData(), O_RDWR);
            for (const int fd : {0, 1, 2})
                dup2(terminal, fd);
        });
        mProcess.start(KYRUN, {"--interactive"});
    }
    ~Terminal()
    {
        mProcess.kill();
        mProcess.waitForFinished();
        close(mMaster);
    }

    void type(const QByteArray& inKeys)
    {
        QCOMPARE(::write(mMaster, inKeys.constData(), size_t(inKeys.size())), inKeys.size());
    }

    /// Whether \a inText stands on the terminal, behind what was waited for before.
    bool shows(const QByteArray& inText)
    {
        return QTest::qWaitFor(
            [&] {
                char bytes[4096];
                for (ssize_t n = 0; (n = read(mMaster, bytes, sizeof bytes)) > 0;)
                    mText.append(bytes, n);
                const qsizetype at = mText.indexOf(inText, mSeen);
                if (at >= 0)
                    mSeen = at + inText.size();
                return at >= 0;
            },
            30'000);
    }

    int status()
    {
        const bool isOver = QTest::qWaitFor(
            [&] { return shows(QByteArray()) && mProcess.state() == QProcess::NotRunning; }, 30'000);
        return isOver && mProcess.exitStatus() == QProcess::NormalExit ? mProcess.exitCode() : -1;
    }

    QByteArray text() const { return mText; }

private:
    const int mMaster;
    QProcess mProcess;
    QByteArray mText;
    qsizetype mSeen = 0;
};

} // namespace

tst_kyrun_authors::Outcome tst_kyrun_authors::run(const QStringList& inArguments) const
{
    QProcess process;
    process.setWorkingDirectory(mFolder.path());
    process.start(KYRUN, inArguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString::fromUtf8(process.readAllStandardOutput()),
                "crashed or hung: " + process.readAllStandardError()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

/// Gives the name below the folder in which kyrun runs.
QString tst_kyrun_authors::write(const QString& inName, const QByteArray& inText) const
{
    QFile file(mFolder.filePath(inName));
    if (!file.open(QIODevice::WriteOnly) || file.write(inText) != inText.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return inName;
}

void tst_kyrun_authors::testsAreToldInTap()
{
    const Outcome outcome = runTests("test('one', function () { expect(1).toBe(1); });\n"
                                     "test('two', function () {\n"
                                     "    expect([1, {a: 2}]).toEqual([1, {a: 3}]);\n"
                                     "});\n");
    QCOMPARE(outcome.out, QStringLiteral("TAP version 14\n"
                                         "# a.test.js\n"
                                         "ok 1 - one\n"
                                         "not ok 2 - two\n"
                                         "  ---\n"
                                         "  message: \"expected [1, {a: 2}] to equal [1, {a: 3}]\"\n"
                                         "  at: \"a.test.js:3\"\n"
                                         "  ...\n"
                                         "1..2\n"));
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 1);
    QCOMPARE(runTests("test('one', function () {})").status, 0);
}

void tst_kyrun_authors::testFailsByWhatItThrows_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QString>("message");
    QTest::newRow("error") << QByteArray("nope()") << "ReferenceError: nope is not defined";
    QTest::newRow("own error") << QByteArray("throw new RangeError('too far')") << "RangeError: too far";
    QTest::newRow("text") << QByteArray("throw 'a text'") << R"(thrown: \"a text\")";
    QTest::newRow("undefined") << QByteArray("throw undefined") << "thrown: undefined";
    QTest::newRow("value without a text")
        << QByteArray("throw {get a() { throw 1; }}") << "thrown: (a value without a text)";
}

void tst_kyrun_authors::testFailsByWhatItThrows()
{
    QFETCH(QByteArray, code);
    QFETCH(QString, message);
    const Outcome outcome = runTests("test('one', function () { " + code + "; });");
    QVERIFY2(outcome.out.contains("not ok 1 - one\n  ---\n  message: \"" + message + "\"\n"),
             qPrintable(outcome.out));
    QCOMPARE(outcome.status, 1);
}

void tst_kyrun_authors::expectationHoldsOrFails_data()
{
    QTest::addColumn<QByteArray>("holds");
    QTest::addColumn<QByteArray>("fails");
    QTest::addColumn<QString>("message");
    const auto row = [](const char* name, const char* holds, const char* fails, const char* message) {
        QTest::newRow(name) << QByteArray(holds) << QByteArray(fails) << QString::fromUtf8(message);
    };
    row("toBe", "expect(NaN).toBe(NaN)", "expect(0).toBe(-0)", "expected 0 to be -0");
    row("not", "expect(1).not.toBe(2)", "expect(1).not.toBe(1)", "expected 1 not to be 1");
    row("toEqual", "expect({a: [1, new Date(5)]}).toEqual({a: [1, new Date(5)]})", "expect('1').toEqual(1)",
        R"(expected \"1\" to equal 1)");
    row("toEqual of lengths", "expect([]).not.toEqual([1])", "expect([1]).toEqual([1, undefined])",
        "expected [1] to equal [1, undefined]");
    row("toEqual of keys", "expect({a: 1}).not.toEqual({b: 1})", "expect({a: undefined}).toEqual({})",
        "expected {a: undefined} to equal {}");
    row("toEqual of bytes", "expect(new Uint8Array([1, 2])).toEqual(new Uint8Array([1, 2]))",
        "expect(new Uint8Array([1])).toEqual(new Uint8Array([2]))", "expected [1] to equal [2]");
    row("toEqual of maps", "expect(new Map([['a', 1]])).toEqual(new Map([['a', 1]]))",
        "expect(new Set([1])).toEqual(new Set([2]))", "expected Set[1] to equal Set[2]");
    row("toEqual of a cycle", "var a = {}; a.a = a; var b = {}; b.a = b; expect(a).toEqual(b)",
        "var c = {}; c.c = c; expect(c).toEqual({c: 1})", "expected {c: {c: {c: {c: {…}}}}} to equal {c: 1}");
    row("toEqual of host objects", "expect(Orvane).toEqual(Orvane)", "expect(Orvane).toEqual({})", nullptr);
    row("toEqual of dates", "expect(new Date(5)).not.toEqual(new Date(6))",
        "expect(new Date(NaN)).toEqual(new Date(0))",
        "expected Invalid Date to equal 1970-01-01T00:00:00.000Z");
    row("toEqual of errors", "expect(new Error('a')).toEqual(new Error('a'))",
        "expect(new Error('a')).toEqual(new Error('b'))", "expected Error: a to equal Error: b");
    row("toBeCloseTo", "expect(0.1 + 0.2).toBeCloseTo(0.3)", "expect(1).toBeCloseTo(1.2, 0.1)",
        "expected 1 to be close to 1.2 within 0.1");
    row("toBeTruthy", "expect('a').toBeTruthy()", "expect('').toBeTruthy()", R"(expected \"\" to be truthy)");
    row("toBeFalsy", "expect(0).toBeFalsy()", "expect(1).toBeFalsy()", "expected 1 to be falsy");
    row("toBeNull", "expect(null).toBeNull()", "expect(undefined).toBeNull()",
        "expected undefined to be null");
    row("toBeUndefined", "expect(undefined).toBeUndefined()", "expect(null).toBeUndefined()",
        "expected null to be undefined");
    row("toBeDefined", "expect(null).toBeDefined()", "expect(undefined).toBeDefined()",
        "expected undefined to be defined");
    row("toBeGreaterThan", "expect(2).toBeGreaterThan(1)", "expect(1).toBeGreaterThan(1)",
        "expected 1 to be greater than 1");
    row("toBeGreaterThanOrEqual", "expect(1).toBeGreaterThanOrEqual(1)",
        "expect('2').toBeGreaterThanOrEqual(1)", R"(expected \"2\" to be greater than or equal to 1)");
    row("toBeLessThan", "expect('a').toBeLessThan('b')", "expect(NaN).toBeLessThan(1)",
        "expected NaN to be less than 1");
    row("toBeLessThanOrEqual", "expect(1).toBeLessThanOrEqual(1)", "expect(2).toBeLessThanOrEqual(1)",
        "expected 2 to be less than or equal to 1");
    row("toBeInstanceOf", "expect([]).toBeInstanceOf(Array)", "expect({}).toBeInstanceOf(Array)",
        "expected {} to be an instance of function Array");
    row("toHaveLength", "expect('abc').toHaveLength(3)", "expect(null).toHaveLength(0)",
        "expected null to have the length 0");
    row("toContain of a list", "expect([1, {a: 1}]).toContain({a: 1})", "expect([1]).toContain(2)",
        "expected [1] to contain 2");
    row("toContain of a text", "expect('abc').toContain('b')", "expect('abc').toContain('d')",
        R"(expected \"abc\" to contain \"d\")");
    row("toMatch", "expect('abc').toMatch(/B/i)", "expect('abc').toMatch('x')",
        R"(expected \"abc\" to match \"x\")");
    row("toThrow", "expect(function () { throw 1; }).toThrow()", "expect(function () {}).toThrow()",
        "expected the function to throw, it threw nothing");
    row("toThrow a text", "expect(function () { throw new Error('abc'); }).toThrow('b')",
        "expect(function () { throw new Error('abc'); }).toThrow('d')",
        R"(expected the function to throw \"d\", it threw Error: abc)");
    row("toThrow a class", "expect(function () { null.x; }).toThrow(TypeError)",
        "expect(function () { null.x; }).toThrow(RangeError)", nullptr);
    row("not.toThrow", "expect(function () {}).not.toThrow()",
        "expect(function () { throw 1; }).not.toThrow()", "expected the function not to throw, it threw 1");
    row("toThrow of no function", "expect(function () { expect(1).toThrow(); }).toThrow('needs a function')",
        "expect(1).not.toThrow()", "toThrow() needs a function, got 1");
}

void tst_kyrun_authors::expectationHoldsOrFails()
{
    QFETCH(QByteArray, holds);
    QFETCH(QByteArray, fails);
    QFETCH(QString, message);
    const Outcome outcome = runTests("test('holds', function () { " + holds +
                                     "; });\ntest('fails', function () { " + fails + "; });");
    QVERIFY2(outcome.out.contains("\nok 1 - holds\nnot ok 2 - fails\n"), qPrintable(outcome.out));
    QVERIFY2(message.isEmpty() ||
                 outcome.out.contains("\n  message: \"" + message + "\"\n  at: \"a.test.js:2\"\n"),
             qPrintable(outcome.out));
}

void tst_kyrun_authors::asynchronousTestIsAwaited_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("message");
    QTest::newRow("done") << QByteArray("function (done) { after(done); }") << QString();
    QTest::newRow("done with an error")
        << QByteArray("function (done) { after(function () { done(new Error('no')); }); }") << "Error: no";
    QTest::newRow("promise") << QByteArray(
                                    "function () { return new Promise(function (ok) { after(ok); }); }")
                             << QString();
    QTest::newRow("rejected promise") << QByteArray("function () { return new Promise(function (ok, no) { "
                                                    "after(function () { no(new Error('no')); "
                                                    "}); }); }")
                                      << "Error: no";
    QTest::newRow("expectation behind a promise")
        << QByteArray("function () { return Promise.resolve(1).then(function (v) { expect(v).toBe(2); }); }")
        << "expected 1 to be 2";
    QTest::newRow("done twice") << QByteArray("function (done) { done(); done(new Error('late')); }")
                                << QString();
}

void tst_kyrun_authors::asynchronousTestIsAwaited()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, message);
    const Outcome outcome = runTests("var timer = new Timer();\n"
                                     "function after(f) { timer = new Timer(); timer.setSingleShot(true);\n"
                                     "    timer.timeout.connect(function () { f(); }); timer.start(5); }\n"
                                     "test('one', " +
                                     body + ");\ntest('next', function () {});");
    QVERIFY2(outcome.out.contains(message.isEmpty() ? "\nok 1 - one\n" : "\nnot ok 1 - one\n"),
             qPrintable(outcome.out));
    QVERIFY2(outcome.out.contains("\nok 2 - next\n"), qPrintable(outcome.out));
    QVERIFY2(message.isEmpty() || outcome.out.contains("message: \"" + message + "\""),
             qPrintable(outcome.out));
}

void tst_kyrun_authors::testThatTakesTooLongFails()
{
    const Outcome outcome = runTests("test('one', function (done) {}, 20);\ntest('next', function () {});");
    QVERIFY2(outcome.out.contains(
                 "not ok 1 - one\n  ---\n  message: \"it is not over after 20 ms\"\n  ...\nok 2 - next\n"),
             qPrintable(outcome.out));
}

void tst_kyrun_authors::errorInAHandlerFailsTheTest()
{
    const Outcome outcome =
        runTests("var timer = new Timer();\ntest('one', function (done) {\n    timer.setSingleShot(true);\n"
                 "    timer.timeout.connect(function () { done(); missing(); });\n    timer.start(5);\n});");
    QVERIFY2(outcome.out.contains(
                 "not ok 1 - one\n  ---\n  message: \"file:a.test.js:4: ReferenceError: missing is not "
                 "defined\"\n"),
             qPrintable(outcome.out));
    const Outcome failed = runTests(
        "var timer = new Timer();\ntest('one', function (done) {\n    timer.setSingleShot(true);\n"
        "    timer.timeout.connect(function () {\n        done();\n        expect(1).toBe(2);\n    });\n"
        "    timer.start(5);\n});");
    QVERIFY2(failed.out.contains("message: \"expected 1 to be 2\"\n  at: \"a.test.js:6\"\n"),
             qPrintable(failed.out));
}

void tst_kyrun_authors::skippedAndPlannedTestsAreNoFailures()
{
    const Outcome outcome = runTests("test.skip('one', function () { nope(); });\ntest.todo('two');");
    QVERIFY2(outcome.out.contains("\nok 1 - one # SKIP\nnot ok 2 - two # TODO\n1..2\n"),
             qPrintable(outcome.out));
    QCOMPARE(outcome.status, 0);
}

void tst_kyrun_authors::preparationAndCleaningSurroundEachTest()
{
    const Outcome outcome =
        runTests("beforeEach(function () { print('before'); });\n"
                 "afterEach(function (done) { print('after'); done(); });\n"
                 "test('one', function () { nope(); });\ntest('two', function () { print('two'); });");
    QVERIFY2(outcome.out.contains("# before\n# after\nnot ok 1 - one\n"), qPrintable(outcome.out));
    QVERIFY2(outcome.out.contains("# before\n# two\n# after\nok 2 - two\n"), qPrintable(outcome.out));
}

void tst_kyrun_authors::failureOfThePreparationSkipsTheTest()
{
    const Outcome outcome = runTests("beforeEach(function () { throw new Error('no'); });\n"
                                     "afterEach(function () { print('after'); });\n"
                                     "test('one', function () { print('ran'); });");
    QVERIFY2(outcome.out.contains("# after\nnot ok 1 - one\n"), qPrintable(outcome.out));
    QVERIFY(!outcome.out.contains("ran"));
}

void tst_kyrun_authors::badFileFailsAndTheNextIsRun_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");
    QTest::newRow("missing") << "missing.js"
                             << "message: \"Cannot read the script missing.js: No such file or directory\"";
    QTest::newRow("syntax error") << write("syntax.js", "\nvar = 1;") << "at: \"syntax.js:2\"";
    QTest::newRow("error") << write("error.js", "test('a', function () {});\nnope();")
                           << "message: \"ReferenceError: nope is not defined\"\n  at: \"error.js:2\"";
    QTest::newRow("no test") << write("none.js", "1") << "message: \"The file defines no test\"";
}

void tst_kyrun_authors::badFileFailsAndTheNextIsRun()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);
    const Outcome outcome = run({"--test", file, write("good.js", "test('good', function () {});")});
    QVERIFY2(outcome.out.contains("\nnot ok 1 - " + file + "\n"), qPrintable(outcome.out));
    QVERIFY2(outcome.out.contains(reason), qPrintable(outcome.out));
    QVERIFY2(outcome.out.endsWith("# good.js\nok 2 - good\n1..2\n"), qPrintable(outcome.out));
    QCOMPARE(outcome.status, 1);
}

void tst_kyrun_authors::filesAreApart()
{
    const QString one =
        write("one.js", "var shared = 1; test('one', function () { expect(shared).toBe(1); });");
    const QString two =
        write("two.js", "test('two', function () { expect(typeof shared).toBe('undefined'); });");
    const Outcome outcome = run({"--test", one, two, one});
    QVERIFY2(outcome.status == 0, qPrintable(outcome.out));
    QVERIFY(outcome.out.endsWith("\n1..3\n"));
}

void tst_kyrun_authors::outputOfTheTestIsAComment()
{
    const Outcome outcome =
        runTests("print('ok 1 - no\\nnot ok');\ntest('one', function () { print(1, 2); });");
    QCOMPARE(outcome.out,
             QStringLiteral("TAP version 14\n# a.test.js\n# ok 1 - no\n# not ok\n# 1 2\nok 1 - one\n1..1\n"));
}

void tst_kyrun_authors::namesAndReasonsAreEscaped()
{
    const Outcome outcome =
        runTests("test('a # b\\n\\\\c', function () { throw new Error('x\"y\\nz\\u0007\\\\ ä'); });");
    QVERIFY2(outcome.out.contains("not ok 1 - a \\# b \\\\c\n"), qPrintable(outcome.out));
    const auto message = QString::fromUtf8("  message: \"Error: x\\\"y\\nz\\u0007\\\\ ä\"");
    QVERIFY2(outcome.out.contains(message), qPrintable(outcome.out));
}

void tst_kyrun_authors::scriptThatLeavesBailsOut()
{
    const Outcome outcome =
        runTests("test('one', function () { Runner.exit(7); });\ntest('two', function () {});");
    QVERIFY2(outcome.out.contains("Bail out!"), qPrintable(outcome.out));
    QCOMPARE(outcome.status, 7);
    QCOMPARE(runTests("test('one', function () { Runner.exit(0); });").status, 1);
}

void tst_kyrun_authors::testsHaveTheStudies()
{
    const QString sample = mFolder.filePath("sample");
    QCOMPARE(QProcess::execute(KYSAMPLE, {sample}), 0);
    const QString file =
        write("studies.js", "test('studies', function () {\n"
                            "    expect(StudyList.get('PRIMARY_STUDIES')).toHaveLength(3);\n});");
    const Outcome outcome = run({"--studies", sample, "--test", file});
    QVERIFY2(outcome.status == 0, qPrintable(outcome.out + outcome.err));
}

void tst_kyrun_authors::guideShowsWhatIsPrinted()
{
    QFile guide(GUIDE);
    QVERIFY(guide.open(QIODevice::ReadOnly));
    const QRegularExpression sample("```js\n// (\\S+)\n(.*?)```.*?```\n\\$ kyrun (.*?)\n(.*?)```",
                                    QRegularExpression::DotMatchesEverythingOption);
    const auto match = sample.match(QString::fromUtf8(guide.readAll()));
    QVERIFY(match.hasMatch());
    write(match.captured(1), match.captured(2).toUtf8());
    QCOMPARE(run(match.captured(3).split(' ')).out, match.captured(4));
    // The way in which a test reads the script that it tests.
    write("median.js", "function median() { return 5; }");
    const Outcome outcome = runTests("(0, eval)(System.fileReadAll('median.js'));\n"
                                     "test('median', function () { expect(median()).toBe(5); });");
    QVERIFY2(outcome.status == 0, qPrintable(outcome.out));
}

void tst_kyrun_authors::badDefinitionIsAnError_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QString>("message");
    QTest::newRow("no function") << QByteArray("test('a')") << R"(TypeError: test(\"a\") needs a function)";
    QTest::newRow("preparation without a function")
        << QByteArray("beforeEach(1)") << "TypeError: beforeEach() and afterEach() need a function";
    QTest::newRow("test within a test")
        << QByteArray("test('a', function () { test('b', function () {}); })")
        << R"(Error: test() is called within the test \"a\"; define tests beside each other)";
}

void tst_kyrun_authors::badDefinitionIsAnError()
{
    QFETCH(QByteArray, code);
    QFETCH(QString, message);
    const Outcome outcome = runTests(code);
    QVERIFY2(outcome.out.contains("message: \"" + message + "\""), qPrintable(outcome.out));
    QCOMPARE(outcome.status, 1);
}

void tst_kyrun_authors::syntaxIsCheckedAndNothingRun_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("error");
    const auto row = [](const char* name, const char* text, const char* error) {
        QTest::newRow(name) << QByteArray(text) << QString::fromUtf8(error);
    };
    row("sound", "print('ran');\nfunction f() { print('ran'); }\nf();", "");
    row("empty", "", "");
    row("error of a line", "var a = 1;\nvar b = ;\n",
        "a.js:2: SyntaxError: Expected token `numeric literal'\n");
    row("error at the end", "function f() {\n", "a.js:2: SyntaxError: Expected token `}'\n");
    row("return outside", "return 1;",
        "a.js:1: SyntaxError: Return statement not allowed outside of Function declaration.\n");
    row("strict", "// a comment\n'use strict';\nwith (a) {}\n",
        "a.js:3: SyntaxError: 'with' statement is not allowed in strict mode\n");
    row("not strict", "'use  strict';\nwith (a) {}\n", "");
    row("strict too late", "f();\n'use strict';\nwith (a) {}\n", "");
    row("closing what surrounds it", "}); print('ran'); (function () {",
        "a.js:1: SyntaxError: Expected token `;'\n");
}

void tst_kyrun_authors::syntaxIsCheckedAndNothingRun()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, error);
    const Outcome outcome = run({"--check", write("a.js", text)});
    QCOMPARE(outcome.err, error);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.status, error.isEmpty() ? 0 : 1);
}

void tst_kyrun_authors::allFilesAreChecked()
{
    const QString bad = write("bad.js", "var");
    const QString good = write("good.js", "1");
    const Outcome outcome = run({"--check", bad, good, bad});
    QCOMPARE(outcome.err.count("bad.js:1: SyntaxError"), 2);
    QCOMPARE(outcome.status, 1);
    QCOMPARE(run({"--check", good, "missing.js"}).status, 2);
}

void tst_kyrun_authors::filesAreRunFirst()
{
    const QString one = write("first.js", "var said = ['first'];");
    const QString two = write("second.js", "said.push('second');");
    const QString main = write("main.js", "print(said.concat(Runner.args).join());");
    QCOMPARE(run({"-f", one, "--file", two, main, "-f", "x"}).out, QStringLiteral("first,second,-f,x\n"));
    QCOMPARE(run({"-f", one, "-p", "-e", "said"}).out, QStringLiteral("first\n"));
    QCOMPARE(run({"-p", "-f", one, "-f", two}).out, QStringLiteral("2\n"));
}

void tst_kyrun_authors::failureOfAFirstFileEndsTheRun()
{
    const QString bad = write("bad.js", "\nnope();");
    const Outcome outcome = run({"-f", bad, "-e", "print(1)"});
    QCOMPARE(outcome.out, QString());
    QVERIFY(outcome.err.startsWith("bad.js:2: ReferenceError: nope is not defined\n"));
    QCOMPARE(outcome.status, 1);
    QCOMPARE(run({"-f", "missing.js", "-e", "print(1)"}).status, 2);
}

void tst_kyrun_authors::badCombinationIsToldInOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");
    QTest::newRow("tests without files") << QStringList({"--test"}) << "kyrun: --test needs FILES\n";
    QTest::newRow("check without files") << QStringList({"--check"}) << "kyrun: --check needs FILES\n";
    QTest::newRow("both") << QStringList({"--check", "--test", "a.js"})
                          << "kyrun: --test and --check exclude each other\n";
    QTest::newRow("tests and code") << QStringList({"--test", "-e", "1", "a.js"})
                                    << "kyrun: --test takes FILES, and nothing else to run\n";
    QTest::newRow("prompt without a terminal")
        << QStringList({"-i"})
        << "kyrun: --interactive needs a terminal; \"-\" runs a script from standard input\n";
}

void tst_kyrun_authors::badCombinationIsToldInOneLine()
{
    QFETCH(QStringList, arguments);
    const Outcome outcome = run(arguments);
    QTEST(outcome.err, "error");
    QCOMPARE(outcome.status, 2);
}

void tst_kyrun_authors::promptEvaluatesLines()
{
    Terminal terminal(mFolder.filePath("state1"));
    QVERIFY2(terminal.shows("> "), terminal.text());
    terminal.type("20 + 22\r");
    QVERIFY2(terminal.shows("\n42\r\n"), terminal.text());
    terminal.type("function twice(n) {\r");
    QVERIFY2(terminal.shows("... "), terminal.text());
    terminal.type("return 2 * n; }\r");
    terminal.type("twice(4)\r");
    QVERIFY2(terminal.shows("\n8\r\n"), terminal.text());
    terminal.type("nope()\r");
    QVERIFY2(terminal.shows("line4:1: ReferenceError: nope is not defined"), terminal.text());
    terminal.type("'ä€'\r");
    QVERIFY2(terminal.shows("\nä€\r\n"), terminal.text());
    terminal.type("\x04");
    QCOMPARE(terminal.status(), 0);
}

void tst_kyrun_authors::promptServesEventsBetweenTheLines()
{
    Terminal terminal(mFolder.filePath("state2"));
    QVERIFY2(terminal.shows("> "), terminal.text());
    terminal.type(
        "var t = new Timer(); t.setSingleShot(true); t.timeout.connect(function() { print('ti' + 'ck'); }); "
        "t.start(1)\r");
    QVERIFY2(terminal.shows("\ntick\r\n") || terminal.shows("tick"), terminal.text());
}

void tst_kyrun_authors::promptCompletesNames()
{
    Terminal terminal(mFolder.filePath("state3"));
    QVERIFY2(terminal.shows("> "), terminal.text());
    terminal.type("typeof StudyLi\t.ge\t\r");
    QVERIFY2(terminal.shows("\nfunction\r\n"), terminal.text());
}

void tst_kyrun_authors::promptKeepsItsHistory()
{
    const QString state = mFolder.filePath("state4");
    {
        Terminal terminal(state);
        QVERIFY2(terminal.shows("> "), terminal.text());
        terminal.type("3 * 5\r");
        QVERIFY2(terminal.shows("\n15\r\n"), terminal.text());
        terminal.type("\x04");
        QCOMPARE(terminal.status(), 0);
    }
    Terminal terminal(state);
    QVERIFY2(terminal.shows("> "), terminal.text());
    terminal.type("\x10\r"); // the line before
    QVERIFY2(terminal.shows("\n15\r\n"), terminal.text());
}

void tst_kyrun_authors::promptEndsWithTheStatusOfExit()
{
    Terminal terminal(mFolder.filePath("state5"));
    QVERIFY2(terminal.shows("> "), terminal.text());
    terminal.type("Runner.exit(9)\r");
    QCOMPARE(terminal.status(), 9);
}

KY_TEST_MAIN(tst_kyrun_authors)

#include "tst_kyrun_authors.moc"

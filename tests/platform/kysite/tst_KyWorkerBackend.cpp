#include "BackendAnswer.h"

#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <kysite/KyWorkerBackend.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

class tst_KyWorkerBackend : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void resultsCrossAsJson_data();
    void resultsCrossAsJson();
    void argumentsAreValues();
    void instancesKeepTheirState();
    void objectsInPlaceOfClasses();
    void changedFilesAreReadAgain();
    void failuresTellThePlace();
    void whatCannotBeCalled_data();
    void whatCannotBeCalled();
    void brokenFiles_data();
    void brokenFiles();
    void callsKeepTheirOrder();
    void manyCallsInFlight();
    void aCallThatHangsIsEnded();
    void aWaitingCallIsNotEndedForTheOneBefore();
    void endlessRecursionFails();
    void theEndEndsACallThatRuns();
    void theFolderIsNotThere();

private:
    void write(const char* inClass, const QByteArray& inText)
    {
        QFile file(mFolder->filePath(QString("%1.js").arg(inClass)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(inText);
    }
    QString answer(const std::string& inClass, const std::string& inMethod,
                   const std::vector<std::string>& inParameters = {})
    {
        const BackendAnswer answer(inClass, inMethod, inParameters);
        [&] { QTRY_VERIFY_WITH_TIMEOUT(answer.count > 0, 60000); }();
        return answer.text;
    }

    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<KyWorkerBackend> mBackend;
};

void tst_KyWorkerBackend::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    write("Sums", "class Sums {\n"
                  "  constructor() { this.total = 0 }\n"
                  "  add(a, b) { return a + b }\n"
                  "  keep(n) { this.total += n; return this.total }\n"
                  "  give(json) { return JSON.parse(json) }\n"
                  "  text(v) { return JSON.stringify(v) }\n"
                  "  none() {}\n"
                  "  fails() {\n"
                  "    throw new RangeError('too \\u00e4lt')\n"
                  "  }\n"
                  "  throwsText() { throw 'bare' }\n"
                  "  cycle() { const a = {}; a.a = a; return a }\n"
                  "  hangs() { for (;;) ; }\n"
                  "  deep(n) { return this.deep(n + 1) + 1 }\n"
                  "  _hidden() { return 1 }\n"
                  "}\n");
    mBackend = std::make_unique<KyWorkerBackend>(mFolder->path());
}

void tst_KyWorkerBackend::cleanup()
{
    mBackend.reset();
    mFolder.reset();
}

void tst_KyWorkerBackend::resultsCrossAsJson_data()
{
    QTest::addColumn<QByteArray>("json");
    for (const char* json : {"1", "1.5", "\"a\xe4\xb8\xad\"", "true", "null", "[]", "{}", "[1,[\"x\",null]]",
                             "{\"a\":{\"b\":[]}}", "\"\""})
        QTest::newRow(json) << QByteArray(json);
}

void tst_KyWorkerBackend::resultsCrossAsJson()
{
    QFETCH(QByteArray, json);
    QByteArray quoted = json;
    quoted.replace('"', "\\\"");
    QCOMPARE(answer("Sums", "give", {"\"" + quoted.toStdString() + "\""}), "ok " + QString::fromUtf8(json));
}

void tst_KyWorkerBackend::argumentsAreValues()
{
    QCOMPARE(answer("Sums", "add", {"1", "2"}), QStringLiteral("ok 3"));
    QCOMPARE(answer("Sums", "add", {"\"a\"", "\"b\""}), QStringLiteral("ok \"ab\""));
    QCOMPARE(answer("Sums", "text", {"{\"a\":[1,null]}"}), QStringLiteral("ok \"{\\\"a\\\":[1,null]}\""));
    QCOMPARE(answer("Sums", "none", {"1", "2", "3"}), QStringLiteral("ok"));
    QCOMPARE(answer("Sums", "text", {"{broken"}), QStringLiteral("failed: An argument is no JSON"));
}

void tst_KyWorkerBackend::instancesKeepTheirState()
{
    QCOMPARE(answer("Sums", "keep", {"2"}), QStringLiteral("ok 2"));
    QCOMPARE(answer("Sums", "keep", {"3"}), QStringLiteral("ok 5"));
}

void tst_KyWorkerBackend::objectsInPlaceOfClasses()
{
    write("Plain", "var hidden = 40;\nvar Plain = { get: function(n) { return hidden + n } }");
    QCOMPARE(answer("Plain", "get", {"2"}), QStringLiteral("ok 42"));
    write("Old", "function Old() { this.n = 7 }\nOld.prototype.get = function() { return this.n }");
    QCOMPARE(answer("Old", "get"), QStringLiteral("ok 7"));
}

void tst_KyWorkerBackend::changedFilesAreReadAgain()
{
    write("Plain", "var Plain = { get: function() { return 1 } }");
    QCOMPARE(answer("Plain", "get"), QStringLiteral("ok 1"));
    write("Plain", "var Plain = { get: function() { return 'longer than before' } }");
    QCOMPARE(answer("Plain", "get"), QStringLiteral("ok \"longer than before\""));
}

void tst_KyWorkerBackend::failuresTellThePlace()
{
    QCOMPARE(answer("Sums", "fails"), QString::fromUtf8("failed: RangeError: too ält (Sums.js:9)"));
    const QString cycle = answer("Sums", "cycle");
    QVERIFY2(cycle.startsWith("failed: TypeError"), qPrintable(cycle));
}

void tst_KyWorkerBackend::whatCannotBeCalled_data()
{
    QTest::addColumn<QByteArray>("className");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("message");
    const QString noMethod = QStringLiteral("failed: The backend class Sums has no method %1");
    for (const char* method : {"missing", "", "_hidden", "constructor", "toString", "hasOwnProperty",
                               "__proto__", "total", "add()", "a b"})
        QTest::addRow("method %s", method)
            << QByteArray("Sums") << QByteArray(method) << noMethod.arg(method);
    for (const char* name : {"", "Missing", "../Sums", "/etc/passwd", "Sums.js", "Su\nms", "sums;", "_Sums"})
        QTest::addRow("class %s", name) << QByteArray(name) << QByteArray("add")
                                        << QStringLiteral("failed: There is no backend class %1").arg(name);
}

void tst_KyWorkerBackend::whatCannotBeCalled()
{
    QFETCH(QByteArray, className);
    QFETCH(QByteArray, method);
    QFETCH(QString, message);
    QCOMPARE(answer(className.toStdString(), method.toStdString()), message);
}

void tst_KyWorkerBackend::brokenFiles_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("message");
    QTest::newRow("empty") << QByteArray() << "failed: The file Broken.js declares no class Broken";
    QTest::newRow("another name") << QByteArray("class Other {}")
                                  << "failed: The file Broken.js declares no class Broken";
    QTest::newRow("no object") << QByteArray("var Broken = 5")
                               << "failed: The file Broken.js declares no class Broken";
    QTest::newRow("syntax") << QByteArray("\nclass Broken { x( }") << "SyntaxError";
    QTest::newRow("throws") << QByteArray("\nthrow new Error('at load')")
                            << "failed: Error: at load (Broken.js:2)";
    QTest::newRow("constructor throws")
        << QByteArray("class Broken {\n constructor() { throw new Error('made') } }")
        << "failed: Error: made (Broken.js:2)";
}

void tst_KyWorkerBackend::brokenFiles()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, message);
    write("Broken", text);
    const QString came = answer("Broken", "x");
    QVERIFY2(message.startsWith("failed") ? came == message : came.contains(message), qPrintable(came));
    QCOMPARE(answer("Sums", "add", {"1", "1"}), QStringLiteral("ok 2"));
    write("Broken", "class Broken { x() { return 'whole again' } }");
    QCOMPARE(answer("Broken", "x"), QStringLiteral("ok \"whole again\""));
}

void tst_KyWorkerBackend::callsKeepTheirOrder()
{
    const BackendAnswer first("Sums", "keep", {"1"});
    const BackendAnswer broken("Sums", "fails");
    const BackendAnswer last("Sums", "keep", {"10"});
    QCOMPARE(first.count + broken.count + last.count, 0); // all of them answer from the event loop
    QTRY_COMPARE(last.text, QStringLiteral("ok 11"));
    QCOMPARE(first.text, QStringLiteral("ok 1"));
    QVERIFY(broken.text.startsWith("failed: RangeError"));
}

void tst_KyWorkerBackend::manyCallsInFlight()
{
    std::vector<std::unique_ptr<BackendAnswer>> answers;
    for (int i = 0; i < 1000; ++i)
        answers.push_back(
            std::make_unique<BackendAnswer>("Sums", "add", std::vector{std::to_string(i), std::string("1")}));
    QTRY_COMPARE_WITH_TIMEOUT(answers.back()->count, 1, 60000);
    for (int i = 0; i < 1000; ++i) {
        QCOMPARE(answers[std::size_t(i)]->text, QStringLiteral("ok %1").arg(i + 1));
        QCOMPARE(answers[std::size_t(i)]->count, 1);
    }
}

void tst_KyWorkerBackend::aCallThatHangsIsEnded()
{
    mBackend.reset();
    mBackend = std::make_unique<KyWorkerBackend>(mFolder->path(), 1);
    const BackendAnswer hanging("Sums", "hangs");
    const BackendAnswer behind("Sums", "add", {"1", "2"});
    QTRY_COMPARE_WITH_TIMEOUT(behind.text, QStringLiteral("ok 3"), 60000);
    QCOMPARE(hanging.text, QStringLiteral("failed: Sums.hangs took longer than 1 seconds"));
}

void tst_KyWorkerBackend::aWaitingCallIsNotEndedForTheOneBefore()
{
    mBackend.reset();
    mBackend = std::make_unique<KyWorkerBackend>(mFolder->path(), 1);
    std::vector<std::unique_ptr<BackendAnswer>> answers;
    for (int i = 0; i < 3; ++i)
        answers.push_back(std::make_unique<BackendAnswer>("Sums", i == 1 ? "add" : "hangs",
                                                          std::vector<std::string>{"1", "2"}));
    QTRY_COMPARE_WITH_TIMEOUT(answers.back()->count, 1, 60000);
    QCOMPARE(answers[0]->text, QStringLiteral("failed: Sums.hangs took longer than 1 seconds"));
    QCOMPARE(answers[1]->text, QStringLiteral("ok 3"));
    QCOMPARE(answers[2]->text, QStringLiteral("failed: Sums.hangs took longer than 1 seconds"));
}

void tst_KyWorkerBackend::endlessRecursionFails()
{
    const QString text = answer("Sums", "deep", {"0"});
    QVERIFY2(text.startsWith("failed: RangeError"), qPrintable(text));
    QCOMPARE(answer("Sums", "add", {"1", "1"}), QStringLiteral("ok 2"));
}

void tst_KyWorkerBackend::theEndEndsACallThatRuns()
{
    const BackendAnswer before("Sums", "add", {"1", "1"});
    QTRY_COMPARE(before.count, 1);
    const BackendAnswer hanging("Sums", "hangs");
    const BackendAnswer waiting("Sums", "add", {"1", "1"});
    mBackend.reset();
    QTRY_COMPARE(hanging.count + waiting.count, 2);
    QVERIFY2(hanging.text.startsWith("failed: "), qPrintable(hanging.text));
    QVERIFY2(waiting.text.startsWith("failed: "), qPrintable(waiting.text));
}

void tst_KyWorkerBackend::theFolderIsNotThere()
{
    mBackend.reset();
    mBackend = std::make_unique<KyWorkerBackend>(mFolder->filePath("nowhere"));
    QCOMPARE(answer("Sums", "add"), QStringLiteral("failed: There is no backend class Sums"));
}

KY_TEST_MAIN(tst_KyWorkerBackend)
#include "tst_KyWorkerBackend.moc"

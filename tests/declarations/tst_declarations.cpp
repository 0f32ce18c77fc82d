// The declarations for editors say what a real engine has: every global, member, argument and type, both
// ways.

#include "Comparison.h"
#include "Declarations.h"

#include <interop/Peers.h>
#include <support/KyTest.h>

#include <common/KyHostPlatform.h>
#include <common/KyViewerLayout.h>
#include <common/KyViewerTools.h>
#include <kyrun/KyRunner.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptProgram.h>

#include <kybase/KyDICOMObjectInfo.h>
#include <kybase/KyLoadHelper.h>
#include <kybase/KyWorklistHelper.h>

#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QFile>
#include <QJSValueIterator>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

#include <optional>

namespace {

/// What scripts can see, and no declaration offers.
struct Exception
{
    const char* name;
    const char* reason;
};

constexpr Exception Exceptions[] = {
    {"vprint", "the half of print that the engine has in C++"},
    {"KyScriptHttpRequest.replyFinished",
     "a slot for Qt's network manager; scripts have no reason to call it"},
    {"KyScriptWebSocket.onConnected", "a slot for Qt's socket"},
    {"KyScriptWebSocket.onDisconnected", "a slot for Qt's socket"},
    {"KyScriptWebSocket.onTextMessageReceived", "a slot for Qt's socket"},
    {"KyScriptWebSocket.onSslErrors", "a slot for Qt's socket"},
    {"KyScriptWebSocket.onWebSocketError", "a slot for Qt's socket"},
    {"KyScriptWebSocket.onHeartbeatTimeout", "a slot for a timer"},
};

/// Objects that operations give, one for each such operation.
struct Sample
{
    const char* madeBy;
    const char* expression;
};

constexpr Sample Samples[] = {
    {"Orvane.tool", "Orvane.tool('Viewers.Layout1x1')"},
    {"Orvane.editor", "Orvane.editor('Report')"},
    {"Orvane.activeViewer", "Orvane.activeViewer()"},
    {"Orvane.viewer", "Orvane.viewer('1')"},
    {"StudyList.get", "StudyList.get('PRIMARY_STUDIES')[0]"},
    {"StudyList.unite", "StudyList.unite(StudyList.get('PRIMARY_STUDIES'), [])[0]"},
    {"StudyList.subtract", "StudyList.subtract(StudyList.get('PRIMARY_STUDIES'), [])[0]"},
    {"StudyList.intersect",
     "StudyList.intersect(StudyList.get('PRIMARY_STUDIES'), StudyList.get('PRIMARY_STUDIES'))[0]"},
    {"WebSocketServer.registerSocket", "kept = WebSocketServer.registerSocket('test')"},
};

/// Declares what only files of tests have.
const QString TestingFile = "/testing.d.ts";

/// An argument of that name in constructors is how C++ makes such objects.
const QString ParentArgument = "parent";

/// What the library of ES2017 has and this engine does not. docs/scripting/editor.md tells scripts' authors.
const QRegularExpression
    MissingInTheLanguage("^(Intl([.].*)?|Atomics[.]notify|[A-Z][A-Za-z0-9]+Array[.]prototype[.]sort|"
                         "String[.]prototype[.](anchor|big|blink|bold|fixed|fontcolor|fontsize|italics|link|"
                         "small|strike|sub|sup))$");

/// What belongs to each function, regular expression and error, not to what they have in common.
const QRegularExpression
    MembersOfObjectsThemselves("^(Function[.]prototype[.]prototype|RegExp[.]prototype[.]lastIndex|"
                               "[A-Za-z]*Error[.]prototype[.](fileName|lineNumber))$");

QStringList exceptionNames()
{
    QStringList names;
    for (const Exception& exception : Exceptions)
        names.append(exception.name);
    return names;
}

} // namespace

class tst_declarations : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl& inUrl) { mOpened = inUrl; }

private slots:
    void initTestCase();
    void cleanupTestCase();

    void compilerTakesThem();
    void everythingIsExplained();
    void everyGlobalIsDeclared_data();
    void everyGlobalIsDeclared();
    void everyDeclaredGlobalIsThere_data();
    void everyDeclaredGlobalIsThere();
    void kyrunHasTheDeclaredGlobals();
    void testFilesHaveTheDeclaredGlobals();
    void expectationsAreTheDeclaredOnes();
    void examplesOfTestsPass();
    void globalFunctionsAgree_data();
    void globalFunctionsAgree();
    void constructorsAgree_data();
    void constructorsAgree();
    void membersAgree_data();
    void membersAgree();
    void scriptsSeeWhatIsCompared_data();
    void scriptsSeeWhatIsCompared();
    void everyResultHasASample();
    void everyDeclaredClassIsCompared();
    void everyExceptionIsStillNeeded_data();
    void everyExceptionIsStillNeeded();
    void languageHasWhatTheLibraryDeclares();
    void addressesHaveTheDeclaredMembers_data();
    void addressesHaveTheDeclaredMembers();
    void valuesAreOfTheirDeclaredKinds_data();
    void valuesAreOfTheirDeclaredKinds();
    void offeredTagsAreKnown();
    void offeredTagsOfTheWorklistAreKnown();
    void offeredPropertiesAreThere();
    void offeredStudyListsAreThoseOfTheGuide();
    void keysAreThoseOfTheGuide_data();
    void keysAreThoseOfTheGuide();
    void examplesRun_data();
    void examplesRun();

    void differenceIsFound_data();
    void differenceIsFound();
    void missingAndSurplusNamesAreFound();
    void suggestionsCanBePastedIn_data();
    void suggestionsCanBePastedIn();

private:
    QJSValue evaluate(const QString& inSource);
    QStringList globalNames();
    QStringList declaredGlobals(bool inForTests) const;
    static QString kyrun(const QStringList& inArguments);
    /// The texts of a list that a script of a test file has, in their order.
    QStringList inTestFile(const QString& inExpression);
    HostClass classOf(const QJSValue& inValue) const;
    Comparison comparison() const { return Comparison(mDeclared->hostTypes(), exceptionNames()); }
    static QString page(const QString& inName);
    QString typeOfGlobal(const QString& inName) const;
    /// The types of the objects that an operation gives, such as "Orvane.viewer".
    QStringList declaredResult(const QString& inMethod) const;

    QTemporaryDir mFolder;
    QUrl mOpened;
    std::optional<Declarations> mDeclared;
    std::optional<KyHostPlatform> mPlatform;
    std::optional<KyViewerLayout> mViewers;
    std::vector<std::shared_ptr<KyTool>> mTools;
    std::optional<KyRunner> mRunner;
    std::optional<QTextEdit> mOutput;
    std::optional<KyScriptEngine> mEngine;
};

void tst_declarations::initTestCase()
{
    KY_NEEDS(Peers::hasNode("typescript"), "typescript for node");
    mDeclared.emplace(DECLARATIONS);
    QVERIFY2(mDeclared->error().isEmpty(), qPrintable(mDeclared->error()));

    QCOMPARE(QProcess::execute(KYSAMPLE, {"--fusion", mFolder.filePath("studies")}), 0);
    qputenv("HOME", mFolder.path().toUtf8());
    QDesktopServices::setUrlHandler("http", this, "openUrl");
    KyHostOptions options;
    options.studyFolders = {mFolder.filePath("studies")};
    mPlatform.emplace(options);
    QVERIFY(mPlatform->loadStudies().primary > 0);
    KyViewerLayout::registerProperties();
    mViewers.emplace(KySeriesVolume::Reading::OnDemand);
    mViewers->fill(KySessionContext::currentInstance()->component<KyLoadHelper>(true)->primaryExams());
    mTools = KyViewerTools::make(*mViewers);
    mRunner.emplace(QStringList{"out.csv"}, false);

    mOutput.emplace();
    mEngine.emplace(nullptr, ScriptAllOptions);
    mEngine->redirectPrintOutput(&*mOutput);
    mEngine->evaluate(KyScriptProgram("0", "start"), false); // takes the external objects in
}

void tst_declarations::cleanupTestCase()
{
    QDesktopServices::unsetUrlHandler("http");
    mEngine.reset();
    mOutput.reset();
    mRunner.reset();
    mTools.clear();
    mViewers.reset();
    mPlatform.reset();
}

QJSValue tst_declarations::evaluate(const QString& inSource)
{
    return mEngine->QJSEngine::evaluate(inSource, "test.js");
}

/// Those of the application: what a bare engine has belongs to the language.
QStringList tst_declarations::globalNames()
{
    QStringList names;
    QJSEngine bare;
    QJSValueIterator name(mEngine->globalObject());
    while (name.next()) {
        if (!bare.globalObject().hasOwnProperty(name.name()))
            names.append(name.name());
    }
    return names;
}

HostClass tst_declarations::classOf(const QJSValue& inValue) const
{
    const QMetaObject* const constructed = inValue.isQMetaObject() ? inValue.toQMetaObject() : nullptr;
    return HostClass::of(constructed ? *constructed : *inValue.toQObject()->metaObject());
}

void tst_declarations::compilerTakesThem()
{
    QCOMPARE(mDeclared->texts("errors"), QStringList());
}

void tst_declarations::everythingIsExplained()
{
    QCOMPARE(mDeclared->texts("gaps"), QStringList());
}

void tst_declarations::everyGlobalIsDeclared_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : globalNames())
        QTest::newRow(qPrintable(name)) << name;
    QVERIFY(globalNames().size() > 20);
}

void tst_declarations::everyGlobalIsDeclared()
{
    QFETCH(QString, name);
    const QString todo =
        QString("Declare the global %1 in " DECLARATION_FOLDER "/%2.d.ts, with a comment and an example; "
                "src/core/kyscript/README.md tells how")
            .arg(name, "SUBJECT");
    QVERIFY2(mDeclared->globals().contains(name) || exceptionNames().contains(name), qPrintable(todo));
}

void tst_declarations::everyDeclaredGlobalIsThere_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : declaredGlobals(false))
        QTest::newRow(qPrintable(name)) << name;
}

void tst_declarations::everyDeclaredGlobalIsThere()
{
    QFETCH(QString, name);
    QVERIFY2(mEngine->globalObject().hasOwnProperty(name),
             qPrintable(name + " is declared, but no engine has it: take it out"));
}

/// Those that are declared for files of tests, or all others.
QStringList tst_declarations::declaredGlobals(bool inForTests) const
{
    QStringList names;
    const QJsonObject globals = mDeclared->globals();
    for (auto global = globals.begin(); global != globals.end(); ++global) {
        if (global.value().toObject().value("file").toString().endsWith(TestingFile) == inForTests)
            names.append(global.key());
    }
    return names;
}

/// What kyrun prints, without the marks of comments.
QString tst_declarations::kyrun(const QStringList& inArguments)
{
    QProcess program;
    program.start(KYRUN, inArguments);
    program.waitForFinished(60000);
    const QString said = QString::fromUtf8(program.readAllStandardOutput());
    return program.exitCode() == 0 ? said : "failed:\n" + said + program.readAllStandardError();
}

QStringList tst_declarations::inTestFile(const QString& inExpression)
{
    static const QString code("test('x', function () { print('>' + (%1).join(' ')); });");
    QFile file(mFolder.filePath("names.test.js"));
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(code.arg(inExpression).toUtf8());
    file.close();
    QStringList names = kyrun({"--test", file.fileName()}).section('>', 1).section('\n', 0, 0).split(' ');
    names.sort();
    return names;
}

/// The program itself, which may give its scripts more than its library tells.
void tst_declarations::kyrunHasTheDeclaredGlobals()
{
    QStringList names =
        kyrun({"-e", "print(Object.getOwnPropertyNames(this).join(' '))"}).trimmed().split(' ');
    QStringList expected = declaredGlobals(false);
    QJSEngine bare;
    const auto isOfTheLanguage = [&](const QString& inName) {
        return bare.globalObject().hasOwnProperty(inName);
    };
    names.removeIf(isOfTheLanguage);
    expected.removeIf(isOfTheLanguage);
    names.sort();
    QCOMPARE(names, expected);
}

void tst_declarations::testFilesHaveTheDeclaredGlobals()
{
    QStringList names = inTestFile("Object.getOwnPropertyNames(Function('return this')())");
    const QStringList usual =
        kyrun({"-e", "print(Object.getOwnPropertyNames(this).join(' '))"}).trimmed().split(' ');
    names.removeIf([&](const QString& inName) { return usual.contains(inName); });
    QCOMPARE(names, declaredGlobals(true));
    QVERIFY(names.contains("test"));
}

void tst_declarations::expectationsAreTheDeclaredOnes()
{
    QStringList names = mDeclared->types().value("Expectations")["members"].toObject().keys();
    QVERIFY(names.contains("toBe"));
    QCOMPARE(inTestFile("Object.keys(expect(1).not)"), names);
    names.append("not");
    names.sort();
    QCOMPARE(inTestFile("Object.keys(expect(1))"), names);
    QCOMPARE(inTestFile("Object.keys(test)"), (QStringList{"skip", "todo"}));
}

void tst_declarations::examplesOfTestsPass()
{
    QStringList arguments{"--test"};
    for (const QJsonValue example : mDeclared->examples()) {
        if (!example["file"].toString().endsWith(TestingFile))
            continue;
        arguments.append(mFolder.filePath(example["name"].toString() + ".test.js"));
        QFile file(arguments.last());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(example["code"].toString().toUtf8() +
                   "\ntest('example', function () { expect(1).toBe(1); });");
    }
    QVERIFY(arguments.size() > 4);
    const QString said = kyrun(arguments);
    QVERIFY2(!said.startsWith("failed"), qPrintable(said));
}

void tst_declarations::globalFunctionsAgree_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : globalNames()) {
        const QJSValue value = mEngine->globalObject().property(name);
        if (value.isCallable() && !value.isQMetaObject() && !exceptionNames().contains(name))
            QTest::newRow(qPrintable(name)) << name;
    }
}

void tst_declarations::globalFunctionsAgree()
{
    QFETCH(QString, name);
    const QJsonObject declared = mDeclared->globals().value(name).toObject();
    if (name == "print") { // written in JavaScript: any number of anything
        QVERIFY(declared["signatures"][0]["arguments"][0]["isRest"].toBool());
        return;
    }
    for (const QObject* child : mEngine->children()) {
        if (child->metaObject()->className() != QByteArray("GlobalScope"))
            continue;
        const auto members = HostClass::of(*child->metaObject()).members;
        QVERIFY2(members.contains(name),
                 qPrintable(name + " is no method of GlobalScope: tell this test where it is from"));
        const QStringList found =
            comparison().ofSignatures(name, members[name].signatures, declared["signatures"]);
        QVERIFY2(found.isEmpty(), qPrintable(found.join('\n')));
        return;
    }
    QFAIL("The engine has no GlobalScope");
}

void tst_declarations::constructorsAgree_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : globalNames()) {
        if (mEngine->globalObject().property(name).isQMetaObject())
            QTest::newRow(qPrintable(name)) << name;
    }
}

void tst_declarations::constructorsAgree()
{
    QFETCH(QString, name);
    const QJsonValue declared = mDeclared->globals().value(name)["constructors"];
    QList<HostSignature> constructors;
    for (HostSignature signature : classOf(mEngine->globalObject().property(name)).constructors) {
        signature.result = "QObject*";
        if (signature.arguments.isEmpty() || signature.arguments.last().name != ParentArgument)
            constructors.append(signature);
    }
    const QStringList found = comparison().ofSignatures("new " + name, constructors, declared);
    QVERIFY2(found.isEmpty(), qPrintable(found.join('\n')));
    for (const QJsonValue signature : declared.toArray())
        QCOMPARE(Declarations::list(signature["result"]), QStringList{name});
}

QStringList tst_declarations::declaredResult(const QString& inMethod) const
{
    const QJsonValue members = mDeclared->types().value(inMethod.section('.', 0, 0))["members"];
    QStringList kinds = Declarations::list(members[inMethod.section('.', 1)]["signatures"][0]["result"]);
    kinds.removeAll("null");
    for (QString& kind : kinds) {
        if (kind.startsWith("Array<"))
            kind = kind.mid(6).chopped(1);
    }
    return kinds;
}

void tst_declarations::membersAgree_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("madeBy"); // empty for globals, and for what constructors make
    for (const QString& name : globalNames()) {
        const QJSValue value = mEngine->globalObject().property(name);
        if (value.isQObject() || value.isQMetaObject())
            QTest::newRow(qPrintable(name)) << name << QString();
    }
    for (const Sample& sample : Samples)
        QTest::newRow(sample.madeBy) << sample.expression << sample.madeBy;
}

void tst_declarations::membersAgree()
{
    QFETCH(QString, expression);
    QFETCH(QString, madeBy);
    const QJSValue value = evaluate(expression);
    QVERIFY2(value.isQObject() || value.isQMetaObject(), qPrintable(expression + ": " + value.toString()));

    const QString type = madeBy.isEmpty() ? typeOfGlobal(expression) : declaredResult(madeBy).join(" | ");
    const QStringList found =
        comparison().ofClass(classOf(value), type, mDeclared->types().value(type).toObject());
    QVERIFY2(found.isEmpty(), qPrintable("in " DECLARATION_FOLDER ":\n" + found.join('\n')));
}

/// The type of a global object, or of what a global constructor makes.
QString tst_declarations::typeOfGlobal(const QString& inName) const
{
    const QJsonValue declared = mDeclared->globals().value(inName);
    const QJsonArray constructors = declared["constructors"].toArray();
    return Declarations::list(constructors.isEmpty() ? declared["kinds"] : constructors.at(0)["result"])
        .value(0);
}

void tst_declarations::scriptsSeeWhatIsCompared_data()
{
    membersAgree_data();
}

/// The meta-object is not the last word on what Qt shows to scripts.
void tst_declarations::scriptsSeeWhatIsCompared()
{
    QFETCH(QString, expression);
    const QJSValue made = evaluate(expression);
    const HostClass seen = classOf(made);
    mEngine->globalObject().setProperty("seen",
                                        made.isQMetaObject() ? evaluate("new " + expression + "()") : made);
    const QStringList names =
        evaluate("(function() { var names = []; for (var name in seen) names.push(name); return names; })()")
            .toVariant()
            .toStringList();
    QCOMPARE(QSet<QString>(names.begin(), names.end()),
             QSet<QString>(seen.members.keyBegin(), seen.members.keyEnd()));
    QCOMPARE(evaluate("typeof seen.destroy + typeof seen.toString").toString(), QString("functionfunction"));
    for (auto member = seen.members.begin(); member != seen.members.end(); ++member) {
        if (member->kind != HostMember::Property)
            QCOMPARE(evaluate("typeof seen." + member.key()).toString(), QString("function"));
    }
    mEngine->globalObject().deleteProperty("seen");
}

/// What an operation gives is told by its own class only, which has to be seen.
void tst_declarations::everyResultHasASample()
{
    QStringList sampled;
    for (const Sample& sample : Samples)
        sampled.append(sample.madeBy);
    for (const QString& name : globalNames()) {
        const QJSValue value = mEngine->globalObject().property(name);
        if (!value.isQObject() && !value.isQMetaObject())
            continue;
        const auto members = classOf(value).members;
        for (auto member = members.begin(); member != members.end(); ++member) {
            const QString result = member->signatures.isEmpty() ? QString() : member->signatures[0].result;
            const QString method = typeOfGlobal(name) + "." + member.key();
            QVERIFY2(!result.startsWith("QObject") || sampled.contains(method),
                     qPrintable(method + " gives objects: add a row to Samples, at the top of this test"));
        }
    }
}

void tst_declarations::everyDeclaredClassIsCompared()
{
    QSet<QString> compared{"HostObject"};
    for (const QString& name : globalNames())
        compared.insert(typeOfGlobal(name));
    for (const Sample& sample : Samples)
        compared.insert(declaredResult(sample.madeBy).join(" | "));
    for (const QString& type : mDeclared->hostTypes())
        QVERIFY2(
            compared.contains(type),
            qPrintable(type + " is declared, but no object is of it: take it out, or add a row to Samples"));
}

void tst_declarations::everyExceptionIsStillNeeded_data()
{
    QTest::addColumn<QString>("name");
    for (const Exception& exception : Exceptions)
        QTest::addRow("%s: %s", exception.name, exception.reason) << exception.name;
}

void tst_declarations::everyExceptionIsStillNeeded()
{
    QFETCH(QString, name);
    const QString todo = name + " is an exception without need: take it out of Exceptions";
    if (!name.contains('.')) {
        QVERIFY2(globalNames().contains(name) && !mDeclared->globals().contains(name), qPrintable(todo));
        return;
    }
    for (const QString& global : globalNames()) {
        const QJSValue value = mEngine->globalObject().property(global);
        if ((!value.isQObject() && !value.isQMetaObject()) || classOf(value).name != name.section('.', 0, 0))
            continue;
        const QJsonValue declared = mDeclared->types().value(typeOfGlobal(global))["members"];
        QVERIFY2(classOf(value).members.contains(name.section('.', 1)), qPrintable(todo));
        QVERIFY2(declared[name.section('.', 1)].isUndefined(), qPrintable(todo));
        return;
    }
    QFAIL(qPrintable(todo));
}

/// Editors offer all of the library, so all of it has to be there.
void tst_declarations::languageHasWhatTheLibraryDeclares()
{
    const QStringList builtins = mDeclared->texts("builtins");
    QVERIFY(builtins.contains("Array.prototype.includes") && builtins.contains("Object.entries"));
    QStringList wrong;
    for (const QString& name : builtins) {
        const QString owner = name.contains('.') ? name.section('.', 0, -2) : "this";
        const bool isThere =
            evaluate(QString("'%1' in Object(%2)").arg(name.section('.', -1), owner)).toBool();
        if (isThere == MissingInTheLanguage.match(name).hasMatch() &&
            !MembersOfObjectsThemselves.match(name).hasMatch())
            wrong.append(name + (isThere ? " is there" : " is not there"));
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
}

void tst_declarations::addressesHaveTheDeclaredMembers_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("expression");
    QTest::newRow("URL") << "URL"
                         << "new URL('http://user:pw@host:1/path?a=b#c')";
    QTest::newRow("URLSearchParams") << "URLSearchParams"
                                     << "new URLSearchParams('a=b')";
}

void tst_declarations::addressesHaveTheDeclaredMembers()
{
    QFETCH(QString, type);
    QFETCH(QString, expression);
    QStringList names = evaluate("Object.getOwnPropertyNames(Object.getPrototypeOf(" + expression + "))")
                            .toVariant()
                            .toStringList();
    names.sort();
    const QJsonObject declared = mDeclared->types().value(type)["members"].toObject();
    QCOMPARE(declared.keys(), names);
    for (const QString& name : names) {
        const bool isFunction = evaluate("typeof " + expression + "." + name).toString() == "function";
        QCOMPARE(declared[name]["kind"].toString(), QString(isFunction ? "method" : "property"));
    }
}

void tst_declarations::valuesAreOfTheirDeclaredKinds_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("declaredAs");
    const auto row = [](const char* inExpression, const char* inDeclaredAs) {
        QTest::newRow(inExpression) << inExpression << inDeclaredAs;
    };
    row("Orvane.extAcc", "Orvane.extAcc");
    row("Orvane.propertyVariant('Scripting.LogNumLines')", "Orvane.propertyVariant");
    row("Orvane.propertyVariant('Viewers.Layout')", "Orvane.propertyVariant");
    row("Orvane.propertyVariant('No.Such.Property')", "Orvane.propertyVariant");
    row("Orvane.registerProperty('A.List', 'A.List', ['a']), Orvane.propertyVariant('A.List')",
        "Orvane.propertyVariant");
    row("Orvane.activeViewer().dims()", "Viewer.dims");
    row("Orvane.activeViewer().dims(7)", "Viewer.dims");
    row("Orvane.activeViewer().fusionWeight()", "Viewer.fusionWeight");
    row("Orvane.viewer('none')", "Orvane.viewer");
    row("Orvane.tool('none')", "Orvane.tool");
    row("Orvane.editor('none')", "Orvane.editor");
    row("new XmlFileWriter().buffer", "XmlFileWriter.buffer");
    row("Runner.args", "Runner.args");
    row("new Error('x').fileName", "Error.fileName");
    row("new TypeError('x').lineNumber", "Error.lineNumber");
    row("new Error('x').stack", "Error.stack");
}

void tst_declarations::valuesAreOfTheirDeclaredKinds()
{
    QFETCH(QString, expression);
    QFETCH(QString, declaredAs);
    const QJSValue value = evaluate("value = (" + expression + ")");
    QVERIFY2(!value.isError(), qPrintable(value.toString()));
    const QString kind =
        evaluate("(function kind(v) {"
                 " if (v === null || v === undefined) return String(v);"
                 " if (Array.isArray(v)) return 'Array<' + v.map(kind).filter(function (k, i, all) {"
                 " return all.indexOf(k) === i; }).sort().join('|') + '>';"
                 " return typeof v === 'object' ? v.constructor.name : typeof v; })(value)")
            .toString();
    const QJsonValue declared =
        mDeclared->types().value(declaredAs.section('.', 0, 0))["members"][declaredAs.section('.', 1)];
    const QStringList kinds = Declarations::list(
        declared["kind"].toString() == "method" ? declared["signatures"][0]["result"] : declared["kinds"]);
    const bool isEmptyList = kind == "Array<>" && kinds.join(' ').contains("Array<");
    QVERIFY2(kinds.contains(kind) || isEmptyList,
             qPrintable(QString("%1 is %2, declared is %3").arg(expression, kind, kinds.join(" | "))));
}

void tst_declarations::offeredTagsAreKnown()
{
    QVERIFY(mDeclared->offers("DicomTag").size() > 20);
    for (const QString& tag : mDeclared->offers("DicomTag")) {
        bool isKnown = false;
        KyDICOMObjectInfo::TagKey().deserialize(tag, &isKnown);
        QVERIFY2(isKnown, qPrintable(tag));
    }
}

void tst_declarations::offeredTagsOfTheWorklistAreKnown()
{
    QVERIFY(mDeclared->offers("WorklistTag").size() > 10);
    for (const QString& tag : mDeclared->offers("WorklistTag"))
        QVERIFY2(tag.startsWith("Worklist.") && KyWorklistHelper::code(tag.mid(9)) >= 0, qPrintable(tag));
}

void tst_declarations::offeredPropertiesAreThere()
{
    QVERIFY(!mDeclared->offers("PropertyId").isEmpty());
    for (const QString& id : mDeclared->offers("PropertyId"))
        QVERIFY2(!evaluate("Orvane.propertyVariant('" + id + "')").isUndefined(), qPrintable(id));
}

void tst_declarations::offeredStudyListsAreThoseOfTheGuide()
{
    static const QRegularExpression list("\"([A-Z_]{2,})\"");
    QStringList names;
    for (const auto& match :
         list.globalMatch(page("guide.md").section("\n## Studies\n", 1).section("\n## ", 0, 0)))
        names.append(match.captured(1));
    QStringList offered = mDeclared->offers("StudyListName");
    names.removeDuplicates();
    names.sort();
    offered.sort();
    QCOMPARE(offered, names);
}

void tst_declarations::keysAreThoseOfTheGuide_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("pageName");
    QTest::addColumn<QString>("heading");
    QTest::newRow("dialog") << "DialogConfig"
                            << "dialogs.md"
                            << "All keys";
    QTest::newRow("report") << "RichEditConfig"
                            << "report.md"
                            << "Editors of other programs";
}

void tst_declarations::keysAreThoseOfTheGuide()
{
    QFETCH(QString, type);
    QFETCH(QString, pageName);
    QFETCH(QString, heading);
    static const QRegularExpression key("^\\| `([A-Za-z]+)` \\|", QRegularExpression::MultilineOption);
    const QString text = page(pageName).section("\n## " + heading + "\n", 1).section("\n## ", 0, 0);
    QStringList keys;
    for (const auto& match : key.globalMatch(text))
        keys.append(match.captured(1));
    keys.sort();
    QCOMPARE(mDeclared->types().value(type)["members"].toObject().keys(), keys);
}

/// A page of the guide.
QString tst_declarations::page(const QString& inName)
{
    QFile file(GUIDE "/" + inName);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void tst_declarations::examplesRun_data()
{
    QTest::addColumn<QString>("code");
    for (const QJsonValue example : mDeclared->examples()) {
        if (example["file"].toString().endsWith(TestingFile))
            continue;
        QTest::addRow("%s, %s:%d", qPrintable(example["name"].toString()),
                      qPrintable(example["file"].toString()), example["line"].toInt())
            << example["code"].toString();
    }
    QVERIFY(mDeclared->examples().size() > 20);
}

void tst_declarations::examplesRun()
{
    QFETCH(QString, code);
    static const QRegularExpression asksTheUser("Message[.]question|getSaveFileName");
    int windows = 0;
    QTimer user; // closes what waits for somebody
    connect(&user, &QTimer::timeout, this, [&windows] {
        if (auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            ++windows;
            window->reject();
        }
    });
    user.start(20);
    code.replace(QRegularExpression("127[.]0[.]0[.]1:[0-9]+"), "127.0.0.1:1"); // where nobody listens
    const QJSValue value = mEngine->runScript(KyScriptProgram(code, "example.js"), false);
    QVERIFY2(!value.isError(), qPrintable(value.toString() + "\n" + code));
    QCOMPARE(windows > 0, code.contains(asksTheUser));
    QCoreApplication::processEvents();
    QVERIFY(!code.contains("Url.open") || !mOpened.isEmpty());
}

void tst_declarations::differenceIsFound_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QString>("found");
    const auto row = [](const char* inName, const char* inMember, const char* inFrom, const char* inTo,
                        const char* inFound) {
        QTest::newRow(inName) << inMember << QByteArray(inFrom) << QByteArray(inTo) << inFound;
    };
    row("nothing", "start", "msec", "msec", "");
    row("name of an argument", "start", "msec", "time",
        "the engine has void (int msec), which is not declared");
    row("type of an argument", "start", "\"number\"", "\"string\"", "declared is (msec: string): void");
    row("kinds of an argument", "start", "\"number\"", "\"number\",\"string\"", "msec: number | string");
    row("optional argument", "start", "\"isOptional\":false", "\"isOptional\":true",
        "declared is (): void, which the engine does not have");
    row("result", "isSingleShot", "\"boolean\"", "\"number\"", "the engine has bool ()");
    row("method in place of a signal", "timeout", "\"signal\"", "\"method\"", "it is a signal, not a method");
    row("signal in place of a method", "stop", "\"method\"", "\"signal\"", "it is a method, not a signal");
    row("argument of a signal", "objectNameChanged", "\"string\"", "\"number\"",
        "Signal<[objectName: string]>");
    row("name of a signal's argument", "objectNameChanged", "\"objectName\"", "\"name\"",
        "Signal<[objectName: string]>");
    row("missing argument of a signal", "objectNameChanged",
        "{\"isOptional\":false,\"kinds\":[\"string\"],\"name\":\"objectName\"}", "",
        "but the engine has void (QString");
    row("type of a property", "objectName", "\"string\"", "\"boolean\"", "declared is boolean");
    row("property that can't be written", "objectName", "\"isReadonly\":false", "\"isReadonly\":true",
        "not readonly");
    row("method in place of a property", "objectName", "\"property\"", "\"method\"", "it is a property");
}

void tst_declarations::differenceIsFound()
{
    QFETCH(QString, member);
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QString, found);
    QJsonObject type = mDeclared->types().value("Timer").toObject();
    QJsonObject members = type["members"].toObject();
    const QByteArray before = QJsonDocument(members[member].toObject()).toJson(QJsonDocument::Compact);
    QVERIFY2(before.contains(from), before.constData());
    members[member] = QJsonDocument::fromJson(QByteArray(before).replace(from, to)).object();
    QVERIFY(!members[member].toObject().isEmpty());
    type["members"] = members;

    const HostClass timer = classOf(mEngine->globalObject().property("Timer"));
    const QString differences = comparison().ofClass(timer, "Timer", type).join('\n');
    QCOMPARE(differences.isEmpty(), found.isEmpty());
    QVERIFY2(differences.contains(found), qPrintable(differences));
}

void tst_declarations::missingAndSurplusNamesAreFound()
{
    const HostClass timer = classOf(mEngine->globalObject().property("Timer"));
    QJsonObject type = mDeclared->types().value("Timer").toObject();
    QJsonObject members = type["members"].toObject();
    members.insert("pause", members.take("stop"));
    type["members"] = members;
    QCOMPARE(comparison().ofClass(timer, "Timer", type),
             (QStringList{"Timer.stop: the engine has it. Declare it, with a comment:\n    stop(): void;",
                          "Timer.pause: the engine has no such member. Take the declaration out."}));
    QCOMPARE(comparison().ofClass(timer, "Clock", QJsonObject()),
             QStringList{"Clock: declare an interface of this name for objects of the class KyScriptTimer"});
}

void tst_declarations::suggestionsCanBePastedIn_data()
{
    QTest::addColumn<QString>("global");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("line");
    const auto row = [](const char* inGlobal, const char* inMember, const char* inLine) {
        QTest::addRow("%s.%s", inGlobal, inMember) << inGlobal << inMember << inLine;
    };
    row("Timer", "stop", "stop(): void;");
    row("Timer", "timeout", "readonly timeout: Signal;");
    row("IdGenerator", "asciiHash", "asciiHash(source: string, numDigits?: number): string;");
    row("Dialog", "linkClicked", "readonly linkClicked: Signal<[url: string]>;");
    row("Dialog", "visible", "visible: boolean;");
    row("Dialog", "minimized", "readonly minimized: boolean;");
    row("Orvane", "registryKeys", "registryKeys(inPath?: string): string[];");
    row("Orvane", "tool", "tool(inKey: string): HostObject | null;");
    row("StudyList", "get", "get(inStudyListName: string): HostObject[];");
    row("Orvane", "getRegistryValue",
        "getRegistryValue(inKey: string, inDefaultValue?: any /* better: what it takes */): "
        "any /* better: what it takes */;");
}

void tst_declarations::suggestionsCanBePastedIn()
{
    QFETCH(QString, global);
    QFETCH(QString, member);
    const HostClass found = classOf(mEngine->globalObject().property(global));
    QVERIFY(found.members.contains(member));
    QTEST(Comparison::suggestion(member, found.members[member]), "line");
}

KY_TEST_MAIN(tst_declarations)
#include "tst_declarations.moc"

// TypeScript's compiler, with the settings that authors of scripts have, finds nothing to mend in any script
// of this repository: examples, tool files, guides, and the examples of the declarations; and it finds
// mistakes.

#include "Declarations.h"

#include <interop/Peers.h>
#include <support/KyTest.h>

#include <QDir>
#include <QDirIterator>
#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QDir Repository(SOURCES);

QString read(const QString& inFile)
{
    QFile file(Repository.filePath(inFile));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

bool write(const QString& inFile, const QString& inText)
{
    QFile file(inFile);
    const QByteArray bytes = inText.toUtf8();
    return QDir().mkpath(QFileInfo(inFile).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

/// The files of that kind below a folder of the repository, relative to it, but for what compilers and
/// package managers put there; a folder may be missing.
QStringList filesBelow(const QString& inFolder, const QString& inPattern)
{
    QStringList files;
    QDirIterator found(Repository.filePath(inFolder), {inPattern}, QDir::Files, QDirIterator::Subdirectories);
    while (found.hasNext())
        files.append(Repository.relativeFilePath(found.next()));
    files.removeIf([](const QString& inFile) {
        static const QRegularExpression made("/(node_modules|dist|out|build)/");
        return inFile.contains(made);
    });
    files.sort();
    return files;
}

/// Each script at its line, so that the lines of messages are those of the file.
class ScriptText
{
public:
    void add(int inLine, const QString& inScript)
    {
        const auto line = mText.count('\n') + 1;
        mText += QString(std::max<qsizetype>(inLine - line, 0), '\n') + inScript + '\n';
    }
    const QString& text() const { return mText; }

private:
    QString mText;
};

/// The scripts of a tool file, each a function, as it is run.
QString scriptsOfTools(const QString& inXml)
{
    ScriptText made;
    QDomDocument document;
    document.setContent(inXml);
    for (const QString& event : {QString("OnSet"), QString("OnUnset")}) {
        const QDomNodeList scripts = document.elementsByTagName(event);
        for (int i = 0; i < scripts.size(); ++i)
            made.add(scripts.at(i).lineNumber(),
                     "(function () {" + scripts.at(i).toElement().text() + "\n})();");
    }
    return made.text();
}

/// The samples of a page of the guide. Later ones may use what earlier ones declare.
QString samplesOfPage(const QString& inMarkdown)
{
    ScriptText made;
    static const QRegularExpression sample("^```js\n(.*?)^```",
                                           QRegularExpression::DotMatchesEverythingOption |
                                               QRegularExpression::MultilineOption);
    for (const auto& match : sample.globalMatch(inMarkdown))
        made.add(int(inMarkdown.left(match.capturedStart(1)).count('\n')) + 1, match.captured(1));
    return made.text();
}

/// What authors get wrong, and what the compiler says of it.
struct Mistake
{
    const char* code;
    const char* message;
};

QString mistake(int inNumber)
{
    return QString("mistakes/%1.js").arg(inNumber);
}

constexpr Mistake Mistakes[] = {
    {"StudyList.gett('x');", "Property 'gett' does not exist on type 'StudyList'"},
    {"var t = new Timer(); t.timeout.connect(5);", "is not assignable to parameter of type"},
    {"new Dialog({ titel: 'x' });", "'titel' does not exist in type 'DialogConfig'"},
    {"new Dialog({ buttons: [5] });", "is not assignable to type 'string | DialogButton'"},
    {"Orvane.setToolIcon('x');", "Expected 2 arguments, but got 1"},
    {"Orvane.tool('x').checked = 'yes';", "is not assignable to type 'boolean'"},
    {"new Dialog().width = 5;", "Cannot assign to 'width' because it is a read-only property"},
    {"StudyList.get('x')[0].getInterpretationStatus() === 'X';", "have no overlap"},
    {"Message.question('x', 'Yes');", "is not assignable to parameter of type"},
    {"new Message();", "not constructable"},
    {"setTimeout(print, 5);", "Cannot find name 'setTimeout'"},
    {"console.log('x');", "Cannot find name 'console'"},
    {"document.title;", "Cannot find name 'document'"},
    {"[[1]].flat();", "Property 'flat' does not exist"},
    {"Object.fromEntries([]);", "Property 'fromEntries' does not exist"},
    {"var n = 10n;", "BigInt literals are not available"},
    {"undeclared = 1;", "Cannot find name 'undeclared'"},
};

} // namespace

class tst_checkedScripts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void scriptHasNoMistakes_data();
    void scriptHasNoMistakes();
    void folderOfExamplesHasItsOneLine();
    void packageWorksFromItsModules();
    void typeScriptBecomesWhatTheEngineRuns();
    void examplesOfTheDeclarationsHoldUnderStrictRules();
    void mistakeIsFound_data();
    void mistakeIsFound();

private:
    void addScript(const QString& inName, const QString& inText);
    /// What the compiler says of a project, a line for each message.
    QStringList compile(const QString& inFolder, const QStringList& inOptions = {},
                        const QString& inProject = "jsconfig.json");

    QTemporaryDir mFolder;
    QStringList mScripts;
    QStringList mMessages;
};

void tst_checkedScripts::initTestCase()
{
    KY_NEEDS(Peers::hasNode("typescript"), "typescript for node");
    for (const QString& file : filesBelow("examples", "*.js") + filesBelow("tests/scripts", "*.js"))
        addScript(file, read(file));
    for (const QString& file : filesBelow("examples/tools", "*.xml"))
        addScript(file + ".js", scriptsOfTools(read(file)));
    for (const QString& file : filesBelow("docs/scripting", "*.md"))
        addScript(file + ".js", samplesOfPage(read(file)));

    const Declarations declarations(DECLARATIONS);
    QVERIFY2(declarations.error().isEmpty(), qPrintable(declarations.error()));
    for (const QJsonValue example : declarations.examples())
        addScript(QString("%1-%2.js").arg(example["file"].toString()).arg(example["line"].toInt()),
                  example["code"].toString());

    for (const QString& file : filesBelow("examples", "*.d.ts"))
        QVERIFY(write(mFolder.filePath(file), read(file)));
    QVERIFY(write(mFolder.filePath("jsconfig.json"),
                  "{ \"extends\": \"" + Repository.filePath(DECLARATION_FOLDER "/jsconfig.json") + "\" }"));
    for (int i = 0; i < int(std::size(Mistakes)); ++i)
        QVERIFY(write(mFolder.filePath(mistake(i)), Mistakes[i].code));
    mMessages = compile(mFolder.path());
}

void tst_checkedScripts::addScript(const QString& inName, const QString& inText)
{
    if (inText.trimmed().isEmpty())
        return;
    QVERIFY(write(mFolder.filePath(inName), inText));
    mScripts.append(inName);
}

QStringList tst_checkedScripts::compile(const QString& inFolder, const QStringList& inOptions,
                                        const QString& inProject)
{
    QProcess compiler;
    compiler.setWorkingDirectory(inFolder);
    compiler.start(Peers::node(), QStringList{Peers::fileOfModule("typescript/bin/tsc"), "-p", inProject,
                                              "--pretty", "false"} +
                                      inOptions);
    if (!compiler.waitForFinished(240000))
        return {"the compiler does not end"};
    const QString said =
        QString::fromUtf8(compiler.readAllStandardOutput() + compiler.readAllStandardError());
    QStringList messages = said.split('\n', Qt::SkipEmptyParts);
    if (messages.isEmpty() && compiler.exitCode() != 0)
        messages.append("the compiler fails");
    return messages;
}

void tst_checkedScripts::scriptHasNoMistakes_data()
{
    QTest::addColumn<QString>("script");
    for (const QString& script : mScripts)
        QTest::newRow(qPrintable(script)) << script;
    for (const char* folder : {"examples/scripts", "examples/tools", "docs/scripting", "types/kyscript"})
        QVERIFY2(mScripts.filter(folder).size() >= 5, folder);
    for (const QString& message : mMessages) {
        if (!message.startsWith(' ') && !message.startsWith("mistakes/") &&
            !mScripts.contains(message.section('(', 0, 0)))
            QFAIL(qPrintable(message));
    }
}

void tst_checkedScripts::scriptHasNoMistakes()
{
    QFETCH(QString, script);
    QCOMPARE(mMessages.filter(script + "(").join('\n'), QString());
}

/// As an editor sees it that opens the folder, with the check of the guide added.
void tst_checkedScripts::folderOfExamplesHasItsOneLine()
{
    QCOMPARE(read("examples/scripts/jsconfig.json").trimmed(),
             QString("{ \"extends\": \"../../" DECLARATION_FOLDER "/jsconfig.json\" }"));
    QCOMPARE(compile(Repository.filePath("examples/scripts"), {"--strictNullChecks"}), QStringList());
}

void tst_checkedScripts::packageWorksFromItsModules()
{
    const QTemporaryDir folder;
    const QString modules = folder.filePath("node_modules/kyscript/");
    for (const QString& file : filesBelow(DECLARATION_FOLDER, "*"))
        QVERIFY(write(modules + QFileInfo(file).fileName(), read(file)));
    QVERIFY(write(folder.filePath("jsconfig.json"), "{ \"extends\": \"kyscript/jsconfig.json\" }"));
    QVERIFY(write(folder.filePath("good.js"),
                  "print(Runner.args.length, StudyList.get('PRIMARY_STUDIES').length);"));
    QVERIFY(write(folder.filePath("bad.js"), "StudyList.gett('PRIMARY_STUDIES');"));
    const QStringList messages = compile(folder.path());
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages.first().contains("'gett' does not exist"), qPrintable(messages.first()));
}

/// Newer syntax, which only the compiler understands.
void tst_checkedScripts::typeScriptBecomesWhatTheEngineRuns()
{
    const QTemporaryDir folder;
    QVERIFY(write(folder.filePath("tsconfig.json"),
                  "{ \"extends\": \"" + Repository.filePath(DECLARATION_FOLDER "/tsconfig.json") + "\" }"));
    const QString script = read("examples/typescript/countdown.ts");
    QVERIFY(script.contains("wait(1000)") && script.contains("async "));
    QVERIFY(write(folder.filePath("countdown.ts"), QString(script).replace("wait(1000)", "wait(1)")));
    QCOMPARE(compile(folder.path(), {}, "tsconfig.json"), QStringList());

    QProcess kyrun;
    kyrun.start(KYRUN, {folder.filePath("countdown.js")});
    QVERIFY(kyrun.waitForFinished(60000));
    QCOMPARE(kyrun.readAllStandardOutput(), "still 3\nstill 2\nstill 1\ndone\n");
    QCOMPARE(kyrun.exitCode(), 0);
}

/// The examples of the declarations are what authors copy, whatever rules they have chosen.
void tst_checkedScripts::examplesOfTheDeclarationsHoldUnderStrictRules()
{
    const QString folder = mFolder.filePath("types/kyscript");
    QVERIFY(QFile::copy(mFolder.filePath("jsconfig.json"), folder + "/jsconfig.json"));
    QCOMPARE(compile(folder, {"--strict", "--skipLibCheck", "false"}), QStringList());
}

void tst_checkedScripts::mistakeIsFound_data()
{
    QTest::addColumn<int>("number");
    for (int i = 0; i < int(std::size(Mistakes)); ++i)
        QTest::newRow(Mistakes[i].code) << i;
}

void tst_checkedScripts::mistakeIsFound()
{
    QFETCH(int, number);
    const QStringList messages = mMessages.filter(mistake(number) + "(1,");
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages.first().contains(Mistakes[number].message), qPrintable(messages.first()));
}

KY_TEST_MAIN(tst_checkedScripts)
#include "tst_checkedScripts.moc"

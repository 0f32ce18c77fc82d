// kyrun with tool configuration files.

#include <support/KyTest.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

class tst_kyrun_tools : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void toolIsTriggered();
    void toolsRunAfterTheScriptAndInOrder();
    void toolsOfSeveralFilesAreThere();
    void checkableToolIsTurnedOver();
    void scriptTriggersTools();
    void withoutATriggerToolsAreOnlyLoaded();

    void badToolFileIsToldInOneLine_data();
    void badToolFileIsToldInOneLine();
    void unknownToolIsToldBeforeAnythingRuns();
    void toolWithoutItsViewerIsTold();
    void failingToolEndsTheRun_data();
    void failingToolEndsTheRun();
    void toolThatTriggersItselfEndsInAnError_data();
    void toolThatTriggersItselfEndsInAnError();
    void failingScriptTriggersNothing();
    void exitInAToolDecides();
    void missingIconIsOnlyAWarning();
    void fileWithoutToolsIsOnlyAWarning();
    void iconsLieBesideTheFile();
    void optionNeedsItsValue_data();
    void optionNeedsItsValue();
    void helpTellsOfTools();

    void reportIsFilled();
    void reportMayBeWrittenWhenItChanges();
    void reportAnswersAnything_data();
    void reportAnswersAnything();

private:
    struct Outcome
    {
        int status;
        QString out;
        QString err;
    };
    Outcome run(const QStringList& inArguments) const;
    QString write(const QString& inName, const QByteArray& inText) const;
    /// A file with one tool of that key and script, for any viewer.
    QString tool(const QByteArray& inId, const QByteArray& inScript, const QByteArray& inMore = "") const;

    QTemporaryDir mFolder;
};

void tst_kyrun_tools::initTestCase()
{
    QVERIFY(mFolder.isValid());
}

tst_kyrun_tools::Outcome tst_kyrun_tools::run(const QStringList& inArguments) const
{
    QProcess process;
    process.start(KYRUN, inArguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString::fromUtf8(process.readAllStandardOutput()),
                "crashed or hung: " + process.readAllStandardError()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QString tst_kyrun_tools::write(const QString& inName, const QByteArray& inText) const
{
    const QString path = mFolder.filePath(inName);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(inText) != inText.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QString tst_kyrun_tools::tool(const QByteArray& inId, const QByteArray& inScript,
                              const QByteArray& inMore) const
{
    return write(inId + ".xml", "<Tools><Tool Id='" + inId + "' Enabled='whensupported' " + inMore +
                                    "><OnSet><![CDATA[" + inScript + "]]></OnSet></Tool></Tools>");
}

void tst_kyrun_tools::toolIsTriggered()
{
    const Outcome outcome = run({"--tools", tool("a", "Message.warn('ran')"), "--trigger", "a"});
    QVERIFY2(outcome.err.endsWith("2 [Script Interface] ran\n"), qPrintable(outcome.err));
    QCOMPARE(outcome.err.count('\n'), 1);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.status, 0);
}

/// The default engine is that of the script, which has print.
void tst_kyrun_tools::toolsRunAfterTheScriptAndInOrder()
{
    const QString a = tool("a", "print('a', Global.x)"), b = tool("b", "print('b', Global.x)");
    const Outcome outcome = run({"--tools", a, "--tools", b, "--trigger", "b", "--trigger", "a", "--trigger",
                                 "b", "-p", "-e", "Global.x = 5; print('script'); 'value'"});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.out, QStringLiteral("script\nvalue\nb 5\na 5\nb 5\n"));
    QCOMPARE(outcome.status, 0);
    const Outcome ofFile = run(
        {"--tools", a, "--trigger", "a", write("s.js", "Global.x = Runner.args; print('script')"), "x", "y"});
    QCOMPARE(ofFile.out, QStringLiteral("script\na x,y\n"));
}

void tst_kyrun_tools::toolsOfSeveralFilesAreThere()
{
    const Outcome outcome =
        run({"--tools", tool("a", "print('a')"), "--tools", tool("b", "print('b')"), "--trigger", "a", "-e",
             "print(Orvane.tool('a').text, Orvane.tool('b').text)"});
    QCOMPARE(outcome.out, QStringLiteral("a b\na\n"));
}

void tst_kyrun_tools::checkableToolIsTurnedOver()
{
    const QString file = tool("a", "print(Orvane.tool('a').checked, Orvane.tool('a').text)",
                              "Checkable='1' Label='Start' LabelActive='Stop'");
    const Outcome outcome = run({"--tools", file, "--trigger", "a", "--trigger", "a", "-e", "0"});
    QCOMPARE(outcome.out, QStringLiteral("true Stop\nfalse Start\n"));
}

void tst_kyrun_tools::scriptTriggersTools()
{
    const Outcome outcome =
        run({"--tools", tool("a", "print('ran')"), "-e", "Orvane.tool('a').trigger(); print('after')"});
    QCOMPARE(outcome.out, QStringLiteral("ran\nafter\n"));
    QVERIFY2(outcome.err.contains("Recursive script call"), qPrintable(outcome.err));
    QCOMPARE(outcome.status, 0);
}

void tst_kyrun_tools::withoutATriggerToolsAreOnlyLoaded()
{
    const Outcome outcome = run({"--tools", tool("a", "print('ran')"), "-e", "print('script')"});
    QCOMPARE(outcome.out + outcome.err, QStringLiteral("script\n"));
}

void tst_kyrun_tools::badToolFileIsToldInOneLine_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("error");
    QTest::newRow("missing") << mFolder.filePath("none.xml") << "READ ERROR:";
    QTest::newRow("folder") << mFolder.path() << "READ ERROR:";
    QTest::newRow("not well-formed") << write("bad.xml", "<x>\n  <y>\n</x>")
                                     << "PARSE ERROR: Line(3),Column(4): Opening and ending tag mismatch.";
}

void tst_kyrun_tools::badToolFileIsToldInOneLine()
{
    QFETCH(QString, file);
    QFETCH(QString, error);
    const Outcome outcome = run({"--log", mFolder.filePath("log"), "--tools", file, "-e", "print('script')"});
    QCOMPARE(outcome.err, QStringLiteral("kyrun: Tool Configuration %1 - %2\n").arg(file, error));
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.status, 2);
}

void tst_kyrun_tools::unknownToolIsToldBeforeAnythingRuns()
{
    const Outcome outcome = run({"--tools", tool("a", "print('ran')"), "--tools", tool("b", "1"), "--trigger",
                                 "a", "--trigger", "A", "-e", "print('script')"});
    QCOMPARE(outcome.err, QStringLiteral("kyrun: There is no tool \"A\"; there are a, b\n"));
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.status, 2);
    const Outcome without = run({"--trigger", "a"});
    QCOMPARE(without.err,
             QStringLiteral("kyrun: There is no tool \"a\"; no tools are loaded, see --tools\n"));
    QCOMPARE(without.status, 2);
}

void tst_kyrun_tools::toolWithoutItsViewerIsTold()
{
    const QString file =
        write("viewer.xml", "<Tools><Tool Id='v'><OnSet>print('ran')</OnSet></Tool></Tools>");
    const Outcome outcome = run({"--tools", file, "--trigger", "v"});
    QCOMPARE(outcome.err,
             QStringLiteral("kyrun: The tool \"v\" needs an active viewer, and there is none\n"));
    QCOMPARE(outcome.status, 1);
}

void tst_kyrun_tools::failingToolEndsTheRun_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("message");
    QTest::newRow("throws") << QByteArray("\nthrow new Error('too bad')")
                            << "Exception: too bad\n  Line: 3\n";
    QTest::newRow("syntax") << QByteArray("if (") << "Exception: Expected token";
    QTest::newRow("never defined") << QByteArray("never()") << "Exception: never is not defined";
    QTest::newRow("in a tool that it triggers")
        << QByteArray("Orvane.tool('b').trigger()") << "Exception: from b";
}

void tst_kyrun_tools::failingToolEndsTheRun()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, message);
    const Outcome outcome =
        run({"--tools", tool("a", script), "--tools", tool("b", "throw new Error('from b')"), "--trigger",
             "a", "--trigger", "b", "--keep-running", "-e", "print('script')"});
    QVERIFY2(outcome.err.contains(message), qPrintable(outcome.err));
    QCOMPARE(outcome.err.count("Uncaught"), 1);
    QCOMPARE(outcome.out, QStringLiteral("script\n"));
    QCOMPARE(outcome.status, 1);
}

void tst_kyrun_tools::toolThatTriggersItselfEndsInAnError_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QByteArray>("attributes");
    QTest::newRow("trigger") << QByteArray("Orvane.tool('a').trigger()") << QByteArray();
    QTest::newRow("toggle") << QByteArray("Orvane.tool('a').toggle()") << QByteArray("Checkable='1'");
}

void tst_kyrun_tools::toolThatTriggersItselfEndsInAnError()
{
    QFETCH(QByteArray, script);
    QFETCH(QByteArray, attributes);
    const Outcome outcome = run({"--tools", tool("a", script, attributes), "--trigger", "a"});
    QVERIFY2(outcome.err.contains("Exception: Maximum call stack size exceeded."),
             qPrintable(outcome.err.right(500)));
    QCOMPARE(outcome.status, 1);
}

void tst_kyrun_tools::failingScriptTriggersNothing()
{
    const Outcome outcome =
        run({"--tools", tool("a", "print('ran')"), "--trigger", "a", "-e", "throw new Error('x')"});
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.status, 1);
}

void tst_kyrun_tools::exitInAToolDecides()
{
    const Outcome outcome = run({"--tools", tool("a", "Runner.exit(7)"), "--tools", tool("b", "print('ran')"),
                                 "--trigger", "a", "--trigger", "b", "--keep-running", "-e", "0"});
    QCOMPARE(outcome.out + outcome.err, QString());
    QCOMPARE(outcome.status, 7);
}

void tst_kyrun_tools::missingIconIsOnlyAWarning()
{
    const Outcome outcome =
        run({"--tools", tool("a", "print('ran')", "Icon='none.png'"), "--trigger", "a", "-e", "0"});
    QVERIFY2(outcome.err.endsWith("cannot find icon " + mFolder.path() + "/icons/none.png\n"),
             qPrintable(outcome.err));
    QCOMPARE(outcome.out, QStringLiteral("ran\n"));
    QCOMPARE(outcome.status, 0);
}

void tst_kyrun_tools::fileWithoutToolsIsOnlyAWarning()
{
    const QString file = write("empty.xml", "<Tools><tool Id='a'><OnSet>1</OnSet></tool></Tools>");
    const Outcome outcome = run({"--tools", file, "-e", "print('script')"});
    QVERIFY2(outcome.err.endsWith("2 [Tools] There is no tool in " + file + "\n"), qPrintable(outcome.err));
    QCOMPARE(outcome.out, QStringLiteral("script\n"));
    QCOMPARE(outcome.status, 0);
}

void tst_kyrun_tools::iconsLieBesideTheFile()
{
    write("site/icons/a.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'><rect width='8' "
                              "height='8'/></svg>");
    const QString file =
        write("site/t.xml", "<Tools><Tool Id='a' Icon='a.svg'><OnSet>1</OnSet></Tool></Tools>");
    const Outcome outcome = run({"--tools", file, "-p", "-e", "Orvane.tool('a').icon"});
    QCOMPARE(outcome.err, QString());
    QVERIFY2(outcome.out.contains("QIcon"), qPrintable(outcome.out));
    QCOMPARE(outcome.status, 0);
}

void tst_kyrun_tools::optionNeedsItsValue_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("tools") << QStringList("--tools");
    QTest::newRow("trigger") << QStringList("--trigger");
    QTest::newRow("tools alone") << QStringList({"--tools", "x.xml"});
}

void tst_kyrun_tools::optionNeedsItsValue()
{
    QFETCH(QStringList, arguments);
    const Outcome outcome = run(arguments);
    QVERIFY2(outcome.err.startsWith("kyrun: ") && outcome.err.count('\n') == 1, qPrintable(outcome.err));
    QCOMPARE(outcome.status, 2);
}

void tst_kyrun_tools::helpTellsOfTools()
{
    const QString help = run({"--help"}).out;
    QVERIFY2(help.contains("--tools <FILE>") && help.contains("--trigger <ID>"), qPrintable(help));
}

void tst_kyrun_tools::reportIsFilled()
{
    const Outcome outcome =
        run({"-e",
             "var r = Orvane.editor('Report'), changes = 0; r.textChanged.connect(function() { changes++; });"
             "r.text = 'Patient [NAME], [NAME]\\n[FINDING]';"
             "print(r.replace('[NAME]', 'Doe'), r.replace('[FINDING]', 'no [FINDING]'), r.replace('[OTHER]', "
             "'x'));"
             "r.append('\\nend'); print(r.text); print(changes > 0, r === Orvane.editor('Report'));"
             "r.html = '<b>bold</b> text'; print(r.text, r.html.indexOf('font-weight') > 0);"
             "try { r.destroy(); } catch (e) { print('refused'); } r.open(); print(r.text);"});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.out,
             QStringLiteral("2 1 0\nPatient Doe, Doe\nno [FINDING]\nend\ntrue true\nbold text true\n"
                            "refused\nbold text\n"));
}

void tst_kyrun_tools::reportMayBeWrittenWhenItChanges()
{
    const Outcome outcome =
        run({"-e", "var r = Orvane.editor('Report'), heard = 0;"
                   "r.textChanged.connect(function() { ++heard; r.append('!'); r.replace('a', 'b'); });"
                   "r.textChanged.connect(function() { r.html = '<i>' + r.text + '?</i>'; });"
                   "r.text = 'a'; print(heard, r.text); r.append('c'); print(heard, r.text);"});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.out, QStringLiteral("1 b!?\n2 b!?c!?\n"));
    QCOMPARE(outcome.status, 0);
}

void tst_kyrun_tools::reportAnswersAnything_data()
{
    QTest::addColumn<QString>("code");
    for (const char* code :
         {"r.text = null", "r.text = [Symbol()]", "r.html = Symbol()", "r.text = {a: Symbol()}", "r.text = 5",
          "r.html = '<'", "r.html = '<table>'", "r.append(null)", "r.append({})", "r.replace('', 'x')",
          "r.replace(null, null)", "r.replace('\\n', 'x')", "r.text = new Array(100000).join('x\\n')",
          "r.html = '<img src=\"file:///none\">'"})
        QTest::newRow(code) << code;
}

void tst_kyrun_tools::reportAnswersAnything()
{
    QFETCH(QString, code);
    const Outcome outcome =
        run({"-e", "var r = Orvane.editor('Report'); " + code + "; print(typeof r.text, typeof r.html)"});
    QCOMPARE(outcome.out, QStringLiteral("string string\n"));
    QCOMPARE(outcome.status, 0);
}

KY_TEST_MAIN(tst_kyrun_tools)
#include "tst_kyrun_tools.moc"

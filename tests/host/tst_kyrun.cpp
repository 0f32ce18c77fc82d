// kyrun as a process: every option, every exit status, every bad input.

#include <support/KyTest.h>

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

class tst_kyrun : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void valueIsPrinted_data();
    void valueIsPrinted();
    void fileRunsAtTheTopLevelWithItsName();
    void scriptComesFromStandardInput();
    void byteOrderMarkIsNoPartOfTheScript();
    void printWritesOneLineOfUtf8_data();
    void printWritesOneLineOfUtf8();
    void settledPromisesRunBeforeTheEnd();

    void valueThatIsAStudyHasAText();
    void lostOutputIsAFailure();
    void displayThatIsNotThereIsNoHindrance();

    void uncaughtErrorIsToldOnceWithItsPlace();
    void syntaxErrorIsToldWithItsLine();
    void errorIsToldAlsoWhenTheLogGoesElsewhere();
    void thrownTextIsTheValueOfTheRun();
    void errorInAHandlerIsLogged();

    void badCommandLineIsToldInOneLine_data();
    void badCommandLineIsToldInOneLine();
    void helpAndVersionAreShown();

    void argumentsReachTheScript();
    void exitInTheScriptDecidesWhenItIsOver();
    void exitInAHandlerLeavesAtOnce();
    void firstExitDecides();
    void keepRunningStaysUntilExit();
    void timeoutEndsAnEndlessScript();
    void timeoutEndsTheEventLoop();
    void timeoutEndsTheWaitForTheScript();
    void timeoutEndsAScriptWhoseOutputNobodyReads();

    void engineIsChosenByName();
    void propertiesAreSet();
    void proxyIsAccepted();
    void logGoesToAFile();
    void logGoesToStandardError();
    void profileKeepsNothingOfTheCommandLine();

    void studiesAreListedInTheirOrder();
    void additionalStudiesAreApart();
    void everyLoadedStudyIsFoundByItsUid();
    void withoutStudiesListsAreEmpty();
    void folderWithoutDicomIsAWarning();
    void missingFolderIsBadInput();
    void damagedFilesAreSkippedWithOneLineEach();
    void wrongCharacterSetIsReadAllTheSame();
    void unknownTagIsUndefined_data();
    void unknownTagIsUndefined();
    void exampleListsTheSample();

private:
    struct Outcome
    {
        int status;
        QString out;
        QString err;
    };
    Outcome run(const QStringList& inArguments, const QByteArray& inInput = QByteArray()) const;
    QString write(const QString& inName, const QByteArray& inText) const;

    QTemporaryDir mFolder;
    QString mSample;
};

tst_kyrun::Outcome tst_kyrun::run(const QStringList& inArguments, const QByteArray& inInput) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_QPA_PLATFORM"); // it needs no display
    environment.remove("DISPLAY");
    process.setProcessEnvironment(environment);
    process.start(KYRUN, inArguments);
    process.write(inInput);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString::fromUtf8(process.readAllStandardOutput()),
                "crashed or hung: " + process.readAllStandardError()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QString tst_kyrun::write(const QString& inName, const QByteArray& inText) const
{
    const QString path = mFolder.filePath(inName);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(inText);
    return path;
}

void tst_kyrun::initTestCase()
{
    QVERIFY(mFolder.isValid());
    mSample = mFolder.filePath("sample");
    QCOMPARE(QProcess::execute(KYSAMPLE, {mSample}), 0);
}

void tst_kyrun::valueIsPrinted_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("out");
    QTest::newRow("number") << "1+1"
                            << "2\n";
    QTest::newRow("text") << "'a'"
                          << "a\n";
    QTest::newRow("undefined") << "var a = 1"
                               << "undefined\n";
    QTest::newRow("null") << "null"
                          << "null\n";
    QTest::newRow("object") << "({})"
                            << "[object Object]\n";
    QTest::newRow("array") << "[1, 2]"
                           << "1,2\n";
    QTest::newRow("symbol") << "Symbol('s')"
                            << "Symbol(s)\n";
    QTest::newRow("umlaut") << QString::fromUtf8("'ä€'") << QString::fromUtf8("ä€\n");
    QTest::newRow("empty code") << ""
                                << "undefined\n";
    QTest::newRow("value whose text throws") << "({toString: function() { throw new Error('no text'); }})"
                                             << "Error: no text\n";
}

void tst_kyrun::valueIsPrinted()
{
    QFETCH(QString, code);
    QFETCH(QString, out);
    const Outcome outcome = run({"-p", "-e", code});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.out, out);
    QCOMPARE(outcome.status, 0);
    QCOMPARE(run({"-e", code}).out, QString());
}

void tst_kyrun::fileRunsAtTheTopLevelWithItsName()
{
    const QString path = write("top.js", "var declared = 1;\nthis.declared + ' ' + new Error('x').stack");
    const Outcome outcome = run({"--print", path});
    QCOMPARE(outcome.out, "1 %entry@file://" + path + ":2\n");
    QCOMPARE(outcome.status, 0);
}

void tst_kyrun::scriptComesFromStandardInput()
{
    const Outcome outcome = run({"-p", "-", "x"}, "Runner.args.length + 41");
    QCOMPARE(outcome.out, QString("42\n"));
}

void tst_kyrun::byteOrderMarkIsNoPartOfTheScript()
{
    QCOMPARE(run({"-p", write("bom.js", "\xef\xbb\xbf"
                                        "7")})
                 .out,
             QString("7\n"));
}

void tst_kyrun::printWritesOneLineOfUtf8_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("out");
    QTest::newRow("one") << "print('a')"
                         << "a\n";
    QTest::newRow("several") << "print('a', 1, null, undefined, [1,2])"
                             << "a 1 null undefined 1,2\n";
    QTest::newRow("none") << "print()"
                          << "\n";
    QTest::newRow("umlaut") << QString::fromUtf8("print('ä')") << QString::fromUtf8("ä\n");
    QTest::newRow("symbol") << "print(Symbol('s'))"
                            << "Symbol(s)\n";
    QTest::newRow("as a method") << "({ p: print }).p('x')"
                                 << "x\n";
    QTest::newRow("as a callback") << "['a', 'b'].forEach(function(x) { print(x); })"
                                   << "a\nb\n";
}

void tst_kyrun::printWritesOneLineOfUtf8()
{
    QFETCH(QString, code);
    QFETCH(QString, out);
    const Outcome outcome = run({"-e", code});
    QCOMPARE(outcome.out, out);
    QCOMPARE(outcome.err, QString());
}

void tst_kyrun::settledPromisesRunBeforeTheEnd()
{
    const QString chain = "Promise.resolve(1).then(function(v) { print('then', v); return 2; })"
                          ".then(function(v) { print(v); return 3; }).then(print); print('first')";
    QCOMPARE(run({"-e", chain}).out, QString("first\nthen 1\n2\n3\n"));
}

void tst_kyrun::valueThatIsAStudyHasAText()
{
    const Outcome outcome = run({"-p", "-s", mSample, "-e", "StudyList.get('PRIMARY_STUDIES')[0]"});
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.out.startsWith("KyScriptStudy("), qPrintable(outcome.out));
}

void tst_kyrun::lostOutputIsAFailure()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("needs /dev/full");
    QProcess process;
    process.setStandardOutputFile("/dev/full");
    process.start(KYRUN, {"-e", "print('a'); print('b')"});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 1);
    QCOMPARE(process.readAllStandardError().count("Cannot write the output"), 1);
}

void tst_kyrun::displayThatIsNotThereIsNoHindrance()
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_QPA_PLATFORM");
    environment.insert("DISPLAY", ":98765");
    environment.insert("WAYLAND_DISPLAY", "no-such-display");
    process.setProcessEnvironment(environment);
    process.start(KYRUN, {"-p", "-e", "1+1"});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.readAllStandardOutput(), QByteArray("2\n"));
}

void tst_kyrun::uncaughtErrorIsToldOnceWithItsPlace()
{
    const QString path = write("fails.js", "function f() {\n  throw new RangeError('no luck');\n}\nf();\n");
    const Outcome outcome = run({path});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.err, path + ":2: RangeError: no luck\n    at f@file://" + path +
                              ":2\n    at %entry@file://" + path + ":4\n");

    const Outcome code = run({"-e", "throw new Error('x')"});
    QCOMPARE(code.status, 1);
    QCOMPARE(code.err, QString("eval:1: Error: x\n    at %entry@:1\n"));
}

void tst_kyrun::syntaxErrorIsToldWithItsLine()
{
    const QString path = write("syntax.js", "var a;\nvar b;\nvar = 3;\n");
    const Outcome outcome = run({path});
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.err.startsWith(path + ":3: SyntaxError: Expected token"), qPrintable(outcome.err));
    QCOMPARE(outcome.err.count("SyntaxError"), 1);
}

void tst_kyrun::errorIsToldAlsoWhenTheLogGoesElsewhere()
{
    const QString log = mFolder.filePath("error.log");
    const Outcome outcome = run({"--log", log, "-e", "throw new Error('x')"});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.err, QString("eval:1: Error: x\n    at %entry@:1\n"));
    QFile file(log);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains(
        "3 [Script Interface] Uncaught exception in eval\n  Exception: x\n  Line: 1\n"));
}

void tst_kyrun::thrownTextIsTheValueOfTheRun()
{
    const Outcome outcome = run({"-p", "-e", "throw 'text'"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.out, QString("text\n"));
    QCOMPARE(outcome.err, QString());
}

void tst_kyrun::errorInAHandlerIsLogged()
{
    const Outcome outcome =
        run({"-e", "StudyList.objectNameChanged.connect(function() { throw new Error('late'); });"
                   "StudyList.objectName = 'x'; print('done')"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.out, QString("done\n"));
    QVERIFY2(outcome.err.contains(QRegularExpression(" 3 \\[Script Interface\\] .*:1: Error: late\n")),
             qPrintable(outcome.err));
}

void tst_kyrun::badCommandLineIsToldInOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing") << QStringList();
    QTest::newRow("unknown option") << QStringList({"--no-such-option", "x.js"});
    QTest::newRow("option without its value") << QStringList({"--engine"});
    QTest::newRow("missing script") << QStringList({mFolder.filePath("missing.js")});
    QTest::newRow("script is a folder") << QStringList({mFolder.path()});
    QTest::newRow("script is no UTF-8") << QStringList({write("latin1.js", "'\xe4'")});
    QTest::newRow("property without a text")
        << QStringList({"--property", "Scripting.LogNumLines", "-e", "1"});
    QTest::newRow("unknown property") << QStringList({"--property", "No.Such=1", "-e", "1"});
    QTest::newRow("property that cannot read its text")
        << QStringList({"--property", "Scripting.LogNumLines=many", "-e", "1"});
    QTest::newRow("proxy without a port") << QStringList({"--proxy", "host", "-e", "1"});
    QTest::newRow("proxy with a bad port") << QStringList({"--proxy", "host:99999", "-e", "1"});
    QTest::newRow("timeout of 0") << QStringList({"--timeout", "0", "-e", "1"});
    QTest::newRow("timeout that is no number") << QStringList({"--timeout", "soon", "-e", "1"});
    QTest::newRow("log in a missing folder")
        << QStringList({"--log", mFolder.filePath("no/such.log"), "-e", "1"});
    QTest::newRow("missing studies") << QStringList({"--studies", mFolder.filePath("missing"), "-e", "1"});
    QTest::newRow("profile that cannot be made")
        << QStringList({"--profile", "/dev/null/profile", "-e", "1"});
}

void tst_kyrun::badCommandLineIsToldInOneLine()
{
    QFETCH(QStringList, arguments);
    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.out, QString());
    const QStringList lines =
        outcome.err.split('\n', Qt::SkipEmptyParts).filter(QRegularExpression("^kyrun: "));
    QVERIFY2(lines.size() == 1, qPrintable(outcome.err));
}

void tst_kyrun::helpAndVersionAreShown()
{
    const Outcome help = run({"--help"});
    QCOMPARE(help.status, 0);
    for (const char* option : {"--eval", "--print", "--studies", "--additional", "--archive", "--patient",
                               "--engine", "--property", "--profile", "--proxy", "--log", "--keep-running",
                               "--timeout", "--version", "Exit status", "throw new Error"})
        QVERIFY2(help.out.contains(option), option);
    const Outcome version = run({"--version"});
    QCOMPARE(version.status, 0);
    QVERIFY(QRegularExpression("^kyrun \\d+\\.\\d+\\.\\d+\n$").match(version.out).hasMatch());
}

void tst_kyrun::argumentsReachTheScript()
{
    const QString path = write("args.js", "print(JSON.stringify(Runner.args))");
    QCOMPARE(run({path, "a", "--studies", "-x", QString::fromUtf8("ü")}).out,
             QString::fromUtf8("[\"a\",\"--studies\",\"-x\",\"ü\"]\n"));
    QCOMPARE(run({path}).out, QString("[]\n"));
    QCOMPARE(run({"-e", "print(Runner.args.join())", "a", "b"}).out, QString("a,b\n"));
}

void tst_kyrun::exitInTheScriptDecidesWhenItIsOver()
{
    const Outcome outcome = run({"--keep-running", "-e", "Runner.exit(7); print('still here')"});
    QCOMPARE(outcome.status, 7);
    QCOMPARE(outcome.out, QString("still here\n"));
    QCOMPARE(run({"-e", "Runner.exit()"}).status, 0);
    QCOMPARE(run({"-e", "Runner.exit(3); throw new Error('x')"}).status, 3);
}

void tst_kyrun::exitInAHandlerLeavesAtOnce()
{
    const Outcome outcome = run(
        {"--keep-running", "-e", "Promise.resolve().then(function() { Runner.exit(9); }); print('over')"});
    QCOMPARE(outcome.status, 9);
    QCOMPARE(outcome.out, QString("over\n"));
}

void tst_kyrun::firstExitDecides()
{
    QCOMPARE(run({"-e", "Runner.exit(4); Runner.exit(5)"}).status, 4);
}

void tst_kyrun::keepRunningStaysUntilExit()
{
    const Outcome asOption = run({"--keep-running", "--timeout", "1", "-e", "print(Runner.keepRunning)"});
    QCOMPARE(asOption.status, 124);
    QCOMPARE(asOption.out, QString("true\n"));
    const Outcome asProperty = run({"--timeout", "1", "-e", "Runner.keepRunning = true"});
    QCOMPARE(asProperty.status, 124);
    QCOMPARE(run({"--keep-running", "-e", "Runner.keepRunning = false"}).status, 0);
}

void tst_kyrun::timeoutEndsAnEndlessScript()
{
    const Outcome outcome = run({"--timeout", "1", "-e", "print('begun'); while (true);"});
    QCOMPARE(outcome.status, 124);
    QCOMPARE(outcome.out, QString("begun\n"));
    QCOMPARE(outcome.err, QString("kyrun: still running after 1 seconds\n"));
}

void tst_kyrun::timeoutEndsTheEventLoop()
{
    QCOMPARE(run({"--keep-running", "--timeout", "1", "-e", "1"}).status, 124);
    QCOMPARE(run({"--timeout", "60", "-e", "1"}).status, 0);
}

void tst_kyrun::timeoutEndsTheWaitForTheScript()
{
    QProcess process;
    process.start(KYRUN, {"--timeout", "1", "-"});
    QVERIFY(process.waitForFinished(20000)); // its standard input stays open and silent
    QCOMPARE(process.exitCode(), 124);
}

void tst_kyrun::timeoutEndsAScriptWhoseOutputNobodyReads()
{
    QProcess process; // of the shell, whose sleeping part reads nothing
    process.start(
        "bash",
        {"-c",
         "{ \"$0\" --timeout 1 -e \"while (true) print('x'.repeat(1000))\"; echo $? > \"$1\"; } | sleep 20",
         KYRUN, mFolder.filePath("status")});
    QFile status(mFolder.filePath("status"));
    QTRY_VERIFY_WITH_TIMEOUT(status.exists() && status.size() > 0, 15000);
    QVERIFY(status.open(QIODevice::ReadOnly));
    QCOMPARE(status.readAll(), QByteArray("124\n"));
    process.kill();
    process.waitForFinished();
}

/// A tool of the engine "other" sees whether the script ran there.
void tst_kyrun::engineIsChosenByName()
{
    const QString tool =
        write("engine.xml", "<Tools ScriptEngine='other'><Tool Id='t' Enabled='whensupported'>"
                            "<OnSet>print('same engine', mine)</OnSet></Tool></Tools>");
    const QStringList rest{"--tools", tool, "--trigger", "t", "-e", "mine = 5; print('script')"};
    QCOMPARE(run(QStringList{"--engine", "other"} + rest).out, QString("script\nsame engine 5\n"));
    for (const QStringList& elsewhere : {QStringList(), QStringList{"--engine", "Other"}}) {
        const Outcome outcome = run(elsewhere + rest);
        QCOMPARE(outcome.out, QString("script\n"));
        QVERIFY2(outcome.err.contains("mine is not defined"), qPrintable(outcome.err));
    }
}

void tst_kyrun::propertiesAreSet()
{
    const QString log = mFolder.filePath("properties.log");
    run({"--property", "Scripting.LogNumLines=0", "--log", log, "-e", "1"});
    QFile quiet(log);
    QVERIFY(quiet.open(QIODevice::ReadOnly));
    QVERIFY(!quiet.readAll().contains("Executing script"));
}

void tst_kyrun::proxyIsAccepted()
{
    QCOMPARE(run({"--proxy", "proxy.example:3128", "-p", "-e", "1"}).out, QString("1\n"));
}

void tst_kyrun::logGoesToAFile()
{
    const QString log = mFolder.filePath("run.log");
    const Outcome outcome =
        run({"--log", log, "-e", "Message.warn('w'); Message.error('e', 'My\\nContext'); 1\n2"});
    QCOMPARE(outcome.err, QString());
    QFile file(log);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    const QString stamp = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} ";
    QVERIFY2(text.contains(
                 QRegularExpression("^" + stamp +
                                        "1 \\[Script Interface\\] Executing script \\{[-0-9a-f]+\\} eval, "
                                        "source code:\n  Message.warn.*\n  \\.\\.\\.\n",
                                    QRegularExpression::MultilineOption)),
             qPrintable(text));
    QVERIFY(text.contains(QRegularExpression(stamp + "2 \\[Script Interface\\] w\n")));
    QVERIFY(text.contains(QRegularExpression(stamp + "3 \\[My Context\\] e\n")));
}

void tst_kyrun::logGoesToStandardError()
{
    const Outcome all = run({"--log", "-", "-e", "Message.warn('w'); 1"});
    QVERIFY(all.err.contains("1 [Script Interface] Executing script"));
    QVERIFY(all.err.contains("2 [Script Interface] w\n"));
    const Outcome some = run({"-e", "Message.warn('w'); 1"});
    QVERIFY(!some.err.contains("Executing script"));
    QVERIFY(some.err.contains("2 [Script Interface] w\n"));
}

void tst_kyrun::profileKeepsNothingOfTheCommandLine()
{
    const QString profile = mFolder.filePath("profile");
    QCOMPARE(run({"--profile", profile, "--property", "Scripting.LogNumLines=0", "-e", "1"}).status, 0);
    QVERIFY(QDir(profile).exists());
    const QString log = mFolder.filePath("profile.log");
    QCOMPARE(run({"--profile", profile, "--log", log, "-e", "1"}).status, 0);
    QFile file(log);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("Executing script"));
}

void tst_kyrun::studiesAreListedInTheirOrder()
{
    const Outcome outcome =
        run({"--studies", mSample, "-p", "-e",
             "StudyList.get('PRIMARY_STUDIES').map(function(s) { var d = s.getTag('DICOM.StudyDate');"
             " return s.getTag('DICOM.PatientName') + '/' + d.getFullYear(); }).join(' ')"});
    QCOMPARE(outcome.err, QString());
    const QStringList studies = outcome.out.trimmed().split(' ');
    QCOMPARE(studies.size(), 3);
    QStringList sorted = studies;
    sorted.sort();
    QCOMPARE(studies, sorted);
    QCOMPARE(run({"--studies", mSample, "-p", "-e", "StudyList.get('ALL_STUDIES_OF_PATIENT').length"})
                 .out.trimmed()
                 .toInt(),
             int(studies.filter(studies.first().section('/', 0, 0)).size()));
}

void tst_kyrun::additionalStudiesAreApart()
{
    const Outcome outcome =
        run({"--additional", mSample, "-p", "-e",
             "[StudyList.get('PRIMARY_STUDIES').length, StudyList.get('ADDITIONAL_STUDIES').length,"
             " StudyList.get('PRIMARY_STUDIES_OLD').length].join()"});
    QCOMPARE(outcome.out, QString("0,3,0\n"));
    QCOMPARE(run({"-s", mSample, "-s", mSample, "-p", "-e", "StudyList.get('PRIMARY_STUDIES').length"}).out,
             QString("3\n"));
}

void tst_kyrun::everyLoadedStudyIsFoundByItsUid()
{
    const Outcome outcome =
        run({"--additional", mSample, "-p", "-e",
             "StudyList.get('ADDITIONAL_STUDIES').every(function(s) {"
             " return StudyList.get(s.getTag('DICOM.StudyInstanceUID'))[0].equals(s); })"});
    QCOMPARE(outcome.out, QString("true\n"));
}

void tst_kyrun::withoutStudiesListsAreEmpty()
{
    QCOMPARE(run({"-p", "-e",
                  "['PRIMARY_STUDIES', 'ADDITIONAL_STUDIES', 'ALL_STUDIES_OF_PATIENT', 'ACTIVE_VIEWER']"
                  ".map(function(n) { return StudyList.get(n).length; }).join()"})
                 .out,
             QString("0,0,0,0\n"));
}

void tst_kyrun::folderWithoutDicomIsAWarning()
{
    write("plain/a.txt", "no DICOM here");
    const Outcome outcome =
        run({"--studies", mFolder.filePath("plain"), "-p", "-e", "StudyList.get('PRIMARY_STUDIES').length"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.out, QString("0\n"));
    QVERIFY2(outcome.err.contains("2 [Studies] No DICOM study below "), qPrintable(outcome.err));
}

void tst_kyrun::missingFolderIsBadInput()
{
    const QString missing = mFolder.filePath("missing");
    const Outcome outcome = run({"--studies", missing, "-e", "print('ran')"});
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.out, QString());
    QVERIFY2(outcome.err.contains(missing), qPrintable(outcome.err));
}

void tst_kyrun::damagedFilesAreSkippedWithOneLineEach()
{
    QDirIterator files(mSample, QDir::Files, QDirIterator::Subdirectories);
    QVERIFY(files.hasNext());
    QFile whole(files.next());
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    write("broken/whole", bytes);
    write("broken/cut", bytes.left(bytes.size() / 2));
    write("broken/header", bytes.left(200));
    write("broken/text.dcm", "not DICOM at all");
    const Outcome outcome =
        run({"-s", mFolder.filePath("broken"), "-p", "-e", "StudyList.get('PRIMARY_STUDIES').length"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.out, QString("1\n"));
    QCOMPARE(outcome.err.count(" 2 [Studies] "), 3);
    for (const char* name : {"broken/cut", "broken/header", "broken/text.dcm"})
        QCOMPARE(outcome.err.count(mFolder.filePath(name)), 1);
}

void tst_kyrun::wrongCharacterSetIsReadAllTheSame()
{
    QDirIterator files(mSample, QDir::Files, QDirIterator::Subdirectories);
    QByteArray bytes;
    while (files.hasNext() && !bytes.contains("ISO_IR 192")) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        bytes = file.readAll();
    }
    QVERIFY2(bytes.contains("ISO_IR 192"), "the sample has a study in UTF-8");
    bytes.replace("ISO_IR 192", "ISO_IR 999");
    write("charset/a", bytes);
    const Outcome outcome = run({"-s", mFolder.filePath("charset"), "-p", "-e",
                                 "typeof StudyList.get('PRIMARY_STUDIES')[0].getTag('DICOM.PatientName')"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.out, QString("string\n"));
}

void tst_kyrun::unknownTagIsUndefined_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
         {"DICOM.NoSuchKeyword", "PatientName", "DICOM.(0010", "", "Worklist.Status", "DICOM.(0010,0010"})
        QTest::newRow(name) << name;
}

void tst_kyrun::unknownTagIsUndefined()
{
    QFETCH(QString, name);
    const Outcome outcome =
        run({"-s", mSample, "-p", "-e", "StudyList.get('PRIMARY_STUDIES')[0].getTag('" + name + "')"});
    QCOMPARE(outcome.out, QString("undefined\n"));
    QCOMPARE(outcome.status, 0);
}

void tst_kyrun::exampleListsTheSample()
{
    const Outcome outcome = run({"-s", mSample, SCRIPTS "/list_studies.js"});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.status, 0);
    const QStringList lines = outcome.out.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 4);
    QVERIFY(
        QRegularExpression("^Patient +Date +Description +Modality +Status$").match(lines.first()).hasMatch());
    for (const QString& line : lines.mid(1))
        QCOMPARE(line.mid(lines.first().indexOf("Modality"), 8).trimmed(), QString("CT"));
}

KY_TEST_MAIN(tst_kyrun)
#include "tst_kyrun.moc"

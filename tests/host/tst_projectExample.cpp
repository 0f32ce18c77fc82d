// The example project in TypeScript: its one command makes scripts that kyrun runs.

#include <support/KyTest.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class tst_projectExample : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void scriptRuns();
    void testsPass();
    void mistakesAreFound();

private:
    struct Outcome
    {
        int status;
        QString out;
        QString err;
    };
    static Outcome run(const QString& inProgram, const QStringList& inArguments, const QString& inFolder);
    Outcome build() const { return run("npm", {"run", "--silent", "build"}, mProject); }

    QTemporaryDir mFolder;
    QString mProject;
};

tst_projectExample::Outcome tst_projectExample::run(const QString& inProgram, const QStringList& inArguments,
                                                    const QString& inFolder)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", MODULES "/.bin:" + environment.value("PATH"));
    environment.insert("npm_config_update_notifier", "false");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(inFolder);
    process.start(inProgram, inArguments);
    if (!process.waitForFinished(120'000))
        return {-1, QString(), process.errorString()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

/// A copy at the same distance from the declarations, with what `npm install` would bring.
void tst_projectExample::initTestCase()
{
    if (!QFileInfo::exists(MODULES "/.bin/esbuild") || !QFileInfo::exists(MODULES "/.bin/tsc"))
        QSKIP("esbuild and TypeScript are not installed: scripts/setup --tests");
    const QDir folder(mFolder.path());
    QVERIFY(folder.mkpath("docs/scripting") && folder.mkpath("examples"));
    QVERIFY(QFile::link(SOURCES "/docs/scripting/types", folder.filePath("docs/scripting/types")));
    mProject = folder.filePath("examples/project");
    QCOMPARE(QProcess::execute("cp", {"-r", SOURCES "/examples/project", mProject}), 0);
    const Outcome built = build();
    QVERIFY2(built.status == 0, qPrintable(built.out + built.err));
}

void tst_projectExample::scriptRuns()
{
    const QString sample = mFolder.filePath("sample");
    QCOMPARE(QProcess::execute(KYSAMPLE, {sample}), 0);
    const Outcome outcome = run(KYRUN, {"--studies", sample, "dist/volumes.js"}, mProject);
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.out, QStringLiteral("Doubling time: 315 days\n"));
}

void tst_projectExample::testsPass()
{
    const Outcome outcome = run(KYRUN, {"--test", "dist/volumes.test.js"}, mProject);
    QVERIFY2(outcome.status == 0, qPrintable(outcome.out + outcome.err));
    QVERIFY(outcome.out.endsWith("\n1..3\n"));
}

void tst_projectExample::mistakesAreFound()
{
    QFile file(mProject + "/src/mistake.ts");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("export const list = StudyList.gett('PRIMARY_STUDIES');\n");
    file.close();
    const Outcome built = build();
    QVERIFY(file.remove());
    QVERIFY(built.status != 0);
    QVERIFY2(built.out.contains("src/mistake.ts(1,31): error"), qPrintable(built.out));
}

KY_TEST_MAIN(tst_projectExample)

#include "tst_projectExample.moc"

// The commands of the page on departments and the samples of the guide on the backend, run as they stand
// there.

#include <support/KyTest.h>
#include <support/OrthancServer.h>
#include <support/PostgresServer.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QTemporaryDir>

namespace {

QString read(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// A block of a page: its language, its lines, and what stands behind it up to the next one.
struct Block
{
    QString language;
    QString text;
    QString behind;
};

QList<Block> blocksOf(const QString& inPage)
{
    static const QRegularExpression block("```(\\w+)\n(.*?)```\n(.*?)(?=```|\\z)",
                                          QRegularExpression::DotMatchesEverythingOption);
    QList<Block> blocks;
    auto it = block.globalMatch(inPage);
    while (it.hasNext()) {
        const auto match = it.next();
        blocks.append({match.captured(1), match.captured(2), match.captured(3)});
    }
    return blocks;
}

} // namespace

class tst_department : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void commandsOfThePageRun();
    void samplesOfTheGuideRun();
    void damagedConfigurationIsTold();
    void configuredDatabaseThatIsNotThere();
    void archiveThatIsNotThereEndsTheStart();
    void badProceduresDoNoHarm();

private:
    struct Outcome
    {
        int status;
        QString out;
        QString err;
    };
    Outcome shell(const QString& inCommands) const;
    Outcome kyrun(const QStringList& inArguments) const;
    QString profile() const { return mFolder->filePath("profile"); }
    void write(const QString& inName, const QString& inText) const
    {
        const QString path = QDir(profile()).filePath(inName);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(inText.toUtf8());
    }

    QTemporaryDir mSample;
    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<PostgresServer> mPostgres;
    std::unique_ptr<OrthancServer> mOrthanc;
    QProcessEnvironment mEnvironment;
};

void tst_department::initTestCase()
{
    QCOMPARE(QProcess::execute(KYSAMPLE, {mSample.filePath("sample")}), 0);
    mEnvironment = QProcessEnvironment::systemEnvironment();
    mEnvironment.insert(
        "PATH",
        QStringList{QFileInfo(KYRUN).path(), PostgresServer::programs(), mEnvironment.value("PATH")}.join(
            ':'));
    mEnvironment.insert("SAMPLE", mSample.filePath("sample"));
    mEnvironment.insert("PATIENT", "SAMPLE-1001");
}

void tst_department::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(profile()));
    mEnvironment.insert("HOME", mFolder->path());
    mEnvironment.insert("PROFILE", profile());
}

tst_department::Outcome tst_department::shell(const QString& inCommands) const
{
    QProcess process;
    process.setProcessEnvironment(mEnvironment);
    process.setWorkingDirectory(mFolder->path());
    process.start("bash", {"-eu", "-c", inCommands});
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString(), "crashed or hung: " + process.readAllStandardError()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

tst_department::Outcome tst_department::kyrun(const QStringList& inArguments) const
{
    QProcess process;
    process.setProcessEnvironment(mEnvironment);
    process.setWorkingDirectory(mFolder->path());
    process.start(KYRUN, QStringList{"--timeout", "60", "--profile", profile()} + inArguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString(), "crashed or hung: " + process.readAllStandardError()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

/// What a block prints stands behind it, as "prints `TEXT`"; where nothing stands, what the block before it
/// did.
void tst_department::commandsOfThePageRun()
{
    if (PostgresServer::programs().isEmpty() || !QSqlDatabase::isDriverAvailable("QPSQL") ||
        !OrthancServer::isInstalled())
        QSKIP("PostgreSQL or Orthanc are not installed; scripts/setup --tests does that");
    mPostgres = std::make_unique<PostgresServer>();
    QVERIFY2(mPostgres->isRunning(), mPostgres->log().constData());
    mOrthanc = std::make_unique<OrthancServer>();
    QVERIFY2(mOrthanc->isRunning(), mOrthanc->log().constData());
    QDirIterator it(mSample.filePath("sample"), QDir::Files, QDirIterator::Subdirectories);
    int uploaded = 0;
    while (it.hasNext())
        uploaded += mOrthanc->upload(it.next()) ? 1 : 0;
    QVERIFY(uploaded > 0);
    mEnvironment.insert("ARCHIVE", mOrthanc->url());
    mEnvironment.insert("PGPORT", QString::number(mPostgres->port()));

    static const QRegularExpression prints("prints `([^`]*)`");
    int ran = 0;
    QString expected;
    for (const Block& block : blocksOf(read(PAGE))) {
        if (block.language != "sh")
            continue;
        const auto match = prints.match(block.behind);
        if (match.hasMatch())
            expected = match.captured(1);
        else if (block.behind.contains("prints the patient's id"))
            expected = mEnvironment.value("PATIENT");
        else if (block.behind.contains("same as in the first step"))
            expected = "Lung: compare true true";
        const Outcome outcome = shell(block.text);
        QVERIFY2(outcome.status == 0, qPrintable(block.text + outcome.err));
        QCOMPARE(outcome.err, QString());
        QCOMPARE(outcome.out.trimmed(), expected);
        ++ran;
    }
    QCOMPARE(ran, 7);
}

void tst_department::samplesOfTheGuideRun()
{
    write("procedures/patients.sql", QString());
    write("procedures/fill.sql", "create table patients (name nvarchar(64), born datetime);"
                                 "insert into patients values ('Doe', '1950-02-03 04:05:06'), ('Dan', null),"
                                 " ('Dob', '1999-01-01 00:00:00'), ('Abe', null)");
    QVERIFY(shell("head -c 32 /dev/urandom | base64 > $PROFILE/secret").status == 0);
    write("tokens.json", R"({"pacs": {"algorithm": "HS256", "keyFile": "secret"}})");
    const QList<Block> blocks = blocksOf(read(GUIDE));
    for (const Block& block : blocks) {
        if (block.language == "sql")
            write("procedures/patients.sql", block.text);
        if (block.text.startsWith("// file: Doses.js"))
            write("backend/Doses.js", block.text);
    }
    QCOMPARE(kyrun({"-e", "Orvane.execStoredProcedure('fill', {})"}).err, QString());

    const QStringList expected = {"Dan unknown\nDoe true\n", "There is no procedure no_such_procedure\n",
                                  "42.5 mGy\n", "Win64 6.1.0.13 true\n0 0 localhost\n", "3\n"};
    QStringList printed;
    for (const Block& block : blocks) {
        if (block.language != "js" || block.text.startsWith("// file:"))
            continue;
        write("sample.js", block.text);
        const Outcome outcome = kyrun({QDir(profile()).filePath("sample.js")});
        QVERIFY2(outcome.status == 0, qPrintable(block.text + outcome.err));
        QCOMPARE(outcome.err, QString());
        printed.append(outcome.out);
    }
    QCOMPARE(printed, expected);
}

void tst_department::damagedConfigurationIsTold()
{
    write("site.json", "{\"database\": ");
    const Outcome outcome =
        kyrun({"-e", "try { Orvane.execStoredProcedure('x', {}) } catch (e) { print(e.message) }"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.out, QStringLiteral("This client has no database\n"));
    QVERIFY2(outcome.err.contains("site.json holds no JSON object"), qPrintable(outcome.err));
}

void tst_department::configuredDatabaseThatIsNotThere()
{
    write("site.json",
          R"({"database": {"kind": "postgresql", "host": "127.0.0.1", "port": 1, "name": "x"}})");
    const Outcome outcome =
        kyrun({"-s", mSample.filePath("sample"), "-e",
               "try { Orvane.execStoredProcedure('x', {}) } catch (e) { print(e.message) }"
               "print(StudyList.get('PRIMARY_STUDIES').length > 0)"});
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.out.contains("refused") && outcome.out.endsWith("true\n"), qPrintable(outcome.out));
}

void tst_department::archiveThatIsNotThereEndsTheStart()
{
    const Outcome outcome =
        kyrun({"--archive", "http://127.0.0.1:1/dicom-web", "--patient", "P", "-e", "print(1)"});
    QCOMPARE(outcome.status, 2);
    QVERIFY2(outcome.err.contains("refused"), qPrintable(outcome.err));
    const Outcome without = kyrun({"--patient", "P", "-e", "print(1)"});
    QCOMPARE(without.status, 2);
    QVERIFY2(without.err.contains("--archive"), qPrintable(without.err));
}

void tst_department::badProceduresDoNoHarm()
{
    write("procedures/broken.sql", "select from where");
    const Outcome outcome =
        kyrun({"-e", "try { Orvane.execStoredProcedure('broken', {}) } catch (e) { print(e.message) }"});
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.out.contains("syntax error"), qPrintable(outcome.out));
}

KY_TEST_MAIN(tst_department)
#include "tst_department.moc"

#include <support/KyTest.h>
#include <support/LogCapture.h>
#include <support/PeerProcess.h>
#include <support/PostgresServer.h>

#include <kysite/KySqlReportLockStore.h>
#include <kysite/KySqlWorklistStore.h>
#include <ovwebservice/DicomDirectoryEntry.h>
#include <ovwebservice/DicomTagPath.h>

#include <QSet>
#include <QSqlDatabase>
#include <QTemporaryDir>

namespace {

Ovg::WorklistEntry entry(const char* inUid, const char* inAccession = "", const char* inPatient = "")
{
    Ovg::WorklistEntry made;
    made.studyInstanceUid = inUid;
    made.accessionNumber = inAccession;
    made.patientId = inPatient;
    return made;
}

Ovg::DicomDirectoryEntry study(const char* inUid, const char* inAccession = "", const char* inPatient = "")
{
    Ovg::DicomHeader header;
    const auto set = [&header](const char* inKeyword, const char* inText) {
        if (*inText)
            header.setText(Ovg::DicomTagPath::fromText(inKeyword), inText);
    };
    set("StudyInstanceUID", inUid);
    set("AccessionNumber", inAccession);
    set("PatientID", inPatient);
    return Ovg::DicomDirectoryEntry(header);
}

QString outcome(const RnResult& inResult)
{
    return inResult.isOk() ? QStringLiteral("ok") : QString::fromLatin1(inResult.text().c_str());
}

} // namespace

/// The same cases on SQLite and on PostgreSQL.
class tst_worklist : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void rowsAreFound_data() { kinds(); }
    void rowsAreFound();
    void rowsAreReplaced_data() { kinds(); }
    void rowsAreReplaced();
    void rowsWithoutAStudyAreRefused_data() { kinds(); }
    void rowsWithoutAStudyAreRefused();
    void textsAreData_data() { kinds(); }
    void textsAreData();
    void otherClientsSeeRows_data() { kinds(); }
    void otherClientsSeeRows();
    void aDatabaseThatIsNotThereIsAskedOnce_data() { kinds(); }
    void aDatabaseThatIsNotThereIsAskedOnce();

    void locksAreOneUsers_data() { kinds(); }
    void locksAreOneUsers();
    void locksAreGivenBackByTheirHolder_data() { kinds(); }
    void locksAreGivenBackByTheirHolder();
    void locksOutliveTheClient_data() { kinds(); }
    void locksOutliveTheClient();
    void twoProcessesCannotBothWin_data() { kinds(); }
    void twoProcessesCannotBothWin();
    void locksOfADatabaseThatIsNotThere_data() { kinds(); }
    void locksOfADatabaseThatIsNotThere();

private:
    void kinds()
    {
        QTest::addColumn<bool>("isPostgres");
        QTest::newRow("sqlite") << false;
        QTest::newRow("postgres") << true;
    }
    KyDatabaseSettings settings() const;
    KyDatabaseSettings nowhere() const;

    std::unique_ptr<PostgresServer> mServer;
    std::unique_ptr<QTemporaryDir> mFolder;
    bool mIsPostgres = false;
};

void tst_worklist::initTestCase()
{
    if (PostgresServer::programs().isEmpty() || !QSqlDatabase::isDriverAvailable("QPSQL"))
        return;
    mServer = std::make_unique<PostgresServer>();
    QVERIFY2(mServer->isRunning(), mServer->log().constData());
}

void tst_worklist::init()
{
    mIsPostgres = qstrcmp(QTest::currentDataTag(), "postgres") == 0;
    if (mIsPostgres && !mServer)
        QSKIP("PostgreSQL is not installed; scripts/setup --tests does that");
    mFolder = std::make_unique<QTemporaryDir>();
    if (mIsPostgres)
        QCOMPARE(mServer->run("drop table if exists ky_worklist; drop table if exists ky_report_locks"),
                 QString());
}

KyDatabaseSettings tst_worklist::settings() const
{
    KyDatabaseSettings made;
    made.name = mFolder->filePath("site.sqlite");
    if (!mIsPostgres)
        return made;
    made.kind = KyDatabaseSettings::Kind::Postgres;
    made.host = "127.0.0.1";
    made.port = mServer->port();
    made.name = PostgresServer::database();
    made.user = PostgresServer::user();
    return made;
}

KyDatabaseSettings tst_worklist::nowhere() const
{
    KyDatabaseSettings made = settings();
    if (mIsPostgres)
        made.name = "nowhere";
    else
        made.name = mFolder->filePath("no/such/folder/site.sqlite");
    return made;
}

void tst_worklist::rowsAreFound()
{
    KySqlWorklistStore store(settings());
    QVERIFY(!store.find(study("1.2.3", "A1", "P1")));
    Ovg::WorklistEntry byUid = entry("1.2.3", "A1", "P1");
    byUid.assignee = "m\xfcller";
    byUid.status = "DRAFT";
    byUid.flags = 5;
    byUid.attributes = {{"Priority", QString::fromUtf8("höchste \"1\" 中")}};
    QCOMPARE(outcome(store.put(byUid)), QStringLiteral("ok"));
    Ovg::WorklistEntry byAccession = entry("", "A2", "P1");
    byAccession.status = "with patient";
    store.put(byAccession);
    Ovg::WorklistEntry anybody = entry("", "A2");
    anybody.status = "anybody";
    store.put(anybody);

    const auto row = store.find(study("1.2.3"));
    QVERIFY(row);
    QCOMPARE(row->assignee, byUid.assignee);
    QCOMPARE(row->status, byUid.status);
    QCOMPARE(row->flags, 5);
    QCOMPARE(row->accessionNumber, byUid.accessionNumber);
    QCOMPARE(row->patientId, byUid.patientId);
    QCOMPARE(row->attributes, byUid.attributes);
    QVERIFY(!store.find(study("1.2.4", "A1", "P1"))); // a row with a UID is about that study alone
    QCOMPARE(store.find(study("1.2.5", "A2", "P1"))->status, std::string("with patient"));
    QCOMPARE(store.find(study("1.2.5", "A2", "P2"))->status, std::string("anybody"));
    QVERIFY(!store.find(study("1.2.5")));
}

void tst_worklist::rowsAreReplaced()
{
    KySqlWorklistStore store(settings());
    store.put(entry("1.2.3", "A1"));
    Ovg::WorklistEntry again = entry("1.2.3", "A9");
    again.status = "FINAL";
    QCOMPARE(outcome(store.put(again)), QStringLiteral("ok"));
    QCOMPARE(store.find(study("1.2.3"))->status, std::string("FINAL"));
    QCOMPARE(store.find(study("1.2.3"))->accessionNumber, std::string("A9"));
}

void tst_worklist::rowsWithoutAStudyAreRefused()
{
    KySqlWorklistStore store(settings());
    QCOMPARE(outcome(store.put(entry("", "", "P1"))), QStringLiteral("The row names no study"));
}

void tst_worklist::textsAreData()
{
    KySqlWorklistStore store(settings());
    Ovg::WorklistEntry hostile = entry("", "'; drop table ky_worklist; --", "' or '1'='1");
    hostile.status = "\\'; --";
    QCOMPARE(outcome(store.put(hostile)), QStringLiteral("ok"));
    QCOMPARE(store.find(study("1.2", "'; drop table ky_worklist; --", "' or '1'='1"))->status,
             hostile.status);
    QVERIFY(!store.find(study("1.2", "x' or '1'='1", "P")));
}

void tst_worklist::otherClientsSeeRows()
{
    KySqlWorklistStore one(settings());
    KySqlWorklistStore other(settings());
    QVERIFY(!other.find(study("1.2.3")));
    one.put(entry("1.2.3"));
    QVERIFY(other.find(study("1.2.3")));
    QCOMPARE(outcome(other.put(entry("1.2.4"))), QStringLiteral("ok"));
    QVERIFY(one.find(study("1.2.4")));
}

void tst_worklist::aDatabaseThatIsNotThereIsAskedOnce()
{
    LogCapture log(3);
    KySqlWorklistStore store(nowhere());
    for (int i = 0; i < 50; ++i)
        QVERIFY(!store.find(study("1.2.3", "A1")));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.toStrings().first().startsWith("3|Worklist|The worklist cannot be read: "));
    QVERIFY(!store.put(entry("1.2.3")).isOk());
}

void tst_worklist::locksAreOneUsers()
{
    KySqlReportLockStore locks(settings());
    QCOMPARE(outcome(locks.lock(entry("1.2.3"), "meier")), QStringLiteral("ok"));
    QCOMPARE(outcome(locks.lock(entry("1.2.3"), "meier")), QStringLiteral("ok"));
    QCOMPARE(outcome(locks.lock(entry("1.2.3"), QString::fromUtf8("müller"))),
             QStringLiteral("Locked by meier"));
    QCOMPARE(outcome(locks.lock(entry("", "A1"), QString::fromUtf8("müller"))), QStringLiteral("ok"));
    QCOMPARE(outcome(locks.lock(entry("", "A1"), "meier")), QString::fromUtf8("Locked by müller"));
    QCOMPARE(outcome(locks.lock(entry(""), "meier")), QStringLiteral("The worklist entry names no study"));
}

void tst_worklist::locksAreGivenBackByTheirHolder()
{
    KySqlReportLockStore locks(settings());
    locks.lock(entry("1.2.3"), "meier");
    locks.unlock(entry("1.2.3"), "schmidt");
    QCOMPARE(outcome(locks.lock(entry("1.2.3"), "schmidt")), QStringLiteral("Locked by meier"));
    locks.unlock(entry("1.2.3"), "meier");
    QCOMPARE(outcome(locks.lock(entry("1.2.3"), "schmidt")), QStringLiteral("ok"));
}

void tst_worklist::locksOutliveTheClient()
{
    KySqlReportLockStore(settings()).lock(entry("1.2.3"), "meier");
    KySqlReportLockStore other(settings());
    QCOMPARE(outcome(other.lock(entry("1.2.3"), "schmidt")), QStringLiteral("Locked by meier"));
}

/// Both begin at once; each study is won by exactly one of them.
void tst_worklist::twoProcessesCannotBothWin()
{
    const QString address = mIsPostgres ? QString::number(mServer->port()) : mFolder->filePath("site.sqlite");
    const QString kind = mIsPostgres ? "postgres" : "sqlite";
    std::vector<std::unique_ptr<PeerProcess>> clients;
    for (const char* user : {"meier", "schmidt"})
        clients.push_back(std::make_unique<PeerProcess>(LOCKS_SAMPLE, QStringList{kind, address, user}));
    for (const auto& client : clients)
        QVERIFY(!client->waitFor("ready").isNull());
    for (const auto& client : clients)
        client->order("go");
    QList<int> won;
    for (const auto& client : clients) {
        const QString line = client->waitFor("won(.*)");
        QVERIFY2(!line.contains("error"), qPrintable(line));
        for (const QString& number : line.split(' ', Qt::SkipEmptyParts))
            won.append(number.toInt());
    }
    QCOMPARE(won.size(), 100);
    QCOMPARE(QSet<int>(won.begin(), won.end()).size(), 100);
}

void tst_worklist::locksOfADatabaseThatIsNotThere()
{
    KySqlReportLockStore locks(nowhere());
    const QString text = outcome(locks.lock(entry("1.2.3"), "meier"));
    QVERIFY2(text != "ok" && text.size() > 10, qPrintable(text));
    LogCapture log(3);
    locks.unlock(entry("1.2.3"), "meier");
    QCOMPARE(log.lines().size(), 1);
}

KY_TEST_MAIN(tst_worklist)
#include "tst_worklist.moc"

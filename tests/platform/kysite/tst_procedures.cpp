#include <support/KyTest.h>
#include <support/PostgresServer.h>

#include <kysite/KyPostgresProcedures.h>
#include <kysite/KySqliteProcedures.h>
#include <ovbase/OvWebServices.h>

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTcpServer>
#include <QTemporaryDir>

namespace {

using Values = OvDatabase::Parameters;

/// What a procedure answers, as one text: the type words, then the rows; or the message of its failure.
QString answer(const std::string& inName, const Values& inParameters = {})
{
    const RnHandle<OvWebServices> services(new OvWebServices(nullptr));
    OvDatabase::Rows rows;
    std::vector<std::string> types;
    const RnResult result = services->execStoredProcedure(inName, inParameters, rows, types);
    if (!result.isOk())
        return QStringLiteral("failed: ") + QString::fromLatin1(result.text().c_str());
    QStringList lines;
    QStringList words;
    for (const std::string& type : types)
        words.append(QString::fromStdString(type));
    lines.append(words.join(' '));
    for (const auto& row : rows) {
        QStringList values;
        for (const auto& value : row)
            values.append(value ? QString::fromLatin1(value->c_str(), qsizetype(value->size()))
                                : QStringLiteral("NULL"));
        lines.append(values.join('|'));
    }
    return lines.join('\n');
}

constexpr const char* PostgresSchema = R"(
create table patients (id serial primary key, name text, born date, dead bool, seen timestamp, at timestamptz,
                       dose double precision, films bigint, small smallint, weight real);
create function get_patients(name_like text default '%') returns table (id int, name text) language sql as
  $$ select id, name from patients where name like name_like order by id $$;
create function add_patient(name text, dead bool default false, seen timestamp default null, dose float8 default null,
                            films bigint default null) returns void language sql as
  $$ insert into patients (name, dead, seen, dose, films) values (name, dead, seen, dose, films) $$;
create function all_types() returns table (dead bool, small smallint, n int, films bigint, dose float8, weight real,
                                           seen timestamp, name text) language sql as
  $$ select dead, small, id, films, dose, weight, seen, name from patients order by id $$;
create function echo(v text) returns table (v text) language sql as $$ select v $$;
create function count_patients() returns bigint language sql as $$ select count(*) from patients $$;
create function nothing() returns void language sql as $$ select null::void $$;
create function fails() returns int language sql as $$ select 1 / (select 0) $$;
create function half() returns void language plpgsql as
  $$ begin insert into patients (name) values ('half'); insert into nowhere values (1); end $$;
create function zoned() returns table (at timestamptz) language sql as
  $$ select timestamptz '2026-01-31 14:05:09.120+05:30' $$;
create function sleeps() returns void language sql as $$ select pg_sleep(60) $$;
create function money() returns table (a numeric, b date, c time, d bytea, e json, f uuid) language sql as
  $$ select 1.50, date '2026-01-31', time '14:05:09.5', '\x00ff'::bytea, '{"a": 1}'::json,
            '00000000-0000-0000-0000-000000000001'::uuid $$;
create schema site;
create function site.greet(who text) returns text language sql as $$ select 'Hello ' || who $$;
)";

constexpr const char* SqliteSchema = R"(
create table patients (id integer primary key, name nvarchar(64), born date, dead bit, seen datetime,
                       at datetimeoffset, dose float, films bigint, small smallint, weight real)
)";

const QList<std::pair<const char*, const char*>> SqliteFiles = {
    {"get_patients", "-- columns: int, nvarchar\nselect id, name from patients"
                     " where name like coalesce(:name_like, '%') order by id"},
    {"add_patient",
     "insert into patients (name, dead, seen, dose, films)"
     " values (:name, coalesce(:dead, 'false') in ('true', '1'), replace(:seen, 'T', ' '), :dose, :films)"},
    {"all_types", "-- columns: bit, smallint, int, bigint, float, real, datetime2, nvarchar\n"
                  "select dead, small, id, films, dose, weight, seen, name from patients order by id"},
    {"declared",
     "select dead, seen, at, small, films, dose, name, id + 0, seen || '' from patients order by id"},
    {"echo", "-- columns: nvarchar\nselect :v as v"},
    {"count_patients", "select count(*) from patients"},
    {"nothing", "delete from patients where 1 = 0"},
    {"empty", "-- nothing at all"},
    {"fails", "select abs(-9223372036854775807 - 1)"},
    {"half", "insert into patients (name) values ('half'); insert into nowhere values (1)"},
    {"mixed", "select 1 union all select 2.5 union all select null"},
    {"texts", "select 1 union all select 'x'"},
    {"blob", "select x'00ff'"},
    {"twice", "insert into patients (name) values (:name); insert into patients (name) values (:NAME);"
              " select 1; select name from patients order by id"},
};

} // namespace

/// The same cases on both databases: each function has a row for each of them.
class tst_procedures : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void rowsComeInOrder_data() { kinds(); }
    void rowsComeInOrder();
    void noRowsStillHaveColumns_data() { kinds(); }
    void noRowsStillHaveColumns();
    void typesAreTold_data() { kinds(); }
    void typesAreTold();
    void nullIsAbsentAndEmptyTextIsNot_data() { kinds(); }
    void nullIsAbsentAndEmptyTextIsNot();
    void nullParametersAreNull_data() { kinds(); }
    void nullParametersAreNull();
    void valuesAreNeverPastedIn_data();
    void valuesAreNeverPastedIn();
    void hostileNamesAreRefused_data();
    void hostileNamesAreRefused();
    void hostileParameterNamesAreRefused_data();
    void hostileParameterNamesAreRefused();
    void namesOfParametersHaveNoCase_data() { kinds(); }
    void namesOfParametersHaveNoCase();
    void parametersMayBeLeftOut_data() { kinds(); }
    void parametersMayBeLeftOut();
    void unknownProceduresFail_data() { kinds(); }
    void unknownProceduresFail();
    void unknownParametersFail_data() { kinds(); }
    void unknownParametersFail();
    void failuresCarryTheMessageOfTheDatabase_data() { kinds(); }
    void failuresCarryTheMessageOfTheDatabase();
    void aFailedProcedureLeavesNothingBehind_data() { kinds(); }
    void aFailedProcedureLeavesNothingBehind();
    void aProcedureWithoutAResultGivesNoRows_data() { kinds(); }
    void aProcedureWithoutAResultGivesNoRows();
    void aSingleValueIsARow_data() { kinds(); }
    void aSingleValueIsARow();
    void manyRowsAreWhole_data() { kinds(); }
    void manyRowsAreWhole();
    void serverIsNotThere_data() { kinds(); }
    void serverIsNotThere();

    void sqliteTakesTheDeclaredTypes();
    void sqliteTellsTypesByTheValues_data();
    void sqliteTellsTypesByTheValues();
    void sqliteRunsStatementsInTheirOrder();
    void sqliteReadsChangedFiles();
    void sqliteFileIsNoDatabase();
    void sqliteFileIsLocked();
    void sqliteFolderIsNotThere();

    void postgresTellsFurtherTypes();
    void postgresFunctionsInSchemas();
    void postgresDatesAreInTheZoneOfTheClient();
    void postgresIsLostBetweenCalls();
    void postgresIsLostDuringACall();
    void postgresIsSlow();
    void postgresRefusesTheUser();
    void postgresWithoutItsCertificate();

private:
    void kinds();
    KyDatabaseSettings postgres() const;
    KyDatabaseSettings sqlite() const;
    bool isPostgres() const { return qstrcmp(QTest::currentDataTag(), "postgres") == 0; }
    void sqliteExec(const QString& inSql);
    void write(const QString& inName, const QString& inText);
    void open(bool inIsPostgres);

    std::unique_ptr<PostgresServer> mServer;
    std::unique_ptr<KySqlConnection> mAdministrator;
    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<OvDatabase> mDatabase;
};

void tst_procedures::initTestCase()
{
    if (PostgresServer::programs().isEmpty() || !QSqlDatabase::isDriverAvailable("QPSQL"))
        return;
    mServer = std::make_unique<PostgresServer>();
    QVERIFY2(mServer->isRunning(), mServer->log().constData());
    QCOMPARE(mServer->run(PostgresSchema), QString());
    mAdministrator = std::make_unique<KySqlConnection>(postgres());
}

KyDatabaseSettings tst_procedures::postgres() const
{
    KyDatabaseSettings settings;
    settings.kind = KyDatabaseSettings::Kind::Postgres;
    settings.host = "127.0.0.1";
    settings.port = mServer->port();
    settings.name = PostgresServer::database();
    settings.user = PostgresServer::user();
    return settings;
}

KyDatabaseSettings tst_procedures::sqlite() const
{
    KyDatabaseSettings settings;
    settings.name = mFolder->filePath("database.sqlite");
    settings.timeoutSeconds = 1;
    return settings;
}

void tst_procedures::write(const QString& inName, const QString& inText)
{
    QFile file(mFolder->filePath(inName + ".sql"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(inText.toUtf8());
}

void tst_procedures::sqliteExec(const QString& inSql)
{
    KySqlConnection connection(sqlite());
    QString error;
    QVERIFY2(connection.execute(inSql, error), qPrintable(error));
}

void tst_procedures::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    if (QTest::currentDataTag() && isPostgres() && !mServer)
        QSKIP("PostgreSQL is not installed; scripts/setup --tests does that");
    if (QByteArray(QTest::currentTestFunction()).startsWith("postgres") && !mServer)
        QSKIP("PostgreSQL is not installed; scripts/setup --tests does that");
    const bool wantsPostgres =
        (QTest::currentDataTag() && QByteArray(QTest::currentDataTag()).startsWith("postgres")) ||
        QByteArray(QTest::currentTestFunction()).startsWith("postgres");
    if (wantsPostgres && !mServer)
        QSKIP("PostgreSQL is not installed; scripts/setup --tests does that");
    open(wantsPostgres);
}

void tst_procedures::open(bool inIsPostgres)
{
    if (inIsPostgres) {
        QString error;
        QVERIFY2(mAdministrator->execute("truncate patients restart identity", error), qPrintable(error));
        mDatabase = std::make_unique<KyPostgresProcedures>(postgres());
        return;
    }
    for (const auto& [name, text] : SqliteFiles)
        write(name, text);
    sqliteExec(SqliteSchema);
    mDatabase = std::make_unique<KySqliteProcedures>(sqlite(), mFolder->path());
}

void tst_procedures::cleanup()
{
    mDatabase.reset();
    mFolder.reset();
}

void tst_procedures::kinds()
{
    QTest::addColumn<int>("unused");
    QTest::newRow("sqlite") << 0;
    QTest::newRow("postgres") << 0;
}

void tst_procedures::rowsComeInOrder()
{
    for (const char* name : {"Doe", "M\xfcller", "Abe"})
        QCOMPARE(answer("add_patient", {{"name", name}}), QString());
    QCOMPARE(answer("get_patients"), QString::fromUtf8("int nvarchar\n1|Doe\n2|Müller\n3|Abe"));
    QCOMPARE(answer("get_patients", {{"name_like", "%b%"}}), QStringLiteral("int nvarchar\n3|Abe"));
}

void tst_procedures::noRowsStillHaveColumns()
{
    QCOMPARE(answer("get_patients"), QStringLiteral("int nvarchar"));
}

void tst_procedures::typesAreTold()
{
    answer("add_patient", {{"name", "a"},
                           {"dead", "true"},
                           {"seen", "2026-01-31T14:05:09.120"},
                           {"dose", "2.5"},
                           {"films", "9007199254740993"}});
    answer("add_patient", {{"name", "b"}, {"dead", "false"}, {"dose", "-0.001"}, {"films", "-5"}});
    QCOMPARE(answer("all_types"),
             QStringLiteral("bit smallint int bigint float real datetime2 nvarchar\n"
                            "True|NULL|1|9007199254740993|2.5|NULL|2026-01-31T14:05:09.120|a\n"
                            "False|NULL|2|-5|-0.001|NULL|NULL|b"));
}

void tst_procedures::nullIsAbsentAndEmptyTextIsNot()
{
    answer("add_patient", {{"name", std::nullopt}});
    answer("add_patient", {{"name", ""}});
    QCOMPARE(answer("all_types").section('\n', 1), QStringLiteral("False|NULL|1|NULL|NULL|NULL|NULL|NULL\n"
                                                                  "False|NULL|2|NULL|NULL|NULL|NULL|"));
}

void tst_procedures::nullParametersAreNull()
{
    QCOMPARE(answer("echo", {{"v", std::nullopt}}), QStringLiteral("nvarchar\nNULL"));
    QCOMPARE(answer("echo", {{"v", ""}}), QStringLiteral("nvarchar\n"));
}

void tst_procedures::valuesAreNeverPastedIn_data()
{
    QTest::addColumn<QByteArray>("value");
    const QList<QByteArray> values = {"'; drop table patients; --",
                                      "\" or 1=1 --",
                                      "\\'; drop table patients; --",
                                      "$1",
                                      "?",
                                      ":v",
                                      "%",
                                      "'||(select 1)||'",
                                      "\\",
                                      "a\nb\r\tc",
                                      "/* x",
                                      "\xe9'",
                                      "E'\\047",
                                      "$$x$$",
                                      "a''b"};
    for (const char* kind : {"sqlite", "postgres"}) {
        for (const QByteArray& value : values)
            QTest::addRow("%s: %s", kind, value.constData()) << value;
    }
}

void tst_procedures::valuesAreNeverPastedIn()
{
    QFETCH(QByteArray, value);
    QCOMPARE(answer("echo", {{"v", value.toStdString()}}),
             QStringLiteral("nvarchar\n") + QString::fromLatin1(value));
    QCOMPARE(answer("add_patient", {{"name", value.toStdString()}}), QString());
    QCOMPARE(answer("get_patients"), QStringLiteral("int nvarchar\n1|") + QString::fromLatin1(value));
}

void tst_procedures::hostileNamesAreRefused_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char* kind : {"sqlite", "postgres"}) {
        for (const char* name :
             {"", " ", "echo; drop table patients", "echo--", "\"echo\"", "../echo", "/etc/passwd",
              "echo.sql", "a.b.c", "echo()", "echo\n", "1", "e?ho", "echo:v", ".", "..", "a."})
            QTest::addRow("%s: %s", kind, name) << QByteArray(name);
    }
}

void tst_procedures::hostileNamesAreRefused()
{
    QFETCH(QByteArray, name);
    const QString text = answer(name.toStdString(), {{"v", "x"}});
    const QString whole = QStringLiteral("failed: There is no procedure ") + QString::fromLatin1(name);
    QVERIFY2(text == whole || text.contains("does not exist"), qPrintable(text));
    QCOMPARE(answer("get_patients"), QStringLiteral("int nvarchar"));
}

void tst_procedures::hostileParameterNamesAreRefused_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char* kind : {"sqlite", "postgres"}) {
        for (const char* name : {"", " ", "v\" => 1); drop table patients; --", "v; drop table patients",
                                 ":v", "v)", "?", "v\n", "1", "v\xe9", "v=>"})
            QTest::addRow("%s: %s", kind, name) << QByteArray(name);
    }
}

void tst_procedures::hostileParameterNamesAreRefused()
{
    QFETCH(QByteArray, name);
    const QString text = answer("echo", {{name.toStdString(), "x"}});
    QVERIFY2(text == QStringLiteral("failed: The procedure echo has no parameter ") +
                         QString::fromLatin1(name) ||
                 text.contains("does not exist"),
             qPrintable(text));
    QCOMPARE(answer("get_patients"), QStringLiteral("int nvarchar"));
}

void tst_procedures::namesOfParametersHaveNoCase()
{
    QCOMPARE(answer("echo", {{"V", "x"}}), QStringLiteral("nvarchar\nx"));
    answer("add_patient", {{"Name", "x"}, {"FILMS", "3"}});
    QCOMPARE(answer("all_types").section('\n', 1), QStringLiteral("False|NULL|1|3|NULL|NULL|NULL|x"));
}

void tst_procedures::parametersMayBeLeftOut()
{
    answer("add_patient", {{"name", "a"}});
    QCOMPARE(answer("get_patients"), QStringLiteral("int nvarchar\n1|a"));
}

void tst_procedures::unknownProceduresFail()
{
    const QString text = answer("no_such");
    QVERIFY2(text.startsWith(isPostgres() ? "failed: function no_such() does not exist"
                                          : "failed: There is no procedure no_such"),
             qPrintable(text));
}

void tst_procedures::unknownParametersFail()
{
    const QString text = answer("echo", {{"v", "1"}, {"nope", "2"}});
    QVERIFY2(text.contains("nope"), qPrintable(text));
}

void tst_procedures::failuresCarryTheMessageOfTheDatabase()
{
    QCOMPARE(answer("fails"),
             isPostgres()
                 ? QStringLiteral("failed: division by zero\nCONTEXT:  SQL function \"fails\" statement 1")
                 : QStringLiteral("failed: integer overflow"));
    QCOMPARE(answer("count_patients"), QStringLiteral("bigint\n0")); // the connection is as good as before
}

void tst_procedures::aFailedProcedureLeavesNothingBehind()
{
    const QString text = answer("half");
    QVERIFY2(text.startsWith("failed: ") && text.contains("nowhere"), qPrintable(text));
    QCOMPARE(answer("get_patients"), QStringLiteral("int nvarchar"));
    QCOMPARE(answer("add_patient", {{"name", "after"}}), QString());
}

void tst_procedures::aProcedureWithoutAResultGivesNoRows()
{
    QCOMPARE(answer("nothing"), QString());
}

void tst_procedures::aSingleValueIsARow()
{
    answer("add_patient", {{"name", "a"}});
    QCOMPARE(answer("count_patients"), QStringLiteral("bigint\n1"));
}

void tst_procedures::manyRowsAreWhole()
{
    constexpr int count = 20000;
    if (isPostgres())
        QCOMPARE(mServer->run("insert into patients (name) select 'p' || n from generate_series(1, 20000) n"),
                 QString());
    else
        sqliteExec(
            "insert into patients (name) with recursive c(n) as (select 1 union all select n + 1 from c"
            " where n < 20000) select 'p' || n from c");
    const QStringList lines = answer("get_patients").split('\n');
    QCOMPARE(lines.size(), count + 1);
    QCOMPARE(lines.last(), QStringLiteral("20000|p20000"));
}

void tst_procedures::serverIsNotThere()
{
    if (isPostgres()) {
        KyDatabaseSettings nobody = postgres();
        QTcpServer taken; // a port at which nobody answers
        QVERIFY(taken.listen(QHostAddress::LocalHost));
        nobody.port = taken.serverPort();
        taken.close();
        mDatabase = std::make_unique<KyPostgresProcedures>(nobody);
    } else {
        KyDatabaseSettings nowhere = sqlite();
        nowhere.name = mFolder->filePath("no/such/folder/database.sqlite");
        mDatabase = std::make_unique<KySqliteProcedures>(nowhere, mFolder->path());
    }
    const QString text = answer("count_patients");
    QVERIFY2(text.startsWith("failed: ") && text.size() > 15, qPrintable(text));
    QVERIFY2(isPostgres() ? text.contains("refused") : text.contains("unable to open database file"),
             qPrintable(text));
}

void tst_procedures::sqliteTakesTheDeclaredTypes()
{
    answer("add_patient", {{"name", "a"}, {"dead", "true"}, {"seen", "2026-01-31T14:05:09"}, {"dose", "1"}});
    QCOMPARE(answer("declared"),
             QStringLiteral("bit datetime datetimeoffset smallint nvarchar float nvarchar bigint"
                            " nvarchar\nTrue|2026-01-31T14:05:09|NULL|NULL|NULL|1|a|1|2026-01-31 14:05:09"));
}

void tst_procedures::sqliteTellsTypesByTheValues_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("numbers") << QByteArray("mixed") << "float\n1\nNULL\n2.5";
    QTest::newRow("number and text") << QByteArray("texts") << "nvarchar\n1\nx";
    QTest::newRow("bytes") << QByteArray("blob") << "varbinary\n\\x00ff";
    QTest::newRow("empty file") << QByteArray("empty") << "";
}

void tst_procedures::sqliteTellsTypesByTheValues()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, expected);
    QStringList lines = answer(name.toStdString()).split('\n');
    std::sort(lines.begin() + 1, lines.end());
    QStringList wanted = expected.split('\n');
    std::sort(wanted.begin() + 1, wanted.end());
    QCOMPARE(lines, wanted);
}

void tst_procedures::sqliteRunsStatementsInTheirOrder()
{
    QCOMPARE(answer("twice", {{"name", "x"}}), QStringLiteral("nvarchar\nx\nx"));
}

void tst_procedures::sqliteReadsChangedFiles()
{
    QCOMPARE(answer("echo", {{"v", "x"}}), QStringLiteral("nvarchar\nx"));
    write("echo", "select 'changed, and longer than before: ' || :v");
    QCOMPARE(answer("echo", {{"v", "x"}}), QStringLiteral("nvarchar\nchanged, and longer than before: x"));
    QVERIFY(QFile::remove(mFolder->filePath("echo.sql")));
    QCOMPARE(answer("echo", {{"v", "x"}}), QStringLiteral("failed: There is no procedure echo"));
}

void tst_procedures::sqliteFileIsNoDatabase()
{
    mDatabase.reset();
    QFile file(mFolder->filePath("broken.sqlite"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray content(8192, 'x');
    file.write(content);
    file.close();
    KyDatabaseSettings broken = sqlite();
    broken.name = file.fileName();
    mDatabase = std::make_unique<KySqliteProcedures>(broken, mFolder->path());
    QCOMPARE(answer("count_patients"), QStringLiteral("failed: file is not a database"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), content);
}

void tst_procedures::sqliteFileIsLocked()
{
    KySqlConnection other(sqlite());
    QString error;
    QVERIFY2(other.execute("begin immediate", error), qPrintable(error));
    QCOMPARE(answer("add_patient", {{"name", "a"}}), QStringLiteral("failed: database is locked"));
    QCOMPARE(answer("twice", {{"name", "a"}}), QStringLiteral("failed: database is locked"));
    QCOMPARE(answer("count_patients"), QStringLiteral("bigint\n0")); // reading goes on
    QVERIFY2(other.execute("rollback", error), qPrintable(error));
    QCOMPARE(answer("add_patient", {{"name", "a"}}), QString());
}

void tst_procedures::sqliteFolderIsNotThere()
{
    mDatabase = std::make_unique<KySqliteProcedures>(sqlite(), mFolder->filePath("nowhere"));
    QCOMPARE(answer("echo", {{"v", "x"}}), QStringLiteral("failed: There is no procedure echo"));
}

void tst_procedures::postgresTellsFurtherTypes()
{
    QCOMPARE(
        answer("money"),
        QStringLiteral(
            "decimal date time varbinary nvarchar uniqueidentifier\n1.50|2026-01-31|14:05:09.500|\\x00ff|"
            "{\"a\": 1}|00000000-0000-0000-0000-000000000001"));
}

void tst_procedures::postgresFunctionsInSchemas()
{
    QCOMPARE(answer("site.greet", {{"who", "you"}}), QStringLiteral("nvarchar\nHello you"));
    QCOMPARE(answer("SITE.Greet", {{"who", "you"}}), QStringLiteral("nvarchar\nHello you"));
}

void tst_procedures::postgresDatesAreInTheZoneOfTheClient()
{
    const QDateTime time(QDate(2026, 1, 31), QTime(14, 5, 9, 120), Qt::OffsetFromUTC, 19800);
    const QString text = answer("zoned").section('\n', 1);
    QCOMPARE(QDateTime::fromString(text, Qt::ISODateWithMs), time);
    QCOMPARE(
        text,
        time.toLocalTime().toOffsetFromUtc(time.toLocalTime().offsetFromUtc()).toString(Qt::ISODateWithMs));
}

void tst_procedures::postgresIsLostBetweenCalls()
{
    QCOMPARE(answer("count_patients"), QStringLiteral("bigint\n0"));
    mServer->stop();
    const QString text = answer("count_patients");
    QVERIFY2(text.startsWith("failed: ") && text.contains("refused"), qPrintable(text));
    QVERIFY2(mServer->start(), mServer->log().constData());
    QCOMPARE(answer("count_patients"), QStringLiteral("bigint\n0"));
    QCOMPARE(
        mServer->run("select pg_terminate_backend(pid) from pg_stat_activity where pid <> pg_backend_pid()"
                     " and application_name = 'kyscript'"),
        QString());
    QCOMPARE(answer("count_patients"), QStringLiteral("bigint\n0"));
}

void tst_procedures::postgresIsLostDuringACall()
{
    QCOMPARE(mServer->run("create or replace function dies() returns void language sql as"
                          " $$ select pg_terminate_backend(pg_backend_pid()); select pg_sleep(5) $$"),
             QString());
    const QString text = answer("dies");
    QVERIFY2(text.startsWith("failed: ") && text.size() > 15, qPrintable(text));
    QCOMPARE(answer("count_patients"), QStringLiteral("bigint\n0"));
}

void tst_procedures::postgresIsSlow()
{
    KyDatabaseSettings hasty = postgres();
    hasty.timeoutSeconds = 1;
    mDatabase = std::make_unique<KyPostgresProcedures>(hasty);
    const QString text = answer("sleeps");
    QVERIFY2(text.startsWith("failed: canceling statement due to statement timeout"), qPrintable(text));
    QCOMPARE(answer("count_patients"), QStringLiteral("bigint\n0"));
}

void tst_procedures::postgresRefusesTheUser()
{
    KyDatabaseSettings stranger = postgres();
    stranger.user = "stranger";
    mDatabase = std::make_unique<KyPostgresProcedures>(stranger);
    const QString text = answer("count_patients");
    QVERIFY2(text.contains("stranger") && text.startsWith("failed: "), qPrintable(text));
}

void tst_procedures::postgresWithoutItsCertificate()
{
    KyDatabaseSettings strict = postgres();
    strict.options = "sslmode=require";
    mDatabase = std::make_unique<KyPostgresProcedures>(strict);
    const QString text = answer("count_patients");
    QVERIFY2(text.startsWith("failed: ") && text.contains("SSL"), qPrintable(text));
}

KY_TEST_MAIN(tst_procedures)
#include "tst_procedures.moc"

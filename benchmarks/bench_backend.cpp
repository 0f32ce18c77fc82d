// What procedures and backend calls cost a script: the rows beside bare Qt Sql reading the same ones, the
// calls beside functions that the event loop calls with the same values.

#include "RatioReport.h"

#include <kyscript/KyScriptEngine.h>

#include <kysite/KySqliteProcedures.h>
#include <ovbase/OvBackend.h>

#include <benchmark/benchmark.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QTemporaryDir>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>
#include <QtWidgets/QApplication>

#include <memory>
#include <string>
#include <utility>

namespace {

constexpr const char* Select = "select id, name, dose, seen from patients where id <= :most order by id";
constexpr int Rows = 100000;
constexpr int Columns = 4;

/// A database with 100 000 patients, and the procedure that reads the first of them.
struct World
{
    World()
    {
        QFile file(folder.filePath(QStringLiteral("patients.sql")));
        file.open(QIODevice::WriteOnly);
        file.write(Select);
        file.close();
        bare = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bare"));
        bare.setDatabaseName(folder.filePath(QStringLiteral("database.sqlite")));
        bare.open();
        QSqlQuery query(bare);
        query.exec(QStringLiteral(
            "create table patients (id integer primary key, name nvarchar(64), dose float, seen "
            "datetime)"));
        query.exec(
            QStringLiteral("insert into patients with recursive c(n) as (select 1 union all select n + 1 "
                           "from c where n < %1)"
                           " select n, 'Patient number ' || n, n * 0.25, '2026-01-31 14:05:09.120' from c")
                .arg(Rows));
        KyDatabaseSettings settings;
        settings.name = folder.filePath(QStringLiteral("database.sqlite"));
        database = std::make_unique<KySqliteProcedures>(settings, folder.path());
        read = engine.evaluate(QStringLiteral(
            "(function(most) { return Orvane.execStoredProcedure('patients', {most: most}).length })"));
    }

    QTemporaryDir folder;
    QSqlDatabase bare;
    std::unique_ptr<KySqliteProcedures> database;
    KyScriptEngine engine{nullptr, ScriptOrvane};
    QJSValue read;
};

World* world = nullptr;

void procedure(benchmark::State& ioState, int inRows)
{
    for (auto _ : ioState) {
        if (world->read.call({inRows}).toInt() != inRows)
            ioState.SkipWithError("rows are missing");
    }
}

/// The values are made, as anybody who reads rows makes them.
void bareQuery(benchmark::State& ioState, int inRows)
{
    for (auto _ : ioState) {
        QSqlQuery query(world->bare);
        query.setForwardOnly(true);
        query.prepare(QLatin1String(Select));
        query.bindValue(QStringLiteral(":most"), inRows);
        query.exec();
        int rows = 0;
        while (query.next()) {
            for (int i = 0; i < Columns; ++i)
                benchmark::DoNotOptimize(query.value(i));
            ++rows;
        }
        if (rows != inRows)
            ioState.SkipWithError("rows are missing");
    }
}

/// The same values in the form in which scripts have them, made in the shortest way: lists, and dates.
void converted(benchmark::State& ioState, int inRows)
{
    QJSEngine engine;
    const QJSValue kept = engine.newObject();
    for (auto _ : ioState) {
        QSqlQuery query(world->bare);
        query.setForwardOnly(true);
        query.prepare(QLatin1String(Select));
        query.bindValue(QStringLiteral(":most"), inRows);
        query.exec();
        QVariantList rows;
        while (query.next()) {
            QVariantList row;
            for (int i = 0; i < Columns; ++i)
                row.append(i < Columns - 1 ? query.value(i)
                                           : QVariant(QDateTime::fromString(query.value(i).toString(),
                                                                            Qt::ISODateWithMs)));
            rows.append(QVariant(row));
        }
        if (engine.toScriptValue(QVariant(rows)).property(QStringLiteral("length")).toInt() != inRows)
            ioState.SkipWithError("rows are missing");
    }
}

constexpr int Calls = 1000;

/// All calls are made before the first is answered.
class LateBackend final : public OvBackend
{
public:
    void start(const OvBackendCall& inCall, const Reply& inReply) override
    {
        replies.emplace_back(inReply, QString::fromStdString(inCall.parameters.front()));
    }
    std::vector<std::pair<Reply, QString>> replies;
};

void callsInFlight(benchmark::State& ioState)
{
    LateBackend backend;
    KyScriptEngine engine(nullptr, ScriptOrvane);
    const QJSValue start =
        engine.evaluate(QStringLiteral("var sum; (function() { sum = 0; for (var i = 0; i < %1; ++i) "
                                       "Orvane.execScriptOnBackend('C', 'm',"
                                       " [{number: i}], function(r) { sum += r.number }, null) })")
                            .arg(Calls));
    for (auto _ : ioState) {
        start.call();
        for (const auto& [reply, json] : backend.replies)
            reply->succeed(json);
        backend.replies.clear();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (engine.evaluate(QStringLiteral("sum")).toInt() != Calls * (Calls - 1) / 2)
            ioState.SkipWithError("answers are missing");
    }
}

/// As much as nobody can leave out: the value to JSON and back, an event, the call of the function.
void bareEvents(benchmark::State& ioState)
{
    QJSEngine engine;
    QObject context;
    const QJSValue make = engine.evaluate(QStringLiteral("(function(i) { return {number: i} })"));
    const QJSValue function =
        engine.evaluate(QStringLiteral("var sum = 0; (function(r) { sum += r.number })"));
    for (auto _ : ioState) {
        for (int i = 0; i < Calls; ++i) {
            const QByteArray json =
                QJsonDocument(QJsonArray{QJsonValue::fromVariant(make.call({i}).toVariant())})
                    .toJson(QJsonDocument::Compact);
            QMetaObject::invokeMethod(
                &context,
                [&engine, function, json] {
                    function.call(
                        {engine.toScriptValue(QJsonDocument::fromJson(json).array().at(0).toVariant())});
                },
                Qt::QueuedConnection);
        }
        QCoreApplication::sendPostedEvents();
    }
}

using Function = void (*)(benchmark::State&, int);

void registerPair(const std::string& inName, const char* inGoal, int inRows, Function inYardstick)
{
    benchmark::RegisterBenchmark((inName + inGoal).c_str(), procedure, inRows);
    benchmark::RegisterBenchmark((inName + "/yardstick").c_str(), inYardstick, inRows);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("TZ", "Europe/Berlin"); // without it the C library looks for its file at each date
    QApplication application(argc, argv);
    const auto made = std::make_unique<World>();
    world = made.get();
    for (const auto& [rows, name] :
         {std::pair(1, "1 row"), std::pair(1000, "1000 rows"), std::pair(Rows, "100 000 rows")})
    {
        registerPair(std::string(name) + " for a script", "<=2.0", rows, converted);
        registerPair(std::string(name) + " against reading alone", "", rows, bareQuery);
    }
    benchmark::RegisterBenchmark("backend: 1000 calls in flight", callsInFlight);
    benchmark::RegisterBenchmark("backend: 1000 calls in flight/yardstick", bareEvents);
    return runWithRatios(argc, argv);
}

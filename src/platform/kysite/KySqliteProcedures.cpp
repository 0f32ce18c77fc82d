#include "KySqliteProcedures.h"

#include "KySqlRows.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlDriver>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>
#include <QtSql/QSqlRecord>
#include <QtSql/QSqlResult>

#include <sqlite3.h>

#include <array>
#include <utility>

namespace {

RnResult failure(const QString& inText)
{
    return RnResult::failure(inText.toLatin1().toStdString());
}

/// The type word of a column of which the table says \a inDeclared; empty where its values tell more.
QString wordOf(const QString& inDeclared)
{
    static constexpr std::array<std::pair<const char*, const char*>, 13> words = {{
        {"bit", "bit"},
        {"bool", "bit"},
        {"boolean", "bit"},
        {"datetime", "datetime"},
        {"smalldatetime", "smalldatetime"},
        {"datetime2", "datetime2"},
        {"timestamp", "datetime2"},
        {"datetimeoffset", "datetimeoffset"},
        {"timestamptz", "datetimeoffset"},
        {"tinyint", "tinyint"},
        {"smallint", "smallint"},
        {"float", "float"},
        {"real", "real"},
    }};
    const QString declared = inDeclared.section(QLatin1Char('('), 0, 0).trimmed().toLower();
    for (const auto& [name, word] : words) {
        if (declared == QLatin1String(name))
            return QLatin1String(word);
    }
    return QString();
}

/// The handle of the statement, as the driver gives it. Null when the driver brings along another SQLite than
/// the one that this library is linked with.
sqlite3_stmt* handleOf(const QSqlQuery& inQuery)
{
    const QVariant handle = inQuery.result() ? inQuery.result()->handle() : QVariant();
    if (qstrcmp(handle.typeName(), "sqlite3_stmt*") != 0)
        return nullptr;
    static const bool isSame = [] {
        const QString ours = QString::fromLatin1(sqlite3_sourceid());
        QSqlDatabase database =
            QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("kysite-id"));
        database.setDatabaseName(QStringLiteral(":memory:"));
        QString theirs;
        if (database.open()) {
            QSqlQuery query(database);
            if (query.exec(QStringLiteral("select sqlite_source_id()")) && query.next())
                theirs = query.value(0).toString();
        }
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("kysite-id"));
        return ours == theirs;
    }();
    return isSame ? *static_cast<sqlite3_stmt* const*>(handle.constData()) : nullptr;
}

QStringList declaredTypes(const QSqlQuery& inQuery)
{
    QStringList types;
    sqlite3_stmt* statement = handleOf(inQuery);
    for (int i = 0; statement && i < sqlite3_column_count(statement); ++i)
        types.append(wordOf(QString::fromUtf8(sqlite3_column_decltype(statement, i))));
    return types;
}

} // namespace

KySqliteProcedures::KySqliteProcedures(KyDatabaseSettings inSettings, QString inFolder)
    : mConnection(std::move(inSettings))
    , mFolder(std::move(inFolder))
{}

RnResult KySqliteProcedures::execStoredProcedure(const std::string& inName, const Parameters& inParameters,
                                                 Rows& outRows, std::vector<std::string>& outColumnTypes)
{
    const QString name = QString::fromLatin1(inName.data(), qsizetype(inName.size()));
    QString error;
    const KySqlScript* procedure = script(name, error);
    if (!procedure)
        return failure(error);

    Values values;
    for (const auto& [latin1Name, value] : inParameters) {
        const QString parameter = QString::fromLatin1(latin1Name.c_str());
        if (!procedure->hasParameter(parameter))
            return failure(QStringLiteral("The procedure %1 has no parameter %2").arg(name, parameter));
        values.insert(parameter.toLower(),
                      value ? QVariant(QString::fromLatin1(value->data(), qsizetype(value->size())))
                            : QVariant());
    }
    return run(*procedure, values, outRows, outColumnTypes, error) ? RnResult::ok() : failure(error);
}

/// Read again when the file has changed.
const KySqlScript* KySqliteProcedures::script(const QString& inName, QString& outError)
{
    static const QRegularExpression valid(QStringLiteral("\\A[A-Za-z0-9_-]+\\z"));
    const QFileInfo info(QDir(mFolder).filePath(inName + QStringLiteral(".sql")));
    if (!valid.match(inName).hasMatch() || !info.isFile()) {
        outError = QStringLiteral("There is no procedure %1").arg(inName);
        return nullptr;
    }
    Cached& cached = mScripts[inName];
    if (cached.modified == info.lastModified() && cached.size == info.size())
        return &cached.script;

    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly)) {
        outError = QStringLiteral("The procedure %1 cannot be read: %2").arg(inName, file.errorString());
        mScripts.remove(inName);
        return nullptr;
    }
    cached = {info.lastModified(), info.size(), KySqlScript(QString::fromUtf8(file.readAll()))};
    return &cached.script;
}

bool KySqliteProcedures::run(const KySqlScript& inScript, const Values& inValues, Rows& outRows,
                             std::vector<std::string>& outColumnTypes, QString& outError)
{
    const bool hasMany = inScript.statements().size() > 1;
    if (hasMany && !mConnection.execute(QStringLiteral("begin immediate"), outError))
        return false;
    bool isOk = true;
    for (const KySqlScript::Statement& statement : inScript.statements())
        isOk = isOk && run(statement, inScript, inValues, outRows, outColumnTypes, outError);
    isOk = isOk && (!hasMany || mConnection.execute(QStringLiteral("commit"), outError, true));
    if (!isOk && hasMany) {
        QString ignored; // some failures have ended the transaction already
        mConnection.execute(QStringLiteral("rollback"), ignored, true);
    }
    return isOk;
}

bool KySqliteProcedures::run(const KySqlScript::Statement& inStatement, const KySqlScript& inScript,
                             const Values& inValues, Rows& outRows, std::vector<std::string>& outColumnTypes,
                             QString& outError)
{
    QSqlQuery query;
    if (!mConnection.prepare(query, inStatement.text, outError))
        return false;
    query.setForwardOnly(true);
    for (const QString& parameter : inStatement.parameters)
        query.bindValue(QLatin1Char(':') + parameter, inValues.value(parameter.toLower()));
    if (!query.exec()) {
        outError = KySqlConnection::errorText(query);
        return false;
    }
    if (!query.isSelect())
        return true;
    outRows.clear();
    outColumnTypes.clear();
    const QStringList types =
        inScript.columnTypes().isEmpty() ? declaredTypes(query) : inScript.columnTypes();
    KySqlRows::read(query, types, outRows, outColumnTypes);
    if (!query.lastError().isValid())
        return true;
    outError = KySqlConnection::errorText(query);
    return false;
}

#include "KyPostgresProcedures.h"

#include "KySqlRows.h"

#include <QtCore/QRegularExpression>
#include <QtSql/QSqlError>
#include <QtSql/QSqlField>
#include <QtSql/QSqlQuery>
#include <QtSql/QSqlRecord>

#include <map>

namespace {

RnResult failure(const QString& inText)
{
    return RnResult::failure(inText.toLatin1().toStdString());
}

constexpr int VoidType = 2278;

/// By the numbers of the database's own types.
QString wordOf(int inType)
{
    static const std::map<int, const char*> words = {
        {16, "bit"},
        {21, "smallint"},
        {23, "int"},
        {20, "bigint"},
        {700, "real"},
        {701, "float"},
        {1114, "datetime2"},
        {1184, "datetimeoffset"},
        {1082, "date"},
        {1083, "time"},
        {1700, "decimal"},
        {17, "varbinary"},
        {2950, "uniqueidentifier"},
        {25, "nvarchar"},
    };
    const auto word = words.find(inType);
    return QLatin1String(word == words.end() ? "nvarchar" : word->second);
}

bool isName(const QString& inName)
{
    static const QRegularExpression valid(
        QStringLiteral("\\A[A-Za-z_\u00c0-\u00ff][A-Za-z0-9_\u00c0-\u00ff]*\\z"));
    return valid.match(inName).hasMatch();
}

/// As the database does it to a name without quotes; only for what isName() holds.
QString quoted(const QString& inName)
{
    QString folded = inName;
    for (QChar& c : folded) {
        if (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))
            c = c.toLower();
    }
    return QLatin1Char('"') + folded + QLatin1Char('"');
}

/// The statement that calls the function; empty, with the reason, for names that can't be such.
QString statement(const QString& inName, const QStringList& inParameters, QString& outError)
{
    QStringList names;
    for (const QString& part : inName.split(QLatin1Char('.'))) {
        if (!isName(part) || names.size() == 2) {
            outError = QStringLiteral("There is no procedure %1").arg(inName);
            return QString();
        }
        names.append(quoted(part));
    }
    QStringList arguments;
    for (const QString& parameter : inParameters) {
        if (!isName(parameter)) {
            outError = QStringLiteral("The procedure %1 has no parameter %2").arg(inName, parameter);
            return QString();
        }
        arguments.append(quoted(parameter) + QStringLiteral(" => ?"));
    }
    return QStringLiteral("select * from %1(%2)")
        .arg(names.join(QLatin1Char('.')), arguments.join(QStringLiteral(", ")));
}

} // namespace

KyPostgresProcedures::KyPostgresProcedures(KyDatabaseSettings inSettings)
    : mConnection(std::move(inSettings))
{}

RnResult KyPostgresProcedures::execStoredProcedure(const std::string& inName, const Parameters& inParameters,
                                                   Rows& outRows, std::vector<std::string>& outColumnTypes)
{
    QStringList parameters;
    for (const auto& [name, value] : inParameters)
        parameters.append(QString::fromLatin1(name.data(), qsizetype(name.size())));
    QString error;
    const QString sql =
        statement(QString::fromLatin1(inName.data(), qsizetype(inName.size())), parameters, error);
    QSqlQuery query;
    if (sql.isEmpty() || !mConnection.prepare(query, sql, error))
        return failure(error);

    for (const auto& [name, value] : inParameters)
        query.addBindValue(value ? QVariant(QString::fromLatin1(value->data(), qsizetype(value->size())))
                                 : QVariant());
    if (!query.exec())
        return failure(KySqlConnection::errorText(query));

    const QSqlRecord record = query.record();
    if (record.count() == 1 && record.field(0).typeID() == VoidType)
        return RnResult::ok();
    QStringList types;
    for (int i = 0; i < record.count(); ++i)
        types.append(wordOf(record.field(i).typeID()));
    KySqlRows::read(query, types, outRows, outColumnTypes);
    return query.lastError().isValid() ? failure(KySqlConnection::errorText(query)) : RnResult::ok();
}

#include "KySqlConnection.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QTimeZone>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>

#include <atomic>
#include <utility>

namespace {

QString nextConnectionName()
{
    static std::atomic<int> count = 0;
    return QStringLiteral("kysite-%1").arg(++count);
}

/// Without the statement that PostgreSQL shows, which is the driver's, and without its number.
QString withoutNoise(const QString& inMessage)
{
    static const QRegularExpression shown(QStringLiteral("\nLINE \\d+:[^\n]*\n[^\n]*\\^"));
    static const QRegularExpression number(QStringLiteral("\n\\([0-9A-Z]{5}\\)$"));
    static const QRegularExpression head(QStringLiteral("^(ERROR|FATAL): +"));
    QString text = inMessage.trimmed();
    return text.remove(shown).remove(number).remove(head).trimmed();
}

QString textOf(const QSqlError& inError)
{
    const QString text = withoutNoise(inError.databaseText());
    return text.isEmpty() ? inError.driverText() : text;
}

} // namespace

KySqlConnection::KySqlConnection(KyDatabaseSettings inSettings)
    : mSettings(std::move(inSettings))
    , mConnectionName(nextConnectionName())
{}

KySqlConnection::~KySqlConnection()
{
    close();
}

QSqlDatabase KySqlConnection::database() const
{
    return QSqlDatabase::database(mConnectionName, false);
}

void KySqlConnection::close()
{
    if (!QSqlDatabase::contains(mConnectionName))
        return;
    database().close();
    QSqlDatabase::removeDatabase(mConnectionName);
}

bool KySqlConnection::open(QString& outError)
{
    if (QSqlDatabase::contains(mConnectionName)) {
        if (database().isOpen())
            return true;
        close();
    }
    const bool isSqlite = mSettings.kind == KyDatabaseSettings::Kind::Sqlite;
    const QString driver = isSqlite ? QStringLiteral("QSQLITE") : QStringLiteral("QPSQL");
    if (!QSqlDatabase::isDriverAvailable(driver)) {
        outError = QStringLiteral("Qt's database driver %1 is not installed").arg(driver);
        return false;
    }
    QSqlDatabase database = QSqlDatabase::addDatabase(driver, mConnectionName);
    database.setDatabaseName(mSettings.name);
    if (isSqlite) {
        database.setConnectOptions(
            QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(mSettings.timeoutSeconds * 1000));
    } else {
        database.setHostName(mSettings.host);
        database.setPort(mSettings.port);
        database.setUserName(mSettings.user);
        database.setPassword(mSettings.password);
        database.setConnectOptions(QStringLiteral("connect_timeout=%1;application_name=kyscript%2%3")
                                       .arg(QString::number(std::max(2, mSettings.timeoutSeconds)),
                                            mSettings.options.isEmpty() ? QString() : QStringLiteral(";"),
                                            mSettings.options));
        database.setNumericalPrecisionPolicy(QSql::HighPrecision);
    }
    if (database.open() && configure(outError))
        return true;
    if (outError.isEmpty())
        outError = textOf(database.lastError());
    database = QSqlDatabase();
    close();
    return false;
}

/// Dates of the client are in its own zone. A log of SQLite beside the file lets others read meanwhile.
bool KySqlConnection::configure(QString& outError)
{
    const int limit = mSettings.timeoutSeconds * 1000;
    const QString zone = QString::fromLatin1(QTimeZone::systemTimeZoneId());
    const QStringList statements =
        mSettings.kind == KyDatabaseSettings::Kind::Sqlite
            ? QStringList{QStringLiteral("pragma journal_mode = wal"),
                          QStringLiteral("pragma foreign_keys = on")}
            : QStringList{QStringLiteral("set statement_timeout = %1").arg(limit),
                          QStringLiteral("set time zone '%1'").arg(QString(zone).remove(QLatin1Char('\'')))};
    for (const QString& statement : statements) {
        QSqlQuery query(database());
        if (!query.exec(statement)) {
            outError = errorText(query);
            return false;
        }
    }
    return true;
}

/// \a inAttempt gets a query of the connection and does something that has no effect when it fails.
template <class Attempt>
bool KySqlConnection::attempt(QString& outError, bool inIsInTransaction, const Attempt& inAttempt)
{
    const bool mayTryAgain = QSqlDatabase::contains(mConnectionName) && !inIsInTransaction;
    for (const bool isLast : {!mayTryAgain, true}) {
        outError.clear();
        if (!open(outError))
            return false;
        QSqlQuery query(database());
        if (inAttempt(query))
            return true;
        outError = errorText(query);
        if (isLast || !isLost(query))
            return false;
        query = QSqlQuery();
        close();
    }
    return false;
}

bool KySqlConnection::prepare(QSqlQuery& outQuery, const QString& inSql, QString& outError,
                              bool inIsInTransaction)
{
    return attempt(outError, inIsInTransaction, [&](QSqlQuery& ioQuery) {
        const bool isPrepared = ioQuery.prepare(inSql);
        if (isPrepared)
            outQuery = std::move(ioQuery);
        return isPrepared;
    });
}

bool KySqlConnection::execute(const QString& inSql, QString& outError, bool inIsInTransaction)
{
    return attempt(outError, inIsInTransaction, [&](QSqlQuery& ioQuery) { return ioQuery.exec(inSql); });
}

/// A failure of PostgreSQL itself has a number; those of the administrator's and of crashes begin with 57P.
bool KySqlConnection::isLost(const QSqlQuery& inQuery) const
{
    if (mSettings.kind == KyDatabaseSettings::Kind::Sqlite)
        return false;
    const QString number = inQuery.lastError().nativeErrorCode();
    return number.isEmpty() || number.startsWith(QLatin1String("57P")) ||
           number.startsWith(QLatin1String("08"));
}

QString KySqlConnection::errorText(const QSqlQuery& inQuery)
{
    return textOf(inQuery.lastError());
}

#pragma once

#include <QtCore/QString>

class QSqlDatabase;
class QSqlQuery;

/// Where a database is, and how it is reached.
struct KyDatabaseSettings
{
    enum class Kind
    {
        Sqlite,
        Postgres
    };

    Kind kind = Kind::Sqlite;
    QString name; ///< The file of SQLite, the database of PostgreSQL.
    QString host;
    int port = 5432;
    QString user;
    QString password; ///< Empty leaves it to the driver, which looks into the user's password file.
    /// Further options of the driver, such as "sslmode=verify-full;sslrootcert=FILE".
    QString options;
    /// How long one statement may take, and how long it waits for another client's lock.
    int timeoutSeconds = 10;
};

/// A connection to a database, opened when it is needed and again when it was lost. For one thread.
class KySqlConnection
{
public:
    explicit KySqlConnection(KyDatabaseSettings inSettings);
    ~KySqlConnection();
    KySqlConnection(const KySqlConnection&) = delete;
    KySqlConnection& operator=(const KySqlConnection&) = delete;

    /// Opens the connection unless it is open. False, with the database's message, when that fails.
    bool open(QString& outError);
    /// Closes it; the next open() makes a new one. No query of it may be left.
    void close();

    /// Of that connection; only while it is open.
    QSqlDatabase database() const;

    /// Prepares \a inSql. A connection that has been lost since its last use is opened again, once: nothing
    /// has been done by the statement then. Inside a transaction it is not.
    bool prepare(QSqlQuery& outQuery, const QString& inSql, QString& outError,
                 bool inIsInTransaction = false);
    /// Runs a statement without parameters, such as one that begins a transaction or makes a table. It may be
    /// run a second time when the connection is lost.
    bool execute(const QString& inSql, QString& outError, bool inIsInTransaction = false);
    /// Whether the connection itself has failed, after a query did.
    bool isLost(const QSqlQuery& inQuery) const;

    const KyDatabaseSettings& settings() const { return mSettings; }

    /// The message of the database after a query has failed, without the driver's own words.
    static QString errorText(const QSqlQuery& inQuery);

private:
    template <class Attempt>
    bool attempt(QString& outError, bool inIsInTransaction, const Attempt& inAttempt);
    bool configure(QString& outError);

    const KyDatabaseSettings mSettings;
    const QString mConnectionName;
};

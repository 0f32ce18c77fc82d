#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/// A private PostgreSQL on a port of the loopback interface, of an unprivileged user also where tests run as
/// root. Started by the constructor and ended by the destructor; it ends with the test, too, when that
/// crashes.
class PostgresServer
{
public:
    PostgresServer();
    ~PostgresServer();

    /// The folder of its programs; empty when it is not installed, or Qt has no driver for it.
    static QString programs();

    bool isRunning() const { return mProcess && mProcess->state() == QProcess::Running; }
    quint16 port() const { return mPort; }
    /// The one user, who needs no password, and the one database.
    static QString user() { return QStringLiteral("ky"); }
    static QString database() { return QStringLiteral("postgres"); }

    /// Runs a text of SQL; gives what the database complains about.
    QString run(const QString& inSql) const;

    /// Ends it at once, and begins again on the same port and with the same data.
    void stop();
    bool start();
    /// Halts it where it is, and lets it go on.
    void freeze(bool inIsFrozen);

    /// What its own log says.
    QByteArray log() const;

private:
    QStringList unprivileged() const;
    bool initialise();

    const QTemporaryDir mFolder;
    std::unique_ptr<QProcess> mProcess;
    quint16 mPort = 0;
};

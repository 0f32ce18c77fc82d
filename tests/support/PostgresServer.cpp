#include "PostgresServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <csignal>
#include <unistd.h>

namespace {

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

bool execute(const QStringList& inCommand)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(inCommand.first(), inCommand.mid(1));
    return process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

} // namespace

QString PostgresServer::programs()
{
    const QDir versions(QStringLiteral("/usr/lib/postgresql"));
    for (const QString& version :
         versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::Reversed))
    {
        const QString folder = versions.filePath(version + "/bin");
        if (QFile::exists(folder + "/initdb") && QFile::exists(folder + "/postgres"))
            return folder;
    }
    return QString();
}

/// PostgreSQL refuses to run as root.
QStringList PostgresServer::unprivileged() const
{
    QStringList command{"setpriv", "--pdeathsig", "QUIT"};
    if (geteuid() == 0)
        command += QStringList{"--reuid", "nobody", "--regid", "nogroup", "--clear-groups"};
    return command;
}

bool PostgresServer::initialise()
{
    if (geteuid() == 0 && ::chown(QFile::encodeName(mFolder.path()).constData(), 65534, 65534) != 0)
        return false;
    return execute(unprivileged() + QStringList{programs() + "/initdb", "-D", mFolder.filePath("data"), "-U",
                                                user(), "-A", "trust", "-E", "UTF8", "--locale=C",
                                                "--no-sync"});
}

PostgresServer::PostgresServer()
{
    if (programs().isEmpty() || !initialise())
        return;
    for (int attempt = 0; attempt < 5 && !isRunning(); ++attempt) { // another may take the port meanwhile
        mPort = freePort();
        start();
    }
}

PostgresServer::~PostgresServer()
{
    stop();
}

bool PostgresServer::start()
{
    mProcess = std::make_unique<QProcess>();
    mProcess->setProcessChannelMode(QProcess::MergedChannels);
    mProcess->setStandardOutputFile(mFolder.filePath("log"), QIODevice::Append);
    const QStringList command = unprivileged() + QStringList{programs() + "/postgres",
                                                             "-D",
                                                             mFolder.filePath("data"),
                                                             "-p",
                                                             QString::number(mPort),
                                                             "-c",
                                                             "listen_addresses=127.0.0.1",
                                                             "-c",
                                                             "unix_socket_directories=",
                                                             "-c",
                                                             "fsync=off",
                                                             "-c",
                                                             "max_connections=20"};
    mProcess->start(command.first(), command.mid(1));
    QElapsedTimer clock;
    clock.start();
    while (mProcess->waitForStarted() && isRunning() && clock.elapsed() < 120000) {
        if (run("select 1").isEmpty())
            return true;
        if (mProcess->waitForFinished(50))
            break;
    }
    return false;
}

void PostgresServer::stop()
{
    if (!isRunning())
        return;
    freeze(false);
    ::kill(pid_t(mProcess->processId()), SIGINT);
    if (!mProcess->waitForFinished(20000))
        mProcess->kill();
    mProcess->waitForFinished(5000);
}

void PostgresServer::freeze(bool inIsFrozen)
{
    if (isRunning())
        ::kill(pid_t(mProcess->processId()), inIsFrozen ? SIGSTOP : SIGCONT);
}

QString PostgresServer::run(const QString& inSql) const
{
    QProcess psql;
    psql.start(programs() + "/psql", {"-X", "-q", "-v", "ON_ERROR_STOP=1", "-h", "127.0.0.1", "-p",
                                      QString::number(mPort), "-U", user(), "-d", database(), "-f", "-"});
    psql.write(inSql.toUtf8());
    psql.closeWriteChannel();
    if (!psql.waitForFinished(60000))
        return QStringLiteral("no answer");
    return psql.exitCode() == 0 ? QString() : QString::fromUtf8(psql.readAllStandardError());
}

QByteArray PostgresServer::log() const
{
    QFile file(mFolder.filePath("log"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

#include "Peers.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>

QString Peers::program(const QString& inName)
{
    const QString found = QStandardPaths::findExecutable(inName);
    return found.isEmpty() ? QStandardPaths::findExecutable(inName, {"/usr/sbin", "/usr/bin"}) : found;
}

QString Peers::file(const QString& inName)
{
    return QDir(PEER_SOURCES).filePath(inName);
}

QString Peers::python()
{
    return QFile::exists("/usr/bin/python3") ? QString("/usr/bin/python3") : program("python3");
}

bool Peers::hasPython(const QString& inModule)
{
    return !python().isEmpty() && QProcess::execute(python(), {"-c", "import " + inModule}) == 0;
}

QString Peers::node()
{
    return program("node");
}

bool Peers::hasNode(const QString& inModule)
{
    return !node().isEmpty() && QFile::exists(fileOfModule(inModule));
}

QString Peers::fileOfModule(const QString& inName)
{
    return QDir(PEER_MODULES).filePath(inName);
}

QStringList Peers::nodeEnvironment()
{
    return {"NODE_PATH=" PEER_MODULES};
}

int Peers::freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

SelfSignedCertificate::SelfSignedCertificate()
{
    QProcess openssl;
    openssl.start("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
                              "/CN=localhost", "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1",
                              "-keyout", key(), "-out", certificate()});
    mIsValid = openssl.waitForFinished(60000) && openssl.exitCode() == 0;
}

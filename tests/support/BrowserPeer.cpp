#include "BrowserPeer.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <csignal>

namespace {

constexpr int sPatience = 30'000;

} // namespace

BrowserPeer::BrowserPeer()
    : mTemporaryFolder(qgetenv("TMPDIR"))
{
    qputenv("TMPDIR", QFile::encodeName(mSockets.path()));
    QDir(mFolder.path()).mkdir("browser");
    QFile::link(BROWSER_PEER, program());
    mServer.listen(file("control"));
}

BrowserPeer::~BrowserPeer()
{
    if (mTemporaryFolder.isNull())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", mTemporaryFolder);
}

QString BrowserPeer::folder() const
{
    return file("browser");
}

QString BrowserPeer::program() const
{
    return file("browser/ovbrowser.exe");
}

QString BrowserPeer::file(const QString& inName) const
{
    return mFolder.filePath(inName);
}

QStringList BrowserPeer::arguments(const QStringList& inOptions) const
{
    return inOptions + QStringList{"--log=" + file("log"), "--control=" + file("control")};
}

/// It connects before its pipe does.
bool BrowserPeer::waitForControl()
{
    do {
        while (QLocalSocket* next = mServer.nextPendingConnection()) {
            delete mControl;
            mControl = next;
        }
    } while (mServer.waitForNewConnection(mControl ? 0 : sPatience));
    return mControl;
}

bool BrowserPeer::order(const QString& inOrder)
{
    if (!waitForControl())
        return false;
    mControl->readAll();
    mControl->write(inOrder.toUtf8() + '\n');
    mControl->flush();
    return mControl->waitForReadyRead(sPatience) && mControl->readAll() == "ok\n";
}

bool BrowserPeer::send(const QString& inText)
{
    const bool isSent = order("send " + inText);
    QCoreApplication::processEvents();
    return isSent;
}

QByteArray BrowserPeer::read(const QString& inName) const
{
    QFile file(this->file(inName));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray BrowserPeer::received() const
{
    return read("log");
}

QList<QStringList> BrowserPeer::starts() const
{
    QList<QStringList> starts;
    QStringList lines = QString::fromUtf8(read("log.args")).split('\n');
    lines.removeLast();
    for (const QString& line : lines) {
        if (line == "start")
            starts.append(QStringList());
        else
            starts.last().append(line);
    }
    return starts;
}

QList<qint64> BrowserPeer::ids() const
{
    QList<qint64> ids;
    for (const QByteArray& line : read("log.pid").split('\n')) {
        if (!line.isEmpty())
            ids.append(line.toLongLong());
    }
    return ids;
}

bool BrowserPeer::isAlive(qint64 inId)
{
    return kill(pid_t(inId), 0) == 0;
}

QStringList BrowserPeer::sockets() const
{
    return QDir(mSockets.path())
        .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
}

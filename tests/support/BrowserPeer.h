#pragma once

#include <QByteArray>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStringList>
#include <QTemporaryDir>

/// A folder with a program "ovbrowser.exe" that does what a test tells it to, and the test's hand on it.
///
/// Sockets of the tests' own process stand in a folder of this object's, too, as long as it lives: what is
/// left of them there can be seen. Its programs end with their pipes.
class BrowserPeer final
{
public:
    BrowserPeer();
    ~BrowserPeer();
    BrowserPeer(const BrowserPeer&) = delete;
    BrowserPeer& operator=(const BrowserPeer&) = delete;

    /// Where the program is.
    QString folder() const;
    QString program() const;
    /// A path in a folder for the test's files.
    QString file(const QString& inName) const;

    /// The program's arguments: \a inOptions, and where to tell what it does.
    QStringList arguments(const QStringList& inOptions = QStringList()) const;

    /// Gives an order to the program that connected last and waits until it has been followed.
    bool order(const QString& inOrder);
    /// Orders it to send a text and lets this process read what is there.
    bool send(const QString& inText);

    /// All that has come through pipes.
    QByteArray received() const;
    /// The arguments of each start.
    QList<QStringList> starts() const;
    /// The ids of the programs started.
    QList<qint64> ids() const;
    static bool isAlive(qint64 inId);

    /// The files of sockets that are there now.
    QStringList sockets() const;

private:
    QByteArray read(const QString& inName) const;
    bool waitForControl();

    QTemporaryDir mFolder;
    QTemporaryDir mSockets;
    QByteArray mTemporaryFolder;
    QLocalServer mServer;
    QLocalSocket* mControl = nullptr;
};

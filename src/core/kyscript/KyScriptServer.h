#pragma once

#include <QtCore/QObject>
#include <QtCore/QStringList>

/// The global `Server`: facts of the client, of its user, and of the servers that it talks to. Owned by the
/// engine.
///
/// Each read asks the platform again; nothing is kept, and nothing can be written. In a session without a
/// render server, a backend or a user, the texts about them are empty. Nothing here logs, reports a contract
/// or throws. GUI thread only.
class KyScriptServer : public QObject
{
    Q_OBJECT
    /// The client's architecture.
    Q_PROPERTY(QString clientArch READ clientArch)
    /// Name and version of the operating system.
    Q_PROPERTY(QString osName READ osName)
    /// Physical memory of this machine in bytes; 0 when the system does not tell.
    Q_PROPERTY(qlonglong physMemTotal READ physMemTotal)
    /// The name of this machine in its network.
    Q_PROPERTY(QString clientHostName READ clientHostName)
    /// Language of the user interface; "en" when none was chosen.
    Q_PROPERTY(QString clientLanguage READ clientLanguage)
    Q_PROPERTY(QString clientVersion READ clientVersion)
    /// Version of the protocol between client and render server.
    Q_PROPERTY(QString protocolVersion READ protocolVersion)
    Q_PROPERTY(QString renderServerVersion READ renderServerVersion)
    /// Who is logged in.
    Q_PROPERTY(QString userName READ userName)
    /// What the user may do: the name of a level, and its number as text.
    Q_PROPERTY(QString userLevel READ userLevel)
    Q_PROPERTY(QString userLevelId READ userLevelId)
    /// Names of the user's groups.
    Q_PROPERTY(QStringList orvaneLocalGroups READ orvaneLocalGroups)
    /// Addresses of the servers, for people and for calls.
    Q_PROPERTY(QString backendAddress READ backendAddress)
    Q_PROPERTY(QString renderServerAddress READ renderServerAddress)
    Q_PROPERTY(QString sessionID READ sessionID)

public:
    explicit KyScriptServer(QObject* parent);

    QString clientArch() const;
    QString osName() const;
    qlonglong physMemTotal() const;
    QString clientHostName() const;
    QString clientLanguage() const;
    QString clientVersion() const;
    QString protocolVersion() const;
    QString renderServerVersion() const;
    QString userName() const;
    QString userLevel() const;
    QString userLevelId() const;
    QStringList orvaneLocalGroups() const;
    QString backendAddress() const;
    QString renderServerAddress() const;
    QString sessionID() const;
};

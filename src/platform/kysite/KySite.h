#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <memory>

class KyReportLockStore;
class KyWorklistStore;
class OvBackend;
class OvDatabase;
class OvTokenSource;
class OvUserRights;
struct KyDatabaseSettings;

/// What the configuration of a profile says: the database, the backend, the keys for tokens, the user's
/// rights and the archive, each installed behind its port for as long as this lives. GUI thread.
///
/// The configuration is the file "site.json" of the profile, all of whose members may be missing:
///
///     {"database": {"kind": "postgresql", "host": "db.example", "port": 5432, "name": "site", "user":
///     "reader",
///                   "passwordFile": "db-password", "options": "sslmode=verify-full", "timeoutSeconds": 10},
///      "backend": {"url": "https://backend.example/call", "caFile": "ca.pem", "timeoutSeconds": 60},
///      "archive": {"url": "https://archive.example/dicom-web", "caFile": "ca.pem", "cacheMegabytes": 4096},
///      "user": {"level": 30, "levelName": "Radiologist",
///               "groups": [{"name": "Radiology", "description": "all of them"}]}}
///
/// Without "database" procedures are files of SQL in the folder "procedures", run on the file
/// "database.sqlite"; {"kind": "sqlite", "file": FILE} names another file. Without "backend" classes are
/// files of JavaScript in the folder "backend". With "database" the worklist and the locks of reports are in
/// it, else in files. Tokens are told by "tokens.json". Paths are relative to the profile.
///
/// Without a profile there is nothing of this. A file that holds no JSON object is told in the log, at level
/// 3, and there is no database and no backend then.
class KySite
{
public:
    explicit KySite(const QString& inProfile);
    ~KySite();
    KySite(const KySite&) = delete;
    KySite& operator=(const KySite&) = delete;

    /// The backend's address; empty for the embedded one.
    QString backendAddress() const;
    /// Whether the worklist and the locks are in the database; they are made on demand, for their owner.
    bool hasSharedDatabase() const;
    std::unique_ptr<KyWorklistStore> makeWorklist() const;
    std::unique_ptr<KyReportLockStore> makeReportLocks() const;

    struct Archive
    {
        QString url; ///< Empty without one.
        QString caFile;
        QString cacheFolder;
        qint64 cacheBytes = 0;
    };
    Archive archive() const;

private:
    void read();
    QString path(const QString& inFile) const;
    KyDatabaseSettings databaseSettings() const;
    void makePorts();
    void takeRights();

    const QString mProfile;
    QJsonObject mConfiguration;
    bool mIsUsable = false;
    std::unique_ptr<OvUserRights> mRights;
    std::unique_ptr<OvDatabase> mDatabase;
    std::unique_ptr<OvBackend> mBackend;
    std::unique_ptr<OvTokenSource> mTokens;
};

#include "KySite.h"

#include "KyHttpBackend.h"
#include "KyJwtSource.h"
#include "KyPostgresProcedures.h"
#include "KySqlReportLockStore.h"
#include "KySqlWorklistStore.h"
#include "KySqliteProcedures.h"
#include "KyWorkerBackend.h"

#include <ovbase/OvBackendPeer.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace {

constexpr QLatin1String Database("database");
constexpr QLatin1String Backend("backend");
constexpr QLatin1String Url("url");
constexpr QLatin1String CaFile("caFile");
constexpr QLatin1String Timeout("timeoutSeconds");
constexpr int DefaultCacheMegabytes = 4096;

void complain(const QString& inText)
{
    getTheLogInstance().trace(3, "Site", inText.toLatin1().constData());
}

} // namespace

KySite::KySite(const QString& inProfile)
    : mProfile(inProfile)
{
    if (mProfile.isEmpty())
        return;
    read();
    takeRights();
    mTokens = std::make_unique<KyJwtSource>(path(QStringLiteral("tokens.json")));
    if (mIsUsable)
        makePorts();
}

KySite::~KySite() = default;

QString KySite::path(const QString& inFile) const
{
    return inFile.isEmpty() ? QString() : QDir(mProfile).absoluteFilePath(inFile);
}

void KySite::read()
{
    QFile file(path(QStringLiteral("site.json")));
    if (!file.exists()) {
        mIsUsable = true;
        return;
    }
    QJsonParseError error;
    const QJsonDocument document =
        file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll(), &error) : QJsonDocument();
    mIsUsable = document.isObject();
    if (mIsUsable)
        mConfiguration = document.object();
    else
        complain(QStringLiteral("%1 holds no JSON object: %2")
                     .arg(file.fileName(), file.isOpen() ? error.errorString() : file.errorString()));
}

void KySite::takeRights()
{
    const QJsonObject user = mConfiguration.value(QLatin1String("user")).toObject();
    mRights = std::make_unique<OvUserRights>();
    mRights->level = user.value(QLatin1String("level")).toInt();
    mRights->levelName = user.value(QLatin1String("levelName")).toString().toLatin1().toStdString();
    for (const QJsonValue& group : user.value(QLatin1String("groups")).toArray()) {
        mRights->groups.push_back(
            {group.toObject().value(QLatin1String("name")).toString().toStdString(),
             group.toObject().value(QLatin1String("description")).toString().toStdString()});
    }
}

KyDatabaseSettings KySite::databaseSettings() const
{
    const QJsonObject json = mConfiguration.value(Database).toObject();
    KyDatabaseSettings settings;
    settings.timeoutSeconds = std::max(1, json.value(Timeout).toInt(settings.timeoutSeconds));
    if (json.value(QLatin1String("kind")).toString() != QLatin1String("postgresql")) {
        settings.name = path(json.value(QLatin1String("file")).toString(QStringLiteral("database.sqlite")));
        return settings;
    }
    settings.kind = KyDatabaseSettings::Kind::Postgres;
    settings.host = json.value(QLatin1String("host")).toString(QStringLiteral("localhost"));
    settings.port = json.value(QLatin1String("port")).toInt(settings.port);
    settings.name = json.value(QLatin1String("name")).toString();
    settings.user = json.value(QLatin1String("user")).toString();
    settings.options = json.value(QLatin1String("options")).toString();
    QFile password(path(json.value(QLatin1String("passwordFile")).toString()));
    if (!password.fileName().isEmpty() && password.open(QIODevice::ReadOnly))
        settings.password = QString::fromUtf8(password.readAll()).trimmed();
    else if (!password.fileName().isEmpty())
        complain(QStringLiteral("%1 cannot be read").arg(password.fileName()));
    return settings;
}

void KySite::makePorts()
{
    const KyDatabaseSettings database = databaseSettings();
    if (database.kind == KyDatabaseSettings::Kind::Postgres)
        mDatabase = std::make_unique<KyPostgresProcedures>(database);
    else
        mDatabase = std::make_unique<KySqliteProcedures>(database, path(QStringLiteral("procedures")));

    constexpr int defaultSeconds = 60;
    const QJsonObject json = mConfiguration.value(Backend).toObject();
    const int seconds = std::max(1, json.value(Timeout).toInt(defaultSeconds));
    if (backendAddress().isEmpty())
        mBackend = std::make_unique<KyWorkerBackend>(path(QStringLiteral("backend")), seconds);
    else
        mBackend = std::make_unique<KyHttpBackend>(QUrl(backendAddress()),
                                                   path(json.value(CaFile).toString()), seconds);
}

QString KySite::backendAddress() const
{
    return mConfiguration.value(Backend).toObject().value(Url).toString();
}

bool KySite::hasSharedDatabase() const
{
    return mConfiguration.value(Database).isObject();
}

std::unique_ptr<KyWorklistStore> KySite::makeWorklist() const
{
    return std::make_unique<KySqlWorklistStore>(databaseSettings());
}

std::unique_ptr<KyReportLockStore> KySite::makeReportLocks() const
{
    return std::make_unique<KySqlReportLockStore>(databaseSettings());
}

KySite::Archive KySite::archive() const
{
    const QJsonObject json = mConfiguration.value(QLatin1String("archive")).toObject();
    const int megabytes = json.value(QLatin1String("cacheMegabytes")).toInt(DefaultCacheMegabytes);
    return {json.value(Url).toString(), path(json.value(CaFile).toString()),
            path(QStringLiteral("archive-cache")), qint64(std::max(1, megabytes)) << 20};
}

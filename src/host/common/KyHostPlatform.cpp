#include "KyHostPlatform.h"

#include "KyViewerLayout.h"

#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptStudy.h>
#include <kyscript/KyScriptTool.h>

#include <kybase/KyFileWorklistStore.h>
#include <kybase/KyLoadHelper.h>
#include <kybase/KyMemoryWorklistStore.h>
#include <kybase/KyWorklistHelper.h>
#include <kyreporttab/KyFileReportLockStore.h>
#include <ovbase/OvRegistryFileStore.h>
#include <ovwebservice/FolderStudySource.h>

#include <QtCore/QDir>
#include <QtCore/QLocale>
#include <QtCore/QUuid>

#include <algorithm>

namespace {

QString inProfile(const KyHostOptions& inOptions, const char* inName)
{
    return QDir(inOptions.profile).filePath(QLatin1String(inName));
}

std::shared_ptr<OvRegistryStore> settingsStore(const KyHostOptions& inOptions)
{
    if (inOptions.profile.isEmpty())
        return nullptr;
    QDir().mkpath(inOptions.profile);
    return std::make_shared<OvRegistryFileStore>(inProfile(inOptions, "settings"));
}

std::unique_ptr<KyWorklistStore> worklistStore(const KyHostOptions& inOptions, const KySite& inSite)
{
    if (inSite.hasSharedDatabase())
        return inSite.makeWorklist();
    if (inOptions.profile.isEmpty())
        return std::make_unique<KyMemoryWorklistStore>();
    return std::make_unique<KyFileWorklistStore>(inProfile(inOptions, "worklist.json"));
}

std::unique_ptr<KyReportLockStore> reportLockStore(const KyHostOptions& inOptions, const KySite& inSite)
{
    if (inSite.hasSharedDatabase())
        return inSite.makeReportLocks();
    if (inOptions.profile.isEmpty())
        return std::make_unique<KyMemoryReportLockStore>();
    return std::make_unique<KyFileReportLockStore>(inProfile(inOptions, "report-locks.json"));
}

std::unique_ptr<KyArchive> archive(const KyHostOptions& inOptions, const KySite& inSite)
{
    const KySite::Archive ofSite = inSite.archive();
    const QString url = inOptions.archiveUrl.isEmpty() ? ofSite.url : inOptions.archiveUrl;
    if (url.isEmpty())
        return nullptr;
    return std::make_unique<KyArchive>(url, ofSite.caFile, ofSite.cacheFolder, ofSite.cacheBytes);
}

using Entries = std::vector<std::shared_ptr<Ovg::DicomDirectoryEntry>>;

Entries studiesBelow(const QStringList& inFolders, const Ovg::StudySource::Progress& inProgress,
                     KyHostPlatform::Loaded& outLoaded)
{
    if (inFolders.isEmpty())
        return {};
    Ovg::StudySourceResult result = Ovg::FolderStudySource(inFolders).load(inProgress);
    outLoaded.errors += result.errors;
    if (result.studies.empty() && result.errors.isEmpty() && !result.cancelled)
        outLoaded.warnings +=
            QStringLiteral("No DICOM study below %1").arg(inFolders.join(QLatin1String(", ")));
    return std::move(result.studies);
}

void addPatient(const QString& inPatient, const Ovg::StudySource::Progress& inProgress,
                KyHostPlatform::Loaded& outLoaded, Entries& ioStudies)
{
    Ovg::StudySourceResult result = KyArchive::read(KyArchive::folderOf(inPatient), inProgress);
    outLoaded.errors += result.errors;
    if (result.studies.empty() && result.errors.isEmpty() && !result.cancelled)
        outLoaded.warnings += QStringLiteral("The archive has no study of the patient %1").arg(inPatient);
    ioStudies.insert(ioStudies.end(), result.studies.begin(), result.studies.end());
    std::stable_sort(ioStudies.begin(), ioStudies.end(),
                     [](const auto& inA, const auto& inB) { return *inA < *inB; });
}

} // namespace

KyHostPlatform::KyHostPlatform(const KyHostOptions& inOptions)
    : mOptions(inOptions)
    , mSettingsFolder(inOptions.profile)
    , mRegistry(settingsStore(inOptions))
    , mSessionLog(inOptions.profile.isEmpty() ? QString() : inProfile(inOptions, "session.log"))
    , mSite(inOptions.profile)
    , mWorklist(worklistStore(inOptions, mSite))
    , mReportLocks(reportLockStore(inOptions, mSite))
{
    KyViewerLayout::registerProperties();
    mFacts.organizationName = "Ky";
    mFacts.applicationRegistryName = "Workstation";
    mFacts.userName = qgetenv("USER").constData();
    mFacts.sessionId = QUuid::createUuid().toByteArray(QUuid::WithoutBraces).constData();
    mFacts.language = QLocale().name().left(2).toLatin1().constData();
    mFacts.proxyHost = inOptions.proxyHost.toLatin1().constData();
    mFacts.proxyPort = inOptions.proxyPort;
    mFacts.webServiceHostExternal = mSite.backendAddress().toLatin1().constData();
    mArchive = archive(inOptions, mSite);
    KyScriptStudy::worklistDataCB = &KyWorklistHelper::data;
}

KyHostPlatform::~KyHostPlatform()
{
    KyScriptInterface::cleanupInstances();
    KyScriptTool::clearTools();
    KyScriptStudy::worklistDataCB = nullptr;
}

QString KyHostPlatform::applyProperties()
{
    mPool.setDefaultSerializationPriority(OvRegistry::SessionPriority);
    QString failed;
    for (const auto& [id, text] : mOptions.properties) {
        OvVariant* property = mPool.variant(id.toLatin1().toStdString());
        if (!property || !property->setValueFromQString(text)) {
            failed = id;
            break;
        }
    }
    mPool.setDefaultSerializationPriority(OvRegistry::UserPriority);
    return failed;
}

KyHostPlatform::Loaded KyHostPlatform::loadStudies(const Ovg::StudySource::Progress& inProgress)
{
    Loaded loaded;
    Entries primary = studiesBelow(mOptions.studyFolders, inProgress, loaded);
    Entries additional = studiesBelow(mOptions.additionalFolders, inProgress, loaded);
    if (!mOptions.patients.isEmpty() && !mArchive)
        loaded.errors +=
            QStringLiteral("There is no archive for --patient: give --archive URL, or configure one");
    for (const QString& patient : mArchive ? mOptions.patients : QStringList())
        addPatient(patient, inProgress, loaded, primary);
    loaded.primary = int(primary.size());
    loaded.additional = int(additional.size());

    auto* loader = mSession.component<KyLoadHelper>(true);
    if (!primary.empty())
        loader->setPrimaryExams(std::move(primary));
    if (!additional.empty())
        loader->setAdditionalExams(std::move(additional));
    return loaded;
}

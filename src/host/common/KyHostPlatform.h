#pragma once

#include "KyHostOptions.h"
#include "KyReportEditor.h"
#include "KySessionLog.h"
#include "KySettingsFolder.h"

#include <kybase/KyApplication.h>
#include <kybase/KyMonitorManager.h>
#include <kybase/KyNotifiable.h>
#include <kybase/KySessionContext.h>
#include <kybase/KyStudyMetrics.h>
#include <kybase/KyViewerManager.h>
#include <kybase/KyWorklistStore.h>
#include <kyreporttab/JxReport.h>
#include <kyreporttab/KyReportLockStore.h>
#include <kyresources/KyClientFacts.h>
#include <kysite/KyArchive.h>
#include <kysite/KySite.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistry.h>
#include <ovwebservice/StudySource.h>
#include <rnwin/RnCom.h>
#include <rnwin/RnWindows.h>

#include <memory>

/// One set of the platform's objects for a host, in order of need.
///
/// Made behind the QApplication, and ended before it. Its end first lets scripts go of what they have left on
/// screen or running, so that named engines may outlive it. GUI thread only.
class KyHostPlatform
{
public:
    /// Settings, the worklist and the locks of reports are files of the profile folder, or in memory without
    /// one: "settings", "worklist.json" and "report-locks.json". The session log is the file "session.log" of
    /// that folder, and lost without one. What "site.json" of that folder says comes in their place, see
    /// KySite.
    explicit KyHostPlatform(const KyHostOptions& inOptions);
    ~KyHostPlatform();
    KyHostPlatform(const KyHostPlatform&) = delete;
    KyHostPlatform& operator=(const KyHostPlatform&) = delete;

    /// Sets the properties of the options for this process. The first that is unknown, or whose text it
    /// cannot read, is named; empty when all are set.
    QString applyProperties();

    KyReportEditor& reportEditor() { return mReportEditor; }

    /// Studies found, and what went wrong.
    struct Loaded
    {
        int primary = 0;
        int additional = 0;
        QStringList errors;   ///< Folders that could not be read.
        QStringList warnings; ///< Folders without a DICOM study.
    };

    /// Opens the studies of the options: those below the study folders, and those of the patients in the
    /// archive, become the primary ones, those below
    /// the additional folders the additional ones, each in the order of DicomDirectoryEntry. The progress
    /// gets the files of the folder that is being read; false stops the loading.
    Loaded loadStudies(const Ovg::StudySource::Progress& inProgress = {});

private:
    const KyHostOptions mOptions;
    const KySettingsFolder mSettingsFolder;
    OvRegistry mRegistry;
    KySessionLog mSessionLog;
    KyNotifiables mNotifiables;
    KyClientFacts mFacts;
    const KySite mSite;
    std::unique_ptr<KyArchive> mArchive;
    OvPropertyPool mPool;
    std::unique_ptr<KyWorklistStore> mWorklist;
    std::unique_ptr<KyReportLockStore> mReportLocks;
    KyApplication mApplication;
    KyMonitorManager mMonitors;
    KyViewerManager mViewers;
    KyStudyMetrics mMetrics;
    KySessionContext mSession;
    KyReportEditor mReportEditor;
    JxReport mReports;
    const std::unique_ptr<RnWindows> mWindows = RnWindows::ofSystem();
    const std::unique_ptr<RnCom> mCom = RnCom::ofSystem();
};

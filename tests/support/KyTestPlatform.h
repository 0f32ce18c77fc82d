#pragma once

#include <kybase/KyApplication.h>
#include <kybase/KyLoadHelper.h>
#include <kybase/KyMemoryWorklistStore.h>
#include <kybase/KyMonitorManager.h>
#include <kybase/KyNotifiable.h>
#include <kybase/KySessionContext.h>
#include <kybase/KyStudyMetrics.h>
#include <kybase/KyViewerManager.h>
#include <kybase/KyWorklistHelper.h>
#include <kyreporttab/JxReport.h>
#include <kyreporttab/KyReportLockStore.h>
#include <kyresources/KyClientFacts.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistry.h>

#include <map>
#include <memory>

/// One set of the platform's objects, in order of need, with everything in memory and no server.
///
/// Made in a test's init() and dropped in its cleanup(): every test has its own properties, session and
/// viewers.
class KyTestPlatform
{
public:
    KyTestPlatform();
    ~KyTestPlatform();

    OvRegistry registry;
    KyNotifiables notifiables;
    KyClientFacts facts;
    OvPropertyPool pool;
    KyMemoryWorklistStore worklist;
    KyMemoryReportLockStore reportLocks;
    KyApplication application;
    KyMonitorManager monitors;
    KyViewerManager viewers;
    KyStudyMetrics metrics;
    KySessionContext session;
    JxReport reports;

    KyLoadHelper& loader() { return *session.component<KyLoadHelper>(true); }

    /// A study in memory: keywords of DICOM elements and their texts.
    static std::shared_ptr<Ovg::DicomDirectoryEntry> studyWith(const std::map<QString, QString>& inElements);
    /// A study of the patient \a inPatient with the study instance UID \a inUid.
    static std::shared_ptr<Ovg::DicomDirectoryEntry>
    study(const QString& inUid, const QString& inPatient = QStringLiteral("Doe^Jane"));
};

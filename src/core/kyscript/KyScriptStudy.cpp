#include "KyScriptStudy.h"

#include "KyScriptEngine.h"
#include "KyScriptStudyOrder.h"

#include <kybase/KyBaseViewerGroup.h>
#include <kybase/KyDICOMAccessDicomDirectoryEntry.h>
#include <kybase/KyLoadHelper.h>
#include <kybase/KyStudyMetrics.h>
#include <kybase/KyViewerManager.h>
#include <kybase/KyWorklistHelper.h>
#include <kyreporttab/KyReportHelper.h>
#include <ovbase/OvReportLocker.h>
#include <ovvolren/OvVolume.h>
#include <ovwebservice/DicomDirectoryEntry.h>
#include <ovwebservice/WorklistEntry.h>
#include <rnlib/RnContract.h>

#include <set>
#include <string_view>

std::function<QString(const Ovg::WorklistEntry&, int)> KyScriptStudy::worklistDataCB;

namespace {

using Entry = std::shared_ptr<Ovg::DicomDirectoryEntry>;

constexpr QLatin1String WorklistPrefix("Worklist.");

template <class T>
T* component()
{
    const auto context = KySessionContext::currentInstance();
    return context ? context->component<T>(true) : nullptr;
}

/// The identifier of the study that \a inViewer shows, or null.
const char* studyIdOf(KyBaseViewer* inViewer)
{
    OvVolume* volume = inViewer ? inViewer->volume(0) : nullptr;
    const OvDBMetaInfo* info = volume ? volume->dbMetaInfo() : nullptr;
    return info ? info->studyId.c_str() : nullptr;
}

std::vector<Entry> known(const KyLoadHelper& inLoader, const char* inStudyId)
{
    Entry entry = inStudyId ? inLoader.dicomDirectoryEntryForStudy(inStudyId) : nullptr;
    return entry ? std::vector<Entry>{std::move(entry)} : std::vector<Entry>();
}

std::vector<Entry> studyOfActiveViewer(const KyLoadHelper& inLoader)
{
    KyViewerManager* manager = KyViewerManager::getInstance();
    return known(inLoader, studyIdOf(manager ? manager->activeViewer() : nullptr));
}

std::vector<Entry> studiesOfLayout(const KyLoadHelper& inLoader)
{
    std::vector<Entry> entries;
    std::set<std::string> seen;
    for (KyBaseViewer* viewer :
         KyBaseViewerGroup(nullptr, KyBaseViewerGroup::GroupType(7), Ky::ViewerType(0))) {
        const char* id = studyIdOf(viewer);
        if (!id || !seen.insert(id).second)
            continue;
        for (Entry& entry : known(inLoader, id))
            entries.push_back(std::move(entry));
    }
    return entries;
}

template <class Wanted>
std::vector<Entry> studiesOfPatient(const KyLoadHelper& inLoader, Wanted isWanted)
{
    std::vector<Entry> entries;
    for (const RnHandle<OvStudyObject>& study : inLoader.allStudiesOfPatientInfo()) {
        if (study && isWanted(*study))
            entries.push_back(study->dde());
    }
    return entries;
}

std::vector<Entry> studiesNamed(const KyLoadHelper& inLoader, const QString& inName)
{
    if (inName == QLatin1String("PRIMARY_STUDIES"))
        return inLoader.primaryExams();
    if (inName == QLatin1String("ADDITIONAL_STUDIES"))
        return inLoader.additionalExams();
    if (inName == QLatin1String("PRIMARY_STUDIES_OLD"))
        return inLoader.primaryExamsOld();
    if (inName == QLatin1String("ADDITIONAL_STUDIES_OLD"))
        return inLoader.additionalExamsOld();
    if (inName == QLatin1String("ACTIVE_VIEWER"))
        return studyOfActiveViewer(inLoader);
    if (inName == QLatin1String("ACTIVE_LAYOUT"))
        return studiesOfLayout(inLoader);
    if (inName == QLatin1String("ALL_STUDIES_OF_PATIENT"))
        return studiesOfPatient(inLoader, [](const OvStudyObject&) { return true; });
    if (inName == QLatin1String("RELEVANT_STUDIES_OF_PATIENT"))
        return studiesOfPatient(inLoader, [](const OvStudyObject& s) { return s.relevant || s.pinned(); });
    return known(inLoader, inName.toLatin1().constData());
}

} // namespace

KyScriptStudy::KyScriptStudy(std::shared_ptr<Ovg::DicomDirectoryEntry> inEntry)
    : mAccess(std::make_unique<KyDICOMAccessDicomDirectoryEntry>(std::move(inEntry)))
{}

KyScriptStudy::~KyScriptStudy() = default;

bool KyScriptStudy::operator==(const KyScriptStudy& inOther) const
{
    const auto& a = dde();
    const auto& b = inOther.dde();
    return a && b ? Ovg::DicomDirectoryEntry::studyEquals(*a, *b) : a == b;
}

bool KyScriptStudy::operator<(const KyScriptStudy& inOther) const
{
    const auto& a = dde();
    const auto& b = inOther.dde();
    return a && b ? *a < *b : !a && b;
}

const std::shared_ptr<Ovg::DicomDirectoryEntry>& KyScriptStudy::dde() const
{
    return mAccess->entry();
}

void KyScriptStudy::release()
{
    mAccess = std::make_unique<KyDICOMAccessDicomDirectoryEntry>(nullptr);
    mWorklistEntry.emplace();
}

std::shared_ptr<Ovg::WorklistEntry> KyScriptStudy::worklistEntry() const
{
    if (!mWorklistEntry) {
        auto* worklist = component<KyWorklistHelper>();
        mWorklistEntry = worklist ? worklist->worklistEntry(dde(), KyWorklistHelper::Option(2)) : nullptr;
    }
    return *mWorklistEntry;
}

QVariant KyScriptStudy::getTag(QString tagName) const
{
    QVariant value = tagName.startsWith(WorklistPrefix) ? worklistTag(tagName.mid(WorklistPrefix.size()))
                                                        : dicomTag(tagName);
    if (KyScriptEngine* engine = KyScriptEngine::of(this))
        engine->convertVariant(value);
    return value;
}

QVariant KyScriptStudy::worklistTag(const QString& inWord) const
{
    if (!worklistDataCB)
        return QVariant();
    const int code = KyWorklistHelper::code(inWord);
    if (code < 0)
        return QVariant();
    const auto entry = worklistEntry();
    return entry ? QVariant(worklistDataCB(*entry, code)) : QVariant();
}

QVariant KyScriptStudy::dicomTag(const QString& inName) const
{
    KyDICOMObjectInfo::TagKey key;
    bool ok = false;
    key.deserialize(inName, &ok);
    return ok ? mAccess->tag(key, nullptr, QVariant()) : QVariant();
}

QString KyScriptStudy::worklistStatus() const
{
    const auto entry = worklistEntry();
    return entry ? QString::fromLatin1(entry->status) : QString();
}

QString KyScriptStudy::worklistAssignee() const
{
    const auto entry = worklistEntry();
    return entry ? QString::fromLatin1(entry->assignee) : QString();
}

int KyScriptStudy::worklistFlags() const
{
    const auto entry = worklistEntry();
    return entry ? entry->flags : 0;
}

bool KyScriptStudy::loadedFromWorklist() const
{
    const auto* worklist = component<KyWorklistHelper>();
    return worklist && worklist->loadedFromWorklist;
}

float KyScriptStudy::getTimeSpent() const
{
    const QVariant uid = getTag(QStringLiteral("DICOM.StudyInstanceUID"));
    const KyStudyMetrics* metrics = KyStudyMetrics::instance();
    return metrics && uid.canConvert<QString>() ? metrics->getTimeSpent(uid.toString()) : 0;
}

QString KyScriptStudy::getInterpretationStatus() const
{
    static constexpr std::pair<std::string_view, char> Letters[] = {
        {"COMPLETED", 'F'}, {"SCHEDULED", 'N'},  {"PRELIMINARY", 'P'}, {"REVIEWED", 'R'},
        {"DRAFT", 'D'},     {"INPROGRESS", 'I'}, {"LOCKED", 'L'},
    };
    const std::string_view status = dde() ? dde()->studyStatus : "";
    for (const auto& [word, letter] : Letters) {
        if (word == status)
            return QString(QLatin1Char(letter));
    }
    return QString();
}

bool KyScriptStudy::equals(const QObject* other) const
{
    const auto* study = qobject_cast<const KyScriptStudy*>(other);
    return study && *this == *study;
}

KyScriptStudyList::KyScriptStudyList(QObject* parent)
    : QObject(parent)
{}

KyScriptStudyList::~KyScriptStudyList() = default;

QObjectList KyScriptStudyList::get(QString inStudyListName)
{
    const auto* loader = component<KyLoadHelper>();
    return loader ? wrapIntoQObjectList(studiesNamed(*loader, inStudyListName)) : QObjectList();
}

QList<QObject*> KyScriptStudyList::wrapIntoQObjectList(const Entries& inEntries)
{
    QObjectList objects;
    objects.reserve(qsizetype(inEntries.size()));
    for (const auto& entry : inEntries) {
        auto study = QSharedPointer<KyScriptStudy>::create(entry);
        // Without a parent the garbage collector would take it as its own.
        QJSEngine::setObjectOwnership(study.data(), QJSEngine::CppOwnership);
        objects.append(study.data());
        mWrappers.append(std::move(study));
    }
    return objects;
}

QObjectList KyScriptStudyList::unite(QObjectList inStudyListA, QObjectList inStudyListB) const
{
    return KyScriptStudyOrder::unite(inStudyListA, inStudyListB);
}

QObjectList KyScriptStudyList::subtract(QObjectList inStudyListA, QObjectList inStudyListB) const
{
    return KyScriptStudyOrder::subtract(inStudyListA, inStudyListB);
}

QObjectList KyScriptStudyList::intersect(QObjectList inStudyListA, QObjectList inStudyListB) const
{
    return KyScriptStudyOrder::intersect(inStudyListA, inStudyListB);
}

void KyScriptStudyList::lockForReporting(QObjectList inStudyList) const
{
    std::vector<std::shared_ptr<Ovg::WorklistEntry>> entries;
    for (QObject* element : inStudyList) {
        const auto* study = qobject_cast<KyScriptStudy*>(element);
        if (!dbc_holds(study))
            continue;
        if (auto entry = study->worklistEntry())
            entries.push_back(std::move(entry));
    }
    if (entries.empty())
        return;

    auto* reports = component<KyReportHelper>();
    OvReportLocker* locker = reports ? reports->locker(true) : nullptr;
    if (locker)
        locker->lockFromScript(entries);
}

void KyScriptStudyList::clear()
{
    for (const auto& study : std::as_const(mWrappers)) {
        study->release();
        // Deleting it at once would let a script end the process: Qt follows a null pointer when a method
        // that was read from an object, and not called while it lived, is called afterwards.
        if (qjsEngine(study.data()))
            mReleased.enqueue(study);
    }
    mWrappers.clear();
    while (mReleased.size() > MaxReleased)
        mReleased.dequeue();
}

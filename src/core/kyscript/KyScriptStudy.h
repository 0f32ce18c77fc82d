#pragma once

#include "KyScriptExport.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QQueue>
#include <QtCore/QSharedPointer>
#include <QtCore/QVariant>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class KyDICOMAccessDicomDirectoryEntry;
class KyScriptStudyList;

namespace Ovg {
class DicomDirectoryEntry;
struct WorklistEntry;
} // namespace Ovg

/// One study as scripts see it: its DICOM tags, its worklist entry, its interpretation status, the time
/// spent.
///
/// Only KyScriptStudyList makes these objects and owns them. At the end of the run that asked for them it
/// lets go of the study, which is shared. A script that still refers to the object gets neutral results.
/// Nothing here reports or throws: what is missing has a neutral result.
class KYSCRIPT_EXPORT KyScriptStudy : public QObject
{
    Q_OBJECT

public:
    /// A null \a inEntry is a study that knows nothing.
    explicit KyScriptStudy(std::shared_ptr<Ovg::DicomDirectoryEntry> inEntry);
    ~KyScriptStudy() override;

    /// Whether both are the same study, not the same object.
    virtual bool operator==(const KyScriptStudy& inOther) const;
    /// The order of Ovg::DicomDirectoryEntry; a null entry comes before all others.
    virtual bool operator<(const KyScriptStudy& inOther) const;

    const std::shared_ptr<Ovg::DicomDirectoryEntry>& dde() const;

    /// Lets go of the study and its worklist entry: from now on the object is one without an entry.
    void release();

    /// The worklist entry of the study; null when it has none. Asked once in the life of this object.
    std::shared_ptr<Ovg::WorklistEntry> worklistEntry() const;

    /// The value of the tag \a tagName: "DICOM." and a keyword, group and element, or path, or "Worklist."
    /// and a word. Dates arrive as Date at local midnight, times as objects that print as their time, several
    /// values as an array. Neutral, and for a name that is unknown or malformed: undefined.
    Q_INVOKABLE QVariant getTag(QString tagName) const;

    /// The status word of the worklist entry. Neutral: empty.
    Q_INVOKABLE QString worklistStatus() const;
    /// Whom the worklist entry is assigned to. Neutral: empty.
    Q_INVOKABLE QString worklistAssignee() const;
    /// The flags of the worklist entry, whose meaning is the worklist's. Neutral: 0.
    Q_INVOKABLE int worklistFlags() const;
    /// Whether the session was loaded from the worklist: the same for every study of a session.
    Q_INVOKABLE bool loadedFromWorklist() const;

    /// Reading time spent on the study, in seconds. Neutral: 0.
    Q_INVOKABLE float getTimeSpent() const;

    /// How far the interpretation is: "F" completed, "N" scheduled, "P" preliminary, "R" reviewed, "D" draft,
    /// "I" in progress, "L" locked. Neutral, and for any other status word: empty.
    Q_INVOKABLE QString getInterpretationStatus() const;

    /// Whether \a other is an object for the same study.
    Q_INVOKABLE bool equals(const QObject* other) const;

    /// The text of a worklist entry's column by the code of KyWorklistHelper::code(). Assigned by whoever
    /// keeps the worklist; without it no worklist tag can be read.
    static std::function<QString(const Ovg::WorklistEntry&, int)> worklistDataCB;

private:
    QVariant worklistTag(const QString& inWord) const;
    QVariant dicomTag(const QString& inName) const;

    std::unique_ptr<KyDICOMAccessDicomDirectoryEntry> mAccess;
    mutable std::optional<std::shared_ptr<Ovg::WorklistEntry>> mWorklistEntry;
};

/// The global `StudyList`: lists of the studies that matter now, set arithmetic on them, and the lock for
/// reporting.
///
/// A list is an array of study objects. The set operations copy nothing, tell studies apart by
/// KyScriptStudy::operator<, and give their result in that order, whatever the order of the arguments. They
/// pair elements off one to one, so that duplicates count as in a multiset. What is no study sorts behind the
/// studies. Owned by the engine, which calls clear() at the end of a run.
class KyScriptStudyList : public QObject
{
    Q_OBJECT

public:
    explicit KyScriptStudyList(QObject* parent);
    ~KyScriptStudyList() override;

    /// The studies of a list, as new objects in the list's order: "PRIMARY_STUDIES", "ADDITIONAL_STUDIES",
    /// "PRIMARY_STUDIES_OLD", "ADDITIONAL_STUDIES_OLD", "ACTIVE_VIEWER", "ACTIVE_LAYOUT",
    /// "ALL_STUDIES_OF_PATIENT", "RELEVANT_STUDIES_OF_PATIENT". Any other word is taken as a study instance
    /// UID. Empty for what is missing or unknown.
    Q_INVOKABLE QObjectList get(QString inStudyListName);

    /// All of both; of two objects for one study the one of \a inStudyListA.
    Q_INVOKABLE QObjectList unite(QObjectList inStudyListA, QObjectList inStudyListB) const;
    /// Those of \a inStudyListA that are not in \a inStudyListB.
    Q_INVOKABLE QObjectList subtract(QObjectList inStudyListA, QObjectList inStudyListB) const;
    /// Those of \a inStudyListA that are in \a inStudyListB too.
    Q_INVOKABLE QObjectList intersect(QObjectList inStudyListA, QObjectList inStudyListB) const;

    /// Locks the worklist entries of the studies for reporting. Studies without an entry are left out, an
    /// element that is no study is a contract report. Whether the lock took is not told.
    Q_INVOKABLE void lockForReporting(QObjectList inStudyList) const;

    /// Ends all study objects that get() has made: they let go of their studies. Those that scripts have seen
    /// are kept as shells, the newest 5000 of them; the others are deleted.
    void clear();

private:
    using Entries = std::vector<std::shared_ptr<Ovg::DicomDirectoryEntry>>;

    QList<QObject*> wrapIntoQObjectList(const Entries& inEntries);

    /// How many ended study objects are kept, some hundred bytes each.
    static constexpr qsizetype MaxReleased = 5000;

    QList<QSharedPointer<KyScriptStudy>> mWrappers;
    QQueue<QSharedPointer<KyScriptStudy>> mReleased; ///< Ended, the oldest first; see clear().
};

#pragma once

#include "KySessionContext.h"

#include <QHash>
#include <QString>

namespace Ovg {
class DicomDirectoryEntry;
struct WorklistEntry;
} // namespace Ovg

/// The session's view of the reading worklist. Asks the KyWorklistStore that is there at each call; without
/// one there are no entries. GUI thread only.
class KyWorklistHelper final : public KySessionComponent
{
public:
    /// How worklistEntry() looks for an entry.
    enum Option : int
    {
        KnownOnly = 0,  ///< What the session has found before; the store is not asked.
        KnownOrAsk = 1, ///< That, or else as Current.
        Current = 2,    ///< What the store says now, which then is what the session knows.
    };

    static std::unique_ptr<KyWorklistHelper> create(KySessionContext& inContext);

    /// The entry about \a inStudy, null when there is none. Only entries that were found are remembered; a
    /// study without one is asked for again. Another number than those of Option counts as Current.
    std::shared_ptr<Ovg::WorklistEntry> worklistEntry(std::shared_ptr<Ovg::DicomDirectoryEntry> inStudy,
                                                      Option inOption);

    /// Code of a word behind "Worklist." in a tag name, with case; -1 for an unknown word.
    ///
    /// Assignee Status Flags StudyInstanceUID AccessionNumber PatientID are columns that every worklist has;
    /// PatientName PatientBirthDate PatientSex RequestedProcedureID RequestedProcedureDescription
    /// ScheduledDateTime Modality Location Priority ReferringPhysician Comment come from those that a
    /// site adds, by these names.
    static int code(const QString& inWord);

    /// The text of a column, flags in decimal. Empty for an unknown code and for a column without a value.
    static QString data(const Ovg::WorklistEntry& inEntry, int inCode);

    /// Whether the session was opened from the worklist. Set by the host.
    bool loadedFromWorklist = false;

private:
    QHash<QString, std::shared_ptr<Ovg::WorklistEntry>> mKnown; ///< By study instance UID.
};

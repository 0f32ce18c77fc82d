#pragma once

#include "KySessionContext.h"

#include <ovbase/OvStudyObject.h>
#include <ovwebservice/DicomDirectoryEntry.h>
#include <rnlib/RnHandle.h>

#include <string>
#include <unordered_map>

/// The studies of the session: the primary ones, which are to be read, and the additional ones, which were
/// loaded beside them, such as priors.
///
/// Filled by the host. The lists hold no null entries. References that the operations give are valid until
/// the next set operation. GUI thread only.
class KyLoadHelper final : public KySessionComponent
{
public:
    using Exams = std::vector<std::shared_ptr<Ovg::DicomDirectoryEntry>>;
    using StudyObjects = std::vector<RnHandle<OvStudyObject>>;

    static std::unique_ptr<KyLoadHelper> create(KySessionContext& inContext);

    const Exams& primaryExams() const { return mPrimary; }
    const Exams& additionalExams() const { return mAdditional; }
    /// The lists as they were before they were last set; empty at first.
    const Exams& primaryExamsOld() const { return mPrimaryOld; }
    const Exams& additionalExamsOld() const { return mAdditionalOld; }

    /// The list as it stood becomes the old one. Null entries of \a inExams are left out.
    void setPrimaryExams(Exams inExams);
    void setAdditionalExams(Exams inExams);

    /// Those of the primary studies, then of the additional ones, that are of the same patient as the first
    /// primary study; each study once. Empty without a primary study.
    ///
    /// Primary studies are relevant. Otherwise a study that stays on the list over a set operation keeps its
    /// pin and its relevance, and a new one starts with neither.
    const StudyObjects& allStudiesOfPatientInfo() const { return mPatientStudies; }

    /// The primary or additional study of that study instance UID. Null for an unknown, an empty or a null
    /// one. Takes the same time however many studies there are.
    std::shared_ptr<Ovg::DicomDirectoryEntry> dicomDirectoryEntryForStudy(const char* inStudyId) const;

    /// Whether the session shows something else than another program, such as the one from which the studies
    /// were called up: whether the accession numbers of the primary studies are others than the given ones.
    /// Order and repetition do not count, nor do white space at the ends, studies without a number and empty
    /// texts. Without any given number nothing is out of sync.
    bool isOutOfSync(const QList<QString>& inAccessionNumbers) const;

    /// When it is out of sync, tells the user, who has to confirm that, and gives the QMessageBox button by
    /// which the box was closed. Otherwise 0 at once. The application goes on meanwhile.
    int showOutOfSyncWarning(const QList<QString>& inAccessionNumbers) const;

    /// Whether both studies are of one patient, as far as the data tells: the patient IDs must be equal and
    /// not empty, and neither issuers of the ID nor names may differ, where a missing one differs from none.
    /// Without any patient ID equal names will do. Names are compared without regard to case, and IDs and
    /// names without blanks and empty components at their end.
    static bool isSamePatient(const Ovg::DicomDirectoryEntry& inA, const Ovg::DicomDirectoryEntry& inB);

private:
    void studiesChanged();
    void indexStudies(const Exams& inExams);
    void collectPatientStudies();

    Exams mPrimary;
    Exams mAdditional;
    Exams mPrimaryOld;
    Exams mAdditionalOld;
    StudyObjects mPatientStudies;
    std::unordered_map<std::string, std::shared_ptr<Ovg::DicomDirectoryEntry>> mByUid;
};

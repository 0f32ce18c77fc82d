#pragma once

#include "DicomHeader.h"
#include "DicomSeries.h"

#include <QDate>
#include <QTime>

#include <string>
#include <vector>

namespace Ovg {

/// One study: its series and instances, and the values of its DICOM elements.
///
/// Made by a StudySource, shared by all who show or read the study. Nothing changes after construction but
/// the status word, which only the application's thread sets and reads.
///
/// The values of the study's elements are those of its representative instance: the first in the order of
/// series number, instance number and SOP instance UID, whatever the order in which files were found.
class DicomDirectoryEntry
{
public:
    /// The status word of the study with a terminating NUL: at first the Study Status ID (0032,000A), retired
    /// in the standard; empty without one. At most 16 characters, as its VR, CS, allows; longer ones are cut.
    char studyStatus[17] = {};

    /// A study with the values of \a inRepresentative. \a inSeries may be empty and is kept in the order of
    /// series number, then series instance UID.
    explicit DicomDirectoryEntry(DicomHeader inRepresentative, std::vector<DicomSeries> inSeries = {});

    /// True if both have the same, non-empty study instance UID, or are the same object.
    static bool studyEquals(const DicomDirectoryEntry& inA, const DicomDirectoryEntry& inB);

    /// A strict weak order: by patient name (in Unicode's order), patient ID, study date, study time, and
    /// study instance UID. The comparison of two strings that are ready.
    bool operator<(const DicomDirectoryEntry& inOther) const { return mSortKey < inOther.mSortKey; }

    const std::string& studyInstanceUid() const { return mStudyInstanceUid; }

    /// The person name as in the data, groups and components with their delimiters: "Müller^Änne".
    const QString& patientName() const { return mPatientName; }
    const QString& patientId() const { return mPatientId; }
    const QString& issuerOfPatientId() const { return mIssuerOfPatientId; }
    const std::string& accessionNumber() const { return mAccessionNumber; }
    const QString& studyDescription() const { return mStudyDescription; }

    /// Invalid when missing or malformed.
    QDate studyDate() const { return mStudyDate; }
    QTime studyTime() const { return mStudyTime; }

    void setStudyStatus(const std::string& inStatus);

    const std::vector<DicomSeries>& series() const { return mSeries; }
    int instanceCount() const;

    /// The distinct modalities, in the order of the series.
    std::vector<std::string> modalities() const;

    /// The value of the element at \a inPath, see DicomHeader::value().
    ///
    /// Three elements of the query model are counted instead of read, when the study has series: Number of
    /// Study Related Series and Instances (0020,1206), (0020,1208) as int, and Modalities in Study
    /// (0008,0061) as a list, also with one modality.
    QVariant value(const DicomTagPath& inPath, QStringList* outProblems = nullptr) const;

private:
    std::string makeSortKey() const;
    QVariant countedValue(const DicomTagPath& inPath) const;

    DicomHeader mRepresentative;
    std::vector<DicomSeries> mSeries;
    std::string mStudyInstanceUid;
    std::string mAccessionNumber;
    QString mPatientName;
    QString mPatientId;
    QString mIssuerOfPatientId;
    QString mStudyDescription;
    QDate mStudyDate;
    QTime mStudyTime;
    std::string mSortKey;
};

} // namespace Ovg

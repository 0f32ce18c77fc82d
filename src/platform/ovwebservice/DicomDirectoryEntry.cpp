#include "DicomDirectoryEntry.h"

#include <algorithm>
#include <tuple>

namespace Ovg {

namespace {

const DicomTagPath patientNamePath(0x0010, 0x0010);
const DicomTagPath patientIdPath(0x0010, 0x0020);
const DicomTagPath issuerPath(0x0010, 0x0021);
const DicomTagPath studyUidPath(0x0020, 0x000D);
const DicomTagPath accessionNumberPath(0x0008, 0x0050);
const DicomTagPath descriptionPath(0x0008, 0x1030);
const DicomTagPath studyDatePath(0x0008, 0x0020);
const DicomTagPath studyTimePath(0x0008, 0x0030);
const DicomTagPath studyStatusPath(0x0032, 0x000A);
const DicomTagPath modalitiesPath(0x0008, 0x0061);
const DicomTagPath seriesCountPath(0x0020, 0x1206);
const DicomTagPath instanceCountPath(0x0020, 0x1208);

/// The value as text; of several the first. Empty when the element is absent.
QString firstText(const DicomHeader& inHeader, const DicomTagPath& inPath)
{
    const QVariant value = inHeader.value(inPath);
    return value.typeId() == QMetaType::QVariantList ? value.toList().constFirst().toString()
                                                     : value.toString();
}

bool seriesLess(const DicomSeries& inA, const DicomSeries& inB)
{
    return std::tie(inA.seriesNumber, inA.seriesInstanceUid) <
           std::tie(inB.seriesNumber, inB.seriesInstanceUid);
}

} // namespace

DicomDirectoryEntry::DicomDirectoryEntry(DicomHeader inRepresentative, std::vector<DicomSeries> inSeries)
    : mRepresentative(std::move(inRepresentative))
    , mSeries(std::move(inSeries))
    , mStudyInstanceUid(firstText(mRepresentative, studyUidPath).toStdString())
    , mAccessionNumber(firstText(mRepresentative, accessionNumberPath).toStdString())
    , mPatientName(firstText(mRepresentative, patientNamePath))
    , mPatientId(firstText(mRepresentative, patientIdPath))
    , mIssuerOfPatientId(firstText(mRepresentative, issuerPath))
    , mStudyDescription(firstText(mRepresentative, descriptionPath))
    , mStudyDate(mRepresentative.value(studyDatePath).toDate())
    , mStudyTime(mRepresentative.value(studyTimePath).toTime())
    , mSortKey(makeSortKey())
{
    std::stable_sort(mSeries.begin(), mSeries.end(), seriesLess);
    setStudyStatus(firstText(mRepresentative, studyStatusPath).toLatin1().toStdString());
}

bool DicomDirectoryEntry::studyEquals(const DicomDirectoryEntry& inA, const DicomDirectoryEntry& inB)
{
    return &inA == &inB || (!inA.mStudyInstanceUid.empty() && inA.mStudyInstanceUid == inB.mStudyInstanceUid);
}

void DicomDirectoryEntry::setStudyStatus(const std::string& inStatus)
{
    std::fill(std::begin(studyStatus), std::end(studyStatus), '\0');
    inStatus.copy(studyStatus, sizeof studyStatus - 1);
}

int DicomDirectoryEntry::instanceCount() const
{
    size_t count = 0;
    for (const DicomSeries& series : mSeries)
        count += series.instances.size();
    return static_cast<int>(count);
}

std::vector<std::string> DicomDirectoryEntry::modalities() const
{
    std::vector<std::string> modalities;
    for (const DicomSeries& series : mSeries) {
        if (std::find(modalities.begin(), modalities.end(), series.modality) == modalities.end())
            modalities.push_back(series.modality);
    }
    return modalities;
}

QVariant DicomDirectoryEntry::value(const DicomTagPath& inPath, QStringList* outProblems) const
{
    const QVariant counted = mSeries.empty() ? QVariant() : countedValue(inPath);
    return counted.isValid() ? counted : mRepresentative.value(inPath, outProblems);
}

QVariant DicomDirectoryEntry::countedValue(const DicomTagPath& inPath) const
{
    if (inPath == seriesCountPath)
        return static_cast<int>(mSeries.size());
    if (inPath == instanceCountPath)
        return instanceCount();
    if (inPath != modalitiesPath)
        return {};
    QVariantList list;
    for (const std::string& modality : modalities())
        list += QString::fromStdString(modality);
    return list;
}

/// The fields of the order, one behind the other. NUL sorts before everything and stands in none of them, so
/// the keys compare as the fields do.
std::string DicomDirectoryEntry::makeSortKey() const
{
    const std::string separator(1, '\0');
    return mPatientName.toStdString() + separator + mPatientId.toStdString() + separator +
           mStudyDate.toString(Qt::ISODate).toStdString() + separator +
           mStudyTime.toString(Qt::ISODateWithMs).toStdString() + separator + mStudyInstanceUid;
}

} // namespace Ovg

#include "KyStudyListModel.h"

#include "KySeriesDrag.h"

#include <common/KyPatientName.h>
#include <common/KyViewerLayout.h>
#include <ovbase/OvDateFormatter.h>

#include <QtCore/QMimeData>
#include <QtGui/QFont>

#include <algorithm>
#include <numeric>

namespace {

QDate birthDateOf(const Ovg::DicomDirectoryEntry& inStudy)
{
    static const auto path = Ovg::DicomTagPath::fromText(QStringLiteral("PatientBirthDate"));
    return inStudy.value(path).toDate();
}

QString modalitiesOf(const Ovg::DicomDirectoryEntry& inStudy)
{
    QStringList modalities;
    for (const std::string& modality : inStudy.modalities())
        modalities.append(QString::fromStdString(modality));
    return modalities.join(QStringLiteral(", "));
}

/// As the header of the first image has it.
QString descriptionOf(const Ovg::DicomSeries& inSeries)
{
    Ovg::DicomHeader header;
    QString reason;
    const bool isRead = !inSeries.instances.empty() &&
                        Ovg::DicomHeader::readFile(inSeries.instances.front().path, header, reason) ==
                            Ovg::DicomHeader::Outcome::Read;
    return isRead ? header.value({0x0008, 0x103E}).toString() : QString();
}

} // namespace

void KyStudyListModel::setStudies(const KyLoadHelper::Exams& inPrimary,
                                  const KyLoadHelper::Exams& inAdditional)
{
    beginResetModel();
    mRows.clear();
    for (const auto& study : inPrimary)
        mRows.push_back({study, false});
    for (const auto& study : inAdditional)
        mRows.push_back({study, true});
    endResetModel();
}

int KyStudyListModel::imageCount() const
{
    return std::accumulate(mRows.begin(), mRows.end(), 0,
                           [](int sum, const Row& row) { return sum + row.study->instanceCount(); });
}

const KyStudyListModel::Row& KyStudyListModel::rowOf(const QModelIndex& inIndex) const
{
    return mRows[isSeries(inIndex) ? size_t(inIndex.internalId() - 1) : size_t(inIndex.row())];
}

KyViewerLayer KyStudyListModel::layerOf(const QModelIndex& inIndex) const
{
    const auto& study = rowOf(inIndex).study;
    return isSeries(inIndex) ? KyViewerLayer{.study = study, .series = size_t(inIndex.row())}
                             : KyViewerLayout::firstSeries(study);
}

/// A series has the number of its study's row, from 1, as internal id; a study has 0.
QModelIndex KyStudyListModel::index(int inRow, int inColumn, const QModelIndex& inParent) const
{
    if (!hasIndex(inRow, inColumn, inParent))
        return QModelIndex();
    return createIndex(inRow, inColumn, inParent.isValid() ? quintptr(inParent.row() + 1) : quintptr(0));
}

QModelIndex KyStudyListModel::parent(const QModelIndex& inChild) const
{
    const bool hasParent = inChild.isValid() && isSeries(inChild);
    return hasParent ? createIndex(int(inChild.internalId()) - 1, 0, quintptr(0)) : QModelIndex();
}

int KyStudyListModel::rowCount(const QModelIndex& inParent) const
{
    if (!inParent.isValid())
        return int(mRows.size());
    const bool isStudy = !isSeries(inParent) && inParent.column() == 0;
    return isStudy ? int(rowOf(inParent).study->series().size()) : 0;
}

int KyStudyListModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant KyStudyListModel::text(const Row& inRow, int inColumn) const
{
    const Ovg::DicomDirectoryEntry& study = *inRow.study;
    switch (inColumn) {
    case Patient:
        return KyPatientName::forDisplay(study.patientName());
    case PatientId:
        return study.patientId();
    case BirthDate:
        return OvDateFormatter::guiDate(birthDateOf(study));
    case StudyDate:
        return OvDateFormatter::guiDate(study.studyDate());
    case Description:
        return study.studyDescription();
    case Modalities:
        return modalitiesOf(study);
    case Images:
        return QLocale().toString(study.instanceCount());
    default:
        return QVariant();
    }
}

QVariant KyStudyListModel::seriesText(const QModelIndex& inIndex) const
{
    const Row& row = rowOf(inIndex);
    const auto number = size_t(inIndex.row());
    const Ovg::DicomSeries& series = row.study->series()[number];
    switch (inIndex.column()) {
    case Patient:
        return tr("Series %1").arg(series.seriesNumber);
    case Description:
        if (row.descriptions.empty())
            std::transform(row.study->series().begin(), row.study->series().end(),
                           std::back_inserter(row.descriptions), descriptionOf);
        return row.descriptions[number];
    case Modalities:
        return QString::fromStdString(series.modality);
    case Images:
        return QLocale().toString(qulonglong(series.instances.size()));
    default:
        return QVariant();
    }
}

QVariant KyStudyListModel::sortValue(const QModelIndex& inIndex) const
{
    const Row& row = rowOf(inIndex);
    const Ovg::DicomDirectoryEntry& study = *row.study;
    // Series stay in the order of their numbers.
    if (isSeries(inIndex))
        return inIndex.row();
    switch (inIndex.column()) {
    case BirthDate:
        return birthDateOf(study);
    case StudyDate:
        return QDateTime(study.studyDate(), study.studyTime().isValid() ? study.studyTime() : QTime(0, 0));
    case Images:
        return study.instanceCount();
    default:
        return text(row, inIndex.column());
    }
}

QVariant KyStudyListModel::data(const QModelIndex& inIndex, int inRole) const
{
    if (!checkIndex(inIndex, CheckIndexOption::IndexIsValid))
        return QVariant();
    const Row& row = rowOf(inIndex);
    switch (inRole) {
    case Qt::DisplayRole:
        return isSeries(inIndex) ? seriesText(inIndex) : text(row, inIndex.column());
    case SortRole:
        return sortValue(inIndex);
    case LayerRole:
        return QVariant::fromValue(layerOf(inIndex));
    case Qt::TextAlignmentRole:
        return inIndex.column() == Images ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::ToolTipRole:
        return row.isAdditional ? tr("Additional study, loaded beside the primary ones") : QVariant();
    case Qt::FontRole: {
        QFont font;
        font.setItalic(true);
        return row.isAdditional ? QVariant(font) : QVariant();
    }
    default:
        return QVariant();
    }
}

QVariant KyStudyListModel::headerData(int inSection, Qt::Orientation inOrientation, int inRole) const
{
    if (inOrientation != Qt::Horizontal)
        return QVariant();
    if (inRole == Qt::TextAlignmentRole)
        return int((inSection == Images ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    if (inRole != Qt::DisplayRole)
        return QVariant();
    const QStringList titles{tr("Patient"),     tr("ID"),         tr("Birth date"), tr("Study date"),
                             tr("Description"), tr("Modalities"), tr("Images")};
    return titles.value(inSection);
}

Qt::ItemFlags KyStudyListModel::flags(const QModelIndex& inIndex) const
{
    const Qt::ItemFlags flags = QAbstractItemModel::flags(inIndex);
    return inIndex.isValid() && layerOf(inIndex).isValid() ? flags | Qt::ItemIsDragEnabled : flags;
}

QStringList KyStudyListModel::mimeTypes() const
{
    return {QLatin1String(KySeriesDrag::MimeType)};
}

QMimeData* KyStudyListModel::mimeData(const QModelIndexList& inIndexes) const
{
    return inIndexes.isEmpty() ? nullptr : KySeriesDrag::mimeData(layerOf(inIndexes.first()));
}

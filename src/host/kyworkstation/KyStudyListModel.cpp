#include "KyStudyListModel.h"

#include <ovbase/OvDateFormatter.h>

#include <QtGui/QFont>

#include <numeric>

namespace {

/// A person's name for people: of the first group that has one, "Family, Given Middle".
QString nameForDisplay(const QString& inName)
{
    for (const QString& group : inName.split(QLatin1Char('='))) {
        const QStringList parts = group.split(QLatin1Char('^'));
        const QString family = parts.value(0).trimmed();
        const QString given = (parts.value(1) + QLatin1Char(' ') + parts.value(2)).simplified();
        if (!family.isEmpty() && !given.isEmpty())
            return family + QStringLiteral(", ") + given;
        if (!family.isEmpty() || !given.isEmpty())
            return family + given;
    }
    return QString();
}

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

int KyStudyListModel::rowCount(const QModelIndex& inParent) const
{
    return inParent.isValid() ? 0 : int(mRows.size());
}

int KyStudyListModel::columnCount(const QModelIndex& inParent) const
{
    return inParent.isValid() ? 0 : ColumnCount;
}

QVariant KyStudyListModel::text(const Row& inRow, int inColumn) const
{
    const Ovg::DicomDirectoryEntry& study = *inRow.study;
    switch (inColumn) {
    case Patient:
        return nameForDisplay(study.patientName());
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

QVariant KyStudyListModel::sortValue(const Row& inRow, int inColumn) const
{
    const Ovg::DicomDirectoryEntry& study = *inRow.study;
    switch (inColumn) {
    case BirthDate:
        return birthDateOf(study);
    case StudyDate:
        return QDateTime(study.studyDate(), study.studyTime().isValid() ? study.studyTime() : QTime(0, 0));
    case Images:
        return study.instanceCount();
    default:
        return text(inRow, inColumn);
    }
}

QVariant KyStudyListModel::data(const QModelIndex& inIndex, int inRole) const
{
    if (!checkIndex(inIndex, CheckIndexOption::IndexIsValid))
        return QVariant();
    const Row& row = mRows[size_t(inIndex.row())];
    switch (inRole) {
    case Qt::DisplayRole:
        return text(row, inIndex.column());
    case SortRole:
        return sortValue(row, inIndex.column());
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

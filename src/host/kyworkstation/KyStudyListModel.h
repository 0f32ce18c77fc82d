#pragma once

#include <kybase/KyLoadHelper.h>

#include <QtCore/QAbstractTableModel>

/// The studies of the session as a table, the primary ones first. Made by the main window.
class KyStudyListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Patient,
        PatientId,
        BirthDate,
        StudyDate,
        Description,
        Modalities,
        Images,
        ColumnCount
    };

    /// Values to sort by, in the order of the data instead of the text.
    static constexpr int SortRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    /// Shows these studies from now on.
    void setStudies(const KyLoadHelper::Exams& inPrimary, const KyLoadHelper::Exams& inAdditional);

    /// Number of images of all studies.
    int imageCount() const;

    int rowCount(const QModelIndex& inParent = QModelIndex()) const override;
    int columnCount(const QModelIndex& inParent = QModelIndex()) const override;
    QVariant data(const QModelIndex& inIndex, int inRole = Qt::DisplayRole) const override;
    QVariant headerData(int inSection, Qt::Orientation inOrientation,
                        int inRole = Qt::DisplayRole) const override;

private:
    struct Row
    {
        std::shared_ptr<Ovg::DicomDirectoryEntry> study;
        bool isAdditional = false;
    };

    QVariant text(const Row& inRow, int inColumn) const;
    QVariant sortValue(const Row& inRow, int inColumn) const;

    std::vector<Row> mRows;
};

#pragma once

#include <common/KyImageViewer.h>
#include <kybase/KyLoadHelper.h>

#include <QtCore/QAbstractItemModel>

/// The studies of the session as rows, the primary ones first, and below each its series. Made by the main
/// window.
class KyStudyListModel : public QAbstractItemModel
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
    /// The KyViewerLayer that a row stands for: its series, or the first one with images of its study.
    static constexpr int LayerRole = Qt::UserRole + 1;

    using QAbstractItemModel::QAbstractItemModel;

    /// Shows these studies from now on.
    void setStudies(const KyLoadHelper::Exams& inPrimary, const KyLoadHelper::Exams& inAdditional);

    /// Number of images of all studies.
    int imageCount() const;

    QModelIndex index(int inRow, int inColumn, const QModelIndex& inParent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& inChild) const override;
    int rowCount(const QModelIndex& inParent = QModelIndex()) const override;
    int columnCount(const QModelIndex& inParent = QModelIndex()) const override;
    QVariant data(const QModelIndex& inIndex, int inRole = Qt::DisplayRole) const override;
    QVariant headerData(int inSection, Qt::Orientation inOrientation,
                        int inRole = Qt::DisplayRole) const override;

    Qt::ItemFlags flags(const QModelIndex& inIndex) const override;
    QStringList mimeTypes() const override;
    /// Of the first row: a viewer takes one series.
    QMimeData* mimeData(const QModelIndexList& inIndexes) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }

private:
    struct Row
    {
        std::shared_ptr<Ovg::DicomDirectoryEntry> study;
        bool isAdditional = false;
        mutable std::vector<QString> descriptions = {}; ///< Of the series, read when they are first shown.
    };

    static bool isSeries(const QModelIndex& inIndex) { return inIndex.internalId() > 0; }
    const Row& rowOf(const QModelIndex& inIndex) const;
    KyViewerLayer layerOf(const QModelIndex& inIndex) const;
    QVariant text(const Row& inRow, int inColumn) const;
    QVariant seriesText(const QModelIndex& inIndex) const;
    QVariant sortValue(const QModelIndex& inIndex) const;

    std::vector<Row> mRows;
};

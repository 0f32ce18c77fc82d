#include "KyStudyListView.h"

#include "KyStudyListModel.h"

#include <QtGui/QPainter>
#include <QtWidgets/QStyledItemDelegate>

namespace {

constexpr int RowPadding = 8; ///< Above and below the text together, in pixels.

/// Gives rows some air.
class StudyDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& inOption, const QModelIndex& inIndex) const override
    {
        return QStyledItemDelegate::sizeHint(inOption, inIndex) + QSize(0, RowPadding);
    }
};

} // namespace

KyStudyListView::KyStudyListView(QWidget* inParent)
    : QTreeView(inParent)
{
    setItemDelegate(new StudyDelegate(this));
    setExpandsOnDoubleClick(false);
    setDragEnabled(true);
    setDragDropMode(DragOnly);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setSortingEnabled(true);
    setAccessibleName(tr("Studies"));
    connect(this, &QTreeView::activated, this, [this](const QModelIndex& index) {
        const auto layer = index.data(KyStudyListModel::LayerRole).value<KyViewerLayer>();
        if (layer.isValid())
            Q_EMIT seriesWanted(layer);
    });
}

void KyStudyListView::paintEvent(QPaintEvent* inEvent)
{
    QTreeView::paintEvent(inEvent);
    if (!model() || model()->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap,
                     tr("No studies are open.\nOpen a folder of DICOM files with Ctrl+O, or drop it here."));
}

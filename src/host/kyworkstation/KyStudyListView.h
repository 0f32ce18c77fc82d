#pragma once

#include <common/KyImageViewer.h>

#include <QtWidgets/QTreeView>

/// The table of studies with their series. While it is empty it says how to fill it. Series can be dragged to
/// the viewers, and studies for their first one.
class KyStudyListView : public QTreeView
{
    Q_OBJECT

public:
    explicit KyStudyListView(QWidget* inParent);

Q_SIGNALS:
    /// A double click, or Return.
    void seriesWanted(const KyViewerLayer& inLayer);

protected:
    void paintEvent(QPaintEvent* inEvent) override;
};

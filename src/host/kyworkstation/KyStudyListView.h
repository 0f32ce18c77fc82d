#pragma once

#include <QtWidgets/QTreeView>

/// The table of studies. While it is empty it says how to fill it.
class KyStudyListView : public QTreeView
{
    Q_OBJECT

public:
    explicit KyStudyListView(QWidget* inParent);

protected:
    void paintEvent(QPaintEvent* inEvent) override;
};

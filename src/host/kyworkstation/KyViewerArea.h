#pragma once

#include <common/KyViewerLayout.h>

#include <QtWidgets/QWidget>

class KyImageViewerWidget;
class QGridLayout;

/// The viewers of the workstation beside each other, in the layout of the property "Viewers.Layout".
class KyViewerArea : public QWidget
{
    Q_OBJECT

public:
    explicit KyViewerArea(QWidget* inParent = nullptr);
    ~KyViewerArea() override;

    KyViewerLayout& viewers() { return mLayout; }

    /// The widget at a place, counted from 0; null for one that there isn't.
    KyImageViewerWidget* widgetAt(int inPlace) const;

    /// Opens a series in the active viewer, or fuses it into what that shows.
    void open(const KyViewerLayer& inLayer, bool inFuse = false);

    /// Follows the studies of the session: empties viewers whose study has ended, and fills the empty ones
    /// when all are empty.
    void followSession();

Q_SIGNALS:
    /// A right click on a viewer, which is the active one by now.
    void menuWanted(const QPoint& inGlobal);

private:
    void rebuild();
    void showActive();
    void toggleAlone();

    KyViewerLayout mLayout;
    QGridLayout* const mGrid;
    QList<KyImageViewerWidget*> mWidgets;
    QString mLayoutBeforeAlone;
};

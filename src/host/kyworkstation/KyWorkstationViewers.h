#pragma once

#include <QtCore/QObject>

#include <memory>
#include <vector>

class KyMainWindow;
class KyTool;
class KyViewerArea;

/// The viewers of the workstation: their area in the window, their menu, and the way from the study list to
/// them.
///
/// Made behind the window, whose child it is.
class KyWorkstationViewers : public QObject
{
    Q_OBJECT

public:
    explicit KyWorkstationViewers(KyMainWindow& inWindow);

    KyViewerArea& area() const { return *mArea; }

private:
    KyViewerArea* const mArea;
    const std::vector<std::shared_ptr<KyTool>> mTools;
};

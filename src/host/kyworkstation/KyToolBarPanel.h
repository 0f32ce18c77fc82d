#pragma once

#include <QtWidgets/QToolBar>

class KyActionUI;

/// The tool bar: a button for each tool, enabled by what the active viewer supports.
///
/// Tools stand in the order in which they were made, those of one group behind a line. A click triggers a
/// tool; a click with Shift takes the trigger back of one that is not checkable. A tool without an icon shows
/// its label only.
class KyToolBarPanel : public QToolBar
{
    Q_OBJECT

public:
    /// So many buttons at most; the log tells when there are more tools.
    static constexpr int MaxTools = 200;

    explicit KyToolBarPanel(QWidget* inParent);

    /// Shows the tools that there are now, in place of those before. Of several with one key it is the
    /// newest.
    void showTools();

    /// Shift and a click on a button.
    bool eventFilter(QObject* inWatched, QEvent* inEvent) override;

private:
    void addTool(KyActionUI* inAction);
    void updateButton(KyActionUI* inAction);
};

#pragma once

#include "KyToolUI.h"

#include <QAction>

#include <set>
#include <string>

/// An action that shows a tool and triggers it on the active viewer.
///
/// Its checked state is that of an activatable tool: to check or uncheck it by code triggers the tool too. It
/// is enabled as long as the tool supports the active viewer of the viewer manager that is there when it is
/// made.
class KyActionUI final : public QAction, public KyToolUI
{
    Q_OBJECT

public:
    /// A new action for \a inTool, owned by \a inParent. The tool's hot key counts in \a inHotKeyScope, see
    /// KyTool::hotKeyScope(), once the action is added to a widget. An empty \a inTool gives a disabled one.
    static KyActionUI* createAction(std::shared_ptr<KyTool> inTool,
                                    const std::set<std::string>& inHotKeyScope, QObject* inParent);

    QAction* action() override { return this; }

    /// Takes the trigger of a tool back that is not activatable.
    void takeBack();

private:
    KyActionUI(const std::shared_ptr<KyTool>& inTool, QObject* inParent);
    void triggerTool();
    void followState(bool inChecked);
    void followViewer();
};

#pragma once

#include <memory>

class KyTool;
class QAction;

/// What shows a tool on the screen: a button, a menu entry.
///
/// It enters the tool's list at construction and leaves it at destruction. It holds the tool weakly: when the
/// tool ends, its action is disabled for good. Its owner is whoever made it, mostly by a QObject parent.
class KyToolUI
{
public:
    explicit KyToolUI(const std::shared_ptr<KyTool>& inTool);
    virtual ~KyToolUI();
    KyToolUI(const KyToolUI&) = delete;
    KyToolUI& operator=(const KyToolUI&) = delete;

    /// The action, owned by the UI. Null for a UI that has none.
    virtual QAction* action() = 0;

    /// Empty when the tool has ended.
    std::shared_ptr<KyTool> tool() const { return mTool.lock(); }

    /// Gives the action the icon, the texts and the state that hold now, and enables it when the tool
    /// supports the active viewer.
    void refresh();

private:
    friend class KyTool;
    void toolEnded();

    const std::weak_ptr<KyTool> mTool;
    KyTool* mListedIn; ///< Null when the tool has ended; also good while it ends.
};

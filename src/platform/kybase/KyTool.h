#pragma once

#include "KyNotifiable.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

class KyBaseViewer;
class KyToolUI;

/// What a tool bar button or a menu entry does.
///
/// A tool is owned by shared pointers. Its decoration key, which never changes, is how the application knows
/// it (KyToolRegistry) and how it gets its looks (KyToolDecorations). What shows it on the screen are its
/// UIs; they hold it weakly and are disabled when it ends. GUI thread only.
///
/// It hears of notifications as soon as it tells KyNotifiables which ones.
///
/// An activatable tool is on or off, and each trigger turns it over. Any other tool does one thing.
class KyTool : public KyNotifiable, public std::enable_shared_from_this<KyTool>
{
public:
    /// \a inDecorationKey is Latin-1. A tool with a null or empty key is not registered.
    explicit KyTool(const char* inDecorationKey);
    ~KyTool() override;

    const std::string& decorationKey() const { return mDecorationKey; }

    /// Whether the tool can work on that viewer, which is null when none is active. Here: on a viewer that
    /// shows images.
    virtual bool supportsViewer(const KyBaseViewer* inViewer) const;

    /// Does the tool's work, called by trigger() and takeBack(). \a inFlag is the new state of an activatable
    /// tool; for any other it is true for a trigger and false when the trigger is taken back. The viewer may
    /// be null, and lives until the call returns. False when nothing was done.
    virtual bool process(KyBaseViewer* inViewer, bool inFlag) = 0;

    virtual bool isActivatable() const { return false; }
    /// Whether users may take the tool out of the tool bar.
    virtual bool isDeletable() const { return true; }

    /// Never true for a tool that is not activatable.
    bool isActive() const { return mIsActive; }
    /// Changes the state without doing the work.
    void setActive(bool inActive);

    /// As a click does it: process() with the flag that fits, if the viewer is supported. When process()
    /// gives false, an activatable tool goes back to the state in which it was.
    bool trigger(KyBaseViewer* inViewer);
    /// The same with the flag false; an activatable tool is turned off.
    bool takeBack(KyBaseViewer* inViewer);

    /// The key sequence that triggers the tool, as QKeySequence::PortableText; empty for none. Actions take
    /// it over when they are made.
    const std::string& hotKey() const { return mHotKey; }
    void setHotKey(std::string inHotKey) { mHotKey = std::move(inHotKey); }
    /// Where the hot key counts: HotKeyInWindow, HotKeyInApplication; nowhere when empty.
    virtual std::set<std::string> hotKeyScope() const;
    static constexpr const char* HotKeyInWindow = "Window";
    static constexpr const char* HotKeyInApplication = "Application";

    /// What shows the tool, in the order in which it was made. Entries may be null.
    virtual std::vector<KyToolUI*> getUIs() const { return mUIs; }
    /// Brings the UIs up to date with the tool, its decoration and the active viewer.
    void refreshUIs() const;

    /// Told by the script engine around each run, so that a tool can see whether a script triggers it. One
    /// flag for the process, false at first; it is always there. GUI thread only.
    static void setTriggeredByScript(bool inTriggered);
    static bool triggeredByScript();

private:
    friend class KyToolUI;
    void addUI(KyToolUI* inUI);
    void removeUI(KyToolUI* inUI);
    bool run(KyBaseViewer* inViewer, bool inFlag);

    const std::string mDecorationKey;
    std::string mHotKey;
    std::vector<KyToolUI*> mUIs;
    bool mIsActive = false;
};

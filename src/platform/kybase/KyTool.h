#pragma once

/// What a tool bar button or a menu entry does.
class KyTool
{
public:
    /// Told by the script engine around each run, so that a tool can see whether a script triggers it. One
    /// flag for the process, false at first; it is always there. GUI thread only.
    static void setTriggeredByScript(bool inTriggered);
    static bool triggeredByScript();
};

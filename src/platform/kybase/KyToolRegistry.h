#pragma once

#include "KyTool.h"

/// The tools of the application. Always there, and empty at first; each tool enters at its construction and
/// leaves at its destruction. It owns none. GUI thread only.
class KyToolRegistry
{
public:
    KyToolRegistry() = delete;

    /// The tool of that decoration key, of several the newest. Empty when the key, which is compared exactly,
    /// is unknown, or the tool is no \a T, or nobody shares its ownership. An unknown key is a log line of
    /// level 2 unless \a inIsQuiet.
    template <class T>
    static std::shared_ptr<T> getToolByDecorationKey(const char* inKey, bool inIsQuiet)
    {
        return std::dynamic_pointer_cast<T>(find(inKey, inIsQuiet));
    }

    /// All tools with an owner, the oldest first.
    static std::vector<std::shared_ptr<KyTool>> tools();

    /// KyTool::refreshUIs() of all tools, as when another viewer has become the active one.
    static void refreshUIs();

private:
    friend class KyTool;
    static void add(KyTool& inTool);
    static void remove(KyTool& inTool);
    static std::shared_ptr<KyTool> find(const char* inKey, bool inIsQuiet);
};

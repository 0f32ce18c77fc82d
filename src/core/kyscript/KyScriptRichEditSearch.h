#pragma once

#include "KyScriptRichEditTarget.h"

#include <rnwin/RnWindows.h>

/// Finds the control of another program that a description fits.
///
/// What was found is remembered for the whole process, an entry for each distinct description, and found
/// again without a search while that window is there and on show. GUI thread only.
class KyScriptRichEditSearch
{
public:
    KyScriptRichEditSearch() = delete;

    /// The first control that fits, 0 when there is none, as for the application's own editor. A search needs
    /// a window class, and a process or a title to narrow down the top-level windows; one that finds nothing
    /// is a line of the log.
    static RnWindows::Window find(const KyScriptRichEditTarget& inTarget);

    /// How many descriptions are known.
    static qsizetype knownTargets();
};

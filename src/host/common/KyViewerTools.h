#pragma once

#include <memory>
#include <vector>

class KyTool;
class KyViewerLayout;

/// The application's own tools for the viewers: "Viewers.Layout1x1", "Viewers.Layout1x2",
/// "Viewers.Layout2x2". They are switches, of which that of the present layout is on; triggered, it stays on.
class KyViewerTools
{
public:
    KyViewerTools() = delete;

    /// Makes the tools. Without \a inLayout, once it has ended, they do nothing.
    static std::vector<std::shared_ptr<KyTool>> make(KyViewerLayout& inLayout);
};

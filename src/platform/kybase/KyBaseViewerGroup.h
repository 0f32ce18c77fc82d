#pragma once

#include "KyBaseViewer.h"

#include <cstddef>
#include <vector>

/// Viewers that belong together, as they are at the moment of construction.
///
/// A value for use at once: it neither follows later changes nor keeps its viewers alive.
class KyBaseViewerGroup
{
public:
    /// Other numbers name no group and give an empty one.
    enum GroupType : int
    {
        SingleViewer = 0, ///< The given viewer by itself.
        ActiveLayout = 7, ///< All viewers of the active layout, in the manager's order.
    };

    /// \a inViewer is what the group is built around, and may be null; the active layout needs none. With
    /// a \a inType other than Ky::ViewerTypeAny only viewers of that kind get in.
    KyBaseViewerGroup(const KyBaseViewer* inViewer, GroupType inGroup, Ky::ViewerType inType);

    auto begin() const { return mViewers.begin(); }
    auto end() const { return mViewers.end(); }
    std::size_t size() const { return mViewers.size(); }
    KyBaseViewer* operator[](std::size_t inIndex) const { return mViewers[inIndex]; }

private:
    std::vector<KyBaseViewer*> mViewers;
};

#pragma once

#include "OvImageVolume.h"
#include "OvPlane.h"
#include "OvSlice.h"

#include <vector>

/// The plane on show of one volume or several, the first of which is the one that it belongs to.
class OvImageSlice final : public OvSlice
{
public:
    /// The middle plane of the first volume's images. There is at least one layer, none of them null.
    explicit OvImageSlice(std::vector<RnHandle<OvImageVolume>> inLayers);

    int layers() const { return int(mLayers.size()); }
    /// Null when there is no such layer.
    OvImageVolume* layer(int inLayer) const;

    OvPlane plane() const { return {mLayers.front()->content(), mAxis, mNumber}; }
    /// Numbers beyond the first or last plane are brought to it; an axis that there isn't is the images'.
    void setPlane(int inAxis, int inNumber);

    Orientation orientation(int inLayer) const override;
    float sliceNumber(int inLayer) const override;

private:
    const std::vector<RnHandle<OvImageVolume>> mLayers;
    int mAxis = OvPlane::AcrossImages;
    int mNumber = 0;
};

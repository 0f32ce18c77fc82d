#include "OvImageSlice.h"

#include "OvFusion.h"

OvImageSlice::OvImageSlice(std::vector<RnHandle<OvImageVolume>> inLayers)
    : mLayers(std::move(inLayers))
{
    setPlane(OvPlane::AcrossImages, mLayers.front()->imageCount() / 2);
}

OvImageVolume* OvImageSlice::layer(int inLayer) const
{
    return inLayer >= 0 && inLayer < layers() ? mLayers[std::size_t(inLayer)].get() : nullptr;
}

void OvImageSlice::setPlane(int inAxis, int inNumber)
{
    const OvPlane plane(mLayers.front()->content(), inAxis, inNumber);
    mAxis = plane.axis();
    mNumber = plane.number();
}

OvSlice::Orientation OvImageSlice::orientation(int inLayer) const
{
    return layer(inLayer) ? plane().orientation() : Unknown;
}

float OvImageSlice::sliceNumber(int inLayer) const
{
    if (!layer(inLayer) || mLayers.front()->imageCount() == 0)
        return -1;
    return inLayer == 0 ? float(mNumber) : OvFusion::sliceNumber(plane(), layer(inLayer)->content());
}

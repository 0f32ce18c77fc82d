#include "KyPlaneImage.h"

#include <ovvolren/OvFusion.h>

const QImage& KyPlaneImage::of(const KyImageViewer& inViewer)
{
    OvImageSlice* slice = inViewer.imageSlice();
    Key key;
    key.slice = slice;
    if (slice) {
        key.axis = slice->plane().axis();
        key.number = slice->plane().number();
        key.window = inViewer.window(0);
        key.isInverted = inViewer.isInverted();
        key.fusionWeight = inViewer.fusionWeight();
        key.fusionWindow = slice->layers() > 1 ? inViewer.window(1) : OvWindow();
    }
    for (int layer = 0; inViewer.seriesVolume(layer); ++layer)
        key.done += inViewer.seriesVolume(layer)->done();
    if (mKey == key)
        return mImage;
    mKey = key;
    mSlice = slice;
    draw(inViewer, key);
    return mImage;
}

void KyPlaneImage::draw(const KyImageViewer& inViewer, const Key& inKey)
{
    if (!inKey.slice) {
        mImage = QImage();
        return;
    }
    const OvPlane plane = inKey.slice->plane();
    if (mImage.width() != plane.width() || mImage.height() != plane.height())
        mImage = QImage(plane.width(), plane.height(), QImage::Format_RGB32);
    if (mImage.isNull())
        return;
    auto* pixels = reinterpret_cast<std::uint32_t*>(mImage.bits());
    const auto stride = std::ptrdiff_t(mImage.bytesPerLine() / 4);
    mRenderer.draw(plane, inKey.window, inViewer.isInverted(), pixels, stride);
    if (inKey.slice->layers() > 1)
        OvFusion::blend(plane, inKey.slice->layer(1)->content(), inKey.fusionWindow, inKey.fusionWeight,
                        pixels, stride);
}

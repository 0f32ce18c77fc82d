#pragma once

#include <common/KyImageViewer.h>

#include <ovvolren/OvPlaneRenderer.h>

#include <QtGui/QImage>

#include <optional>

/// The plane that a viewer shows as an image, drawn anew only when it is not what it was.
class KyPlaneImage
{
public:
    /// Null when the viewer has no plane.
    const QImage& of(const KyImageViewer& inViewer);

private:
    /// All that the pixels depend on.
    struct Key
    {
        const OvImageSlice* slice = nullptr;
        int axis = 0;
        int number = 0;
        OvWindow window;
        OvWindow fusionWindow;
        bool isInverted = false;
        float fusionWeight = 0;
        int done = 0;

        bool operator==(const Key&) const = default;
    };

    void draw(const KyImageViewer& inViewer, const Key& inKey);

    OvPlaneRenderer mRenderer;
    RnHandle<OvImageSlice> mSlice; ///< Kept, so that no other one can have its address.
    std::optional<Key> mKey;
    QImage mImage;
};

#pragma once

#include <ovvolren/OvInterface.h>

class OvVolume;

namespace Ky {

/// Kind of a viewer. Any stands for all kinds where viewers are chosen, and for a kind without a word.
enum ViewerType : int
{
    ViewerTypeAny = 0,
    ViewerTypeSlice = 1,  ///< Slices through a volume.
    ViewerTypeVolRen = 2, ///< A volume rendering.
    ViewerTypeCurved = 3, ///< A curved reformat.
};

} // namespace Ky

/// One image viewer of the layout on the screen.
///
/// The host derives its viewers from this and holds them by handles. A viewer enters the KyViewerManager
/// that is there at its construction, behind the viewers already in it, and leaves it at its destruction.
/// The operations answer neutrally until a derived class says more.
class KyBaseViewer : public OvInterface
{
public:
    explicit KyBaseViewer(Ky::ViewerType inType = Ky::ViewerTypeAny);

    virtual Ky::ViewerType viewerType() const { return mType; }

    /// The volume of the image layer \a inIndex, counted from 0. Null when there is no such layer or it
    /// shows no volume.
    virtual OvVolume* volume(int inIndex);

protected:
    ~KyBaseViewer() override;

private:
    const Ky::ViewerType mType;
};

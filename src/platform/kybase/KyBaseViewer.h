#pragma once

#include "KyDICOMObjectInfo.h"

#include <ovvolren/OvInterface.h>

#include <memory>
#include <string>

class KyContextToolBar;
class OvImageSeries;
class OvSlice;
class OvVolume;
class QWidget;

namespace Ky {

/// Kind of a viewer. Any stands for all kinds where viewers are chosen, and for a kind without a word.
enum ViewerType : int
{
    ViewerTypeAny = 0,
    ViewerTypeSlice = 1,  ///< Images, or slices through a volume; the sub-kind tells which.
    ViewerTypeVolRen = 2, ///< A volume rendering.
    ViewerTypeCurved = 3, ///< A curved reformat.
};

/// Sub-kind of a viewer of the kind ViewerTypeSlice.
enum ViewSubType : int
{
    ViewSubTypeNone = 0,
    ViewSubType2D = 6, ///< Images as they are, which make up no volume.
};

} // namespace Ky

/// Whoever knows what is special about the images of a viewer, see KyDICOMObjectInfo::ConditionDictionary.
class KyConditionSource
{
public:
    virtual ~KyConditionSource();

    /// What holds now; null for nothing special.
    virtual std::shared_ptr<const KyDICOMObjectInfo::ConditionDictionary> conditionDictionary() const = 0;
};

/// One image viewer of the layout on the screen.
///
/// The host derives its viewers from this and holds them by handles. A viewer enters the KyViewerManager
/// that is there at its construction, behind the viewers already in it, and leaves it at its destruction.
/// The operations answer neutrally until a derived class says more. Pointers are good while the viewer shows
/// the same thing.
///
/// Images lie above each other in layers, counted from 0. The second and further ones are fused into the
/// first.
class KyBaseViewer : public OvInterface
{
public:
    explicit KyBaseViewer(Ky::ViewerType inType = Ky::ViewerTypeAny);

    virtual Ky::ViewerType viewerType() const { return mType; }
    /// A Ky::ViewSubType, or a number of the host's.
    virtual int viewSubType() const { return Ky::ViewSubTypeNone; }

    /// Null when nothing is special.
    virtual KyConditionSource* conditionSource() { return nullptr; }

    /// The id that the hanging protocol gives what is on show here, in Latin-1; the host's viewers have
    /// their place in the layout, from "1". Empty when there is none.
    virtual const std::string& protocolDisplaySetId() const;

    /// The images of the layer \a inIndex. Null when there is no such layer.
    virtual OvImageSeries* imageSeries(int inIndex);

    /// The volume of the image layer \a inIndex. Null when there is no such layer or it shows no volume.
    virtual OvVolume* volume(int inIndex);

    /// What of the layers is on show. Viewers of several planes count them; the host's have one, 0.
    virtual OvSlice* slice(int inIndex);

    /// How much of the second layer is seen, from 0, the first only, to 1, the second only.
    virtual float fusionWeight() const { return 0; }

    /// Null in a host without windows.
    virtual QWidget* widget() const { return nullptr; }

    /// Null when the viewer has none.
    virtual KyContextToolBar* contextToolBar() const { return nullptr; }

protected:
    ~KyBaseViewer() override;

private:
    const Ky::ViewerType mType;
};

#pragma once

#include "OvInterface.h"

/// The plane that a viewer shows of its image layers, which are counted from 0.
///
/// Made by the host for a viewer and held by handles.
class OvSlice : public OvInterface
{
public:
    /// How a plane lies in the patient. The numbers reach scripts and stay as they are.
    enum Orientation : int
    {
        Axial = 0,    ///< Across the body's axis, within 37 degrees.
        Sagittal = 1, ///< Between right and left.
        Coronal = 2,  ///< Between front and back.
        Oblique = 3,  ///< Near none of the three.
        Unknown = 4,  ///< The images don't say how they lie, as scanned paper doesn't.
    };

    /// The orientation of the plane, which all layers share; Unknown for a layer that is not there.
    virtual Orientation orientation(int inLayer) const = 0;

    /// Where the plane stands in the layer \a inLayer, counted from 0 in planes of that layer's volume along
    /// this orientation. A fraction lies between two of them, as happens in a layer that follows another.
    /// -1 for a layer that is not there, or that has no place for the plane.
    virtual float sliceNumber(int inLayer) const = 0;

protected:
    ~OvSlice() override;
};

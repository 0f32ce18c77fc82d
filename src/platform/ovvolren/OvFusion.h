#pragma once

#include "OvPlane.h"

#include <cstdint>

// A second volume over the plane of a first one, by where both lie in the patient.
namespace OvFusion {

/// Empty when \a inSecond can be fused into the planes of \a inFirst; else why not, a sentence for people.
QString obstacle(const OvVolumeContent& inFirst, const OvVolumeContent& inSecond);

/// Where the middle of \a inPlane stands in \a inSecond, counted in planes of that volume along the same
/// orientation (across its images: in images). -1 outside, and when there is an obstacle.
float sliceNumber(const OvPlane& inPlane, const OvVolumeContent& inSecond);

/// Mixes the values of \a inSecond into the pixels of \a inPlane, which have been drawn already: its
/// brightness in \a inWindow, in colours from black over red and yellow to white, counts \a inWeight, from 0
/// to 1, and what is there the rest. Values between voxels are interpolated. Pixels outside, or next to
/// voxels that are missing, stay as they are. Nothing is done when there is an obstacle.
void blend(const OvPlane& inPlane, const OvVolumeContent& inSecond, const OvWindow& inWindow, double inWeight,
           std::uint32_t* ioPixels, std::ptrdiff_t inStride);

/// The colour of a brightness from 0 to 1, 0xFFRRGGBB.
std::uint32_t colour(double inBrightness);

} // namespace OvFusion

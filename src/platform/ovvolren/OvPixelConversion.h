#pragma once

#include "OvImageInfo.h"

#include <vector>

// From the pixels of a file, as DCMTK gives them, to those in memory.
namespace OvPixelConversion {

/// Turns the cells of one grey frame into the pixels of \a outPixels, whose format is that of \a inImage:
/// takes the stored bits out of each cell, applies the sign and the modality look-up table, and notes the
/// least and the greatest value. \a inCells has the frame's cells in the machine's byte order, or bits packed
/// from the lowest, of which the first \a inSkippedBits are not the frame's.
void grey(const OvImageInfo& inImage, const OvBytes& inCells, int inSkippedBits, OvPixels& outPixels);

/// Whether the cells of \a inImage are as large as its pixels in memory, so that they can be read to their
/// place.
bool fitsInPlace(const OvImageInfo& inImage);

/// The same for cells that have been read to the place of the pixels already.
void greyInPlace(const OvImageInfo& inImage, OvPixels& ioPixels);

/// The same from integers, one for each pixel.
void grey(const OvImageInfo& inImage, const std::vector<std::int32_t>& inValues, OvPixels& outPixels);

/// Notes the least and the greatest pixel that is neither padding nor not a number.
void noteRange(const OvImageInfo& inImage, OvPixels& ioPixels);

} // namespace OvPixelConversion

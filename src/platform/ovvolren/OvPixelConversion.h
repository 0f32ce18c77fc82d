#pragma once

#include "OvImageInfo.h"

#include <vector>

// From the pixels of a file, as DCMTK gives them, to those in memory.
namespace OvPixelConversion {

/// Turns the cells of one grey frame into the pixels of \a outPixels, whose format is that of \a inImage:
/// takes the stored bits out of each cell, applies the sign and the modality look-up table, and notes the
/// least and the greatest value. \a inCells has the frame's cells in the machine's byte order, or bits packed
/// from the lowest, of which the first \a inSkippedBits are not the frame's.
void grey(const OvImageInfo& inImage, const std::vector<unsigned char>& inCells, int inSkippedBits,
          OvPixels& outPixels);

/// The same from integers, one for each pixel.
void grey(const OvImageInfo& inImage, const std::vector<std::int32_t>& inValues, OvPixels& outPixels);

/// Notes the least and the greatest pixel that is neither padding nor not a number.
void noteRange(const OvImageInfo& inImage, OvPixels& ioPixels);

} // namespace OvPixelConversion

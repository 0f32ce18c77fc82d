#pragma once

#include <cstddef>
#include <vector>

// What the code of one compressed frame says of itself. DCMTK's decoders trust it, and what they make of code
// that belongs to another image, or to none, is anything but an error.

/// The frame header of a JPEG (ISO/IEC 10918-1 B.2.2) or JPEG-LS (14495-1 C.2.2) code stream.
struct OvJpegHeader
{
    int precision = 0; ///< Bits of a sample; 0 when the code has no such header.
    int columns = 0;
    int rows = 0;
    int components = 0;

    static OvJpegHeader of(const std::vector<unsigned char>& inCode);
};

/// Whether the segments of run lengths of which the code's header tells lie one behind the other in it (DICOM
/// PS3.5 G.5), and there are \a inSegments of them.
bool isRleCode(const std::vector<unsigned char>& inCode, unsigned inSegments);

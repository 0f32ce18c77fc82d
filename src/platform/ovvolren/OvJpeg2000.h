#pragma once

#include <QString>

#include <cstdint>
#include <vector>

/// One image coded by JPEG 2000 (ISO/IEC 15444-1), which DCMTK doesn't decode.
struct OvJpeg2000
{
    int columns = 0;
    int rows = 0;
    int components = 0;
    int bits = 0;
    bool isRgb = false; ///< The colours were transformed inside the code and are RGB again.

    /// Pixel by pixel, the components of a pixel next to each other.
    std::vector<std::int32_t> values;

    /// Decodes the code stream \a inCode. False, and \a outProblem says why, when it is damaged or is not
    /// what the fields columns, rows and components say beforehand: they bound what is allocated.
    bool decode(const std::vector<unsigned char>& inCode, QString& outProblem);
};

#pragma once

#include "OvVector3.h"

#include <QStringList>

#include <optional>
#include <string>
#include <vector>

class OvHeaderReader;

/// How an image lies in the patient (DICOM PS3.3 C.7.6.2). A value.
struct OvPlacement
{
    /// Unit vectors at right angles: along a row, to growing columns, and along a column, to growing rows.
    struct Axes
    {
        OvVector3 row;
        OvVector3 column;

        OvVector3 normal() const { return row.cross(column); }
    };

    std::optional<Axes> axes;
    std::optional<OvVector3> position; ///< Of the centre of the upper left pixel.

    /// Distances of the pixels' centres in mm: from column to column, and from row to row. 0 when not known.
    double columnSpacing = 0;
    double rowSpacing = 0;
    double aspect = 1; ///< The height of a pixel by its width, more than 0.

    std::string
        frameOfReference; ///< Its UID; positions in different ones have nothing to do with each other.

    bool isComplete() const { return axes && position && columnSpacing > 0; }

    /// The placements of the frames of one image. What makes no sense, such as a spacing of 0 or directions
    /// that are not at right angles, counts as missing and adds a line to \a outNotices.
    static std::vector<OvPlacement> ofFrames(const OvHeaderReader& inReader, int inFrameCount,
                                             QStringList& outNotices);
};

#pragma once

#include "OvPixels.h"
#include "OvPlacement.h"
#include "OvWindow.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Ovg {
class DicomHeader;
}

/// How the pixels of an image are coded in its file (DICOM PS3.3 C.7.6.3.1). A value.
struct OvPixelCoding
{
    int samplesPerPixel = 1;
    int bitsAllocated = 16;
    int bitsStored = 16;
    int highBit = 15;
    bool isSigned = false;
    std::string photometric = "MONOCHROME2";
};

/// One image of a volume as its header describes it: a file, or one frame of it. A value.
struct OvImageInfo
{
    QString path;
    int frame = 0; ///< In its file, from 0.
    int frameCount = 1;
    int instanceNumber = 0;
    std::shared_ptr<const Ovg::DicomHeader> header; ///< Frames of one file share it.

    OvPixelFormat format; ///< In memory, when the image has been read.
    OvPixelCoding coding; ///< In the file.
    OvPlacement placement;

    /// Replaces a stored value while the image is read: the first entry stands for modalityLutFirst and
    /// below (PS3.3 C.11.1). Null for none.
    std::shared_ptr<const std::vector<std::uint16_t>> modalityLut;
    int modalityLutFirst = 0;

    /// A pixel v stands for the value v * slope + intercept.
    double slope = 1;
    double intercept = 0;

    std::optional<OvWindow> window; ///< The first one that the image has.
    bool inverted = false;          ///< The least value is white (MONOCHROME1).

    /// Pixels from the first to the second are padding around the image (PS3.3 C.7.5.1.1.2).
    std::optional<std::pair<double, double>> padding;

    bool isColour() const { return format.type == OvPixelFormat::Rgb24; }
    double toValue(double inPixel) const { return inPixel * slope + intercept; }

    /// The images of the file \a inPath with the header \a inHeader. None when it has no images or they can't
    /// be shown; \a outProblem then says why, for people. \a outNotices gets what is odd but can be lived
    /// with: each a sentence without a full stop that holds for one image or more.
    ///
    /// What the header lacks is taken as the standard's default, and a value that makes no sense as missing.
    static std::vector<OvImageInfo> ofFile(const QString& inPath,
                                           const std::shared_ptr<const Ovg::DicomHeader>& inHeader,
                                           QString& outProblem, QStringList& outNotices);
};

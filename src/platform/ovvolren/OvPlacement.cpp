#include "OvPlacement.h"

#include "OvHeaderReader.h"
#include "OvTexts.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

constexpr double FarthestPosition = 1e5; ///< mm
constexpr double LargestSpacing = 1e4;   ///< mm
constexpr double LargestAspect = 100;
/// How far directions may be off a length of 1 and a right angle: they come with few digits.
constexpr double Tolerance = 0.02;

bool isNearly(double inA, double inB)
{
    return std::fabs(inA - inB) <= Tolerance;
}

bool isAspect(double inAspect)
{
    return inAspect >= 1 / LargestAspect && inAspect <= LargestAspect;
}

OvVector3 vectorAt(const std::vector<double>& inNumbers, std::size_t inFirst)
{
    return {inNumbers[inFirst], inNumbers[inFirst + 1], inNumbers[inFirst + 2]};
}

std::optional<OvPlacement::Axes> axesOf(const std::vector<double>& inNumbers)
{
    if (inNumbers.size() != 6)
        return std::nullopt;
    const OvVector3 row = vectorAt(inNumbers, 0);
    const OvVector3 column = vectorAt(inNumbers, 3);
    if (!isNearly(row.length(), 1) || !isNearly(column.length(), 1) || !isNearly(row.dot(column), 0))
        return std::nullopt;
    const OvVector3 unitRow = row * (1 / row.length());
    const OvVector3 upright = column - unitRow * unitRow.dot(column);
    return OvPlacement::Axes{.row = unitRow, .column = upright * (1 / upright.length())};
}

std::optional<OvVector3> positionOf(const std::vector<double>& inNumbers)
{
    const auto isNear = [](double inNumber) { return std::fabs(inNumber) <= FarthestPosition; };
    if (inNumbers.size() != 3 || !std::all_of(inNumbers.begin(), inNumbers.end(), isNear))
        return std::nullopt;
    return vectorAt(inNumbers, 0);
}

/// The positions of a dose's frames, which lie one behind the other at distances of their own (PS3.3
/// C.8.8.3.2). Of other frames without functional groups no position is known.
void placeFrames(const std::vector<double>& inOffsets, std::vector<OvPlacement>& ioPlacements)
{
    const auto axes = ioPlacements.front().axes;
    const auto first = ioPlacements.front().position;
    const bool relative = !inOffsets.empty() && inOffsets.front() == 0;
    // Else the numbers are patient coordinates, which only axial doses have.
    const bool usable = axes && first && inOffsets.size() == ioPlacements.size() &&
                        (relative || std::fabs(axes->normal().z) >= 1 - Tolerance);
    for (std::size_t i = 0; i < ioPlacements.size(); ++i) {
        std::optional<OvVector3>& position = ioPlacements[i].position;
        position.reset();
        if (usable && relative)
            position = *first + axes->normal() * inOffsets[i];
        else if (usable)
            position = OvVector3{first->x, first->y, inOffsets[i]};
    }
}

void readSpacing(const OvHeaderReader& inReader, int inFrame, OvPlacement& ioPlacement,
                 QStringList& outNotices)
{
    const auto spacing = inReader.numbers(inFrame, "PixelMeasuresSequence", "PixelSpacing");
    const auto isSpacing = [](double inNumber) { return inNumber > 0 && inNumber <= LargestSpacing; };
    const bool good = spacing.size() == 2 && std::all_of(spacing.begin(), spacing.end(), isSpacing) &&
                      isAspect(spacing[0] / spacing[1]);
    if (good) {
        ioPlacement.rowSpacing = spacing[0];
        ioPlacement.columnSpacing = spacing[1];
        ioPlacement.aspect = spacing[0] / spacing[1];
        return;
    }
    if (!inReader.text(inFrame, "PixelMeasuresSequence", "PixelSpacing").empty())
        outNotices += OvTexts::tr("The pixel spacing makes no sense");
    for (const char* keyword : {"ImagerPixelSpacing", "NominalScannedPixelSpacing", "PixelAspectRatio"}) {
        const auto pair = inReader.numbers(keyword);
        if (pair.size() == 2 && pair[1] > 0 && isAspect(pair[0] / pair[1])) {
            ioPlacement.aspect = pair[0] / pair[1];
            return;
        }
    }
}

OvPlacement placementOf(const OvHeaderReader& inReader, int inFrame, QStringList& outNotices)
{
    OvPlacement placement;
    readSpacing(inReader, inFrame, placement, outNotices);
    placement.frameOfReference = inReader.text("FrameOfReferenceUID");

    const auto axes = inReader.numbers(inFrame, "PlaneOrientationSequence", "ImageOrientationPatient");
    placement.axes = axesOf(axes);
    if (!placement.axes &&
        !inReader.text(inFrame, "PlaneOrientationSequence", "ImageOrientationPatient").empty())
        outNotices += OvTexts::tr("The orientation makes no sense");

    const auto position = inReader.numbers(inFrame, "PlanePositionSequence", "ImagePositionPatient");
    placement.position = positionOf(position);
    if (!placement.position &&
        !inReader.text(inFrame, "PlanePositionSequence", "ImagePositionPatient").empty())
        outNotices += OvTexts::tr("The position makes no sense");
    return placement;
}

} // namespace

std::vector<OvPlacement> OvPlacement::ofFrames(const OvHeaderReader& inReader, int inFrameCount,
                                               QStringList& outNotices)
{
    std::vector<OvPlacement> placements(std::size_t(inFrameCount), placementOf(inReader, 0, outNotices));
    for (int frame = 1; inReader.isEnhanced() && frame < inFrameCount; ++frame)
        placements[std::size_t(frame)] = placementOf(inReader, frame, outNotices);
    if (inFrameCount > 1 && !inReader.isEnhanced())
        placeFrames(inReader.numbers("GridFrameOffsetVector"), placements);
    return placements;
}

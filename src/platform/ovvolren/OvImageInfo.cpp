#include "OvImageInfo.h"

#include "OvHeaderReader.h"
#include "OvTexts.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int MostFrames = 100000;
constexpr int LongestEdge = 65535;
constexpr int Words = 65536;

using Images = std::vector<OvImageInfo>;

bool isGrey(const OvPixelCoding& inCoding)
{
    return inCoding.samplesPerPixel == 1 && inCoding.photometric != "PALETTE COLOR";
}

QString readSize(const OvHeaderReader& inReader, OvPixelFormat& outFormat)
{
    const auto rows = inReader.integer("Rows");
    const auto columns = inReader.integer("Columns");
    if (!rows && !columns) {
        const QString modality = QString::fromStdString(inReader.text("Modality"));
        return OvTexts::tr("The file has no image (%1)")
            .arg(modality.isEmpty() ? OvTexts::tr("no modality") : modality);
    }
    if (rows.value_or(0) < 1 || columns.value_or(0) < 1 || *rows > LongestEdge || *columns > LongestEdge)
        return OvTexts::tr("The image has no sensible size (%1 x %2)")
            .arg(columns.value_or(0))
            .arg(rows.value_or(0));
    outFormat.rows = *rows;
    outFormat.columns = *columns;
    return QString();
}

/// Parametric maps have numbers with a fraction, and none of the elements that describe integers.
bool hasFloatPixels(const OvHeaderReader& inReader, int inBitsAllocated)
{
    return (inBitsAllocated == 32 || inBitsAllocated == 64) && !inReader.integer("BitsStored") &&
           !inReader.integer("PixelRepresentation");
}

OvPixelFormat::Type integerType(int inBits, bool inSigned)
{
    if (inBits > 16)
        return inSigned ? OvPixelFormat::Int32 : OvPixelFormat::UInt32;
    if (inSigned)
        return OvPixelFormat::Int16;
    return inBits > 8 ? OvPixelFormat::UInt16 : OvPixelFormat::UInt8;
}

bool isSensible(const OvPixelCoding& inCoding)
{
    const int allocated = inCoding.bitsAllocated;
    const bool known = allocated == 1 || allocated == 8 || allocated == 16 || allocated == 32;
    return known && inCoding.bitsStored >= 1 && inCoding.bitsStored <= allocated &&
           inCoding.highBit >= inCoding.bitsStored - 1 && inCoding.highBit < allocated;
}

QString readCoding(const OvHeaderReader& inReader, OvImageInfo& ioImage)
{
    OvPixelCoding& coding = ioImage.coding;
    coding.samplesPerPixel = inReader.integer("SamplesPerPixel").value_or(1);
    coding.bitsAllocated = inReader.integer("BitsAllocated").value_or(0);
    coding.bitsStored = inReader.integer("BitsStored").value_or(coding.bitsAllocated);
    coding.highBit = inReader.integer("HighBit").value_or(coding.bitsStored - 1);
    coding.isSigned = inReader.integer("PixelRepresentation").value_or(0) == 1;
    coding.photometric = inReader.text("PhotometricInterpretation");
    ioImage.inverted = coding.photometric == "MONOCHROME1";

    if (isGrey(coding) && hasFloatPixels(inReader, coding.bitsAllocated)) {
        ioImage.format.type = OvPixelFormat::Float32;
        return QString();
    }
    const bool samples =
        coding.samplesPerPixel == 1 || coding.samplesPerPixel == 3 || coding.samplesPerPixel == 4;
    if (!samples || !isSensible(coding))
        return OvTexts::tr(
                   "The pixels are coded in an unknown way (%1 samples, %2 bits allocated, %3 stored, "
                   "high bit %4)")
            .arg(coding.samplesPerPixel)
            .arg(coding.bitsAllocated)
            .arg(coding.bitsStored)
            .arg(coding.highBit);
    ioImage.format.type =
        isGrey(coding) ? integerType(coding.bitsStored, coding.isSigned) : OvPixelFormat::Rgb24;
    return QString();
}

/// The entries of a look-up table, as a list of numbers or as words in bytes.
std::vector<std::uint16_t> lutEntries(const QVariant& inData, std::size_t inCount)
{
    std::vector<std::uint16_t> entries;
    if (inData.typeId() == QMetaType::QByteArray) {
        const QByteArray bytes = inData.toByteArray();
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[qsizetype(i)]); };
        for (std::size_t i = 0; i < inCount && 2 * i + 1 < std::size_t(bytes.size()); ++i)
            entries.push_back(static_cast<std::uint16_t>(byte(2 * i) | byte(2 * i + 1) << 8));
        return entries;
    }
    for (const QVariant& entry : inData.toList())
        entries.push_back(static_cast<std::uint16_t>(entry.toInt()));
    entries.resize(std::min(entries.size(), inCount));
    return entries;
}

/// \a inValue as a pixel of \a inCoding: files with implicit VRs don't tell signed from unsigned words.
int asPixel(int inValue, const OvPixelCoding& inCoding)
{
    if (inCoding.isSigned && inValue >= Words / 2 && inValue < Words)
        return inValue - Words;
    return !inCoding.isSigned && inValue < 0 && inValue >= -Words / 2 ? inValue + Words : inValue;
}

void readModalityLut(const OvHeaderReader& inReader, OvImageInfo& ioImage, QStringList& outNotices)
{
    const QVariantList descriptor =
        inReader.value(QStringLiteral("ModalityLUTSequence.LUTDescriptor")).toList();
    const QVariant data = inReader.value(QStringLiteral("ModalityLUTSequence.LUTData"));
    if (ioImage.isColour() || !data.isValid())
        return;
    const int declared = descriptor.value(0).toInt();
    const auto count = std::size_t(declared == 0 ? Words : declared < 0 ? declared + Words : declared);
    auto entries = lutEntries(data, count);
    if (descriptor.size() != 3 || entries.size() != count || ioImage.coding.bitsStored > 16) {
        outNotices += OvTexts::tr("The look-up table of the values is malformed and not used");
        return;
    }
    ioImage.modalityLut = std::make_shared<const std::vector<std::uint16_t>>(std::move(entries));
    ioImage.modalityLutFirst = asPixel(descriptor.value(1).toInt(), ioImage.coding);
    ioImage.format.type = OvPixelFormat::UInt16;
}

void readRescale(const OvHeaderReader& inReader, OvImageInfo& ioImage, QStringList& outNotices)
{
    if (ioImage.modalityLut || ioImage.isColour())
        return;
    constexpr double Largest = 1e30;
    const char* const group = "PixelValueTransformationSequence";
    const auto slope = inReader.numbers(ioImage.frame, group, "RescaleSlope");
    const auto intercept = inReader.numbers(ioImage.frame, group, "RescaleIntercept");
    const bool none = inReader.text(ioImage.frame, group, "RescaleSlope").empty();
    ioImage.slope = 1;
    ioImage.intercept = 0;
    if (none && intercept.empty())
        return;
    const bool good = !slope.empty() && slope[0] != 0 && std::fabs(slope[0]) <= Largest &&
                      (intercept.empty() || std::fabs(intercept[0]) <= Largest);
    if (!good) {
        outNotices += OvTexts::tr("The rescale slope or intercept makes no sense: values are as stored");
        return;
    }
    ioImage.slope = slope[0];
    ioImage.intercept = intercept.empty() ? 0 : intercept[0];
}

void readWindow(const OvHeaderReader& inReader, OvImageInfo& ioImage)
{
    constexpr double Largest = 1e30;
    const char* const group = "FrameVOILUTSequence";
    const auto centre = inReader.numbers(ioImage.frame, group, "WindowCenter");
    const auto width = inReader.numbers(ioImage.frame, group, "WindowWidth");
    if (centre.empty() || width.empty() || !(width[0] > 0) || width[0] > Largest ||
        std::fabs(centre[0]) > Largest)
        return;
    const std::string word = inReader.text(ioImage.frame, group, "VOILUTFunction");
    const bool exact = word == "LINEAR_EXACT" || width[0] < 1;
    ioImage.window = OvWindow{.centre = centre[0],
                              .width = width[0],
                              .function = word == "SIGMOID" ? OvWindow::Sigmoid
                                          : exact           ? OvWindow::LinearExact
                                                            : OvWindow::Linear};
}

void readPadding(const OvHeaderReader& inReader, OvImageInfo& ioImage)
{
    const auto value = inReader.integer("PixelPaddingValue");
    if (!value || ioImage.modalityLut || ioImage.isColour())
        return;
    const int one = asPixel(*value, ioImage.coding);
    const int other = asPixel(inReader.integer("PixelPaddingRangeLimit").value_or(*value), ioImage.coding);
    ioImage.padding = {std::min(one, other), std::max(one, other)};
}

int framesIn(const OvHeaderReader& inReader, QStringList& outNotices)
{
    if (inReader.text("NumberOfFrames").empty())
        return 1;
    const int count = inReader.integer("NumberOfFrames").value_or(0);
    if (count < 1)
        outNotices += OvTexts::tr("The number of frames makes no sense: only the first is shown");
    return std::max(1, count);
}

} // namespace

Images OvImageInfo::ofFile(const QString& inPath, const std::shared_ptr<const Ovg::DicomHeader>& inHeader,
                           QString& outProblem, QStringList& outNotices)
{
    const OvHeaderReader reader(*inHeader);
    OvImageInfo common;
    common.path = inPath;
    common.header = inHeader;
    common.instanceNumber = reader.integer("InstanceNumber").value_or(0);
    outProblem = readSize(reader, common.format);
    if (outProblem.isEmpty())
        outProblem = readCoding(reader, common);
    common.frameCount = framesIn(reader, outNotices);
    if (outProblem.isEmpty() && common.frameCount > MostFrames)
        outProblem = OvTexts::tr("The image has %1 frames, more than can be shown").arg(common.frameCount);
    if (!outProblem.isEmpty())
        return {};

    readModalityLut(reader, common, outNotices);
    readPadding(reader, common);
    const auto placements = OvPlacement::ofFrames(reader, common.frameCount, outNotices);
    readRescale(reader, common, outNotices);
    readWindow(reader, common);
    Images images(std::size_t(common.frameCount), common);
    for (std::size_t i = 0; i < images.size(); ++i) {
        OvImageInfo& image = images[i];
        image.frame = int(i);
        image.placement = placements[i];
        if (i == 0 || !reader.isEnhanced())
            continue;
        readRescale(reader, image, outNotices);
        readWindow(reader, image);
    }
    outNotices.removeDuplicates();
    return images;
}

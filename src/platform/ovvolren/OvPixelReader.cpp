#include "OvPixelReader.h"

#include "OvCodeHeader.h"
#include "OvJpeg2000.h"
#include "OvPixelConversion.h"
#include "OvTexts.h"

#include <ovwebservice/DicomHeader.h>

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dccodec.h"
#include "dcmtk/dcmdata/dcpixel.h"
#include "dcmtk/dcmdata/dcpixseq.h"
#include "dcmtk/dcmdata/dcpxitem.h"
#include "dcmtk/dcmdata/dcrledrg.h"
#include "dcmtk/dcmdata/dctk.h"
#include "dcmtk/dcmimage/diregist.h"
#include "dcmtk/dcmimgle/dcmimage.h"
#include "dcmtk/dcmjpeg/djdecode.h"
#include "dcmtk/dcmjpls/djdecode.h"

#include <QFile>

#include <algorithm>
#include <limits>
#include <mutex>

namespace {

/// Longer values stay in the file until they are read.
constexpr Uint32 LongestKeptValue = 64 * 1024;

QString otherImage()
{
    return OvTexts::tr("its pixels describe another image than its header");
}

QString brokenOff()
{
    return OvTexts::tr("it ends in the midst of its pixels");
}

void registerDecoders()
{
    static std::once_flag once;
    std::call_once(once, [] {
        // Its making readies DCMTK: the dictionary, the log.
        const Ovg::DicomHeader header;
        // Every image that can't be decoded is reported once, by its reader.
        for (const char* name : {"dcmtk.dcmimage", "dcmtk.dcmimgle", "dcmtk.dcmjpeg", "dcmtk.dcmjpls"})
            OFLog::getLogger(name).setLogLevel(OFLogger::OFF_LOG_LEVEL);
        DJDecoderRegistration::registerCodecs();
        DJLSDecoderRegistration::registerCodecs();
        DcmRLEDecoderRegistration::registerCodecs();
    });
}

bool isJpeg2000(E_TransferSyntax inSyntax)
{
    return inSyntax == EXS_JPEG2000LosslessOnly || inSyntax == EXS_JPEG2000;
}

std::uint64_t pixelCount(const OvImageInfo& inImage)
{
    return std::uint64_t(inImage.format.columns) * std::uint64_t(inImage.format.rows);
}

/// The range of \a ioElement, in bytes, in the machine's order.
QString readPart(DcmElement& ioElement, std::uint64_t inFirst, std::uint64_t inCount, OvBytes& outBytes)
{
    const std::uint64_t length = ioElement.getLength();
    if (inFirst + inCount > length)
        return brokenOff();
    outBytes.resize(inCount);
    const OFCondition result = ioElement.getPartialValue(outBytes.data(), Uint32(inFirst), Uint32(inCount),
                                                         nullptr, gLocalByteOrder);
    return result.good() ? QString() : brokenOff();
}

/// Words were brought into the machine's order; of numbers of 32 bits in big endian that leaves the first
/// word, the high one, in the place of the low one.
void swapWords(OvBytes& ioBytes)
{
    auto* words = reinterpret_cast<std::uint16_t*>(ioBytes.data());
    for (std::size_t i = 0; i + 1 < ioBytes.size() / 2; i += 2)
        std::swap(words[i], words[i + 1]);
}

/// The bytes of the fragments that make up one frame.
QString readFragments(DcmPixelSequence& ioSequence, const OvImageInfo& inImage,
                      std::vector<unsigned char>& outCode)
{
    const auto start = [&](int inFrame) {
        Uint32 fragment = 0;
        const bool found = DcmCodec::determineStartFragment(Uint32(inFrame), Sint32(inImage.frameCount),
                                                            &ioSequence, fragment)
                               .good();
        return found ? unsigned(fragment) : 0U;
    };
    const auto count = unsigned(ioSequence.card());
    const unsigned first = start(inImage.frame);
    const unsigned end = inImage.frame + 1 < inImage.frameCount ? start(inImage.frame + 1) : count;
    if (first < 1 || end <= first || end > count)
        return brokenOff();
    for (unsigned i = first; i < end; ++i) {
        DcmPixelItem* item = nullptr;
        Uint8* bytes = nullptr;
        if (ioSequence.getItem(item, i).bad() || item->getUint8Array(bytes).bad())
            return brokenOff();
        if (!bytes)
            return brokenOff();
        outCode.insert(outCode.end(), bytes, bytes + item->getLength());
    }
    return QString();
}

/// The colours of one frame of \a ioSet, through DCMTK's conversions.
QString readColours(DcmItem& ioSet, E_TransferSyntax inSyntax, int inFrame, const OvImageInfo& inImage,
                    OvPixels& outPixels)
{
    DicomImage image(&ioSet, inSyntax, CIF_UsePartialAccessToPixelData, unsigned(inFrame), 1);
    if (image.getStatus() != EIS_Normal)
        return OvTexts::tr("its pixels cannot be decoded (%1)")
            .arg(QLatin1String(DicomImage::getString(image.getStatus())));
    if (image.isMonochrome() || image.getWidth() != unsigned(inImage.format.columns) ||
        image.getHeight() != unsigned(inImage.format.rows))
        return otherImage();
    outPixels.format = inImage.format;
    outPixels.bytes.resize(inImage.format.bytes());
    const int done = image.getOutputData(outPixels.bytes.data(), outPixels.bytes.size(), 8, 0, 0);
    return done ? QString() : OvTexts::tr("its colours cannot be converted");
}

/// What \a inDecoded has, as a data set without compression, for the conversion of its colours.
std::unique_ptr<DcmDataset> uncompressedCopy(const OvJpeg2000& inDecoded, const OvImageInfo& inImage,
                                             DcmDataset& ioOriginal)
{
    auto set = std::make_unique<DcmDataset>();
    for (const DcmTagKey& key :
         {DCM_RedPaletteColorLookupTableDescriptor, DCM_GreenPaletteColorLookupTableDescriptor,
          DCM_BluePaletteColorLookupTableDescriptor, DCM_RedPaletteColorLookupTableData,
          DCM_GreenPaletteColorLookupTableData, DCM_BluePaletteColorLookupTableData})
    {
        DcmElement* element = nullptr;
        if (ioOriginal.findAndGetElement(key, element, OFFalse, OFTrue).good())
            set->insert(element);
    }
    const std::string& photometric = inImage.coding.photometric;
    const bool isPalette = photometric == "PALETTE COLOR";
    const bool isYbr = photometric.starts_with("YBR_FULL") && !inDecoded.isRgb;
    const int bits = inDecoded.bits > 8 ? 16 : 8;
    const auto put = [&](const DcmTagKey& inKey, int inNumber) {
        set->putAndInsertUint16(inKey, Uint16(inNumber));
    };
    set->putAndInsertString(DCM_PhotometricInterpretation, isPalette ? "PALETTE COLOR"
                                                           : isYbr   ? "YBR_FULL"
                                                                     : "RGB");
    put(DCM_SamplesPerPixel, inDecoded.components);
    put(DCM_PlanarConfiguration, 0);
    put(DCM_Rows, inDecoded.rows);
    put(DCM_Columns, inDecoded.columns);
    put(DCM_BitsAllocated, bits);
    put(DCM_BitsStored, std::min(inDecoded.bits, 16));
    put(DCM_HighBit, std::min(inDecoded.bits, 16) - 1);
    put(DCM_PixelRepresentation, 0);
    if (bits == 8) {
        const std::vector<Uint8> bytes(inDecoded.values.begin(), inDecoded.values.end());
        set->putAndInsertUint8Array(DCM_PixelData, bytes.data(), bytes.size());
    } else {
        const std::vector<Uint16> words(inDecoded.values.begin(), inDecoded.values.end());
        set->putAndInsertUint16Array(DCM_PixelData, words.data(), words.size());
    }
    return set;
}

} // namespace

struct OvPixelReader::Record
{
    DcmFileFormat file;
    QString problem;

    DcmDataset& set() { return *file.getDataset(); }
    E_TransferSyntax syntax() { return set().getOriginalXfer(); }

    QString readCode(DcmPixelData& ioData, const OvImageInfo& inImage, std::vector<unsigned char>& outCode);
    QString checkCode(DcmPixelData& ioData, const OvImageInfo& inImage, int& outCellBits);
    QString readFloats(const OvImageInfo& inImage, OvPixels& outPixels);
    QString readNativeGrey(DcmPixelData& ioData, const OvImageInfo& inImage, OvPixels& outPixels);
    QString readDecodedGrey(DcmPixelData& ioData, const OvImageInfo& inImage, int inCellBits,
                            OvPixels& outPixels);
    QString readJpeg2000(DcmPixelData& ioData, const OvImageInfo& inImage, OvPixels& outPixels);
};

OvPixelReader::OvPixelReader(const QString& inPath)
    : d([] {
        registerDecoders();
        return std::make_unique<Record>();
    }())
{
    const OFCondition result =
        d->file.loadFile(QFile::encodeName(inPath).constData(), EXS_Unknown, EGL_noChange, LongestKeptValue);
    if (result.bad())
        d->problem = OvTexts::tr("its file cannot be read (%1)").arg(QLatin1String(result.text()));
}

OvPixelReader::~OvPixelReader() = default;

QString OvPixelReader::read(const OvImageInfo& inImage, OvPixels& outPixels)
{
    if (!d->problem.isEmpty())
        return d->problem;
    if (inImage.format.type == OvPixelFormat::Float32)
        return d->readFloats(inImage, outPixels);
    DcmElement* element = nullptr;
    auto* data = d->set().findAndGetElement(DCM_PixelData, element).good()
                     ? dynamic_cast<DcmPixelData*>(element)
                     : nullptr;
    if (!data)
        return OvTexts::tr("it has no pixels");
    if (isJpeg2000(d->syntax()))
        return d->readJpeg2000(*data, inImage, outPixels);
    const bool isCoded = DcmXfer(d->syntax()).isEncapsulated();
    int cellBits = 0;
    const QString failed = isCoded ? d->checkCode(*data, inImage, cellBits) : QString();
    if (!failed.isEmpty())
        return failed;
    if (inImage.isColour())
        return readColours(d->set(), d->syntax(), inImage.frame, inImage, outPixels);
    return isCoded ? d->readDecodedGrey(*data, inImage, cellBits, outPixels)
                   : d->readNativeGrey(*data, inImage, outPixels);
}

QString OvPixelReader::Record::readCode(DcmPixelData& ioData, const OvImageInfo& inImage,
                                        std::vector<unsigned char>& outCode)
{
    DcmPixelSequence* sequence = nullptr;
    if (ioData.getEncapsulatedRepresentation(syntax(), nullptr, sequence).bad() || !sequence)
        return OvTexts::tr("it has no pixels");
    return readFragments(*sequence, inImage, outCode);
}

/// Looks at the code of one frame before DCMTK does. The bits of a decoded cell come from the code too:
/// \a outCellBits.
QString OvPixelReader::Record::checkCode(DcmPixelData& ioData, const OvImageInfo& inImage, int& outCellBits)
{
    const QString damaged = OvTexts::tr("its pixels cannot be decoded (damaged)");
    std::vector<unsigned char> code;
    const QString failed = readCode(ioData, inImage, code);
    outCellBits = inImage.coding.bitsAllocated;
    if (!failed.isEmpty() || !DcmCodecList::canChangeCoding(syntax(), EXS_LittleEndianExplicit))
        return failed;
    if (syntax() == EXS_RLELossless) {
        const int segments = inImage.coding.bitsAllocated / 8 * inImage.coding.samplesPerPixel;
        return isRleCode(code, unsigned(segments)) ? QString() : damaged;
    }
    const OvJpegHeader header = OvJpegHeader::of(code);
    if (header.precision == 0)
        return damaged;
    outCellBits = header.precision > 8 ? 16 : 8;
    const bool same = header.columns == inImage.format.columns && header.rows == inImage.format.rows &&
                      header.components == inImage.coding.samplesPerPixel &&
                      outCellBits <= inImage.coding.bitsAllocated;
    return same ? QString() : otherImage();
}

QString OvPixelReader::Record::readFloats(const OvImageInfo& inImage, OvPixels& outPixels)
{
    const bool isDouble = inImage.coding.bitsAllocated == 64;
    const std::uint64_t count = pixelCount(inImage);
    const std::uint64_t frameBytes = count * (isDouble ? sizeof(double) : sizeof(float));
    DcmElement* element = nullptr;
    if (set().findAndGetElement(isDouble ? DCM_DoubleFloatPixelData : DCM_FloatPixelData, element).bad())
        return OvTexts::tr("it has no pixels");
    OvBytes bytes;
    const QString failed = readPart(*element, frameBytes * std::uint64_t(inImage.frame), frameBytes, bytes);
    if (!failed.isEmpty())
        return failed;
    outPixels.format = inImage.format;
    if (isDouble) {
        const auto* doubles = reinterpret_cast<const double*>(bytes.data());
        outPixels.bytes.resize(inImage.format.bytes());
        std::transform(doubles, doubles + count, outPixels.as<float>(), [](double v) { return float(v); });
    } else {
        outPixels.bytes = std::move(bytes);
    }
    OvPixelConversion::noteRange(inImage, outPixels);
    return QString();
}

QString OvPixelReader::Record::readNativeGrey(DcmPixelData& ioData, const OvImageInfo& inImage,
                                              OvPixels& outPixels)
{
    const std::uint64_t frameBits = pixelCount(inImage) * std::uint64_t(inImage.coding.bitsAllocated);
    const std::uint64_t firstBit = frameBits * std::uint64_t(inImage.frame);
    const std::uint64_t first = firstBit / 8;
    const std::uint64_t count = (firstBit + frameBits + 7) / 8 - first;
    const bool inPlace = OvPixelConversion::fitsInPlace(inImage);
    OvBytes cells;
    OvBytes& bytes = inPlace ? outPixels.bytes : cells;
    const QString failed = readPart(ioData, first, count, bytes);
    if (!failed.isEmpty())
        return failed;
    if (inImage.coding.bitsAllocated == 32 && syntax() == EXS_BigEndianExplicit)
        swapWords(bytes);
    outPixels.format = inImage.format;
    if (inPlace)
        OvPixelConversion::greyInPlace(inImage, outPixels);
    else
        OvPixelConversion::grey(inImage, cells, int(firstBit % 8), outPixels);
    return QString();
}

QString OvPixelReader::Record::readDecodedGrey(DcmPixelData& ioData, const OvImageInfo& inImage,
                                               int inCellBits, OvPixels& outPixels)
{
    const std::uint64_t count = pixelCount(inImage) * std::uint64_t(inImage.coding.bitsAllocated) / 8;
    if (count >= std::numeric_limits<Uint32>::max() || inImage.coding.bitsAllocated < 8)
        return OvTexts::tr("its pixels are coded in an unknown way");
    OvBytes bytes(count + count % 2, 0);
    Uint32 fragment = 0;
    OFString model;
    const OFCondition result = ioData.getUncompressedFrame(&set(), Uint32(inImage.frame), fragment,
                                                           bytes.data(), Uint32(bytes.size()), model);
    if (result.bad())
        return OvTexts::tr("its pixels cannot be decoded (%1: %2)")
            .arg(QLatin1String(DcmXfer(syntax()).getXferName()), QLatin1String(result.text()));
    OvImageInfo image = inImage;
    image.coding.bitsAllocated = inCellBits;
    OvPixelConversion::grey(image, bytes, 0, outPixels);
    return QString();
}

QString OvPixelReader::Record::readJpeg2000(DcmPixelData& ioData, const OvImageInfo& inImage,
                                            OvPixels& outPixels)
{
    std::vector<unsigned char> code;
    QString failed = readCode(ioData, inImage, code);
    if (!failed.isEmpty())
        return failed;
    OvJpeg2000 decoder;
    decoder.columns = inImage.format.columns;
    decoder.rows = inImage.format.rows;
    decoder.components = inImage.coding.samplesPerPixel;
    if (!decoder.decode(code, failed))
        return failed;
    if (!inImage.isColour()) {
        OvPixelConversion::grey(inImage, decoder.values, outPixels);
        return QString();
    }
    return readColours(*uncompressedCopy(decoder, inImage, set()), EXS_LittleEndianExplicit, 0, inImage,
                       outPixels);
}

#include "DicomFileScan.h"

#include "DicomNesting.h"
#include "DicomTagPath.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <tuple>
#include <utility>

namespace Ovg {

namespace {

constexpr qint64 preamble = 128;
constexpr quint32 undefinedLengthMark = 0xFFFFFFFF;
constexpr quint32 item = 0xFFFEE000;
constexpr quint32 itemEnd = 0xFFFEE00D;
constexpr quint32 sequenceEnd = 0xFFFEE0DD;
constexpr quint32 mediaStorageSopClass = 0x00020002;
constexpr quint32 transferSyntaxTag = 0x00020010;
constexpr quint32 pixelDataTags[] = {0x7FE00008, 0x7FE00009, 0x7FE00010};
constexpr quint32 longestText = 128; // bytes; UIDs have 64

enum class LengthField
{
    Unknown, ///< No VR of the standard.
    Short,   ///< Two bytes.
    Long,    ///< Two bytes reserved, four bytes.
};

/// How the header of an element with the VR at \a inVr goes on (PS3.5 table 7.1-1 and 7.1-2).
LengthField lengthField(const uchar* inVr)
{
    static constexpr std::string_view shortVrs =
        "AE AS AT CS DA DS DT FD FL IS LO LT PN SH SL SS ST TM UI UL US";
    static constexpr std::string_view longVrs = "OB OD OF OL OV OW SQ SV UC UN UR UT UV";
    const char vr[] = {static_cast<char>(inVr[0]), static_cast<char>(inVr[1])};
    const std::string_view name(vr, 2);
    if (vr[0] < 'A' || vr[0] > 'Z' || vr[1] < 'A' || vr[1] > 'Z')
        return LengthField::Unknown;
    if (shortVrs.find(name) != std::string_view::npos)
        return LengthField::Short;
    return longVrs.find(name) != std::string_view::npos ? LengthField::Long : LengthField::Unknown;
}

quint32 tagAt(const uchar* inBytes)
{
    return quint32(qFromLittleEndian<quint16>(inBytes)) << 16 | qFromLittleEndian<quint16>(inBytes + 2);
}

bool isExplicitLittleEndian(const std::string& inSyntax)
{
    return inSyntax == "1.2.840.10008.1.2.1" || inSyntax.starts_with("1.2.840.10008.1.2.4.") ||
           inSyntax.starts_with("1.2.840.10008.1.2.5");
}

bool isPixelData(quint32 inTag)
{
    return std::find(std::begin(pixelDataTags), std::end(pixelDataTags), inTag) != std::end(pixelDataTags);
}

int toInt(const std::string& inText)
{
    return QByteArray::fromStdString(inText).toInt();
}

} // namespace

bool startsLikeDicom(QByteArrayView inStart, qint64 inSize)
{
    if (inStart.size() >= preamble + 4 && std::memcmp(inStart.data() + preamble, "DICM", 4) == 0)
        return true;
    if (inStart.size() < 8)
        return false;
    const auto* bytes = reinterpret_cast<const uchar*>(inStart.data());
    const auto isFirstGroup = [](quint16 group) { return group == 0x0002 || group == 0x0008; };
    const bool knownVr = lengthField(bytes + 4) != LengthField::Unknown;
    if (isFirstGroup(qFromBigEndian<quint16>(bytes)))
        return knownVr;
    return isFirstGroup(qFromLittleEndian<quint16>(bytes)) &&
           (knownVr || qFromLittleEndian<quint32>(bytes + 4) <= inSize - 8);
}

bool DicomFileScan::Element::undefinedLength() const
{
    return length == undefinedLengthMark;
}

DicomFileScan::DicomFileScan(QFile& ioFile)
    : mFile(ioFile)
    , mSize(ioFile.size())
{}

DicomFileScan::Outcome DicomFileScan::run()
{
    const uchar* mark = bytes(preamble, 4);
    std::string sopClass;
    if (!mark || std::memcmp(mark, "DICM", 4) != 0)
        return Outcome::Unsure;
    mPlace = preamble + 4;
    if (!readMeta(sopClass))
        return Outcome::Unsure;
    if (sopClass == "1.2.840.10008.1.3.10")
        return Outcome::Directory;
    mImplicit = mSyntax == "1.2.840.10008.1.2";
    if (!mImplicit && !isExplicitLittleEndian(mSyntax))
        return Outcome::Unsure;
    return readDataSet() ? Outcome::Complete : mFailure;
}

QString DicomFileScan::reason() const
{
    if (mFailure == Outcome::TooDeep)
        return DicomNesting::reason();
    return QStringLiteral("damaged: ends inside element %1")
        .arg(dicomTagText(static_cast<quint16>(mLastTag >> 16), static_cast<quint16>(mLastTag)));
}

/// \a inCount bytes of the file from \a inFrom on, or null when there are none. Valid until the next call.
const uchar* DicomFileScan::bytes(qint64 inFrom, qint64 inCount)
{
    if (inFrom < mWindowStart || inFrom + inCount > mWindowStart + mWindowCount) {
        mWindowStart = inFrom;
        mWindowCount = inFrom + inCount <= mSize && mFile.seek(inFrom)
                           ? mFile.read(reinterpret_cast<char*>(mWindow.data()), qint64(mWindow.size()))
                           : 0;
    }
    return inCount <= mWindowCount - (inFrom - mWindowStart) ? mWindow.data() + (inFrom - mWindowStart)
                                                             : nullptr;
}

/// The first value of an element whose header has just been read, without padding. Empty when it is too long.
std::string DicomFileScan::text(const Element& inElement)
{
    const uchar* value = inElement.length <= longestText ? bytes(mPlace, inElement.length) : nullptr;
    if (!value)
        return {};
    std::string text(reinterpret_cast<const char*>(value), inElement.length);
    text.erase(std::min(text.find('\\'), text.size()));
    text.erase(text.find_last_not_of(std::string_view(" \0", 2)) + 1);
    text.erase(0, text.find_first_not_of(' '));
    return text;
}

bool DicomFileScan::fail(Outcome inOutcome)
{
    mFailure = inOutcome;
    return false;
}

bool DicomFileScan::readHeader(Element& outElement)
{
    const uchar* header = bytes(mPlace, 8);
    if (!header)
        return false;
    outElement = {.tag = tagAt(header)};
    if (!mImplicit && outElement.tag >> 16 != item >> 16)
        return readExplicitHeader(outElement);
    outElement.length = qFromLittleEndian<quint32>(header + 4);
    mPlace += 8;
    return true;
}

bool DicomFileScan::readExplicitHeader(Element& outElement)
{
    const uchar* header = bytes(mPlace, 8);
    const LengthField field = lengthField(header + 4);
    if (field == LengthField::Unknown)
        return fail(Outcome::Unsure);
    outElement.unknownVr = std::memcmp(header + 4, "UN", 2) == 0;
    outElement.sequence = std::memcmp(header + 4, "SQ", 2) == 0;
    if (field == LengthField::Short) {
        outElement.length = qFromLittleEndian<quint16>(header + 6);
        mPlace += 8;
        return true;
    }
    header = bytes(mPlace, 12);
    if (!header)
        return false;
    outElement.length = qFromLittleEndian<quint32>(header + 8);
    mPlace += 12;
    return true;
}

/// The file meta information, always in explicit little endian; its end is where the group ends.
bool DicomFileScan::readMeta(std::string& outSopClass)
{
    for (const uchar* next = bytes(mPlace, 8); next && tagAt(next) >> 16 == 0x0002; next = bytes(mPlace, 8)) {
        Element element;
        if (!readHeader(element) || element.undefinedLength())
            return false;
        if (element.tag == mediaStorageSopClass)
            outSopClass = text(element);
        if (element.tag == transferSyntaxTag)
            mSyntax = text(element);
        mPlace += element.length;
    }
    mDataSetStart = mPlace;
    return !mSyntax.empty() && mPlace < mSize;
}

bool DicomFileScan::readDataSet()
{
    while (mPlace < mSize) {
        Element element;
        if (!readHeader(element))
            return mSize - mPlace < 8 ? fail(Outcome::Unsure) : false;
        if (element.tag <= mLastTag)
            return fail(Outcome::Unsure);
        mLastTag = element.tag;
        keep(element);
        const qint64 start = mPlace;
        if (!skipValue(element, 0))
            return false;
        if (!isPixelData(element.tag))
            continue;
        if (!element.sequence)
            std::tie(mPixelsStart, mPixelsEnd) = std::tie(start, mPlace);
        return true;
    }
    return true;
}

bool DicomFileScan::skipValue(const Element& inElement, int inDepth)
{
    if (!inElement.undefinedLength()) {
        mPlace += inElement.length;
        return mPlace <= mSize;
    }
    // A sequence whose VR was lost on the way is coded in implicit VR (PS3.5 6.2.2).
    const bool implicitAround = std::exchange(mImplicit, mImplicit || inElement.unknownVr);
    const bool done = skipItems(inDepth + 1);
    mImplicit = implicitAround;
    return done;
}

/// The items of a sequence, or the fragments of pixels, up to the delimiter.
bool DicomFileScan::skipItems(int inDepth)
{
    Element element;
    while (inDepth <= DicomNesting::deepest && readHeader(element)) {
        if (element.tag == sequenceEnd)
            return true;
        if (element.tag != item)
            return fail(Outcome::Unsure);
        if (!(element.undefinedLength() ? skipItemContent(inDepth) : skipValue(element, inDepth)))
            return false;
    }
    return inDepth <= DicomNesting::deepest ? false : fail(Outcome::TooDeep);
}

bool DicomFileScan::skipItemContent(int inDepth)
{
    Element element;
    while (readHeader(element)) {
        if (element.tag == itemEnd)
            return true;
        if (!skipValue(element, inDepth))
            return false;
    }
    return false;
}

void DicomFileScan::keep(const Element& inElement)
{
    switch (inElement.tag) {
    case 0x00080016:
        mFacts.instance.sopClassUid = text(inElement);
        break;
    case 0x00080018:
        mFacts.instance.sopInstanceUid = text(inElement);
        break;
    case 0x00080060:
        mFacts.modality = text(inElement);
        break;
    case 0x0020000D:
        mFacts.studyInstanceUid = text(inElement);
        break;
    case 0x0020000E:
        mFacts.seriesInstanceUid = text(inElement);
        break;
    case 0x00200011:
        mFacts.seriesNumber = toInt(text(inElement));
        break;
    case 0x00200013:
        mFacts.instance.instanceNumber = toInt(text(inElement));
        break;
    default:
        break;
    }
}

} // namespace Ovg

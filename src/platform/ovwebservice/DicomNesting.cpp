#include "DicomNesting.h"

#include "DicomFileScan.h"

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dcistrmf.h"
#include "dcmtk/dcmdata/dctk.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

namespace Ovg {

namespace {

constexpr qint64 undefinedEnd = std::numeric_limits<qint64>::max();
constexpr quint32 undefinedLengthMark = 0xFFFFFFFF;
constexpr qint64 markSize = 8; // tag and length
constexpr size_t windowSize = size_t(256) * 1024;

/// Gives the next bytes, at most so many, and how many there were; 0 at the end.
using Reader = std::function<qint64(uchar* outBytes, qint64 inCount)>;

bool isTooDeep(const Reader& inRead)
{
    DicomNesting nesting;
    std::vector<uchar> window(windowSize);
    qint64 start = 0; // of the window
    qint64 kept = 0;
    for (;;) {
        const qint64 got = inRead(window.data() + kept, qint64(window.size()) - kept);
        if (got <= 0)
            return false;
        const qint64 count = kept + got;
        for (qint64 i = 0; i + markSize <= count; ++i)
            nesting.see(start + i, window.data() + i);
        if (nesting.tooDeep())
            return true;
        kept = std::min(count, markSize - 1);
        start += count - kept;
        std::memmove(window.data(), window.data() + count - kept, size_t(kept));
    }
}

bool isTooDeep(QFile& ioFile, qint64 inFrom, qint64 inTo)
{
    qint64 left = inTo - inFrom;
    return left > 0 && ioFile.seek(inFrom) && isTooDeep([&](uchar* outBytes, qint64 inCount) {
               const qint64 got = ioFile.read(reinterpret_cast<char*>(outBytes), std::min(inCount, left));
               left -= got;
               return got;
           });
}

bool isTooDeepInflated(const QString& inPath, qint64 inFrom, E_StreamCompression inCompression)
{
    DcmInputFileStream stream(QFile::encodeName(inPath).constData(), inFrom);
    if (stream.installCompressionFilter(inCompression).bad())
        return false;
    return isTooDeep([&stream](uchar* outBytes, qint64 inCount) {
        return stream.good() && !stream.eos() ? qint64(stream.read(outBytes, inCount)) : 0;
    });
}

} // namespace

void DicomNesting::see(qint64 inPlace, const uchar* inBytes)
{
    const bool little = inBytes[0] == 0xFE && inBytes[1] == 0xFF;
    const bool big = inBytes[0] == 0xFF && inBytes[1] == 0xFE;
    if ((!little && !big) || tooDeep())
        return;
    const quint16 element =
        little ? qFromLittleEndian<quint16>(inBytes + 2) : qFromBigEndian<quint16>(inBytes + 2);
    if (element == 0xE000)
        open(inPlace,
             little ? qFromLittleEndian<quint32>(inBytes + 4) : qFromBigEndian<quint32>(inBytes + 4));
    else if (element == 0xE00D)
        close();
}

/// An item ends where its length says, but not before the last one inside it.
void DicomNesting::open(qint64 inPlace, quint32 inLength)
{
    while (!mEnds.empty() && mEnds.back() <= inPlace)
        mEnds.pop_back();
    mEnds.push_back(inLength == undefinedLengthMark ? undefinedEnd : inPlace + markSize + inLength);
}

/// Only items of undefined length have a mark at their end.
void DicomNesting::close()
{
    const auto last = std::find(mEnds.rbegin(), mEnds.rend(), undefinedEnd);
    if (last != mEnds.rend())
        mEnds.erase(last.base() - 1, mEnds.end());
}

QString DicomNesting::reason()
{
    return QStringLiteral("damaged: sequences are nested too deep, in more than %1 levels").arg(deepest);
}

bool isNestedTooDeep(QFile& ioFile, const DicomFileScan& inScan)
{
    const E_StreamCompression compression = DcmXfer(inScan.transferSyntax().c_str()).getStreamCompression();
    if (compression != ESC_none && isTooDeepInflated(ioFile.fileName(), inScan.dataSetStart(), compression))
        return true;
    return isTooDeep(ioFile, 0, inScan.pixelsStart()) || isTooDeep(ioFile, inScan.pixelsEnd(), ioFile.size());
}

} // namespace Ovg

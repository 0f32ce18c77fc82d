#pragma once

#include "DicomInstanceFacts.h"

#include <QByteArrayView>
#include <QString>

#include <array>

class QFile;

namespace Ovg {

/// True if a file of \a inSize bytes that starts with \a inStart (256 bytes, or all) can be DICOM: it has the
/// preamble of PS3.10, or it starts with a sound element of group 0002 or 0008.
bool startsLikeDicom(QByteArrayView inStart, qint64 inSize);

/// Finds in a DICOM file what tells its instance from others, without building a data set: it goes from
/// element to element by their lengths, and so also sees whether the file ends too early.
///
/// It knows the common case, a file with meta information in little endian that isn't deflated, and says
/// Unsure to everything else; DicomHeader::readFile() then decides.
class DicomFileScan
{
public:
    enum class Outcome
    {
        Complete,  ///< facts() are there.
        Directory, ///< A DICOMDIR.
        BrokenOff, ///< The file ends inside an element; reason() says in which.
        TooDeep,   ///< Sequences are nested too deep for DCMTK, which must not read the file.
        Unsure,
    };

    /// \a ioFile is open, and outlives this.
    explicit DicomFileScan(QFile& ioFile);

    Outcome run();

    const DicomInstanceFacts& facts() const { return mFacts; }
    /// Of BrokenOff and TooDeep.
    QString reason() const;

    /// From the meta information; empty when there is none that can be read.
    const std::string& transferSyntax() const { return mSyntax; }
    qint64 dataSetStart() const { return mDataSetStart; }
    /// Where the pixels lie when run() was Complete; both 0 when there are none.
    qint64 pixelsStart() const { return mPixelsStart; }
    qint64 pixelsEnd() const { return mPixelsEnd; }

private:
    struct Element
    {
        quint32 tag = 0;
        quint32 length = 0;
        bool unknownVr = false;
        bool sequence = false; ///< By an explicit VR.

        bool undefinedLength() const;
    };

    const uchar* bytes(qint64 inFrom, qint64 inCount);
    std::string text(const Element& inElement);
    bool readHeader(Element& outElement);
    bool readExplicitHeader(Element& outElement);
    bool readMeta(std::string& outSopClass);
    bool readDataSet();
    bool skipValue(const Element& inElement, int inDepth);
    bool skipItems(int inDepth);
    bool skipItemContent(int inDepth);
    bool fail(Outcome inOutcome);
    void keep(const Element& inElement);

    QFile& mFile;
    const qint64 mSize;
    qint64 mPlace = 0;
    bool mImplicit = false;
    Outcome mFailure = Outcome::BrokenOff; ///< What it means that something could not be read or skipped.
    quint32 mLastTag = 0;                  ///< At the top level.
    DicomInstanceFacts mFacts;
    std::string mSyntax;
    qint64 mDataSetStart = 0;
    qint64 mPixelsStart = 0;
    qint64 mPixelsEnd = 0;
    qint64 mWindowStart = 0;
    qint64 mWindowCount = 0;
    std::array<uchar, 16 * 1024> mWindow;
};

} // namespace Ovg

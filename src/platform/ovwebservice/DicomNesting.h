#pragma once

#include <QString>

#include <vector>

class QFile;

namespace Ovg {

class DicomFileScan;

/// Follows how deep items lie in one another, from their marks in the raw bytes alone, so in every transfer
/// syntax. DCMTK reads nested items by recursion without a bound: what is too deep must not reach it.
///
/// The marks are taken for marks wherever they stand. A value that imitates the end of an item can hide a
/// level, one that imitates a start adds a level; by chance neither happens often enough to matter.
class DicomNesting
{
public:
    static constexpr int deepest = 64;

    /// Takes the eight bytes at \a inBytes, which stand at \a inPlace. Places grow from call to call.
    void see(qint64 inPlace, const uchar* inBytes);

    bool tooDeep() const { return mEnds.size() > size_t(deepest); }

    /// For the reason why a file counts as damaged.
    static QString reason();

private:
    void open(qint64 inPlace, quint32 inLength);
    void close();

    std::vector<qint64> mEnds; ///< Of the open items, the outermost first.
};

/// True if \a ioFile, for which \a inScan has run, must not be read by DCMTK. Looks at all of the file but
/// the pixels that the scan knows, and at the inflated data set when it is deflated.
bool isNestedTooDeep(QFile& ioFile, const DicomFileScan& inScan);

} // namespace Ovg

#pragma once

#include "DicomTagPath.h"

#include <QSharedDataPointer>
#include <QStringList>
#include <QVariant>

namespace Ovg {

/// The elements of one DICOM instance without its pixels. A value with copy on write.
///
/// Made by reading a file, or filled by hand for studies that don't come from files. Any number of threads
/// may read the same header.
class DicomHeader
{
public:
    /// How the reading of a file ended.
    enum class Outcome
    {
        Read,       ///< The header is there.
        Directory,  ///< A DICOMDIR, not an instance; the header is there.
        NotDicom,   ///< Something else than DICOM.
        Damaged,    ///< DICOM, but broken off or malformed.
        Unreadable, ///< The file can't be opened or read.
    };

    /// An empty header. Its texts are UTF-8.
    DicomHeader();
    DicomHeader(const DicomHeader& inOther);
    DicomHeader& operator=(const DicomHeader& inOther);
    ~DicomHeader();

    /// Reads the file \a inPath up to its pixels, into \a outHeader when the outcome is Read or Directory.
    ///
    /// The content decides, not the name: a file starts with the preamble and "DICM" (PS3.10), or without
    /// them with an element of group 0002 or 0008. A file is damaged when it ends inside an element, be it
    /// the pixels, and when its sequences are nested in more than 64 levels. With any other outcome than
    /// Read, \a outReason gets one line of text that says why.
    static Outcome readFile(const QString& inPath, DicomHeader& outHeader, QString& outReason);

    /// The value of the element at \a inPath. Invalid when it is absent, or when \a inPath is; a present but
    /// empty element is an empty QString, or an empty QByteArray for the VRs of bytes.
    ///
    /// | VR | type |
    /// |---|---|
    /// | DA | QDate |
    /// | TM | QTime, fractions down to milliseconds; missing parts count as 0 |
    /// | DT | QDateTime: with its offset from UTC, else with that of (0008,0201), else in local time |
    /// | IS US SS UL SL UV SV | int, or qlonglong beyond its range, or double beyond that |
    /// | DS FL FD | double |
    /// | AT | QString "(gggg,eeee)" in upper case |
    /// | OB OW OD OF OL OV UN | QByteArray, numbers in little endian; never null |
    /// | SQ | int, the number of items |
    /// | all others | QString, by the Specific Character Set of the data set or of the nearest item around |
    ///
    /// More than one value gives a QVariantList of these, but with a date as the QDateTime of its local
    /// midnight and a time as text "hh:mm:ss.zzz". A value that its VR doesn't allow, such as a date
    /// "19991332", gives the text as it stands. Pixel data counts as absent.
    ///
    /// \a outProblems, if not null, gets one line for each value that could not be read by its VR and for a
    /// character set that is unknown or doesn't fit the text (which then is read as Latin-1).
    QVariant value(const DicomTagPath& inPath, QStringList* outProblems = nullptr) const;

    /// Sets the element at \a inPath from text, values separated by backslashes, and makes the items on the
    /// way. The VR is the dictionary's. False, and nothing changed, for an invalid path, for a VR of bytes or
    /// a sequence, for a private element, for the character set, and for text that the header's character set
    /// lacks (it has all of Unicode, unless the header is a file's).
    bool setText(const DicomTagPath& inPath, const QString& inText);

private:
    struct Record;

    static Record* makeRecord();

    QSharedDataPointer<Record> d;
};

} // namespace Ovg

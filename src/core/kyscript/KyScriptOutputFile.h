#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

class QFile;

/// The files that scripts write: how they are named and opened.
class KyScriptOutputFile
{
public:
    KyScriptOutputFile() = delete;

    /// \a inDirectory, "/", \a inFilename, then "-" and the timestamp of now if \a inAppendTimestamp or
    /// \a inFilename is empty, then \a inExtension, which begins with its dot.
    static QString path(const QString& inDirectory, const QString& inFilename, bool inAppendTimestamp,
                        const QString& inExtension);

    /// \a inTime as local time, "yyyyMMddhhmmsszzz": 17 digits. The hour that comes twice when daylight
    /// saving ends gives the same digits twice.
    static QString timestamp(const QDateTime& inTime);

    /// Creates the folder \a inDirectory with its parents unless it is there. Gives whether it is there now.
    static bool makeDirectory(const QString& inDirectory);

    /// Opens \a ioFile for writing and empties it; the folder must be there. Gives whether that worked. A
    /// named pipe is refused, since it holds up the application until somebody reads, and so is a name with a
    /// NUL, which the system would cut there.
    static bool open(QFile& ioFile);
};

#pragma once

#include <QtCore/QObject>
#include <QtQml/QJSValue>

#include <memory>

class QFile;

/// `new FileWriter()` in scripts: writes files of text or bytes. Belongs to the script.
///
/// Nothing adds a byte order mark or changes line ends. Without an open file, writing does nothing. What is
/// written reaches the disk at the latest when the file is closed; a disk that is full is not reported.
class KyScriptFileWriter : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE explicit KyScriptFileWriter(QObject* parent = nullptr);
    /// Closes the file.
    ~KyScriptFileWriter() override;

    /// Opens the file \a inDirectory/\a inFilename with ".txt" behind it, always, and empties it. With
    /// \a appendTimestamp, and for an empty name, "-" and the local time in 17 digits (yyyyMMddhhmmsszzz)
    /// come before the extension. The file before is closed, whether or not the new one can be opened.
    ///
    /// \return whether it is open now. The directory is not created.
    Q_INVOKABLE bool openFile(QString inDirectory, QString inFilename = QString(),
                              bool appendTimestamp = true);

    /// Makes \a inData in UTF-8 the whole content of the file \a inPath, which is taken as it stands. The
    /// open file is left alone. Gives whether the file could be opened; whether all was written is not looked
    /// at.
    Q_INVOKABLE bool saveFile(QString inPath, QString inData);

    /// Closes the file; nothing when none is open.
    Q_INVOKABLE void closeFile();

    /// Writes bytes as they are: those of an ArrayBuffer, a typed array or a DataView, the elements of an
    /// array modulo 256, and the UTF-8 form of a text, number or boolean. null has none. Other values are a
    /// TypeError of the script while a file is open.
    Q_INVOKABLE void write(QJSValue inData);

    Q_INVOKABLE void writeUtf8(QString inData);

    /// Characters beyond Latin-1 become "?".
    Q_INVOKABLE void writeLatin1(QString inData);

private:
    void writeBytes(const QByteArray& inBytes);

    std::shared_ptr<QFile> mFile;
};

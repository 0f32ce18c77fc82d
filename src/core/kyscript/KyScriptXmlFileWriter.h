#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtQml/QJSValue>

#include <memory>

class QFile;
class QIODevice;
class QXmlStreamWriter;

/// `new XmlFileWriter()` in scripts: writes an XML document (XML 1.0, UTF-8, without line breaks) into a file
/// or into its property `buffer`. Belongs to the script.
///
/// Each operation writes at once what QXmlStreamWriter writes for it. The order of calls is the script's:
/// names are not checked, and an attribute belongs straight behind a start element. A text with a character
/// that XML forbids, such as a control character, spoils the document from there on. Errors are not reported.
/// Before an open..., writing does nothing.
class KyScriptXmlFileWriter : public QObject
{
    Q_OBJECT
    /// What openBuffer() writes into. A script that replaces it while a document is being written goes on
    /// behind the new content at the latest. Reading gives a copy, as an ArrayBuffer. It takes what
    /// FileWriter.write() takes; other values are a TypeError of the script, and change nothing.
    Q_PROPERTY(QJSValue buffer READ bufferValue WRITE setBufferValue)

public:
    Q_INVOKABLE explicit KyScriptXmlFileWriter(QObject* parent = nullptr);
    /// Closes the file.
    ~KyScriptXmlFileWriter() override;

    QByteArray buffer() const;
    void setBuffer(const QByteArray& inBuffer);

    /// Opens a new document in the file \a inDirectory/\a inFilename with ".xml" behind it, always, and
    /// empties the file. With \a appendTimestamp, and for an empty name, "-" and the local time in 17 digits
    /// (yyyyMMddhhmmsszzz) come before the extension. A missing directory is created; when that fails, a line
    /// of level 3 goes to the log. The file before is closed, unless the directory is missing.
    ///
    /// \return whether it is open now. Otherwise writing goes on to where it went before, which is nowhere
    /// after a file.
    Q_INVOKABLE bool openFile(QString inDirectory, QString inFilename = QString(),
                              bool appendTimestamp = true);

    /// Closes the file if one is open. What is written then is lost, but for a document in `buffer`.
    Q_INVOKABLE void closeFile();

    /// Begins a new document at the start of `buffer`. What is there is overwritten, not cleared: assign ""
    /// to `buffer` before.
    Q_INVOKABLE void openBuffer();

    /// `<?xml version="1.0" encoding="UTF-8"?>`
    Q_INVOKABLE void writeStartDocument();
    /// Closes all open elements and adds a line break.
    Q_INVOKABLE void writeEndDocument();
    Q_INVOKABLE void writeStartElement(QString inName);
    Q_INVOKABLE void writeAttribute(QString inName, QString inValue);
    /// An element that holds \a inText.
    Q_INVOKABLE void writeTextElement(QString inName, QString inText);
    /// Closes the element that was opened last; nothing when none is open.
    Q_INVOKABLE void writeEndElement();

private:
    QJSValue bufferValue() const;
    void setBufferValue(const QJSValue& inValue);
    void setTarget(std::shared_ptr<QIODevice> inDevice);

    QByteArray mBuffer;
    std::shared_ptr<QFile> mFile;
    /// Holds its device too: a file that is replaced is closed, but may still be the one written to.
    std::shared_ptr<QXmlStreamWriter> mWriter;
};

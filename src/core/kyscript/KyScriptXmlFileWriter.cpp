#include "KyScriptXmlFileWriter.h"

#include "KyScriptBytes.h"
#include "KyScriptOutputFile.h"

#include <rnlib/RnLogFile.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QPointer>
#include <QtCore/QXmlStreamWriter>
#include <QtQml/QJSEngine>

namespace {

/// A writer with the device that it writes to.
struct Target
{
    explicit Target(std::shared_ptr<QIODevice> inDevice)
        : device(std::move(inDevice))
        , writer(device.get())
    {}

    std::shared_ptr<QIODevice> device;
    QXmlStreamWriter writer;
};

} // namespace

KyScriptXmlFileWriter::KyScriptXmlFileWriter(QObject* parent)
    : QObject(parent)
{}

KyScriptXmlFileWriter::~KyScriptXmlFileWriter()
{
    closeFile();
    mWriter.reset();
    mFile.reset();
}

/// A copy, never null: engines share the bytes that they are given with their scripts, and make no usable
/// value of null ones.
QByteArray KyScriptXmlFileWriter::buffer() const
{
    return mBuffer.isEmpty() ? QByteArray("") : QByteArray(mBuffer.constData(), mBuffer.size());
}

void KyScriptXmlFileWriter::setBuffer(const QByteArray& inBuffer)
{
    mBuffer = inBuffer;
    // A device beyond the end would fill the gap with whatever stands in memory.
    auto* device = qobject_cast<QBuffer*>(mWriter ? mWriter->device() : nullptr);
    if (device && device->pos() > mBuffer.size())
        device->seek(mBuffer.size());
}

QJSValue KyScriptXmlFileWriter::bufferValue() const
{
    QJSEngine* engine = qjsEngine(this);
    return engine ? engine->toScriptValue(buffer()) : QJSValue();
}

void KyScriptXmlFileWriter::setBufferValue(const QJSValue& inValue)
{
    // The properties of an object can be functions of the script, which may end this object.
    const QPointer<KyScriptXmlFileWriter> self(this);
    const QPointer<QJSEngine> engine(qjsEngine(this));
    const auto bytes = KyScriptBytes::of(inValue);
    if (bytes && self)
        setBuffer(*bytes);
    else if (!bytes && engine && !engine->hasError())
        engine->throwError(QJSValue::TypeError,
                           QStringLiteral("XmlFileWriter.buffer: the value has no bytes"));
}

bool KyScriptXmlFileWriter::openFile(QString inDirectory, QString inFilename, bool appendTimestamp)
{
    if (!KyScriptOutputFile::makeDirectory(inDirectory)) {
        getTheLogInstance().errorf("Error creating directory %s", inDirectory.toLatin1().constData());
        return false;
    }
    closeFile();
    mFile = std::make_shared<QFile>(
        KyScriptOutputFile::path(inDirectory, inFilename, appendTimestamp, QStringLiteral(".xml")));
    if (!KyScriptOutputFile::open(*mFile))
        return false;
    setTarget(mFile);
    return true;
}

void KyScriptXmlFileWriter::closeFile()
{
    if (mFile && mFile->isOpen())
        mFile->close();
}

void KyScriptXmlFileWriter::openBuffer()
{
    auto device = std::make_shared<QBuffer>(&mBuffer);
    device->open(QIODevice::WriteOnly);
    setTarget(std::move(device));
}

void KyScriptXmlFileWriter::setTarget(std::shared_ptr<QIODevice> inDevice)
{
    auto target = std::make_shared<Target>(std::move(inDevice));
    mWriter = std::shared_ptr<QXmlStreamWriter>(target, &target->writer);
}

void KyScriptXmlFileWriter::writeStartDocument()
{
    if (mWriter)
        mWriter->writeStartDocument();
}

void KyScriptXmlFileWriter::writeEndDocument()
{
    if (mWriter)
        mWriter->writeEndDocument();
}

void KyScriptXmlFileWriter::writeStartElement(QString inName)
{
    if (mWriter)
        mWriter->writeStartElement(inName);
}

void KyScriptXmlFileWriter::writeAttribute(QString inName, QString inValue)
{
    if (mWriter)
        mWriter->writeAttribute(inName, inValue);
}

void KyScriptXmlFileWriter::writeTextElement(QString inName, QString inText)
{
    if (mWriter)
        mWriter->writeTextElement(inName, inText);
}

void KyScriptXmlFileWriter::writeEndElement()
{
    if (mWriter)
        mWriter->writeEndElement();
}

#include "KyScriptFileWriter.h"

#include "KyScriptOutputFile.h"

#include <QtCore/QFile>
#include <QtCore/QPointer>
#include <QtQml/QJSEngine>

#include <optional>

namespace {

/// An array can claim to be longer than what memory holds.
constexpr quint32 sLongestArray = 1u << 30;

/// The bytes of an ArrayBuffer; nothing for another value. Objects are not looked into: Qt's conversion of an
/// object that holds a Symbol crashes.
std::optional<QByteArray> bytesOfBuffer(const QJSValue& inValue)
{
    if (!inValue.isObject())
        return std::nullopt;
    const QVariant value = inValue.toVariant(QJSValue::RetainJSObjects);
    if (value.typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return value.toByteArray();
}

/// The part of an ArrayBuffer at which a typed array or a DataView looks; nothing for another value. Only
/// that part is copied: a script may write a large buffer in many pieces.
std::optional<QByteArray> bytesOfView(const QJSValue& inValue)
{
    const QJSValue buffer = inValue.property(QStringLiteral("buffer"));
    const QJSValue offset = inValue.property(QStringLiteral("byteOffset"));
    const QJSValue length = inValue.property(QStringLiteral("byteLength"));
    if (!buffer.isObject() || !offset.isNumber() || !length.isNumber())
        return std::nullopt;
    const QJSValue end(offset.toNumber() + length.toNumber());
    return bytesOfBuffer(buffer.property(QStringLiteral("slice")).callWithInstance(buffer, {offset, end}));
}

std::optional<QByteArray> bytesOfArray(const QJSValue& inValue)
{
    const quint32 length = inValue.property(QStringLiteral("length")).toUInt();
    if (!inValue.isArray() || length > sLongestArray)
        return std::nullopt;
    QByteArray bytes;
    for (quint32 i = 0; i < length; ++i)
        bytes.append(char(inValue.property(i).toInt()));
    return bytes;
}

/// As Qt converts arguments to bytes, and the views that it refuses. Nothing for a value without bytes.
std::optional<QByteArray> bytesOf(const QJSValue& inValue)
{
    if (inValue.isString() || inValue.isNumber() || inValue.isBool())
        return inValue.toString().toUtf8();
    if (inValue.isNull())
        return QByteArray();
    if (!inValue.isObject())
        return std::nullopt;
    for (const auto bytesOfKind : {bytesOfBuffer, bytesOfArray, bytesOfView}) {
        if (const auto bytes = bytesOfKind(inValue))
            return bytes;
    }
    return std::nullopt;
}

} // namespace

KyScriptFileWriter::KyScriptFileWriter(QObject* parent)
    : QObject(parent)
{}

KyScriptFileWriter::~KyScriptFileWriter()
{
    closeFile();
}

bool KyScriptFileWriter::openFile(QString inDirectory, QString inFilename, bool appendTimestamp)
{
    mFile = std::make_shared<QFile>(
        KyScriptOutputFile::path(inDirectory, inFilename, appendTimestamp, QStringLiteral(".txt")));
    return KyScriptOutputFile::open(*mFile);
}

bool KyScriptFileWriter::saveFile(QString inPath, QString inData)
{
    QFile file(inPath);
    if (!KyScriptOutputFile::open(file))
        return false;
    file.write(inData.toUtf8());
    file.close();
    return true;
}

void KyScriptFileWriter::closeFile()
{
    if (mFile && mFile->isOpen())
        mFile->close();
}

void KyScriptFileWriter::write(QJSValue inData)
{
    if (!mFile || !mFile->isOpen())
        return;
    // The properties of an object can be functions of the script, which may end this object.
    const QPointer<KyScriptFileWriter> self(this);
    const QPointer<QJSEngine> engine(qjsEngine(this));
    const auto bytes = bytesOf(inData);
    if (bytes && self)
        writeBytes(*bytes);
    else if (!bytes && engine && !engine->hasError())
        engine->throwError(QJSValue::TypeError, QStringLiteral("FileWriter.write: the value has no bytes"));
}

void KyScriptFileWriter::writeUtf8(QString inData)
{
    if (mFile)
        writeBytes(inData.toUtf8());
}

void KyScriptFileWriter::writeLatin1(QString inData)
{
    if (mFile)
        writeBytes(inData.toLatin1());
}

void KyScriptFileWriter::writeBytes(const QByteArray& inBytes)
{
    if (mFile && mFile->isOpen())
        mFile->write(inBytes);
}

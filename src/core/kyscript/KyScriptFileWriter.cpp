#include "KyScriptFileWriter.h"

#include "KyScriptBytes.h"
#include "KyScriptOutputFile.h"

#include <QtCore/QFile>
#include <QtCore/QPointer>
#include <QtQml/QJSEngine>

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
    const auto bytes = KyScriptBytes::of(inData);
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

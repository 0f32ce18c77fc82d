#include "KyScriptToolFile.h"

#include <rnlib/RnLogFile.h>

#include <QtCore/QFile>
#include <QtCore/QXmlStreamReader>
#include <QtXml/QDomDocument>

namespace {

constexpr qint64 MaxBytes = 64 * 1024 * 1024;
/// The time that a QDomDocument takes grows with the square of the depth.
constexpr int MaxDepth = 1000;
/// Each reference to a declared entity gives up to 4096 characters.
constexpr qsizetype MaxReferences = 10000;

struct Problem
{
    QString message;
    long long line = 0;
    long long column = 0;
};

/// Nothing in the text when the file could not be read.
QByteArray readBytes(const QString& inFileName, bool& outIsRead)
{
    QFile file(inFileName);
    outIsRead = file.open(QIODevice::ReadOnly);
    if (!outIsRead)
        return QByteArray();
    const QByteArray bytes = file.read(MaxBytes + 1);
    outIsRead = file.error() == QFileDevice::NoError && bytes.size() <= MaxBytes;
    return bytes;
}

/// What would make the document too large for its reader; no message when it is harmless, or not well-formed.
Problem findExcess(const QByteArray& inBytes)
{
    QXmlStreamReader reader(inBytes);
    int depth = 0;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        depth += token == QXmlStreamReader::StartElement ? 1 : 0;
        depth -= token == QXmlStreamReader::EndElement ? 1 : 0;
        const auto problem = [&](const char* inMessage) {
            return Problem{QLatin1String(inMessage), reader.lineNumber(), reader.columnNumber()};
        };
        if (depth > MaxDepth)
            return problem("Elements are nested too deeply.");
        if (token == QXmlStreamReader::DTD && !reader.entityDeclarations().isEmpty() &&
            inBytes.count('&') > MaxReferences)
            return problem("Too many references to entities.");
    }
    return Problem();
}

Problem parse(const QByteArray& inBytes, QDomDocument& outDocument)
{
    Problem problem = findExcess(inBytes);
    if (!problem.message.isEmpty())
        return problem;
    int line = 0;
    int column = 0;
    if (outDocument.setContent(inBytes, &problem.message, &line, &column))
        return Problem();
    problem.line = line;
    problem.column = column;
    return problem;
}

} // namespace

QDomDocument KyScriptToolFile::read(const char* inFileName)
{
    bool isRead = false;
    const QByteArray bytes = readBytes(QFile::decodeName(inFileName), isRead);
    if (!isRead) {
        getTheLogInstance().warnf("Tool Configuration %s - READ ERROR:\n", inFileName);
        return QDomDocument();
    }
    QDomDocument document;
    const Problem problem = parse(bytes, document);
    if (problem.message.isEmpty())
        return document;
    getTheLogInstance().warnf("Tool Configuration %s - PARSE ERROR:\n", inFileName);
    getTheLogInstance().warnf("Line(%lld),Column(%lld): %s\n", problem.line, problem.column,
                              problem.message.toLatin1().constData());
    return QDomDocument();
}

#include "KyScriptProgram.h"

#include <jxbase/JxXmlStreamReader.h>

#include <QtXml/QDomElement>

KyScriptProgram::KyScriptProgram(const QString& inSourceCode, const QString& inFileName, int inLineNumber)
    : mSourceCode(inSourceCode)
    , mFileName(inFileName)
    , mLineNumber(inLineNumber)
{}

KyScriptProgram::KyScriptProgram(const QString& inSourceCode, const char* inInfoString)
    : mSourceCode(inSourceCode)
    , mInfoString(QString::fromLatin1(inInfoString))
{}

KyScriptProgram::KyScriptProgram(const QDomElement& inElement, const QString& inFileName,
                                 const char* inStripMarker)
    : mFileName(stripFileName(inFileName, inStripMarker))
{
    mSourceCode = extractScript(inElement, mLineNumber);
}

void KyScriptProgram::setInfoString(const char* inInfoString)
{
    mInfoString = QString::fromLatin1(inInfoString);
}

QString KyScriptProgram::extractScript(const QDomElement& inElement, int& outLineNumber)
{
    int line = inElement.lineNumber();
    const QDomNode first = inElement.firstChild();
    if (!first.isNull() && first.nodeType() == QDomNode::CDATASectionNode)
        ++line;

    int cutLines = 0;
    const QString text = JxXmlStreamReader::trim(inElement.text(), cutLines);
    outLineNumber = cutLines + line;
    return text;
}

QString KyScriptProgram::stripFileName(const QString& inFileName, const char* inMarker)
{
    if (!inMarker || !*inMarker)
        return inFileName;

    const auto index = inFileName.indexOf(QLatin1String(inMarker), 0, Qt::CaseSensitive);
    return index < 0 ? inFileName : QStringLiteral(".../") + inFileName.mid(index);
}

QString KyScriptProgram::wrappedSourceCode() const
{
    return mIsolatedContext ? QStringLiteral("(function() { %1 })()").arg(mSourceCode) : mSourceCode;
}

#pragma once

#include "KyScriptExport.h"

#include <QtCore/QString>

class QDomElement;

/// A script and what is to be told about it: where it came from, at which line it starts, a short
/// description, and whether it runs in a scope of its own.
///
/// A plain value that knows no engine, does no I/O and cannot fail. Callers make one from a string or from an
/// element of an XML file and hand it to a facade, an engine or a runner.
class KYSCRIPT_EXPORT KyScriptProgram
{
public:
    KyScriptProgram() = default;

    /// A script from \a inFileName that starts on its line \a inLineNumber, counted from 1. Without a file
    /// pass an empty name and -1; any line below 1 means that no line is known.
    KyScriptProgram(const QString& inSourceCode, const QString& inFileName, int inLineNumber);

    /// A script without a file. \a inInfoString is Latin-1; null counts as empty.
    KyScriptProgram(const QString& inSourceCode, const char* inInfoString);

    /// The script of an XML element, see extractScript(), with the file name shortened by stripFileName().
    KyScriptProgram(const QDomElement& inElement, const QString& inFileName, const char* inStripMarker);

    /// The text as written, never wrapped.
    QString sourceCode() const { return mSourceCode; }
    void setSourceCode(const QString& inSourceCode) { mSourceCode = inSourceCode; }

    /// Short free description for the log and for reports of uncaught errors.
    QString infoString() const { return mInfoString; }
    /// \a inInfoString is Latin-1; null or empty clears the description.
    void setInfoString(const char* inInfoString);

    /// Whether the text runs inside a function scope of its own: its declarations vanish with the run, and
    /// its value is what it gives back by `return`. Without it, the value is that of the last statement, and
    /// `return` is not allowed.
    bool isolatedContext() const { return mIsolatedContext; }
    void setIsolatedContext(bool inIsolated) { mIsolatedContext = inIsolated; }

    /// Whether there is no source text. The other fields do not count.
    bool isEmpty() const { return mSourceCode.isEmpty(); }

    /// The trimmed text of \a inElement. \a outLineNumber gets the line of the XML file on which that text
    /// begins. A CDATA section counts as beginning one line below the element's start tag, when it is the
    /// element's very first child.
    static QString extractScript(const QDomElement& inElement, int& outLineNumber);

    /// \a inFileName from the first occurrence of \a inMarker on, behind ".../", so that messages do not tell
    /// where the installation lies. The marker is Latin-1 and minds case. Unchanged when the marker is null
    /// or empty, or does not occur.
    static QString stripFileName(const QString& inFileName, const char* inMarker);

private:
    friend class KyScriptEngine;
    friend class KyScriptAbstractEngine;

    static constexpr int UnknownLine = -1;

    /// The text that goes to the JavaScript engine. The wrapper stays on the first and the last line, so that
    /// lines of errors are those of the source; columns of the first line move by 14.
    QString wrappedSourceCode() const;

    QString mSourceCode;
    QString mFileName;
    int mLineNumber = UnknownLine;
    QString mInfoString;
    bool mIsolatedContext = false;
};

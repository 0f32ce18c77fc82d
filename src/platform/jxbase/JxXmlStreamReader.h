#pragma once

#include <QString>

/// Reading of text that stands in XML files.
class JxXmlStreamReader
{
public:
    JxXmlStreamReader() = delete;

    /// \a inText without the white space (QChar::isSpace) at its ends. \a outLineBreaks is the number of line
    /// breaks that the part cut at the start held; "\n", "\r\n" and a "\r" on its own are one each. Of a text
    /// of white space nothing is left, and all its line breaks count.
    static QString trim(const QString& inText, int& outLineBreaks);
};

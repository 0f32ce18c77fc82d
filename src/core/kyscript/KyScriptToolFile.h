#pragma once

class QDomDocument;

/// Reading of a tool configuration file.
class KyScriptToolFile
{
public:
    KyScriptToolFile() = delete;

    /// The document of the file, whose name is in the encoding of file names. A null document, with lines of
    /// level 2 in the log, when the file cannot be read or is not well-formed. What would exhaust the program
    /// counts as these: a file of more than 64 MB, elements nested more than 1000 levels deep, and declared
    /// entities in great number.
    static QDomDocument read(const char* inFileName);
};

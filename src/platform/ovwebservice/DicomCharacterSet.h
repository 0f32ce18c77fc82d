#pragma once

#include <QString>
#include <QStringList>

#include <string>
#include <string_view>
#include <vector>

namespace Ovg {

/// How the texts of a data set or an item are coded: the Specific Character Set (0008,0005), PS3.3
/// C.12.1.1.2.
///
/// Knows every term of the standard, with and without code extensions (ISO 2022), as PS3.5 6.1.2 describes
/// them. Terms that are often written wrongly, such as "ISO-IR 100", count as meant.
class DicomCharacterSet
{
public:
    /// What has a meaning of its own inside a text.
    enum class Structure
    {
        Plain,  ///< Nothing: ST, LT, UT.
        Values, ///< A backslash separates values: LO, SH, UC.
        Names,  ///< As Values, and "^" and "=" structure a person name: PN.
    };

    /// \a inTerms is the value of the element as it stands, values separated by backslashes; empty for the
    /// default repertoire, ASCII.
    explicit DicomCharacterSet(std::string_view inTerms);

    /// The values that \a inBytes holds. Where the bytes don't fit the character set, or the set is unknown,
    /// they are read as Latin-1 and \a outProblem gets a line that says so; else it stays as it is.
    QStringList decode(std::string_view inBytes, Structure inStructure, QString& outProblem) const;

private:
    void addTerm(const QString& inTerm, bool inFirst);
    QStringList decodeWhole(std::string_view inBytes, Structure inStructure, QString& outProblem) const;
    QStringList decodeExtended(std::string_view inBytes, Structure inStructure, QString& outProblem) const;

    QString problem() const;

    std::string mTerms;
    bool mKnown = true;
    const char* mWholeCodec = nullptr; ///< Of a multi-byte set without code extensions.
    int mG0;                           ///< Initial sets of ISO 2022, indexes of the table of sets.
    int mG1;
};

} // namespace Ovg

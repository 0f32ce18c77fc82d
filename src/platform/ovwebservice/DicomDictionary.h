#pragma once

#include <QHash>
#include <QString>

#include <optional>

namespace Ovg {

/// The standard's keywords of DICOM elements, from DCMTK's data dictionary. Always there, for any thread.
///
/// The first use readies DCMTK for this library: the dictionary is loaded, also when the environment names
/// none that exists; DCMTK's own log lines about data are off, since every file that can't be read is
/// reported once by the library; elements that lost their VR on the way ("UN") get it back by the dictionary.
class DicomDictionary
{
public:
    static const DicomDictionary& instance();

    /// The tag, group in the upper half, of the element with the standard's keyword \a inKeyword, with case.
    /// Of repeating groups it is the first one's.
    std::optional<quint32> tag(const QString& inKeyword) const;

    /// The keyword that tag() turns into \a inTag; empty when there is none.
    QString keyword(quint32 inTag) const { return mKeywords.value(inTag); }

private:
    DicomDictionary();

    void add(const char* inName, quint32 inTag);

    QHash<QString, quint32> mTags;
    QHash<quint32, QString> mKeywords;
};

} // namespace Ovg

#pragma once

#include <QStringList>
#include <QVariant>

#include <string>

class DcmElement;

namespace Ovg {

/// What the reading of a value needs to know of the data set around the element.
struct DicomValueContext
{
    std::string characterSet = {};   ///< Value of (0008,0005) in the item or around it, "" for the default.
    QString utcOffset = {};          ///< Value of (0008,0201) of the data set.
    QStringList* problems = nullptr; ///< May be null.
};

/// The value of \a ioElement by its VR, as DicomHeader::value() describes it. DCMTK reads values lazily, so
/// the element changes inside.
QVariant dicomValue(DcmElement& ioElement, const DicomValueContext& inContext);

} // namespace Ovg

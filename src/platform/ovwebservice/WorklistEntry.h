#pragma once

#include <QMap>
#include <QString>

#include <string>

namespace Ovg {

/// One row of the reading worklist. A plain record, filled by whoever keeps the worklist.
struct WorklistEntry
{
    std::string assignee; ///< Who is to read the study, in Latin-1; empty when nobody is.
    std::string status;   ///< The word for how far the reading is, in Latin-1.
    int flags = 0;        ///< Bits whose meaning is the worklist's.

    /// The study that the row is about: by its UID, or by accession number and patient where that is empty.
    std::string studyInstanceUid;
    std::string accessionNumber;
    std::string patientId;

    /// Further columns by their name.
    QMap<QString, QString> attributes;
};

} // namespace Ovg

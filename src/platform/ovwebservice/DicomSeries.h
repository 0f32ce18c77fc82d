#pragma once

#include <QString>

#include <string>
#include <vector>

namespace Ovg {

/// One instance of a series: where it is and what is needed to sort it. UIDs and numbers are as in the data;
/// a number that is missing or unreadable is 0.
struct DicomInstance
{
    QString path; ///< The file, empty for an instance in memory.
    std::string sopInstanceUid;
    std::string sopClassUid;
    int instanceNumber = 0;
};

/// One series of a study, its instances in the order of instance number, then SOP instance UID.
struct DicomSeries
{
    std::string seriesInstanceUid;
    std::string modality;
    int seriesNumber = 0;
    std::vector<DicomInstance> instances;
};

} // namespace Ovg

#pragma once

#include "DicomSeries.h"

namespace Ovg {

/// What a study source needs to know of an instance to put it in its place.
struct DicomInstanceFacts
{
    std::string studyInstanceUid;
    std::string seriesInstanceUid;
    std::string modality;
    int seriesNumber = 0;
    DicomInstance instance;
    int origin = 0; ///< Which file or header of the source it is.
};

} // namespace Ovg

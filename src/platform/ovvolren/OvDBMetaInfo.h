#pragma once

#include <rnlib/RnString.h>

/// Where a volume stands in the database: the study and the series that it was read from.
///
/// A value, filled by whoever makes the volume.
struct OvDBMetaInfo
{
    RnString studyId;  ///< Study Instance UID (DICOM PS3.3, 0020,000D).
    RnString seriesId; ///< Series Instance UID (0020,000E).
};

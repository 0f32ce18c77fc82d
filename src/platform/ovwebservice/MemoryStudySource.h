#pragma once

#include "StudySource.h"

namespace Ovg {

/// The studies of headers that were added one by one, grouped as those of a folder are. For hosts that have
/// their studies from elsewhere, and for tests. A value.
class MemoryStudySource final : public StudySource
{
public:
    /// Adds one instance.
    void add(const DicomHeader& inHeader);

    StudySourceResult load(const Progress& inProgress = {}) override;

private:
    std::vector<DicomHeader> mHeaders;
};

} // namespace Ovg

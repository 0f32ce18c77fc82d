#pragma once

#include "DicomDirectoryEntry.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace Ovg {

/// What a StudySource found.
struct StudySourceResult
{
    /// In the order of DicomDirectoryEntry::operator<.
    std::vector<std::shared_ptr<DicomDirectoryEntry>> studies;

    int files = 0;      ///< Files looked at, or headers of a source in memory.
    int instances = 0;  ///< Instances in the studies.
    int duplicates = 0; ///< Instances left out because their SOP instance UID had come before.
    int notDicom = 0;   ///< Skipped: something else than DICOM.
    int damaged = 0;    ///< Skipped: broken off, malformed or unreadable.
    int noStudy = 0;    ///< Skipped: sound, but without a study instance UID, as a colour palette is.

    int unreadableFolders = 0; ///< Skipped: folders below the given ones that can't be read.

    bool cancelled = false; ///< The progress function said stop; the studies are those found until then.

    /// Why a given folder could not be read, one line for each. Empty when all went well; skipped files
    /// and folders below don't count.
    QStringList errors;
};

/// Where a host gets studies from. Port: FolderStudySource, MemoryStudySource.
class StudySource
{
public:
    /// Gets the number of files done and the number of all; returns false to stop. Called on the thread that
    /// called load(), with numbers that grow, at last with both equal unless it was stopped.
    using Progress = std::function<bool(int inDone, int inTotal)>;

    virtual ~StudySource();

    /// Finds all studies. Blocks; may be called again, and then looks again.
    virtual StudySourceResult load(const Progress& inProgress = {}) = 0;
};

} // namespace Ovg

#pragma once

#include "StudySource.h"

namespace Ovg {

/// The studies of all DICOM files below a folder, whatever their names and their subfolders. A value.
///
/// Symbolic links are followed, each folder is read once. Instances of one study may lie in different
/// folders. DICOMDIR files are passed over silently. Every other file that is skipped leaves one line of
/// level 2 in the log, context "Studies", with path and reason. Files are read up to their pixels, on all
/// cores.
///
/// A folder that is missing or can't be read is an error of the result and leaves a line of level 3.
class FolderStudySource final : public StudySource
{
public:
    explicit FolderStudySource(QString inFolder);

    StudySourceResult load(const Progress& inProgress = {}) override;

private:
    const QString mFolder;
};

} // namespace Ovg

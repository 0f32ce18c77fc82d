#pragma once

#include "StudySource.h"

namespace Ovg {

/// The studies of all DICOM files below one or more folders, whatever their names and their subfolders. A
/// value.
///
/// Symbolic links are followed, each folder is read once. Instances of one study may lie in different
/// folders. DICOMDIR files are passed over silently. Every other file that is skipped leaves one line of
/// level 2 in the log, context "Studies", with path and reason. Files are read without their pixels,
/// where the scan can tell these, on all cores.
///
/// A given folder that is missing or can't be read is an error of the result and leaves a line of level 3.
/// A folder below that can't be read is skipped like a file. Each load ends with one line of level 1 with all
/// counts.
class FolderStudySource final : public StudySource
{
public:
    explicit FolderStudySource(const QString& inFolder);
    /// Of an instance that comes more than once, that of the earlier folder counts. Folders may lie in one
    /// another.
    explicit FolderStudySource(QStringList inFolders);

    StudySourceResult load(const Progress& inProgress = {}) override;

private:
    const QStringList mFolders;
};

} // namespace Ovg

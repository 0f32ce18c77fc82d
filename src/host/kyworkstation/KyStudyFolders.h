#pragma once

#include <QtCore/QStringList>

class QMimeData;

/// Which folders to read for what a user points at.
namespace KyStudyFolders {

/// The folder of a path: the path itself, and for a file the folder that it lies in, so that one image of a
/// study, or a medium's DICOMDIR, opens the whole. A path that does not exist stays as it is.
QString of(const QString& inPath);

/// The folders of all local files and folders among dropped things, each once.
QStringList dropped(const QMimeData& inData);

} // namespace KyStudyFolders

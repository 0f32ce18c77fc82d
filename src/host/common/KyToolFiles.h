#pragma once

#include <QtCore/QStringList>

/// The tool configuration files of a host.
class KyToolFiles
{
public:
    KyToolFiles() = delete;

    /// Loads the tools of \a inFile, whose icons lie in the folder "icons" beside it. Gives in one line what
    /// is wrong with the file, or nothing; the log has it too. A file without a tool is only a line in the
    /// log.
    static QString load(const QString& inFile);

    /// The files "*.xml" in \a inFolder itself, in the order of their names; none for an empty or missing
    /// one.
    static QStringList in(const QString& inFolder);

    /// The folder of tool files that is installed beside the program.
    static QString installedFolder();
};

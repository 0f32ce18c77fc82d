#pragma once

#include <QtCore/QStringList>

/// The tools of the command line: --tools and --trigger.
class KyRunTools
{
public:
    KyRunTools() = delete;

    /// Loads the files in their order, up to the first that cannot be used, of which it tells in one line.
    static QString load(const QStringList& inFiles);

    /// The first of the keys that is no tool's, in one line with those that there are; or nothing.
    static QString findUnknown(const QStringList& inKeys);

    /// Triggers the tool of that key on the active viewer. Gives in one line why it could not, or nothing.
    static QString trigger(const QString& inKey);
};

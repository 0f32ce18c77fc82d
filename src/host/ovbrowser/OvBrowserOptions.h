#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

/// The command line of the browser program. Of an option that is there several times the last one counts.
class OvBrowserOptions
{
public:
    enum class Outcome
    {
        Run,
        Help,
        Version,
        Bad
    };

    /// Reads the arguments without the program's name. \a outText is what is to be said, or what is wrong.
    Outcome parse(const QStringList& inArguments, QString& outText);

    QString namedPipe;
    QString userDataFolder;
    QString address;         ///< Of the first page, for a browser without a pipe.
    QStringList engineFlags; ///< All other options: they are the engine's.

    /// \a engineFlags as the environment of the engine has them, behind what \a inPresent has.
    QByteArray engineEnvironment(const QByteArray& inPresent) const;
};

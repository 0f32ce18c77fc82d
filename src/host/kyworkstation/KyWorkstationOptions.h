#pragma once

#include <common/KyHostOptions.h>

#include <QtCore/QCoreApplication>

/// The command line of kyworkstation.
struct KyWorkstationOptions
{
    Q_DECLARE_TR_FUNCTIONS(KyWorkstationOptions)

public:
    /// Its profile is the folder of the user's configuration unless another one is given.
    KyHostOptions host;
    QStringList scripts; ///< Files to run once the window is shown.
    QString logFile;     ///< "-" for standard error, empty for none.

    enum class Outcome
    {
        Run,
        Help,    ///< The help was asked for, and is in the text.
        Version, ///< The version was asked for, and is in the text.
        Bad,     ///< The text says in one line what is wrong.
    };

    /// Reads the command line \a inArguments, the program's name first. Folders without an option count as
    /// study folders.
    Outcome parse(const QStringList& inArguments, QString& outText);
};

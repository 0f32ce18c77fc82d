#pragma once

#include <common/KyHostOptions.h>

/// The command line of kyrun.
struct KyRunOptions
{
    KyHostOptions host;
    QString scriptFile; ///< "-" for standard input; empty with code, or only tools, on the command line.
    QString code;
    bool hasCode = false;
    bool isPrinting = false;
    QString engine;
    QString logFile; ///< "-" for standard error, empty for the default.
    bool keepRunning = false;
    int timeoutSeconds = 0; ///< 0 for none.
    QStringList triggers;   ///< Keys of tools to be triggered when the script is over.
    QStringList arguments;  ///< For the script.

    /// Whether there is a script to run, and not only tools to trigger.
    bool hasScript() const { return hasCode || !scriptFile.isEmpty(); }

    enum class Outcome
    {
        Run,
        Help,    ///< The help was asked for, and is in the text.
        Version, ///< The version was asked for, and is in the text.
        Bad,     ///< The text says in one line what is wrong.
    };

    /// Reads the command line \a inArguments, the program's name first.
    Outcome parse(const QStringList& inArguments, QString& outText);
};

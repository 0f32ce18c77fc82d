#pragma once

#include <common/KyHostOptions.h>

/// The command line of kyrun.
struct KyRunOptions
{
    KyHostOptions host;
    QString scriptFile;     ///< "-" for standard input; empty with code, or only tools, on the command line.
    QStringList firstFiles; ///< Run before it, in their order.
    QString code;
    bool hasCode = false;
    bool isPrinting = false;
    bool isInteractive = false; ///< Reads more from the terminal then.
    bool isTesting = false;     ///< Runs the tests of the files instead.
    bool isChecking = false;    ///< Checks the syntax of the files instead.
    QStringList files;          ///< Of tests, or to be checked.
    QString engine;
    QString logFile; ///< "-" for standard error, empty for the default.
    bool keepRunning = false;
    int timeoutSeconds = 0; ///< 0 for none.
    QStringList triggers;   ///< Keys of tools to be triggered when the script is over.
    QStringList arguments;  ///< For the script.

    enum class Outcome
    {
        Run,
        Help,    ///< The help was asked for, and is in the text.
        Version, ///< The version was asked for, and is in the text.
        Bad,     ///< The text says in one line what is wrong.
    };

    /// Reads the command line \a inArguments, the program's name first.
    Outcome parse(const QStringList& inArguments, QString& outText);

    /// Where the interactive mode keeps its lines.
    static QString historyFile();

private:
    QString takeScripts();
};

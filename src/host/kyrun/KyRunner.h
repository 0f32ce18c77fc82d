#pragma once

#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptOptions.h>

#include <QtCore/QStringList>

/// The global `Runner`: what a script knows of the program that runs it. Made by main, behind the platform.
class KyRunner : public KyScriptExternalObject
{
    Q_OBJECT
    Q_PROPERTY(QStringList args READ args CONSTANT)
    Q_PROPERTY(bool keepRunning READ keepRunning WRITE setKeepRunning)

public:
    KyRunner(const QStringList& inArguments, bool inKeepRunning);

    /// The arguments behind the script on the command line.
    QStringList args() const { return mArguments; }

    /// Whether the program stays in the event loop when the script is over.
    bool keepRunning() const { return mKeepRunning; }
    void setKeepRunning(bool inOn) { mKeepRunning = inOn; }

    /// Ends the program with \a code: at once when called in a handler, after the script when called in it.
    /// Of several calls the first decides.
    Q_INVOKABLE void exit(int code = 0);

    bool hasExited() const { return mHasExited; }
    int exitCode() const { return mExitCode; }

private:
    const QStringList mArguments;
    bool mKeepRunning;
    bool mHasExited = false;
    int mExitCode = 0;
};

#include "KyRunner.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

KyRunner::KyRunner(const QStringList& inArguments, bool inKeepRunning)
    : KyScriptExternalObject(nullptr, QStringLiteral("Runner"), ScriptExternalKindA)
    , mArguments(inArguments)
    , mKeepRunning(inKeepRunning)
{}

void KyRunner::exit(int code)
{
    if (mHasExited)
        return;
    mHasExited = true;
    mExitCode = code;
    // Without an event loop the call comes from the script itself, and main leaves when that is over.
    if (QThread::currentThread()->loopLevel() > 0)
        QCoreApplication::exit(code);
}

#include "KyScriptPendingError.h"

#include "KyScriptLog.h"

void KyScriptEngine::PendingError::take(KyScriptEngine& ioEngine)
{
    mEngine = &ioEngine;
    mError = ioEngine.catchError();
}

void KyScriptEngine::PendingError::giveBack()
{
    if (mEngine->mDepth > 0)
        mEngine->throwError(*mError);
    else
        mEngine->logException(KyScriptLog::Context, *mError, QStringLiteral("host code before the run"));
}

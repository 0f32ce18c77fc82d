#pragma once

#include "KyScriptEngine.h"

#include <QtCore/QPointer>

#include <optional>

/// Takes away an error that host code has left pending on an engine, as long as this lives.
///
/// Qt gives such an error in place of running the next text, calling the next function or reading the next
/// property. It is none of theirs: at the outermost level it is logged, inside a run or a call it goes back
/// to the outer script when this ends.
class KYSCRIPT_EXPORT KyScriptEngine::PendingError
{
public:
    /// Null does nothing.
    explicit PendingError(KyScriptEngine* inEngine)
    {
        if (inEngine && inEngine->hasError())
            take(*inEngine);
    }
    ~PendingError()
    {
        if (mEngine)
            giveBack();
    }
    PendingError(const PendingError&) = delete;
    PendingError& operator=(const PendingError&) = delete;

private:
    void take(KyScriptEngine& ioEngine);
    void giveBack();

    QPointer<KyScriptEngine> mEngine; ///< Null without an error, too.
    std::optional<QJSValue> mError;
};

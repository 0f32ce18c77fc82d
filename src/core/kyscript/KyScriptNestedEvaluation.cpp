#include "KyScriptNestedEvaluation.h"

KyScriptNestedEvaluation::KyScriptNestedEvaluation(QJSEngine& inEngine, const QString& inText,
                                                   const QString& inFileName, int inLine)
    : mEngine(inEngine)
    , mText(inText)
    , mFileName(inFileName)
    , mLine(inLine)
{
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
}

QJSValue KyScriptNestedEvaluation::evaluate(const QJSValue& inTrampoline)
{
    inTrampoline.call({mEngine.newQObject(this).property(QStringLiteral("run"))});
    return mResult;
}

QJSValue KyScriptNestedEvaluation::makeTrampoline(QJSEngine& inEngine)
{
    return inEngine.evaluate(QStringLiteral("(function(run) { run(); })"));
}

void KyScriptNestedEvaluation::run()
{
    mResult = mEngine.evaluate(mText, mFileName, mLine);
}

#include "KyScriptRunner.h"

#include "KyScriptLog.h"
#include "KyScriptProgram.h"

#include <rnlib/RnContract.h>

namespace {

constexpr const char* Context = "KyScriptRunner";

} // namespace

KyScriptRunner::KyScriptRunner() = default;

KyScriptRunner::~KyScriptRunner()
{
    if (mEngine && hasCurrentContext())
        destroyCurrentContext();
    dbc_holds(mContextObjects.empty());
}

bool KyScriptRunner::initEngine(int inOptions, const KyScriptProgram& inScript)
{
    dbc_holds(!hasEngine());
    mEngine = std::make_unique<KyScriptAbstractEngine>(nullptr, inOptions);
    if (inScript.isEmpty())
        return true;
    if (isValidScript(inScript) && evaluateScript(inScript))
        return true;
    mEngine.reset();
    return false;
}

bool KyScriptRunner::hasEngine() const
{
    return mEngine != nullptr;
}

bool KyScriptRunner::isValidScript(const KyScriptProgram& inScript) const
{
    if (!dbc_holds(hasEngine()) || inScript.isEmpty())
        return false;

    QString message;
    if (mEngine->scriptIsValid(inScript, message))
        return true;
    dbc_holds(!message.isEmpty());
    KyScriptLog::line(3, message, Context);
    return false;
}

bool KyScriptRunner::evaluateScript(const KyScriptProgram& inScript) const
{
    QString result;
    const bool ok = evaluateScript(inScript, result);
    if (!result.isEmpty())
        getTheLogInstance().tracef(2, Context, "Unexpected result value from script: %s\nValue: %s",
                                   inScript.infoString().toLatin1().constData(),
                                   result.toLatin1().constData());
    return ok;
}

bool KyScriptRunner::evaluateScript(const KyScriptProgram& inScript, QString& outResult) const
{
    outResult.clear();
    if (!dbc_holds(hasEngine()) || inScript.isEmpty())
        return false;

    const QJSValue value = mEngine->evaluate(inScript, false);
    if (mEngine->logException(Context, value, inScript.infoString()))
        return false;
    if (!value.isUndefined())
        outResult = value.toString();
    return true;
}

void KyScriptRunner::createCurrentContext()
{
    dbc_holds(!hasCurrentContext());
    mContext = mEngine ? mEngine->globalObject() : QJSValue();
    dbc_holds(!mContext.isUndefined());
}

bool KyScriptRunner::hasCurrentContext() const
{
    return dbc_holds(hasEngine()) && !mContext.isUndefined();
}

/// Takes the name from the context, and the object with it, if it still lives.
void KyScriptRunner::disposeOf(const QString& name, QObject* inObject)
{
    if (!mContext.isUndefined()) {
        if (mContext.hasProperty(name))
            mContext.deleteProperty(name);
        dbc_holds(!mContext.hasProperty(name));
    }
    if (inObject)
        inObject->deleteLater();
}

void KyScriptRunner::destroyCurrentContext()
{
    dbc_holds(hasCurrentContext());
    for (const auto& [name, object] : mContextObjects) {
        if (object)
            disposeOf(name, object);
    }
    mContextObjects.clear();
    mContext = QJSValue();
}

void KyScriptRunner::addScriptObjectToCurrentContext(const QString& inName, QObject* inObject)
{
    dbc_holds(hasCurrentContext());
    if (!mEngine)
        return;
    if (const auto it = mContextObjects.find(inName); it != mContextObjects.end()) {
        disposeOf(inName, it->second);
        mContextObjects.erase(it);
    }

    // The context owns it: neither a garbage collection nor a script's destroy() may take it away before.
    if (inObject)
        QJSEngine::setObjectOwnership(inObject, QJSEngine::CppOwnership);
    mContext.setProperty(inName, mEngine->newQObject(inObject));
    mContextObjects[inName] = inObject;

    const QJSValue result =
        mEngine->evaluate(KyScriptProgram(QStringLiteral("typeof ") + inName, QString(), -1), false);
    dbc_holds(!result.isUndefined() && result.toString() == QStringLiteral("object"));
}

QJSValue KyScriptRunner::createObject()
{
    return dbc_holds(hasEngine()) ? mEngine->newObject() : QJSValue();
}

QJSValue KyScriptRunner::callableOrReport(const QJSValue& inObject, const QString& inName) const
{
    const QJSValue funcValue = inObject.property(inName);
    if (funcValue.isUndefined() || funcValue.isCallable())
        return funcValue;
    dbc_holds(funcValue.isCallable());
    KyScriptLog::line(3, QStringLiteral("Script value is not a function: %1").arg(inName), Context);
    return QJSValue();
}

QJSValue KyScriptRunner::getCurrentContextFunction(const QString& inName)
{
    dbc_holds(hasCurrentContext());
    return callableOrReport(mContext, inName);
}

QJSValue KyScriptRunner::getGlobalFunction(const QString& inName)
{
    dbc_holds(!hasCurrentContext());
    return mEngine ? callableOrReport(mEngine->globalObject(), inName) : QJSValue();
}

void KyScriptRunner::forwardArgs(QList<QJSValue>&) {}

#include "KyScriptRunner.h"

#include "KyScriptLog.h"
#include "KyScriptProgram.h"

#include <rnlib/RnContract.h>

#include <algorithm>

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

/// Takes the name from the context.
void KyScriptRunner::withdraw(const QString& name)
{
    if (mContext.isUndefined())
        return;
    if (mContext.hasProperty(name))
        mContext.deleteProperty(name);
    dbc_holds(!mContext.hasProperty(name));
}

void KyScriptRunner::destroyCurrentContext()
{
    const KyScriptEngine::PendingError pending(engine());
    dbc_holds(hasCurrentContext());
    for (const auto& [name, object] : mContextObjects) {
        if (!object)
            continue;
        withdraw(name);
        object->deleteLater();
    }
    mContextObjects.clear();
    mContext = QJSValue();
}

/// Makes room for \a inHeir: withdraws what has the name, and disposes of it unless it is published
/// otherwise.
void KyScriptRunner::replace(const QString& inName, const QObject* inHeir)
{
    const auto it = mContextObjects.find(inName);
    if (it == mContextObjects.end())
        return;
    withdraw(inName);
    const QPointer<QObject> object = it->second;
    mContextObjects.erase(it);
    const bool hasOtherName = std::any_of(mContextObjects.begin(), mContextObjects.end(),
                                          [&](const auto& row) { return row.second == object; });
    if (object && object != inHeir && !hasOtherName)
        object->deleteLater();
}

void KyScriptRunner::addScriptObjectToCurrentContext(const QString& inName, QObject* inObject)
{
    const KyScriptEngine::PendingError pending(engine());
    dbc_holds(hasCurrentContext());
    if (!mEngine)
        return;
    replace(inName, inObject);

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
    const KyScriptEngine::PendingError pending(engine());
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

KyScriptEngine* KyScriptRunner::engine() const
{
    return mEngine ? mEngine->jsEngine(false) : nullptr;
}

KyScriptEngine* KyScriptRunner::engineToCall() const
{
    return mEngine ? mEngine->jsEngine(true) : nullptr;
}

void KyScriptRunner::forwardArgs(QList<QJSValue>&) {}

#include "KyScriptAbstractEngine.h"

#include "KyScriptInterface.h"
#include "KyScriptLog.h"
#include "KyScriptProgram.h"

#include <rnlib/RnContract.h>

#include <map>
#include <utility>
#include <vector>

namespace {

struct PendingScript
{
    KyScriptProgram program;
    bool inPushContext;
    bool inNoFunction;
};

} // namespace

struct KyScriptAbstractEngine::Private
{
    QPointer<KyScriptEngine> mJsEngine;
    int mCallDepth = 0;
    std::vector<PendingScript> mPendingScripts;
    bool mOwnsEngine = false;
};

/// Counts a call in, and runs what waits when the outermost one leaves. A script can end its facade: the
/// guard then leaves everything alone.
class KyScriptAbstractEngine::Guard
{
public:
    explicit Guard(KyScriptAbstractEngine* inEngine)
        : mEngine(inEngine)
    {
        ++inEngine->d->mCallDepth;
    }
    ~Guard()
    {
        if (mEngine && --mEngine->d->mCallDepth == 0)
            mEngine->drain();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    const QPointer<KyScriptAbstractEngine> mEngine;
};

KyScriptAbstractEngine::KyScriptAbstractEngine()
    : d(std::make_unique<Private>())
{}

KyScriptAbstractEngine::KyScriptAbstractEngine(QObject* inParent, int inOptions)
    : KyScriptAbstractEngine()
{
    d->mJsEngine = new KyScriptEngine(inParent, inOptions);
    d->mOwnsEngine = true;
    connect(d->mJsEngine, &KyScriptEngine::extAccChanged, this, &KyScriptAbstractEngine::extAccChanged);
}

KyScriptAbstractEngine::~KyScriptAbstractEngine()
{
    if (d->mOwnsEngine)
        delete d->mJsEngine.data();
}

KyScriptEngine* KyScriptAbstractEngine::engineOrReport() const
{
    if (!d->mJsEngine)
        dbc_report("0", "Uninitialized engine");
    return d->mJsEngine;
}

/// The whole queue at once: what these runs queue in turn is drained by the guard of their own run.
void KyScriptAbstractEngine::drain()
{
    const QPointer<KyScriptAbstractEngine> self(this);
    const auto pending = std::exchange(d->mPendingScripts, {});
    for (const PendingScript& script : pending) {
        if (!self)
            return;
        runScript(script.program, script.inPushContext, script.inNoFunction, false);
    }
}

QJSValue KyScriptAbstractEngine::runScript(const KyScriptProgram& inScript, bool inPushContext,
                                           bool inNoFunction, bool inSerialize)
{
    const Guard guard(this);
    if (d->mCallDepth > 1) {
        QString text = QStringLiteral("Recursive script call");
        if (!inScript.infoString().isEmpty())
            text += QStringLiteral(": ") + inScript.infoString();
        if (!inScript.mFileName.isEmpty()) {
            text += QStringLiteral(", in file: %1").arg(inScript.mFileName);
            if (inScript.mLineNumber >= 1)
                text += QStringLiteral(", line %1").arg(inScript.mLineNumber);
        }
        getTheLogInstance().trace(2, KyScriptLog::Context, text.toLocal8Bit().constData());

        if (inSerialize) {
            getTheLogInstance().trace(2, KyScriptLog::Context, "Delaying to serialize execution!");
            d->mPendingScripts.push_back({inScript, inPushContext, inNoFunction});
            return QJSValue();
        }
    }

    KyScriptEngine* engine = engineOrReport();
    return engine ? engine->runScript(inScript, inPushContext, inNoFunction, d->mCallDepth == 1) : QJSValue();
}

QJSValue KyScriptAbstractEngine::evaluate(const KyScriptProgram& inScript, bool inPushContext)
{
    const Guard guard(this);
    KyScriptEngine* engine = engineOrReport();
    if (!engine)
        return QJSValue();
    dbc_holds(inPushContext == inScript.isolatedContext());
    return engine->evaluate(inScript, inPushContext);
}

bool KyScriptAbstractEngine::scriptIsValid(const KyScriptProgram& inScript, QString& outErrorMessage)
{
    KyScriptEngine* engine = engineOrReport();
    return engine && engine->scriptIsValid(inScript, outErrorMessage);
}

QString KyScriptAbstractEngine::errorMessage(const QJSValue& inValue, const QString& inInfo,
                                             QString* outMessage) const
{
    const KyScriptEngine* engine = engineOrReport();
    return engine ? engine->errorMessage(inValue, inInfo, outMessage) : QString();
}

bool KyScriptAbstractEngine::logException(const char* inContext, const QJSValue& inValue,
                                          const QString& inInfo) const
{
    const KyScriptEngine* engine = engineOrReport();
    return engine && engine->logException(inContext, inValue, inInfo);
}

QJSValue KyScriptAbstractEngine::globalObject() const
{
    const KyScriptEngine* engine = d->mJsEngine;
    return dbc_holds(engine) ? engine->globalObject() : QJSValue();
}

QJSValue KyScriptAbstractEngine::newObject()
{
    KyScriptEngine* engine = engineOrReport();
    return engine ? engine->newObject() : QJSValue();
}

QJSValue KyScriptAbstractEngine::newQObject(QObject* inObject)
{
    KyScriptEngine* engine = engineOrReport();
    return engine ? engine->newQObject(inObject) : QJSValue();
}

QStringList KyScriptAbstractEngine::extAcc() const
{
    const KyScriptEngine* engine = engineOrReport();
    return engine ? engine->extAcc() : QStringList();
}

void KyScriptAbstractEngine::setExtAcc(const QStringList& inExtAcc)
{
    if (KyScriptEngine* engine = engineOrReport())
        engine->setExtAcc(inExtAcc);
}

KyScriptEngine* KyScriptAbstractEngine::jsEngine(bool doAssert) const
{
    dbc_holds(!doAssert || d->mJsEngine.data());
    return d->mJsEngine;
}

QJSValue KyScriptAbstractEngine::pushContext()
{
    return d->mJsEngine ? d->mJsEngine->globalObject() : QJSValue();
}

void KyScriptAbstractEngine::popContext()
{
    dbc_report("false", nullptr);
}

KyScriptAbstractEngine& KyScriptAbstractInterface::getInstance(const QString& inName)
{
    // Never deleted: a host may ask while the process is going down.
    static auto& facades = *new std::map<QString, KyScriptAbstractEngine*>;
    KyScriptAbstractEngine*& facade = facades[inName];
    if (!facade) {
        facade = new KyScriptAbstractEngine;
        facade->d->mJsEngine = &KyScriptInterface::getInstance(inName);
        QObject::connect(facade->d->mJsEngine, &KyScriptEngine::extAccChanged, facade,
                         &KyScriptAbstractEngine::extAccChanged);
    }
    return *facade;
}

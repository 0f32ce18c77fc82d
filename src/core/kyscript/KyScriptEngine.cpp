#include "KyScriptEngine.h"

#include "KyScriptAuthToken.h"
#include "KyScriptBrowserCtrl.h"
#include "KyScriptConstructible.h"
#include "KyScriptDialog.h"
#include "KyScriptExternalMetaObject.h"
#include "KyScriptExternalObject.h"
#include "KyScriptFileDialog.h"
#include "KyScriptFileWriter.h"
#include "KyScriptGlobalLink.h"
#include "KyScriptHttpRequest.h"
#include "KyScriptIdGenerator.h"
#include "KyScriptInterface.h"
#include "KyScriptLog.h"
#include "KyScriptMessage.h"
#include "KyScriptNestedEvaluation.h"
#include "KyScriptOrvane.h"
#include "KyScriptPendingError.h"
#include "KyScriptPrintBuffer.h"
#include "KyScriptProgram.h"
#include "KyScriptRichEdit.h"
#include "KyScriptRunLog.h"
#include "KyScriptServer.h"
#include "KyScriptStudy.h"
#include "KyScriptSystem.h"
#include "KyScriptTimer.h"
#include "KyScriptUrl.h"
#include "KyScriptWebSocket.h"
#include "KyScriptWebSocketServer.h"
#include "KyScriptWord.h"
#include "KyScriptXmlFileWriter.h"

#include <kybase/KyTool.h>
#include <ovbase/OvDateFormatter.h>
#include <rnlib/RnContract.h>

#include <QtCore/QDateTime>
#include <QtCore/QThread>
#include <QtCore/QTimeZone>
#include <QtWidgets/QTextEdit>

KyScriptEngine::KyScriptEngine(QObject* inParent, int inOptions)
    : QJSEngine(inParent)
    , mOptions(inOptions)
    , mGlobalObject(globalObject())
    , mGlobalLink(std::make_unique<KyScriptGlobalLink>(*this))
    , mTrampoline(KyScriptNestedEvaluation::makeTrampoline(*this))
{
    setObjectName(QStringLiteral("Scripting"));
    new GlobalScope(this);
    installGlobals();
}

KyScriptEngine::~KyScriptEngine()
{
    collectGarbage();
    endRegistered(false);
}

KyScriptEngine* KyScriptEngine::of(const QObject* inObject)
{
    return qobject_cast<KyScriptEngine*>(qjsEngine(inObject));
}

/// The global is owned by this side: a script's destroy() and the garbage collector leave it alone.
template <class T, class... Arguments>
T* KyScriptEngine::addInstance(const char* inName, Arguments... inArguments)
{
    auto* object = new T(this, inArguments...);
    setObjectOwnership(object, CppOwnership);
    mGlobalObject.setProperty(QString::fromLatin1(inName), newQObject(object));
    return object;
}

/// The one place that says what an engine holds. The order of the lines is the order of construction.
void KyScriptEngine::installGlobals()
{
    if (mOptions & ScriptOrvane) {
        mOrvane = addInstance<KyScriptOrvane>("Orvane");
        forwardExtAcc();
    }
    if (mOptions & ScriptStudyList)
        mStudyList = addInstance<KyScriptStudyList>("StudyList");
    if (mOptions & ScriptMessage)
        mMessage = addInstance<KyScriptMessage>("Message");
    if (mOptions & ScriptServer)
        mServer = addInstance<KyScriptServer>("Server");
    if (mOptions & ScriptSystem)
        mSystem = addInstance<KyScriptSystem>("System");
    if (mOptions & ScriptUrl)
        mUrl = addInstance<KyScriptUrl>("Url");
    if (mOptions & ScriptWebSocketServer) {
        mWebSocketServer = addInstance<KyScriptWebSocketServer>("WebSocketServer", false);
        addInstance<KyScriptWebSocketServer>("WebSocketServerSSL", true);
    }

    if (mOptions & ScriptXmlFileWriter)
        addGlobalObjectFromMetaObject<KyScriptXmlFileWriter>(*this, QStringLiteral("XmlFileWriter"));
    if (mOptions & ScriptFileWriter)
        addGlobalObjectFromMetaObject<KyScriptFileWriter>(*this, QStringLiteral("FileWriter"));
    if (mOptions & ScriptFileDialog)
        addGlobalObjectFromMetaObject<KyScriptFileDialog>(*this, QStringLiteral("FileDialog"));
    if (mOptions & ScriptHttpRequest)
        addGlobalObjectFromMetaObject<KyScriptHttpRequest>(*this, QStringLiteral("HttpRequest"));
    if (mOptions & ScriptAuthToken)
        addGlobalObjectFromMetaObject<KyScriptAuthToken>(*this, QStringLiteral("AuthToken"));
    if (mOptions & ScriptDialog)
        addGlobalObjectFromMetaObject<KyScriptDialog>(*this, QStringLiteral("Dialog"));
    if (mOptions & ScriptIdGenerator)
        addGlobalObjectFromMetaObject<KyScriptIdGenerator>(*this, QStringLiteral("IdGenerator"));
    if (mOptions & ScriptBrowserCtrl)
        addGlobalObjectFromMetaObject<KyScriptBrowserCtrl>(*this, QStringLiteral("BrowserCtrl"));
    if (mOptions & ScriptWordCtrl)
        addGlobalObjectFromMetaObject<KyScriptWord>(*this, QStringLiteral("WordCtrl"));
    if (mOptions & ScriptWebSocket)
        addGlobalObjectFromMetaObject<KyScriptWebSocket>(*this, QStringLiteral("WebSocket"));
    if (mOptions & ScriptTimer)
        addGlobalObjectFromMetaObject<KyScriptTimer>(*this, QStringLiteral("Timer"));
    if (mOptions & ScriptRichEditCtrl)
        addGlobalObjectFromMetaObject<KyScriptRichEdit>(*this, QStringLiteral("RichEditCtrl"));

    if (mOptions & ScriptGlobal)
        mGlobalObject.setProperty(QStringLiteral("Global"), newObject());
}

/// Once there is a named engine, all engines tell the default one of changes; until then each tells itself.
void KyScriptEngine::forwardExtAcc()
{
    KyScriptEngine* receiver = this;
    if (KyScriptInterface::hasInstances())
        receiver = &KyScriptInterface::getInstance(QString());
    connect(mOrvane, &KyScriptOrvane::extAccChanged, receiver, &KyScriptEngine::extAccChanged);
}

/// External objects are the one thing of which an empty mask means all.
bool KyScriptEngine::wants(int inExternalOption) const
{
    return mOptions == 0 || (mOptions & inExternalOption);
}

QJSValue KyScriptEngine::runScript(const KyScriptProgram& inScript, bool inPushContext, bool inNoFunction,
                                   bool inCleanup)
{
    const PendingError pending(this);
    const bool wrapToFunction = inPushContext && !inNoFunction;
    KyScriptProgram script = inScript;
    if (wrapToFunction)
        script.setIsolatedContext(true);

    mGlobalLink->load(mGlobalObject);
    dbc_holds(wrapToFunction == script.isolatedContext());

    const QJSValue result = evaluate(script, inPushContext);
    mGlobalLink->save(mGlobalObject);
    logException(KyScriptLog::Context, result, inScript.infoString());
    if (inCleanup)
        clearAfterRun();
    return result;
}

/// The last step of a run: an external object that ends the engine when it is told to clear does no harm.
void KyScriptEngine::clearAfterRun()
{
    if (mStudyList)
        mStudyList->clear();
    const QPointer<KyScriptEngine> self(this);
    for (const int kind : {ScriptExternalKindA, ScriptExternalKindB}) {
        if (self && wants(kind))
            KyScriptExternalObject::clearObjects(*this, kind);
    }
}

QJSValue KyScriptEngine::evaluate(const QString& inText, const QString& inFileName, int inLine,
                                  QStringList* outExceptionStack)
{
    const QJSValue result = QJSEngine::evaluate(inText, inFileName, inLine, outExceptionStack);
    flushPrints();
    return result;
}

QJSValue KyScriptEngine::evaluate(const KyScriptProgram& inScript, bool)
{
    addExternals();
    const KyScriptRunLog log(inScript.sourceCode(), inScript.infoString(), inScript.mFileName,
                             inScript.mLineNumber);

    KyTool::setTriggeredByScript(true);
    const QJSValue result =
        evaluateGuarded(inScript.wrappedSourceCode(), inScript.mFileName, std::max(inScript.mLineNumber, 1));
    // Not restored to what it was: the end of a nested run ends the mark for the outer one too.
    KyTool::setTriggeredByScript(false);

    log.finish();
    return result;
}

void KyScriptEngine::addExternals()
{
    for (const int kind : {ScriptExternalKindA, ScriptExternalKindB}) {
        if (wants(kind))
            KyScriptExternalObject::addToEngine(*this, kind);
    }
    if (!wants(ScriptExternalMetaObjects))
        return;
    for (const auto& external : KyScriptExternalMetaObject::externalMetaObjects()) {
        if (external && external->mMetaObject && mGlobalObject.property(external->objectName()).isUndefined())
            mGlobalObject.setProperty(external->objectName(), newQMetaObject(external->mMetaObject));
    }
}

QJSValue KyScriptEngine::evaluateGuarded(const QString& inText, const QString& inFileName, int inLine)
{
    const PendingError pending(this);
    const bool nested = mDepth > 0 || QThread::currentThread()->loopLevel() > 1;
    ++mDepth;
    const QJSValue result =
        nested ? KyScriptNestedEvaluation(*this, inText, inFileName, inLine).evaluate(mTrampoline)
               : QJSEngine::evaluate(inText, inFileName, inLine);
    --mDepth;
    flushPrints();
    return result;
}

void KyScriptEngine::flushPrints()
{
    if (mPrintHelper)
        mPrintHelper->flush();
}

QJSValue KyScriptEngine::callCounted(const QJSValue& inFunction, const QJSValueList& inArgs)
{
    ++mDepth;
    const QJSValue result = inFunction.call(inArgs);
    --mDepth;
    flushPrints();
    return result;
}

/// Each script frame that is on the stack adds a line to the backtrace of a new error. The error is Qt's own,
/// since scripts may replace the class.
bool KyScriptEngine::isOnStack()
{
    if (mDepth > 0 || QThread::currentThread()->loopLevel() > 1 || hasError())
        return true;
    const QString ownFrames =
        QStringLiteral("(function() { try { null.x; } catch (e) { return e.stack; } })()");
    return QJSEngine::evaluate(ownFrames).toString().count(QLatin1Char('\n')) > 1;
}

bool KyScriptEngine::scriptIsValid(const KyScriptProgram&, QString&)
{
    return true;
}

QString KyScriptEngine::errorMessage(const QJSValue& inValue, const QString& inInfo,
                                     QString* outMessage) const
{
    if (!inValue.isError())
        return QString();

    const int line = inValue.property(QStringLiteral("lineNumber")).toInt();
    const QString message = inValue.property(QStringLiteral("message")).toString();
    const QString stack = inValue.property(QStringLiteral("stack")).toString();
    if (outMessage)
        *outMessage = message;

    const QString head = inInfo.isEmpty() ? QStringLiteral("Uncaught JavaScript Exception")
                                          : QStringLiteral("Uncaught exception in %1").arg(inInfo);
    return head +
           QStringLiteral("\nException: %1\nLine: %2\nBacktrace:\n%3").arg(message).arg(line).arg(stack);
}

bool KyScriptEngine::logException(const char* inContext, const QJSValue& inValue, const QString& inInfo) const
{
    const QString text = errorMessage(inValue, inInfo, nullptr);
    if (text.isEmpty())
        return false;
    getTheLogInstance().trace(3, inContext, text.toLatin1().constData());
    return true;
}

void KyScriptEngine::redirectPrintOutput(QTextEdit* inTextEdit)
{
    auto* helper = new MyPrintHelper(this, inTextEdit);
    mPrintHelper = helper;
    setObjectOwnership(helper, CppOwnership);
    mGlobalObject.setProperty(QStringLiteral("vprint"),
                              newQObject(helper).property(QStringLiteral("vprint")));
    mGlobalObject.setProperty(
        QStringLiteral("print"),
        QJSEngine::evaluate(
            QStringLiteral("(function(){ return this.vprint(Array.prototype.slice.call(arguments) ); })"),
            QString(), 1));
}

QTextEdit* KyScriptEngine::printOutput() const
{
    return mPrintHelper ? mPrintHelper->textEdit() : nullptr;
}

void KyScriptEngine::convertVariant(QVariant& ioValue)
{
    if (ioValue.typeId() == QMetaType::QDate) {
        ioValue = QDateTime(ioValue.toDate(), QTime(), QTimeZone::systemTimeZone());
        return;
    }
    if (ioValue.typeId() != QMetaType::QTime)
        return;

    const QString text = ioValue.toTime().toString(Qt::ISODateWithMs);
    QJSValue object = newObject();
    const QJSValue prototype = object.prototype();
    object.setPrototype(QJSValue(QJSValue::NullValue)); // a frozen one would not let its toString be replaced
    object.setProperty(
        QStringLiteral("toString"),
        QJSEngine::evaluate(QStringLiteral("(function(){ return \"%1\"; })").arg(text), QString(), 1));
    object.setPrototype(prototype);
    ioValue = QVariant::fromValue(object);
}

void KyScriptEngine::registerForDestruction(QObject* inObject)
{
    if (inObject && !mObjectsToDestroy.contains(inObject))
        mObjectsToDestroy.append(inObject);
}

QStringList KyScriptEngine::extAcc() const
{
    return mOrvane ? mOrvane->extAcc() : QStringList();
}

void KyScriptEngine::setExtAcc(const QStringList& inExtAcc)
{
    if (mOrvane)
        mOrvane->setExtAcc(inExtAcc);
}

void KyScriptEngine::cleanup()
{
    collectGarbage();
    endRegistered(isOnStack());
}

/// What a script that waits in an event loop is using has to stay until it returns.
void KyScriptEngine::endRegistered(bool inLater)
{
    // By index: what is deleted may register further objects.
    for (qsizetype i = 0; i < mObjectsToDestroy.size(); ++i) {
        QObject* const object = mObjectsToDestroy.at(i);
        if (object && inLater)
            object->deleteLater();
        else
            delete object;
    }
    mObjectsToDestroy.clear();
}

GlobalScope::GlobalScope(QJSEngine* inEngine)
    : QObject(inEngine)
{
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
    const QJSValue wrapper = inEngine->newQObject(this);
    QJSValue global = inEngine->globalObject();
    for (const char* name : {"collectGarbage", "btoa", "guiDate", "guiTime"})
        global.setProperty(QString::fromLatin1(name), wrapper.property(QString::fromLatin1(name)));
}

void GlobalScope::collectGarbage()
{
    if (auto* eng = qobject_cast<KyScriptEngine*>(parent()))
        eng->collectGarbage();
}

QString GlobalScope::btoa(QString inText)
{
    return QString::fromLatin1(inText.toUtf8().toBase64());
}

QString GlobalScope::guiDate(QDate inDate)
{
    return OvDateFormatter::guiDate(inDate);
}

QString GlobalScope::guiTime(QJSValue inTime)
{
    if (inTime.isDate())
        return OvDateFormatter::guiTime(inTime.toDateTime().time(), false, true);

    const auto* eng = qobject_cast<KyScriptEngine*>(parent());
    if (!dbc_holds(eng))
        return QString();
    // The cast makes an empty text of undefined, where the conversion of the language gives the word.
    const QString text = inTime.isUndefined() ? inTime.toString() : qjsvalue_cast<QString>(inTime);
    if (text.isEmpty())
        return QString();
    return OvDateFormatter::guiTime(QTime::fromString(text, Qt::ISODateWithMs), false, true);
}

MyPrintHelper::MyPrintHelper(QObject* inParent, QTextEdit* inTextEdit)
    : QObject(inParent)
    , mTextEdit(inTextEdit)
{}

QTextEdit* MyPrintHelper::textEdit() const
{
    return mTextEdit;
}

void MyPrintHelper::vprint(QJSValue argArray)
{
    constexpr int longest = 1 << 16; // an object can claim to be longer than memory
    if (!mTextEdit)
        return;

    QStringList texts;
    const QJSValue length = argArray.property(QStringLiteral("length"));
    if (length.isNumber()) {
        for (quint32 i = 0, count = quint32(std::clamp(length.toInt(), 0, longest)); i < count; ++i)
            texts.append(argArray.property(i).toString());
    }
    append(texts.join(QLatin1Char(' ')));
}

void MyPrintHelper::print(QVariant arg1, QVariant arg2, QVariant arg3)
{
    if (!mTextEdit)
        return;

    QString text;
    if (!arg1.isNull())
        text += arg1.toString();
    for (const QVariant& further : {arg2, arg3}) {
        if (!further.isNull())
            text += QLatin1Char(' ') + further.toString();
    }
    append(text);
}

void MyPrintHelper::append(const QString& inLine)
{
    // A value that was made into text may have ended the widget.
    if (mTextEdit)
        KyScriptPrintBuffer::of(*mTextEdit).append(inLine);
}

void MyPrintHelper::flush()
{
    if (mTextEdit)
        KyScriptPrintBuffer::of(*mTextEdit).flush();
}

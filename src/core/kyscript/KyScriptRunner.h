#pragma once

#include "KyScriptAbstractEngine.h"
#include "KyScriptArgument.h"
#include "KyScriptEngine.h"
#include "KyScriptPendingError.h"

#include <QtCore/QPointer>

#include <map>
#include <memory>

class KyScriptProgram;

/// Scripts as a library of one module: a private engine, a script of function definitions that is run once,
/// host objects published for a time, and script functions called from C++.
///
/// \code
/// KyScriptRunner runner;
/// runner.initEngine(ScriptStudyList, KyScriptProgram("function greet(name, times) { ... }", "greetings"));
/// runner.createCurrentContext();
/// runner.addScriptObjectToCurrentContext("Desk", new Desk);
/// QJSValue result = runner.callFunction(runner.getCurrentContextFunction("greet"), QString("Ada"), 3);
/// runner.destroyCurrentContext();
/// \endcode
///
/// A context is a period in which objects are published on the engine's global object; it isolates nothing.
/// Nothing throws: a wrong state is a contract report and a neutral result. createCurrentContext() and
/// getGlobalFunction() need an engine. GUI thread only. Not copyable.
class KYSCRIPT_EXPORT KyScriptRunner
{
public:
    KyScriptRunner();
    /// Closes an open context. Objects of the context die at the next return to the event loop.
    ~KyScriptRunner();
    KyScriptRunner(const KyScriptRunner&) = delete;
    KyScriptRunner& operator=(const KyScriptRunner&) = delete;

    /// Makes an engine with the options \a inOptions and runs \a inScript on it, which may be empty. False,
    /// and no engine, when the script fails. An engine that is there already is replaced, with a report.
    bool initEngine(int inOptions, const KyScriptProgram& inScript);
    bool hasEngine() const;

    /// Whether \a inScript is not known to be invalid. False for an empty program.
    bool isValidScript(const KyScriptProgram& inScript) const;

    /// Runs a script that is not to leave a value; one that it leaves is logged. False after an error, which
    /// is logged, and for an empty program. The program must not be isolated.
    bool evaluateScript(const KyScriptProgram& inScript) const;
    /// The same, with the value as text; empty for undefined.
    bool evaluateScript(const KyScriptProgram& inScript, QString& outResult) const;

    void createCurrentContext();
    bool hasCurrentContext() const;
    /// Takes the context's objects away from scripts and gives them to deleteLater().
    void destroyCurrentContext();

    /// Publishes \a inObject as the global \a inName, which must be an identifier, until the context ends.
    /// The context owns it from now on. Another object of that name is replaced, and disposed of unless it
    /// has a further name in the context; the same object stays as it is.
    void addScriptObjectToCurrentContext(const QString& inName, QObject* inObject);

    /// A new script object of the engine, to be filled and passed as an argument.
    QJSValue createObject();

    /// The script function \a inName, while a context is open. Undefined, silently, for a name that does not
    /// exist; with a report and a log line for one that is no function.
    QJSValue getCurrentContextFunction(const QString& inName);
    /// The same while no context is open.
    QJSValue getGlobalFunction(const QString& inName);

    /// Calls \a inFunction, got by one of the operations above, with any number of arguments:
    ///
    /// - numbers and enumerations: a number, exact to 53 bits; bool: a boolean
    /// - texts, views of texts and characters of all sorts: a text; bytes in `const char*` and `std::string`
    ///   are UTF-8
    /// - QByteArray and QByteArrayView: an ArrayBuffer
    /// - pointers to a QObject, also in a QPointer: the object, whose ownership does not change; null: null
    /// - QJSValue: the value itself
    /// - QDate and QTime, also in a QVariant: what KyScriptEngine::convertVariant() makes of them
    /// - QVariant, QVariantMap, QDateTime, QUrl, QRegularExpression, JSON, points, sizes, rectangles,
    /// gadgets:
    ///   what QJSEngine::toScriptValue() gives
    /// - maps from texts to any of these: an object; lists, arrays and sets of any of these: an array
    ///
    /// Another type is refused by the compiler.
    ///
    /// \return the value of the call; an error value (`isError()`) after an uncaught error, which is not
    /// logged; undefined for anything that is not callable, and without an engine. An error that host code
    /// has left pending on the engine is logged, or left to the script that is calling.
    template <class... Args>
    QJSValue callFunction(const QJSValue& inFunction, const Args&... inArgs)
    {
        KyScriptEngine* const engine = engineToCall();
        if (!engine)
            return QJSValue();
        const KyScriptEngine::PendingError pending(engine);
        QList<QJSValue> args;
        args.reserve(qsizetype(sizeof...(Args)));
        forwardArgs(args, *engine, inArgs...);
        return engine->callCounted(inFunction, args);
    }

private:
    template <class First, class... Rest>
    void forwardArgs(QList<QJSValue>& ioArgs, KyScriptEngine& ioEngine, const First& inFirst,
                     const Rest&... inRest)
    {
        static_assert(
            KyScriptArgument::isPossible<First>(),
            "callFunction() has no script value for this type of argument: convert it, for example to "
            "QString, QVariantMap or QJSValue, or pass a QObject");
        if constexpr (KyScriptArgument::isPossible<First>())
            ioArgs.append(KyScriptArgument::of(ioEngine, inFirst));
        forwardArgs(ioArgs, ioEngine, inRest...);
    }
    void forwardArgs(QList<QJSValue>& ioArgs, KyScriptEngine&) { forwardArgs(ioArgs); }
    void forwardArgs(QList<QJSValue>&);

    KyScriptEngine* engine() const;
    /// A report when the engine has gone.
    KyScriptEngine* engineToCall() const;

    QJSValue callableOrReport(const QJSValue& inObject, const QString& inName) const;
    void withdraw(const QString& inName);
    void replace(const QString& inName, const QObject* inHeir);

    std::unique_ptr<KyScriptAbstractEngine> mEngine;
    QJSValue mContext;
    std::map<QString, QPointer<QObject>> mContextObjects;
};

#pragma once

#include "KyScriptAbstractEngine.h"
#include "KyScriptEngine.h"

#include <QtCore/QPointer>

#include <map>
#include <string>
#include <type_traits>

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
    /// The context owns it from now on. An object of that name is replaced and disposed of.
    void addScriptObjectToCurrentContext(const QString& inName, QObject* inObject);

    /// A new script object of the engine, to be filled and passed as an argument.
    QJSValue createObject();

    /// The script function \a inName, while a context is open. Undefined, silently, for a name that does not
    /// exist; with a report and a log line for one that is no function.
    QJSValue getCurrentContextFunction(const QString& inName);
    /// The same while no context is open.
    QJSValue getGlobalFunction(const QString& inName);

    /// Calls \a inFunction, got by one of the operations above, with any number of arguments: numbers, bool,
    /// texts (QString, const char* and std::string, both UTF-8), QByteArray as an ArrayBuffer, QObject
    /// pointers, whose ownership does not change, QJSValues, and whatever else QJSEngine::toScriptValue()
    /// takes, such as QVariantMap.
    ///
    /// \return the value of the call; an error value (`isError()`) after an uncaught error, which is not
    /// logged; undefined for anything that is not callable, and without an engine.
    template <class... Args>
    QJSValue callFunction(const QJSValue& inFunction, const Args&... inArgs)
    {
        QList<QJSValue> args;
        args.reserve(qsizetype(sizeof...(Args)));
        forwardArgs(args, inArgs...);
        return inFunction.call(args);
    }

private:
    template <class First, class... Rest>
    void forwardArgs(QList<QJSValue>& ioArgs, const First& inFirst, const Rest&... inRest)
    {
        ioArgs.append(toArgument(inFirst));
        forwardArgs(ioArgs, inRest...);
    }
    void forwardArgs(QList<QJSValue>&);

    template <class T>
    QJSValue toArgument(const T& inValue) const
    {
        if constexpr (std::is_same_v<T, QJSValue>)
            return inValue;
        else if constexpr (std::is_convertible_v<T, QObject*>)
            return scriptValue<QObject*>(inValue);
        else if constexpr (std::is_same_v<T, QByteArray>)
            return scriptValue(inValue.isNull() ? QByteArray("") : inValue); // a null one would be unusable
        else if constexpr (std::is_convertible_v<T, const char*>)
            return scriptValue(QString::fromUtf8(static_cast<const char*>(inValue)));
        else if constexpr (std::is_same_v<T, std::string>)
            return scriptValue(QString::fromStdString(inValue));
        else if constexpr (std::is_integral_v<T> && sizeof(T) >= sizeof(int) && !std::is_same_v<T, int>)
            return QJSValue(double(inValue)); // a long would arrive as an opaque object
        else
            return scriptValue(inValue);
    }

    template <class T>
    QJSValue scriptValue(const T& inValue) const
    {
        KyScriptEngine* engine = mEngine ? mEngine->jsEngine(true) : nullptr;
        return engine ? engine->toScriptValue(inValue) : QJSValue();
    }

    QJSValue callableOrReport(const QJSValue& inObject, const QString& inName) const;
    void disposeOf(const QString& inName, QObject* inObject);

    std::unique_ptr<KyScriptAbstractEngine> mEngine;
    QJSValue mContext;
    std::map<QString, QPointer<QObject>> mContextObjects;
};

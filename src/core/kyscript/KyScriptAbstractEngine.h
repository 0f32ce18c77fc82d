#pragma once

#include "KyScriptExport.h"

#include <QtCore/QObject>
#include <QtQml/QJSValue>

#include <memory>

class KyScriptEngine;
class KyScriptProgram;

/// The facade of an engine: survives it, refuses work politely without one, and guards against re-entry.
///
/// An engine may end before its facade. From then on every operation reports the contract "0" with the
/// message "Uninitialized engine", but for globalObject() and jsEngine(), and gives its neutral result.
///
/// A script that is waiting in a nested event loop can be overtaken by another: that is a re-entry, and the
/// log tells of each. It runs nested at once, or waits, as the caller asks. GUI thread only.
class KYSCRIPT_EXPORT KyScriptAbstractEngine : public QObject
{
    Q_OBJECT

public:
    /// A facade with an engine of its own, which goes with it. \a inParent and \a inOptions are those of the
    /// engine; the facade itself has no parent.
    KyScriptAbstractEngine(QObject* inParent, int inOptions);
    ~KyScriptAbstractEngine() override;

    /// Runs \a inScript as KyScriptEngine::runScript() does; only the outermost run clears the state of the
    /// run. A re-entry with \a inSerialize waits until the outermost run has ended, before that call returns
    /// to its caller; its own result is dropped.
    ///
    /// \return the script's value or error value; undefined for a run that waits, and without an engine.
    QJSValue runScript(const KyScriptProgram& inScript, bool inPushContext = true, bool inNoFunction = false,
                       bool inSerialize = false);

    /// Runs \a inScript as KyScriptEngine::evaluate() does. \a inPushContext must be the program's own
    /// isolatedContext(); a difference is a contract report. Neutral: undefined.
    QJSValue evaluate(const KyScriptProgram& inScript, bool inPushContext);

    /// True for every program. Neutral: false.
    bool scriptIsValid(const KyScriptProgram& inScript, QString& outErrorMessage);
    /// Neutral: empty.
    QString errorMessage(const QJSValue& inValue, const QString& inInfo, QString* outMessage) const;
    /// Neutral: false.
    bool logException(const char* inContext, const QJSValue& inValue, const QString& inInfo) const;

    /// Neutral: undefined, with the contract "engine".
    QJSValue globalObject() const;
    /// Neutral: undefined.
    QJSValue newObject();
    /// Neutral: undefined.
    QJSValue newQObject(QObject* inObject);

    /// Neutral: empty.
    QStringList extAcc() const;
    void setExtAcc(const QStringList& inExtAcc);

    /// The engine, or null; null is a contract report only with \a doAssert.
    KyScriptEngine* jsEngine(bool doAssert) const;

    /// The engine's global object; undefined without an engine, and no report. There is no stack of contexts.
    QJSValue pushContext();
    /// Must not be called: always a contract report.
    void popContext();

Q_SIGNALS:
    void extAccChanged();

private:
    friend class KyScriptAbstractInterface;

    struct Private;
    class Guard;

    KyScriptAbstractEngine();

    KyScriptEngine* engineOrReport() const;
    void drain();

    const std::unique_ptr<Private> d;
};

/// The way to the engine of a name for other modules.
class KYSCRIPT_EXPORT KyScriptAbstractInterface
{
public:
    /// The facade of \a inName, made with the engine if need be. It is bound once: when its engine ends, it
    /// stays without one, also when the name gets a new engine. Facades are never deleted.
    static KyScriptAbstractEngine& getInstance(const QString& inName);
};

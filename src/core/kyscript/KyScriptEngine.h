#pragma once

#include "KyScriptExport.h"
#include "KyScriptOptions.h"

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtQml/QJSEngine>

#include <memory>

class GlobalScope;
class KyScriptGlobalLink;
class KyScriptMessage;
class KyScriptOrvane;
class KyScriptProgram;
class KyScriptServer;
class KyScriptStudyList;
class KyScriptSystem;
class KyScriptUrl;
class KyScriptWebSocketServer;
class MyPrintHelper;
class QTextEdit;

/// One JavaScript world: a QJSEngine with the system's global objects.
///
/// The option mask given at construction decides its global namespace. Everything is used on the GUI thread;
/// a run is synchronous, and a script that does not end blocks that thread. Scripts fail as data: a run gives
/// an error value and writes a log line, nothing is thrown.
///
/// Owner: the \a inParent of the constructor. The engine owns the objects that it makes. Objects that a
/// script makes go with a garbage collection, or with the engine; those given to registerForDestruction() go
/// with cleanup() at the latest. Deleting an engine while one of its scripts is on the stack is not allowed.
class KYSCRIPT_EXPORT KyScriptEngine : public QJSEngine
{
    Q_OBJECT

public:
    /// \a inOptions is a mask of KyScriptOption.
    KyScriptEngine(QObject* inParent, int inOptions);
    ~KyScriptEngine() override;

    /// The engine of a host object, or null when no engine knows the object yet, or when it is another kind.
    static KyScriptEngine* of(const QObject* inObject);

    /// As QJSEngine::evaluate(): neither isolated nor logged. All that it prints stands in the text widget
    /// when it returns.
    QJSValue evaluate(const QString& inText, const QString& inFileName = QString(), int inLine = 1,
                      QStringList* outExceptionStack = nullptr);

    /// Runs \a inScript with the store `Global` around it and reports an uncaught error to the log.
    ///
    /// With \a inPushContext and without \a inNoFunction the script runs in a function scope of its own;
    /// otherwise it runs at the top level, unless the program itself is isolated. \a inCleanup ends the life
    /// of the study objects and tells external objects to clear. The caller's program is never changed.
    ///
    /// \return the script's value; after an uncaught error an error value (`isError()`). A thrown value that
    /// is no Error object counts as a value.
    Q_INVOKABLE QJSValue runScript(const KyScriptProgram& inScript, bool inPushContext = true,
                                   bool inNoFunction = false, bool inCleanup = true);

    /// Runs \a inScript bare: external objects are added and the run is logged, but `Global` is neither
    /// loaded nor saved, no error is logged and nothing is cleared. \a inPushContext has no effect here.
    QJSValue evaluate(const KyScriptProgram& inScript, bool inPushContext);

    /// Always true, \a outErrorMessage is left alone: a bad script is found only when it is run. Read a true
    /// as "not known to be invalid".
    Q_INVOKABLE bool scriptIsValid(const KyScriptProgram& inScript, QString& outErrorMessage);

    /// The report of an uncaught error: head, message, line and backtrace. Empty, with \a outMessage left
    /// alone, when \a inValue is no error. \a outMessage may be null and gets the bare message.
    QString errorMessage(const QJSValue& inValue, const QString& inInfo, QString* outMessage) const;

    /// Writes the errorMessage() to the log at level 3 under \a inContext. Gives whether there was one.
    bool logException(const char* inContext, const QJSValue& inValue, const QString& inInfo) const;

    /// Gives scripts the functions `print` and `vprint`, which append to \a inTextEdit as long as it lives.
    /// A further call replaces both.
    void redirectPrintOutput(QTextEdit* inTextEdit);

    /// What scripts print to at present; null while they have no such functions, or the widget has gone.
    QTextEdit* printOutput() const;

    /// Gives a value of the host the form that scripts expect: a QDate becomes a QDateTime at local midnight,
    /// a QTime an object that prints as its time ("14:05:09.120"). Others stay as they are.
    void convertVariant(QVariant& ioValue);

    /// Lets cleanup() delete \a inObject, unless it has gone before. Null is ignored.
    void registerForDestruction(QObject* inObject);

    /// The list `Orvane.extAcc`, one for the process; empty without that global.
    QStringList extAcc() const;
    void setExtAcc(const QStringList& inExtAcc);

    /// Whether a script of this engine is on the stack, be it a run or a handler that waits in a nested event
    /// loop: the engine must not be deleted then. True also where that can't be told, in any nested loop.
    bool isOnStack();

    int options() const { return mOptions; }

Q_SIGNALS:
    void extAccChanged();

protected:
    /// Collects garbage and deletes what is registered for destruction; while a script is waiting in an event
    /// loop, as soon as that can be done. The engine stays usable.
    void cleanup();

private:
    friend class KyScriptInterface;
    friend class KyScriptOrvane;
    friend class KyScriptRunner;

    class PendingError;

    template <class T, class... Arguments>
    T* addInstance(const char* inName, Arguments... inArguments);
    void installGlobals();
    void forwardExtAcc();
    bool wants(int inExternalOption) const;

    void addExternals();
    void clearAfterRun();
    void endRegistered(bool inLater);
    /// Calls \a inFunction. What it calls back is nested in it, as in a run.
    QJSValue callCounted(const QJSValue& inFunction, const QJSValueList& inArgs);
    void flushPrints();
    QJSValue evaluateGuarded(const QString& inText, const QString& inFileName, int inLine);

    KyScriptOrvane* mOrvane = nullptr;
    KyScriptStudyList* mStudyList = nullptr;
    KyScriptMessage* mMessage = nullptr;
    KyScriptServer* mServer = nullptr;
    KyScriptSystem* mSystem = nullptr;
    KyScriptUrl* mUrl = nullptr;
    KyScriptWebSocketServer* mWebSocketServer = nullptr;
    QList<QPointer<QObject>> mObjectsToDestroy;
    int mOptions = 0;
    QPointer<MyPrintHelper> mPrintHelper;

    /// While one value lives, Qt need not map and unmap its value page for every temporary value.
    QJSValue mGlobalObject;
    std::unique_ptr<KyScriptGlobalLink> mGlobalLink;
    QJSValue mTrampoline;
    int mDepth = 0;
};

/// The body of an engine's global functions. Made by the engine as its child.
class GlobalScope : public QObject
{
    Q_OBJECT

public:
    explicit GlobalScope(QJSEngine* inEngine);

    /// Runs the garbage collector of the engine that is the parent.
    Q_INVOKABLE void collectGarbage();
    /// Standard Base64 of the UTF-8 bytes of \a inText.
    Q_INVOKABLE QString btoa(QString inText);
    /// \a inDate for display, by the user's settings. Empty for an invalid date.
    Q_INVOKABLE QString guiDate(QDate inDate);
    /// The time of a Date, or of a value that prints in ISO form, for display by the user's settings. Empty
    /// for anything that is no time.
    Q_INVOKABLE QString guiTime(QJSValue inTime);
};

/// Sends the print output of scripts to a text widget. Made by redirectPrintOutput() as the engine's child.
class MyPrintHelper : public QObject
{
    Q_OBJECT

public:
    MyPrintHelper(QObject* inParent, QTextEdit* inTextEdit);

    /// Appends a line of the elements of \a argArray, the first 65536 of them, joined by a blank; an empty
    /// line for anything without a length. Nothing happens when the widget has gone.
    Q_INVOKABLE void vprint(QJSValue argArray);
    Q_INVOKABLE void print(QVariant arg1, QVariant arg2 = QVariant(), QVariant arg3 = QVariant());

    /// Puts lines that are still on their way into the widget.
    void flush();

    QTextEdit* textEdit() const;

private:
    void append(const QString& inLine);

    const QPointer<QTextEdit> mTextEdit;
};

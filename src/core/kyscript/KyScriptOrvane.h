#pragma once

#include <rnlib/RnUniqueID.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtQml/QJSValue>

#include <map>

class KyBaseViewer;
class KyScriptViewer;
class QJSEngine;

/// The global `Orvane`: a script's handle on the running application. Owned by the engine.
///
/// Every operation is a synchronous translation between script values and the platform. What is asked for and
/// isn't there raises no script error and writes no log line: each operation has a neutral result, named with
/// it. The one exception is a stored procedure that fails. Keys, ids and commands go to the platform in
/// Latin-1. GUI thread only.
///
/// Its subjects have a source each: KyScriptOrvane.cpp for tools, viewers, session and server, and
/// KyScriptOrvaneProperties.cpp, KyScriptOrvaneBackend.cpp and so on for the others.
class KyScriptOrvane : public QObject
{
    Q_OBJECT
    /// The accession numbers that another program has called up, as far as scripts know them. One list for
    /// all engines of the process, empty at first. A list of texts, see KyScriptTexts; writing what is none
    /// is a TypeError of the script.
    Q_PROPERTY(QVariant extAcc READ extAccVariant WRITE setExtAccVariant NOTIFY extAccChanged)

public:
    explicit KyScriptOrvane(QObject* parent);
    ~KyScriptOrvane() override;

    // Properties of the application. What goes wrong with a value stands in the log, under "Script Interface"
    // at level 3, and is not told to the script. They come first, since Qt looks through all methods in front
    // of the one that a script calls.

    /// The text form of a property; empty for an unknown one.
    Q_INVOKABLE QString propertyValue(const QString& inPropertyId) const;
    /// Sets a property from its text form, in the layer of scripts. False for an unknown one. A text that the
    /// property can't read leaves it as it is, and the result is true all the same.
    Q_INVOKABLE bool setPropertyValue(const QString& inPropertyId, const QString& inValue);
    /// The value of a property: bool, int, double, QStringList, or else its text form. Invalid for an unknown
    /// one.
    Q_INVOKABLE QVariant propertyVariant(const QString& inPropertyId) const;
    /// Sets a property in the layer of scripts. False for an unknown one. The value must be of the property's
    /// own type, else it is logged and nothing changes; the result is true all the same.
    Q_INVOKABLE bool setPropertyVariant(const QString& inPropertyId, const QVariant& inValue);
    /// Takes back what scripts have set, so that the value beneath is in effect. False for an unknown
    /// property.
    Q_INVOKABLE bool removePropertyValue(const QString& inPropertyId);
    /// Makes a property of the type of \a inDefault, which stays until the application ends, and labels each
    /// level of its id with the same part of \a inPropertyLabel. One that is there keeps its value.
    Q_INVOKABLE void registerProperty(const QString& inPropertyId, const QString& inPropertyLabel,
                                      const QVariant& inDefault);
    /// The same for a floating point number, also when the default is a whole one.
    Q_INVOKABLE void registerPropertyFloatingPoint(const QString& inPropertyId,
                                                   const QString& inPropertyLabel, double inDefault);

    // Tools

    /// An action that shows the tool of that decoration key: a script can trigger it, check an activatable
    /// one, and read its texts and its state. Each call makes a new one, which lives as long as the engine:
    /// keep it. Neutral: null.
    Q_INVOKABLE QObject* tool(QString inKey);

    /// Gives the tool an icon: a file, or an icon of the application by its name. A name that is neither
    /// stands for the application's mark; an empty one takes the icon away. It is kept for a key of no known
    /// tool too. Neutral: nothing happens.
    Q_INVOKABLE void setToolIcon(QString inKey, QString inIcon);

    /// Gives the tool a tool tip and a label, which an active tool shows as well. Kept and neutral as above.
    Q_INVOKABLE void setToolText(QString inKey, QString inTooltip, QString inMenuText);

    /// What the editor of that key offers scripts; the script owns it. Neutral: null.
    Q_INVOKABLE QObject* editor(QString inKey);

    // Viewers. A display set id is compared exactly, in Latin-1; of several viewers the first counts, in the
    // order of the viewer manager. An empty id finds a viewer whose own is empty.

    /// Makes the viewer of that display set the active one and repaints it. Neutral: false.
    Q_INVOKABLE bool activateViewer(QString inProtocolDisplaySetId);
    /// The active viewer as a KyScriptViewer; the same object each time. Neutral: null.
    Q_INVOKABLE QObject* activeViewer();
    /// The viewer of that display set, likewise. Neutral: null.
    Q_INVOKABLE QObject* viewer(QString inProtocolDisplaySetId);
    /// Shows a short text in the tool bar of the active viewer. Neutral: nothing happens.
    Q_INVOKABLE void setDisplayHint(QString text);

    // Session and render server

    /// The number of the session; 0 without one.
    Q_INVOKABLE int getSessionContextID() const;
    /// Runs a command on the render server. Neutral: nothing happens.
    Q_INVOKABLE void exec(QString inCommand, QString inArguments);
    /// Runs a command on the render server and gives its answer, read as Latin-1. Neutral: empty.
    Q_INVOKABLE QString eval(QString inCommand, QString inArguments);
    /// Tells the user when the session is out of sync with extAcc, see KyLoadHelper. Neutral: 0.
    Q_INVOKABLE int showOutOfSyncWarning();
    /// Whether the session shows something else than what extAcc names. Neutral: false.
    Q_INVOKABLE bool isOutOfSync();

    // Settings outside of the properties. A key that begins with "\", "/" or "HKEY" names a location of the
    // operating system's own store and a value there, joined by "\" or "/"; any other one is a key of the
    // application's own settings, with "/" between groups.

    /// Stores a value. Always true, also when it could not be stored. Of functions, symbols and host objects
    /// undefined is stored.
    Q_INVOKABLE bool setRegistryValue(const QString& inKey, const QVariant& inValue);
    /// The stored value, or the default when there is none.
    Q_INVOKABLE QVariant getRegistryValue(const QString& inKey,
                                          const QVariant& inDefaultValue = QVariant()) const;
    /// Removes a value, and all below its key. Always true.
    Q_INVOKABLE bool removeRegistryValue(const QString& inKey);
    /// The keys of all values below a group of the application's settings, or below a location, relative to
    /// it; those of all the application's settings for the empty path.
    Q_INVOKABLE QStringList registryKeys(const QString& inPath = QString()) const;

    // Backend. A method of a class on the backend is called at once and answers later; the database is asked
    // while the script waits.

    /// Runs a stored procedure with named parameters and gives its rows: a list with a list of values for
    /// each row, empty when there are none. A parameter that is null or undefined is NULL, any other one its
    /// text in Latin-1, empty where it has none. A column is a boolean, a number, a date or a text by its
    /// type, and NULL is undefined; a whole number beyond 2 to the power of 53 is not exact. A failure throws
    /// a script error with the database's message. So does a value that is no object, as a TypeError.
    Q_INVOKABLE QVariant execStoredProcedure(QString procedureName, QJSValue parameters);
    /// The same for C++. Invalid after a failure, which throws a script error where a script has called.
    QVariant execStoredProcedure(const QString& procedureName, const QVariantMap& parameters);

    /// Calls a method of a class on the backend. The parameters are a list, which crosses as JSON (RFC 8259);
    /// what that can't say is null. One of the two functions is called from the event loop: \a onSuccess with
    /// the result, undefined when there is none or when it is no JSON, or \a onError with a message. What is
    /// no function is not called, and what one throws is dropped. A value that is no list is a TypeError, as
    /// is one with more values than KyScriptVariant takes. Neutral: nothing happens.
    Q_INVOKABLE void execScriptOnBackend(QString className, QString methodName, QJSValue parameters,
                                         QJSValue onSuccess, QJSValue onError);
    /// The same for C++. Without an engine a contract report "scriptEngine", and nothing happens.
    void execScriptOnBackend(const QString& className, const QString& methodName,
                             const QVariantList& parameters, const QJSValue& onSuccess,
                             const QJSValue& onError);

    QStringList extAcc() const { return mExtAcc; }
    /// An equal list changes nothing.
    void setExtAcc(const QStringList& inExtAcc);

Q_SIGNALS:
    /// The list has been changed through this object. Others that share it do not signal.
    void extAccChanged();

private:
    static void callBack(QJSEngine& ioEngine, const QJSValue& inCallback, const QJSValue& inArgument);
    QObject* wrapped(KyBaseViewer* inViewer);

    // Scripts reach the list as a QVariant: Qt's own conversion to a QStringList ends the process at a
    // symbol.
    QVariant extAccVariant() const { return mExtAcc; }
    void setExtAccVariant(const QVariant& inExtAcc);

    static QStringList mExtAcc;

    std::map<RnUniqueID, KyScriptViewer*> mViewers; ///< Owned; never removed while this object lives.
};

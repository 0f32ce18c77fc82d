#pragma once

#include <rnlib/RnUniqueID.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <map>

class KyBaseViewer;
class KyScriptViewer;

/// The global `Orvane`: a script's handle on the running application. Owned by the engine.
///
/// Every operation is a synchronous translation between script values and the platform. What is asked for and
/// isn't there raises no script error and writes no log line: each operation has a neutral result, named with
/// it. Keys, ids and commands go to the platform in Latin-1. GUI thread only.
///
/// Its subjects have a source each: KyScriptOrvane.cpp for tools, viewers, session and server, and
/// KyScriptOrvaneProperties.cpp and so on for the others.
class KyScriptOrvane : public QObject
{
    Q_OBJECT
    /// The accession numbers that another program has called up, as far as scripts know them. One list for
    /// all engines of the process, empty at first.
    Q_PROPERTY(QStringList extAcc READ extAcc WRITE setExtAcc NOTIFY extAccChanged)

public:
    explicit KyScriptOrvane(QObject* parent);
    ~KyScriptOrvane() override;

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

    QStringList extAcc() const { return mExtAcc; }
    /// An equal list changes nothing.
    void setExtAcc(const QStringList& inExtAcc);

Q_SIGNALS:
    /// The list has been changed through this object. Others that share it do not signal.
    void extAccChanged();

private:
    QObject* wrapped(KyBaseViewer* inViewer);

    static QStringList mExtAcc;

    std::map<RnUniqueID, KyScriptViewer*> mViewers; ///< Owned; never removed while this object lives.
};

#pragma once

#include <QtCore/QObject>
#include <QtCore/QProcess>
#include <QtCore/QStringList>
#include <QtQml/QJSValue>

class JxProcess;

/// The global `System`: the workstation as scripts see it. Owned by the engine.
///
/// Missing things give the neutral result that stands with each operation; nothing throws. Lines go to the
/// log under "Script Interface".
class KyScriptSystem : public QObject
{
    Q_OBJECT

public:
    explicit KyScriptSystem(QObject* parent);
    /// A program that processCmd() has started goes on running.
    ~KyScriptSystem() override;

    /// The value of the environment variable \a inName, each of its bytes as one character (Latin-1); the
    /// name is Latin-1 too. Empty when it is not set.
    Q_INVOKABLE QString getEnv(QString inName) const;

    /// Whether \a inFile is there: a file, a folder, or a link to either.
    Q_INVOKABLE bool fileExists(QString inFile) const;

    /// The whole file, each byte as one character (Latin-1). Empty when it can't be opened for reading; also
    /// for what has no end, such as pipes and devices, and beyond 1 GiB, with a line of level 2 in the log
    /// then.
    Q_INVOKABLE QString fileReadAll(QString inFile) const;

    /// Waits for \a inMsecs milliseconds, serving events: timers, sockets, the user and other scripts go on.
    /// Below 1, and inside too many waits of others (see KyScriptWait), it returns at once.
    Q_INVOKABLE void sleep(int inMsecs);

    /// Serves the events that are pending; with an \a inMsecs of 1 or more until none is left or that many
    /// milliseconds are over.
    Q_INVOKABLE void processEvents(int inMsecs = -1);

    /// The folder in which processCmd() and startDetached() start programs from now on; an empty one stands
    /// for the current folder of the client.
    Q_INVOKABLE void setWorkingDirectory(QString inWorkingDirectory);

    /// The absolute path of a program, or empty when there is none. A name that begins with "%ProgramFiles%"
    /// and a relative name are looked for in the folders of programs, those of 64 bits first, which the
    /// environment names at the first call in the life of the process ("ProgramFiles", "ProgramFiles(x86)").
    /// Then \a inCmdFile counts as it stands.
    Q_INVOKABLE QString findCmd(QString inCmdFile) const;

    /// Starts the program \a inCmd and returns true, without waiting for it to start or to end; a failure to
    /// start is told to the log and to the user later. Its output goes nowhere.
    ///
    /// One program runs at a time: while the one before runs, the call waits for it, serving events, for at
    /// most \a inMsecs milliseconds (below 0: without a limit). Then it tells the user and the log, and gives
    /// false.
    ///
    /// \a inArgs is a list of texts, see KyScriptTexts; without one the call is a TypeError of the script.
    Q_INVOKABLE bool processCmd(QString inCmd, QJSValue inArgs, int inMsecs = 10000);

    /// Starts the program \a inCmd on its own: any number at a time, and the client knows nothing of it
    /// afterwards. Gives whether it was started. \a inArgs as with processCmd().
    Q_INVOKABLE bool startDetached(QString inCmd, QJSValue inArgs);

    /// Puts \a inText on the clipboard, and says so in the log.
    Q_INVOKABLE void setClipboardText(QString inText);

private Q_SLOTS:
    void onProcessCmdError(QProcess::ProcessError inError);

private:
    bool process(const QString& inCmd, const QStringList& inArgs, int inMsecs);
    void showFailures();

    JxProcess* const mProcess;
    /// The command started last, by either way.
    QString mCommand;
    QStringList mArguments;
    /// What is still to be shown to the user; the first is on show.
    QStringList mFailures;
};

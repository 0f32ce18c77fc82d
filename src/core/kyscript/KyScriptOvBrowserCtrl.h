#pragma once

#include <QtCore/QObject>
#include <QtCore/QProcess>
#include <QtCore/QRect>
#include <QtCore/QSharedPointer>
#include <QtCore/QStringList>
#include <QtNetwork/QLocalServer>

class QLocalSocket;

/// A browser that is a program of its own: started by the first command, reached over a local pipe.
///
/// The pipe's protocol is described in docs/browser-protocol.md. This side serves the pipe; the program gets
/// its name on the command line and connects to it. States: not started; starting, which blocks for 6 seconds
/// at most; connected; started but not connected, in which commands are dropped. The end of the program is
/// noticed by the next command, which starts it again.
///
/// Owner: KyScriptBrowserCtrl. The destructor lets the connection go, which the program takes for its end,
/// and ends one that stays. Failures are lines of the log with the context "BrowseCtrl"; only a SHOW that
/// can't be followed is told to the user. GUI thread only.
class KyScriptOvBrowserCtrl final : public QObject
{
    Q_OBJECT

public:
    /// The browser of the settings "OrvaneBrowser.NAME", "Default" standing for an empty name. Without a
    /// stored geometry it gets 500 by 500 pixels.
    explicit KyScriptOvBrowserCtrl(const QString& inName);
    ~KyScriptOvBrowserCtrl() override;

    /// The arguments of the next start.
    void setBrowserCmdArgs(const QStringList& inBrowserArgs);

    /// Stores the size with the stored place, or in the middle of the first main window of the content
    /// "View"; without a window an empty rectangle. A connected browser is told. In pixels of the desktop.
    void setSize(int inWidth, int inHeight);

    /// The folder of the program, from the next start on. The program is "ovbrowser.exe", or, where there is
    /// none, "ovbrowser" on systems whose programs have no suffix.
    void setInstallationDirectory(const QString& inPath);

    /// Starts the browser if it isn't running, and sends it \a inCMD; several commands stand with ";" between
    /// them. Without a connection the command is dropped; "SHOW" shows a message box when the start has
    /// failed.
    void sendCommand(const QString& inCMD);

    /// What the browser answers within a second. True when it doesn't, or isn't running.
    bool isHidden();
    bool isRunning();
    /// Whether there is a file in the place of the program.
    bool isInstalled() const;

private Q_SLOTS:
    void onProcessCmdError(QProcess::ProcessError inError);
    void onReadCommand();

private:
    static QString defaultPath();

    bool startBrowser();
    bool listen();
    void dropConnections();
    bool waitForConnection();
    void takeConnection();
    void writeGeometry(const QRect& inGeometry);
    void write(const QString& inCommand);
    QString pipeName() const;
    QString geometryKey() const;

    QStringList mBrowserArgs;
    QString mBrowserPath;
    QLocalServer mPipeServer;
    QSharedPointer<QLocalSocket> mPipeSocket;
    const QString mPipeId;
    QProcess mProcess;
    const QString mSettingsName;
    bool mIsHidden = true;
};

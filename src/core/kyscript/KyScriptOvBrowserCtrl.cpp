#include "KyScriptOvBrowserCtrl.h"

#include "KyScriptLog.h"

#include <jxbase/JxMainWindow.h>
#include <jxbase/JxMessageBox.h>
#include <kybase/KyGUISizeManager.h>
#include <kybase/KyMonitorManager.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>
#include <QtCore/QUuid>
#include <QtNetwork/QLocalSocket>

#include <algorithm>

namespace {

constexpr const char* Context = "BrowseCtrl";
constexpr const char* ProgramName = "/ovbrowser.exe";
constexpr RnLogLevel Told = 1;
constexpr RnLogLevel Failed = 3;

constexpr int StartLimitMSecs = 3000;
constexpr int ConnectLimitMSecs = 3000;
constexpr int AnswerLimitMSecs = 1000;
/// For a browser whose connection has gone to end by itself, with its data on disk.
constexpr int EndLimitMSecs = 500;
/// How soon a program that has failed is noticed in the wait for its connection.
constexpr int WatchMSecs = 50;

void log(RnLogLevel inLevel, const QString& inText)
{
    KyScriptLog::line(inLevel, inText, Context);
}

QString uuidText()
{
    const QString text = QUuid::createUuid().toString();
    return text.mid(1, text.size() - 2);
}

/// \a inPath, or without its suffix where only that is there, on systems whose programs have none.
QString programAt(const QString& inPath)
{
#ifndef Q_OS_WIN
    const QString plain = inPath.chopped(4);
    if (!QFileInfo::exists(inPath) && QFileInfo::exists(plain))
        return plain;
#endif
    return inPath;
}

/// The first main window of the images; null without one.
const JxMainWindow* firstMainWindow()
{
    KyMonitorManager* monitors = KyMonitorManager::instance();
    if (!monitors)
        return nullptr;
    return monitors->mainWindows(monitors->content(QLatin1String(KyMonitorContent::View))).value(0);
}

/// The window's position goes through the window's own mapping.
QRect centredOnMainWindow(const QSize& inSize)
{
    const JxMainWindow* window = firstMainWindow();
    if (!window)
        return QRect();
    const QPoint position = window->mapToGlobal(window->pos());
    return QRect(QPoint(position.x() + window->width() / 2 - inSize.width() / 2,
                        position.y() + window->height() / 2 - inSize.height() / 2),
                 inSize);
}

} // namespace

KyScriptOvBrowserCtrl::KyScriptOvBrowserCtrl(const QString& inName)
    : mBrowserPath(defaultPath())
    , mPipeId(uuidText())
    , mSettingsName(QStringLiteral("OrvaneBrowser.") +
                    (inName.isEmpty() ? QStringLiteral("Default") : inName))
{
    mPipeServer.setSocketOptions(QLocalServer::UserAccessOption);
    mProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    mProcess.setStandardOutputFile(QProcess::nullDevice());
    connect(&mProcess, &QProcess::errorOccurred, this, &KyScriptOvBrowserCtrl::onProcessCmdError);
    if (KyGUISizeManager::storedWidgetGeometry(geometryKey()).isEmpty())
        setSize(500, 500);
}

/// A browser that has lost its connection ends by itself, and writes its data before. One that doesn't is
/// ended.
KyScriptOvBrowserCtrl::~KyScriptOvBrowserCtrl()
{
    mPipeServer.close();
    mProcess.disconnect(this);
    const bool mayEndByItself = mPipeSocket && mPipeSocket->state() == QLocalSocket::ConnectedState;
    if (mPipeSocket) {
        mPipeSocket->disconnect(this);
        mPipeSocket->abort();
    }
    if (!isRunning() || (mayEndByItself && mProcess.waitForFinished(EndLimitMSecs)))
        return;
    mProcess.kill();
    mProcess.waitForFinished();
}

QString KyScriptOvBrowserCtrl::defaultPath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                               .replace(QStringLiteral("Orvane Client"), QStringLiteral("Orvane Browser"));
    const QString ofUser = programAt(folder + QLatin1String(ProgramName));
    if (QFileInfo::exists(ofUser))
        return ofUser;
    if (qEnvironmentVariableIsSet("PROGRAMFILES"))
        return QString::fromLatin1(qgetenv("PROGRAMFILES") + "/Orvane Imaging/Orvane Browser/ovbrowser.exe")
            .replace(QLatin1Char('\\'), QLatin1Char('/'));
    const QString besideThis = programAt(QCoreApplication::applicationDirPath() + QLatin1String(ProgramName));
    return QFileInfo::exists(besideThis) ? besideThis : ofUser;
}

QString KyScriptOvBrowserCtrl::pipeName() const
{
    return QStringLiteral("ovbrowser-") + mPipeId;
}

QString KyScriptOvBrowserCtrl::geometryKey() const
{
    return mSettingsName + QStringLiteral(".Geometry");
}

void KyScriptOvBrowserCtrl::setBrowserCmdArgs(const QStringList& inBrowserArgs)
{
    mBrowserArgs = inBrowserArgs;
}

void KyScriptOvBrowserCtrl::setInstallationDirectory(const QString& inPath)
{
    mBrowserPath = programAt(inPath + QLatin1String(ProgramName));
}

void KyScriptOvBrowserCtrl::setSize(int inWidth, int inHeight)
{
    constexpr int most = KyGUISizeManager::MaxEdge;
    const QSize size(std::clamp(inWidth, -most, most), std::clamp(inHeight, -most, most));
    const QRect stored = KyGUISizeManager::storedWidgetGeometry(geometryKey());
    const QRect geometry = stored.isEmpty() ? centredOnMainWindow(size) : QRect(stored.topLeft(), size);
    if (mPipeSocket)
        writeGeometry(geometry);
    KyGUISizeManager::storeWidgetGeometry(geometry, geometryKey());
}

void KyScriptOvBrowserCtrl::sendCommand(const QString& inCMD)
{
    if (!isRunning() && !startBrowser()) {
        if (inCMD == QLatin1String("SHOW"))
            JxMessageBox::warning(QStringLiteral("Could not start Browser: ") + mBrowserPath, QMessageBox::Ok,
                                  QMessageBox::NoButton, JxMessageBox::InformativeText());
        return; // a script may have ended this object while the box was open
    }
    if (!mPipeSocket)
        return;
    write(inCMD);
    mPipeSocket->flush();
}

bool KyScriptOvBrowserCtrl::isHidden()
{
    mIsHidden = true;
    if (isRunning()) {
        sendCommand(QStringLiteral("ISHIDDEN"));
        if (mPipeSocket)
            mPipeSocket->waitForReadyRead(AnswerLimitMSecs);
    }
    return mIsHidden;
}

/// The end of a process is known only after a look at it, where no event loop has done that.
bool KyScriptOvBrowserCtrl::isRunning()
{
    if (mProcess.state() == QProcess::Running)
        mProcess.waitForFinished(0);
    return mProcess.state() == QProcess::Running;
}

bool KyScriptOvBrowserCtrl::isInstalled() const
{
    return QFileInfo::exists(mBrowserPath);
}

bool KyScriptOvBrowserCtrl::startBrowser()
{
    if (!isInstalled() || !listen())
        return false;
    dropConnections();
    mBrowserArgs += QStringLiteral("--named-pipe=") + pipeName();
    mBrowserArgs += QStringLiteral("--user-data-dir=ovbrowser-") + mSettingsName;
    mProcess.start(mBrowserPath, mBrowserArgs, QIODevice::ReadWrite);
    mProcess.waitForStarted(StartLimitMSecs);
    if (!waitForConnection()) {
        log(Failed, QStringLiteral("ovBrowser did not connect to named pipe \\\\.\\pipe\\%1 in time")
                        .arg(pipeName()));
        return false;
    }
    takeConnection();
    return true;
}

bool KyScriptOvBrowserCtrl::listen()
{
    if (mPipeServer.isListening())
        return true;
    if (!mPipeServer.listen(pipeName())) {
        log(Failed, QStringLiteral("Failed to create named pipe \\\\.\\pipe\\%1").arg(pipeName()));
        return false;
    }
    log(Told, QStringLiteral("Named pipe \\\\.\\pipe\\%1 created").arg(pipeName()));
    return true;
}

/// What is left of a browser that has ended, and what has connected too late.
void KyScriptOvBrowserCtrl::dropConnections()
{
    mPipeSocket.reset();
    mPipeServer.waitForNewConnection(0);
    while (QLocalSocket* late = mPipeServer.nextPendingConnection()) {
        delete late;
        mPipeServer.waitForNewConnection(0);
    }
}

/// A program that could not be started or has failed does not connect any more. One that has ended well may
/// have left that to another.
bool KyScriptOvBrowserCtrl::waitForConnection()
{
    const QDeadlineTimer limit(ConnectLimitMSecs);
    const auto hasFailed = [this] {
        return !isRunning() && (mProcess.error() == QProcess::FailedToStart ||
                                mProcess.exitStatus() == QProcess::CrashExit || mProcess.exitCode() != 0);
    };
    do {
        if (mPipeServer.waitForNewConnection(int(std::min<qint64>(WatchMSecs, limit.remainingTime()))))
            return true;
    } while (!hasFailed() && !limit.hasExpired());
    return mPipeServer.hasPendingConnections();
}

void KyScriptOvBrowserCtrl::takeConnection()
{
    mPipeSocket.reset(mPipeServer.nextPendingConnection());
    connect(mPipeSocket.data(), &QLocalSocket::readyRead, this, &KyScriptOvBrowserCtrl::onReadCommand);
    log(Told, QStringLiteral("ovBrowser connected to named pipe \\\\.\\pipe\\%1").arg(pipeName()));
    writeGeometry(KyGUISizeManager::storedWidgetGeometry(geometryKey()));
}

/// Top, left, bottom, right.
void KyScriptOvBrowserCtrl::writeGeometry(const QRect& inGeometry)
{
    write(QStringLiteral("GEOMETRY %1 %2 %3 %4")
              .arg(inGeometry.top())
              .arg(inGeometry.left())
              .arg(inGeometry.bottom())
              .arg(inGeometry.right()));
}

void KyScriptOvBrowserCtrl::write(const QString& inCommand)
{
    if (mPipeSocket->isWritable())
        mPipeSocket->write((inCommand + QLatin1Char(';')).toUtf8());
}

void KyScriptOvBrowserCtrl::onProcessCmdError(QProcess::ProcessError inError)
{
    if (inError == QProcess::FailedToStart)
        log(Failed, QStringLiteral("Failed to start process %1 %2")
                        .arg(mBrowserPath, mBrowserArgs.join(QLatin1Char(' '))));
}

/// All that is there is one message.
void KyScriptOvBrowserCtrl::onReadCommand()
{
    const QByteArray message = mPipeSocket->readAll();
    if (message.isEmpty())
        return;
    const QStringList tokens = QString::fromLatin1(message).split(QLatin1Char(' '));
    const auto number = [&](int inIndex) { return tokens.at(inIndex).toInt(); };
    if (tokens.first() == QLatin1String("GEOMETRY") && tokens.size() == 5)
        KyGUISizeManager::storeWidgetGeometry(
            QRect(QPoint(number(2), number(1)), QPoint(number(4), number(3))), geometryKey());
    else if (tokens.first() == QLatin1String("ISHIDDEN") && tokens.size() == 2)
        mIsHidden = number(1) != 0;
    else if (tokens.first() == QLatin1String("ERROR"))
        log(Failed, QStringLiteral("Browser returned invalid command: '%1'")
                        .arg(tokens.mid(1).join(QLatin1Char(' '))));
}

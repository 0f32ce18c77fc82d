#include "KyScriptSystem.h"

#include "KyScriptLog.h"
#include "KyScriptTexts.h"
#include "KyScriptWait.h"

#include <jxbase/JxEventLoop.h>
#include <jxbase/JxMessageBox.h>
#include <jxbase/JxProcess.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>

#include <algorithm>

namespace {

/// A text takes two bytes for each of a file, and engines count characters with 32 bits.
constexpr qint64 sLargestText = qint64(1) << 30;
constexpr qsizetype sChunk = 1 << 18;

QString joined(const QStringList& inArguments)
{
    return inArguments.join(QLatin1Char(' '));
}

void print(const QString& inText)
{
    getTheLogInstance().print(KyScriptLog::Context, inText.toLatin1().constData());
}

void logError(const QString& inText)
{
    getTheLogInstance().error(KyScriptLog::Context, inText.toLatin1().constData());
}

void showWarning(const QString& inText)
{
    JxMessageBox::warning(inText, QMessageBox::Ok, QMessageBox::NoButton, JxMessageBox::InformativeText());
}

/// The absolute path of the first of \a inPaths that exists; empty without one.
QString firstExisting(const QStringList& inPaths)
{
    const auto found = std::find_if(inPaths.begin(), inPaths.end(),
                                    [](const QString& path) { return QFileInfo::exists(path); });
    return found == inPaths.end() ? QString() : QFileInfo(*found).absoluteFilePath();
}

} // namespace

KyScriptSystem::KyScriptSystem(QObject* parent)
    : QObject(parent)
    , mProcess(new JxProcess(nullptr, false))
{
    connect(mProcess, &QProcess::errorOccurred, this, &KyScriptSystem::onProcessCmdError);
}

KyScriptSystem::~KyScriptSystem()
{
    mProcess->leave();
}

QString KyScriptSystem::getEnv(QString inName) const
{
    // The system would take a name up to its first NUL.
    if (inName.contains(QChar(0)))
        return QString();
    return QString::fromLatin1(qgetenv(inName.toLatin1().constData()));
}

bool KyScriptSystem::fileExists(QString inFile) const
{
    return QFile::exists(inFile);
}

QString KyScriptSystem::fileReadAll(QString inFile) const
{
    // A pipe would hold up the application, and a device may never end.
    QFile file(inFile);
    if (!QFileInfo(inFile).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return QString();

    QString text;
    text.reserve(qsizetype(std::min(file.size(), sLargestText)));
    QByteArray chunk(sChunk, Qt::Uninitialized);
    bool fits = file.size() <= sLargestText;
    for (qint64 read = 0; fits && (read = file.read(chunk.data(), chunk.size())) > 0;) {
        text += QLatin1String(chunk.constData(), qsizetype(read));
        fits = text.size() <= sLargestText;
    }
    if (fits)
        return text;
    KyScriptLog::line(2, QStringLiteral("File too large to be read: %1").arg(inFile));
    return QString();
}

void KyScriptSystem::sleep(int inMsecs)
{
    if (inMsecs < 1)
        return;
    const KyScriptWait wait;
    if (!wait.mayBegin())
        return;
    JxEventLoop loop;
    loop.exec(inMsecs);
}

void KyScriptSystem::processEvents(int inMsecs)
{
    const KyScriptWait wait;
    if (!wait.mayBegin())
        return;
    if (inMsecs < 1)
        QCoreApplication::processEvents();
    else
        QCoreApplication::processEvents(QEventLoop::AllEvents, inMsecs);
}

void KyScriptSystem::setWorkingDirectory(QString inWorkingDirectory)
{
    mProcess->setWorkingDirectory(inWorkingDirectory.isEmpty() ? QDir::currentPath() : inWorkingDirectory);
}

QString KyScriptSystem::findCmd(QString inCmdFile) const
{
    static const QString programFiles = qEnvironmentVariable("ProgramFiles");
    static const QString programFiles32 = qEnvironmentVariable("ProgramFiles(x86)");

    const QString marker = QStringLiteral("%ProgramFiles%");
    QStringList paths;
    for (const QString& folder : {programFiles, programFiles32}) {
        if (inCmdFile.startsWith(marker))
            paths.append(QString(inCmdFile).replace(marker, folder));
        else if (QDir::isRelativePath(inCmdFile))
            paths.append(folder + QLatin1Char('/') + inCmdFile);
    }
    paths.append(inCmdFile);
    return firstExisting(paths);
}

bool KyScriptSystem::processCmd(QString inCmd, QJSValue inArgs, int inMsecs)
{
    const auto arguments = KyScriptTexts::argument(this, inArgs, QStringLiteral("System.processCmd"));
    return arguments && process(inCmd, *arguments, inMsecs);
}

bool KyScriptSystem::process(const QString& inCmd, const QStringList& inArgs, int inMsecs)
{
    const QPointer<KyScriptSystem> self(this);
    const KyScriptWait wait;
    const bool ended = wait.mayBegin() && mProcess->stableWaitForFinished(inMsecs);
    if (!self)
        return false;
    if (!ended && mProcess->state() != QProcess::NotRunning) {
        const QString text = QStringLiteral("Process %1 %2 is still running! Skipping process %3 %4.")
                                 .arg(mCommand, joined(mArguments), inCmd, joined(inArgs));
        logError(text);
        showWarning(text);
        return false;
    }
    mCommand = inCmd;
    mArguments = inArgs;
    print(QStringLiteral("Processing command: %1 %2").arg(inCmd, joined(inArgs)));
    mProcess->start(inCmd, inArgs, QIODevice::ReadWrite);
    return true;
}

bool KyScriptSystem::startDetached(QString inCmd, QJSValue inArgs)
{
    const auto arguments = KyScriptTexts::argument(this, inArgs, QStringLiteral("System.startDetached"));
    if (!arguments)
        return false;
    mCommand = inCmd;
    mArguments = *arguments;
    print(QStringLiteral("Starting detached: %1 %2").arg(inCmd, joined(*arguments)));
    return QProcess::startDetached(inCmd, *arguments, mProcess->workingDirectory());
}

void KyScriptSystem::setClipboardText(QString inText)
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return;
    QGuiApplication::clipboard()->setText(inText, QClipboard::Clipboard);
    print(QStringLiteral("Copied text to clipboard: %1").arg(inText));
}

void KyScriptSystem::onProcessCmdError(QProcess::ProcessError inError)
{
    if (inError != QProcess::FailedToStart)
        return;
    const QString text = QStringLiteral("Failed to start process %1 %2!").arg(mCommand, joined(mArguments));
    logError(text);
    // Shown when the process is done with its signal: other scripts, which run while the box is open, may
    // start the next program then.
    mFailures.append(text);
    if (mFailures.size() == 1)
        QMetaObject::invokeMethod(this, &KyScriptSystem::showFailures, Qt::QueuedConnection);
}

/// One after the other: a script can cause any number of them before the first box is shown, and as many
/// boxes, each in the event loop of the one before, would exhaust the stack.
void KyScriptSystem::showFailures()
{
    const QPointer<KyScriptSystem> self(this);
    while (self && !mFailures.isEmpty()) {
        showWarning(QString(mFailures.constFirst()));
        if (self)
            mFailures.removeFirst();
    }
}

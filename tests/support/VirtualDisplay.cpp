#include "VirtualDisplay.h"

#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>

namespace {

constexpr int sStepTime = 15'000;
constexpr int sStartTime = 30'000;

/// Starts a program that ends with this process, whatever becomes of it.
void startWithUs(QProcess& ioProcess, const QString& inProgram, const QStringList& inArguments)
{
    ioProcess.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
    ioProcess.start(inProgram, inArguments);
}

void end(QProcess& ioProcess)
{
    if (ioProcess.state() == QProcess::NotRunning)
        return;
    ioProcess.terminate();
    if (!ioProcess.waitForFinished(sStepTime))
        ioProcess.kill();
    ioProcess.waitForFinished(sStepTime);
}

/// One number of the "X=1" lines of xdotool.
int number(const QString& inText, const char* inName)
{
    const QRegularExpression line(QStringLiteral("^%1=(-?\\d+)$").arg(QLatin1String(inName)),
                                  QRegularExpression::MultilineOption);
    return line.match(inText).captured(1).toInt();
}

} // namespace

QString VirtualDisplay::missingPrograms()
{
    QStringList missing;
    for (const char* program : {"Xvfb", "openbox", "xdotool", "xclip"}) {
        if (QStandardPaths::findExecutable(program).isEmpty())
            missing.append(program);
    }
    return missing.join(' ');
}

VirtualDisplay::~VirtualDisplay()
{
    end(mManager);
    end(mServer);
}

/// Without auto-repeat: on a busy machine a key could else be held for long enough to come twice.
bool VirtualDisplay::start()
{
    startWithUs(mServer, "Xvfb",
                {"-displayfd", "1", "-screen", "0", "1280x900x24", "-nolisten", "tcp", "-r"});
    QByteArray number;
    const auto hasNumber = [&] {
        mServer.waitForReadyRead(50);
        number += mServer.readAllStandardOutput();
        return number.endsWith('\n');
    };
    if (!QTest::qWaitFor(hasNumber, sStartTime))
        return false;
    mNumber = ':' + QString::fromLatin1(number.trimmed());
    mManager.setProcessEnvironment(environment());
    mManager.setStandardErrorFile(QProcess::nullDevice());
    startWithUs(mManager, "openbox", QStringList());
    // It names itself on the root window once it manages windows.
    return QTest::qWaitFor([this] { return !xdotool({"get_desktop"}).isEmpty(); }, sStartTime);
}

QProcessEnvironment VirtualDisplay::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", mNumber);
    environment.insert("QT_QPA_PLATFORM", "xcb");
    environment.insert("XDG_RUNTIME_DIR", mFolder.path());
    environment.insert("XDG_CONFIG_HOME", mFolder.filePath("config"));
    environment.remove("WAYLAND_DISPLAY");
    environment.remove("DBUS_SESSION_BUS_ADDRESS");
    return environment;
}

QString VirtualDisplay::run(const QString& inProgram, const QStringList& inArguments,
                            const QByteArray& inInput) const
{
    QProcess process;
    process.setProcessEnvironment(environment());
    // Who stays to serve the clipboard must not hold the pipe.
    if (!inInput.isNull())
        process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(inProgram, inArguments);
    process.write(inInput);
    process.closeWriteChannel();
    if (!process.waitForFinished(sStepTime)) {
        process.kill();
        process.waitForFinished(sStepTime);
        return QString();
    }
    return process.exitCode() == 0 && inInput.isNull() ? QString::fromUtf8(process.readAllStandardOutput())
                                                       : QString();
}

QString VirtualDisplay::xdotool(const QStringList& inArguments) const
{
    return run("xdotool", inArguments);
}

QString VirtualDisplay::window(const QString& inTitle) const
{
    const QString pattern = '^' + QRegularExpression::escape(inTitle) + '$';
    const QString found = xdotool({"search", "--onlyvisible", "--name", pattern});
    return found.section('\n', 0, 0, QString::SectionSkipEmpty);
}

QRect VirtualDisplay::geometry(const QString& inWindow) const
{
    const QString text = xdotool({"getwindowgeometry", "--shell", inWindow});
    return QRect(number(text, "X"), number(text, "Y"), number(text, "WIDTH"), number(text, "HEIGHT"));
}

void VirtualDisplay::move(const QString& inWindow, const QPoint& inPosition) const
{
    xdotool({"windowmove", inWindow, QString::number(inPosition.x()), QString::number(inPosition.y())});
}

void VirtualDisplay::resize(const QString& inWindow, const QSize& inSize) const
{
    xdotool({"windowsize", inWindow, QString::number(inSize.width()), QString::number(inSize.height())});
}

bool VirtualDisplay::activate(const QString& inWindow) const
{
    // Asked again, since a window manager that is still busy with the window passes over it.
    return QTest::qWaitFor(
        [&] {
            xdotool({"windowactivate", inWindow});
            return isActive(inWindow);
        },
        sStepTime);
}

bool VirtualDisplay::isActive(const QString& inWindow) const
{
    return xdotool({"getactivewindow"}).trimmed() == inWindow;
}

void VirtualDisplay::type(const QString& inText) const
{
    xdotool({"type", "--delay", "4", inText});
}

void VirtualDisplay::press(const QStringList& inKeys) const
{
    xdotool(QStringList{"key", "--delay", "20"} + inKeys);
}

void VirtualDisplay::click(const QString& inWindow, const QPoint& inPosition) const
{
    xdotool({"mousemove", "--window", inWindow, QString::number(inPosition.x()),
             QString::number(inPosition.y()), "click", "1"});
}

QString VirtualDisplay::clipboard() const
{
    return run("xclip", {"-selection", "clipboard", "-o"});
}

void VirtualDisplay::setClipboard(const QString& inText) const
{
    run("xclip", {"-selection", "clipboard", "-i"}, inText.toUtf8());
}

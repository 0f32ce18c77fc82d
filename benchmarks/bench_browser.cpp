// Browsers of scripts: how soon they are there, and how fast they take commands.

#include "RatioReport.h"

#include <kyscript/KyScriptOvBrowserCtrl.h>

#include <ovbase/OvRegistry.h>

#include <benchmark/benchmark.h>

#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUuid>
#include <QtNetwork/QLocalServer>
#include <QtNetwork/QLocalSocket>
#include <QtWidgets/QApplication>

#include <cstdio>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int Commands = 10000;
const QString Command = QStringLiteral("URL http://127.0.0.1:8080/page.html");

/// What a script would wait for: connected, shown, and answering.
void showBrowser(benchmark::State& ioState)
{
    for (auto step : ioState) {
        auto browser = std::make_unique<KyScriptOvBrowserCtrl>(QStringLiteral("bench"));
        browser->setInstallationDirectory(QFileInfo(QStringLiteral(OVBROWSER)).path());
        browser->sendCommand(QStringLiteral("SHOW"));
        while (browser->isHidden() && browser->isRunning()) {
        }
        if (!browser->isRunning())
            ioState.SkipWithError("no browser");
        ioState.PauseTiming();
        browser.reset();
        ioState.ResumeTiming();
    }
}

void showBareProgram(benchmark::State& ioState)
{
    for (auto step : ioState) {
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QStringLiteral(BARE_WEBENGINE), QStringList());
        if (!program.waitForReadyRead(60000))
            ioState.SkipWithError("no program");
        ioState.PauseTiming();
        program.kill();
        program.waitForFinished();
        ioState.ResumeTiming();
    }
}

/// A browser that reads: this process again.
int readCommands(const QString& inPipe)
{
    QLocalSocket socket;
    socket.connectToServer(inPipe);
    QByteArray rest;
    qint64 count = 0;
    while (socket.waitForReadyRead(-1)) {
        const QByteArray bytes = socket.readAll();
        count += bytes.count(';');
        rest = rest.right(20) + bytes;
        if (rest.contains("ISHIDDEN;")) {
            socket.write(count > Commands ? "ISHIDDEN 0" : "ISHIDDEN 1");
            socket.flush();
            rest.clear();
            count = 0;
        }
    }
    return 0;
}

/// Sent, and counted at the other end.
void sendCommands(benchmark::State& ioState)
{
    const QTemporaryDir folder;
    QFile::link(QCoreApplication::applicationFilePath(), folder.filePath(QStringLiteral("ovbrowser.exe")));
    KyScriptOvBrowserCtrl browser(QStringLiteral("bench"));
    browser.setInstallationDirectory(folder.path());
    browser.sendCommand(QStringLiteral("HIDE"));
    browser.isHidden();
    for (auto step : ioState) {
        for (int i = 0; i < Commands; ++i)
            browser.sendCommand(Command);
        if (browser.isHidden())
            ioState.SkipWithError("commands are lost");
    }
}

/// The same bytes in as many writes through a bare local socket, counted by a thread.
void writeToBareSocket(benchmark::State& ioState)
{
    int ends[2] = {};
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        ioState.SkipWithError("no sockets");
    const QByteArray command = Command.toUtf8() + ';';
    std::thread reader([&] {
        char bytes[65536];
        qint64 expected = qint64(command.size()) * Commands;
        for (ssize_t count; (count = read(ends[1], bytes, sizeof bytes)) > 0;) {
            expected -= count;
            if (expected <= 0 && write(ends[1], "x", 1) == 1)
                expected += qint64(command.size()) * Commands;
        }
    });
    for (auto step : ioState) {
        for (int i = 0; i < Commands; ++i) {
            if (write(ends[0], command.constData(), std::size_t(command.size())) != command.size())
                ioState.SkipWithError("not written");
        }
        char answer = 0;
        if (read(ends[0], &answer, 1) != 1)
            ioState.SkipWithError("no answer");
    }
    shutdown(ends[0], SHUT_RDWR);
    reader.join();
    close(ends[0]);
    close(ends[1]);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    for (const QString& argument : QCoreApplication::arguments()) {
        if (argument.startsWith(QLatin1String("--named-pipe=")))
            return readCommands(argument.section(QLatin1Char('='), 1));
    }
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    const OvRegistry registry(nullptr);
    if (QFileInfo::exists(QStringLiteral(OVBROWSER))) {
        benchmark::RegisterBenchmark("SHOW to a shown browser<=1.2", showBrowser)
            ->UseRealTime()
            ->Iterations(1);
        benchmark::RegisterBenchmark("SHOW to a shown browser/yardstick", showBareProgram)
            ->UseRealTime()
            ->Iterations(1);
    }
    benchmark::RegisterBenchmark("10 000 commands, sent and counted", sendCommands)->UseRealTime();
    benchmark::RegisterBenchmark("10 000 commands, sent and counted/yardstick", writeToBareSocket)
        ->UseRealTime();
    return runWithRatios(1, argv);
}

// The workstation: its start, the opening of 2000 instances, and 100 000 printed lines.

#include "RatioReport.h"

#include <common/KyHostPlatform.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyworkstation/KyMainWindow.h>
#include <kyworkstation/KyScriptingMenu.h>
#include <kyworkstation/KyStudySession.h>

#include <ovwebservice/FolderStudySource.h>

#include <benchmark/benchmark.h>

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTextEdit>

#include <cstdlib>

namespace {

constexpr int Instances = 2000;
constexpr int Lines = 100'000;
constexpr int LinesPerTurn = 100;

/// Tells when a window has been painted for the first time.
class FirstPaint final : public QObject
{
public:
    explicit FirstPaint(QWidget& ioWindow) { ioWindow.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* inEvent) override
    {
        mHappened = mHappened || inEvent->type() == QEvent::Paint;
        return false;
    }
    void wait() const
    {
        while (!mHappened)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

private:
    bool mHappened = false;
};

void showAndWait(QWidget& ioWindow)
{
    const FirstPaint paint(ioWindow);
    ioWindow.show();
    paint.wait();
}

void startProgram(benchmark::State& ioState, const char* inProgram, const QStringList& inArguments)
{
    for (auto _ : ioState) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(QString::fromUtf8(inProgram), inArguments);
        if (!process.waitForFinished() || process.exitCode() != 0)
            ioState.SkipWithError("the program has failed");
    }
}

void addStart()
{
    benchmark::RegisterBenchmark("program loaded", [](benchmark::State& state) {
        startProgram(state, KYWORKSTATION, {QStringLiteral("--version")});
    });
    benchmark::RegisterBenchmark("program loaded/yardstick",
                                 [](benchmark::State& state) { startProgram(state, EMPTY_QT, {}); });
    benchmark::RegisterBenchmark("first window", [](benchmark::State& state) {
        for (auto _ : state) {
            KyHostPlatform platform{KyHostOptions()};
            KyMainWindow window;
            showAndWait(window);
        }
    });
    benchmark::RegisterBenchmark("first window/yardstick", [](benchmark::State& state) {
        for (auto _ : state) {
            QMainWindow window;
            window.resize(1100, 720);
            showAndWait(window);
        }
    });
}

/// The window's way against the loader that it uses; the window serves its events meanwhile.
void addOpening(const QString& inFolder)
{
    benchmark::RegisterBenchmark("open 2000 instances", [=](benchmark::State& state) {
        KyHostPlatform platform{KyHostOptions()};
        KyMainWindow window;
        showAndWait(window);
        for (auto _ : state) {
            window.closeStudies();
            window.openFolder(inFolder);
            while (KyStudySession::primary().empty())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    });
    benchmark::RegisterBenchmark("open 2000 instances/yardstick", [=](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(Ovg::FolderStudySource(inFolder).load());
    });
}

/// A pane as the console has it.
void preparePane(QTextEdit& ioPane)
{
    ioPane.setReadOnly(true);
    ioPane.setUndoRedoEnabled(false);
    ioPane.resize(600, 150);
    ioPane.show();
    QCoreApplication::processEvents();
}

void print(benchmark::State& ioState, int inLinesPerTurn)
{
    KyHostPlatform platform{KyHostOptions()};
    for (auto _ : ioState) {
        QTextEdit pane;
        preparePane(pane);
        KyScriptEngine engine(nullptr, 0);
        engine.redirectPrintOutput(&pane);
        const KyScriptProgram program(
            QStringLiteral("for (var i = 0; i < %1; ++i) print('line', i)").arg(inLinesPerTurn), QString(),
            -1);
        for (int done = 0; done < Lines; done += inLinesPerTurn) {
            engine.runScript(program, false, false);
            QCoreApplication::processEvents();
        }
        if (pane.document()->blockCount() != Lines)
            ioState.SkipWithError("lines are missing");
    }
}

void append(benchmark::State& ioState, int inLinesPerTurn)
{
    for (auto _ : ioState) {
        QTextEdit pane;
        preparePane(pane);
        for (int done = 0; done < Lines; done += inLinesPerTurn) {
            for (int i = 0; i < inLinesPerTurn; ++i)
                pane.append(QStringLiteral("line %1").arg(i));
            QCoreApplication::processEvents();
        }
    }
}

/// A script's prints against a plain text widget, in one run and in a thousand with events between them.
void addPrinting()
{
    constexpr int repetitions = 3;
    const auto add = [](const std::string& name, void (*measure)(benchmark::State&, int), int perTurn) {
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { measure(state, perTurn); })
            ->Iterations(1)
            ->Repetitions(repetitions)
            ->UseRealTime();
    };
    add("print 100 000 lines in one run", print, Lines);
    add("print 100 000 lines in one run/yardstick", append, Lines);
    add("print 100 000 lines, events served", print, LinesPerTurn);
    add("print 100 000 lines, events served/yardstick", append, LinesPerTurn);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    KyScriptingMenu::registerProperties();
    const QTemporaryDir folder;
    if (QProcess::execute(QStringLiteral(KYSAMPLE),
                          {QStringLiteral("--instances"), QString::number(Instances), folder.path()}) != 0)
        return EXIT_FAILURE;
    addStart();
    addOpening(folder.path());
    addPrinting();
    return runWithRatios(argc, argv);
}

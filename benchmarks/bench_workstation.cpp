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
#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTextEdit>

#include <cstdlib>

namespace {

constexpr int Instances = 2000;
constexpr int Lines = 100'000;
constexpr int LinesPerTurn = 100;
constexpr int LongRepetitions = 3;

void startProgram(benchmark::State& ioState, const char* inProgram, const QStringList& inArguments,
                  const QProcessEnvironment& inEnvironment)
{
    for (auto _ : ioState) {
        QProcess process;
        process.setProcessEnvironment(inEnvironment);
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(QString::fromUtf8(inProgram), inArguments);
        if (!process.waitForFinished() || process.exitCode() != 0)
            ioState.SkipWithError("the program has failed");
    }
}

/// Whole processes: a plugin of Qt ends them when their window has been painted.
void addStart(const QString& inProfile)
{
    QProcessEnvironment plain = QProcessEnvironment::systemEnvironment();
    QProcessEnvironment ending = plain;
    ending.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(BENCH_PLUGINS));
    ending.insert(QStringLiteral("QT_QPA_GENERIC_PLUGINS"), QStringLiteral("EndAtFirstPaint"));
    const QStringList version = {QStringLiteral("--version")};
    const QStringList profile = {QStringLiteral("--profile"), inProfile};
    const auto add = [](const char* name, const char* program, const QStringList& arguments,
                        const QProcessEnvironment& environment) {
        benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
            startProgram(state, program, arguments, environment);
        })->UseRealTime();
    };
    add("program loaded, --version", KYWORKSTATION, version, plain);
    add("program loaded, --version/yardstick", EMPTY_QT, version, plain);
    add("program from start to first window", KYWORKSTATION, profile, ending);
    add("program from start to first window/yardstick", EMPTY_QT, {}, ending);
}

/// The window's way against the loader that it uses; the window serves its events meanwhile.
void addOpening(const QString& inFolder)
{
    benchmark::RegisterBenchmark("open 2000 instances", [=](benchmark::State& state) {
        KyHostPlatform platform{KyHostOptions()};
        KyMainWindow window;
        window.show();
        QCoreApplication::processEvents();
        for (auto _ : state) {
            window.closeStudies();
            window.openFolder(inFolder);
            while (KyStudySession::primary().empty())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    })->UseRealTime();
    benchmark::RegisterBenchmark("open 2000 instances/yardstick", [=](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(Ovg::FolderStudySource(inFolder).load());
    })->UseRealTime();
}

/// Lets a script serve events in its midst.
class EventServer final : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void serve() { QCoreApplication::processEvents(); }
};

/// The console of an engine of its own, on the screen.
QWidget* openConsole(const QString& inName)
{
    QAction action;
    action.setData(inName);
    QObject::connect(&action, &QAction::triggered, &KyScriptInterface::getInstance(inName),
                     &KyScriptInterface::showConsole);
    action.trigger();
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->windowTitle().endsWith(QStringLiteral("(%1)").arg(inName)))
            return window;
    }
    return nullptr;
}

/// What a user waits for: the text in the pane and the window painted.
void printInConsole(benchmark::State& ioState, const QString& inSource)
{
    KyHostPlatform platform{KyHostOptions()};
    EventServer server;
    const QString name = QStringLiteral("bench");
    QWidget* console = openConsole(name);
    KyScriptInterface& engine = KyScriptInterface::getInstance(name);
    QJSEngine::setObjectOwnership(&server, QJSEngine::CppOwnership);
    engine.globalObject().setProperty(QStringLiteral("events"), engine.newQObject(&server));
    const auto evaluate = [&](const QString& source) {
        QMetaObject::invokeMethod(console, "evaluate", Q_ARG(QString, source));
        QCoreApplication::processEvents();
    };
    const auto* pane = console->findChild<QTextEdit*>(QStringLiteral("w_OutputText"));
    for (auto _ : ioState) {
        ioState.PauseTiming();
        evaluate(QString());
        ioState.ResumeTiming();
        evaluate(inSource);
        if (pane->document()->blockCount() != Lines + 1)
            ioState.SkipWithError("lines are missing");
    }
    console->close();
}

/// The plain text widget: the same lines, each appended, with events served as often.
void append(benchmark::State& ioState, int inLinesPerTurn)
{
    for (auto _ : ioState) {
        QPlainTextEdit pane;
        pane.setReadOnly(true);
        pane.setUndoRedoEnabled(false);
        pane.resize(600, 150);
        pane.show();
        for (int i = 1; i <= Lines; ++i) {
            pane.appendPlainText(QStringLiteral("line %1").arg(i));
            if (i % inLinesPerTurn == 0)
                QCoreApplication::processEvents();
        }
    }
}

void addPrinting()
{
    const auto add = [](const char* name, auto measure) {
        benchmark::RegisterBenchmark(name, measure)
            ->Iterations(1)
            ->Repetitions(LongRepetitions)
            ->UseRealTime();
    };
    const auto source = [](int turns, const char* between) {
        return QStringLiteral("for (var i = 0, n = 0; i < %1; ++i) {"
                              "    for (var k = 0; k < %2; ++k) print('line', ++n);"
                              "    %3"
                              "}")
            .arg(turns)
            .arg(Lines / turns)
            .arg(QLatin1String(between));
    };
    const QString atOnce = source(1, ""), byTurns = source(Lines / LinesPerTurn, "events.serve();");
    add("console prints 100 000 lines", [=](benchmark::State& state) { printInConsole(state, atOnce); });
    add("console prints 100 000 lines/yardstick", [](benchmark::State& state) { append(state, Lines); });
    add("console prints 100 000 lines, events served",
        [=](benchmark::State& state) { printInConsole(state, byTurns); });
    add("console prints 100 000 lines, events served/yardstick",
        [](benchmark::State& state) { append(state, LinesPerTurn); });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    KyScriptingMenu::registerProperties();
    const QTemporaryDir folder, profile;
    if (QProcess::execute(QStringLiteral(KYSAMPLE),
                          {QStringLiteral("--instances"), QString::number(Instances), folder.path()}) != 0)
        return EXIT_FAILURE;
    addStart(profile.path());
    addOpening(folder.path());
    addPrinting();
    return runWithRatios(argc, argv);
}

#include "bench_workstation.moc"

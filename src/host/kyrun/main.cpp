// kyrun: runs a script with the objects of the workstation, without a window.

#include "KyRunConsole.h"
#include "KyRunHints.h"
#include "KyRunOptions.h"
#include "KyRunOutput.h"
#include "KyRunTools.h"
#include "KyRunWatchdog.h"
#include "KyRunner.h"

#include <common/KyHostPlatform.h>
#include <common/KyMessageLog.h>
#include <common/KyViewerLayout.h>
#include <common/KyViewerTools.h>
#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <kybase/KyLoadHelper.h>
#include <rnlib/RnLogFileSink.h>
#include <rnlib/RnLogStreamSink.h>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStringDecoder>
#include <QtWidgets/QApplication>

#include <cstdio>
#include <memory>
#include <optional>

namespace {

constexpr int ScriptFailed = 1;
constexpr int BadInput = 2;

int fail(const QString& inReason)
{
    std::fprintf(stderr, "kyrun: %s\n", qPrintable(inReason));
    return BadInput;
}

/// Where the log goes: a file, or standard error. Null, with the reason, for a file that cannot be written.
std::shared_ptr<RnLogSink> logSink(const QString& inFile, QString& outReason)
{
    if (inFile.isEmpty())
        return std::make_shared<KyRunConsole>();
    if (inFile == QLatin1String("-"))
        return std::make_shared<RnLogStreamSink>(stderr);
    auto sink = std::make_shared<RnLogFileSink>(inFile.toStdString());
    if (sink->isOpen())
        return sink;
    outReason =
        QStringLiteral("Cannot write the log %1: %2").arg(inFile, QString::fromStdString(sink->errorText()));
    return nullptr;
}

/// Tells of the script's uncaught error: place, error and backtrace.
void tellError(const KyScriptEngine& inEngine, const QJSValue& inError, const QString& inInfo,
               const QString& inPlace, KyRunConsole* ioConsole)
{
    if (ioConsole)
        ioConsole->drop(inEngine.errorMessage(inError, inInfo, nullptr).toLatin1().toStdString());
    QString text =
        QStringLiteral("%1:%2: %3\n")
            .arg(inPlace, inError.property(QStringLiteral("lineNumber")).toString(), inError.toString());
    for (const QString& frame : inError.property(QStringLiteral("stack")).toString().split(QLatin1Char('\n')))
        text += QStringLiteral("    at %1\n").arg(frame);
    std::fputs(text.toUtf8().constData(), stderr);
}

/// The text of the script file in UTF-8, without a byte order mark; nothing, with the reason, when it cannot
/// be read.
std::optional<QString> readScript(const QString& inFile, QString& outReason)
{
    QFile file(inFile);
    const bool isOpen =
        inFile == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    const QByteArray bytes = isOpen ? file.readAll() : QByteArray();
    if (!isOpen || file.error() != QFileDevice::NoError) {
        outReason = QStringLiteral("Cannot read the script %1: %2").arg(inFile, file.errorString());
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(bytes);
    if (!decoder.hasError())
        return text;
    outReason = QStringLiteral("Cannot read the script %1: it is not UTF-8").arg(inFile);
    return std::nullopt;
}

KyScriptProgram programOf(const KyRunOptions& inOptions, const QString& inSource)
{
    if (inOptions.hasCode)
        return KyScriptProgram(inSource, "eval");
    return KyScriptProgram(inSource, inOptions.scriptFile, 1);
}

/// Serves what the script has posted before the program ends, such as promises that it has settled. Bounded,
/// since handlers may post for ever.
void servePostedEvents()
{
    constexpr int MaxRounds = 1000;
    auto* dispatcher = QAbstractEventDispatcher::instance();
    for (int round = 0; round < MaxRounds && dispatcher->processEvents(QEventLoop::AllEvents); ++round)
        ;
}

/// Counts the uncaught errors of scripts while it lives. Those of tools end in the log and nowhere else.
class ErrorCount final : public RnLogSink
{
public:
    void write(const RnLogRecord& inRecord) override { errors += KyRunConsole::isReport(inRecord) ? 1 : 0; }
    int errors = 0;
};

/// Triggers the tools in their order, until the script side wants to leave. Gives the exit status.
int triggerTools(const QStringList& inKeys, const KyRunner& inRunner)
{
    const auto count = std::make_shared<ErrorCount>();
    getTheLogInstance().addSink(count, 3);
    QString failure;
    for (const QString& key : inKeys) {
        if (failure.isEmpty() && count->errors == 0 && !inRunner.hasExited())
            failure = KyRunTools::trigger(key);
    }
    servePostedEvents();
    getTheLogInstance().removeSink(count.get());
    if (!failure.isEmpty())
        fail(failure);
    return failure.isEmpty() && count->errors == 0 ? 0 : ScriptFailed;
}

/// Runs the script, prints its value if that is wanted, and serves what it has posted. Gives the exit status.
int runScript(const KyRunOptions& inOptions, const QString& inSource, RnLogSink* inSink)
{
    auto& facade = KyScriptAbstractInterface::getInstance(inOptions.engine);
    KyScriptEngine& engine = *facade.jsEngine(true);
    const KyRunOutput& output = KyRunOutput::install(engine);

    const KyScriptProgram program = programOf(inOptions, inSource);
    auto* console = dynamic_cast<KyRunConsole*>(inSink);
    if (console)
        console->setHoldingBack(true);
    const QJSValue value = facade.runScript(program, false, false, false);
    if (value.isError())
        tellError(engine, value, program.infoString(),
                  inOptions.hasCode ? program.infoString() : inOptions.scriptFile, console);
    if (console)
        console->setHoldingBack(false);
    servePostedEvents();
    if (value.isError())
        return ScriptFailed;
    if (inOptions.isPrinting)
        output.writeLine(output.textOf(value));
    return 0;
}

/// Runs the script, if there is one, then the tools, and stays in the event loop as long as that is wanted.
/// Gives the exit status.
int run(const KyRunOptions& inOptions, const QString& inSource, RnLogSink* inSink)
{
    KyRunner runner(inOptions.arguments, inOptions.keepRunning);
    int status = inOptions.hasScript() ? runScript(inOptions, inSource, inSink) : 0;
    if (status == 0 && !inOptions.triggers.isEmpty())
        status = triggerTools(inOptions.triggers, runner);
    if (runner.hasExited())
        return runner.exitCode();
    return status == 0 && runner.keepRunning() ? QCoreApplication::exec() : status;
}

/// What is wrong with the folders of the options, or nothing.
QString checkFolders(const KyHostOptions& inOptions)
{
    for (const QString& folder : inOptions.studyFolders + inOptions.additionalFolders) {
        const QFileInfo info(folder);
        if (!info.isDir() || !info.isReadable())
            return QStringLiteral("Cannot read the folder %1").arg(folder);
    }
    const QFileInfo profile(inOptions.profile);
    const bool isUsable = inOptions.profile.isEmpty() ||
                          (QDir().mkpath(inOptions.profile) && profile.isDir() && profile.isWritable());
    return isUsable ? QString() : QStringLiteral("Cannot keep a profile below %1").arg(inOptions.profile);
}

int runOnPlatform(const KyRunOptions& inOptions, const QString& inSource, RnLogSink* inSink)
{
    const QString badFolder = checkFolders(inOptions.host);
    if (!badFolder.isEmpty())
        return fail(badFolder);
    KyHostPlatform platform(inOptions.host);
    const QString badProperty = platform.applyProperties();
    if (!badProperty.isEmpty())
        return fail(QStringLiteral("There is no property %1 that takes this text").arg(badProperty));

    const KyHostPlatform::Loaded loaded = platform.loadStudies();
    if (!loaded.errors.isEmpty())
        return fail(loaded.errors.first());
    for (const QString& warning : loaded.warnings)
        getTheLogInstance().tracef(2, "Studies", "%s", warning.toUtf8().constData());
    std::optional<KyViewerLayout> viewers;
    std::vector<std::shared_ptr<KyTool>> tools;
    std::optional<KyRunHints> hints;
    if (loaded.primary > 0) {
        viewers.emplace(KySeriesVolume::Reading::OnDemand);
        viewers->fill(KySessionContext::currentInstance()->component<KyLoadHelper>(true)->primaryExams());
        tools = KyViewerTools::make(*viewers);
        hints.emplace(*viewers);
    }
    QString badTool = KyRunTools::load(inOptions.host.toolFiles);
    if (badTool.isEmpty())
        badTool = KyRunTools::findUnknown(inOptions.triggers);
    return badTool.isEmpty() ? run(inOptions, inSource, inSink) : fail(badTool);
}

/// Without a display, also where the environment names one that is not there, windows are drawn into memory.
void chooseDisplay()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    QByteArray platforms = "offscreen";
    if (qEnvironmentVariableIsSet("DISPLAY"))
        platforms.prepend("xcb;");
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        platforms.prepend("wayland;");
    qputenv("QT_QPA_PLATFORM", platforms);
}

} // namespace

int main(int argc, char** argv)
{
    const KyMessageLog messages;
    const auto early = std::make_shared<KyRunConsole>();
    getTheLogInstance().addSink(early, 2);
    chooseDisplay();
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Ky"));
    QCoreApplication::setApplicationName(QStringLiteral("kyrun"));
    QApplication::setQuitOnLastWindowClosed(false);

    KyRunOptions options;
    QString text;
    switch (options.parse(QCoreApplication::arguments(), text)) {
    case KyRunOptions::Outcome::Run:
        break;
    case KyRunOptions::Outcome::Help:
    case KyRunOptions::Outcome::Version:
        std::fputs(qPrintable(text), stdout);
        return 0;
    case KyRunOptions::Outcome::Bad:
        return fail(text);
    }

    const auto sink = logSink(options.logFile, text);
    if (!sink)
        return fail(text);
    getTheLogInstance().removeSink(early.get());
    getTheLogInstance().addSink(sink, options.logFile.isEmpty() ? 2 : 0);
    const KyRunWatchdog watchdog(options.timeoutSeconds);
    const auto source =
        options.scriptFile.isEmpty() ? std::optional(options.code) : readScript(options.scriptFile, text);
    if (!source)
        return fail(text);
    const int status = runOnPlatform(options, *source, sink.get());
    return status == 0 && KyRunOutput::hasFailed() ? ScriptFailed : status;
}

// kyrun: runs a script with the objects of the workstation, without a window.

#include "KyRunConsole.h"
#include "KyRunErrors.h"
#include "KyRunHints.h"
#include "KyRunOptions.h"
#include "KyRunOutput.h"
#include "KyRunPrompt.h"
#include "KyRunScript.h"
#include "KyRunTests.h"
#include "KyRunTools.h"
#include "KyRunWatchdog.h"
#include "KyRunner.h"

#include <common/KyHostPlatform.h>
#include <common/KyMessageLog.h>
#include <common/KyViewerLayout.h>
#include <common/KyViewerTools.h>
#include <kyreporttab/JxReport.h>
#include <kyreporttab/OvReportEditor.h>
#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>

#include <kybase/KyLoadHelper.h>
#include <rnlib/RnLogFileSink.h>
#include <rnlib/RnLogStreamSink.h>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTextEdit>

#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

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

/// Tells of the script's uncaught error, and takes its report out of the log.
void tellError(const KyScriptEngine& inEngine, const QJSValue& inError, const QString& inInfo,
               const QString& inPlace, KyRunConsole* ioConsole)
{
    if (ioConsole)
        ioConsole->drop(inEngine.errorMessage(inError, inInfo, nullptr).toLatin1().toStdString());
    KyRunErrors::tell(inError, inPlace);
}

/// One text to run. Code of the command line has no file.
struct Source
{
    QString text;
    QString file;

    KyScriptProgram program() const
    {
        return file.isEmpty() ? KyScriptProgram(text, "eval") : KyScriptProgram(text, file, 1);
    }
    QString place() const { return file.isEmpty() ? QStringLiteral("eval") : file; }
};

/// All that the command line wants to be run, in its order; nothing, with the reason, when a file cannot be
/// read.
std::optional<std::vector<Source>> readSources(const KyRunOptions& inOptions, QString& outReason)
{
    QStringList files = inOptions.firstFiles;
    if (!inOptions.scriptFile.isEmpty())
        files.append(inOptions.scriptFile);
    std::vector<Source> sources;
    for (const QString& file : files) {
        const auto text = KyRunScript::read(file, outReason);
        if (!text)
            return std::nullopt;
        sources.push_back({*text, file});
    }
    if (inOptions.hasCode)
        sources.push_back({inOptions.code, QString()});
    return sources;
}

/// Tells what is wrong with the syntax of each file. Gives the exit status.
int checkSyntax(const QStringList& inFiles)
{
    int status = 0;
    for (const QString& file : inFiles) {
        QString reason;
        const auto source = KyRunScript::read(file, reason);
        if (!source)
            return fail(reason);
        const QString error = KyRunScript::syntaxError(*source, file);
        if (error.isEmpty())
            continue;
        std::fprintf(stderr, "%s\n", error.toUtf8().constData());
        status = ScriptFailed;
    }
    return status;
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

enum class Printing
{
    Nothing,
    Value,
    ValueUnlessUndefined
};

/// Runs one text, prints its value as far as that is wanted, and serves what it has posted. Gives the exit
/// status.
int runSource(const Source& inSource, Printing inPrinting, KyScriptAbstractEngine& ioFacade,
              const KyRunOutput& inOutput, KyRunConsole* ioConsole)
{
    const KyScriptProgram program = inSource.program();
    if (ioConsole)
        ioConsole->setHoldingBack(true);
    const QJSValue value = ioFacade.runScript(program, false, false, false);
    if (value.isError() && ioFacade.jsEngine(false))
        tellError(*ioFacade.jsEngine(false), value, program.infoString(), inSource.place(), ioConsole);
    if (ioConsole)
        ioConsole->setHoldingBack(false);
    servePostedEvents();
    const bool isPrinting = inPrinting == Printing::Value ||
                            (inPrinting == Printing::ValueUnlessUndefined && !value.isUndefined());
    if (!value.isError() && isPrinting)
        inOutput.writeLine(inOutput.textOf(value));
    return value.isError() ? ScriptFailed : 0;
}

/// Runs the texts in their order, up to the first that fails or wants to leave, then the prompt if there is
/// to be one. Gives the exit status.
int runSources(const KyRunOptions& inOptions, const std::vector<Source>& inSources, const KyRunner& inRunner,
               KyRunConsole* ioConsole)
{
    auto& facade = KyScriptAbstractInterface::getInstance(inOptions.engine);
    const KyRunOutput& output = KyRunOutput::install(*facade.jsEngine(true));
    for (const Source& source : inSources) {
        const bool isPrinting = inOptions.isPrinting && &source == &inSources.back();
        const int status =
            runSource(source, isPrinting ? Printing::Value : Printing::Nothing, facade, output, ioConsole);
        if (status != 0 || inRunner.hasExited() || !facade.jsEngine(false))
            return status;
    }
    if (!inOptions.isInteractive)
        return 0;
    const auto runLine = [&](const QString& text, const QString& place) {
        runSource({text, place}, Printing::ValueUnlessUndefined, facade, output, ioConsole);
    };
    return KyRunPrompt(facade, runLine, KyRunOptions::historyFile()).exec();
}

/// Runs the tests, or the scripts and then the tools, and stays in the event loop as long as that is wanted.
/// Gives the exit status.
int run(const KyRunOptions& inOptions, const std::vector<Source>& inSources, RnLogSink* inSink)
{
    KyRunner runner(inOptions.arguments, inOptions.keepRunning);
    if (inOptions.isTesting)
        return KyRunTests(inOptions.files).exec();
    int status = inSources.empty() && !inOptions.isInteractive
                     ? 0
                     : runSources(inOptions, inSources, runner, dynamic_cast<KyRunConsole*>(inSink));
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

/// The report of scripts, which here nobody sees: always on view.
class UnseenReport
{
public:
    explicit UnseenReport(KyReportEditor& inEditor)
    {
        mText.setDocument(&inEditor.document());
        if (JxReport* reports = JxReport::instance())
            reports->setActiveReport(&mEditor);
    }

private:
    QTextEdit mText;
    Ovg::OvReportEditor mEditor{&mText};
};

int runOnPlatform(const KyRunOptions& inOptions, const std::vector<Source>& inSources, RnLogSink* inSink)
{
    const QString badFolder = checkFolders(inOptions.host);
    if (!badFolder.isEmpty())
        return fail(badFolder);
    KyHostPlatform platform(inOptions.host);
    const QString badProperty = platform.applyProperties();
    if (!badProperty.isEmpty())
        return fail(QStringLiteral("There is no property %1 that takes this text").arg(badProperty));

    const UnseenReport report(platform.reportEditor());
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
    return badTool.isEmpty() ? run(inOptions, inSources, inSink) : fail(badTool);
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
    if (options.isChecking)
        return checkSyntax(options.files);
    const auto sources = readSources(options, text);
    if (!sources)
        return fail(text);
    const int status = runOnPlatform(options, *sources, sink.get());
    return status == 0 && KyRunOutput::hasFailed() ? ScriptFailed : status;
}

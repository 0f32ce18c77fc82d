#include "KyRunOptions.h"

#include <rnlib/RnBuildInfo.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QDir>

#include <unistd.h>
#include <utility>

namespace {

using Option = QCommandLineOption;

QString text(const char* inText)
{
    return QString::fromUtf8(inText);
}

const Option Eval({text("e"), text("eval")}, text("Run CODE instead of a file."), text("CODE"));
const Option File({text("f"), text("file")},
                  text("Run FILE first, on the same engine (repeatable): functions for the script."),
                  text("FILE"));
const Option Interactive({text("i"), text("interactive")},
                         text("Then read scripts from the terminal, with history and completion."));
const Option Test(text("test"),
                  text("Run the tests that FILES define with test(), and tell of them in TAP; exit status 1 "
                       "when one fails."));
const Option Check(text("check"),
                   text("Check the syntax of FILES and run nothing; exit status 1 for an error."));
const Option Print({text("p"), text("print")}, text("Print the value of the run, as its text."));
const Option Studies({text("s"), text("studies")},
                     text("Open the DICOM files below DIR as the session's studies (repeatable)."),
                     text("DIR"));
const Option Additional(text("additional"), text("Open those below DIR as additional studies (repeatable)."),
                        text("DIR"));
const Option
    Archive(text("archive"),
            text("Take the studies of --patient from the DICOMweb archive at URL (default: that of the "
                 "profile's site.json)."),
            text("URL"));
const Option Patient(text("patient"), text("Open the archive's studies of that patient (repeatable)."),
                     text("ID"));
const Option Engine(text("engine"), text("Run on the engine of that name (default: the unnamed one)."),
                    text("NAME"));
const Option Tools(text("tools"), text("Load a tool configuration file (repeatable)."), text("FILE"));
const Option Trigger(text("trigger"), text("Trigger the tool ID, after SCRIPT or without one (repeatable)."),
                     text("ID"));
const Option Property(text("property"), text("Set an application property before the run (repeatable)."),
                      text("ID=TEXT"));
const Option Profile(text("profile"),
                     text("Keep settings and data below DIR (default: in memory, nothing is left behind)."),
                     text("DIR"));
const Option Proxy(text("proxy"), text("The configured HTTP proxy of the client."), text("HOST:PORT"));
const Option Log(text("log"),
                 text("Write the log to FILE, \"-\" for standard error (default: levels 2 and 3 to standard "
                      "error). A file of 10 MB is renamed and a new one begun."),
                 text("FILE"));
const Option KeepRunning(text("keep-running"),
                         text("Stay in the event loop after the script, until Runner.exit()."));
const Option Timeout(text("timeout"), text("End the process with exit status 124 if it still runs then."),
                     text("SECONDS"));
const Option Help({text("h"), text("help")}, text("Show this help."));
const Option Version({text("v"), text("version")}, text("Show the version."));

constexpr const char* Description =
    "Runs JavaScript with the objects of the workstation.\n"
    "\n"
    "A file runs at the top level of the engine. print(...) writes one line to standard output. The global "
    "Runner\n"
    "has args (list of texts), exit(code) and keepRunning.\n"
    "\n"
    "Exit status: 0; 1 after an uncaught error, which stands on standard error; 2 for a bad command line or\n"
    "unreadable input; 124 at the timeout; or what Runner.exit was given, 0 to 255. A thrown text or number "
    "is no "
    "error but\n"
    "counts as the value of the run: throw new Error(...) to fail.";

/// Puts properties, proxy and timeout in; gives what is wrong with them, or nothing.
QString parseValues(const QCommandLineParser& inParser, KyRunOptions& outOptions)
{
    for (const QString& property : inParser.values(Property)) {
        if (!outOptions.host.addProperty(property))
            return text("--property needs ID=TEXT, not \"%1\"").arg(property);
    }
    if (inParser.isSet(Proxy) && !outOptions.host.setProxy(inParser.value(Proxy)))
        return text("--proxy needs HOST:PORT, not \"%1\"").arg(inParser.value(Proxy));
    if (!inParser.isSet(Timeout))
        return QString();
    bool isNumber = false;
    outOptions.timeoutSeconds = inParser.value(Timeout).toInt(&isNumber);
    return isNumber && outOptions.timeoutSeconds > 0
               ? QString()
               : text("--timeout needs a number of seconds above 0, not \"%1\"").arg(inParser.value(Timeout));
}

void readFlags(const QCommandLineParser& inParser, KyRunOptions& outOptions)
{
    outOptions.hasCode = inParser.isSet(Eval);
    outOptions.code = inParser.value(Eval);
    outOptions.isPrinting = inParser.isSet(Print);
    outOptions.firstFiles = inParser.values(File);
    outOptions.isInteractive = inParser.isSet(Interactive);
    outOptions.isTesting = inParser.isSet(Test);
    outOptions.isChecking = inParser.isSet(Check);
    outOptions.keepRunning = inParser.isSet(KeepRunning);
}

} // namespace

KyRunOptions::Outcome KyRunOptions::parse(const QStringList& inArguments, QString& outText)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(text(Description));
    // What stands behind the script belongs to the script, also when it begins with a dash.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.addOptions({Eval,       Print,   File,    Interactive, Test,    Check,   Studies,
                       Additional, Archive, Patient, Engine,      Tools,   Trigger, Property,
                       Profile,    Proxy,   Log,     KeepRunning, Timeout, Help,    Version});
    parser.addPositionalArgument(
        text("SCRIPT.js"), text("The script, \"-\" for standard input."),
        text("SCRIPT.js | -e CODE | -i | --test FILES | --check FILES | --trigger ID"));
    parser.addPositionalArgument(text("ARG"), text("Arguments for the script."), text("[ARG...]"));

    const bool isParsed = parser.parse(inArguments);
    outText = parser.errorText();
    if (!isParsed)
        return Outcome::Bad;
    if (parser.isSet(Help)) {
        outText = parser.helpText();
        return Outcome::Help;
    }
    if (parser.isSet(Version)) {
        outText = text("kyrun ") + QString::fromStdString(RnBuildInfo::getBuildString(1)) + QLatin1Char('\n');
        return Outcome::Version;
    }
    outText = parseValues(parser, *this);
    if (!outText.isEmpty())
        return Outcome::Bad;

    readFlags(parser, *this);
    host.studyFolders = parser.values(Studies);
    host.additionalFolders = parser.values(Additional);
    host.archiveUrl = parser.value(Archive);
    host.patients = parser.values(Patient);
    host.toolFiles = parser.values(Tools);
    triggers = parser.values(Trigger);
    host.profile = parser.value(Profile);
    engine = parser.value(Engine);
    logFile = parser.value(Log);
    arguments = parser.positionalArguments();
    outText = takeScripts();
    return outText.isEmpty() ? Outcome::Run : Outcome::Bad;
}

/// Takes from the arguments what is to be run; gives what is wrong with that, or nothing.
QString KyRunOptions::takeScripts()
{
    if (isInteractive && isatty(STDIN_FILENO) == 0)
        return text("--interactive needs a terminal; \"-\" runs a script from standard input");
    if (isTesting || isChecking) {
        const QString option = isTesting ? text("--test") : text("--check");
        if (isTesting && isChecking)
            return text("--test and --check exclude each other");
        if (hasCode || isInteractive || !firstFiles.isEmpty() || !triggers.isEmpty())
            return text("%1 takes FILES, and nothing else to run").arg(option);
        files = std::exchange(arguments, {});
        return files.isEmpty() ? text("%1 needs FILES").arg(option) : QString();
    }
    const bool isComplete = hasCode || isInteractive || !triggers.isEmpty() || !firstFiles.isEmpty();
    if (hasCode || (arguments.isEmpty() && isComplete))
        return QString();
    if (arguments.isEmpty())
        return text("There is no script to run; see kyrun --help");
    scriptFile = arguments.takeFirst();
    return QString();
}

QString KyRunOptions::historyFile()
{
    const QString set = qEnvironmentVariable("XDG_STATE_HOME");
    return (set.isEmpty() ? QDir::homePath() + text("/.local/state") : set) + text("/kyrun/history");
}

#include "KyRunOptions.h"

#include <rnlib/RnBuildInfo.h>

#include <QtCore/QCommandLineParser>

namespace {

using Option = QCommandLineOption;

QString text(const char* inText)
{
    return QString::fromUtf8(inText);
}

const Option Eval({text("e"), text("eval")}, text("Run CODE instead of a file."), text("CODE"));
const Option Print({text("p"), text("print")}, text("Print the value of the run, as its text."));
const Option Studies({text("s"), text("studies")},
                     text("Open the DICOM files below DIR as the session's studies (repeatable)."),
                     text("DIR"));
const Option Additional(text("additional"), text("Open those below DIR as additional studies (repeatable)."),
                        text("DIR"));
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

} // namespace

KyRunOptions::Outcome KyRunOptions::parse(const QStringList& inArguments, QString& outText)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(text(Description));
    // What stands behind the script belongs to the script, also when it begins with a dash.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.addOptions({Eval, Print, Studies, Additional, Engine, Tools, Trigger, Property, Profile, Proxy,
                       Log, KeepRunning, Timeout, Help, Version});
    parser.addPositionalArgument(text("SCRIPT.js"), text("The script, \"-\" for standard input."),
                                 text("SCRIPT.js | -e CODE | --trigger ID"));
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

    hasCode = parser.isSet(Eval);
    code = parser.value(Eval);
    isPrinting = parser.isSet(Print);
    host.studyFolders = parser.values(Studies);
    host.additionalFolders = parser.values(Additional);
    host.toolFiles = parser.values(Tools);
    triggers = parser.values(Trigger);
    host.profile = parser.value(Profile);
    engine = parser.value(Engine);
    logFile = parser.value(Log);
    keepRunning = parser.isSet(KeepRunning);
    arguments = parser.positionalArguments();
    if (hasCode || (arguments.isEmpty() && !triggers.isEmpty()))
        return Outcome::Run;
    if (arguments.isEmpty()) {
        outText = text("There is no script to run; see kyrun --help");
        return Outcome::Bad;
    }
    scriptFile = arguments.takeFirst();
    return Outcome::Run;
}

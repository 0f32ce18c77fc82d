#include "KyWorkstationOptions.h"

#include <rnlib/RnBuildInfo.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QStandardPaths>

namespace {

QString name(const char* inName)
{
    return QLatin1String(inName);
}

QList<QCommandLineOption> valueOptions()
{
    return {
        {{name("s"), name("studies")},
         KyWorkstationOptions::tr("Open the DICOM files below DIR (repeatable)."),
         name("DIR")},
        {name("additional"),
         KyWorkstationOptions::tr("Open those below DIR as additional studies (repeatable)."), name("DIR")},
        {name("archive"),
         KyWorkstationOptions::tr(
             "Take the studies of --patient from the DICOMweb archive at URL (default: that "
             "of the profile's site.json)."),
         name("URL")},
        {name("patient"),
         KyWorkstationOptions::tr("Open the archive's studies of that patient (repeatable)."), name("ID")},
        {name("property"),
         KyWorkstationOptions::tr("Set an application property for this session (repeatable)."),
         name("ID=TEXT")},
        {name("profile"),
         KyWorkstationOptions::tr(
             "Keep settings and data below DIR instead of the user's configuration folder."),
         name("DIR")},
        {name("tools"), KyWorkstationOptions::tr("Load a tool configuration file (repeatable)."),
         name("FILE")},
        {name("proxy"), KyWorkstationOptions::tr("The configured HTTP proxy of the client."),
         name("HOST:PORT")},
        {name("run"), KyWorkstationOptions::tr("Run the script FILE once the window is shown (repeatable)."),
         name("FILE")},
        {name("log"), KyWorkstationOptions::tr("Write the log also to FILE, \"-\" for standard error."),
         name("FILE")}};
}

/// Puts properties and proxy in; gives what is wrong with them, or nothing.
QString parseValues(const QCommandLineParser& inParser, KyHostOptions& outHost)
{
    for (const QString& property : inParser.values(name("property"))) {
        if (!outHost.addProperty(property))
            return KyWorkstationOptions::tr("--property needs ID=TEXT, not \"%1\"").arg(property);
    }
    const QString proxy = inParser.value(name("proxy"));
    if (inParser.isSet(name("proxy")) && !outHost.setProxy(proxy))
        return KyWorkstationOptions::tr("--proxy needs HOST:PORT, not \"%1\"").arg(proxy);
    return QString();
}

} // namespace

KyWorkstationOptions::Outcome KyWorkstationOptions::parse(const QStringList& inArguments, QString& outText)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(tr("A workstation for DICOM studies that scripts can extend."));
    parser.addOptions(valueOptions());
    const QCommandLineOption help = parser.addHelpOption(), version = parser.addVersionOption();
    parser.addPositionalArgument(name("DIR"), tr("Folders of studies to open; a file stands for its folder."),
                                 name("[DIR...]"));

    const bool isParsed = parser.parse(inArguments);
    outText = parser.errorText();
    if (!isParsed)
        return Outcome::Bad;
    if (parser.isSet(help)) {
        outText = parser.helpText();
        return Outcome::Help;
    }
    if (parser.isSet(version)) {
        outText = name("kyworkstation ") + QString::fromStdString(RnBuildInfo::getBuildString(1)) +
                  QLatin1Char('\n');
        return Outcome::Version;
    }
    outText = parseValues(parser, host);
    host.studyFolders = parser.values(name("studies")) + parser.positionalArguments();
    host.additionalFolders = parser.values(name("additional"));
    host.archiveUrl = parser.value(name("archive"));
    host.patients = parser.values(name("patient"));
    host.toolFiles = parser.values(name("tools"));
    host.profile = parser.isSet(name("profile"))
                       ? parser.value(name("profile"))
                       : QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    scripts = parser.values(name("run"));
    logFile = parser.value(name("log"));
    return outText.isEmpty() ? Outcome::Run : Outcome::Bad;
}

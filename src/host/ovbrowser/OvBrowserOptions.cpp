#include "OvBrowserOptions.h"

namespace {

constexpr const char* HelpText =
    "usage: ovbrowser [options] [ADDRESS]\n"
    "\n"
    "A browser window. With a pipe it takes its orders from there and ends with it, see\n"
    "docs/browser-protocol.md; without one it shows ADDRESS and ends when it is closed.\n"
    "\n"
    "      --named-pipe=NAME     the pipe to connect to\n"
    "      --user-data-dir=NAME  keep cookies and other data of pages in this folder, which is below the\n"
    "                            user's folder of data unless the path is absolute; in memory without it\n"
    "      --help, --version\n"
    "\n"
    "Other options go to the engine, such as --proxy-server=HOST:PORT.\n";

bool take(const QString& inArgument, const char* inOption, QString& ioValue)
{
    const QString start = QLatin1String(inOption) + QLatin1Char('=');
    if (!inArgument.startsWith(start))
        return false;
    ioValue = inArgument.mid(start.size());
    return true;
}

} // namespace

OvBrowserOptions::Outcome OvBrowserOptions::parse(const QStringList& inArguments, QString& outText)
{
    for (const QString& argument : inArguments) {
        if (argument == QLatin1String("--help")) {
            outText = QLatin1String(HelpText);
            return Outcome::Help;
        }
        if (argument == QLatin1String("--version")) {
            outText = QStringLiteral("ovbrowser " KY_VERSION "\n");
            return Outcome::Version;
        }
        if (take(argument, "--named-pipe", namedPipe) || take(argument, "--user-data-dir", userDataFolder))
            continue;
        if (argument.startsWith(QLatin1Char('-')))
            engineFlags.append(argument);
        else if (address.isEmpty())
            address = argument;
        else {
            outText = QStringLiteral("More than one address: %1").arg(argument);
            return Outcome::Bad;
        }
    }
    return Outcome::Run;
}

QByteArray OvBrowserOptions::engineEnvironment(const QByteArray& inPresent) const
{
    QString flags = QString::fromUtf8(inPresent);
    for (const QString& flag : engineFlags) {
        const bool hasBlank = flag.contains(QLatin1Char(' '));
        flags += QLatin1Char(' ') + (hasBlank ? QLatin1Char('"') + flag + QLatin1Char('"') : flag);
    }
    return flags.trimmed().toUtf8();
}

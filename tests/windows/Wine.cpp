#include "Wine.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QStandardPaths>

namespace {

constexpr int LimitMsecs = 60000;

/// As long as other tests may take that have their turn.
constexpr int TurnMsecs = 240000;
std::unique_ptr<QLockFile> sTurn;

/// Changes when the prefix has to be made anew.
constexpr const char* Version = "1";

QString wine()
{
    return QStandardPaths::findExecutable("wine");
}

/// The prefix of this user, so that root and others don't meet.
QString cacheFolder()
{
    const QString cache = qEnvironmentVariable("XDG_CACHE_HOME");
    return (cache.isEmpty() ? QDir::home().filePath(".cache") : cache) + "/kyscript";
}

bool run(const QString& inProgram, const QStringList& inArguments)
{
    QProcess process;
    process.setProcessEnvironment(Wine::environment());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(inProgram, inArguments);
    return process.waitForFinished(LimitMsecs) && process.exitCode() == 0;
}

bool addToRegistry(const QString& inKey, const QStringList& inValue)
{
    return run(wine(), QStringList{"reg", "add", inKey} + inValue + QStringList{"/f"});
}

bool isMade()
{
    QFile stamp(Wine::prefix() + "/kyscript-version");
    return stamp.open(QIODevice::ReadOnly) && stamp.readAll() == Version;
}

} // namespace

QString Wine::missing()
{
    const bool isComplete = !wine().isEmpty() && !QStandardPaths::findExecutable("wineserver").isEmpty();
    return isComplete ? QString() : "wine";
}

QString Wine::prefix()
{
    return cacheFolder() + "/wine-prefix";
}

QProcessEnvironment Wine::environment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    environment.insert("WINEPREFIX", prefix());
    environment.insert("WINEARCH", "win64");
    environment.insert("WINEDEBUG", "-all");
    environment.insert("WINEDLLOVERRIDES", "mscoree=;mshtml=");
    environment.insert("LC_ALL", "C.UTF-8");
    return environment;
}

QString Wine::prepare()
{
    QDir().mkpath(cacheFolder());
    sTurn = std::make_unique<QLockFile>(cacheFolder() + "/wine-prefix.lock");
    sTurn->setStaleLockTime(0);
    if (!sTurn->tryLock(TurnMsecs))
        return "another process holds " + cacheFolder() + "/wine-prefix.lock";
    if (isMade()) {
        end(); // what a test has left behind that was ended
        return QString();
    }

    QDir(prefix()).removeRecursively();
    QDir().mkpath(prefix());
    if (!run(wine(), {"wineboot", "-i"}) || !run("wineserver", {"-w"}))
        return "no prefix could be made in " + prefix();
    // Windows without an X server, and the word processor of these tests. Wine shows classes of the machine
    // only.
    const QString id = "{000209FF-0000-0000-C000-000000000046}";
    if (!addToRegistry("HKCU\\Software\\Wine\\Drivers", {"/v", "Graphics", "/d", "null"}) ||
        !addToRegistry("HKCR\\Word.Application\\CLSID", {"/ve", "/d", id}) ||
        !addToRegistry("HKCR\\CLSID\\" + id, {"/ve", "/d", "Word"}))
        return "the registry of " + prefix() + " could not be written";
    end(); // the next start reads it
    QFile stamp(prefix() + "/kyscript-version");
    return stamp.open(QIODevice::WriteOnly) && stamp.write(Version) > 0 ? QString() : stamp.errorString();
}

void Wine::leave()
{
    end();
    sTurn.reset();
}

void Wine::end()
{
    run("wineserver", {"-k"});
    run("wineserver", {"-w"});
}

WineProgram::WineProgram(const QString& inProgram, const QStringList& inEnvironment)
{
    QProcessEnvironment environment = Wine::environment();
    for (const QString& entry : inEnvironment)
        environment.insert(entry.section('=', 0, 0), entry.section('=', 1));
    mProcess.setProcessEnvironment(environment);
    mProcess.setStandardErrorFile(QProcess::nullDevice());
    mProcess.start(wine(), {inProgram});
    mIsReady = readLine() == "ready";
}

WineProgram::~WineProgram()
{
    mProcess.closeWriteChannel();
    if (!mProcess.waitForFinished(LimitMsecs)) {
        mProcess.kill();
        mProcess.waitForFinished();
    }
}

std::string WineProgram::readLine()
{
    while (!mProcess.canReadLine()) {
        if (!mProcess.waitForReadyRead(LimitMsecs)) {
            mProcess.kill(); // what it may say later must not answer something else
            mIsReady = false;
            return std::string();
        }
    }
    return mProcess.readLine().trimmed().toStdString();
}

std::string WineProgram::ask(const std::string& inLine)
{
    if (!mIsReady)
        return std::string();
    mProcess.write((inLine + "\n").c_str());
    return readLine();
}

QStringList WineProgram::words(const std::string& inLine)
{
    return QString::fromStdString(ask(inLine)).split(' ', Qt::SkipEmptyParts);
}

QString WineProgram::text(const std::string& inLine)
{
    return fromHex(ask(inLine));
}

std::string WineProgram::hex(const QString& inText)
{
    const QByteArray units(reinterpret_cast<const char*>(inText.utf16()), inText.size() * 2);
    return units.isEmpty() ? "-" : units.toHex().toStdString();
}

QString WineProgram::fromHex(const std::string& inHex)
{
    const QByteArray units = QByteArray::fromHex(QByteArray::fromStdString(inHex));
    return QString(reinterpret_cast<const QChar*>(units.constData()), units.size() / 2);
}

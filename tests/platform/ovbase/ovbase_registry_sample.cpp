// A process that uses a settings file, for tests that need a second one.
//
//   hold LOCKFILE            takes the lock, writes "held", and keeps it until standard input ends
//   write FILE PREFIX COUNT  stores PREFIX.0 to PREFIX.COUNT-1 and removes the odd ones again; writes the
//   number
//                            of each id behind its last change
//   limit FILE BYTES COUNT   the same, but no file of the process may grow beyond BYTES
//   read FILE ID             writes the effective value of ID
//
// Log lines go to standard error. With a further argument "nobody" a process of root works as that user.

#include <ovbase/OvFileLock.h>
#include <ovbase/OvRegistry.h>
#include <ovbase/OvRegistryFileStore.h>
#include <rnlib/RnLogFile.h>
#include <rnlib/RnLogStreamSink.h>

#include <QCoreApplication>

#include <csignal>
#include <cstdio>

#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr uid_t Nobody = 65534;

int hold(const QString& inPath)
{
    const OvFileLock lock(inPath, std::chrono::seconds(5));
    std::puts(lock.isHeld() ? "held" : "refused");
    std::fflush(stdout);
    while (std::getchar() != EOF)
        continue;
    return 0;
}

int write(const QString& inPath, const QString& inPrefix, int inCount)
{
    OvRegistry registry(std::make_shared<OvRegistryFileStore>(inPath));
    bool isStored = true;
    for (int i = 0; i < inCount; ++i) {
        const QString id = inPrefix + QLatin1Char('.') + QString::number(i);
        isStored = registry.setProperty(id, id, OvRegistry::ScriptPriority) && isStored;
        isStored = registry.setProperty(inPrefix, QString::number(i), OvRegistry::UserPriority) && isStored;
        if (i % 2 != 0)
            isStored = registry.removeProperty(id, OvRegistry::ScriptPriority) && isStored;
        if (!isStored)
            return 1;
        std::printf("%d\n", i);
        std::fflush(stdout);
    }
    return 0;
}

int limit(const QString& inPath, unsigned long inBytes, int inCount)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit bounds{inBytes, inBytes};
    return setrlimit(RLIMIT_FSIZE, &bounds) == 0 ? write(inPath, QStringLiteral("L"), inCount) : 2;
}

int read(const QString& inPath, const QString& inId)
{
    const OvRegistry registry(std::make_shared<OvRegistryFileStore>(inPath));
    OvRegistry::Value value;
    if (!registry.getProperty(inId, value))
        return 1;
    std::puts(value.value.toUtf8().constData());
    return 0;
}

int run(const QStringList& inArguments)
{
    const QString command = inArguments.value(1);
    const QString path = inArguments.value(2);
    if (command == QLatin1String("hold"))
        return hold(path);
    if (command == QLatin1String("write"))
        return write(path, inArguments.value(3), inArguments.value(4).toInt());
    if (command == QLatin1String("limit"))
        return limit(path, inArguments.value(3).toULong(), inArguments.value(4).toInt());
    return command == QLatin1String("read") ? read(path, inArguments.value(3)) : 2;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    getTheLogInstance().addSink(std::make_shared<RnLogStreamSink>(stderr));
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.last() == QLatin1String("nobody") && geteuid() == 0 && setuid(Nobody) != 0)
        return 2;
    return run(arguments);
}

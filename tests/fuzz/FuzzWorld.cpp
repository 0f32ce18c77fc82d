#include "FuzzWorld.h"

#include <QLoggingCategory>

#include <utility>

namespace {

/// libFuzzer leaves the process without a word. By then it is too late to end an application: it stays.
FuzzWorld* sWorld = nullptr;

int sArgumentCount = 1;
char sProgram[] = "fuzz";
char* sArguments[] = {sProgram, nullptr};

} // namespace

FuzzWorld::FuzzWorld()
    : mApplication(std::make_unique<QApplication>(sArgumentCount, sArguments))
    , mEngine(std::make_unique<KyScriptEngine>(nullptr, -1))
{
    // Qt warns of much that is wrong with what it reads.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

FuzzWorld& FuzzWorld::instance()
{
    if (!sWorld)
        sWorld = new FuzzWorld;
    return *sWorld;
}

void FuzzWorld::finish()
{
    delete std::exchange(sWorld, nullptr);
}

QJSValue FuzzWorld::run(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource);
    if (value.isError())
        qFatal("%s", qPrintable(value.toString()));
    return value;
}

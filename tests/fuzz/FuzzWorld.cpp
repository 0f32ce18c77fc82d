#include "FuzzWorld.h"

#include <QLoggingCategory>

namespace {

std::unique_ptr<FuzzWorld> sWorld;

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
        sWorld.reset(new FuzzWorld);
    return *sWorld;
}

void FuzzWorld::finish()
{
    sWorld.reset();
}

QJSValue FuzzWorld::run(const QString& inSource)
{
    const QJSValue value = mEngine->QJSEngine::evaluate(inSource);
    if (value.isError())
        qFatal("%s", qPrintable(value.toString()));
    return value;
}

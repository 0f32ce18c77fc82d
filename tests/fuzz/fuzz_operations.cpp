// Every operation that scripts see, called with values of every kind, in every order: the bytes are the
// script. What a script passes, keeps and destroys must never bring the host down.

#include "FuzzWorld.h"

#include <support/KyTestPlatform.h>

#include <QDialog>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

namespace {

/// Windows that wait for a user are closed, and files stay in a folder that goes.
struct Stage
{
    Stage()
        : world(FuzzWorld::instance())
    {
        QDir::setCurrent(folder.path());
        qputenv("HOME", folder.path().toUtf8());
        qputenv("PATH", folder.path().toUtf8());
        QFile file(OPERATIONS);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", OPERATIONS);
        play = world.run(QString::fromUtf8(file.readAll()));
        QObject::connect(&closer, &QTimer::timeout, [] {
            if (auto* window = QApplication::activeModalWidget())
                window->close();
        });
        closer.start(1);
    }

    QTemporaryDir folder;
    FuzzWorld& world;
    KyTestPlatform platform;
    QTimer closer;
    QJSValue play;
};

Stage* sStage = nullptr;

} // namespace

extern "C" void fuzzFinish()
{
    delete std::exchange(sStage, nullptr);
    FuzzWorld::finish();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    if (!sStage)
        sStage = new Stage;
    KyScriptEngine& engine = sStage->world.engine();
    const QByteArray bytes(reinterpret_cast<const char*>(inData),
                           static_cast<qsizetype>(std::min<std::size_t>(inSize, 2000)));
    const QJSValue result = sStage->play.call({engine.toScriptValue(bytes)});
    if (result.isError())
        qFatal("the player fails: %s", qPrintable(result.toString()));
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    engine.collectGarbage();
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible())
            window->close();
    }
    return 0;
}

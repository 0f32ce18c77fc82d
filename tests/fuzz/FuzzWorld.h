#pragma once

#include <kyresources/KyClientFacts.h>

#include <kyscript/KyScriptEngine.h>

#include <QApplication>
#include <QElapsedTimer>

#include <cstddef>
#include <cstdint>
#include <memory>

/// What every fuzz target stands on: the application, and an engine with all options.
class FuzzWorld
{
public:
    /// Made on first use. finish() ends it.
    static FuzzWorld& instance();
    static void finish();

    KyScriptEngine& engine() { return *mEngine; }
    QJSValue run(const QString& inSource);

    /// Serves events until \a inIsOver says so, half a second at most.
    template <class Predicate>
    static void serveUntil(Predicate inIsOver)
    {
        QElapsedTimer timer;
        timer.start();
        while (!inIsOver() && timer.elapsed() < 500)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

private:
    FuzzWorld();

    std::unique_ptr<QApplication> mApplication;

public:
    KyClientFacts facts;

private:
    std::unique_ptr<KyScriptEngine> mEngine;
};

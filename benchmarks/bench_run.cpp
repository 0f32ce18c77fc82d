// What a run costs beside the bare evaluation of the same text.

#include "RatioReport.h"

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptGlobal.h>
#include <kyscript/KyScriptProgram.h>

#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistry.h>

#include <benchmark/benchmark.h>

#include <QtWidgets/QApplication>

#include <memory>

namespace {

/// Dense functions, as scripts are, of about \a inBytes.
QString sourceOf(int inBytes)
{
    QString source;
    for (int i = 0; source.size() < inBytes; ++i)
        source +=
            QStringLiteral("function f%1(a, b) { var s = 'x' + a; if (b > %1) { s += b * 2; } return s; }\n")
                .arg(i);
    return source + QStringLiteral("f0(1, 2)");
}

struct World
{
    OvRegistry registry{nullptr};
    OvPropertyPool pool;
};

void setLogLines(int inLines)
{
    auto* property =
        static_cast<OvProperty<int>*>(OvPropertyPool::instance()->variant("Scripting.LogNumLines"));
    property->value = inLines;
}

/// Makes `Global` hold that many plain values, and nothing else.
void fillGlobal(int inKeys)
{
    auto& store = KyScriptGlobal::instance();
    const QVariantMap old = store.values();
    for (auto it = old.begin(); it != old.end(); ++it)
        store.setValue(it.key(), QVariant());
    for (int i = 0; i < inKeys; ++i)
        store.setValue(QStringLiteral("key%1").arg(i),
                       i % 2 ? QVariant(i) : QVariant(QStringLiteral("text")));
}

void addRun(const std::string& inName, const std::string& inGoal, const QString& inSource, int inLines,
            int inKeys)
{
    benchmark::RegisterBenchmark((inName + inGoal).c_str(), [=](benchmark::State& state) {
        setLogLines(inLines);
        fillGlobal(inKeys);
        KyScriptEngine engine(nullptr, -1);
        const KyScriptProgram program(inSource, QString(), -1);
        for (auto _ : state)
            benchmark::DoNotOptimize(engine.runScript(program, false, false));
    });
    benchmark::RegisterBenchmark((inName + "/yardstick").c_str(), [=](benchmark::State& state) {
        QJSEngine engine;
        const QJSValue kept = engine.globalObject();
        for (auto _ : state)
            benchmark::DoNotOptimize(engine.evaluate(inSource));
    });
}

/// A run that changes one of the keys, against three of the shortest runs plus Qt's own conversion of the
/// store.
void addGlobalChange(int inKeys, const std::string& inGoal)
{
    const std::string name = "run that changes 1 of " + std::to_string(inKeys) + " keys";
    const auto source = QStringLiteral("Global.key1 = (Global.key1 | 0) + 1; 0");
    benchmark::RegisterBenchmark((name + inGoal).c_str(), [=](benchmark::State& state) {
        setLogLines(0);
        fillGlobal(inKeys);
        KyScriptEngine engine(nullptr, -1);
        const KyScriptProgram program(source, QString(), -1);
        for (auto _ : state)
            benchmark::DoNotOptimize(engine.runScript(program, false, false));
    });
    benchmark::RegisterBenchmark((name + "/yardstick").c_str(), [=](benchmark::State& state) {
        setLogLines(0);
        fillGlobal(inKeys);
        const QVariantMap map = KyScriptGlobal::instance().values();
        fillGlobal(0);
        KyScriptEngine engine(nullptr, -1);
        const KyScriptProgram program(QStringLiteral("var x = (0 | 0) + 1; 0"), QString(), -1);
        for (auto _ : state) {
            for (int i = 0; i < 3; ++i)
                benchmark::DoNotOptimize(engine.runScript(program, false, false));
            QJSValue value = engine.toScriptValue(map);
            benchmark::DoNotOptimize(value.toVariant());
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const World world;

    const QString oneLiner = QStringLiteral("1 + 1");
    const QString small = sourceOf(1000), large = sourceOf(100000);
    addRun("run, one-liner, log off", "", oneLiner, 0, 0);
    addRun("run, one-liner, log at default", "", oneLiner, 1, 0);
    addRun("run, one-liner, 10 keys in Global", "", oneLiner, 0, 10);
    addRun("run, one-liner, 1000 keys in Global", "", oneLiner, 0, 1000);
    addRun("run, 1 KB, log off", "<=1.10", small, 0, 0);
    addRun("run, 1 KB, log at default", "", small, 1, 0);
    addRun("run, 1 KB, 10 keys in Global", "", small, 0, 10);
    addRun("run, 1 KB, 1000 keys in Global", "", small, 0, 1000);
    addRun("run, 100 KB, log off", "", large, 0, 0);
    addRun("run, 100 KB, log at default", "", large, 1, 0);
    addRun("run, 100 KB, 10 keys in Global", "", large, 0, 10);
    addRun("run, 100 KB, 1000 keys in Global", "", large, 0, 1000);
    addGlobalChange(1, "");
    addGlobalChange(10, "");
    addGlobalChange(1000, "<=1.0");
    return runWithRatios(argc, argv);
}

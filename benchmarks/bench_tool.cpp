// What the trigger of a script tool costs beside the bare evaluation of the text that it runs.

#include "RatioReport.h"

#include <kyscript/KyScriptTool.h>

#include <kybase/KyApplication.h>
#include <kybase/KyToolRegistry.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistry.h>

#include <benchmark/benchmark.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryFile>
#include <QtQml/QJSEngine>
#include <QtWidgets/QApplication>

namespace {

struct World
{
    OvRegistry registry{nullptr};
    OvPropertyPool pool;
    KyApplication application;
};

void setLogLines(int inLines)
{
    static_cast<OvProperty<int>*>(OvPropertyPool::instance()->variant("Scripting.LogNumLines"))->value =
        inLines;
}

/// A tool that runs \a inScript.
std::shared_ptr<KyTool> makeTool(const char* inKey, const QByteArray& inScript)
{
    QTemporaryFile file;
    if (!file.open())
        qFatal("cannot write a tool file");
    file.write(QByteArray("<Tools ScriptEngine='bench'><Tool Id='") + inKey + "'><OnSet><![CDATA[" +
               inScript + "]]></OnSet></Tool></Tools>");
    file.close();
    KyScriptTool::loadTools(QFile::encodeName(file.fileName()), nullptr);
    return KyToolRegistry::getToolByDecorationKey<KyTool>(inKey, true);
}

void addTrigger(const std::string& inName, const char* inKey, const QByteArray& inScript, int inLogLines)
{
    benchmark::RegisterBenchmark(inName.c_str(), [=](benchmark::State& state) {
        setLogLines(inLogLines);
        const auto tool = makeTool(inKey, inScript);
        for (auto _ : state)
            benchmark::DoNotOptimize(tool->process(nullptr, true));
    });
    benchmark::RegisterBenchmark((inName + "/yardstick").c_str(), [=](benchmark::State& state) {
        QJSEngine engine;
        const QJSValue kept = engine.globalObject();
        const QString wrapped = QStringLiteral("(function() { %1 })()").arg(QString::fromUtf8(inScript));
        for (auto _ : state)
            benchmark::DoNotOptimize(engine.evaluate(wrapped, QStringLiteral("tool.xml"), 2));
    });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const World world;
    // A comment alone: an empty script is not run at all.
    addTrigger("trigger of an empty tool", "empty", "/**/", 1);
    addTrigger("trigger of an empty tool, log off", "quiet", "/**/", 0);
    const int status = runWithRatios(argc, argv);
    KyScriptTool::clearTools();
    return status;
}

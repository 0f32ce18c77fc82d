// Building an engine, and calls between scripts and the host.

#include "RatioReport.h"

#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptAuthToken.h>
#include <kyscript/KyScriptBrowserCtrl.h>
#include <kyscript/KyScriptDialog.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptExternalObject.h>
#include <kyscript/KyScriptFileDialog.h>
#include <kyscript/KyScriptFileWriter.h>
#include <kyscript/KyScriptHttpRequest.h>
#include <kyscript/KyScriptIdGenerator.h>
#include <kyscript/KyScriptMessage.h>
#include <kyscript/KyScriptOrvane.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptRichEdit.h>
#include <kyscript/KyScriptRunner.h>
#include <kyscript/KyScriptServer.h>
#include <kyscript/KyScriptStudy.h>
#include <kyscript/KyScriptSystem.h>
#include <kyscript/KyScriptTimer.h>
#include <kyscript/KyScriptUrl.h>
#include <kyscript/KyScriptWebSocket.h>
#include <kyscript/KyScriptWebSocketServer.h>
#include <kyscript/KyScriptWord.h>
#include <kyscript/KyScriptXmlFileWriter.h>

#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistry.h>
#include <ovwebservice/DicomDirectoryEntry.h>

#include <benchmark/benchmark.h>

#include <QtWidgets/QApplication>

#include <cstdio>
#include <memory>
#include <vector>

/// Gives a constant: what a call costs by itself.
class Constant : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE QVariant getTag(QString) const { return QStringLiteral("1.2.3"); }
};

namespace {

template <class Body>
void add(const char* inName, Body inBody)
{
    benchmark::RegisterBenchmark(inName, [=](benchmark::State& state) { inBody(state); });
}

/// With one object made of it, as the engine checks it.
template <class T>
void addConstructible(QJSEngine& ioEngine, const char* inName)
{
    const QString name = QString::fromLatin1(inName);
    ioEngine.globalObject().setProperty(name, ioEngine.newQMetaObject(&T::staticMetaObject));
    benchmark::DoNotOptimize(ioEngine.evaluate(QStringLiteral("typeof new %1();").arg(name)));
}

void addInstances(QJSEngine& ioEngine, QJSValue& ioGlobal)
{
    const auto add = [&](const char* inName, QObject* inObject) {
        ioGlobal.setProperty(QString::fromLatin1(inName), ioEngine.newQObject(inObject));
    };
    add("Orvane", new KyScriptOrvane(&ioEngine));
    add("StudyList", new KyScriptStudyList(&ioEngine));
    add("Message", new KyScriptMessage(&ioEngine));
    add("Server", new KyScriptServer(&ioEngine));
    add("System", new KyScriptSystem(&ioEngine));
    add("Url", new KyScriptUrl(&ioEngine));
    add("WebSocketServer", new KyScriptWebSocketServer(&ioEngine, false));
    add("WebSocketServerSSL", new KyScriptWebSocketServer(&ioEngine, true));
}

/// The objects and functions of an engine with all options.
void fill(QJSEngine& ioEngine)
{
    QJSValue global = ioEngine.globalObject();
    auto* scope = new GlobalScope(&ioEngine);
    benchmark::DoNotOptimize(scope);
    addInstances(ioEngine, global);
    addConstructible<KyScriptXmlFileWriter>(ioEngine, "XmlFileWriter");
    addConstructible<KyScriptFileWriter>(ioEngine, "FileWriter");
    addConstructible<KyScriptFileDialog>(ioEngine, "FileDialog");
    addConstructible<KyScriptHttpRequest>(ioEngine, "HttpRequest");
    addConstructible<KyScriptAuthToken>(ioEngine, "AuthToken");
    addConstructible<KyScriptDialog>(ioEngine, "Dialog");
    addConstructible<KyScriptIdGenerator>(ioEngine, "IdGenerator");
    addConstructible<KyScriptWord>(ioEngine, "WordCtrl");
    addConstructible<KyScriptWebSocket>(ioEngine, "WebSocket");
    addConstructible<KyScriptBrowserCtrl>(ioEngine, "BrowserCtrl");
    addConstructible<KyScriptTimer>(ioEngine, "Timer");
    addConstructible<KyScriptRichEdit>(ioEngine, "RichEditCtrl");
    global.setProperty(QStringLiteral("Global"), ioEngine.newObject());
}

QStringList globalsOf(QJSEngine& ioEngine)
{
    QStringList names =
        ioEngine.evaluate(QStringLiteral("Object.getOwnPropertyNames(this)")).toVariant().toStringList();
    names.sort();
    return names;
}

/// A yardstick that lacks what an engine has makes a ratio that says nothing.
bool hasAllGlobals()
{
    KyScriptEngine engine(nullptr, -1);
    QJSEngine bare;
    fill(bare);
    if (globalsOf(engine) == globalsOf(bare))
        return true;
    std::fprintf(stderr, "bench_engine: fill() has other globals than an engine with all options\n");
    return false;
}

void addConstruction()
{
    if (!hasAllGlobals())
        return;
    add("engine with all options", [](benchmark::State& state) {
        for (auto _ : state)
            KyScriptEngine engine(nullptr, -1);
    });
    // The same objects and functions on a bare engine.
    add("engine with all options/yardstick", [](benchmark::State& state) {
        for (auto _ : state) {
            QJSEngine engine;
            fill(engine);
        }
    });
}

/// 1000 calls of study.getTag in a script.
void measureCalls(benchmark::State& state, QObject* inObject, const QString& inTag)
{
    KyScriptEngine engine(nullptr, 0);
    QJSEngine::setObjectOwnership(inObject, QJSEngine::CppOwnership);
    engine.globalObject().setProperty(QStringLiteral("study"), engine.newQObject(inObject));
    const QJSValue loop = engine.evaluate(
        QStringLiteral("(function() { for (var i = 0; i < 1000; ++i) study.getTag('%1'); })").arg(inTag));
    for (auto _ : state)
        benchmark::DoNotOptimize(loop.call());
}

void addGetTag()
{
    for (const char* tag : {"StudyInstanceUID", "StudyDate", "PatientName", "NoSuchKeyword"}) {
        const std::string name = "1000 x getTag DICOM." + std::string(tag);
        benchmark::RegisterBenchmark(name.c_str(), [tag](benchmark::State& state) {
            Ovg::DicomHeader header;
            header.setText(Ovg::DicomTagPath::fromText(QStringLiteral("StudyInstanceUID")),
                           QStringLiteral("1.2.3"));
            header.setText(Ovg::DicomTagPath::fromText(QStringLiteral("StudyDate")),
                           QStringLiteral("20240229"));
            header.setText(Ovg::DicomTagPath::fromText(QStringLiteral("PatientName")),
                           QStringLiteral("Doe^Jane"));
            KyScriptStudy study(std::make_shared<Ovg::DicomDirectoryEntry>(header));
            measureCalls(state, &study, QStringLiteral("DICOM.") + QLatin1String(tag));
        });
        benchmark::RegisterBenchmark((name + "/yardstick").c_str(), [](benchmark::State& state) {
            Constant constant;
            measureCalls(state, &constant, QStringLiteral("DICOM.StudyInstanceUID"));
        });
    }
}

void addFacade()
{
    const KyScriptProgram program(QStringLiteral("1 + 1"), QString(), -1);
    add("run through a facade", [=](benchmark::State& state) {
        KyScriptAbstractEngine facade(nullptr, -1);
        for (auto _ : state)
            benchmark::DoNotOptimize(facade.runScript(program, false, false, false));
    });
    add("run through a facade/yardstick", [=](benchmark::State& state) {
        KyScriptEngine engine(nullptr, -1);
        for (auto _ : state)
            benchmark::DoNotOptimize(engine.runScript(program, false, false, true));
    });
}

void addRunner()
{
    const KyScriptProgram program(QStringLiteral("function add(a, b) { return a + b; }"), QString(), -1);
    add("function called through a runner<=1.2", [=](benchmark::State& state) {
        KyScriptRunner runner;
        runner.initEngine(ScriptStudyList, program);
        const QJSValue function = runner.getGlobalFunction(QStringLiteral("add"));
        for (auto _ : state)
            benchmark::DoNotOptimize(runner.callFunction(function, 3, 4));
    });
    add("function called through a runner/yardstick", [=](benchmark::State& state) {
        KyScriptRunner runner;
        runner.initEngine(ScriptStudyList, program);
        const QJSValue function = runner.getGlobalFunction(QStringLiteral("add"));
        for (auto _ : state)
            benchmark::DoNotOptimize(function.call({QJSValue(3), QJSValue(4)}));
    });
}

void measureExternals(benchmark::State& state, int inCount)
{
    std::vector<std::unique_ptr<KyScriptExternalObject>> objects;
    for (int i = 0; i < inCount; ++i)
        objects.push_back(std::make_unique<KyScriptExternalObject>(
            nullptr, QStringLiteral("external%1").arg(i), ScriptExternalKindA));
    KyScriptEngine engine(nullptr, -1);
    QString source;
    for (int i = 0; i < 12; ++i)
        source +=
            QStringLiteral("function f%1(a, b) { var s = 'x' + a; if (b > %1) { s += b * 2; } return s; }\n")
                .arg(i);
    const KyScriptProgram program(source, QString(), -1);
    for (auto _ : state)
        benchmark::DoNotOptimize(engine.runScript(program, false, false));
}

void addExternals()
{
    add("run of 1 KB with 100 external objects<=1.3",
        [](benchmark::State& state) { measureExternals(state, 100); });
    add("run of 1 KB with 100 external objects/yardstick",
        [](benchmark::State& state) { measureExternals(state, 0); });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    OvRegistry registry(nullptr);
    OvPropertyPool pool;
    static_cast<OvProperty<int>*>(pool.variant("Scripting.LogNumLines"))->value = 0;

    addConstruction();
    addGetTag();
    addFacade();
    addRunner();
    addExternals();
    return runWithRatios(argc, argv);
}

#include "bench_engine.moc"

// Files that scripts read and write, against the same work without the script's object.

#include "RatioReport.h"

#include <kyscript/KyScriptEngine.h>

#include <benchmark/benchmark.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QXmlStreamWriter>
#include <QtWidgets/QApplication>

#include <functional>
#include <memory>

/// Writes to a file with nothing around it: what a script's write costs at least.
class BareFile : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void writeUtf8(QString inData) { file.write(inData.toUtf8()); }
    QFile file;
};

/// Takes the calls of a script's XML writer and does nothing: what the engine's calls cost.
class IdleWriter : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void writeStartElement(QString) {}
    Q_INVOKABLE void writeAttribute(QString, QString) {}
    Q_INVOKABLE void writeTextElement(QString, QString) {}
    Q_INVOKABLE void writeEndElement() {}
};

namespace {

constexpr int Elements = 100'000;

/// An engine with a folder, the same for both sides of a pair.
struct Bench
{
    Bench() { engine.globalObject().setProperty(QStringLiteral("D"), folder.path()); }

    void add(const char* inName, QObject* inObject)
    {
        QJSEngine::setObjectOwnership(inObject, QJSEngine::CppOwnership);
        engine.globalObject().setProperty(QString::fromLatin1(inName), engine.newQObject(inObject));
    }

    QJSValue function(const char* inBody)
    {
        return engine.evaluate(QStringLiteral("(function() { %1 })").arg(QString::fromLatin1(inBody)));
    }

    QTemporaryDir folder;
    KyScriptEngine engine{nullptr, ScriptFileWriter | ScriptXmlFileWriter | ScriptSystem};
};

void add(const char* inName, const std::function<void(benchmark::State&)>& inBody)
{
    benchmark::RegisterBenchmark(inName, inBody);
}

void addText()
{
    static const char* loop =
        "var text = 'x'.repeat(100); for (var i = 0; i < 1000000; ++i) w.writeUtf8(text);";
    add("1 000 000 x writeUtf8 of 100 characters<=1.5", [](benchmark::State& state) {
        Bench bench;
        bench.engine.evaluate(QStringLiteral("w = new FileWriter()"));
        const QJSValue open = bench.function("w.openFile(D, 'f', false)");
        const QJSValue close = bench.function("w.closeFile()");
        const QJSValue write = bench.function(loop);
        for (auto _ : state) {
            open.call();
            write.call();
            close.call();
        }
    });
    add("1 000 000 x writeUtf8 of 100 characters/yardstick", [](benchmark::State& state) {
        Bench bench;
        BareFile bare;
        bench.add("w", &bare);
        const QJSValue write = bench.function(loop);
        bare.file.setFileName(bench.folder.filePath(QStringLiteral("f.txt")));
        for (auto _ : state) {
            bare.file.open(QIODevice::WriteOnly);
            write.call();
            bare.file.close();
        }
    });
}

void writeElements(QXmlStreamWriter& ioWriter)
{
    const QString study = QStringLiteral("study"), uid = QStringLiteral("uid"), name = QStringLiteral("name"),
                  patient = QString::fromUtf8("Müller, Änne"), number = QStringLiteral("1.2.3.4.5");
    ioWriter.writeStartElement(QStringLiteral("studies"));
    for (int i = 0; i < Elements / 2; ++i) {
        ioWriter.writeStartElement(study);
        ioWriter.writeAttribute(uid, number);
        ioWriter.writeTextElement(name, patient);
        ioWriter.writeEndElement();
    }
    ioWriter.writeEndElement();
}

/// 50 000 elements with an attribute, each of which holds another with a text.
void addXml()
{
    static const char* loop = "w.writeStartElement('studies'); for (var i = 0; i < 50000; ++i) {"
                              "w.writeStartElement('study'); w.writeAttribute('uid', '1.2.3.4.5');"
                              "w.writeTextElement('name', 'M\\u00fcller, \\u00c4nne'); w.writeEndElement(); }"
                              "w.writeEndElement();";
    add("XML of 100 000 elements to a file<=1.5", [](benchmark::State& state) {
        Bench bench;
        bench.engine.evaluate(QStringLiteral("w = new XmlFileWriter()"));
        const QJSValue open = bench.function("w.openFile(D, 'f', false)");
        const QJSValue close = bench.function("w.closeFile()");
        const QJSValue write = bench.function(loop);
        for (auto _ : state) {
            open.call();
            write.call();
            close.call();
        }
    });
    add("XML of 100 000 elements to a file/yardstick", [](benchmark::State& state) {
        Bench bench;
        IdleWriter idle;
        bench.add("w", &idle);
        const QJSValue calls = bench.function(loop);
        for (auto _ : state) {
            QFile file(bench.folder.filePath(QStringLiteral("f.xml")));
            file.open(QIODevice::WriteOnly);
            QXmlStreamWriter writer(&file);
            calls.call();
            writeElements(writer);
        }
    });
    add("XML of 100 000 elements to the buffer<=1.5", [](benchmark::State& state) {
        Bench bench;
        bench.engine.evaluate(QStringLiteral("w = new XmlFileWriter()"));
        const QJSValue open = bench.function("w.buffer = ''; w.openBuffer()");
        const QJSValue write = bench.function(loop);
        for (auto _ : state) {
            open.call();
            write.call();
        }
    });
    add("XML of 100 000 elements to the buffer/yardstick", [](benchmark::State& state) {
        Bench bench;
        IdleWriter idle;
        bench.add("w", &idle);
        const QJSValue calls = bench.function(loop);
        for (auto _ : state) {
            QByteArray buffer;
            QXmlStreamWriter writer(&buffer);
            calls.call();
            writeElements(writer);
            benchmark::DoNotOptimize(buffer);
        }
    });
}

QString fileOf100MB(const QTemporaryDir& inFolder)
{
    QFile file(inFolder.filePath(QStringLiteral("large")));
    file.open(QIODevice::WriteOnly);
    QByteArray block(1'000'000, Qt::Uninitialized);
    for (qsizetype i = 0; i < block.size(); ++i)
        block[i] = char(i);
    for (int i = 0; i < 100; ++i)
        file.write(block);
    return file.fileName();
}

void addRead()
{
    add("fileReadAll of 100 MB<=1.5", [](benchmark::State& state) {
        Bench bench;
        const QJSValue read = bench.function("return System.fileReadAll(D + '/large').length");
        fileOf100MB(bench.folder);
        for (auto _ : state) {
            if (read.call().toInt() != 100'000'000)
                state.SkipWithError("not read");
            bench.engine.collectGarbage();
        }
    });
    add("fileReadAll of 100 MB/yardstick", [](benchmark::State& state) {
        Bench bench;
        const QString path = fileOf100MB(bench.folder);
        for (auto _ : state) {
            QFile file(path);
            file.open(QIODevice::ReadOnly);
            benchmark::DoNotOptimize(QString::fromLatin1(file.readAll()));
            bench.engine.collectGarbage();
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    addText();
    addXml();
    addRead();
    return runWithRatios(argc, argv);
}

#include "bench_files.moc"

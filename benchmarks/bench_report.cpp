// Report text of other programs and of the own editor, against the bare operations.

#include "RatioReport.h"

#include <kyscript/KyScriptEngine.h>

#include <kyreporttab/JxReport.h>
#include <kyreporttab/OvReportEditor.h>
#include <rnwin/RnSimulatedDesktop.h>

#include <benchmark/benchmark.h>

#include <QtGui/QTextCursor>
#include <QtGui/QTextDocument>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTextEdit>

#include <functional>

using Window = RnWindows::Window;

namespace {

void collect(RnWindows& inWindows, Window inParent, std::vector<Window>& outAll)
{
    for (Window child = inWindows.findWindowEx(inParent, 0); child;
         child = inWindows.findWindowEx(inParent, child))
    {
        outAll.push_back(child);
        collect(inWindows, child, outAll);
    }
}

/// The same walk with nothing but comparisons of texts.
Window bareSearch(RnWindows& inWindows)
{
    Window found = 0;
    std::vector<Window> all;
    inWindows.enumWindows([&](Window inTop) {
        const auto process = inWindows.openProcess(RnWindows::QueryAndRead, inWindows.processId(inTop));
        const std::u16string path = inWindows.moduleFileName(process, 260);
        inWindows.closeHandle(process);
        if (path.substr(path.rfind(u'\\') + 1) != u"Edit.exe")
            return true;
        all.clear();
        collect(inWindows, inTop, all);
        for (const Window window : all) {
            if (inWindows.className(window, 256) == u"RICHEDIT50W" && inWindows.isWindowVisible(window)) {
                found = window;
                return false;
            }
        }
        return true;
    });
    return found;
}

QString bareText(RnWindows& inWindows, Window inWindow)
{
    std::string buffer(std::size_t(inWindows.textLength(inWindow)) + 1, '\0');
    inWindows.text(inWindow, buffer.size(), buffer.data());
    return QString::fromStdU16String(inWindows.fromLocal8Bit(buffer.c_str()));
}

} // namespace

/// Finds and reads with nothing around the operations.
class BareControl : public QObject
{
    Q_OBJECT

public:
    explicit BareControl(RnWindows& inWindows)
        : mWindows(inWindows)
    {
        QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
    }

    Q_INVOKABLE QVariant getText() { return bareText(mWindows, bareSearch(mWindows)); }

private:
    RnWindows& mWindows;
};

namespace {

constexpr int TopLevels = 20;
constexpr int Controls = 100;

/// 2000 controls of one program. The last two of the last window are the report, of which one is on show: who
/// has known it must search for the other one.
struct Desktop
{
    Desktop()
    {
        const std::uint32_t process = desktop.addProcess(u"C:\\Program Files\\Edit\\Edit.exe");
        Window top = 0;
        for (int i = 0; i < TopLevels; ++i) {
            top = desktop.add({.process = process, .className = u"Frame", .title = u"Report of Doe"});
            for (int j = 0; j < Controls - (i == TopLevels - 1 ? 2 : 0); ++j)
                desktop.add({.parent = top, .className = j % 2 ? u"Static" : u"Button", .title = u"Name"});
        }
        for (Window& report : reports) {
            report = desktop.add(
                {.parent = top, .className = u"RICHEDIT50W", .kind = RnSimulatedDesktop::Kind::RichEdit});
        }
        change();
    }

    /// Each report has that many characters from now on.
    void write(int inCharacters)
    {
        const std::string text = (QByteArray(98, 'x') + "\r\n").repeated(inCharacters / 100).toStdString();
        for (const Window report : reports) {
            desktop.setSelection(report, 0, -1);
            desktop.replaceSelection(report, false, text);
        }
    }

    void change()
    {
        desktop.setVisible(reports[0], shown == 1);
        desktop.setVisible(reports[1], shown == 0);
        shown = 1 - shown;
    }

    RnSimulatedDesktop desktop;
    Window reports[2] = {};
    int shown = 0;
};

/// A desktop and two scripts that read the report from it, with engines of their own, all of which stay: what
/// an engine costs until it has found its size is none of this.
struct Stage
{
    Stage()
    {
        bareEngine.globalObject().setProperty(QStringLiteral("c"), bareEngine.newQObject(&control));
        engine.evaluate(QStringLiteral(
            "var c = new RichEditCtrl({ processName: 'Edit.exe', windowClassName: 'RICHEDIT*' });"));
        const QString read = QStringLiteral("(function () { return c.getText().length; })");
        script = engine.evaluate(read);
        bareScript = bareEngine.evaluate(read);
    }

    Desktop desktop;
    BareControl control{desktop.desktop};
    KyScriptEngine engine{nullptr, ScriptRichEditCtrl};
    KyScriptEngine bareEngine{nullptr, ScriptRichEditCtrl};
    QJSValue script;
    QJSValue bareScript;
};

void add(const char* inName, const std::function<void(benchmark::State&)>& inBody)
{
    benchmark::RegisterBenchmark(inName, inBody);
}

/// With an empty text this is the search alone.
void addControl(const char* inName, Stage& ioStage, QJSValue Stage::*inScript, int inCharacters)
{
    add(inName, [&ioStage, inScript, inCharacters](benchmark::State& state) {
        ioStage.desktop.write(inCharacters);
        for (auto _ : state) {
            ioStage.desktop.change();
            benchmark::DoNotOptimize((ioStage.*inScript).call().toInt());
        }
    });
}

/// 5 MB of paragraphs; what is to be replaced stands at the end.
void fill(QTextEdit& ioText)
{
    ioText.resize(600, 400);
    ioText.setPlainText((QString(99, QLatin1Char('x')) + QLatin1Char('\n')).repeated(50'000) +
                        QLatin1String("one"));
    ioText.document()->setUndoRedoEnabled(false);
}

void addDocument()
{
    add("replace in an own report of 5 MB<=1.2", [](benchmark::State& state) {
        QTextEdit text;
        fill(text);
        JxReport reports;
        Ovg::OvReportEditor report(&text);
        reports.setActiveReport(&report);
        KyScriptEngine engine(nullptr, ScriptRichEditCtrl);
        const QJSValue replace = engine.evaluate(
            QStringLiteral("var c = new RichEditCtrl({ windowClassName: 'OvReportEditor' });"
                           "(function () { c.replace('one', 'two'); c.replace('two', 'one'); })"));
        for (auto _ : state)
            replace.call();
    });
    add("replace in an own report of 5 MB/yardstick", [](benchmark::State& state) {
        QTextEdit text;
        fill(text);
        for (auto _ : state) {
            text.document()->find(QStringLiteral("one")).insertText(QStringLiteral("two"));
            text.document()->find(QStringLiteral("two")).insertText(QStringLiteral("one"));
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Stage stage;
    addControl("control among 2000, 120 000 characters read<=1.2", stage, &Stage::script, 120'000);
    addControl("control among 2000, 120 000 characters read/yardstick", stage, &Stage::bareScript, 120'000);
    addControl("control among 2000, no text", stage, &Stage::script, 0);
    addControl("control among 2000, no text/yardstick", stage, &Stage::bareScript, 0);
    addDocument();
    return runWithRatios(argc, argv);
}
#include "bench_report.moc"

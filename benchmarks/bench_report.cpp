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
    explicit Desktop(int inCharacters)
    {
        const std::uint32_t process = desktop.addProcess(u"C:\\Program Files\\Edit\\Edit.exe");
        Window top = 0;
        for (int i = 0; i < TopLevels; ++i) {
            top = desktop.add({.process = process, .className = u"Frame", .title = u"Report of Doe"});
            for (int j = 0; j < Controls - (i == TopLevels - 1 ? 2 : 0); ++j)
                desktop.add({.parent = top, .className = j % 2 ? u"Static" : u"Button", .title = u"Name"});
        }
        const std::u16string line = std::u16string(98, u'x') + u"\r\n";
        std::u16string text;
        while (int(text.size()) < inCharacters)
            text += line;
        for (Window& report : reports) {
            report = desktop.add({.parent = top,
                                  .className = u"RICHEDIT50W",
                                  .kind = RnSimulatedDesktop::Kind::RichEdit,
                                  .text = text});
        }
        change();
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

void add(const char* inName, const std::function<void(benchmark::State&)>& inBody)
{
    benchmark::RegisterBenchmark(inName, inBody);
}

/// With an empty text this is the search alone. Both sides are called by a script, which gets the text.
void addControl(const char* inName, const char* inYardstick, int inCharacters)
{
    add(inName, [inCharacters](benchmark::State& state) {
        Desktop stage(inCharacters);
        KyScriptEngine engine(nullptr, ScriptRichEditCtrl);
        const QJSValue read = engine.evaluate(QStringLiteral(
            "var c = new RichEditCtrl({ processName: 'Edit.exe', windowClassName: 'RICHEDIT*' });"
            "(function () { return c.getText().length; })"));
        for (auto _ : state) {
            stage.change();
            benchmark::DoNotOptimize(read.call().toInt());
        }
    });
    add(inYardstick, [inCharacters](benchmark::State& state) {
        Desktop stage(inCharacters);
        BareControl control(stage.desktop);
        KyScriptEngine engine(nullptr, ScriptRichEditCtrl);
        engine.globalObject().setProperty(QStringLiteral("c"), engine.newQObject(&control));
        const QJSValue read = engine.evaluate(QStringLiteral("(function () { return c.getText().length; })"));
        for (auto _ : state) {
            stage.change();
            benchmark::DoNotOptimize(read.call().toInt());
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
    addControl("control among 2000, 120 000 characters read<=1.2",
               "control among 2000, 120 000 characters read/yardstick", 120'000);
    addControl("control among 2000, no text", "control among 2000, no text/yardstick", 0);
    addDocument();
    return runWithRatios(argc, argv);
}
#include "bench_report.moc"

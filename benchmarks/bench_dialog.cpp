// Dialogs of scripts: from `new Dialog` to the first paint, and 1000 of them made and collected.

#include "RatioReport.h"

#include <common/KyHostPlatform.h>
#include <kyscript/KyScriptDialog.h>
#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptProgram.h>

#include <benchmark/benchmark.h>

#include <QtWidgets/QApplication>
#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextEdit>

#include <cstdio>
#include <cstdlib>

#include <malloc.h>

namespace {

constexpr int Many = 1000;
constexpr const char* Message = "What was found in this study, and what is to be done about it?";

/// Sees the first paint of any window with this title.
class FirstPaint final : public QObject
{
public:
    explicit FirstPaint(QString inTitle)
        : mTitle(std::move(inTitle))
    {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject* inObject, QEvent* inEvent) override
    {
        if (inEvent->type() == QEvent::Paint && !mHappened) {
            const auto* widget = qobject_cast<QWidget*>(inObject);
            mHappened = widget && widget->isWindow() && widget->windowTitle() == mTitle;
        }
        return false;
    }
    void wait() const
    {
        while (!mHappened)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

private:
    const QString mTitle;
    bool mHappened = false;
};

struct Stage
{
    Stage()
        : platform(KyHostOptions())
        , engine(nullptr, ScriptDialog)
    {}
    void run(const QString& inSource)
    {
        engine.runScript(KyScriptProgram(inSource, QString(), -1), false, false, false);
    }
    void collect()
    {
        engine.collectGarbage();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    KyHostPlatform platform;
    KyScriptEngine engine;
};

/// The same window by hand.
std::unique_ptr<QDialog> makeByHand(const QString& inTitle)
{
    auto dialog = std::make_unique<QDialog>(nullptr, Qt::Tool);
    dialog->setWindowTitle(inTitle);
    auto* message = new QLabel(QString::fromUtf8(Message));
    message->setWordWrap(true);
    message->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    auto* text = new QTextEdit;
    text->setPlainText(QStringLiteral("Some lines\nof text"));
    auto* line = new QLineEdit;
    line->setPlaceholderText(QStringLiteral("A word"));
    auto* box = new QDialogButtonBox;
    for (const char* button : {"Send", "Later", "Cancel"})
        box->addButton(QString::fromUtf8(button), QDialogButtonBox::AcceptRole);
    auto* column = new QVBoxLayout(dialog.get());
    column->addWidget(message);
    column->addWidget(text);
    column->addWidget(line);
    column->addWidget(box);
    dialog->resize(460, 340);
    line->setFocus();
    return dialog;
}

void addFirstPaint(Stage& ioStage)
{
    ioStage.run(
        QStringLiteral("make = function() { d = new Dialog({ title: 'T', message: '%1', editable: true,"
                       " fieldText: 'Some lines\\nof text', showLineEdit: true, lineEditEnabled: true,"
                       " lineEditPlaceholder: 'A word', buttons: ['Send', 'Later', 'Cancel'],"
                       " initialSize: [460, 340], context: 'Bench' }); d.show(); }")
            .arg(QString::fromUtf8(Message)));
    benchmark::RegisterBenchmark("dialog to its first paint<=1.30", [&ioStage](benchmark::State& state) {
        const QJSValue make = ioStage.engine.globalObject().property(QStringLiteral("make"));
        for (auto _ : state) {
            const FirstPaint paint(QStringLiteral("T"));
            make.call();
            paint.wait();
            state.PauseTiming();
            ioStage.run(QStringLiteral("d.close(); d = null"));
            ioStage.collect();
            state.ResumeTiming();
        }
    });
    benchmark::RegisterBenchmark("dialog to its first paint/yardstick", [](benchmark::State& state) {
        for (auto _ : state) {
            const FirstPaint paint(QStringLiteral("T"));
            auto dialog = makeByHand(QStringLiteral("T"));
            dialog->show();
            dialog->activateWindow();
            paint.wait();
            state.PauseTiming();
            dialog.reset();
            state.ResumeTiming();
        }
    });
}

std::size_t bytesInUse()
{
    return mallinfo2().uordblks;
}

/// Made and dropped in one run each, as scripts do, and collected at the end.
void makeMany(Stage& ioStage)
{
    ioStage.run(QStringLiteral(
                    "for (var i = 0; i < %1; ++i) { var x = new Dialog({ message: 'x', fieldText: 'y' }); }"
                    "x = null")
                    .arg(Many));
    ioStage.collect();
}

/// Ends the program when the memory grows by more than the allocator's own needs: a dialog that stays takes
/// some ten thousand bytes.
void checkGrowth(std::size_t inBefore, std::size_t inDialogs)
{
    constexpr long tolerated = 200;
    const long growth = long(bytesInUse()) - long(inBefore);
    std::fprintf(stderr, "memory grows by %.1f bytes a dialog\n", double(growth) / double(inDialogs));
    if (growth > tolerated * long(inDialogs))
        std::exit(1);
}

void addMany(Stage& ioStage)
{
    const auto name = std::to_string(Many) + " dialogs made and collected";
    benchmark::RegisterBenchmark(name.c_str(), [&ioStage](benchmark::State& state) {
        makeMany(ioStage);
        const std::size_t before = bytesInUse();
        std::size_t dialogs = 0;
        for (auto _ : state) {
            makeMany(ioStage);
            dialogs += Many;
        }
        checkGrowth(before, dialogs);
    })->Iterations(1);
    benchmark::RegisterBenchmark((name + "/yardstick").c_str(), [](benchmark::State& state) {
        for (auto _ : state) {
            std::vector<std::unique_ptr<QDialog>> dialogs;
            for (int i = 0; i < Many; ++i)
                dialogs.push_back(makeByHand(QString()));
        }
    })->Iterations(1);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    Stage stage;
    addFirstPaint(stage);
    addMany(stage);
    return runWithRatios(argc, argv);
}

#include "KyScriptingWindow.h"

#include "KyScriptInterface.h"
#include "KyScriptPrintBuffer.h"
#include "KyScriptProgram.h"
#include "ui_KyScriptingWindowBase.h"

#include <kybase/KyGUISizeManager.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <QtGui/QFontDatabase>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QToolTip>

#include <algorithm>

namespace {

constexpr const char* GroupId = "AdvancedSettings.ScriptingConsole";
constexpr const char* AutoIndentationId = "AdvancedSettings.ScriptingConsole.AutoIndentation";

constexpr int TabWidth = 4;
constexpr QSize InitialSize(640, 480);

/// What the output holds at most, in lines and characters: some 70 and 40 MB.
constexpr int OutputLines = 100'000;
constexpr int OutputCharacters = 20'000'000;

constexpr int NewEngineRetryInterval = 50; ///< In milliseconds.

int columnOf(const QTextCursor& inCursor)
{
    QTextCursor start = inCursor;
    start.movePosition(QTextCursor::StartOfLine);
    return inCursor.position() - start.position();
}

/// How many characters the previous tab stop is away.
int distanceToPreviousStop(int inColumn)
{
    const int rest = inColumn % TabWidth;
    return rest == 0 && inColumn != 0 ? TabWidth : rest;
}

QString newEngineToolTip(bool inMustWait)
{
    return inMustWait
               ? KyScriptingWindow::tr("A script of this engine is still running. The new engine comes when "
                                       "it has ended.")
               : KyScriptingWindow::tr("Ends this engine and starts a fresh one. Modules that hold the "
                                       "engine of this name lose it until the next start.");
}

} // namespace

KyScriptingWindow::KyScriptingWindow(const QString& inName, Engine inKind)
    : JxTopLevelWidget(nullptr, Qt::WindowFlags())
    , mUi(std::make_unique<Ui::KyScriptingWindowBase>())
    , mKind(inKind)
    , mName(inName)
{
    mUi->setupUi(this);
    const QString key = mName.isEmpty() ? QStringLiteral("unnamed") : mName;
    KyGUISizeManager::makeWidgetGeometryPersistent(this, QStringLiteral("ScriptingWindow.%1").arg(key),
                                                   InitialSize, QPoint(0, 0));
    connectEngine();
    KyScriptPrintBuffer& output = KyScriptPrintBuffer::of(*mUi->w_OutputText);
    output.keepNewest(OutputLines, OutputCharacters);
    connect(&output, &KyScriptPrintBuffer::trimmed, this,
            [this] { mUi->w_OutputGroup->setTitle(tr("Output (the oldest lines are left out)")); });

    if (mName.isEmpty())
        mUi->w_NewEngine->hide();
    else
        connect(mUi->w_NewEngine, &QPushButton::clicked, this, &KyScriptingWindow::slotNewEngine);
    mUi->w_NewEngine->setToolTip(newEngineToolTip(false));
    mUi->w_Evaluate->setShortcut(QKeySequence(Qt::Key_F5));
    mUi->w_Evaluate->setToolTip(tr("Run the selection, or else all of the input (F5)"));
    connect(mUi->w_Evaluate, &QPushButton::clicked, this, &KyScriptingWindow::slotEvaluate);
    mNewEngineRetry.setInterval(NewEngineRetryInterval);
    connect(&mNewEngineRetry, &QTimer::timeout, this, &KyScriptingWindow::slotNewEngine);

    makeKeyFilters();
    followProperty();
    setFonts();
}

KyScriptingWindow::~KyScriptingWindow() = default;

void KyScriptingWindow::registerProperties()
{
    OvTranslationProperty::translate(GroupId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Scripting Console"),
                                     nullptr);
    OvTranslationProperty::translate(
        AutoIndentationId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Automatic Indentation"), nullptr);
    OvPropertyPool::addRegisterProperties([](OvPropertyPool& ioPool) {
        ioPool.property<bool>(AutoIndentationId, true, ioPool.defaultSerializer());
    });
}

void KyScriptingWindow::connectEngine()
{
    mEngine = &KyScriptInterface::getInstance(mName);
    mEngine->redirectPrintOutput(mUi->w_OutputText);
}

void KyScriptingWindow::makeKeyFilters()
{
    const auto filter = [this](std::vector<int> keys, void (KyScriptingWindow::*action)()) {
        return new JxRunOnKeyPress(mUi->w_InputText, std::move(keys), [this, action] {
            (this->*action)();
            mUi->w_InputText->ensureCursorVisible();
        });
    };
    mTabFilter = filter({Qt::Key_Tab}, &KyScriptingWindow::indent);
    mBacktabFilter = filter({Qt::Key_Backtab}, &KyScriptingWindow::unindent);
    mReturnFilter = filter({Qt::Key_Enter, Qt::Key_Return}, &KyScriptingWindow::breakLine);
    mBackspaceFilter = filter({Qt::Key_Backspace}, &KyScriptingWindow::deleteBackward);
}

void KyScriptingWindow::followProperty()
{
    OvPropertyPool* pool = OvPropertyPool::instance();
    auto* property =
        pool ? pool->property<bool>(AutoIndentationId, false, pool->defaultSerializer()) : nullptr;
    if (!property)
        return;
    property->connectPropertyChangedSignal(
        this,
        [this](const OvVariant* changed) {
            slotAutoIndentation(static_cast<const OvProperty<bool>*>(changed)->value);
        },
        false);
    if (property->value)
        slotAutoIndentation(true);
}

void KyScriptingWindow::setFonts()
{
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // A font that is given in pixels has no points.
    if (font().pointSize() > 0)
        fixed.setPointSize(font().pointSize());
    mUi->w_InputText->setFont(fixed);
    mUi->w_OutputText->setFont(fixed);
}

void KyScriptingWindow::slotAutoIndentation(bool isOn)
{
    for (JxRunOnKeyPress* filter : {mTabFilter, mBacktabFilter, mReturnFilter, mBackspaceFilter}) {
        if (isOn)
            mUi->w_InputText->installEventFilter(filter);
        else
            mUi->w_InputText->removeEventFilter(filter);
    }
}

void KyScriptingWindow::slotEvaluate()
{
    if (mIsRunning) {
        QToolTip::showText(mUi->w_Evaluate->mapToGlobal(QPoint()),
                           tr("The script of this console is still running."), mUi->w_Evaluate);
        return;
    }
    KyScriptPrintBuffer::of(*mUi->w_OutputText).flush();
    mUi->w_OutputText->clear();
    mUi->w_OutputGroup->setTitle(QCoreApplication::translate("KyScriptingWindowBase", "Output"));
    if (!mEngine)
        return;
    const QPointer<KyScriptingWindow> self(this);
    mIsRunning = true;
    run(source());
    if (self)
        mIsRunning = false;
}

QString KyScriptingWindow::source() const
{
    const QTextCursor selection = mUi->w_InputText->textCursor();
    QString source = selection.hasSelection() ? selection.selectedText() : mUi->w_InputText->toPlainText();
    return source.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

void KyScriptingWindow::run(const QString& inSource)
{
    const QPointer<KyScriptingWindow> self(this);
    const QJSValue result = mEngine->runScript(KyScriptProgram(inSource, QString(), -1), false, false, true);
    if (!self)
        return;
    if (result.isError()) {
        showError(result);
        return;
    }
    const QString text = result.toString(); // runs a script's toString(), which may print or end the console
    if (!self)
        return;
    auto& output = KyScriptPrintBuffer::of(*mUi->w_OutputText);
    output.append(text);
    output.flush();
}

void KyScriptingWindow::showError(const QJSValue& inError)
{
    const int line = inError.property(QStringLiteral("lineNumber")).toInt();
    const QString message = inError.property(QStringLiteral("message")).toString();
    const QString stack = inError.property(QStringLiteral("stack")).toString();
    KyScriptPrintBuffer::of(*mUi->w_OutputText).flush(); // nothing printed may follow
    mUi->w_OutputText->setPlainText(tr("Error (Line: %1): %2").arg(QString::number(line), message) +
                                    QLatin1Char('\n') + stack);
}

QString KyScriptingWindow::evaluate(QString inInput)
{
    mUi->w_InputText->setPlainText(inInput);
    slotEvaluate();
    return mUi->w_OutputText->toPlainText();
}

void KyScriptingWindow::slotNewEngine()
{
    const bool mustWait = mEngine && mEngine->isOnStack();
    mUi->w_NewEngine->setEnabled(!mustWait);
    mUi->w_NewEngine->setToolTip(newEngineToolTip(mustWait));
    if (mustWait) {
        mNewEngineRetry.start();
        return;
    }
    mNewEngineRetry.stop();
    delete mEngine;
    connectEngine();
}

void KyScriptingWindow::indent()
{
    QTextCursor cursor = mUi->w_InputText->textCursor();
    cursor.insertText(QString(TabWidth - columnOf(cursor) % TabWidth, QLatin1Char(' ')));
}

void KyScriptingWindow::unindent()
{
    QTextCursor step = mUi->w_InputText->textCursor();
    int rest = distanceToPreviousStop(columnOf(step)); // asked first: lines are not known within an edit
    step.beginEditBlock();
    for (; rest > 0; --rest) {
        QTextCursor cursor = mUi->w_InputText->textCursor();
        cursor.movePosition(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor);
        if (!cursor.selectedText().trimmed().isEmpty())
            break;
        cursor.removeSelectedText();
    }
    step.endEditBlock();
}

void KyScriptingWindow::breakLine()
{
    QTextCursor line = mUi->w_InputText->textCursor();
    line.movePosition(QTextCursor::StartOfLine);
    line.movePosition(QTextCursor::EndOfLine, QTextCursor::KeepAnchor);
    const QString text = line.selectedText();
    const auto isSpace = [](QChar c) { return c.isSpace(); };
    const auto indentation = std::find_if_not(text.begin(), text.end(), isSpace) - text.begin();

    mUi->w_InputText->textCursor().insertText(QLatin1Char('\n') + QString(indentation, QLatin1Char(' ')));
}

void KyScriptingWindow::deleteBackward()
{
    QTextCursor cursor = mUi->w_InputText->textCursor();
    if (cursor.hasSelection()) {
        cursor.removeSelectedText();
        return;
    }
    QTextCursor before = cursor;
    before.movePosition(QTextCursor::StartOfLine, QTextCursor::KeepAnchor);
    // Column 0 in the midst of a block is where a long line is wrapped.
    if (columnOf(cursor) == 0 || !before.selectedText().trimmed().isEmpty()) {
        cursor.deletePreviousChar();
        return;
    }
    const int rest = distanceToPreviousStop(columnOf(cursor));
    cursor.movePosition(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor, rest);
    cursor.removeSelectedText();
}

JxRunOnKeyPress::JxRunOnKeyPress(QObject* inParent, std::vector<int> inKeys, std::function<void()> inFunction)
    : QObject(inParent)
    , mKeys(std::move(inKeys))
    , mFunction(std::move(inFunction))
{}

bool JxRunOnKeyPress::eventFilter(QObject*, QEvent* inEvent)
{
    if (inEvent->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<QKeyEvent*>(inEvent)->key();
    if (std::find(mKeys.begin(), mKeys.end(), key) == mKeys.end())
        return false;
    mFunction();
    return true;
}

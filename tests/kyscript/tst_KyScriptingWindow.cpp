#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/CodeEditor.h>
#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptingWindow.h>
#include <ovbase/OvTranslationProperty.h>

#include <QAction>
#include <QApplication>
#include <QEventLoop>
#include <QFontDatabase>
#include <QGroupBox>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QTextBlock>
#include <QTextEdit>
#include <QTextLayout>
#include <QToolTip>
#include <QVBoxLayout>

#include <functional>
#include <optional>

/// Gives scripts a way out into the test.
class Outside : public QObject
{
    Q_OBJECT
public:
    std::function<void()> action;
    Q_INVOKABLE void act() { action(); }
Q_SIGNALS:
    void fired();
};

class tst_KyScriptingWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void formHasItsWidgets();
    void defaultEngineCannotBeReplaced();
    void namedEngineCanBeReplaced();
    void fontIsFixedAndOfTheWindowsSize();
    void propertyIsRegisteredWithItsLabels();
    void firstGeometryIsTheInitialOne();
    void geometryIsKeptByTheNameOfTheEngine_data();
    void geometryIsKeptByTheNameOfTheEngine();

    void tabGoesToTheNextStop_data();
    void tabGoesToTheNextStop();
    void tabReplacesTheSelection();
    void backtabGoesToThePreviousStop_data();
    void backtabGoesToThePreviousStop();
    void returnKeepsTheIndentation_data();
    void returnKeepsTheIndentation();
    void returnKeepsTheCursorOnView();
    void backspaceDeletesByStopsInLeadingSpace_data();
    void backspaceDeletesByStopsInLeadingSpace();
    void backspaceDeletesTheSelection();
    void indentationIsUndoneInOneStep();
    void keysCountColumnsFromTheWrapOfALongLine_data();
    void keysCountColumnsFromTheWrapOfALongLine();
    void otherKeysAreTyped();

    void indentationIsTurnedOffInTheRunningSession();
    void indentationIsTurnedOnInTheRunningSession();
    void consoleWithoutPropertiesIsAPlainEditor();
    void filterRunsOnlyOnItsKeysBeingPressed();

    void valueIsShown_data();
    void valueIsShown();
    void evaluateButtonRunsWhatIsTyped();
    void evaluateHasAKey();
    void printedLinesStandAboveTheValue();
    void valueWhoseTextPrintsStandsBelowWhatItPrinted();
    void eachEvaluationClearsTheOutput();
    void onlyTheSelectionRuns();
    void selectionOverLinesKeepsItsLineBreaks();
    void declarationsStay();
    void errorReplacesWhatWasPrinted();
    void errorTellsLineAndStack();
    void errorMessageIsPlainText();
    void consoleWithoutItsEngineOnlyClears();
    void consoleCanEndDuringItsRun();
    void evaluationWaitsForNoOther();
    void otherConsoleEvaluatesMeanwhile();
    void evaluateSetsTheInput();

    void hundredThousandLinesStandThere();
    void outputIsBounded();

    void newEngineForgetsAndPrintsOn();
    void newEngineEndsWhatTheOldOneRegistered();
    void facadeStaysWithTheOldEngine();
    void newEngineWaitsForTheRun();
    void newEngineWaitsForAHandler();
    void newEngineWaitsForARunOfOthers();
    void consoleCanEndWhileItWaits();

    void showConsoleTakesTheNameOfTheAction();
    void showConsoleWithoutAnActionIsTheDefaultEngine();
    void closedConsoleComesBackWithItsText();
    void minimizedConsoleComesBack();

private:
    /// A console on an engine that no other test uses.
    KyScriptingWindow& console();
    QString name() const { return QTest::currentTestFunction(); }
    KyScriptInterface& engine() const { return KyScriptInterface::getInstance(name()); }
    CodeEditor& input() { return *console().findChild<CodeEditor*>("w_InputText"); }
    QTextEdit& output() { return *console().findChild<QTextEdit*>("w_OutputText"); }
    QPushButton& newEngine() { return *console().findChild<QPushButton*>("w_NewEngine"); }
    void clickEvaluate();
    /// The input's text with the cursor at a position.
    void setInput(const QString& inText, int inPosition);
    /// Makes `outside` a global, with what its act() does.
    Outside& publish(std::function<void()> inAction);

    std::optional<KyTestPlatform> mPlatform;
    std::optional<ContractWatch> mContracts;
    std::unique_ptr<KyScriptingWindow> mConsole;
    std::unique_ptr<Outside> mOutside;
};

namespace {

constexpr const char* sAutoIndentation = "AdvancedSettings.ScriptingConsole.AutoIndentation";

QWidget* topLevel(const QString& inTitle)
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->windowTitle() == inTitle)
            return widget;
    }
    return nullptr;
}

} // namespace

void tst_KyScriptingWindow::init()
{
    mPlatform.emplace();
    mContracts.emplace();
}

void tst_KyScriptingWindow::cleanup()
{
    mConsole.reset();
    mOutside.reset();
    mPlatform.reset();
    const QString broken = mContracts->verify();
    mContracts.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

KyScriptingWindow& tst_KyScriptingWindow::console()
{
    if (!mConsole) {
        mConsole = std::make_unique<KyScriptingWindow>(name(), KyScriptingWindow::Engine(1));
        mConsole->show();
        (void)QTest::qWaitForWindowExposed(mConsole.get());
    }
    return *mConsole;
}

void tst_KyScriptingWindow::clickEvaluate()
{
    QTest::mouseClick(console().findChild<QPushButton*>("w_Evaluate"), Qt::LeftButton);
}

void tst_KyScriptingWindow::setInput(const QString& inText, int inPosition)
{
    input().setPlainText(inText);
    QTextCursor cursor = input().textCursor();
    cursor.setPosition(inPosition);
    input().setTextCursor(cursor);
}

Outside& tst_KyScriptingWindow::publish(std::function<void()> inAction)
{
    mOutside = std::make_unique<Outside>();
    mOutside->action = std::move(inAction);
    QJSEngine::setObjectOwnership(mOutside.get(), QJSEngine::CppOwnership);
    engine().globalObject().setProperty("outside", engine().newQObject(mOutside.get()));
    return *mOutside;
}

void tst_KyScriptingWindow::formHasItsWidgets()
{
    KyScriptingWindow& window = console();
    QCOMPARE(window.objectName(), QStringLiteral("KyScriptingWindowBase"));
    QCOMPARE(window.windowTitle(), QStringLiteral("Console"));
    QVERIFY(window.isWindow() && !window.parent());
    QCOMPARE(window.layout()->objectName(), QStringLiteral("verticalLayout"));

    auto* splitter = window.findChild<QSplitter*>("splitter");
    QCOMPARE(splitter->orientation(), Qt::Vertical);
    auto* inputGroup = window.findChild<QGroupBox*>("w_InputGroup");
    auto* outputGroup = window.findChild<QGroupBox*>("w_OutputGroup");
    QCOMPARE(splitter->widget(0), inputGroup);
    QCOMPARE(splitter->widget(1), outputGroup);
    QCOMPARE(inputGroup->title(), QStringLiteral("Input"));
    QCOMPARE(outputGroup->title(), QStringLiteral("Output"));
    QCOMPARE(inputGroup->sizePolicy().verticalStretch(), 3);
    QCOMPARE(outputGroup->sizePolicy().verticalStretch(), 1);
    QCOMPARE(inputGroup->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(input().parentWidget(), inputGroup);
    QCOMPARE(inputGroup->layout()->objectName(), QStringLiteral("horizontalLayout_3"));
    QCOMPARE(input().sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(input().sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(output().parentWidget(), outputGroup);
    QCOMPARE(outputGroup->layout()->objectName(), QStringLiteral("horizontalLayout_2"));
    QVERIFY(output().isReadOnly());
    QVERIFY(!output().acceptRichText());
    QVERIFY(!input().isReadOnly());

    auto* buttons = window.layout()->itemAt(1)->layout();
    QCOMPARE(buttons->objectName(), QStringLiteral("horizontalLayout"));
    QCOMPARE(buttons->itemAt(0)->widget(), &newEngine());
    QVERIFY(buttons->itemAt(1)->spacerItem());
    auto* evaluate = qobject_cast<QPushButton*>(buttons->itemAt(2)->widget());
    QCOMPARE(evaluate->objectName(), QStringLiteral("w_Evaluate"));
    QCOMPARE(evaluate->text(), QStringLiteral("Evaluate"));
    QCOMPARE(newEngine().text(), QStringLiteral("New Engine"));
}

void tst_KyScriptingWindow::defaultEngineCannotBeReplaced()
{
    KyScriptingWindow window(QString(), KyScriptingWindow::JavaScriptEngine);
    window.show();
    auto* button = window.findChild<QPushButton*>("w_NewEngine");
    QVERIFY(!button->isVisible());
    const QPointer<KyScriptInterface> engine = &KyScriptInterface::getInstance(QString());
    button->click();
    QVERIFY(engine);
}

void tst_KyScriptingWindow::namedEngineCanBeReplaced()
{
    QVERIFY(newEngine().isVisible());
    QVERIFY(newEngine().isEnabled());
    QVERIFY(!newEngine().toolTip().isEmpty());
}

void tst_KyScriptingWindow::fontIsFixedAndOfTheWindowsSize()
{
    QFont expected = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    expected.setPointSize(console().font().pointSize());
    QCOMPARE(input().font().family(), expected.family());
    QCOMPARE(input().font().pointSize(), console().font().pointSize());
    QCOMPARE(output().font().family(), expected.family());
    QCOMPARE(output().font().pointSize(), console().font().pointSize());
}

void tst_KyScriptingWindow::propertyIsRegisteredWithItsLabels()
{
    const OvVariant* property = mPlatform->pool.variant(sAutoIndentation);
    QVERIFY(property);
    QVERIFY(property->isType<bool>());
    QCOMPARE(property->toQString(), QStringLiteral("true"));
    QCOMPARE(property->serializer(), mPlatform->pool.defaultSerializer());
    QCOMPARE(OvTranslationProperty::label("AdvancedSettings.ScriptingConsole"),
             QStringLiteral("Scripting Console"));
    QCOMPARE(OvTranslationProperty::label(sAutoIndentation), QStringLiteral("Automatic Indentation"));
}

void tst_KyScriptingWindow::firstGeometryIsTheInitialOne()
{
    QCOMPARE(console().size(), QSize(640, 480));
    QCOMPARE(console().pos(), console().screen()->availableGeometry().topLeft());
}

void tst_KyScriptingWindow::geometryIsKeptByTheNameOfTheEngine_data()
{
    QTest::addColumn<QString>("engineName");
    QTest::addColumn<QString>("key");
    QTest::newRow("default engine") << ""
                                    << "ScriptingWindow.unnamed";
    QTest::newRow("named engine") << "geometry"
                                  << "ScriptingWindow.geometry";
}

void tst_KyScriptingWindow::geometryIsKeptByTheNameOfTheEngine()
{
    QFETCH(QString, engineName);
    QFETCH(QString, key);
    {
        KyScriptingWindow window(engineName, KyScriptingWindow::JavaScriptEngine);
        window.show();
        window.setGeometry(40, 50, 433, 322);
        window.close();
    }
    OvRegistry::Value stored;
    QVERIFY(mPlatform->registry.getProperty("GUI.Geometry." + key, stored));
    KyScriptingWindow window(engineName, KyScriptingWindow::JavaScriptEngine);
    window.show();
    QCOMPARE(window.geometry(), QRect(40, 50, 433, 322));
}

void tst_KyScriptingWindow::tabGoesToTheNextStop_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("0") << "|"
                       << "    |";
    QTest::newRow("1") << "a|"
                       << "a   |";
    QTest::newRow("2") << "ab|"
                       << "ab  |";
    QTest::newRow("3") << "abc|"
                       << "abc |";
    QTest::newRow("4") << "abcd|"
                       << "abcd    |";
    QTest::newRow("5") << "abcde|"
                       << "abcde   |";
    QTest::newRow("within text") << "a|bc"
                                 << "a   |bc";
    QTest::newRow("second line") << "abc\nx|"
                                 << "abc\nx   |";
}

void tst_KyScriptingWindow::tabGoesToTheNextStop()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    setInput(QString(before).remove('|'), int(before.indexOf('|')));
    QTest::keyClick(&input(), Qt::Key_Tab);
    QCOMPARE(input().toPlainText(), QString(after).remove('|'));
    QCOMPARE(input().textCursor().position(), int(after.indexOf('|')));
}

void tst_KyScriptingWindow::tabReplacesTheSelection()
{
    setInput("abcdef", 1);
    QTextCursor cursor = input().textCursor();
    cursor.setPosition(5, QTextCursor::KeepAnchor);
    input().setTextCursor(cursor);
    QTest::keyClick(&input(), Qt::Key_Tab);
    QCOMPARE(input().toPlainText(), QStringLiteral("a   f"));
}

void tst_KyScriptingWindow::backtabGoesToThePreviousStop_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("stops at other text") << "    x |"
                                         << "    x|";
    QTest::newRow("column 0") << "|  a"
                              << "|  a";
    QTest::newRow("column 0 of a later line") << "a\n|b"
                                              << "a\n|b";
    QTest::newRow("8 spaces") << "        |"
                              << "    |";
    QTest::newRow("6 spaces") << "      |"
                              << "    |";
    QTest::newRow("5 spaces") << "     |x"
                              << "    |x";
    QTest::newRow("3 spaces") << "   |"
                              << "|";
    QTest::newRow("behind text") << "ab|"
                                 << "ab|";
    QTest::newRow("spaces behind text") << "abc     |"
                                        << "abc |";
    QTest::newRow("a tab counts as white space") << "\t|"
                                                 << "|";
}

void tst_KyScriptingWindow::backtabGoesToThePreviousStop()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    setInput(QString(before).remove('|'), int(before.indexOf('|')));
    QTest::keyClick(&input(), Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(input().toPlainText(), QString(after).remove('|'));
    QCOMPARE(input().textCursor().position(), int(after.indexOf('|')));
}

void tst_KyScriptingWindow::returnKeepsTheIndentation_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("at the end") << "    foo bar|"
                                << "    foo bar\n    |";
    QTest::newRow("in the middle") << "    foo| bar"
                                   << "    foo\n    | bar";
    QTest::newRow("within the indentation") << "  |  foo bar"
                                            << "  \n    |  foo bar";
    QTest::newRow("at the start") << "|    foo bar"
                                  << "\n    |    foo bar";
    QTest::newRow("no indentation") << "foo|"
                                    << "foo\n|";
    QTest::newRow("empty") << "|"
                           << "\n|";
    QTest::newRow("a tab becomes one space") << "\t  foo|"
                                             << "\t  foo\n   |";
    QTest::newRow("only white space") << "   |"
                                      << "   \n   |";
    QTest::newRow("braces don't count") << "  if (x) {|"
                                        << "  if (x) {\n  |";
    QTest::newRow("only this line counts") << "    a\nb|"
                                           << "    a\nb\n|";
}

void tst_KyScriptingWindow::returnKeepsTheIndentation()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        setInput(QString(before).remove('|'), int(before.indexOf('|')));
        QTest::keyClick(&input(), key);
        QCOMPARE(input().toPlainText(), QString(after).remove('|'));
        QCOMPARE(input().textCursor().position(), int(after.indexOf('|')));
    }
}

void tst_KyScriptingWindow::returnKeepsTheCursorOnView()
{
    input().setFocus();
    for (int i = 0; i < 60; ++i)
        QTest::keyClick(&input(), Qt::Key_Return);
    QCOMPARE(input().blockCount(), 61);
    QVERIFY(input().viewport()->rect().contains(input().cursorRect()));
}

void tst_KyScriptingWindow::backspaceDeletesByStopsInLeadingSpace_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("column 8 of eight spaces") << "        |"
                                              << "    |";
    QTest::newRow("column 6 of six spaces") << "      |"
                                            << "    |";
    QTest::newRow("column 7 of abc and four spaces") << "abc    |"
                                                     << "abc   |";
    QTest::newRow("column 4 before text") << "    |x"
                                          << "|x";
    QTest::newRow("column 1") << " |x"
                              << "|x";
    QTest::newRow("behind text") << "abc|"
                                 << "ab|";
    QTest::newRow("start of a line") << "ab\n|cd"
                                     << "ab|cd";
    QTest::newRow("start of the text") << "|ab"
                                       << "|ab";
    QTest::newRow("tabs are white space") << "\t\t|x"
                                          << "|x";
}

void tst_KyScriptingWindow::backspaceDeletesByStopsInLeadingSpace()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    setInput(QString(before).remove('|'), int(before.indexOf('|')));
    QTest::keyClick(&input(), Qt::Key_Backspace);
    QCOMPARE(input().toPlainText(), QString(after).remove('|'));
    QCOMPARE(input().textCursor().position(), int(after.indexOf('|')));
}

void tst_KyScriptingWindow::backspaceDeletesTheSelection()
{
    setInput("        x", 6);
    QTextCursor cursor = input().textCursor();
    cursor.setPosition(8, QTextCursor::KeepAnchor);
    input().setTextCursor(cursor);
    QTest::keyClick(&input(), Qt::Key_Backspace);
    QCOMPARE(input().toPlainText(), QStringLiteral("      x"));
}

void tst_KyScriptingWindow::indentationIsUndoneInOneStep()
{
    setInput("        x", 8);
    QTest::keyClick(&input(), Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(input().toPlainText(), QStringLiteral("    x"));
    input().undo();
    QCOMPARE(input().toPlainText(), QStringLiteral("        x"));
}

/// The start of a line is that of the line on view. The window is as narrow as it takes to break the text at
/// its only blank run.
void tst_KyScriptingWindow::keysCountColumnsFromTheWrapOfALongLine_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("tab at the wrap") << int(Qt::Key_Tab) << " |bbb"
                                     << "     |bbb";
    QTest::newRow("tab in column 2") << int(Qt::Key_Tab) << " bb|b"
                                     << " bb  |b";
    QTest::newRow("backtab at the wrap") << int(Qt::Key_Backtab) << " |bbb"
                                         << " |bbb";
    QTest::newRow("return at the wrap") << int(Qt::Key_Return) << " |bbb"
                                        << " \n|bbb";
    QTest::newRow("return behind it") << int(Qt::Key_Return) << " bb|b"
                                      << " bb\n|b";
    QTest::newRow("backspace at the wrap") << int(Qt::Key_Backspace) << " |bbb"
                                           << "|bbb";
    QTest::newRow("backspace behind text") << int(Qt::Key_Backspace) << " bb|b"
                                           << " b|b";
}

void tst_KyScriptingWindow::keysCountColumnsFromTheWrapOfALongLine()
{
    QFETCH(int, key);
    QFETCH(QString, before);
    QFETCH(QString, after);
    // One line has room for all but the last two letters and the blank in front of them.
    const qreal margins = 2 * input().document()->documentMargin();
    const qreal letter = QFontMetricsF(input().font()).horizontalAdvance('a');
    const int room = int((input().viewport()->width() - margins) / letter);
    const QString head = "    " + QString(room - 6, 'a');
    const QString text = QString(before).remove('|');
    setInput(head + text, int(head.size() + before.indexOf('|')));
    QTRY_COMPARE(input().document()->firstBlock().layout()->lineCount(), 2);
    QCOMPARE(input().document()->firstBlock().layout()->lineAt(1).textStart(), int(head.size()) + 1);

    QTest::keyClick(&input(), Qt::Key(key), key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
    QCOMPARE(input().toPlainText(), head + QString(after).remove('|'));
    QCOMPARE(input().textCursor().position(), int(head.size() + after.indexOf('|')));
}

void tst_KyScriptingWindow::otherKeysAreTyped()
{
    QTest::keyClicks(&input(), "if (a) { b }");
    QTest::keyClick(&input(), Qt::Key_Home);
    QTest::keyClick(&input(), Qt::Key_Delete);
    QCOMPARE(input().toPlainText(), QStringLiteral("f (a) { b }"));
}

void tst_KyScriptingWindow::indentationIsTurnedOffInTheRunningSession()
{
    QTest::keyClick(&input(), Qt::Key_Tab);
    QCOMPARE(input().toPlainText(), QStringLiteral("    "));
    QVERIFY(mPlatform->pool.variant(sAutoIndentation)->setValueFromQString("false"));
    QTest::keyClick(&input(), Qt::Key_Tab);
    QCOMPARE(input().toPlainText(), QStringLiteral("    \t"));
    QTest::keyClick(&input(), Qt::Key_Return);
    QCOMPARE(input().toPlainText(), QStringLiteral("    \t\n"));
    setInput("        ", 8);
    QTest::keyClick(&input(), Qt::Key_Backspace);
    QCOMPARE(input().toPlainText(), QStringLiteral("       "));
}

void tst_KyScriptingWindow::indentationIsTurnedOnInTheRunningSession()
{
    mPlatform->pool.variant(sAutoIndentation)->setValueFromQString("false");
    QTest::keyClick(&input(), Qt::Key_Tab);
    QCOMPARE(input().toPlainText(), QStringLiteral("\t"));
    mPlatform->pool.variant(sAutoIndentation)->setValueFromQString("true");
    input().clear();
    QTest::keyClick(&input(), Qt::Key_Tab);
    QCOMPARE(input().toPlainText(), QStringLiteral("    "));
}

void tst_KyScriptingWindow::consoleWithoutPropertiesIsAPlainEditor()
{
    mPlatform.reset();
    QTest::keyClick(&input(), Qt::Key_Tab);
    QCOMPARE(input().toPlainText(), QStringLiteral("\t"));
    console().slotAutoIndentation(true);
    QTest::keyClick(&input(), Qt::Key_Tab);
    QCOMPARE(input().toPlainText(), QStringLiteral("\t   "));
    mConsole.reset();
}

void tst_KyScriptingWindow::filterRunsOnlyOnItsKeysBeingPressed()
{
    int runs = 0;
    QObject parent;
    auto* filter = new JxRunOnKeyPress(&parent, {Qt::Key_A, Qt::Key_F1}, [&] { ++runs; });
    const auto filtered = [&](QEvent::Type type, Qt::Key key,
                              Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QKeyEvent event(type, key, modifiers);
        return filter->eventFilter(&parent, &event);
    };
    QVERIFY(filtered(QEvent::KeyPress, Qt::Key_A));
    QVERIFY(filtered(QEvent::KeyPress, Qt::Key_F1, Qt::ControlModifier));
    QCOMPARE(runs, 2);
    QVERIFY(!filtered(QEvent::KeyPress, Qt::Key_B));
    QVERIFY(!filtered(QEvent::KeyRelease, Qt::Key_A));
    QVERIFY(!filtered(QEvent::ShortcutOverride, Qt::Key_A));
    QEvent other(QEvent::User);
    QVERIFY(!filter->eventFilter(&parent, &other));
    QCOMPARE(runs, 2);
    QCOMPARE(input().findChildren<JxRunOnKeyPress*>(QString(), Qt::FindDirectChildrenOnly).size(), 4);
}

void tst_KyScriptingWindow::valueIsShown_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("shown");
    QTest::newRow("number") << "1 + 1"
                            << "2";
    QTest::newRow("text") << "'a' + 'b'"
                          << "ab";
    QTest::newRow("nothing") << "var x = 1"
                             << "undefined";
    QTest::newRow("empty") << ""
                           << "undefined";
    QTest::newRow("null") << "null"
                          << "null";
    QTest::newRow("array") << "[1, 2]"
                           << "1,2";
    QTest::newRow("object") << "({})"
                            << "[object Object]";
    QTest::newRow("last of several") << "1;\n2;\n3"
                                     << "3";
    QTest::newRow("thrown text is a value") << "throw 'x'"
                                            << "x";
    QTest::newRow("studies") << "StudyList.get('ALL_STUDIES_OF_PATIENT').length"
                             << "0";
}

void tst_KyScriptingWindow::valueIsShown()
{
    QFETCH(QString, source);
    QFETCH(QString, shown);
    input().setPlainText(source);
    clickEvaluate();
    QCOMPARE(output().toPlainText(), shown);
}

void tst_KyScriptingWindow::evaluateButtonRunsWhatIsTyped()
{
    QTest::keyClicks(&input(), "var sum = 0;");
    QTest::keyClick(&input(), Qt::Key_Return);
    QTest::keyClicks(&input(), "for (var i = 0; i < 4; ++i) {");
    QTest::keyClick(&input(), Qt::Key_Return);
    QTest::keyClick(&input(), Qt::Key_Tab);
    QTest::keyClicks(&input(), "sum += i;");
    QTest::keyClick(&input(), Qt::Key_Return);
    QTest::keyClick(&input(), Qt::Key_Backspace);
    QTest::keyClicks(&input(), "}");
    QCOMPARE(input().toPlainText(),
             QStringLiteral("var sum = 0;\nfor (var i = 0; i < 4; ++i) {\n    sum += i;\n}"));
    clickEvaluate();
    QCOMPARE(output().toPlainText(), QStringLiteral("6"));
}

void tst_KyScriptingWindow::evaluateHasAKey()
{
    console().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&console()));
    input().setFocus();
    QTest::keyClicks(&input(), "6 * 7");
    QTest::keyClick(&input(), Qt::Key_F5);
    QTRY_COMPARE(output().toPlainText(), QStringLiteral("42"));
}

void tst_KyScriptingWindow::valueWhoseTextPrintsStandsBelowWhatItPrinted()
{
    QCOMPARE(console().evaluate("for (var i = 0; i < 200; ++i) print(i);"
                                "({ toString: function() { print('late'); return 'value'; } })"),
             console().evaluate("for (var i = 0; i < 200; ++i) print(i); print('late'); 'value'"));
}

void tst_KyScriptingWindow::printedLinesStandAboveTheValue()
{
    QCOMPARE(console().evaluate("print('a', 1); print('b'); 'value'"), QStringLiteral("a 1\nb\nvalue"));
}

void tst_KyScriptingWindow::eachEvaluationClearsTheOutput()
{
    QCOMPARE(console().evaluate("print('a'); 1"), QStringLiteral("a\n1"));
    QCOMPARE(console().evaluate("2"), QStringLiteral("2"));
    engine().evaluate(QString("print('between')"));
    QCOMPARE(output().toPlainText(), QStringLiteral("2\nbetween"));
    QCOMPARE(console().evaluate("3"), QStringLiteral("3"));
}

void tst_KyScriptingWindow::onlyTheSelectionRuns()
{
    setInput("print('not this'); 6 * 7", 19);
    QTextCursor cursor = input().textCursor();
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    input().setTextCursor(cursor);
    clickEvaluate();
    QCOMPARE(output().toPlainText(), QStringLiteral("42"));
}

void tst_KyScriptingWindow::selectionOverLinesKeepsItsLineBreaks()
{
    setInput("1;\nvar a = 2 // two\nvar b = 3\na + b\n;'not this'", 3);
    QTextCursor cursor = input().textCursor();
    cursor.setPosition(int(input().toPlainText().indexOf("\n;'not")), QTextCursor::KeepAnchor);
    input().setTextCursor(cursor);
    clickEvaluate();
    QCOMPARE(output().toPlainText(), QStringLiteral("5"));

    setInput("first\nnull.x", 0);
    input().selectAll();
    clickEvaluate();
    QVERIFY(output().toPlainText().startsWith("Error (Line: 1): first is not defined"));
}

void tst_KyScriptingWindow::declarationsStay()
{
    QCOMPARE(console().evaluate("var n = 1; function f() { return n + 1; }"), QStringLiteral("undefined"));
    QCOMPARE(console().evaluate("f()"), QStringLiteral("2"));
}

void tst_KyScriptingWindow::errorReplacesWhatWasPrinted()
{
    const QString shown =
        console().evaluate("print('printed');\n\nfunction f() { throw new Error('bad') }\nf()");
    QVERIFY(!shown.contains("printed"));
    QCOMPARE(shown, QStringLiteral("Error (Line: 3): bad\nf@:3\n%entry@:4"));
}

void tst_KyScriptingWindow::errorTellsLineAndStack()
{
    QCOMPARE(console().evaluate("1;\nthere is\n"),
             QStringLiteral("Error (Line: 2): Expected token `;'\n@:2"));
    QCOMPARE(console().evaluate("\n\nnothing.there"),
             QStringLiteral("Error (Line: 3): nothing is not defined\n%entry@:3"));
}

void tst_KyScriptingWindow::errorMessageIsPlainText()
{
    QCOMPARE(console().evaluate("throw new Error('<b>%1</b> %2')"),
             QStringLiteral("Error (Line: 1): <b>%1</b> %2\n%entry@:1"));
}

void tst_KyScriptingWindow::consoleWithoutItsEngineOnlyClears()
{
    QCOMPARE(console().evaluate("1"), QStringLiteral("1"));
    delete static_cast<QObject*>(&engine());
    QCOMPARE(console().evaluate("2"), QString());
    QTest::mouseClick(&newEngine(), Qt::LeftButton);
    QCOMPARE(console().evaluate("3"), QStringLiteral("3"));
}

void tst_KyScriptingWindow::consoleCanEndDuringItsRun()
{
    input().setPlainText("outside.act(); print('x'); ended = 1");
    publish([this] { mConsole.reset(); });
    KyScriptingWindow* window = &console();
    window->slotEvaluate();
    QVERIFY(!mConsole);
    QCOMPARE(engine().globalObject().property("ended").toInt(), 1);
}

/// A second F5 while the script waits would clear what the first has printed and end its study objects.
void tst_KyScriptingWindow::evaluationWaitsForNoOther()
{
    int inner = 0;
    publish([&] {
        if (++inner > 1)
            return;
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&] {
            input().setPlainText("outside.act(); 'second'");
            clickEvaluate();
            QTRY_VERIFY(QToolTip::isVisible());
            QCOMPARE(output().toPlainText(), QStringLiteral("before"));
            loop.quit();
        });
        loop.exec();
    });
    QCOMPARE(console().evaluate("print('before'); outside.act(); print('after'); 'first'"),
             QStringLiteral("before\nafter\nfirst"));
    QCOMPARE(inner, 1);
    clickEvaluate();
    QCOMPARE(output().toPlainText(), QStringLiteral("second"));
    QCOMPARE(inner, 2);

    // An error and a value whose text fails end an evaluation, too.
    console().evaluate("throw new Error('x')");
    console().evaluate("({ toString: function() { throw new Error('y') } })");
    QCOMPARE(console().evaluate("3"), QStringLiteral("3"));
}

void tst_KyScriptingWindow::otherConsoleEvaluatesMeanwhile()
{
    KyScriptingWindow other(name() + "-other", KyScriptingWindow::JavaScriptEngine);
    publish([&] { QCOMPARE(other.evaluate("print('x'); 1 + 1"), QStringLiteral("x\n2")); });
    QCOMPARE(console().evaluate("outside.act(); 'done'"), QStringLiteral("done"));
}

void tst_KyScriptingWindow::evaluateSetsTheInput()
{
    QString shown;
    QVERIFY(QMetaObject::invokeMethod(&console(), "evaluate", Q_RETURN_ARG(QString, shown),
                                      Q_ARG(QString, QStringLiteral("'a' +\n'b'"))));
    QCOMPARE(shown, QStringLiteral("ab"));
    QCOMPARE(input().toPlainText(), QStringLiteral("'a' +\n'b'"));
}

void tst_KyScriptingWindow::hundredThousandLinesStandThere()
{
    const QString shown = console().evaluate("for (var i = 0; i < 100000; ++i) print('line', i); 'end'");
    const QStringList lines = shown.split('\n');
    QCOMPARE(lines.size(), 100'001);
    for (int i = 0; i < 100'000; ++i) {
        if (lines.at(i) != QStringLiteral("line %1").arg(i))
            QCOMPARE(lines.at(i), QStringLiteral("line %1").arg(i));
    }
    QCOMPARE(lines.last(), QStringLiteral("end"));
    QCOMPARE(console().findChild<QGroupBox*>("w_OutputGroup")->title(), QStringLiteral("Output"));
}

void tst_KyScriptingWindow::outputIsBounded()
{
    console().evaluate("for (var i = 0; i < 300000; ++i) print('line', i); 'end'");
    QVERIFY(output().document()->blockCount() <= 150'000);
    QVERIFY(output().document()->blockCount() >= 100'000);
    QVERIFY(output().toPlainText().endsWith("line 299998\nline 299999\nend"));
    auto* group = console().findChild<QGroupBox*>("w_OutputGroup");
    QVERIFY(group->title() != QStringLiteral("Output"));
    console().evaluate("1");
    QCOMPARE(group->title(), QStringLiteral("Output"));
}

void tst_KyScriptingWindow::newEngineForgetsAndPrintsOn()
{
    console().evaluate("var known = 1; print('old'); 'value'");
    const QPointer<KyScriptInterface> old = &engine();
    QTest::mouseClick(&newEngine(), Qt::LeftButton);
    QVERIFY(!old);
    QCOMPARE(input().toPlainText(), QStringLiteral("var known = 1; print('old'); 'value'"));
    QCOMPARE(output().toPlainText(), QStringLiteral("old\nvalue"));
    QCOMPARE(console().evaluate("print(typeof known); typeof known"), QStringLiteral("undefined\nundefined"));
    QVERIFY(newEngine().isEnabled());
}

void tst_KyScriptingWindow::newEngineEndsWhatTheOldOneRegistered()
{
    console();
    const QPointer<QObject> registered = new QObject;
    engine().registerForDestruction(registered);
    console().slotNewEngine();
    QVERIFY(!registered);
}

void tst_KyScriptingWindow::facadeStaysWithTheOldEngine()
{
    KyScriptAbstractEngine& facade = KyScriptAbstractInterface::getInstance(name());
    console().slotNewEngine();
    QVERIFY(!facade.jsEngine(false));
    mContracts->expect("0", "Uninitialized engine");
    QVERIFY(facade.runScript(KyScriptProgram("1", ""), true, false, false).isUndefined());
    QCOMPARE(console().evaluate("1"), QStringLiteral("1"));
}

void tst_KyScriptingWindow::newEngineWaitsForTheRun()
{
    console();
    const QPointer<KyScriptInterface> old = &engine();
    const QString usualToolTip = newEngine().toolTip();
    publish([&] {
        QEventLoop loop;
        QTest::mouseClick(&newEngine(), Qt::LeftButton);
        QTimer::singleShot(200, &loop, &QEventLoop::quit);
        loop.exec();
        QVERIFY(old);
        QVERIFY(!newEngine().isEnabled());
        QVERIFY(newEngine().toolTip() != usualToolTip);
    });
    QCOMPARE(console().evaluate("var known = 1; outside.act(); print('after'); known"),
             QStringLiteral("after\n1"));
    QVERIFY(old);
    QTRY_VERIFY(!old);
    QVERIFY(newEngine().isEnabled());
    QCOMPARE(newEngine().toolTip(), usualToolTip);
    QCOMPARE(console().evaluate("print('p'); typeof known"), QStringLiteral("p\nundefined"));
}

void tst_KyScriptingWindow::newEngineWaitsForAHandler()
{
    console();
    const QPointer<KyScriptInterface> old = &engine();
    // No nested loop here: only the engine's own stack tells that a handler is at work.
    Outside& outside = publish([&] {
        QTest::mouseClick(&newEngine(), Qt::LeftButton);
        QVERIFY(old);
        QVERIFY(!newEngine().isEnabled());
    });
    console().evaluate("outside.fired.connect(function() { outside.act(); print('handled'); })");
    Q_EMIT outside.fired();
    QVERIFY(old);
    QVERIFY(output().toPlainText().endsWith("handled"));
    QTRY_VERIFY(!old);
}

void tst_KyScriptingWindow::newEngineWaitsForARunOfOthers()
{
    KyScriptAbstractEngine& facade = KyScriptAbstractInterface::getInstance(name());
    console();
    const QPointer<KyScriptEngine> old = facade.jsEngine(true);
    publish([&] { console().slotNewEngine(); });
    QCOMPARE(facade.runScript(KyScriptProgram("outside.act(); return 7", ""), true, false, false).toInt(), 7);
    QVERIFY(old);
    QTRY_VERIFY(!old);
}

void tst_KyScriptingWindow::consoleCanEndWhileItWaits()
{
    console();
    const QPointer<KyScriptInterface> old = &engine();
    publish([&] { console().slotNewEngine(); });
    console().evaluate("outside.act()");
    mConsole.reset();
    QCoreApplication::processEvents();
    QVERIFY(old);
}

void tst_KyScriptingWindow::showConsoleTakesTheNameOfTheAction()
{
    QAction first(name() + "-1");
    first.setData(name() + "-1");
    QAction second(name() + "-2");
    second.setData(name() + "-2");
    KyScriptInterface& any = engine();
    connect(&first, &QAction::triggered, &any, &KyScriptInterface::showConsole);
    connect(&second, &QAction::triggered, &any, &KyScriptInterface::showConsole);
    first.trigger();
    second.trigger();

    QWidget* one = topLevel(QStringLiteral("Console[QJSEngine] (%1-1)").arg(name()));
    QWidget* two = topLevel(QStringLiteral("Console[QJSEngine] (%1-2)").arg(name()));
    QVERIFY(one && one->isVisible());
    QVERIFY(two && two->isVisible());
    auto* console1 = qobject_cast<KyScriptingWindow*>(one);
    auto* console2 = qobject_cast<KyScriptingWindow*>(two);
    console1->evaluate("var who = 'first'");
    console2->evaluate("var who = 'second'");
    QCOMPARE(console1->evaluate("who"), QStringLiteral("first"));
    one->close();
    two->close();
}

void tst_KyScriptingWindow::showConsoleWithoutAnActionIsTheDefaultEngine()
{
    engine().showConsole();
    QWidget* window = topLevel("Console[QJSEngine]");
    QVERIFY(window && window->isVisible());
    QVERIFY(!window->findChild<QPushButton*>("w_NewEngine")->isVisible());
    engine().showConsole();
    int count = 0;
    for (QWidget* widget : QApplication::topLevelWidgets())
        count += widget->windowTitle() == "Console[QJSEngine]";
    QCOMPARE(count, 1);
    window->close();
}

void tst_KyScriptingWindow::closedConsoleComesBackWithItsText()
{
    QAction action;
    action.setData(name());
    connect(&action, &QAction::triggered, &engine(), &KyScriptInterface::showConsole);
    action.trigger();
    auto* window =
        qobject_cast<KyScriptingWindow*>(topLevel(QStringLiteral("Console[QJSEngine] (%1)").arg(name())));
    QVERIFY(window);
    window->evaluate("'kept'");
    window->close();
    QVERIFY(!window->isVisible());
    action.trigger();
    QVERIFY(window->isVisible());
    QCOMPARE(window->findChild<QTextEdit*>("w_OutputText")->toPlainText(), QStringLiteral("kept"));
    window->close();
}

void tst_KyScriptingWindow::minimizedConsoleComesBack()
{
    QAction action;
    action.setData(name());
    connect(&action, &QAction::triggered, &engine(), &KyScriptInterface::showConsole);
    action.trigger();
    QWidget* window = topLevel(QStringLiteral("Console[QJSEngine] (%1)").arg(name()));
    window->showMinimized();
    QVERIFY(window->isMinimized());
    action.trigger();
    QVERIFY(!window->isMinimized());
    window->close();
}

KY_TEST_MAIN(tst_KyScriptingWindow)
#include "tst_KyScriptingWindow.moc"

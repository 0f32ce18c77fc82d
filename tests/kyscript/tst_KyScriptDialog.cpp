// The dialog of scripts, but for its answers: configuration, operations, life.

#include "DialogStage.h"

#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <kybase/KyNotifiable.h>
#include <ovbase/OvRegistry.h>

#include <QBoxLayout>
#include <QScreen>
#include <QScrollBar>
#include <QTextDocument>
#include <QWindow>

#include <optional>

class tst_KyScriptDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Construction
    void dialogOfNothingIsABoxWithOk();
    void dialogIsAToolWindowThatIsNotModal();
    void partsHaveTheirNames();
    void partsStandInTheirOrder();
    void partsBelongToTheDialog();
    void messageStandsAtTheTopAndWraps();
    void anythingIsTakenForAConfiguration_data();
    void anythingIsTakenForAConfiguration();
    void deepConfigurationIsTaken();
    void constructorIsAFunction();

    // Keys of the configuration
    void titleIsTheWindows_data();
    void titleIsTheWindows();
    void messageIsTheLabels_data();
    void messageIsTheLabels();
    void richMessageIsFound();
    void fieldIsOnViewWhenItsKeyIsThere_data();
    void fieldIsOnViewWhenItsKeyIsThere();
    void fieldFindsRichText_data();
    void fieldFindsRichText();
    void lineEditIsOnViewWhenItsKeyIsThere_data();
    void lineEditIsOnViewWhenItsKeyIsThere();
    void lineEditIsEnabledByItsKey_data();
    void lineEditIsEnabledByItsKey();
    void placeholderStandsInTheLineEdit();
    void textWidgetIsChosen_data();
    void textWidgetIsChosen();
    void buttonsHaveTheirDefault_data();
    void buttonsHaveTheirDefault();
    void buttonToolTipsFollowTheButtons();
    void initialSizeIsTaken_data();
    void initialSizeIsTaken();
    void fieldIsEditableByItsKey_data();
    void fieldIsEditableByItsKey();
    void contextNamesGeometryAndLog_data();
    void contextNamesGeometryAndLog();
    void geometryIsKeptPerContext();
    void geometryComesBackOntoTheScreen();
    void lastKeyOfSeveralCounts();

    // Operations
    void execThrowsInAScript();
    void execWithoutAnEngineIsSilent();
    void statusGoesThroughItsStates();
    void shortStatusHasNoText();
    void lastStatusAloneShowsNothing();
    void statusIconStandsInFront();
    void statusMayChangeWhileBusy();
    void statusWorksBeforeTheFirstShow();
    void severalDialogsAreBusyAtOnce();
    void titleIsSetAndRead();
    void messageIsSet();
    void fieldTextIsSetByType_data();
    void fieldTextIsSetByType();
    void unknownTypeIsLoggedAndFoundByItself();
    void fieldTextIsReadByType_data();
    void fieldTextIsReadByType();
    void unknownTypeIsLoggedAndReadPlain_data();
    void unknownTypeIsLoggedAndReadPlain();
    void operationsReachTheActiveTextWidgetOnly();
    void fieldIsMadeEditable();
    void browserIsNeverEditable();
    void lineEditIsSetAndRead();
    void fieldIsScrolled_data();
    void fieldIsScrolled();
    void fieldIsScrolledBeforeItIsShown();
    void longFieldIsScrolledToItsVeryEnd();
    void operationsAreVisibleToScripts_data();
    void operationsAreVisibleToScripts();

    // Links
    void clickedLinkIsTold_data();
    void clickedLinkIsTold();
    void hoveredLinkIsTold();
    void linkIsOpenedByKeyboard();

    // Showing
    void showReturnsAtOnce();
    void showForgetsTheLastAnswer();
    void nothingIsShownWhenTheDialogGoesFirst();
    void dialogIsShownAgain();
    void dialogStandsAboveTheMainWindow();
    void longMessageMakesRoom();
    void longMessageStaysOnTheScreen();
    void longerMessageMakesRoomWhileOnShow();
    void longWordDoesNotMakeTheWindowWider();

    // Life
    void endIsLogged();
    void droppedDialogIsCollected_data();
    void droppedDialogIsCollected();
    void dialogNeverShownIsNotRegistered();
    void cleanupEndsShownDialogs();
    void dialogEndsWithItsEngine_data();
    void dialogEndsWithItsEngine();
    void dialogOutlivesThePlatform();
    void dialogOutlivesTheMainWindow();
    void dialogOutlivesTheServerPeer();
    void scriptMayDestroyTheDialog();
    void deadDialogIsHarmless();
    void manyDialogsLeaveNothingBehind();

    // Notifications
    void autoCloseFollowsNotifications_data();
    void autoCloseFollowsNotifications();
    void closedByAutoCloseAndShownAgain();

private:
    std::optional<DialogStage> s;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

/// Gives what the collector has marked its end.
void flushDeletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QString geometryOf(const QString& inContext)
{
    OvRegistry::Value stored;
    OvRegistry::getInstance()->getProperty(QStringLiteral("GUI.Geometry.KyScriptDialog_") + inContext,
                                           stored);
    return stored.value;
}

} // namespace

void tst_KyScriptDialog::init()
{
    mContracts = std::make_unique<ContractWatch>();
    s.emplace();
}

void tst_KyScriptDialog::cleanup()
{
    const QString broken = mContracts->verify();
    s.reset();
    flushDeletions();
    mContracts.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    for (const QWidget* window : QApplication::topLevelWidgets())
        QVERIFY2(!qobject_cast<const KyScriptDialog*>(window), "a dialog is left");
}

void tst_KyScriptDialog::dialogOfNothingIsABoxWithOk()
{
    const KyScriptDialog& dialog = s->makeAndShow();
    QCOMPARE(dialog.windowTitle(), QString());
    QCOMPARE(s->label()->text(), QString());
    QVERIFY(!s->edit()->isVisible());
    QVERIFY(!s->browser()->isVisible());
    QVERIFY(!s->lineEdit()->isVisible());
    QVERIFY(!s->indicator()->isVisible());
    QCOMPARE(s->buttonTexts(), QStringList("OK"));
}

void tst_KyScriptDialog::dialogIsAToolWindowThatIsNotModal()
{
    const KyScriptDialog& dialog = s->makeAndShow();
    QCOMPARE(dialog.windowType(), Qt::Tool);
    QVERIFY(dialog.isWindow());
    QVERIFY(!dialog.isModal());
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void tst_KyScriptDialog::partsHaveTheirNames()
{
    s->make();
    QVERIFY(s->part<QLabel>("label"));
    QVERIFY(!qobject_cast<QTextBrowser*>(s->part<QTextEdit>("edit")));
    QVERIFY(s->part<QLineEdit>("lineEdit"));
    QVERIFY(s->part<QTextBrowser>("textBrowser"));
    QVERIFY(s->part<QButtonGroup>("group"));
    QVERIFY(s->part<QDialogButtonBox>("box"));
    QVERIFY(s->part<QWidget>("indicator"));
    QVERIFY(s->indicator()->findChild<QLabel*>("statusFront"));
    QVERIFY(s->indicator()->findChild<QLabel*>("statusBack"));
}

void tst_KyScriptDialog::partsStandInTheirOrder()
{
    auto* column = qobject_cast<QVBoxLayout*>(s->make().layout());
    QVERIFY(column);
    QCOMPARE(column->count(), 5);
    QCOMPARE(column->itemAt(0)->widget(), s->label());
    QCOMPARE(column->itemAt(1)->widget(), s->edit());
    QCOMPARE(column->itemAt(2)->widget(), s->browser());
    QCOMPARE(column->itemAt(3)->widget(), s->lineEdit());
    auto* row = qobject_cast<QHBoxLayout*>(column->itemAt(4)->layout());
    QVERIFY(row);
    QCOMPARE(row->count(), 3);
    QCOMPARE(row->itemAt(0)->widget(), s->indicator());
    const QSpacerItem* spacer = row->itemAt(1)->spacerItem();
    QVERIFY(spacer);
    QCOMPARE(spacer->sizeHint(), QSize(40, 20));
    QCOMPARE(spacer->sizePolicy(), QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum));
    QCOMPARE(row->itemAt(2)->widget(), s->part<QDialogButtonBox>("box"));

    auto* status = qobject_cast<QHBoxLayout*>(s->indicator()->layout());
    QVERIFY(status);
    QCOMPARE(status->contentsMargins(), QMargins());
    QCOMPARE(status->itemAt(0)->widget()->objectName(), QStringLiteral("statusFront"));
    QCOMPARE(status->itemAt(1)->widget()->objectName(), QStringLiteral("statusBack"));
}

void tst_KyScriptDialog::partsBelongToTheDialog()
{
    KyScriptDialog* dialog = &s->make();
    for (const QObject* part : std::initializer_list<QObject*>{
             s->label(), s->edit(), s->lineEdit(), s->browser(), s->part<QButtonGroup>("group"),
             s->part<QDialogButtonBox>("box"), s->indicator()})
        QCOMPARE(part->parent(), dialog);
}

void tst_KyScriptDialog::messageStandsAtTheTopAndWraps()
{
    s->make();
    QCOMPARE(s->label()->alignment(), Qt::AlignLeft | Qt::AlignTop);
    QVERIFY(s->label()->wordWrap());
}

void tst_KyScriptDialog::anythingIsTakenForAConfiguration_data()
{
    QTest::addColumn<QString>("config");
    for (const char* config :
         {"", "undefined", "null", "5", "'text'", "true", "[]", "['a']", "function() {}", "new Date()",
          "Symbol('x')", "{}", "{ unknown: 1 }", "Message", "/x/", "new Map()", "NaN"})
        QTest::newRow(*config ? config : "none") << config;
    const QString everyKey = QStringLiteral(
        "(function() { var c = {}; ['title', 'message', 'lineEditPlaceholder', 'lineEditEnabled',"
        "'useTextBrowser', 'buttons', 'buttonToolTips', 'initialSize', 'editable', 'autoClose', 'context',"
        "'manuallyCloseDialog'].forEach(function(key) { c[key] = %1; }); return c; })()");
    for (const char* value : {"null", "undefined", "Symbol('x')", "[Symbol('x')]", "{ a: Symbol('x') }",
                              "function() {}", "[[[]]]", "Message", "''"})
        QTest::addRow("every key %s", value) << everyKey.arg(QString::fromUtf8(value));
    QTest::newRow("circle") << "(function() { var c = { title: '' }; c.buttons = c; return c; })()";
}

void tst_KyScriptDialog::anythingIsTakenForAConfiguration()
{
    QFETCH(QString, config);
    const KyScriptDialog& dialog = s->makeAndShow(config);
    QCOMPARE(dialog.windowTitle(), QString());
    QVERIFY(!s->buttonTexts().isEmpty());
    s->click(0);
    QVERIFY(!dialog.isVisible());
}

void tst_KyScriptDialog::deepConfigurationIsTaken()
{
    const KyScriptDialog& dialog = s->makeAndShow(
        "(function() { var c = ['x'];"
        "for (var i = 0; i < 100000; ++i) c = [c]; return { title: 'deep', buttons: c }; })()");
    QCOMPARE(dialog.windowTitle(), QStringLiteral("deep"));
    QCOMPARE(s->buttonTexts(), QStringList(""));
}

void tst_KyScriptDialog::constructorIsAFunction()
{
    QCOMPARE(s->run("typeof Dialog"), QStringLiteral("function"));
    QCOMPARE(s->run("typeof new Dialog()"), QStringLiteral("object"));
    KyScriptEngine without(nullptr, ScriptMessage);
    QCOMPARE(without.runScript(KyScriptProgram("typeof Dialog", "")).toString(), QStringLiteral("undefined"));
}

void tst_KyScriptDialog::titleIsTheWindows_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("title");
    QTest::newRow("absent") << "{}"
                            << "";
    QTest::newRow("text") << "{ title: 'Report' }"
                          << "Report";
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("{ title: 'Größe €' }")
                                    << QString::fromUtf8("Größe €");
    QTest::newRow("number") << "{ title: 42 }"
                            << "42";
    QTest::newRow("fraction") << "{ title: 1.5 }"
                              << "1.5";
    QTest::newRow("truth") << "{ title: true }"
                           << "true";
    QTest::newRow("null") << "{ title: null }"
                          << "";
    QTest::newRow("object") << "{ title: { a: 1 } }"
                            << "";
}

void tst_KyScriptDialog::titleIsTheWindows()
{
    QFETCH(QString, config);
    QFETCH(QString, title);
    QCOMPARE(s->make(config).windowTitle(), title);
    QCOMPARE(s->run("d.title()"), title);
}

void tst_KyScriptDialog::messageIsTheLabels_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("message");
    QTest::newRow("absent") << "{}"
                            << "";
    QTest::newRow("text") << "{ message: 'Saved' }"
                          << "Saved";
    QTest::newRow("lines") << "{ message: 'a\\nb' }"
                           << "a\nb";
    QTest::newRow("number") << "{ message: 7 }"
                            << "7";
    QTest::newRow("ampersand") << "{ message: 'a & b' }"
                               << "a & b";
    QTest::newRow("markup") << "{ message: '<b>a</b>' }"
                            << "<b>a</b>";
}

void tst_KyScriptDialog::messageIsTheLabels()
{
    QFETCH(QString, config);
    QFETCH(QString, message);
    s->make(config);
    QCOMPARE(s->label()->text(), message);
}

void tst_KyScriptDialog::richMessageIsFound()
{
    s->make("{ message: '<b>bold</b> text' }");
    QCOMPARE(s->label()->textFormat(), Qt::AutoText);
    const int rich = s->label()->sizeHint().width();
    s->run("d.setMessage('bold text')");
    const int plain = s->label()->sizeHint().width();
    s->run("d.setMessage('[b]bold[/b] text')");
    QVERIFY(rich < s->label()->sizeHint().width());
    QVERIFY(std::abs(rich - plain) < 30);
}

void tst_KyScriptDialog::fieldIsOnViewWhenItsKeyIsThere_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<bool>("editVisible");
    QTest::addColumn<bool>("browserVisible");
    QTest::addColumn<QString>("text");
    QTest::newRow("absent") << "{}" << false << false << "";
    QTest::newRow("absent, browser") << "{ useTextBrowser: true }" << false << false << "";
    QTest::newRow("empty") << "{ fieldText: '' }" << true << false << "";
    QTest::newRow("text") << "{ fieldText: 'a' }" << true << false << "a";
    QTest::newRow("text, browser") << "{ fieldText: 'a', useTextBrowser: true }" << false << true << "a";
    QTest::newRow("false") << "{ fieldText: false }" << true << false << "false";
    QTest::newRow("null") << "{ fieldText: null }" << true << false << "";
    QTest::newRow("undefined") << "{ fieldText: undefined }" << true << false << "";
    QTest::newRow("number") << "{ fieldText: 3 }" << true << false << "3";
}

void tst_KyScriptDialog::fieldIsOnViewWhenItsKeyIsThere()
{
    QFETCH(QString, config);
    QFETCH(bool, editVisible);
    QFETCH(bool, browserVisible);
    QFETCH(QString, text);
    s->makeAndShow(config);
    QCOMPARE(s->edit()->isVisible(), editVisible);
    QCOMPARE(s->browser()->isVisible(), browserVisible);
    QCOMPARE(s->run("d.fieldText()"), text);
}

void tst_KyScriptDialog::fieldFindsRichText_data()
{
    QTest::addColumn<QString>("browser");
    QTest::newRow("edit") << "false";
    QTest::newRow("browser") << "true";
}

void tst_KyScriptDialog::fieldFindsRichText()
{
    QFETCH(QString, browser);
    s->make("{ fieldText: '<p>one <b>two</b></p>', useTextBrowser: " + browser + " }");
    QCOMPARE(s->run("d.fieldText()"), QStringLiteral("one two"));
    s->make("{ fieldText: 'one < two', useTextBrowser: " + browser + " }");
    QCOMPARE(s->run("d.fieldText()"), QStringLiteral("one < two"));
}

void tst_KyScriptDialog::lineEditIsOnViewWhenItsKeyIsThere_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<bool>("visible");
    QTest::newRow("absent") << "{}" << false;
    QTest::newRow("true") << "{ showLineEdit: true }" << true;
    QTest::newRow("false") << "{ showLineEdit: false }" << true;
    QTest::newRow("null") << "{ showLineEdit: null }" << true;
    QTest::newRow("undefined") << "{ showLineEdit: undefined }" << true;
    QTest::newRow("only inherited") << "Object.create({ showLineEdit: true })" << false;
}

void tst_KyScriptDialog::lineEditIsOnViewWhenItsKeyIsThere()
{
    QFETCH(QString, config);
    QFETCH(bool, visible);
    s->makeAndShow(config);
    QCOMPARE(s->lineEdit()->isVisible(), visible);
    QVERIFY(!s->lineEdit()->isEnabled());
}

void tst_KyScriptDialog::lineEditIsEnabledByItsKey_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("true") << "true" << true;
    QTest::newRow("false") << "false" << false;
    QTest::newRow("1") << "1" << true;
    QTest::newRow("0") << "0" << false;
    QTest::newRow("text") << "'yes'" << true;
    QTest::newRow("the word false") << "'false'" << false;
    QTest::newRow("empty text") << "''" << false;
    QTest::newRow("null") << "null" << false;
    QTest::newRow("object") << "{}" << false;
}

void tst_KyScriptDialog::lineEditIsEnabledByItsKey()
{
    QFETCH(QString, value);
    QFETCH(bool, enabled);
    s->makeAndShow("{ showLineEdit: true, lineEditEnabled: " + value + " }");
    QCOMPARE(s->lineEdit()->isEnabled(), enabled);
    QTest::keyClicks(s->lineEdit(), "abc");
    QCOMPARE(s->run("d.lineEditText()"), enabled ? QStringLiteral("abc") : QString());
}

void tst_KyScriptDialog::placeholderStandsInTheLineEdit()
{
    s->make("{ showLineEdit: true }");
    QCOMPARE(s->lineEdit()->placeholderText(), QString());
    s->make("{ showLineEdit: true, lineEditPlaceholder: 'Name' }");
    QCOMPARE(s->lineEdit()->placeholderText(), QStringLiteral("Name"));
    QCOMPARE(s->run("d.lineEditText()"), QString());
}

void tst_KyScriptDialog::textWidgetIsChosen_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("isBrowser");
    QTest::newRow("absent") << "" << false;
    QTest::newRow("false") << ", useTextBrowser: false" << false;
    QTest::newRow("true") << ", useTextBrowser: true" << true;
}

void tst_KyScriptDialog::textWidgetIsChosen()
{
    QFETCH(QString, value);
    QFETCH(bool, isBrowser);
    s->makeAndShow("{ fieldText: 'x'" + value + " }");
    QCOMPARE(s->browser()->isVisible(), isBrowser);
    QCOMPARE(s->edit()->isVisible(), !isBrowser);
    QCOMPARE(s->browser()->toPlainText(), QString(isBrowser ? "x" : ""));
    QCOMPARE(s->edit()->toPlainText(), QString(isBrowser ? "" : "x"));
    QVERIFY(!s->browser()->openLinks());
}

void tst_KyScriptDialog::buttonsHaveTheirDefault_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QStringList>("texts");
    const QStringList ok("OK");
    QTest::newRow("absent") << "{}" << ok;
    QTest::newRow("empty") << "{ buttons: [] }" << ok;
    QTest::newRow("null") << "{ buttons: null }" << ok;
    QTest::newRow("a text is no list") << "{ buttons: 'Yes' }" << ok;
    QTest::newRow("number") << "{ buttons: 3 }" << ok;
    QTest::newRow("object") << "{ buttons: { text: 'Yes' } }" << ok;
    QTest::newRow("true") << "{ buttons: true }" << ok;
    QTest::newRow("one") << "{ buttons: ['Yes'] }" << QStringList("Yes");
    QTest::newRow("three") << "{ buttons: ['Yes', 'No', 'Cancel'] }" << QStringList({"Yes", "No", "Cancel"});
    QTest::newRow("maps") << "{ buttons: [{ text: 'Yes' }, 'No'] }" << QStringList({"Yes", "No"});
    QTest::newRow("empty text") << "{ buttons: [''] }" << QStringList("");
}

void tst_KyScriptDialog::buttonsHaveTheirDefault()
{
    QFETCH(QString, config);
    QFETCH(QStringList, texts);
    s->make(config);
    QCOMPARE(s->buttonTexts(), texts);
}

void tst_KyScriptDialog::buttonToolTipsFollowTheButtons()
{
    s->make("{ buttons: [{ text: 'a', toolTip: 'own' }, { text: 'b', toolTip: 'own' }, 'c'],"
            "  buttonToolTips: ['first', '', 'third', 'surplus'] }");
    QCOMPARE(s->button(0)->toolTip(), QStringLiteral("first"));
    QCOMPARE(s->button(1)->toolTip(), QString());
    QCOMPARE(s->button(2)->toolTip(), QStringLiteral("third"));
    s->make("{ buttonToolTips: 'alone' }");
    QCOMPARE(s->button(0)->toolTip(), QStringLiteral("alone"));
}

void tst_KyScriptDialog::initialSizeIsTaken_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QSize>("size");
    QTest::newRow("two numbers") << "[500, 320]" << QSize(500, 320);
    QTest::newRow("computed numbers") << "[1000 / 2, 640 * 0.5]" << QSize(500, 320);
    QTest::newRow("texts of numbers") << "['500', '320']" << QSize(500, 320);
    QTest::newRow("larger than the screen") << "[50000, 320]" << QSize(0, 320);
    for (const char* ignored : {"[500]", "[500, 320, 1]", "[]", "'56'", "500", "null", "{ width: 500 }",
                                "[0, 0]", "['a', 'b']", "[-500, -320]", "[500, null]"})
        QTest::newRow(ignored) << ignored << QSize();
}

void tst_KyScriptDialog::initialSizeIsTaken()
{
    QFETCH(QString, value);
    QFETCH(QSize, size);
    const QSize usual = s->makeAndShow("{ message: 'x', context: 'Usual' }").size();
    const KyScriptDialog& dialog =
        s->makeAndShow("{ message: 'x', context: 'Sized', initialSize: " + value + " }");
    const int screen = dialog.screen()->availableGeometry().width();
    if (size.width() == 0)
        size.setWidth(screen);
    QCOMPARE(dialog.size(), size.isValid() ? size : usual);
    QCOMPARE(dialog.pos(), dialog.screen()->availableGeometry().topLeft());
}

void tst_KyScriptDialog::fieldIsEditableByItsKey_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("editable");
    QTest::newRow("absent") << "" << false;
    QTest::newRow("false") << ", editable: false" << false;
    QTest::newRow("true") << ", editable: true" << true;
}

void tst_KyScriptDialog::fieldIsEditableByItsKey()
{
    QFETCH(QString, value);
    QFETCH(bool, editable);
    s->makeAndShow("{ fieldText: ''" + value + " }");
    QCOMPARE(s->edit()->isReadOnly(), !editable);
    QCOMPARE(s->edit()->viewport()->autoFillBackground(), editable);
    QVERIFY(s->browser()->isReadOnly());
    QVERIFY(s->browser()->viewport()->autoFillBackground());
    QTest::keyClicks(s->edit(), "typed");
    QCOMPARE(s->run("d.fieldText()"), editable ? QStringLiteral("typed") : QString());
}

void tst_KyScriptDialog::contextNamesGeometryAndLog_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("context");
    QTest::newRow("absent") << "{}"
                            << "KyScriptDialog";
    QTest::newRow("empty") << "{ context: '' }"
                           << "KyScriptDialog";
    QTest::newRow("null") << "{ context: null }"
                          << "KyScriptDialog";
    QTest::newRow("text") << "{ context: 'Report' }"
                          << "Report";
    QTest::newRow("blanks") << "{ context: 'my dialog one' }"
                            << "mydialogone";
    QTest::newRow("all white space") << "{ context: ' a\\t b\\r\\nc  ' }"
                                     << "abc";
    QTest::newRow("nothing but white space") << "{ context: '  ' }"
                                             << "";
    QTest::newRow("number") << "{ context: 12 }"
                            << "12";
}

void tst_KyScriptDialog::contextNamesGeometryAndLog()
{
    QFETCH(QString, config);
    QFETCH(QString, context);
    s->makeAndShow(config);
    s->click(0);
    QVERIFY(!geometryOf(context).isEmpty());
    QCOMPARE(s->session->take(), QStringList(context + "|Accepted with \"OK\""));
    LogCapture log(2);
    s->run("d.fieldText('x')");
    QVERIFY(log.take().constFirst().startsWith("2|" + context + "|"));
}

void tst_KyScriptDialog::geometryIsKeptPerContext()
{
    KyScriptDialog& first = s->makeAndShow("{ context: 'One', initialSize: [400, 300] }");
    first.resize(450, 350);
    first.move(70, 60);
    s->click(0);
    const KyScriptDialog& same = s->makeAndShow("{ context: 'O n e', initialSize: [200, 200] }");
    QCOMPARE(same.size(), QSize(450, 350));
    QCOMPARE(same.pos(), QPoint(70, 60));
    const KyScriptDialog& other = s->makeAndShow("{ context: 'Two', initialSize: [400, 300] }");
    QCOMPARE(other.size(), QSize(400, 300));
}

void tst_KyScriptDialog::geometryComesBackOntoTheScreen()
{
    KyScriptDialog& first = s->makeAndShow("{ initialSize: [400, 300] }");
    first.move(90'000, 90'000);
    s->click(0);
    const KyScriptDialog& next = s->makeAndShow();
    QVERIFY(next.screen()->availableGeometry().contains(next.pos()));
}

void tst_KyScriptDialog::lastKeyOfSeveralCounts()
{
    s->make("{ title: 'a', title: 'b', Title: 'c' }");
    QCOMPARE(s->run("d.title()"), QStringLiteral("b"));
}

void tst_KyScriptDialog::execThrowsInAScript()
{
    s->make();
    QCOMPARE(
        s->run("var caught = ''; try { d.exec(); } catch (e) { caught = e.name + '|' + e.message; } caught"),
        QStringLiteral("SyntaxError|Dialog.exec() is not yet implemented"));
    QCOMPARE(s->run("d.exec(); 'went on'"),
             QStringLiteral("SyntaxError: Dialog.exec() is not yet implemented"));
    QVERIFY(!s->dialog().isVisible());
    QCOMPARE(s->run("1 + 1"), QStringLiteral("2"));
}

void tst_KyScriptDialog::execWithoutAnEngineIsSilent()
{
    KyScriptDialog dialog(QVariantMap{{"title", "x"}});
    QCOMPARE(dialog.exec(), 0);
    QVERIFY(!dialog.isVisible());
    dialog.show();
    QTRY_VERIFY(dialog.isVisible());
}

void tst_KyScriptDialog::statusGoesThroughItsStates()
{
    s->makeAndShow();
    const auto* front = s->indicator()->findChild<QLabel*>("statusFront");
    const auto* back = s->indicator()->findChild<QLabel*>("statusBack");
    s->run("d.setStatus(true, 'Working')");
    QVERIFY(s->indicator()->isVisible());
    QVERIFY(!front->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(back->text(), QStringLiteral("Working"));
    s->run("d.setStatus(false, 'Done')");
    QVERIFY(s->indicator()->isVisible());
    QVERIFY(front->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(front->text(), QStringLiteral("Done"));
    QCOMPARE(back->text(), QString());
    s->run("d.setStatus(false)");
    QVERIFY(!s->indicator()->isVisible());
    QCOMPARE(front->text(), QString());
}

void tst_KyScriptDialog::shortStatusHasNoText()
{
    s->makeAndShow();
    s->run("d.setStatus(true)");
    QVERIFY(s->indicator()->isVisible());
    QCOMPARE(s->indicator()->findChild<QLabel*>("statusBack")->text(), QString());
    s->run("d.setStatus(false, '')");
    QVERIFY(!s->indicator()->isVisible());
}

/// A final status stays on view, but does not come into view by itself.
void tst_KyScriptDialog::lastStatusAloneShowsNothing()
{
    s->makeAndShow();
    s->run("d.setStatus(false, 'Done')");
    QVERIFY(!s->indicator()->isVisible());
    QCOMPARE(s->indicator()->findChild<QLabel*>("statusFront")->text(), QStringLiteral("Done"));
}

void tst_KyScriptDialog::statusIconStandsInFront()
{
    s->makeAndShow();
    s->run("d.setStatus(true, 'Working')");
    const auto* front = s->indicator()->findChild<QLabel*>("statusFront");
    const auto* back = s->indicator()->findChild<QLabel*>("statusBack");
    const QPixmap first = front->pixmap(Qt::ReturnByValue);
    const int extent = QFontMetrics(s->indicator()->font()).height() + 6;
    QCOMPARE(first.deviceIndependentSize(), QSizeF(extent, extent));
    QTRY_VERIFY(front->geometry().right() < back->geometry().left());
    // It moves.
    QTRY_VERIFY(front->pixmap(Qt::ReturnByValue).toImage() != first.toImage());
}

void tst_KyScriptDialog::statusMayChangeWhileBusy()
{
    s->makeAndShow();
    s->run("d.setStatus(true, 'one'); d.setStatus(true, 'two')");
    QCOMPARE(s->indicator()->findChild<QLabel*>("statusBack")->text(), QStringLiteral("two"));
    s->run("d.setStatus(false, 'done'); d.setStatus(true, 'three')");
    QVERIFY(!s->indicator()->findChild<QLabel*>("statusFront")->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(s->indicator()->findChild<QLabel*>("statusFront")->text(), QString());
}

void tst_KyScriptDialog::statusWorksBeforeTheFirstShow()
{
    s->make();
    s->run("d.setStatus(true, 'Working')");
    s->show();
    QVERIFY(s->indicator()->isVisible());
}

void tst_KyScriptDialog::severalDialogsAreBusyAtOnce()
{
    s->run("var all = [1, 2, 3].map(function(n) { var x = new Dialog({ context: 'n' + n });"
           "x.setStatus(true, 'n' + n); x.show(); return x; }); var d = all[0];");
    QTRY_VERIFY(s->dialog().isVisible());
    QList<QLabel*> fronts;
    for (const char* name : {"all[0]", "all[1]", "all[2]"}) {
        s->run(QStringLiteral("d = ") + name);
        fronts.append(s->indicator()->findChild<QLabel*>("statusFront"));
    }
    for (QLabel* front : fronts) {
        const QImage first = front->pixmap(Qt::ReturnByValue).toImage();
        QTRY_VERIFY(front->pixmap(Qt::ReturnByValue).toImage() != first);
    }
    s->run("all[0].setStatus(false, 'done')");
    QVERIFY(fronts[0]->pixmap(Qt::ReturnByValue).isNull());
    const QImage first = fronts[1]->pixmap(Qt::ReturnByValue).toImage();
    QTRY_VERIFY(fronts[1]->pixmap(Qt::ReturnByValue).toImage() != first);
    QVERIFY(fronts[0]->pixmap(Qt::ReturnByValue).isNull());
}

void tst_KyScriptDialog::titleIsSetAndRead()
{
    const KyScriptDialog& dialog = s->makeAndShow("{ title: 'a' }");
    s->run("d.setTitle('b')");
    QCOMPARE(dialog.windowTitle(), QStringLiteral("b"));
    QCOMPARE(s->run("d.title()"), QStringLiteral("b"));
    s->run("d.setTitle('')");
    QCOMPARE(s->run("d.title()"), QString());
}

void tst_KyScriptDialog::messageIsSet()
{
    s->makeAndShow("{ message: 'a' }");
    s->run("d.setMessage('b')");
    QCOMPARE(s->label()->text(), QStringLiteral("b"));
}

void tst_KyScriptDialog::fieldTextIsSetByType_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("plain");
    QTest::newRow("none") << "'<b>x</b>'"
                          << "x";
    QTest::newRow("undefined") << "'<b>x</b>', undefined"
                               << "x";
    QTest::newRow("empty") << "'<b>x</b>', ''"
                           << "x";
    QTest::newRow("auto, rich") << "'<b>x</b>', 'auto'"
                                << "x";
    QTest::newRow("auto, plain") << "'*x*', 'auto'"
                                 << "*x*";
    QTest::newRow("Auto") << "'<b>x</b>', 'Auto'"
                          << "x";
    QTest::newRow("html") << "'a<br>b', 'html'"
                          << "a\nb";
    QTest::newRow("HTML") << "'x &amp; y', 'HTML'"
                          << "x & y";
    QTest::newRow("markdown") << "'**x** y', 'markdown'"
                              << "x y";
    QTest::newRow("MarkDown") << "'# x', 'MarkDown'"
                              << "x";
    QTest::newRow("plaintext") << "'<b>x</b>', 'plaintext'"
                               << "<b>x</b>";
    QTest::newRow("PlainText") << "'<b>x</b>', 'PlainText'"
                               << "<b>x</b>";
}

void tst_KyScriptDialog::fieldTextIsSetByType()
{
    QFETCH(QString, arguments);
    QFETCH(QString, plain);
    LogCapture log(2);
    for (const char* browser : {"false", "true"}) {
        s->make(QStringLiteral("{ fieldText: 'old', useTextBrowser: %1 }").arg(browser));
        s->run("d.setFieldText(" + arguments + ")");
        QCOMPARE(s->run("d.fieldText()"), plain);
    }
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptDialog::unknownTypeIsLoggedAndFoundByItself()
{
    s->make("{ fieldText: '', context: 'My' }");
    LogCapture log;
    s->run("");
    log.take();
    s->dialog().setFieldText("<b>x</b>", "rtf");
    QCOMPARE(log.take(),
             QStringList("2|My|setFieldText(): Unsupported text type 'rtf' - falling back to 'auto'"));
    QCOMPARE(s->dialog().fieldText(), QStringLiteral("x"));
    s->dialog().setFieldText("y", QString::fromUtf8("ä€%s"));
    QCOMPARE(log.take(), QStringList(QString::fromUtf8(
                             "2|My|setFieldText(): Unsupported text type 'ä?%s' - falling back to 'auto'")));
}

void tst_KyScriptDialog::fieldTextIsReadByType_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("expected");
    const QString plain = QStringLiteral("one two");
    QTest::newRow("none") << "" << plain;
    QTest::newRow("undefined") << "undefined" << plain;
    QTest::newRow("empty") << "''" << plain;
    QTest::newRow("plaintext") << "'plaintext'" << plain;
    QTest::newRow("PLAINTEXT") << "'PLAINTEXT'" << plain;
    QTest::newRow("markdown") << "'markdown'"
                              << "one **two**\n\n";
    QTest::newRow("Markdown") << "'Markdown'"
                              << "one **two**\n\n";
    QTest::newRow("html") << "'html'"
                          << "<!DOCTYPE HTML";
    QTest::newRow("Html") << "'Html'"
                          << "<!DOCTYPE HTML";
}

void tst_KyScriptDialog::fieldTextIsReadByType()
{
    QFETCH(QString, arguments);
    QFETCH(QString, expected);
    LogCapture log(2);
    for (const char* browser : {"false", "true"}) {
        s->make(QStringLiteral("{ fieldText: '<p>one <b>two</b></p>', useTextBrowser: %1 }").arg(browser));
        const QString text = s->run("d.fieldText(" + arguments + ")");
        QCOMPARE(text.left(expected.size()), expected);
        QCOMPARE(text.size() == expected.size(), !expected.startsWith('<'));
    }
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptDialog::unknownTypeIsLoggedAndReadPlain_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("auto") << "auto";
    QTest::newRow("other") << "rtf";
}

void tst_KyScriptDialog::unknownTypeIsLoggedAndReadPlain()
{
    QFETCH(QString, type);
    s->make("{ fieldText: '<b>x</b>' }");
    LogCapture log(2);
    QCOMPARE(s->run("d.fieldText('" + type + "')"), QStringLiteral("x"));
    QCOMPARE(log.take(), QStringList("2|KyScriptDialog|fieldText(): Unsupported text type '" + type +
                                     "' - falling back to plain text"));
}

void tst_KyScriptDialog::operationsReachTheActiveTextWidgetOnly()
{
    s->make("{ fieldText: 'a', useTextBrowser: true }");
    s->run("d.setFieldText('b')");
    QCOMPARE(s->browser()->toPlainText(), QStringLiteral("b"));
    QCOMPARE(s->edit()->toPlainText(), QString());
    s->make("{ fieldText: 'a' }");
    s->run("d.setFieldText('b')");
    QCOMPARE(s->browser()->toPlainText(), QString());
    QCOMPARE(s->edit()->toPlainText(), QStringLiteral("b"));
}

void tst_KyScriptDialog::fieldIsMadeEditable()
{
    s->makeAndShow("{ fieldText: '' }");
    s->run("d.setEditable(true)");
    QTest::keyClicks(s->edit(), "ab");
    QVERIFY(s->edit()->viewport()->autoFillBackground());
    s->run("d.setEditable(false)");
    QVERIFY(!s->edit()->viewport()->autoFillBackground());
    QTest::keyClicks(s->edit(), "cd");
    QCOMPARE(s->run("d.fieldText()"), QStringLiteral("ab"));
}

void tst_KyScriptDialog::browserIsNeverEditable()
{
    const KyScriptDialog& dialog = s->makeAndShow("{ fieldText: 'x', useTextBrowser: true, editable: true }");
    QVERIFY(QTest::qWaitForWindowActive(const_cast<KyScriptDialog*>(&dialog)));
    s->browser()->clearFocus();
    const QImage before = const_cast<KyScriptDialog&>(dialog).grab().toImage();
    s->run("d.setEditable(false)");
    QCOMPARE(const_cast<KyScriptDialog&>(dialog).grab().toImage(), before);
    s->run("d.setEditable(true)");
    QCOMPARE(const_cast<KyScriptDialog&>(dialog).grab().toImage(), before);
    QTest::keyClicks(s->browser(), "typed");
    QCOMPARE(s->run("d.fieldText()"), QStringLiteral("x"));
}

void tst_KyScriptDialog::lineEditIsSetAndRead()
{
    s->makeAndShow("{ showLineEdit: true }");
    s->run("d.setLineEditText('abc')");
    QCOMPARE(s->lineEdit()->text(), QStringLiteral("abc"));
    QCOMPARE(s->run("d.lineEditText()"), QStringLiteral("abc"));
    s->run("d.setLineEditEnabled(true)");
    QVERIFY(s->lineEdit()->isEnabled());
    QTest::keyClicks(s->lineEdit(), "d");
    QCOMPARE(s->run("d.lineEditText()"), QStringLiteral("abcd"));
    s->run("d.setLineEditEnabled(false)");
    QVERIFY(!s->lineEdit()->isEnabled());
}

void tst_KyScriptDialog::fieldIsScrolled_data()
{
    QTest::addColumn<QString>("browser");
    QTest::newRow("edit") << "false";
    QTest::newRow("browser") << "true";
}

void tst_KyScriptDialog::fieldIsScrolled()
{
    QFETCH(QString, browser);
    s->makeAndShow("{ fieldText: new Array(300).join('line\\n'), useTextBrowser: " + browser + " }");
    const QTextEdit* field = browser == "true" ? s->browser() : s->edit();
    const QScrollBar* bar = field->verticalScrollBar();
    QCOMPARE(bar->value(), 0);
    s->run("d.scrollToBottom()");
    QVERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), bar->maximum());
    s->run("d.scrollToTop()");
    QCOMPARE(bar->value(), 0);
}

void tst_KyScriptDialog::fieldIsScrolledBeforeItIsShown()
{
    s->make("{ fieldText: new Array(300).join('line\\n') }");
    s->run("d.scrollToBottom()");
    s->show();
    const QScrollBar* bar = s->edit()->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    QTRY_COMPARE(bar->value(), bar->maximum());
    s->click(0);
    s->run("d.scrollToBottom(); d.scrollToTop()");
    s->show();
    QCOMPARE(bar->value(), 0);
}

void tst_KyScriptDialog::longFieldIsScrolledToItsVeryEnd()
{
    s->makeAndShow("{ fieldText: '' }");
    s->run("d.setFieldText(new Array(20000).join('a line of some length\\n')); d.scrollToBottom()");
    const QScrollBar* bar = s->edit()->verticalScrollBar();
    QCOMPARE(bar->value(), bar->maximum());
    QTest::qWait(50);
    QCOMPARE(bar->value(), bar->maximum());
}

void tst_KyScriptDialog::operationsAreVisibleToScripts_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"exec",
                             "show",
                             "setStatus",
                             "setTitle",
                             "title",
                             "setMessage",
                             "setFieldText",
                             "fieldText",
                             "setEditable",
                             "setLineEditEnabled",
                             "setLineEditText",
                             "lineEditText",
                             "scrollToBottom",
                             "scrollToTop",
                             "setButtons",
                             "setButtonToolTips",
                             "setButtonEnabled",
                             "setButtonsEnabled",
                             "result",
                             "clickedButton",
                             "clickedButtonMenuItem",
                             "autoClosed",
                             "close"})
        QTest::newRow(name) << name;
    for (const char* name : {"processed", "linkClicked", "linkHovered"})
        QTest::newRow(name) << QLatin1String(name) + ".connect";
}

void tst_KyScriptDialog::operationsAreVisibleToScripts()
{
    QFETCH(QString, name);
    s->make();
    QCOMPARE(s->run("typeof d." + name), QStringLiteral("function"));
}

void tst_KyScriptDialog::clickedLinkIsTold_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("told");
    QTest::newRow("web") << "https://example.org/a?b=c#d"
                         << "https://example.org/a?b=c#d";
    QTest::newRow("own scheme") << "study:1.2.3"
                                << "study:1.2.3";
    QTest::newRow("anchor") << "#part"
                            << "#part";
    QTest::newRow("escapes") << "x:a%20b" << QUrl("x:a%20b").toString();
}

void tst_KyScriptDialog::clickedLinkIsTold()
{
    QFETCH(QString, link);
    QFETCH(QString, told);
    s->makeAndShow("{ fieldText: '<a href=\"" + link + "\">link to a place</a>', useTextBrowser: true }");
    s->run("var links = []; d.linkClicked.connect(function(url) { links.push(url); });");
    const QPoint onLink = s->browser()->cursorRect().center() + QPoint(12, 0);
    QTest::mouseClick(s->browser()->viewport(), Qt::LeftButton, {}, onLink);
    QCOMPARE(s->run("links.join()"), told);
    QCOMPARE(s->run("d.fieldText()"), QStringLiteral("link to a place"));
    QVERIFY(s->dialog().isVisible());
}

void tst_KyScriptDialog::hoveredLinkIsTold()
{
    s->makeAndShow("{ fieldText: '<a href=\"x:one\">link to a place</a>', useTextBrowser: true }");
    s->run("var links = []; d.linkHovered.connect(function(link) { links.push('[' + link + ']'); });");
    const QPoint onLink = s->browser()->cursorRect().center() + QPoint(12, 0);
    QTest::mouseMove(s->browser()->viewport(), onLink);
    QTRY_COMPARE(s->run("links.join()"), QStringLiteral("[x:one]"));
    QTest::mouseMove(s->browser()->viewport(), s->browser()->viewport()->rect().bottomRight() - QPoint(3, 3));
    QTRY_COMPARE(s->run("links.join()"), QStringLiteral("[x:one],[]"));
}

void tst_KyScriptDialog::linkIsOpenedByKeyboard()
{
    KyScriptDialog& dialog = s->makeAndShow(
        "{ fieldText: '<a href=\"x:one\">one</a> <a href=\"x:two\">two</a>', useTextBrowser: true }");
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    s->run("var links = []; d.linkClicked.connect(function(url) { links.push(url); });");
    QCOMPARE(dialog.focusWidget(), s->browser());
    QTest::keyClick(s->browser(), Qt::Key_Tab);
    QTest::keyClick(s->browser(), Qt::Key_Tab);
    QTest::keyClick(s->browser(), Qt::Key_Return);
    QCOMPARE(s->run("links.join()"), QStringLiteral("x:two"));
    QVERIFY(dialog.isVisible());
}

void tst_KyScriptDialog::showReturnsAtOnce()
{
    const KyScriptDialog& dialog = s->make();
    QCOMPARE(s->run("d.show(); d.visible"), QStringLiteral("false"));
    QVERIFY(!dialog.isVisible());
    QTRY_VERIFY(dialog.isVisible());
}

void tst_KyScriptDialog::showForgetsTheLastAnswer()
{
    s->makeAndShow("{ buttons: ['a', { text: 'b', menuItems: [{ text: 'c' }] }] }");
    s->click(0);
    QCOMPARE(s->run("[d.result(), d.clickedButton(), d.clickedButtonMenuItem()].join()"),
             QStringLiteral("1,0,-1"));
    s->run("d.show()");
    QCOMPARE(s->run("[d.result(), d.clickedButton(), d.clickedButtonMenuItem()].join()"),
             QStringLiteral("0,-1,-1"));
}

void tst_KyScriptDialog::nothingIsShownWhenTheDialogGoesFirst()
{
    s->make();
    s->run("d.show()");
    delete &s->dialog();
    QTest::qWait(20);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_KyScriptDialog::dialogIsShownAgain()
{
    const KyScriptDialog& dialog = s->makeAndShow();
    s->click(0);
    QVERIFY(!dialog.isVisible());
    s->show();
    s->click(0);
    QCOMPARE(s->answers(), QStringList({"1 0 -1 0 false", "1 0 -1 0 false"}));
}

void tst_KyScriptDialog::dialogStandsAboveTheMainWindow()
{
    QWidget window;
    window.show();
    s->platform->monitors.setMainWindow(&window);
    const KyScriptDialog& dialog = s->makeAndShow();
    QCOMPARE(dialog.owner(), &window);
    QCOMPARE(dialog.windowHandle()->transientParent(), window.windowHandle());
    QVERIFY(!dialog.parent());
}

void tst_KyScriptDialog::longMessageMakesRoom()
{
    s->makeAndShow("{ message: 'short' }");
    s->click(0);
    const KyScriptDialog& dialog = s->makeAndShow("{ message: new Array(120).join('some words ') }");
    QVERIFY(s->label()->height() >= s->label()->heightForWidth(s->label()->width()));
    QVERIFY(dialog.height() < dialog.screen()->availableGeometry().height());
    QVERIFY(dialog.rect().contains(s->button(0)->mapTo(&dialog, s->button(0)->rect().bottomRight())));
}

void tst_KyScriptDialog::longMessageStaysOnTheScreen()
{
    const KyScriptDialog& dialog = s->makeAndShow("{ message: new Array(9000).join('some words ') }");
    QVERIFY(dialog.screen()->availableGeometry().contains(dialog.geometry()));
    QVERIFY(dialog.rect().contains(s->button(0)->mapTo(&dialog, s->button(0)->rect().bottomRight())));
    s->click(0);
    QVERIFY(!dialog.isVisible());
}

void tst_KyScriptDialog::longerMessageMakesRoomWhileOnShow()
{
    KyScriptDialog& dialog = s->makeAndShow("{ message: 'short' }");
    const QRect screen = dialog.screen()->availableGeometry();
    dialog.move(screen.left() + 50, screen.bottom() - dialog.height() - 10);
    s->run("d.setMessage(new Array(100).join('some words '))");
    QVERIFY(s->label()->heightForWidth(s->label()->width()) <= dialog.height());
    QVERIFY(screen.contains(dialog.geometry()));
}

void tst_KyScriptDialog::longWordDoesNotMakeTheWindowWider()
{
    const KyScriptDialog& dialog = s->makeAndShow("{ message: new Array(3000).join('x') }");
    QVERIFY(dialog.width() <= dialog.screen()->availableGeometry().width());
}

void tst_KyScriptDialog::endIsLogged()
{
    s->make("{ context: 'My' }");
    delete &s->dialog();
    QCOMPARE(s->session->take(), QStringList("My|Destroyed"));
    QCOMPARE(s->session->levels, QList<int>{1});
}

void tst_KyScriptDialog::droppedDialogIsCollected_data()
{
    QTest::addColumn<bool>("hasMainWindow");
    QTest::addColumn<bool>("isShown");
    QTest::newRow("hidden") << false << false;
    QTest::newRow("shown") << false << true;
    QTest::newRow("hidden, above a main window") << true << false;
    QTest::newRow("shown, above a main window") << true << true;
}

void tst_KyScriptDialog::droppedDialogIsCollected()
{
    QFETCH(bool, hasMainWindow);
    QFETCH(bool, isShown);
    QWidget window;
    window.show();
    if (hasMainWindow)
        s->platform->monitors.setMainWindow(&window);
    QPointer<KyScriptDialog> dialog(isShown ? &s->makeAndShow() : &s->make());
    s->run("d = null");
    s->engine->collectGarbage();
    flushDeletions();
    // The handler of `processed` refers to d, not to the dialog.
    QVERIFY(!dialog);
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|Destroyed"));
}

void tst_KyScriptDialog::dialogNeverShownIsNotRegistered()
{
    class Engine : public KyScriptEngine
    {
    public:
        using KyScriptEngine::cleanup;
        using KyScriptEngine::KyScriptEngine;
    };
    Engine engine(nullptr, ScriptDialog);
    const auto dialogIn = [&] {
        return qobject_cast<KyScriptDialog*>(engine.globalObject().property("d").toQObject());
    };
    engine.runScript(KyScriptProgram("d = new Dialog()", ""), false);
    engine.cleanup();
    QVERIFY(dialogIn());
    engine.runScript(KyScriptProgram("d.show()", ""), false);
    engine.cleanup();
    QVERIFY(!dialogIn());
}

void tst_KyScriptDialog::cleanupEndsShownDialogs()
{
    QPointer<KyScriptDialog> shown(&s->makeAndShow());
    QPointer<KyScriptDialog> finished(&s->makeAndShow());
    s->click(0);
    s->engine.reset();
    QVERIFY(!shown && !finished);
}

void tst_KyScriptDialog::dialogEndsWithItsEngine_data()
{
    QTest::addColumn<QString>("state");
    for (const char* state : {"made", "to be shown", "on show", "busy", "closed"})
        QTest::newRow(state) << state;
}

void tst_KyScriptDialog::dialogEndsWithItsEngine()
{
    QFETCH(QString, state);
    QPointer<KyScriptDialog> dialog(&s->make("{ fieldText: 'x', showLineEdit: true }"));
    if (state == "to be shown")
        s->run("d.show()");
    else if (state != "made")
        s->show();
    if (state == "busy")
        s->run("d.setStatus(true, 'x')");
    if (state == "closed")
        s->click(0);
    s->session->take();
    s->engine.reset();
    flushDeletions();
    QVERIFY(!dialog);
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|Destroyed"));
    QTest::qWait(10);
}

void tst_KyScriptDialog::dialogOutlivesThePlatform()
{
    const KyScriptDialog& dialog = s->makeAndShow("{ buttons: ['a'] }");
    s->platform.reset();
    QVERIFY(dialog.isVisible());
    s->run("d.setStatus(true, 'busy'); d.setMessage('x')");
    s->click(0);
    QCOMPARE(s->answers(), QStringList("1 0 -1 0 false"));
    s->show();
}

void tst_KyScriptDialog::dialogOutlivesTheMainWindow()
{
    auto window = std::make_unique<QWidget>();
    window->show();
    s->platform->monitors.setMainWindow(window.get());
    const KyScriptDialog& dialog = s->makeAndShow();
    s->session->take();
    window.reset();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(s->answers(), QStringList("0 -1 -1 0 false"));
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|Rejected without button click"));
    s->show();
    s->click(0);
}

void tst_KyScriptDialog::dialogOutlivesTheServerPeer()
{
    s->makeAndShow();
    s->peer.reset();
    s->click(0);
    QCOMPARE(s->answers(), QStringList("1 0 -1 0 false"));
    QCOMPARE(s->session->take(), QStringList());
}

void tst_KyScriptDialog::scriptMayDestroyTheDialog()
{
    QPointer<KyScriptDialog> dialog(&s->makeAndShow());
    s->run("d.destroy()");
    flushDeletions();
    QVERIFY(!dialog);
}

void tst_KyScriptDialog::deadDialogIsHarmless()
{
    s->make();
    delete &s->dialog();
    QVERIFY(s->run("d.show()").startsWith("TypeError"));
    QCOMPARE(s->run("String(d.visible)"), QStringLiteral("undefined"));
}

void tst_KyScriptDialog::manyDialogsLeaveNothingBehind()
{
    const auto count = [] { return QApplication::allWidgets().size(); };
    QWidget window;
    window.show();
    s->platform->monitors.setMainWindow(&window);
    s->run("new Dialog()");
    s->engine->collectGarbage();
    flushDeletions();
    const auto before = count();
    s->run("for (var i = 0; i < 50; ++i) { var x = new Dialog({ fieldText: 'x', buttons: ['a', 'b'] });"
           "x.setStatus(true, 'busy'); } x = null");
    QVERIFY(count() > before + 50);
    s->engine->collectGarbage();
    flushDeletions();
    QCOMPARE(count(), before);
}

void tst_KyScriptDialog::autoCloseFollowsNotifications_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("session");
    QTest::addColumn<QString>("config");
    QTest::addColumn<bool>("isShown");
    QTest::addColumn<bool>("closes");
    const QString autoClose = QStringLiteral("{ autoClose: true }");
    QTest::newRow("session closed") << 1 << 0 << autoClose << true << true;
    QTest::newRow("patient changed") << 112 << 0 << autoClose << true << true;
    QTest::newRow("of a session") << 1 << 7 << autoClose << true << true;
    QTest::newRow("manual mode") << 1 << 0 << "{ autoClose: true, manuallyCloseDialog: true }" << true
                                 << true;
    QTest::newRow("other event") << 102 << 0 << autoClose << true << false;
    QTest::newRow("another event") << 2 << 0 << autoClose << true << false;
    QTest::newRow("hidden") << 1 << 0 << autoClose << false << false;
    QTest::newRow("without the key") << 1 << 0 << "{}" << true << false;
    QTest::newRow("key is false") << 112 << 0 << "{ autoClose: false }" << true << false;
}

void tst_KyScriptDialog::autoCloseFollowsNotifications()
{
    QFETCH(int, code);
    QFETCH(int, session);
    QFETCH(QString, config);
    QFETCH(bool, isShown);
    QFETCH(bool, closes);
    const KyScriptDialog& dialog = s->make(config);
    if (isShown)
        s->show();
    KyNotifiable::notify(KyNotification(code, 0, 0, nullptr, OvSessionContextID{session}));
    QCOMPARE(dialog.isVisible(), isShown && !closes);
    QCOMPARE(s->answers(), closes ? QStringList("0 -2 -1 1 false") : QStringList());
    QCOMPARE(s->session->take(),
             closes ? QStringList("KyScriptDialog|Rejected due to auto-close") : QStringList());
    QCOMPARE(s->run("d.autoClosed()"), QString(closes ? "1" : "0"));
}

void tst_KyScriptDialog::closedByAutoCloseAndShownAgain()
{
    s->makeAndShow("{ autoClose: true }");
    KyNotifiable::notify(KyNotification(1));
    KyNotifiable::notify(KyNotification(1));
    QCOMPARE(s->answers().size(), 1);
    s->show();
    QCOMPARE(s->run("d.autoClosed()"), QStringLiteral("0"));
    KyNotifiable::notify(KyNotification(112));
    QCOMPARE(s->answers().size(), 2);
}

KY_TEST_MAIN(tst_KyScriptDialog)
#include "tst_KyScriptDialog.moc"

// The buttons of the dialog of scripts, and its answers: real clicks, choices, keys and closes.

#include "DialogStage.h"

#include <support/ModalAnswer.h>

#include <kybase/KyNotifiable.h>

#include <QAction>
#include <QTextEdit>

#include <optional>

namespace {

/// Two buttons with menus between two without.
constexpr const char* Menus =
    "{ buttons: ['Yes', { text: 'No', toolTip: 'Not now', menuItems: [{ text: 'Today' },"
    " { text: 'This week', toolTip: 'Seven days' }, { text: 'Never' }] }, 'Later'] }";
constexpr const char* FirstMenu = "{ buttons: [{ text: 'Send', menuItems: [{ text: 'a' }, { text: 'b' },"
                                  " { text: 'c' }] }, 'Cancel'] }";

QString manual(const char* inConfig)
{
    return QLatin1String(inConfig).mid(0, int(qstrlen(inConfig)) - 1) +
           QStringLiteral(", manuallyCloseDialog: true }");
}

void flushDeletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class tst_KyScriptDialogButtons : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Making buttons
    void buttonsAreMadeOfTheirDescriptions_data();
    void buttonsAreMadeOfTheirDescriptions();
    void buttonsHaveTheirIndicesAndRoles();
    void menuIsMadeOfItsItems();
    void itemsAreMadeOfMapsOnly();
    void noButtonIsTheDefault_data();
    void noButtonIsTheDefault();
    void buttonsAreReplaced();
    void buttonsAreTakenAway();
    void menusOfOldButtonsStayOutOfReach();
    void keyboardStaysWithTheButtons();
    void toolTipsAreSet_data();
    void toolTipsAreSet();

    // Switching buttons on and off
    void buttonIsSwitched_data();
    void buttonIsSwitched();
    void buttonTakesItsItemsAlong();
    void itemIsSwitchedAlone();
    void whatIsOutOfRangeDoesNothing_data();
    void whatIsOutOfRangeDoesNothing();
    void whatIsNoIndexIsReported_data();
    void whatIsNoIndexIsReported();
    void severalAreSwitched_data();
    void severalAreSwitched();
    void disabledButtonDoesNotAnswer();

    // Answers
    void clickAnswers_data();
    void clickAnswers();
    void choiceAnswers_data();
    void choiceAnswers();
    void enterAnswers_data();
    void enterAnswers();
    void closeAnswers_data();
    void closeAnswers();
    void scriptClosesTheDialog_data();
    void scriptClosesTheDialog();
    void answerStaysUntilTheNextShow();
    void textsAreReadAfterTheAnswer();
    void returnClicksNoButton();
    void enterWithALineEditReachesNoButton();
    void openMenuIsNoAnswer();
    void buttonsWorkByKeyboard();
    void menuWorksByKeyboard();
    void logIsLatin1();
    void logTakesPlaceholdersAsTheyAre();

    // Manual mode
    void manualClickStays_data();
    void manualClickStays();
    void manualChoiceStays();
    void manualChoiceLogsTheTextsOfOld();
    void manualEnterStays();
    void manualCloseAnswers();
    void manualAutoCloseAnswers();
    void answerIsGoneAfterTheHandler();
    void handlerClosesTheDialog();
    void resultIsGoneAfterTheHandler();
    void clickInAHandlerHasNoItem();
    void autoCloseInAHandlerKeepsTheItem();

    // What handlers do
    void handlerReplacesTheButtons_data();
    void handlerReplacesTheButtons();
    void handlerDropsTheDialog_data();
    void handlerDropsTheDialog();
    void handlerDestroysTheDialog_data();
    void handlerDestroysTheDialog();
    void handlerOfAnySignalDestroysTheDialog_data();
    void handlerOfAnySignalDestroysTheDialog();
    void argumentDestroysTheDialog_data();
    void argumentDestroysTheDialog();
    void dialogIsDeletedInAHandler_data();
    void dialogIsDeletedInAHandler();
    void cleanupWaitsForTheHandler();
    void handlerShowsTheDialogAgain();
    void handlerOfAnotherSignalTakesTheButtons_data();
    void handlerOfAnotherSignalTakesTheButtons();
    void errorInAHandlerHarmsNothing();
    void handlerMayCallAnything();
    void linkHandlerDropsTheDialog();

private:
    void act(const QString& inAction);
    static void addActions();

    std::optional<DialogStage> s;
    std::unique_ptr<ContractWatch> mContracts;
};

void tst_KyScriptDialogButtons::init()
{
    mContracts = std::make_unique<ContractWatch>();
    s.emplace();
}

void tst_KyScriptDialogButtons::cleanup()
{
    const QString broken = mContracts->verify();
    s.reset();
    flushDeletions();
    mContracts.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

/// All ways in which a user answers, for rows.
void tst_KyScriptDialogButtons::addActions()
{
    QTest::addColumn<QString>("action");
    for (const char* action : {"click", "space", "choice", "enter", "escape", "close"})
        QTest::newRow(action) << action;
}

/// Answers a dialog with the buttons of FirstMenu, and a line edit, in the way of that name.
void tst_KyScriptDialogButtons::act(const QString& inAction)
{
    KyScriptDialog& dialog = s->dialog();
    if (inAction == "click")
        s->click(1);
    else if (inAction == "space")
        QTest::keyClick(s->button(1), Qt::Key_Space);
    else if (inAction == "choice")
        s->choose(0, 1);
    else if (inAction == "enter")
        QTest::keyClick(s->lineEdit(), Qt::Key_Return);
    else if (inAction == "escape")
        QTest::keyClick(&dialog, Qt::Key_Escape);
    else
        dialog.close();
}

void tst_KyScriptDialogButtons::buttonsAreMadeOfTheirDescriptions_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<int>("items");
    QTest::newRow("text") << "'Yes'"
                          << "Yes"
                          << "" << -1;
    QTest::newRow("empty text") << "''"
                                << ""
                                << "" << -1;
    QTest::newRow("mnemonic") << "'&Yes'"
                              << "&Yes"
                              << "" << -1;
    QTest::newRow("map") << "{ text: 'Yes' }"
                         << "Yes"
                         << "" << -1;
    QTest::newRow("tool tip") << "{ text: 'Yes', toolTip: 'Do it' }"
                              << "Yes"
                              << "Do it" << -1;
    QTest::newRow("empty tool tip") << "{ text: 'Yes', toolTip: '' }"
                                    << "Yes"
                                    << "" << -1;
    QTest::newRow("empty map") << "{}"
                               << ""
                               << "" << -1;
    QTest::newRow("tool tip alone") << "{ toolTip: 'x' }"
                                    << ""
                                    << "x" << -1;
    QTest::newRow("items") << "{ text: 'Yes', menuItems: [{ text: 'a' }, { text: 'b' }] }"
                           << "Yes"
                           << "" << 2;
    QTest::newRow("no items") << "{ text: 'Yes', menuItems: [] }"
                              << "Yes"
                              << "" << -1;
    QTest::newRow("a text is no list of items") << "{ text: 'Yes', menuItems: 'abc' }"
                                                << "Yes"
                                                << "" << -1;
    QTest::newRow("items of null") << "{ text: 'Yes', menuItems: null }"
                                   << "Yes"
                                   << "" << -1;
    QTest::newRow("number as text") << "{ text: 3 }"
                                    << "3"
                                    << "" << -1;
    for (const char* other : {"5", "null", "undefined", "true", "[]", "['Yes']", "function() {}",
                              "Symbol('x')", "Message", "new Date()", "/x/"})
        QTest::newRow(other) << other << ""
                             << "" << -1;
}

void tst_KyScriptDialogButtons::buttonsAreMadeOfTheirDescriptions()
{
    QFETCH(QString, description);
    QFETCH(QString, text);
    QFETCH(QString, toolTip);
    QFETCH(int, items);
    const auto check = [&](int index) {
        QCOMPARE(s->button(index)->text(), text);
        QCOMPARE(s->button(index)->toolTip(), toolTip);
        QCOMPARE(s->button(index)->menu() ? int(s->button(index)->menu()->actions().size()) : -1, items);
    };
    s->make("{ buttons: [" + description + ", 'x'] }");
    QCOMPARE(s->buttonTexts().size(), 2);
    check(0);
    s->run("d.setButtons(['x', " + description + "])");
    QCOMPARE(s->buttonTexts().size(), 2);
    check(1);
}

void tst_KyScriptDialogButtons::buttonsHaveTheirIndicesAndRoles()
{
    s->make("{ buttons: ['Cancel', 'OK', 'Help'] }");
    const auto* group = s->part<QButtonGroup>("group");
    const auto* box = s->part<QDialogButtonBox>("box");
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(group->id(s->button(i)), i);
        QCOMPARE(box->buttonRole(s->button(i)),
                 i == 0 ? QDialogButtonBox::AcceptRole : QDialogButtonBox::RejectRole);
    }
    QCOMPARE(box->buttons().size(), 3);
    QCOMPARE(box->standardButtons(), QDialogButtonBox::NoButton);
}

void tst_KyScriptDialogButtons::menuIsMadeOfItsItems()
{
    s->make(Menus);
    const QMenu* menu = s->button(1)->menu();
    QVERIFY(menu);
    QCOMPARE(menu->parent(), &s->dialog());
    QCOMPARE(menu->actions().at(0)->text(), QStringLiteral("Today"));
    QCOMPARE(menu->actions().at(1)->toolTip(), QStringLiteral("Seven days"));
    QVERIFY(menu->toolTipsVisible());
    QVERIFY(!s->button(0)->menu());
    s->make(FirstMenu);
    QVERIFY(!s->button(0)->menu()->toolTipsVisible());
}

void tst_KyScriptDialogButtons::itemsAreMadeOfMapsOnly()
{
    s->make(
        "{ buttons: [{ text: 'x', menuItems: ['bare', { text: 'map' }, 5, null, [], { toolTip: 'y' }] }] }");
    QStringList texts;
    for (const QAction* action : s->button(0)->menu()->actions())
        texts.append(action->text());
    QCOMPARE(texts, QStringList({"", "map", "", "", "", ""}));
}

void tst_KyScriptDialogButtons::noButtonIsTheDefault_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("as made") << "";
    QTest::newRow("replaced on show") << "d.setButtons(['x', 'y'])";
    QTest::newRow("shown again") << "d.hide(); d.show()";
}

void tst_KyScriptDialogButtons::noButtonIsTheDefault()
{
    QFETCH(QString, script);
    s->makeAndShow("{ buttons: ['a', 'b'] }");
    s->run(script);
    QTRY_VERIFY(s->dialog().isVisible());
    for (int i = 0; i < 2; ++i) {
        QVERIFY(!s->button(i)->isDefault());
        QVERIFY(!s->button(i)->autoDefault());
    }
    s->button(1)->setFocus();
    QVERIFY(!s->button(1)->isDefault());
}

void tst_KyScriptDialogButtons::buttonsAreReplaced()
{
    s->makeAndShow("{ buttons: ['a', 'b', 'c'] }");
    s->run("d.setButtons(['x', 'y'])");
    QCOMPARE(s->buttonTexts(), QStringList({"x", "y"}));
    QCOMPARE(s->part<QDialogButtonBox>("box")->buttons().size(), 2);
    QVERIFY(s->button(1)->isVisible());
    s->click(1);
    QCOMPARE(s->answers(), QStringList("0 1 -1 0 false"));
}

void tst_KyScriptDialogButtons::buttonsAreTakenAway()
{
    for (const char* none : {"[]", "'abc'", "null", "undefined", "5", "{}"}) {
        s->makeAndShow("{ buttons: ['a', 'b'] }");
        s->run(QStringLiteral("d.setButtons(%1)").arg(none));
        QCOMPARE(s->buttonTexts(), QStringList());
        QVERIFY(s->part<QDialogButtonBox>("box")->buttons().isEmpty());
        QTest::keyClick(&s->dialog(), Qt::Key_Escape);
        QCOMPARE(s->answers(), QStringList("0 -1 -1 0 false"));
    }
}

void tst_KyScriptDialogButtons::menusOfOldButtonsStayOutOfReach()
{
    s->makeAndShow(FirstMenu);
    QPointer<QMenu> menu(s->button(0)->menu());
    s->run("d.setButtons(['a'])");
    flushDeletions();
    QVERIFY(menu);
    QCOMPARE(menu->parent(), &s->dialog());
    QVERIFY(!s->button(0)->menu());
    delete &s->dialog();
    QVERIFY(!menu);
}

void tst_KyScriptDialogButtons::keyboardStaysWithTheButtons()
{
    KyScriptDialog& dialog = s->makeAndShow("{ buttons: ['a', 'b'] }");
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget(), s->button(0));
    s->run("d.setButtons(['x', 'y'])");
    QCOMPARE(dialog.focusWidget(), s->button(0));
}

void tst_KyScriptDialogButtons::toolTipsAreSet_data()
{
    QTest::addColumn<QString>("toolTips");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("all") << "['x', 'y']" << QStringList({"x", "y"});
    QTest::newRow("first") << "['x']" << QStringList({"x", "own"});
    QTest::newRow("empty removes") << "['', '']" << QStringList({"", ""});
    QTest::newRow("surplus") << "['x', 'y', 'z']" << QStringList({"x", "y"});
    QTest::newRow("none") << "[]" << QStringList({"own", "own"});
    QTest::newRow("numbers") << "[1, 2]" << QStringList({"1", "2"});
    QTest::newRow("null") << "null" << QStringList({"own", "own"});
    QTest::newRow("symbol") << "[Symbol('x')]" << QStringList({"", "own"});
    QTest::newRow("text") << "'abc'" << QStringList({"abc", "own"});
}

void tst_KyScriptDialogButtons::toolTipsAreSet()
{
    QFETCH(QString, toolTips);
    QFETCH(QStringList, expected);
    s->make("{ buttons: [{ text: 'a', toolTip: 'own' }, { text: 'b', toolTip: 'own' }] }");
    s->run("d.setButtonToolTips(" + toolTips + ")");
    QCOMPARE(QStringList({s->button(0)->toolTip(), s->button(1)->toolTip()}), expected);
}

void tst_KyScriptDialogButtons::buttonIsSwitched_data()
{
    QTest::addColumn<QString>("index");
    QTest::newRow("whole number") << "1";
    QTest::newRow("computed whole number") << "Math.round(0.8)";
    QTest::newRow("fraction") << "1.2";
}

void tst_KyScriptDialogButtons::buttonIsSwitched()
{
    QFETCH(QString, index);
    s->make("{ buttons: ['a', 'b', 'c'] }");
    s->run("d.setButtonEnabled(" + index + ", false)");
    QVERIFY(s->button(0)->isEnabled() && !s->button(1)->isEnabled() && s->button(2)->isEnabled());
    s->run("d.setButtonEnabled(" + index + ", true)");
    QVERIFY(s->button(1)->isEnabled());
}

void tst_KyScriptDialogButtons::buttonTakesItsItemsAlong()
{
    s->make(Menus);
    const auto items = s->button(1)->menu()->actions();
    const auto enabled = [&] {
        return int(
            std::count_if(items.begin(), items.end(), [](const QAction* a) { return a->isEnabled(); }));
    };
    s->run("d.setButtonEnabled([1, 2], false)");
    QCOMPARE(enabled(), 2);
    s->run("d.setButtonEnabled(1, false)");
    QVERIFY(!s->button(1)->isEnabled());
    QCOMPARE(enabled(), 0);
    s->run("d.setButtonEnabled(1, true)");
    QVERIFY(s->button(1)->isEnabled());
    QCOMPARE(enabled(), 3);
}

void tst_KyScriptDialogButtons::itemIsSwitchedAlone()
{
    s->make(Menus);
    const auto items = s->button(1)->menu()->actions();
    s->run("d.setButtonEnabled([1, 0], false)");
    QVERIFY(!items.at(0)->isEnabled() && items.at(1)->isEnabled() && items.at(2)->isEnabled());
    QVERIFY(s->button(1)->isEnabled());
    s->run("d.setButtonEnabled([1, 0], true)");
    QVERIFY(items.at(0)->isEnabled());
    s->run("d.setButtonEnabled([1, Math.round(1.6), 'surplus'], false)");
    QVERIFY(!items.at(2)->isEnabled());
}

void tst_KyScriptDialogButtons::whatIsOutOfRangeDoesNothing_data()
{
    QTest::addColumn<QString>("index");
    for (const char* index :
         {"3", "-1", "1e9", "-1e9", "[3, 0]", "[-1, 0]", "[1, 3]", "[1, -1]", "[0, 0]", "[2, 0]", "[9, 9]"})
        QTest::newRow(index) << index;
}

void tst_KyScriptDialogButtons::whatIsOutOfRangeDoesNothing()
{
    QFETCH(QString, index);
    s->make(Menus);
    s->run("d.setButtonEnabled(" + index + ", false)");
    for (int i = 0; i < 3; ++i)
        QVERIFY(s->button(i)->isEnabled());
    for (const QAction* item : s->button(1)->menu()->actions())
        QVERIFY(item->isEnabled());
}

void tst_KyScriptDialogButtons::whatIsNoIndexIsReported_data()
{
    QTest::addColumn<QString>("index");
    for (const char* index : {"[]", "[1]", "'1'", "'12'", "null", "undefined", "true", "{}", "{ length: 2 }",
                              "function() {}", "Message", "Symbol('x')"})
        QTest::newRow(index) << index;
}

void tst_KyScriptDialogButtons::whatIsNoIndexIsReported()
{
    QFETCH(QString, index);
    s->make(Menus);
    mContracts->expect("l.size() >= 2");
    s->run("d.setButtonEnabled(" + index + ", false)");
    QCOMPARE(mContracts->verify(), QString());
    QVERIFY(s->button(0)->isEnabled() && s->button(1)->isEnabled());
}

void tst_KyScriptDialogButtons::severalAreSwitched_data()
{
    QTest::addColumn<QString>("indices");
    QTest::addColumn<QString>("disabled");
    const QString all = QStringLiteral("0 1 1.0 1.1 1.2 2");
    QTest::newRow("empty") << "[]" << all;
    QTest::newRow("number") << "7" << all;
    QTest::newRow("number in range") << "0" << all;
    QTest::newRow("null") << "null" << all;
    QTest::newRow("undefined") << "undefined" << all;
    QTest::newRow("text") << "'01'" << all;
    QTest::newRow("object") << "{}" << all;
    QTest::newRow("one") << "[2]"
                         << "2";
    QTest::newRow("two") << "[0, 2]"
                         << "0 2";
    QTest::newRow("twice") << "[2, 2]"
                           << "2";
    QTest::newRow("with a menu") << "[1]"
                                 << "1 1.0 1.1 1.2";
    QTest::newRow("pair") << "[[1, 2]]"
                          << "1.2";
    QTest::newRow("button and pair") << "[0, [1, 2]]"
                                     << "0 1.2";
    QTest::newRow("out of range") << "[5, -1, [1, 7]]"
                                  << "";
    QTest::newRow("computed") << "[Math.round(1.8)]"
                              << "2";
}

void tst_KyScriptDialogButtons::severalAreSwitched()
{
    QFETCH(QString, indices);
    QFETCH(QString, disabled);
    s->make(Menus);
    s->run("d.setButtonsEnabled(" + indices + ", false)");
    QStringList found;
    for (int i = 0; i < 3; ++i) {
        if (!s->button(i)->isEnabled())
            found.append(QString::number(i));
        for (int k = 0; i == 1 && k < 3; ++k) {
            if (!s->button(1)->menu()->actions().at(k)->isEnabled())
                found.append(QStringLiteral("1.%1").arg(k));
        }
    }
    QCOMPARE(found.join(' '), disabled);
    s->run("d.setButtonsEnabled([], true)");
    QVERIFY(s->button(0)->isEnabled() && s->button(1)->isEnabled() && s->button(2)->isEnabled());
}

void tst_KyScriptDialogButtons::disabledButtonDoesNotAnswer()
{
    const KyScriptDialog& dialog = s->makeAndShow("{ buttons: ['a', 'b'] }");
    s->run("d.setButtonEnabled(1, false)");
    s->click(1);
    QVERIFY(dialog.isVisible());
    QCOMPARE(s->answers(), QStringList());
}

void tst_KyScriptDialogButtons::clickAnswers_data()
{
    QTest::addColumn<QString>("buttons");
    QTest::addColumn<int>("clicked");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("log");
    const QString three = QStringLiteral("['Yes', 'No', 'Cancel']");
    QTest::newRow("first") << three << 0 << "1 0 -1 0 false"
                           << "Accepted with \"Yes\"";
    QTest::newRow("second") << three << 1 << "0 1 -1 0 false"
                            << "Rejected with \"No\"";
    QTest::newRow("third") << three << 2 << "0 2 -1 0 false"
                           << "Rejected with \"Cancel\"";
    QTest::newRow("only") << "['Yes']" << 0 << "1 0 -1 0 false"
                          << "Accepted with \"Yes\"";
    QTest::newRow("without a text") << "['', '']" << 1 << "0 1 -1 0 false"
                                    << "Rejected with \"\"";
    QTest::newRow("mnemonic") << "['&Go']" << 0 << "1 0 -1 0 false"
                              << "Accepted with \"&Go\"";
    QTest::newRow("map") << "['a', { text: 'b' }]" << 1 << "0 1 -1 0 false"
                         << "Rejected with \"b\"";
}

void tst_KyScriptDialogButtons::clickAnswers()
{
    QFETCH(QString, buttons);
    QFETCH(int, clicked);
    QFETCH(QString, answer);
    QFETCH(QString, log);
    const KyScriptDialog& dialog = s->makeAndShow("{ context: 'C', buttons: " + buttons + " }");
    s->click(clicked);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(s->answers(), QStringList(answer));
    QCOMPARE(s->session->take(), QStringList("C|" + log));
    QCOMPARE(s->session->levels, QList<int>{1});
}

void tst_KyScriptDialogButtons::choiceAnswers_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("item");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("log");
    QTest::newRow("first button, last item") << FirstMenu << 0 << 2 << "1 0 2 0 false"
                                             << "Accepted with \"Send\" -> \"c\"";
    QTest::newRow("first button, first item") << FirstMenu << 0 << 0 << "1 0 0 0 false"
                                              << "Accepted with \"Send\" -> \"a\"";
    QTest::newRow("second button, first item") << Menus << 1 << 0 << "0 1 0 0 false"
                                               << "Rejected with \"No\" -> \"Today\"";
    QTest::newRow("second button, second item") << Menus << 1 << 1 << "0 1 1 0 false"
                                                << "Rejected with \"No\" -> \"This week\"";
}

void tst_KyScriptDialogButtons::choiceAnswers()
{
    QFETCH(QString, config);
    QFETCH(int, button);
    QFETCH(int, item);
    QFETCH(QString, answer);
    QFETCH(QString, log);
    const KyScriptDialog& dialog = s->makeAndShow(config);
    s->choose(button, item);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(s->answers(), QStringList(answer));
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|" + log));
}

void tst_KyScriptDialogButtons::enterAnswers_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("text");
    QTest::newRow("Return") << Qt::Key_Return << "";
    QTest::newRow("Enter") << Qt::Key_Enter << "";
    QTest::newRow("with a text") << Qt::Key_Return << "some text";
}

void tst_KyScriptDialogButtons::enterAnswers()
{
    QFETCH(Qt::Key, key);
    QFETCH(QString, text);
    const KyScriptDialog& dialog = s->makeAndShow("{ showLineEdit: true, lineEditEnabled: true }");
    QTest::keyClicks(s->lineEdit(), text);
    QTest::keyClick(s->lineEdit(), key);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(s->answers(), QStringList("0 -3 -1 0 false"));
    QCOMPARE(s->run("d.lineEditText()"), text);
    QCOMPARE(s->session->take(),
             QStringList("KyScriptDialog|Rejected because the user pressed enter in the line edit"));
}

void tst_KyScriptDialogButtons::closeAnswers_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("way");
    for (const char* config :
         {"{}", "{ manuallyCloseDialog: true }", "{ showLineEdit: true, lineEditEnabled: true }",
          "{ fieldText: 'x', editable: true }"})
    {
        QTest::addRow("Escape %s", config) << config << "escape";
        QTest::addRow("close %s", config) << config << "close";
    }
}

void tst_KyScriptDialogButtons::closeAnswers()
{
    QFETCH(QString, config);
    QFETCH(QString, way);
    KyScriptDialog& dialog = s->makeAndShow(config);
    if (way == "escape")
        QTest::keyClick(dialog.focusWidget() ? dialog.focusWidget() : &dialog, Qt::Key_Escape);
    else
        dialog.close();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(s->answers(), QStringList("0 -1 -1 0 false"));
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|Rejected without button click"));
}

void tst_KyScriptDialogButtons::scriptClosesTheDialog_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("answer");
    QTest::newRow("close") << "d.close()"
                           << "0 -1 -1 0 false";
    QTest::newRow("reject") << "d.reject()"
                            << "0 -1 -1 0 false";
    QTest::newRow("accept") << "d.accept()"
                            << "1 -1 -1 0 false";
    QTest::newRow("done") << "d.done(5)"
                          << "5 -1 -1 0 false";
}

void tst_KyScriptDialogButtons::scriptClosesTheDialog()
{
    QFETCH(QString, call);
    QFETCH(QString, answer);
    const KyScriptDialog& dialog = s->makeAndShow();
    s->run(call);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(s->answers(), QStringList(answer));
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|Rejected without button click"));
}

void tst_KyScriptDialogButtons::answerStaysUntilTheNextShow()
{
    s->makeAndShow(FirstMenu);
    s->choose(0, 2);
    const QString read = QStringLiteral("[d.result(), d.clickedButton(), d.clickedButtonMenuItem()].join()");
    QCOMPARE(s->run(read), QStringLiteral("1,0,2"));
    QCOMPARE(s->run(read), QStringLiteral("1,0,2"));
    s->run("d.show()");
    QCOMPARE(s->run(read), QStringLiteral("0,-1,-1"));
}

void tst_KyScriptDialogButtons::textsAreReadAfterTheAnswer()
{
    s->makeAndShow("{ fieldText: '', editable: true, showLineEdit: true, lineEditEnabled: true }");
    s->run("var texts = ''; d.processed.connect(function() { texts = d.fieldText() + '|' + d.lineEditText(); "
           "})");
    QTest::keyClicks(s->edit(), "long");
    QTest::keyClicks(s->lineEdit(), "short");
    s->click(0);
    QCOMPARE(s->run("texts"), QStringLiteral("long|short"));
}

void tst_KyScriptDialogButtons::returnClicksNoButton()
{
    KyScriptDialog& dialog = s->makeAndShow("{ buttons: ['a', 'b'] }");
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        QTest::keyClick(&dialog, key);
        QTest::keyClick(s->button(1), key);
    }
    QVERIFY(dialog.isVisible());
    QCOMPARE(s->answers(), QStringList());
}

void tst_KyScriptDialogButtons::enterWithALineEditReachesNoButton()
{
    KyScriptDialog& dialog = s->makeAndShow("{ buttons: ['a', 'b'], showLineEdit: true }");
    for (QWidget* receiver : {static_cast<QWidget*>(&dialog), static_cast<QWidget*>(s->button(0))}) {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
            QCoreApplication::sendEvent(receiver, &event);
            QVERIFY(!event.isAccepted());
        }
    }
    QVERIFY(dialog.isVisible());
    QCOMPARE(s->answers(), QStringList());
}

void tst_KyScriptDialogButtons::openMenuIsNoAnswer()
{
    const KyScriptDialog& dialog = s->makeAndShow(FirstMenu);
    QMenu* menu = s->button(0)->menu();
    bool wasOpen = false;
    QTimer::singleShot(0, menu, [&] {
        wasOpen = menu->isVisible();
        QTest::keyClick(menu, Qt::Key_Escape);
    });
    s->click(0);
    QTRY_VERIFY(wasOpen && !menu->isVisible());
    QVERIFY(dialog.isVisible());
    QCOMPARE(s->answers(), QStringList());
}

void tst_KyScriptDialogButtons::buttonsWorkByKeyboard()
{
    KyScriptDialog& dialog = s->makeAndShow("{ buttons: ['a', 'b'] }");
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget(), s->button(0));
    QTest::keyClick(&dialog, Qt::Key_Tab);
    QCOMPARE(dialog.focusWidget(), s->button(1));
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Space);
    QCOMPARE(s->answers(), QStringList("0 1 -1 0 false"));
}

void tst_KyScriptDialogButtons::menuWorksByKeyboard()
{
    KyScriptDialog& dialog = s->makeAndShow(FirstMenu);
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QMenu* menu = s->button(0)->menu();
    QTimer::singleShot(0, menu, [menu] {
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QTest::keyClick(s->button(0), Qt::Key_Space);
    QTRY_COMPARE(s->answers(), QStringList("1 0 1 0 false"));
}

void tst_KyScriptDialogButtons::logIsLatin1()
{
    s->makeAndShow(QString::fromUtf8("{ buttons: ['Löschen €'], context: 'Öl€' }"));
    s->click(0);
    QCOMPARE(s->session->take(), QStringList(QString::fromUtf8("Öl?|Accepted with \"Löschen ?\"")));
}

void tst_KyScriptDialogButtons::logTakesPlaceholdersAsTheyAre()
{
    s->makeAndShow("{ buttons: [{ text: '%1 %2', menuItems: [{ text: '%3%s' }] }], context: '%1' }");
    s->choose(0, 0);
    QCOMPARE(s->session->take(), QStringList("%1|Accepted with \"%1 %2\" -> \"%3%s\""));
    delete &s->dialog();
    s->session->take();
    s->makeAndShow("{ buttons: ['%1'], manuallyCloseDialog: true, context: '%s' }");
    s->click(0);
    QCOMPARE(s->session->take(), QStringList("%s|User clicked button \"%1\""));
}

void tst_KyScriptDialogButtons::manualClickStays_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("first") << 0;
    QTest::newRow("second") << 1;
}

void tst_KyScriptDialogButtons::manualClickStays()
{
    QFETCH(int, index);
    const KyScriptDialog& dialog =
        s->makeAndShow("{ buttons: ['a', 'b'], manuallyCloseDialog: true, context: 'M' }");
    s->click(index);
    s->click(index);
    QVERIFY(dialog.isVisible());
    const QString answer = QStringLiteral("0 %1 -1 0 true").arg(index);
    QCOMPARE(s->answers(), QStringList({answer, answer}));
    const QString log = QStringLiteral("M|User clicked button \"%1\"").arg(index == 0 ? "a" : "b");
    QCOMPARE(s->session->take(), QStringList({log, log}));
}

void tst_KyScriptDialogButtons::manualChoiceStays()
{
    const KyScriptDialog& dialog = s->makeAndShow(manual(FirstMenu));
    s->choose(0, 1);
    QVERIFY(dialog.isVisible());
    QCOMPARE(s->answers(), QStringList("0 0 1 0 true"));
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|User clicked button \"Send\" -> \"b\""));
}

void tst_KyScriptDialogButtons::manualChoiceLogsTheTextsOfOld()
{
    s->makeAndShow(manual(FirstMenu));
    s->button(0)->setText("new");
    s->button(0)->menu()->actions().at(1)->setText("new");
    s->choose(0, 1);
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|User clicked button \"Send\" -> \"b\""));
}

void tst_KyScriptDialogButtons::manualEnterStays()
{
    const KyScriptDialog& dialog =
        s->makeAndShow("{ showLineEdit: true, lineEditEnabled: true, manuallyCloseDialog: true }");
    QTest::keyClicks(s->lineEdit(), "abc");
    QTest::keyClick(s->lineEdit(), Qt::Key_Return);
    QVERIFY(dialog.isVisible());
    QCOMPARE(s->answers(), QStringList("0 -3 -1 0 true"));
    QCOMPARE(s->run("d.clickedButton()"), QStringLiteral("-1"));
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|User pressed enter in the line edit"));
}

void tst_KyScriptDialogButtons::manualCloseAnswers()
{
    KyScriptDialog& dialog = s->makeAndShow("{ manuallyCloseDialog: true }");
    s->click(0);
    s->session->take();
    dialog.close();
    QCOMPARE(s->answers(), QStringList({"0 0 -1 0 true", "0 -1 -1 0 false"}));
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|Rejected without button click"));
}

void tst_KyScriptDialogButtons::manualAutoCloseAnswers()
{
    s->makeAndShow("{ manuallyCloseDialog: true, autoClose: true }");
    KyNotifiable::notify(KyNotification(1));
    QCOMPARE(s->answers(), QStringList("0 -2 -1 1 false"));
    QCOMPARE(s->run("d.autoClosed()"), QStringLiteral("1"));
}

void tst_KyScriptDialogButtons::answerIsGoneAfterTheHandler()
{
    s->makeAndShow(manual(FirstMenu));
    s->choose(0, 2);
    QCOMPARE(s->answers(), QStringList("0 0 2 0 true"));
    QCOMPARE(s->run("[d.result(), d.clickedButton(), d.clickedButtonMenuItem()].join()"),
             QStringLiteral("0,-1,-1"));
}

void tst_KyScriptDialogButtons::handlerClosesTheDialog()
{
    const KyScriptDialog& dialog = s->makeAndShow("{ buttons: ['a', 'b'], manuallyCloseDialog: true }");
    s->run("d.processed.connect(function() { if (d.visible) d.close(); })");
    s->click(1);
    QVERIFY(!dialog.isVisible());
    // The close is answered too, inside the answer to the click.
    QCOMPARE(s->answers(), QStringList({"0 1 -1 0 true", "0 1 -1 0 false"}));
    QCOMPARE(s->session->take(),
             QStringList({"KyScriptDialog|User clicked button \"b\"", "KyScriptDialog|Rejected with \"b\""}));
}

void tst_KyScriptDialogButtons::resultIsGoneAfterTheHandler()
{
    s->makeAndShow("{ manuallyCloseDialog: true }");
    s->run("d.processed.connect(function() { if (d.visible) d.accept(); })");
    s->click(0);
    QCOMPARE(s->answers(), QStringList({"0 0 -1 0 true", "1 0 -1 0 false"}));
    QCOMPARE(s->run("d.result()"), QStringLiteral("0"));
}

void tst_KyScriptDialogButtons::clickInAHandlerHasNoItem()
{
    const KyScriptDialog& dialog = s->makeAndShow(manual(FirstMenu));
    bool isFirst = true;
    connect(&dialog, &KyScriptDialog::processed, this, [&] {
        if (std::exchange(isFirst, false))
            s->click(1);
    });
    s->choose(0, 2);
    QCOMPARE(s->answers(), QStringList({"0 0 2 0 true", "0 1 -1 0 true"}));
}

void tst_KyScriptDialogButtons::autoCloseInAHandlerKeepsTheItem()
{
    const KyScriptDialog& dialog =
        s->makeAndShow("{ buttons: [{ text: 'Send', menuItems: [{ text: 'a' }, { text: 'b' }] }],"
                       " autoClose: true, manuallyCloseDialog: true }");
    bool isFirst = true;
    connect(&dialog, &KyScriptDialog::processed, this, [&] {
        if (std::exchange(isFirst, false))
            KyNotifiable::notify(KyNotification(1));
    });
    s->choose(0, 1);
    QCOMPARE(s->answers(), QStringList({"0 0 1 0 true", "0 -2 1 1 false"}));
    QCOMPARE(s->session->take().value(1), QStringLiteral("KyScriptDialog|Rejected due to auto-close"));
}

void tst_KyScriptDialogButtons::handlerReplacesTheButtons_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("isManual");
    for (const char* action : {"click", "space", "choice", "enter"}) {
        QTest::addRow("%s", action) << action << false;
        QTest::addRow("%s, manual", action) << action << true;
    }
}

void tst_KyScriptDialogButtons::handlerReplacesTheButtons()
{
    QFETCH(QString, action);
    QFETCH(bool, isManual);
    s->makeAndShow(
        QStringLiteral("{ buttons: [{ text: 'Send', menuItems: [{ text: 'a' }, { text: 'b' }] }, 'Cancel'],"
                       "  showLineEdit: true, lineEditEnabled: true, manuallyCloseDialog: %1 }")
            .arg(isManual ? "true" : "false"));
    s->run("d.processed.connect(function() {"
           "  d.setButtons(['x', 'y', 'z']); d.setButtonsEnabled([1], false); collectGarbage(); })");
    act(action);
    flushDeletions();
    QCOMPARE(s->buttonTexts(), QStringList({"x", "y", "z"}));
    QVERIFY(!s->button(1)->isEnabled());
    s->show();
    s->click(2);
    QCOMPARE(s->answers().size(), 2);
}

void tst_KyScriptDialogButtons::handlerDropsTheDialog_data()
{
    addActions();
}

/// The collector takes the dialog in an event loop inside the handler, while the widgets below are emitting.
void tst_KyScriptDialogButtons::handlerDropsTheDialog()
{
    QFETCH(QString, action);
    for (const char* isManual : {"false", "true"}) {
        s->run(
            QStringLiteral("var handled = 0; var d = new Dialog({ buttons: [{ text: 'Send', menuItems:"
                           " [{ text: 'a' }, { text: 'b' }] }, 'Cancel'], showLineEdit: true,"
                           " lineEditEnabled: true, manuallyCloseDialog: %1 });"
                           "d.processed.connect(function() { d = null; Message.show('wait'); ++handled; });")
                .arg(isManual));
        QPointer<KyScriptDialog> dialog(&s->show());
        const ModalAnswer answer([&](QWidget* box) {
            s->engine->collectGarbage();
            QTest::qWait(10);
            QVERIFY(dialog);
            ModalAnswer::clicking("OK")(box);
            // As when the machine is too busy to lay out and paint at once.
            QCoreApplication::postEvent(dialog, new QEvent(QEvent::LayoutRequest));
        });
        act(action);
        QTRY_COMPARE(s->run("handled"), QStringLiteral("1"));
        flushDeletions();
        QTRY_VERIFY(!dialog);
    }
}

void tst_KyScriptDialogButtons::handlerDestroysTheDialog_data()
{
    addActions();
}

void tst_KyScriptDialogButtons::handlerDestroysTheDialog()
{
    QFETCH(QString, action);
    for (const char* isManual : {"false", "true"}) {
        s->run(QStringLiteral(
                   "var handled = 0; var d = new Dialog({ buttons: [{ text: 'Send', menuItems:"
                   " [{ text: 'a' }, { text: 'b' }] }, 'Cancel'], showLineEdit: true,"
                   " lineEditEnabled: true, manuallyCloseDialog: %1 });"
                   "d.processed.connect(function() { d.destroy(); Message.show('wait'); ++handled; });")
                   .arg(isManual));
        QPointer<KyScriptDialog> dialog(&s->show());
        const ModalAnswer answer([&](QWidget* box) {
            s->run("d.destroy()");
            QTest::qWait(10);
            QVERIFY(dialog);
            ModalAnswer::clicking("OK")(box);
            // As when the machine is too busy to lay out and paint at once.
            QCoreApplication::postEvent(dialog, new QEvent(QEvent::LayoutRequest));
        });
        act(action);
        QTRY_COMPARE(s->run("handled"), QStringLiteral("1"));
        flushDeletions();
        QTRY_VERIFY(!dialog);
    }
}

void tst_KyScriptDialogButtons::handlerOfAnySignalDestroysTheDialog_data()
{
    QTest::addColumn<QString>("signal");
    QTest::addColumn<QString>("call");
    QTest::newRow("accepted") << "accepted"
                              << "accept()";
    QTest::newRow("rejected") << "rejected"
                              << "reject()";
    QTest::newRow("rejected, closed") << "rejected"
                                      << "close()";
    QTest::newRow("finished") << "finished"
                              << "done(5)";
    QTest::newRow("title") << "windowTitleChanged"
                           << "setTitle('new')";
}

/// Qt's dialog does not survive it by itself that a handler of `accepted` waits until the dialog is gone.
void tst_KyScriptDialogButtons::handlerOfAnySignalDestroysTheDialog()
{
    QFETCH(QString, signal);
    QFETCH(QString, call);
    for (const bool isShown : {true, false}) {
        // What is not on show can't be closed.
        if (!isShown && call == "close()")
            continue;
        s->make("{ buttons: ['a', 'b'] }");
        if (isShown)
            s->show();
        QPointer<KyScriptDialog> dialog(&s->dialog());
        s->run("var handled = 0; d." + signal +
               ".connect(function() { d.destroy(); Message.show('wait'); ++handled; })");
        const ModalAnswer answer([&](QWidget* box) {
            s->run("d.destroy()");
            QTest::qWait(10);
            QVERIFY(dialog);
            ModalAnswer::clicking("OK")(box);
        });
        s->run("d." + call);
        QCOMPARE(s->run("handled"), QStringLiteral("1"));
        flushDeletions();
        QVERIFY(!dialog);
    }
}

void tst_KyScriptDialogButtons::argumentDestroysTheDialog_data()
{
    QTest::addColumn<QString>("call");
    for (const char* call :
         {"setButtons(a)", "setButtons([{ text: 'x', menuItems: a }])", "setButtonToolTips(a)",
          "setButtonEnabled(a, true)", "setButtonsEnabled(a, true)"})
        QTest::newRow(call) << call;
}

/// The getter of an element waits until the dialog is gone.
void tst_KyScriptDialogButtons::argumentDestroysTheDialog()
{
    QFETCH(QString, call);
    s->make("{ buttons: ['a', 'b'] }");
    QPointer<KyScriptDialog> dialog(&s->dialog());
    s->run("var a = Object.defineProperty(['x', 'y'], 0, { get: function() {"
           "  d.destroy(); Message.show('wait'); return 'x'; } })");
    const ModalAnswer answer([&](QWidget* box) {
        delete dialog;
        ModalAnswer::clicking("OK")(box);
    });
    s->run("d." + call);
    QVERIFY(answer.happened());
    QVERIFY(!dialog);
}

void tst_KyScriptDialogButtons::dialogIsDeletedInAHandler_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("isManual");
    for (const char* action : {"click", "space", "choice", "escape", "close", "notification"}) {
        QTest::addRow("%s", action) << action << false;
        QTest::addRow("%s, manual", action) << action << true;
    }
}

/// Deleted at once, from C++, as an engine's end does it.
void tst_KyScriptDialogButtons::dialogIsDeletedInAHandler()
{
    QFETCH(QString, action);
    QFETCH(bool, isManual);
    QPointer<KyScriptDialog> dialog(&s->makeAndShow(
        QStringLiteral("{ buttons: [{ text: 'Send', menuItems: [{ text: 'a' }, { text: 'b' }] },"
                       " 'Cancel'], autoClose: true, manuallyCloseDialog: %1 }")
            .arg(isManual ? "true" : "false")));
    connect(dialog, &KyScriptDialog::processed, this, [&] { delete dialog; });
    if (action == "notification")
        KyNotifiable::notify(KyNotification(112));
    else if (action == "choice")
        QTest::mouseClick(s->button(0)->menu(), Qt::LeftButton),
            s->button(0)->menu()->actions().at(1)->trigger();
    else
        act(action);
    QVERIFY(!dialog);
    QCOMPARE(s->answers().size(), 1);
}

void tst_KyScriptDialogButtons::cleanupWaitsForTheHandler()
{
    class Engine : public KyScriptEngine
    {
    public:
        using KyScriptEngine::cleanup;
        using KyScriptEngine::KyScriptEngine;
    };
    Engine engine(nullptr, ScriptDialog | ScriptMessage);
    const auto run = [&](const char* source) {
        return engine.runScript(KyScriptProgram(QString::fromUtf8(source), ""), false).toString();
    };
    run("handled = 0; d = new Dialog({ showLineEdit: true, lineEditEnabled: true });"
        "d.processed.connect(function() { Message.show('wait'); handled = d.lineEditText(); }); d.show()");
    QPointer<KyScriptDialog> dialog(
        qobject_cast<KyScriptDialog*>(engine.globalObject().property("d").toQObject()));
    QTRY_VERIFY(dialog->isVisible());
    auto* lineEdit = dialog->findChild<QLineEdit*>();
    QTest::keyClicks(lineEdit, "abc");
    QEventLoop loop;
    const ModalAnswer answer([&](QWidget* box) {
        engine.cleanup();
        QTest::qWait(10);
        QVERIFY(dialog);
        ModalAnswer::clicking("OK")(box);
    });
    QTimer::singleShot(0, dialog, [&] {
        QTest::keyClick(lineEdit, Qt::Key_Return);
        loop.quit();
    });
    loop.exec();
    QCOMPARE(run("handled"), QStringLiteral("abc"));
    QTRY_VERIFY(!dialog);
}

void tst_KyScriptDialogButtons::handlerShowsTheDialogAgain()
{
    const KyScriptDialog& dialog = s->makeAndShow();
    s->run("var again = 2; d.processed.connect(function() { if (again-- > 0) d.show(); })");
    for (int i = 0; i < 3; ++i) {
        QTRY_VERIFY(dialog.isVisible());
        s->click(0);
    }
    QTest::qWait(10);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(s->answers().size(), 3);
}

void tst_KyScriptDialogButtons::handlerOfAnotherSignalTakesTheButtons_data()
{
    QTest::addColumn<QString>("buttons");
    QTest::addColumn<QString>("condition");
    QTest::addColumn<QString>("log");
    QTest::newRow("no button") << "[]"
                               << "pushButton"
                               << "";
    QTest::newRow("no menu") << "['x']"
                             << "menu"
                             << "Accepted with \"x\"";
    QTest::newRow("fewer items") << "[{ text: 'x', menuItems: [{ text: 'y' }] }]"
                                 << "d->buttonMenuItem < menu->actions().size()"
                                 << "Accepted with \"x\"";
}

/// `accepted` comes before the dialog has told of its answer.
void tst_KyScriptDialogButtons::handlerOfAnotherSignalTakesTheButtons()
{
    QFETCH(QString, buttons);
    QFETCH(QString, condition);
    QFETCH(QString, log);
    s->makeAndShow(FirstMenu);
    s->run("d.accepted.connect(function() { d.setButtons(" + buttons + "); })");
    mContracts->expect(condition);
    s->choose(0, 2);
    QCOMPARE(mContracts->verify(), QString());
    QCOMPARE(s->answers(), QStringList("1 0 2 0 false"));
    QCOMPARE(s->session->take(), QStringList("KyScriptDialog|" + log));
}

void tst_KyScriptDialogButtons::errorInAHandlerHarmsNothing()
{
    s->makeAndShow("{ manuallyCloseDialog: true }");
    s->run("d.processed.connect(function() { throw new Error('broken'); }); var later = 0;"
           "d.processed.connect(function() { ++later; })");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Error: broken"));
    s->click(0);
    QCOMPARE(s->run("later"), QStringLiteral("1"));
    QCOMPARE(s->run("d.clickedButton()"), QStringLiteral("-1"));
}

void tst_KyScriptDialogButtons::handlerMayCallAnything()
{
    s->makeAndShow("{ fieldText: 'x', showLineEdit: true, lineEditEnabled: true }");
    s->run(
        "d.processed.connect(function() {"
        "  d.setStatus(true, 'x'); d.setTitle('t'); d.title(); d.setMessage('<b>m</b>'); d.setFieldText('f', "
        "'html');"
        "  d.fieldText('markdown'); d.setEditable(true); d.setLineEditEnabled(false); d.setLineEditText('l');"
        "  d.lineEditText(); d.scrollToBottom(); d.scrollToTop(); d.setButtons(['b', 'c']);"
        "  d.setButtonToolTips(['t']); d.setButtonEnabled(0, false); d.setButtonsEnabled([], true); "
        "d.result();"
        "  d.clickedButton(); d.clickedButtonMenuItem(); d.autoClosed(); d.setStatus(false);"
        "  try { d.exec(); } catch (e) {} d.linkClicked('x'); d.linkHovered('x'); d.show(); })");
    QTest::keyClick(s->lineEdit(), Qt::Key_Return);
    QTRY_VERIFY(s->dialog().isVisible());
    QCOMPARE(s->answers().size(), 1);
    QCOMPARE(s->run("d.fieldText() + d.lineEditText() + d.title()"), QStringLiteral("flt"));
    s->click(1);
    QCOMPARE(s->answers().size(), 2);
}

void tst_KyScriptDialogButtons::linkHandlerDropsTheDialog()
{
    for (const char* key : {"mouse", "keyboard"}) {
        s->run("var handled = 0; var d = new Dialog({ fieldText: '<a href=\"x:one\">link to a place</a>',"
               " useTextBrowser: true });"
               "d.linkClicked.connect(function() { d = null; Message.show('wait'); ++handled; });");
        QPointer<KyScriptDialog> dialog(&s->show());
        QTextBrowser* browser = s->browser();
        const ModalAnswer answer([&](QWidget* box) {
            s->engine->collectGarbage();
            QTest::qWait(10);
            QVERIFY(dialog);
            ModalAnswer::clicking("OK")(box);
        });
        if (qstrcmp(key, "mouse") == 0) {
            QTest::mouseClick(browser->viewport(), Qt::LeftButton, {},
                              browser->cursorRect().center() + QPoint(12, 0));
        } else {
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            QTest::keyClick(browser, Qt::Key_Tab);
            QTest::keyClick(browser, Qt::Key_Return);
        }
        QCOMPARE(s->run("handled"), QStringLiteral("1"));
        flushDeletions();
        QVERIFY(!dialog);
    }
}

KY_TEST_MAIN(tst_KyScriptDialogButtons)
#include "tst_KyScriptDialogButtons.moc"

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>
#include <support/ModalAnswer.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptProgram.h>

#include <jxbase/JxMessageBox.h>
#include <ovvolren/OvServerPeer.h>

#include <QAbstractButton>
#include <QApplication>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

Q_DECLARE_METATYPE(Qt::Key)

class tst_KyScriptMessage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // show
    void showOpensABox();
    void showWaitsUntilTheBoxIsClosed();
    void showTakesAnyText_data();
    void showTakesAnyText();
    void showStandsAboveTheMainWindow();
    void showEndsByKeyboard_data();
    void showEndsByKeyboard();
    void showEndsWithTheMainWindow();

    // hide
    void hideWithoutABoxDoesNothing();
    void hideClosesTheBox();
    void hideClosesTheInnermostBoxFirst();
    void hideReachesTheBoxOfAnotherEngine();
    void hideLeavesQuestionsAlone();
    void hideUnderAQuestionClosesTheBoxBelow();
    void boxesMayCloseOutOfOrder();
    void boxIsForgottenAfterItsEnd();

    // question
    void questionOpensABox();
    void questionGivesTheTextOfTheButton_data();
    void questionGivesTheTextOfTheButton();
    void questionHasItsDefaultButton_data();
    void questionHasItsDefaultButton();
    void enterChoosesTheDefaultButton();
    void unknownDefaultIsNone();
    void escapeDoesNotChoose();
    void escapeChoosesTheOnlyButton();
    void closedQuestionGivesEmptyText();
    void questionWithoutButtonsRuns();
    void questionEndsWithTheMainWindow();
    void questionTakesWhatScriptsPass_data();
    void questionTakesWhatScriptsPass();
    void questionRefusesWhatIsNoList_data();
    void questionRefusesWhatIsNoList();
    void otherScriptsRunDuringAQuestion();

    // logs
    void warnAndErrorWriteToTheLog_data();
    void warnAndErrorWriteToTheLog();
    void traceWritesToTheSessionLog_data();
    void traceWritesToTheSessionLog();
    void traceWithoutAPeerIsLost();
    void logsOpenNoBox();

private:
    /// The value of a run of its own, as text.
    QString text(const QString& inSource);
    JxMessageBox* openBox() const;

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<KyScriptEngine> mEngine;
};

namespace {

/// The lines of a session's log.
class SessionLines : public RnLogSink
{
public:
    void write(const RnLogRecord& inRecord) override
    {
        lines.append(QStringLiteral("%1|%2|%3")
                         .arg(QString::number(inRecord.level), QString::fromLatin1(inRecord.context.c_str()),
                              QString::fromLatin1(inRecord.text.c_str())));
    }
    QStringList lines;
};

QStringList buttonTexts(const QMessageBox* inBox)
{
    QStringList texts;
    for (const QAbstractButton* button : inBox->buttons())
        texts.append(button->text());
    return texts;
}

QMessageBox* asBox(QWidget* inWindow)
{
    return qobject_cast<QMessageBox*>(inWindow);
}

} // namespace

void tst_KyScriptMessage::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptMessage);
}

void tst_KyScriptMessage::cleanup()
{
    const QString broken = mContracts->verify();
    mEngine.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QVERIFY(!QApplication::activeModalWidget());
}

QString tst_KyScriptMessage::text(const QString& inSource)
{
    return mEngine->runScript(KyScriptProgram(inSource, ""), false, false, false).toString();
}

JxMessageBox* tst_KyScriptMessage::openBox() const
{
    return qobject_cast<JxMessageBox*>(QApplication::activeModalWidget());
}

void tst_KyScriptMessage::showOpensABox()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        auto* box = qobject_cast<JxMessageBox*>(inWindow);
        QVERIFY(box);
        QCOMPARE(box->text(), QStringLiteral("The text"));
        QCOMPARE(box->icon(), QMessageBox::Information);
        QCOMPARE(box->windowTitle(), QStringLiteral("kytest"));
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QCOMPARE(box->buttons().size(), 1);
        QCOMPARE(box->defaultButton(), box->button(QMessageBox::Ok));
        QVERIFY(!box->parentWidget());
        QVERIFY(!box->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        box->button(QMessageBox::Ok)->click();
    });
    QCOMPARE(text("typeof Message.show('The text')"), QStringLiteral("undefined"));
    QVERIFY(answer.happened());
}

void tst_KyScriptMessage::showWaitsUntilTheBoxIsClosed()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(mEngine->globalObject().property("step").toInt(), 1);
        // The application goes on meanwhile.
        QCOMPARE(text("step + 1"), QStringLiteral("2"));
        asBox(inWindow)->accept();
    });
    text("step = 1; Message.show('x'); step = 2");
    QCOMPARE(mEngine->globalObject().property("step").toInt(), 2);
}

void tst_KyScriptMessage::showTakesAnyText_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("shown");
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("'ü€'") << QString::fromUtf8("ü€");
    QTest::newRow("empty") << "''"
                           << "";
    QTest::newRow("lines") << "'a\\nb'"
                           << "a\nb";
    QTest::newRow("number") << "5"
                            << "5";
    QTest::newRow("null") << "null"
                          << "";
}

void tst_KyScriptMessage::showTakesAnyText()
{
    QFETCH(QString, argument);
    QFETCH(QString, shown);
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(asBox(inWindow)->text(), shown);
        asBox(inWindow)->accept();
    });
    text("Message.show(" + argument + ")");
    QVERIFY(answer.happened());
}

void tst_KyScriptMessage::showStandsAboveTheMainWindow()
{
    QWidget window;
    mPlatform->monitors.setMainWindow(&window);
    for (const char* source : {"Message.show('x')", "Message.question('x', ['a'])"}) {
        ModalAnswer answer([&](QWidget* inWindow) {
            QCOMPARE(inWindow->parentWidget(), &window);
            asBox(inWindow)->accept();
        });
        text(source);
        QVERIFY(answer.happened());
    }
}

void tst_KyScriptMessage::showEndsByKeyboard_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Enter") << Qt::Key_Enter;
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Escape") << Qt::Key_Escape;
}

void tst_KyScriptMessage::showEndsByKeyboard()
{
    QFETCH(Qt::Key, key);
    ModalAnswer answer([&](QWidget* inWindow) {
        QVERIFY(QTest::qWaitForWindowActive(inWindow));
        QTest::keyClick(inWindow, key);
    });
    QCOMPARE(text("Message.show('x'); 'closed'"), QStringLiteral("closed"));
}

void tst_KyScriptMessage::showEndsWithTheMainWindow()
{
    auto window = std::make_unique<QWidget>();
    mPlatform->monitors.setMainWindow(window.get());
    ModalAnswer answer([&](QWidget*) { window.reset(); });
    QCOMPARE(text("Message.show('x'); Message.hide(); 'closed'"), QStringLiteral("closed"));
}

void tst_KyScriptMessage::hideWithoutABoxDoesNothing()
{
    QCOMPARE(text("Message.hide(); Message.hide(); 'done'"), QStringLiteral("done"));
}

void tst_KyScriptMessage::hideClosesTheBox()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        QSignalSpy accepted(asBox(inWindow), &QDialog::accepted);
        text("Message.hide()");
        QCOMPARE(accepted.size(), 1);
        QVERIFY(!inWindow->isVisible());
    });
    text("Message.show('x')");
    QVERIFY(answer.happened());
}

void tst_KyScriptMessage::hideClosesTheInnermostBoxFirst()
{
    QStringList steps;
    QPointer<QWidget> outer;
    ModalAnswer ofOuter([&](QWidget* inWindow) {
        outer = inWindow;
        text("Message.show('inner')");
        steps.append("inner returned");
        QVERIFY(outer->isVisible());
        text("Message.hide()");
        QVERIFY(!outer->isVisible());
    });
    ModalAnswer ofInner([&](QWidget* inWindow) {
        QCOMPARE(asBox(inWindow)->text(), QStringLiteral("inner"));
        text("Message.hide()");
        QVERIFY(!inWindow->isVisible());
        QVERIFY(outer->isVisible());
        steps.append("inner hidden");
    });
    text("Message.show('outer')");
    steps.append("outer returned");
    QCOMPARE(steps, QStringList({"inner hidden", "inner returned", "outer returned"}));
}

void tst_KyScriptMessage::hideReachesTheBoxOfAnotherEngine()
{
    KyScriptEngine other(nullptr, ScriptMessage);
    ModalAnswer answer([&](QWidget* inWindow) {
        other.runScript(KyScriptProgram("Message.hide()", ""));
        QVERIFY(!inWindow->isVisible());
    });
    text("Message.show('x')");
    QVERIFY(answer.happened());
}

void tst_KyScriptMessage::hideLeavesQuestionsAlone()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        text("Message.hide()");
        QVERIFY(inWindow->isVisible());
        ModalAnswer::clicking("b")(inWindow);
    });
    QCOMPARE(text("Message.question('x', ['a', 'b'])"), QStringLiteral("b"));
}

void tst_KyScriptMessage::hideUnderAQuestionClosesTheBoxBelow()
{
    QPointer<QWidget> outer;
    ModalAnswer ofOuter([&](QWidget* inWindow) {
        outer = inWindow;
        QCOMPARE(text("Message.question('x', ['a', 'b'])"), QStringLiteral("a"));
    });
    ModalAnswer ofInner([&](QWidget* inWindow) {
        text("Message.hide()");
        QVERIFY(!outer->isVisible());
        QVERIFY(inWindow->isVisible());
        ModalAnswer::clicking("a")(inWindow);
    });
    text("Message.show('outer')");
    QVERIFY(ofInner.happened());
}

void tst_KyScriptMessage::boxesMayCloseOutOfOrder()
{
    QPointer<QWidget> outer;
    ModalAnswer ofOuter([&](QWidget* inWindow) {
        outer = inWindow;
        text("Message.show('inner')");
    });
    ModalAnswer ofInner([&](QWidget* inWindow) {
        asBox(outer)->accept();
        QVERIFY(inWindow->isVisible());
        text("Message.hide()"); // still the innermost
        QVERIFY(!inWindow->isVisible());
    });
    text("Message.show('outer')");
    QVERIFY(ofInner.happened());
    text("Message.hide()");
}

void tst_KyScriptMessage::boxIsForgottenAfterItsEnd()
{
    {
        ModalAnswer answer(ModalAnswer::clicking("OK"));
        text("Message.show('first')");
    }
    text("Message.hide()");
    ModalAnswer answer([&](QWidget* inWindow) {
        text("Message.hide()");
        QVERIFY(!inWindow->isVisible());
    });
    text("Message.show('second')");
    QVERIFY(answer.happened());
}

void tst_KyScriptMessage::questionOpensABox()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        auto* box = qobject_cast<JxMessageBox*>(inWindow);
        QVERIFY(box);
        QCOMPARE(box->text(), QString::fromUtf8("Which? ü€"));
        QCOMPARE(box->icon(), QMessageBox::NoIcon);
        QCOMPARE(box->windowTitle(), QString());
        QCOMPARE(buttonTexts(box), QStringList({"one", "two", "three"}));
        for (QAbstractButton* button : box->buttons())
            QCOMPARE(box->buttonRole(button), QMessageBox::ActionRole);
        QCOMPARE(box->standardButtons(), QMessageBox::NoButton);
        QVERIFY(!box->defaultButton());
        QVERIFY(!box->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        ModalAnswer::clicking("three")(box);
    });
    QCOMPARE(text(QString::fromUtf8("Message.question('Which? ü€', ['one', 'two', 'three'])")),
             QStringLiteral("three"));
}

void tst_KyScriptMessage::questionGivesTheTextOfTheButton_data()
{
    QTest::addColumn<QString>("buttons");
    QTest::addColumn<int>("clicked");
    QTest::addColumn<QString>("result");
    QTest::newRow("first") << "['a', 'b']" << 0 << "a";
    QTest::newRow("last") << "['a', 'b']" << 1 << "b";
    QTest::newRow("only") << "['a']" << 0 << "a";
    QTest::newRow("with a mnemonic") << "['&Yes', '&No']" << 1 << "&No";
    QTest::newRow("of two equal ones") << "['a', 'a']" << 1 << "a";
    QTest::newRow("number") << "[1, 2]" << 1 << "2";
    QTest::newRow("empty text") << "['a', '']" << 1 << "";
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("['a', '€']") << 1 << QString::fromUtf8("€");
}

void tst_KyScriptMessage::questionGivesTheTextOfTheButton()
{
    QFETCH(QString, buttons);
    QFETCH(int, clicked);
    QFETCH(QString, result);
    ModalAnswer answer([&](QWidget* inWindow) { asBox(inWindow)->buttons().at(clicked)->click(); });
    QCOMPARE(text("Message.question('x', " + buttons + ")"), result);
    QVERIFY(answer.happened());
}

void tst_KyScriptMessage::questionHasItsDefaultButton_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("defaultButton");
    QTest::newRow("none") << "['a', 'b']" << -1;
    QTest::newRow("undefined") << "['a', 'b'], undefined" << -1;
    QTest::newRow("null") << "['a', 'b'], null" << -1;
    QTest::newRow("unknown") << "['a', 'b'], 'c'" << -1;
    QTest::newRow("other case") << "['a', 'b'], 'A'" << -1;
    QTest::newRow("first") << "['a', 'b'], 'a'" << 0;
    QTest::newRow("second") << "['a', 'b'], 'b'" << 1;
    QTest::newRow("duplicates") << "['a', 'a', 'b'], 'a'" << 1;
    QTest::newRow("mnemonic counts") << "['&a', 'b'], 'a'" << -1;
    QTest::newRow("with its mnemonic") << "['&a', 'b'], '&a'" << 0;
    QTest::newRow("empty text") << "['a', '']" << 1;
}

void tst_KyScriptMessage::questionHasItsDefaultButton()
{
    QFETCH(QString, arguments);
    QFETCH(int, defaultButton);
    int found = -2;
    ModalAnswer answer([&](QWidget* inWindow) {
        found = int(asBox(inWindow)->buttons().indexOf(asBox(inWindow)->defaultButton()));
        asBox(inWindow)->reject();
    });
    QCOMPARE(text("Message.question('x', " + arguments + ")"), QString());
    QCOMPARE(found, defaultButton);
}

void tst_KyScriptMessage::enterChoosesTheDefaultButton()
{
    for (const Qt::Key key : {Qt::Key_Enter, Qt::Key_Return}) {
        ModalAnswer answer([&](QWidget* inWindow) {
            QVERIFY(QTest::qWaitForWindowActive(inWindow));
            QTest::keyClick(inWindow, key);
        });
        QCOMPARE(text("Message.question('x', ['a', 'b', 'c'], 'b')"), QStringLiteral("b"));
    }
}

void tst_KyScriptMessage::unknownDefaultIsNone()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        QVERIFY(!asBox(inWindow)->defaultButton());
        ModalAnswer::clicking("a")(inWindow);
    });
    QCOMPARE(text("Message.question('x', ['a', 'b'], 'c')"), QStringLiteral("a"));
}

/// With several buttons of the same role there is none that Escape, or closing the window, could stand for.
void tst_KyScriptMessage::escapeDoesNotChoose()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        QVERIFY(QTest::qWaitForWindowActive(inWindow));
        QTest::keyClick(inWindow, Qt::Key_Escape);
        QVERIFY(inWindow->isVisible());
        QVERIFY(!inWindow->close());
        QVERIFY(inWindow->isVisible());
        ModalAnswer::clicking("b")(inWindow);
    });
    QCOMPARE(text("Message.question('x', ['a', 'b'])"), QStringLiteral("b"));
}

void tst_KyScriptMessage::escapeChoosesTheOnlyButton()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        QVERIFY(QTest::qWaitForWindowActive(inWindow));
        QTest::keyClick(inWindow, Qt::Key_Escape);
    });
    QCOMPARE(text("Message.question('x', ['a'])"), QStringLiteral("a"));
}

void tst_KyScriptMessage::closedQuestionGivesEmptyText()
{
    ModalAnswer answer([&](QWidget* inWindow) { asBox(inWindow)->reject(); });
    QCOMPARE(text("var r = Message.question('x', ['a', 'b'], 'a'); typeof r + ':' + r"),
             QStringLiteral("string:"));
    QVERIFY(answer.happened());
}

void tst_KyScriptMessage::questionWithoutButtonsRuns()
{
    QString only;
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(asBox(inWindow)->buttons().size(), 1); // Qt's own
        only = asBox(inWindow)->buttons().constFirst()->text();
        asBox(inWindow)->buttons().constFirst()->click();
    });
    QCOMPARE(text("Message.question('x', [])"), only);
    QVERIFY(!only.isEmpty());
    ModalAnswer closing([&](QWidget* inWindow) { asBox(inWindow)->reject(); });
    QCOMPARE(text("Message.question('x', [], 'a')"), QString());
}

void tst_KyScriptMessage::questionEndsWithTheMainWindow()
{
    auto window = std::make_unique<QWidget>();
    mPlatform->monitors.setMainWindow(window.get());
    ModalAnswer answer([&](QWidget*) { window.reset(); });
    QCOMPARE(text("Message.question('x', ['a', 'b'], 'a')"), QString());
}

void tst_KyScriptMessage::questionTakesWhatScriptsPass_data()
{
    QTest::addColumn<QString>("buttons");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("list") << "['a', 'b']" << QStringList({"a", "b"});
    QTest::newRow("text") << "'abc'" << QStringList("abc");
    QTest::newRow("numbers") << "[1, 2.5]" << QStringList({"1", "2.5"});
    QTest::newRow("markup") << "['<b>a</b>']" << QStringList("<b>a</b>");
    QTest::newRow("odd values") << "[Symbol('s'), null, 'b']" << QStringList({"Symbol(s)", "", "b"});
}

void tst_KyScriptMessage::questionTakesWhatScriptsPass()
{
    QFETCH(QString, buttons);
    QFETCH(QStringList, texts);
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(buttonTexts(asBox(inWindow)), texts);
        asBox(inWindow)->reject();
    });
    text("Message.question('x', " + buttons + ")");
    QVERIFY(answer.happened());
}

void tst_KyScriptMessage::questionRefusesWhatIsNoList_data()
{
    QTest::addColumn<QString>("buttons");
    for (const char* buttons : {"null", "undefined", "5", "Symbol()", "new Array(3e6)"})
        QTest::newRow(buttons) << buttons;
}

void tst_KyScriptMessage::questionRefusesWhatIsNoList()
{
    QFETCH(QString, buttons);
    QCOMPARE(text("try { Message.question('x', " + buttons + ") } catch (e) { '' + e }"),
             QStringLiteral("TypeError: Message.question: not a list of texts"));
}

void tst_KyScriptMessage::otherScriptsRunDuringAQuestion()
{
    ModalAnswer answer([&](QWidget* inWindow) {
        QCOMPARE(text("seen = 5; 6 * 7"), QStringLiteral("42"));
        ModalAnswer::clicking("a")(inWindow);
    });
    QCOMPARE(text("Message.question('x', ['a']) + seen"), QStringLiteral("a5"));
}

void tst_KyScriptMessage::warnAndErrorWriteToTheLog_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("line");
    for (const auto& [name, level] : {std::pair("warn", "2"), std::pair("error", "3")}) {
        const auto row = [&, method = name, number = level](const char* inArguments, const QString& inLine) {
            QTest::addRow("%s %s", method, inArguments)
                << QStringLiteral("%1(%2)").arg(method, QString::fromUtf8(inArguments))
                << QStringLiteral("%1|%2").arg(number, inLine);
        };
        row("'x'", "Script Interface|x");
        row("'x', 'My'", "My|x");
        row("'x', ''", "Script Interface|x");
        row("'x', undefined", "Script Interface|x");
        row("'x', null", "Script Interface|x");
        row("'ü€', 'ö€'", QString::fromUtf8("ö?|ü?"));
        row("'%s %d %n 100%', '%s'", "%s|%s %d %n 100%");
        row("'a\\nb'", "Script Interface|a\nb");
        row("''", "Script Interface|");
        row("5", "Script Interface|5");
    }
}

void tst_KyScriptMessage::warnAndErrorWriteToTheLog()
{
    QFETCH(QString, call);
    QFETCH(QString, line);
    OvServerPeer peer;
    const auto session = std::make_shared<SessionLines>();
    peer.sessionLog().addSink(session);
    LogCapture log(2);
    QCOMPARE(text("typeof Message." + call), QStringLiteral("undefined"));
    QCOMPARE(log.take(), QStringList(line));
    QCOMPARE(session->lines, QStringList());
}

void tst_KyScriptMessage::traceWritesToTheSessionLog_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("line");
    QTest::newRow("text") << "'x'"
                          << "1|Script Interface|x";
    QTest::newRow("context") << "'x', 'My'"
                             << "1|My|x";
    QTest::newRow("empty context") << "'x', ''"
                                   << "1|Script Interface|x";
    QTest::newRow("beyond Latin-1") << QString::fromUtf8("'ü€', 'ö€'") << QString::fromUtf8("1|ö?|ü?");
    QTest::newRow("per cent sign") << "'%s', '%d'"
                                   << "1|%d|%s";
}

void tst_KyScriptMessage::traceWritesToTheSessionLog()
{
    QFETCH(QString, arguments);
    QFETCH(QString, line);
    OvServerPeer peer;
    const auto session = std::make_shared<SessionLines>();
    peer.sessionLog().addSink(session);
    LogCapture log;
    mEngine->evaluate("Message.trace(" + arguments + ")");
    QCOMPARE(session->lines, QStringList(line));
    QCOMPARE(log.take(), QStringList());
}

void tst_KyScriptMessage::traceWithoutAPeerIsLost()
{
    LogCapture log;
    QCOMPARE(mEngine->evaluate("Message.trace('x'); Message.trace('x', 'My'); 'done'").toString(),
             QStringLiteral("done"));
    QCOMPARE(log.take(), QStringList());

    const auto session = std::make_shared<SessionLines>();
    {
        OvServerPeer peer;
        peer.sessionLog().addSink(session);
        mEngine->evaluate("Message.trace('heard')");
    }
    mEngine->evaluate("Message.trace('lost')");
    QCOMPARE(session->lines, QStringList("1|Script Interface|heard"));
}

void tst_KyScriptMessage::logsOpenNoBox()
{
    bool seen = false;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&] { seen = seen || openBox(); });
    watch.start(0);
    text("Message.warn('x'); Message.error('y'); Message.trace('z')");
    QCoreApplication::processEvents();
    QVERIFY(!seen);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

KY_TEST_MAIN(tst_KyScriptMessage)
#include "tst_KyScriptMessage.moc"

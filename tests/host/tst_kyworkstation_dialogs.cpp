// Dialogs of scripts in the workstation: the examples, worked as a user works them; the session log; what the
// workstation tells of its session.

#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <common/KyHostPlatform.h>
#include <common/KySessionLog.h>
#include <kyscript/KyScriptAbstractEngine.h>
#include <kyscript/KyScriptInterface.h>
#include <kyscript/KyScriptProgram.h>
#include <kyworkstation/KyMainWindow.h>
#include <kyworkstation/KyScriptingMenu.h>
#include <kyworkstation/KySessionLogPane.h>
#include <kyworkstation/KyStudySession.h>

#include <kybase/KyNotifiable.h>

#include <QDesktopServices>
#include <QDialog>
#include <QDir>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeView>

class tst_kyworkstation_dialogs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void messageBoxAsks_data();
    void messageBoxAsks();
    void messageBoxClosesWithTheStudies();
    void textViewerShowsStudies();
    void textViewerWithoutStudiesSaysSo();
    void editorSavesAndInserts();
    void promptLooksAtItsAnswer();
    void promptIsCancelled();
    void busyIndicatorGoesToItsEnd();
    void busyIndicatorIsCancelled();
    void examplesRunTwice();
    void examplesRunInKyrun_data();
    void examplesRunInKyrun();

    void sessionEndsAreTold();
    void patientChangesAreTold();
    void dialogsCloseWithTheWindow();
    void windowClosesWhateverHandlersEnd();

    void actionsStandInTheSessionLog();
    void sessionLogIsAFile();
    void sessionLogFileIsOpened();
    void sessionLogOfEarlierStartsStays();
    void unwritableSessionLogIsTold();
    void sessionLogWithoutAProfileIsInNoFile();
    void paneWithoutASessionLogSaysSo();

public:
    Q_INVOKABLE void setFile(const QUrl& inUrl) { mOpened = inUrl; }

private:
    void start();
    void stop();
    /// Runs a file of the examples and gives its dialog, on show.
    QDialog& open(const QString& inFile, const QString& inTitle);
    void runCode(const QString& inSource);
    QString output() { return mWindow->findChild<QTextEdit*>("scriptOutputText")->toPlainText(); }
    void loadSample();

    QUrl mOpened;
    QTemporaryDir mFolder;
    QString mSample;
    std::unique_ptr<QTemporaryDir> mProfile;
    std::unique_ptr<KyHostPlatform> mPlatform;
    std::unique_ptr<KyMainWindow> mWindow;
};

namespace {

QDialog* dialogTitled(const QString& inTitle)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowTitle() == inTitle)
            return qobject_cast<QDialog*>(window);
    }
    return nullptr;
}

QPushButton& button(const QDialog& inDialog, const QString& inText)
{
    for (QPushButton* found : inDialog.findChildren<QPushButton*>()) {
        if (found->text() == inText)
            return *found;
    }
    qFatal("no button %s", qPrintable(inText));
}

void click(const QDialog& inDialog, const QString& inText)
{
    QTest::mouseClick(&button(inDialog, inText), Qt::LeftButton);
}

void choose(const QDialog& inDialog, const QString& inButton, const QString& inItem)
{
    QPushButton& opener = button(inDialog, inButton);
    QPointer<QMenu> menu(opener.menu());
    QTimer::singleShot(0, menu, [menu, inItem] {
        for (const QAction* action : menu->actions()) {
            if (action->text() == inItem)
                return QTest::mouseClick(menu, Qt::LeftButton, {},
                                         menu->actionGeometry(const_cast<QAction*>(action)).center());
        }
        qFatal("no item %s", qPrintable(inItem));
    });
    QTest::mousePress(&opener, Qt::LeftButton);
    QTRY_VERIFY(!menu || !menu->isVisible());
}

QString statusOf(const QDialog& inDialog)
{
    return inDialog.findChild<QWidget*>("KyScriptDialog_indicator")->accessibleName();
}

/// Keeps the codes of the session's events.
class Events final : public KyNotifiable
{
public:
    void addNotifications() override
    {
        for (const int code : {KyNotification::SessionClosed, KyNotification::PatientChanged})
            KyNotifiables::getInstance()->addNotification(this, KyNotification(code));
    }
    void notified(const KyNotification& inNotification) override
    {
        heard.append(inNotification.code);
        sessions.append(inNotification.session);
    }
    QList<int> take() { return std::exchange(heard, {}); }

    QList<int> heard;
    QList<OvSessionContextID> sessions;
};

QByteArray contents(const QString& inFile)
{
    QFile file(inFile);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void tst_kyworkstation_dialogs::initTestCase()
{
    QVERIFY(mFolder.isValid());
    mSample = mFolder.filePath("sample");
    QCOMPARE(QProcess::execute(KYSAMPLE, {mSample}), 0);
    KyScriptingMenu::registerProperties();
}

void tst_kyworkstation_dialogs::init()
{
    mProfile = std::make_unique<QTemporaryDir>();
    start();
}

void tst_kyworkstation_dialogs::cleanup()
{
    stop();
    for (const QWidget* window : QApplication::topLevelWidgets())
        QVERIFY2(!window->isVisible(), qPrintable(window->windowTitle()));
    mProfile.reset();
}

void tst_kyworkstation_dialogs::start()
{
    KyHostOptions options;
    options.profile = mProfile->path();
    mPlatform = std::make_unique<KyHostPlatform>(options);
    mWindow = std::make_unique<KyMainWindow>();
    mWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(mWindow.get()));
}

void tst_kyworkstation_dialogs::stop()
{
    if (mWindow)
        mWindow->close();
    mWindow.reset();
    mPlatform.reset();
}

QDialog& tst_kyworkstation_dialogs::open(const QString& inFile, const QString& inTitle)
{
    mWindow->findChild<QTextEdit*>("scriptOutputText")->clear();
    mWindow->runScript(QStringLiteral(SCRIPTS "/dialogs/") + inFile);
    if (!QTest::qWaitFor([&] { return dialogTitled(inTitle) != nullptr; }))
        qFatal("%s shows no dialog: %s", qPrintable(inFile), qPrintable(output()));
    return *dialogTitled(inTitle);
}

void tst_kyworkstation_dialogs::runCode(const QString& inSource)
{
    const QJSValue value = KyScriptAbstractInterface::getInstance(QString()).runScript(
        KyScriptProgram(inSource, "test"), false, false, true);
    QVERIFY2(!value.isError(), qPrintable(value.toString()));
}

void tst_kyworkstation_dialogs::loadSample()
{
    mWindow->openFolder(mSample);
    QTRY_VERIFY_WITH_TIMEOUT(!KyStudySession::primary().empty(), 20'000);
}

void tst_kyworkstation_dialogs::messageBoxAsks_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("told");
    QTest::newRow("send") << "Send"
                          << ""
                          << "The report is sent.";
    QTest::newRow("send later") << "Send Later"
                                << "Tomorrow Morning"
                                << "The report is sent tomorrow morning.";
    QTest::newRow("discard") << "Discard"
                             << ""
                             << "The report is discarded.";
    QTest::newRow("close") << ""
                           << ""
                           << "The report stays as it is.";
}

void tst_kyworkstation_dialogs::messageBoxAsks()
{
    QFETCH(QString, button);
    QFETCH(QString, item);
    QFETCH(QString, told);
    QDialog& dialog = open("message_box.js", "Report");
    if (button.isEmpty())
        dialog.close();
    else if (item.isEmpty())
        click(dialog, button);
    else
        choose(dialog, button, item);
    QVERIFY(!dialog.isVisible());
    QTRY_VERIFY2(output().contains(told), qPrintable(output()));
}

void tst_kyworkstation_dialogs::messageBoxClosesWithTheStudies()
{
    loadSample();
    const QDialog& dialog = open("message_box.js", "Report");
    mWindow->closeStudies();
    QVERIFY(!dialog.isVisible());
    QTRY_VERIFY(output().contains("The studies were closed before an answer."));
}

void tst_kyworkstation_dialogs::textViewerShowsStudies()
{
    loadSample();
    QDialog& dialog = open("text_viewer.js", "Studies");
    auto* browser = dialog.findChild<QTextBrowser*>();
    QVERIFY(browser->toPlainText().contains("CT Thorax nativ, Erstuntersuchung"));
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(browser, Qt::Key_Tab);
    QTest::keyClick(browser, Qt::Key_Return);
    QVERIFY2(browser->toPlainText().contains(QString::fromUtf8("Müller^Änne")),
             qPrintable(browser->toPlainText()));
    QTest::keyClick(browser, Qt::Key_Tab);
    QTest::keyClick(browser, Qt::Key_Return);
    QVERIFY(browser->toPlainText().contains("Open Studies"));
    click(dialog, "Close");
    QVERIFY(!dialog.isVisible());
}

void tst_kyworkstation_dialogs::textViewerWithoutStudiesSaysSo()
{
    const QDialog& dialog = open("text_viewer.js", "Studies");
    QCOMPARE(dialog.findChild<QTextBrowser*>()->toPlainText(), QStringLiteral("No studies are open."));
}

void tst_kyworkstation_dialogs::editorSavesAndInserts()
{
    runCode("var savedNote = ''");
    QDialog& dialog = open("editor.js", "Note");
    auto* edit = dialog.findChild<QTextEdit*>("KyScriptDialog_edit");
    QTest::keyClicks(edit, "Small nodule.");
    choose(dialog, "Insert", "Follow-up");
    QCOMPARE(edit->toPlainText(),
             QStringLiteral("Small nodule.\nFollow-up in three months is recommended.\n"));
    click(dialog, "Save");
    QVERIFY(dialog.isVisible());
    QVERIFY(statusOf(dialog).startsWith("Saved at "));
    QTRY_VERIFY(output().contains("Saved: Small nodule."));
    click(dialog, "Close");
    QVERIFY(!dialog.isVisible());
    const QDialog& again = open("editor.js", "Note");
    QVERIFY(again.findChild<QTextEdit*>("KyScriptDialog_edit")->toPlainText().startsWith("Small nodule."));
}

void tst_kyworkstation_dialogs::promptLooksAtItsAnswer()
{
    QDialog& dialog = open("prompt.js", "Go to Date");
    auto* line = dialog.findChild<QLineEdit*>();
    QCOMPARE(dialog.focusWidget(), line);
    for (const char* wrong : {"", "tomorrow", "31.2.2024", "<b>"}) {
        line->setText(wrong);
        QTest::keyClick(line, Qt::Key_Return);
        QVERIFY(dialog.isVisible());
        QVERIFY(dialog.findChild<QLabel*>("KyScriptDialog_label")->text().contains("is no date"));
    }
    line->setText("29.2.2024");
    QTest::keyClick(line, Qt::Key_Return);
    QVERIFY(!dialog.isVisible());
    QTRY_VERIFY(output().contains("Going to"));
    QDialog& again = open("prompt.js", "Go to Date");
    again.findChild<QLineEdit*>()->setText("1.1.2024");
    click(again, "Go to Date");
    QVERIFY(!again.isVisible());
}

void tst_kyworkstation_dialogs::promptIsCancelled()
{
    QDialog& dialog = open("prompt.js", "Go to Date");
    click(dialog, "Cancel");
    QVERIFY(!dialog.isVisible());
    QVERIFY(!output().contains("Going to"));
    open("prompt.js", "Go to Date").close();
}

void tst_kyworkstation_dialogs::busyIndicatorGoesToItsEnd()
{
    QDialog& dialog = open("busy.js", "Checking Images");
    QVERIFY(!button(dialog, "Close").isEnabled());
    QVERIFY(button(dialog, "Cancel").isEnabled());
    QTRY_VERIFY(statusOf(dialog).startsWith("Image 3 of"));
    QTRY_COMPARE_WITH_TIMEOUT(statusOf(dialog), QStringLiteral("All 20 images are in order."), 20'000);
    QVERIFY(!button(dialog, "Cancel").isEnabled());
    click(dialog, "Close");
    QVERIFY(!dialog.isVisible());
    QVERIFY(!output().contains("Ended with the dialog."));
}

void tst_kyworkstation_dialogs::busyIndicatorIsCancelled()
{
    QDialog& dialog = open("busy.js", "Checking Images");
    QTRY_VERIFY(statusOf(dialog).startsWith("Image 2"));
    click(dialog, "Cancel");
    QVERIFY(dialog.isVisible());
    QVERIFY(statusOf(dialog).startsWith("Cancelled at image"));
    dialog.close();
    QVERIFY(!output().contains("Ended with the dialog."));
    open("busy.js", "Checking Images").close();
    QTRY_VERIFY(output().contains("Ended with the dialog."));
}

/// A second run takes the variable of the first dialog, which the collector may take then.
void tst_kyworkstation_dialogs::examplesRunTwice()
{
    QPointer<QDialog> first(&open("message_box.js", "Report"));
    mWindow->runScript(SCRIPTS "/dialogs/message_box.js");
    runCode("collectGarbage()");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QTRY_VERIFY(!first);
    QTRY_VERIFY(dialogTitled("Report"));
    click(*dialogTitled("Report"), "Discard");
    QTRY_VERIFY(output().contains("The report is discarded."));
}

void tst_kyworkstation_dialogs::examplesRunInKyrun_data()
{
    QTest::addColumn<QString>("file");
    for (const char* file : {"message_box.js", "text_viewer.js", "editor.js", "prompt.js", "busy.js"})
        QTest::newRow(file) << file;
}

void tst_kyworkstation_dialogs::examplesRunInKyrun()
{
    QFETCH(QString, file);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(KYRUN, {QStringLiteral(SCRIPTS "/dialogs/") + file});
    QVERIFY(process.waitForFinished(30'000));
    QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
             process.readAll().constData());
}

void tst_kyworkstation_dialogs::sessionEndsAreTold()
{
    Events events;
    loadSample();
    QCOMPARE(events.take(), QList<int>());
    mWindow->closeStudies();
    QCOMPARE(events.take(), QList<int>{1});
    QCOMPARE(events.sessions, QList<OvSessionContextID>{KySessionContext::currentInstanceID()});
    mWindow->close();
    QCOMPARE(events.take(), QList<int>{1});
}

void tst_kyworkstation_dialogs::patientChangesAreTold()
{
    Events events;
    const auto studyOf = [](const char* patient, const char* uid) {
        return KyLoadHelper::Exams{KyTestPlatform::study(QString::fromUtf8(uid), QString::fromUtf8(patient))};
    };
    KyStudySession::add(studyOf("Meyer", "1.1"), false);
    KyStudySession::add(studyOf("Meyer", "1.2"), false);
    KyStudySession::add(studyOf("Adams", "2.1"), true);
    KyStudySession::add(studyOf("Zander", "3.1"), false); // behind the first
    QCOMPARE(events.take(), QList<int>());
    KyStudySession::add(studyOf("Bauer", "4.1"), false); // in front of the first
    QCOMPARE(events.take(), QList<int>{112});
    KyStudySession::clear();
    QCOMPARE(events.take(), QList<int>{1});
    KyStudySession::add(studyOf("Meyer", "1.1"), false);
    QCOMPARE(events.take(), QList<int>());
}

void tst_kyworkstation_dialogs::dialogsCloseWithTheWindow()
{
    runCode("var codes = []; function make(config) { var x = new Dialog(config); x.processed.connect("
            "function() { codes.push(x.clickedButton()); }); x.show(); return x; }"
            "var a = make({ title: 'A', autoClose: true }), b = make({ title: 'B' });");
    QTRY_VERIFY(dialogTitled("A") && dialogTitled("B"));
    mWindow->close();
    QVERIFY(!dialogTitled("A") && !dialogTitled("B"));
    QCOMPARE(KyScriptInterface::getInstance(QString()).globalObject().property("codes").toString(),
             QStringLiteral("-2,-1"));
}

void tst_kyworkstation_dialogs::windowClosesWhateverHandlersEnd()
{
    runCode("var many = []; for (var i = 0; i < 5; ++i) { var x = new Dialog({ title: 'D' + i });"
            "x.processed.connect(function() { many.forEach(function(m) { m.destroy(); }); many = []; });"
            "x.show(); many.push(x); } x = null;");
    QTRY_VERIFY(dialogTitled("D4"));
    mWindow->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!dialogTitled("D4"));
}

void tst_kyworkstation_dialogs::actionsStandInTheSessionLog()
{
    const QDialog& dialog = open("message_box.js", "Report");
    click(dialog, "Discard");
    runCode("Message.trace('A trace', 'Mine')");
    const auto* model = mWindow->findChild<QTreeView*>("sessionLogView")->model();
    QTRY_COMPARE(model->rowCount(), 2);
    QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("ReportQuestion"));
    QCOMPARE(model->index(0, 3).data().toString(), QStringLiteral("Rejected with \"Discard\""));
    QCOMPARE(model->index(1, 2).data().toString(), QStringLiteral("Mine"));
    QVERIFY(mWindow->findChild<QDockWidget*>("sessionLogDock"));
}

void tst_kyworkstation_dialogs::sessionLogIsAFile()
{
    const QString file = mProfile->filePath("session.log");
    QCOMPARE(KySessionLog::instance()->file(), file);
    click(open("message_box.js", "Report"), "Discard");
    const QByteArray text = contents(file);
    QVERIFY2(text.contains(" 1 [ReportQuestion] Rejected with \"Discard\"\n"), text.constData());
    QCOMPARE(mWindow->findChild<QLabel*>("sessionLogFile")->text(), QDir::toNativeSeparators(file));
}

void tst_kyworkstation_dialogs::sessionLogFileIsOpened()
{
    struct Handler
    {
        explicit Handler(QObject* receiver) { QDesktopServices::setUrlHandler("file", receiver, "setFile"); }
        ~Handler() { QDesktopServices::unsetUrlHandler("file"); }
    };
    const Handler handler(this);
    QTest::mouseClick(mWindow->findChild<QPushButton*>("openSessionLog"), Qt::LeftButton);
    QCOMPARE(mOpened.toLocalFile(), mProfile->filePath("session.log"));
}

void tst_kyworkstation_dialogs::sessionLogOfEarlierStartsStays()
{
    runCode("Message.trace('first')");
    stop();
    start();
    runCode("Message.trace('second')");
    const QByteArray text = contents(mProfile->filePath("session.log"));
    QVERIFY(text.contains("first") && text.contains("second"));
}

void tst_kyworkstation_dialogs::unwritableSessionLogIsTold()
{
    stop();
    QVERIFY(QDir(mProfile->path()).mkpath("folder/session.log"));
    LogCapture log(3);
    const KySessionLog session(mProfile->filePath("folder/session.log"));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.toStrings().first().startsWith("3|Session|Cannot write the session log "));
    QCOMPARE(session.file(), QString());
}

void tst_kyworkstation_dialogs::sessionLogWithoutAProfileIsInNoFile()
{
    stop();
    mPlatform = std::make_unique<KyHostPlatform>(KyHostOptions());
    mWindow = std::make_unique<KyMainWindow>();
    QVERIFY(!mWindow->findChild<QPushButton*>("openSessionLog")->isEnabled());
    QVERIFY(!mWindow->findChild<QLabel*>("sessionLogFile")->text().isEmpty());
    runCode("Message.trace('kept in memory')");
    QTRY_COMPARE(mWindow->findChild<QTreeView*>("sessionLogView")->model()->rowCount(), 1);
}

void tst_kyworkstation_dialogs::paneWithoutASessionLogSaysSo()
{
    stop();
    QVERIFY(!KySessionLog::instance());
    const KySessionLogPane pane(nullptr);
    QVERIFY(!pane.findChild<QTreeView*>());
    QVERIFY(!pane.findChild<QLabel*>()->text().isEmpty());
}

KY_TEST_MAIN(tst_kyworkstation_dialogs)
#include "tst_kyworkstation_dialogs.moc"

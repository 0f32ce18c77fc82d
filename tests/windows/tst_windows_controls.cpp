// RichEditCtrl from JavaScript on real controls of other programs, by the operations of Windows under Wine.
// What a control holds is read back by the program that has it, or from the file that it has saved.

#include "DriverPorts.h"

#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>

#include <QDir>
#include <QTemporaryDir>

class tst_windows_controls : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void operationsTellOfWindows();
    void goneWindowsGiveNothing();
    void controlIsFound_data();
    void controlIsFound();
    void missingControlIsToldInTheLog();
    void hiddenControlIsSearchedAnew();
    void textIsRead_data();
    void textIsRead();
    void selectionIsReadAndSet_data();
    void selectionIsReadAndSet();
    void selectionStaysOnItsText_data();
    void selectionStaysOnItsText();
    void replacementMayBeUndone_data();
    void replacementMayBeUndone();
    void templateIsFilled_data();
    void templateIsFilled();
    void templateIsFilledByTheOtherTools();
    void templateIsFilledByAModuleInWine_data();
    void templateIsFilledByAModuleInWine();
    void templateIsFilledInAProgramOfOthers_data();
    void templateIsFilledInAProgramOfOthers();
    void textCrossesInTheCodePage_data();
    void textCrossesInTheCodePage();

private:
    void startSession(const QString& inLocale);
    QJSValue run(const QString& inSource) { return mEngine->evaluate(inSource); }
    /// `var c = new RichEditCtrl` for one of the controls; positions are those of the text that is read. Each
    /// session has its own description: handles come back in the next one.
    void bind(int inControl)
    {
        const QStringList classes{"RichEdit50W", "RichEdit20W", "Edit"};
        run(QStringLiteral("var c = new RichEditCtrl({ processName: 'controls.exe', windowClassName: '%1', "
                           "convertCRLFToLF: %2, parentWindowName: /Text|%3/ })")
                .arg(classes.at(inControl), inControl == 2 ? "false" : "true", mLocale));
    }
    void set(int inControl, const QString& inText)
    {
        mControls->ask("set " + std::to_string(inControl) + " " + WineProgram::hex(inText));
        mControls->ask("clearUndo " + std::to_string(inControl));
    }
    /// As the program tells, with "\n" at the ends of lines.
    QString content(int inControl)
    {
        return mControls->text("content " + std::to_string(inControl)).replace("\r\n", "\n");
    }
    static void addControls()
    {
        QTest::addColumn<int>("control");
        QTest::newRow("RICHEDIT50W") << 0;
        QTest::newRow("RichEdit20W") << 1;
        QTest::newRow("EDIT") << 2;
    }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::unique_ptr<WineProgram> mDriver;
    std::unique_ptr<DriverWindows> mWindows;
    std::unique_ptr<WineProgram> mControls;
    QString mLocale;
};

void tst_windows_controls::initTestCase()
{
    if (!QFile::exists(DRIVER))
        QSKIP("The compiler for Windows is not installed; scripts/setup --tests does that");
    if (!Wine::missing().isEmpty())
        QSKIP("Wine is not installed; scripts/setup --tests does that");
    QCOMPARE(Wine::prepare(), QString());
    mPlatform = std::make_unique<KyTestPlatform>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptRichEditCtrl);
}

void tst_windows_controls::init()
{
    if (QByteArray(QTest::currentTestFunction()) != "textCrossesInTheCodePage")
        startSession("C.UTF-8");
}

void tst_windows_controls::cleanupTestCase()
{
    const bool isUsed = mDriver != nullptr;
    mWindows.reset();
    mDriver.reset();
    mControls.reset();
    mEngine.reset();
    mPlatform.reset();
    if (isUsed)
        Wine::leave();
}

void tst_windows_controls::cleanup()
{
    if (mControls)
        mControls->ask("show 0");
}

void tst_windows_controls::operationsTellOfWindows()
{
    const auto control = RnWindows::Window(std::stoull(mControls->ask("handle 0")));
    const RnWindows::Window panel = mWindows->parent(control);
    const RnWindows::Window top = mWindows->parent(panel);
    QVERIFY(mWindows->windowText(panel, 256) == u"Text");
    QVERIFY(mWindows->windowText(top, 256) == u"Report of Doe");
    QVERIFY(mWindows->windowText(top, 7) == u"Report");
    QCOMPARE(mWindows->parent(top), RnWindows::Window(0));
    QVERIFY(mWindows->className(control, 256) == u"RichEdit50W");
    QVERIFY(mWindows->className(top, 4) == u"KyT");
    QVERIFY(mWindows->isWindow(control) && mWindows->isWindowVisible(control));

    QList<RnWindows::Window> listed;
    mWindows->enumWindows([&](RnWindows::Window inWindow) {
        listed.append(inWindow);
        return true;
    });
    QVERIFY(listed.contains(top) && !listed.contains(panel) && !listed.contains(control));
    QCOMPARE(mDriver->ask("firstWindow"), std::string("1"));
    QCOMPARE(mWindows->findWindowEx(top, 0), panel);
    QCOMPARE(mWindows->findWindowEx(top, panel), RnWindows::Window(0));
    QCOMPARE(mWindows->findWindowEx(panel, 0), control);

    const std::uint32_t id = mWindows->processId(control);
    const RnWindows::Process process = mWindows->openProcess(RnWindows::QueryAndRead, id);
    QVERIFY(process);
    QVERIFY(QString::fromStdU16String(mWindows->moduleFileName(process, 260)).endsWith("\\controls.exe"));
    mWindows->closeHandle(process);
    QVERIFY(mWindows->moduleFileName(process, 260).empty());
}

void tst_windows_controls::goneWindowsGiveNothing()
{
    const RnWindows::Window gone = 0x7ffe;
    QVERIFY(!mWindows->isWindow(gone) && !mWindows->isWindowVisible(gone));
    QCOMPARE(mWindows->parent(gone), RnWindows::Window(0));
    QCOMPARE(mWindows->findWindowEx(gone, 0), RnWindows::Window(0));
    QCOMPARE(mWindows->processId(gone), 0u);
    QCOMPARE(mWindows->openProcess(RnWindows::QueryAndRead, 0x7ffe), RnWindows::Process(0));
    QVERIFY(mWindows->className(gone, 256).empty() && mWindows->windowText(gone, 256).empty());
    QVERIFY(mWindows->wideText(gone, 256).empty());
    QCOMPARE(mWindows->textLength(gone), std::intptr_t(0));
    QCOMPARE(mWindows->selection(gone).end, 0u);
    mWindows->setSelection(gone, 0, -1);
    mWindows->replaceSelection(gone, true, "x");
}

void tst_windows_controls::controlIsFound_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("text");
    const QString both = "processName: 'controls.exe', windowClassName: ";
    QTest::newRow("class 50") << both + "'RichEdit50W'"
                              << "first";
    QTest::newRow("class 20") << both + "'RichEdit2*'"
                              << "second";
    QTest::newRow("class of an edit") << both + "'Edit'"
                                      << "third";
    QTest::newRow("class in other case") << both + "'RICHEDIT*'"
                                         << "undefined";
    QTest::newRow("process in other case") << "processName: 'Controls.exe', windowClassName: 'RichEdit*'"
                                           << "undefined";
    QTest::newRow("title") << "topLevelWindowName: 'Report of *', windowClassName: 'RichEdit*'"
                           << "first";
    QTest::newRow("parent") << both + "'*', parentWindowName: 'Text'"
                            << "first";
    QTest::newRow("content") << both + "'*', contentPattern: 'th*'"
                             << "third";
    QTest::newRow("other content") << both + "'*', contentPattern: 'x*'"
                                   << "undefined";
}

void tst_windows_controls::controlIsFound()
{
    QFETCH(QString, config);
    set(0, "first");
    set(1, "second");
    set(2, "third");
    QTEST(run("String(new RichEditCtrl({" + config + "}).getText())").toString(), "text");
}

void tst_windows_controls::missingControlIsToldInTheLog()
{
    LogCapture log;
    QVERIFY(!run("new RichEditCtrl({ processName: 'none.exe', windowClassName: '*' }).isValid()").toBool());
    QCOMPARE(log.take(),
             QStringList("1|KyScriptRichEdit|RichEdit not found (processName 'none\\.exe', windowClassName "
                         "'[\\d\\D]*', contentPattern '', topLevelWindowName '', parentWindowName '', "
                         "windowName '', convertCRLFToLF 'false')"));
}

void tst_windows_controls::hiddenControlIsSearchedAnew()
{
    set(0, "first");
    set(1, "second");
    run("var c = new RichEditCtrl({ processName: 'controls.exe', windowClassName: /RichEdit.*/ })");
    QCOMPARE(run("c.getText()").toString(), QStringLiteral("first"));
    mControls->ask("hide 0");
    QCOMPARE(run("c.getText()").toString(), QStringLiteral("second"));
    mControls->ask("show 0");
    QCOMPARE(run("c.getText()").toString(), QStringLiteral("second"));
}

void tst_windows_controls::textIsRead_data()
{
    addControls();
}

void tst_windows_controls::textIsRead()
{
    QFETCH(int, control);
    bind(control);
    set(control, "");
    QCOMPARE(run("typeof c.getText() + c.getText()").toString(), QStringLiteral("string"));
    set(control, "a\r\nb");
    QCOMPARE(run("c.getText()").toString(), QString(control == 2 ? "a\r\nb" : "a\nb"));
    const QString whole = (QString(98, 'x') + "\r\n").repeated(1200);
    set(control, whole);
    QCOMPARE(content(control).size(), whole.size() - 1200);
    QCOMPARE(run("c.getText()").toString().replace("\r\n", "\n"), QString(whole).replace("\r\n", "\n"));
}

void tst_windows_controls::textCrossesInTheCodePage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("written");
    const QString umlaut = QString::fromUtf8("\xC3\xA4"), euro = QString::fromUtf8("\xE2\x82\xAC"),
                  kanji = QString::fromUtf8("\xE6\x97\xA5\xE6\x9C\xAC");
    QTest::newRow("1252") << "C.UTF-8" << umlaut + euro << umlaut + euro;
    QTest::newRow("1252, beyond it") << "C.UTF-8" << kanji << "??";
    QTest::newRow("1252, surrogate pair") << "C.UTF-8" << QString::fromUtf8("a\xF0\x9F\x99\x82z") << "a??z";
    QTest::newRow("932") << "ja_JP.UTF-8" << kanji << kanji;
    QTest::newRow("932, beyond it") << "ja_JP.UTF-8" << euro << "?";
}

/// All programs of a session have one code page: with another one it is another session.
void tst_windows_controls::startSession(const QString& inLocale)
{
    if (mLocale == inLocale)
        return;
    mWindows.reset();
    mDriver.reset();
    mControls.reset();
    if (!mLocale.isEmpty())
        Wine::end();
    mLocale = inLocale;
    mControls = std::make_unique<WineProgram>(CONTROLS, QStringList("LC_ALL=" + mLocale));
    mDriver = std::make_unique<WineProgram>(DRIVER, QStringList("LC_ALL=" + mLocale));
    mWindows = std::make_unique<DriverWindows>(*mDriver);
    QVERIFY(mControls->isReady() && mDriver->isReady());
}

void tst_windows_controls::textCrossesInTheCodePage()
{
    QFETCH(QString, locale);
    QFETCH(QString, text);
    QFETCH(QString, written);
    startSession(locale);
    for (int control = 0; control < 3; ++control) {
        bind(control);
        set(control, "[X]");
        run("c.replace('[X]', '" + text + "')");
        QCOMPARE(content(control), written);
        set(control, text);
        QCOMPARE(run("c.getText()").toString(), written);
    }
}

void tst_windows_controls::selectionIsReadAndSet_data()
{
    addControls();
}

void tst_windows_controls::selectionIsReadAndSet()
{
    QFETCH(int, control);
    bind(control);
    set(control, "ab\r\ncd");
    run("c.setSelection(1, 4)");
    QCOMPARE(run("c.getSelection()").toString(), QStringLiteral("1,4"));
    QCOMPARE(mControls->ask("selection " + std::to_string(control)), std::string("1 4"));
    run("c.setSelection(0, -1)"); // one more than there is, in a rich edit
    QCOMPARE(run("c.getSelection()").toString(), QStringLiteral("0,6"));
    run("c.setSelection(1, 2); c.replaceSelection('X\\r\\nY')");
    QCOMPARE(content(control), QStringLiteral("aX\nY\ncd"));
}

void tst_windows_controls::selectionStaysOnItsText_data()
{
    addControls();
}

void tst_windows_controls::selectionStaysOnItsText()
{
    QFETCH(int, control);
    bind(control);
    set(control, "one [X] two\r\nthree");
    run("var at = c.getText().indexOf('three'); c.setSelection(at, at + 5); c.replace('[X]', 'something "
        "longer')");
    QCOMPARE(run("var s = c.getSelection(); c.getText().slice(s[0], s[1])").toString(),
             QStringLiteral("three"));
    run("c.insertAfter('one', ' more')");
    QCOMPARE(run("var s = c.getSelection(); c.getText().slice(s[0], s[1])").toString(),
             QStringLiteral("three"));
    run("c.setSelection(0, 3); c.replace(/two|z/, '2')");
    QCOMPARE(run("c.getSelection()").toString(), QStringLiteral("0,3"));
    QCOMPARE(content(control), QStringLiteral("one more something longer 2\nthree"));
}

void tst_windows_controls::replacementMayBeUndone_data()
{
    addControls();
}

void tst_windows_controls::replacementMayBeUndone()
{
    QFETCH(int, control);
    bind(control);
    const std::string undo = "undo " + std::to_string(control);
    set(control, "abc");
    run("c.setSelection(1, 2); c.replaceSelection('xyz', true)");
    QCOMPARE(content(control), QStringLiteral("axyzc"));
    mControls->ask(undo);
    QCOMPARE(content(control), QStringLiteral("abc"));
    set(control, "abc");
    run("c.setSelection(1, 2); c.replaceSelection('xyz', false)");
    mControls->ask(undo);
    QCOMPARE(content(control), QStringLiteral("axyzc"));
}

void tst_windows_controls::templateIsFilled_data()
{
    addControls();
}

namespace {

const char* const sFill =
    "c.replace('[NAME]', 'Doe, Jane'); c.insertAfter('Findings:', ' none'); "
    "c.replace(/\\[I.*\\]/, 'normal'); c.setSelection(0, 7); c.replaceSelection('Name');";

} // namespace

void tst_windows_controls::templateIsFilled()
{
    QFETCH(int, control);
    bind(control);
    set(control, "Patient: [NAME]\r\nFindings:\r\nImpression: [IMPRESSION] [end]");
    run(sFill);
    QCOMPARE(content(control), QStringLiteral("Name: Doe, Jane\nFindings: none\nImpression: normal [end]"));
}

/// The same operations, compiled and linked with Wine's own tools.
void tst_windows_controls::templateIsFilledByTheOtherTools()
{
    if (!QFile::exists(OTHER_DRIVER))
        QSKIP("Wine's tools are not installed; scripts/setup --tests does that");
    WineProgram driver(OTHER_DRIVER);
    QVERIFY(driver.isReady());
    const DriverWindows windows(driver);
    QCOMPARE(RnWindows::instance(), &windows);
    bind(0);
    set(0, "Patient: [NAME]\r\nFindings:\r\nImpression: [IMPRESSION] [end]");
    run(sFill);
    QCOMPARE(content(0), QStringLiteral("Name: Doe, Jane\nFindings: none\nImpression: normal [end]"));
    mWindows = std::make_unique<DriverWindows>(*mDriver);
}

void tst_windows_controls::templateIsFilledByAModuleInWine_data()
{
    addControls();
}

/// Without a pipe between the module and the windows.
void tst_windows_controls::templateIsFilledByAModuleInWine()
{
    if (!QFile::exists(MODULE))
        QSKIP("This build has no module for Wine: its tools are not installed, or sanitizers are on");
    QFETCH(int, control);
    WineProgram module(MODULE);
    QVERIFY(module.isReady());
    set(control, QString::fromUtf8(
                     "Patient: [NAME]\r\nFindings:\r\nImpression: [IMPRESSION] [end] \xC3\xA4\xE2\x82\xAC"));
    const QString result = module.text(WineProgram::hex(
        QStringLiteral("var c = new RichEditCtrl({ processName: 'controls.exe', windowClassName: '%1', "
                       "convertCRLFToLF: %2 }); %3 c.getText()")
            .arg(QStringList({"RichEdit50W", "RichEdit20W", "Edit"}).at(control),
                 control == 2 ? "false" : "true", sFill)));
    QCOMPARE(
        content(control),
        QString::fromUtf8("Name: Doe, Jane\nFindings: none\nImpression: normal [end] \xC3\xA4\xE2\x82\xAC"));
    QCOMPARE(QString(result).replace("\r\n", "\n"), content(control));
    // The engine sees the end of its stack there, too.
    QCOMPARE(module.text(WineProgram::hex("(function f() { f(); })()")),
             QStringLiteral("RangeError: Maximum call stack size exceeded."));
}

void tst_windows_controls::templateIsFilledInAProgramOfOthers_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("lineEnd");
    QTest::newRow("wordpad")
        << "C:\\Program Files\\Windows NT\\Accessories\\wordpad.exe"
        << "RichEdit20W"
        << "report.rtf"
        << QByteArray("{\\rtf1\\ansi Patient: [NAME]\\par Findings:\\par {\\b Impression:} [IMPRESSION] "
                      "[end]\\par }")
        << QByteArray("\\par");
    QTest::newRow("notepad") << "C:\\windows\\system32\\notepad.exe"
                             << "Edit"
                             << "report.txt"
                             << QByteArray("Patient: [NAME]\r\nFindings:\r\nImpression: [IMPRESSION] [end]")
                             << QByteArray("\n");
}

/// Their user saves what has become of the template; the file is read here.
void tst_windows_controls::templateIsFilledInAProgramOfOthers()
{
    QFETCH(QString, program);
    QFETCH(QString, className);
    QFETCH(QString, file);
    QFETCH(QByteArray, before);
    const QTemporaryDir folder;
    QFile document(folder.filePath(file));
    QVERIFY(document.open(QIODevice::WriteOnly) && document.write(before) == before.size());
    document.close();

    QProcess process;
    process.setProcessEnvironment(Wine::environment());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start("wine", {program, "Z:" + document.fileName().replace('/', '\\')});
    run("var c = new RichEditCtrl({ processName: '" + program.section('\\', -1) + "', windowClassName: '" +
        className + "', topLevelWindowName: '" + file +
        "*', contentPattern: '*Patient:*', convertCRLFToLF: " + (className == "Edit" ? "false" : "true") +
        " })");
    QTRY_VERIFY_WITH_TIMEOUT(run("c.isValid()").toBool(), 60000);
    run(sFill);

    WineProgram commands(COMMANDS);
    QVERIFY(commands.isReady());
    const std::string save = commands.ask("command " + WineProgram::hex(program) + " &Save");
    RnWindows::Window top = 0;
    mWindows->enumWindows([&](RnWindows::Window inWindow) {
        if (QString::fromStdU16String(mWindows->windowText(inWindow, 256)).startsWith(file))
            top = inWindow;
        return !top;
    });
    QVERIFY(top);
    commands.ask("send " + std::to_string(top) + " 273 " + save); // WM_COMMAND
    commands.ask("post " + std::to_string(top) + " 16 0");        // WM_CLOSE
    const bool hasEnded = process.waitForFinished(60000);
    process.kill();
    process.waitForFinished();
    QVERIFY(hasEnded);

    QVERIFY(document.open(QIODevice::ReadOnly));
    const QByteArray after = document.readAll();
    for (const char* part : {"Name: Doe, Jane", "Findings: none", "normal [end]"})
        QVERIFY2(after.contains(part), after.constData());
    for (const char* part : {"Patient", "NAME", "IMPRESSION"})
        QVERIFY2(!after.contains(part), after.constData());
    QFETCH(QByteArray, lineEnd);
    QVERIFY2(after.contains(lineEnd), after.constData());
}

KY_TEST_MAIN(tst_windows_controls)
#include "tst_windows_controls.moc"

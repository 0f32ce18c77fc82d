// Controls of other programs, on a desktop in memory.

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptRichEdit.h>
#include <kyscript/KyScriptRichEditSearch.h>

#include <rnwin/RnSimulatedDesktop.h>

#include <thread>

using Window = RnWindows::Window;
using Kind = RnSimulatedDesktop::Kind;

class tst_KyScriptRichEdit : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // configuration
    void constructorsTakeWhatScriptsPass_data();
    void constructorsTakeWhatScriptsPass();
    void wildcardsAndExpressionsAreRead_data();
    void wildcardsAndExpressionsAreRead();
    void flagOfLineEndsIsRead_data();
    void flagOfLineEndsIsRead();
    void ownEditorIsAReservedClass_data();
    void ownEditorIsAReservedClass();

    // search
    void controlIsFound_data();
    void controlIsFound();
    void searchNeedsAClassAndAProcessOrATitle_data();
    void searchNeedsAClassAndAProcessOrATitle();
    void missingControlIsToldInTheLog();
    void systemWithoutWindowsFindsNothing();
    void contentIsTheBeginningOfTheText();
    void contentIsConvertedBeforeItIsTested();
    void firstMatchWins();
    void searchGoesInPreOrder();
    void searchEndsAtTheFirstMatch();
    void topLevelWindowIsNoCandidate();
    void hiddenControlIsNoCandidate();
    void testsGoInTheirOrder();
    void emptyExpressionsAskNothing();
    void processIsOpenedForItsNameOnly();
    void brokenExpressionsMatchNothing();

    // known targets
    void knownWindowIsFoundWithoutASearch();
    void equalDescriptionsShareAnEntry();
    void hiddenWindowIsSearchedAnew();
    void closedWindowIsSearchedAnew();
    void vanishedWindowIsForgotten();
    void descriptionThatCannotBeSearchedIsKnownToo();

    // text
    void textIsRead_data();
    void textIsRead();
    void absurdLengthGivesNoText();
    void absentTargetAnswersNeutrally();
    void htmlIsNotServed();
    void validAndReadableAreTheSame();
    void controlThatVanishesGivesEmptyText();

    // selection
    void selectionIsReadAndSet();
    void selectionIsReplaced_data();
    void selectionIsReplaced();
    void replacementMayBeUndone();

    // replace and insertAfter
    void replaceTakesTheFirstMatch_data();
    void replaceTakesTheFirstMatch();
    void replaceKeepsTheSelection_data();
    void replaceKeepsTheSelection();
    void insertAfterTakesTheFirstOccurrence_data();
    void insertAfterTakesTheFirstOccurrence();
    void insertAfterKeepsTheSelection_data();
    void insertAfterKeepsTheSelection();
    void replaceSendsItsMessagesInOrder();
    void insertAfterSendsItsMessagesInOrder();
    void positionsOfARichEditAreThoseOfConvertedText();
    void templateIsFilled();

    void hungProgramBlocksUntilItAnswers();

private:
    QJSValue run(const QString& inSource) { return mEngine->evaluate(inSource); }
    QString text(const QString& inSource) { return run(inSource).toString(); }
    /// A program "Edit.exe" with the window "Report of Doe", a panel "Text" and in it a control.
    Window addEditor(Kind inKind, const QString& inText);
    /// `new RichEditCtrl` for that, less its last bracket.
    static QString editor()
    {
        return "new RichEditCtrl({ processName: 'Edit.exe', windowClassName: 'RICHEDIT*' ";
    }
    QStringList observed(const std::function<void()>& inAction);
    QString content() const { return QString::fromStdU16String(mDesktop->content(mControl)); }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<RnSimulatedDesktop> mDesktop;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::unique_ptr<LogCapture> mLog;
    std::uint32_t mProcess = 0;
    Window mTop = 0;
    Window mPanel = 0;
    Window mControl = 0;
};

void tst_KyScriptRichEdit::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mDesktop = std::make_unique<RnSimulatedDesktop>();
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptRichEditCtrl);
    mLog = std::make_unique<LogCapture>();
}

void tst_KyScriptRichEdit::cleanup()
{
    const QString broken = mContracts->verify();
    const int open = mDesktop ? mDesktop->openProcesses() : 0;
    mLog.reset();
    mEngine.reset();
    mDesktop.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QCOMPARE(open, 0);
}

Window tst_KyScriptRichEdit::addEditor(Kind inKind, const QString& inText)
{
    mProcess = mDesktop->addProcess(u"C:\\Program Files\\Edit\\Edit.exe");
    mTop = mDesktop->add({.process = mProcess, .className = u"Frame", .title = u"Report of Doe"});
    mPanel = mDesktop->add({.parent = mTop, .className = u"Panel", .title = u"Text"});
    mControl = mDesktop->add({.parent = mPanel,
                              .className = u"RICHEDIT50W",
                              .title = u"Findings",
                              .kind = inKind,
                              .text = inText.toStdU16String()});
    return mControl;
}

QStringList tst_KyScriptRichEdit::observed(const std::function<void()>& inAction)
{
    QStringList operations;
    mDesktop->setObserver([&](const char* inOperation, Window) { operations.append(inOperation); });
    inAction();
    mDesktop->setObserver({});
    return operations;
}

void tst_KyScriptRichEdit::constructorsTakeWhatScriptsPass_data()
{
    QTest::addColumn<QString>("config");
    for (const char* config :
         {"",
          "undefined",
          "{}",
          "null",
          "'text'",
          "1",
          "true",
          "[]",
          "['a']",
          "function () {}",
          "Symbol()",
          "new Map()",
          "/a/",
          "new Date()",
          "{ windowClassName: Symbol(), processName: [Symbol()] }",
          "{ windowClassName: {a: 1}, processName: 5, convertCRLFToLF: {} }",
          "[Symbol()]",
          "{ windowClassName: null, processName: undefined, contentPattern: function () {} }",
          "{ windowClassName: new String('RICHEDIT*'), processName: 'Edit.exe' }",
          "Object.create({ windowClassName: 'RICHEDIT*', processName: 'Edit.exe' })",
          "(function () { var deep = []; for (var i = 0; i < 20000; ++i) deep = [deep]; "
          "return { windowClassName: deep, processName: 'Edit.exe' }; })()",
          "{}, 2, 3"})
        QTest::newRow(config) << config;
}

void tst_KyScriptRichEdit::constructorsTakeWhatScriptsPass()
{
    QFETCH(QString, config);
    addEditor(Kind::RichEdit, "abc");
    QCOMPARE(
        text("var c = new RichEditCtrl(" + config +
             "); [typeof c, c.isValid(), c.isReadable(), c.getText(), c.getHtml(), c.getSelection().length]"),
        QStringLiteral("object,false,false,,,0"));
    QCOMPARE(mLog->take(), QStringList());
}

void tst_KyScriptRichEdit::wildcardsAndExpressionsAreRead_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("pattern");
    QTest::newRow("wildcard") << "'a*b?'"
                              << "a[\\d\\D]*b[\\d\\D]";
    QTest::newRow("wildcard, slash and dot") << "'a/b.c'"
                                             << "a/b\\.c";
    QTest::newRow("expression") << "/a.*b/"
                                << "a.*b";
    QTest::newRow("expression with a flag") << "/a|b/i"
                                            << "a|b";
    QTest::newRow("number") << "5"
                            << "";
    QTest::newRow("true") << "true"
                          << "";
    QTest::newRow("array") << "['a']"
                           << "";
    QTest::newRow("object") << "{ a: 1 }"
                            << "";
    QTest::newRow("null") << "null"
                          << "";
    QTest::newRow("empty text") << "''"
                                << "";
}

/// As the log shows them; each of the six keys.
void tst_KyScriptRichEdit::wildcardsAndExpressionsAreRead()
{
    QFETCH(QString, value);
    QFETCH(QString, pattern);
    const QStringList keys{"processName",        "windowClassName",  "contentPattern",
                           "topLevelWindowName", "parentWindowName", "windowName"};
    for (const QString& key : keys) {
        QMap<QString, QString> values{
            {"processName", "'no.exe'"}, {"windowClassName", "'no'"}, {"topLevelWindowName", "'no'"}};
        QMap<QString, QString> patterns{
            {"processName", "no\\.exe"}, {"windowClassName", "no"}, {"topLevelWindowName", "no"}};
        values[key] = value;
        patterns[key] = pattern;
        QString config, line = "1|KyScriptRichEdit|RichEdit not found (";
        for (const QString& name : keys) {
            config += name + ": " + values.value(name, "undefined") + ", ";
            line += name + " '" + patterns.value(name) + "', ";
        }
        run("new RichEditCtrl({" + config + "}).isValid()");
        const bool isSearched = key != "windowClassName" || !pattern.isEmpty();
        QCOMPARE(mLog->take(), isSearched ? QStringList(line + "convertCRLFToLF 'false')") : QStringList());
    }
}

void tst_KyScriptRichEdit::flagOfLineEndsIsRead_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("isSet");
    QTest::newRow("true") << "true" << true;
    QTest::newRow("false") << "false" << false;
    QTest::newRow("1") << "1" << true;
    QTest::newRow("0") << "0" << false;
    QTest::newRow("2.5") << "2.5" << true;
    QTest::newRow("text") << "'yes'" << true;
    QTest::newRow("text true") << "'true'" << true;
    QTest::newRow("text false") << "'false'" << false;
    QTest::newRow("text 0") << "'0'" << false;
    QTest::newRow("empty text") << "''" << false;
    QTest::newRow("null") << "null" << false;
    QTest::newRow("undefined") << "undefined" << false;
    QTest::newRow("array") << "[1]" << false;
    QTest::newRow("object") << "{ a: 1 }" << false;
}

void tst_KyScriptRichEdit::flagOfLineEndsIsRead()
{
    QFETCH(QString, value);
    QFETCH(bool, isSet);
    addEditor(Kind::RichEdit, "a\nb");
    QCOMPARE(text(editor() + ", convertCRLFToLF: " + value + " }).getText()"),
             QString(isSet ? "a\nb" : "a\r\nb"));
}

void tst_KyScriptRichEdit::ownEditorIsAReservedClass_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<bool>("isOwn");
    QTest::newRow("text") << "'OvReportEditor'" << true;
    QTest::newRow("expression") << "/OvReportEditor/" << true;
    QTest::newRow("expression with a flag") << "/OvReportEditor/i" << true;
    QTest::newRow("other case") << "'ovReportEditor'" << false;
    QTest::newRow("wildcard") << "'OvReportEditor*'" << false;
    QTest::newRow("anchored expression") << "/^OvReportEditor$/" << false;
    QTest::newRow("other type") << "['OvReportEditor']" << false;
}

/// There is no report on view, but a control of that class, which only those find that mean no reserved word.
void tst_KyScriptRichEdit::ownEditorIsAReservedClass()
{
    QFETCH(QString, className);
    QFETCH(bool, isOwn);
    const Window top = mDesktop->add({.title = u"Top"});
    mDesktop->add({.parent = top, .className = u"OvReportEditor", .kind = Kind::RichEdit, .text = u"abc"});
    const QStringList operations = observed([&] {
        run("new RichEditCtrl({ topLevelWindowName: 'Top', windowClassName: " + className + "}).getText()");
    });
    QCOMPARE(operations.contains("EnumWindows"), !isOwn && !className.contains('['));
    QCOMPARE(mLog->take().size(), className.startsWith("'ov") ? 1 : 0);
}

void tst_KyScriptRichEdit::controlIsFound_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<bool>("isFound");
    const QString both = "processName: 'Edit.exe', windowClassName: 'RICHEDIT*'";
    QTest::newRow("process and class") << both << true;
    QTest::newRow("title and class") << "topLevelWindowName: 'Report*', windowClassName: 'RICHEDIT*'" << true;
    QTest::newRow("class in other case") << "processName: 'Edit.exe', windowClassName: 'RichEdit*'" << false;
    QTest::newRow("process in other case")
        << "processName: 'edit.exe', windowClassName: 'RICHEDIT*'" << false;
    QTest::newRow("expression with i, other case")
        << "processName: /edit.exe/i, windowClassName: 'RICHEDIT*'" << false;
    QTest::newRow("part of the process") << "processName: 'Edit', windowClassName: 'RICHEDIT*'" << false;
    QTest::newRow("path of the process") << "processName: '*Program*', windowClassName: 'RICHEDIT*'" << false;
    QTest::newRow("expression") << "processName: /Ed.t[.]exe/, windowClassName: /RICHEDIT\\d+W/" << true;
    QTest::newRow("alternatives as a whole")
        << "processName: /Edit.exe|x/, windowClassName: /x|RICHEDIT50W/" << true;
    QTest::newRow("half of an alternative") << "processName: /Edit|x/, windowClassName: 'RICHEDIT*'" << false;
    QTest::newRow("all titles")
        << both + ", topLevelWindowName: 'Report*', parentWindowName: 'Text', windowName: 'Findings'" << true;
    QTest::newRow("other top-level title") << both + ", topLevelWindowName: 'Letter*'" << false;
    QTest::newRow("part of the title") << both + ", topLevelWindowName: 'Report'" << false;
    QTest::newRow("other parent") << both + ", parentWindowName: 'Report*'" << false;
    QTest::newRow("other title") << both + ", windowName: 'Text'" << false;
    QTest::newRow("content") << both + ", contentPattern: 'Template*'" << true;
    QTest::newRow("content over lines") << both + ", contentPattern: /Template\\s+of.*/" << true;
    QTest::newRow("part of the content") << both + ", contentPattern: 'Template'" << false;
    QTest::newRow("other class") << "processName: 'Edit.exe', windowClassName: 'EDIT'" << false;
    QTest::newRow("any class") << "processName: 'Edit.exe', windowClassName: '*'" << true;
}

void tst_KyScriptRichEdit::controlIsFound()
{
    QFETCH(QString, config);
    addEditor(Kind::RichEdit, "Template\nof a report");
    QTEST(run("new RichEditCtrl({" + config + "}).isValid()").toBool(), "isFound");
    QCOMPARE(mLog->take().isEmpty(), run("new RichEditCtrl({" + config + "}).isReadable()").toBool());
}

void tst_KyScriptRichEdit::searchNeedsAClassAndAProcessOrATitle_data()
{
    QTest::addColumn<QString>("config");
    QTest::newRow("class alone") << "windowClassName: 'RICHEDIT*'";
    QTest::newRow("class and other titles") << "windowClassName: 'RICHEDIT*', parentWindowName: 'Text', "
                                               "windowName: 'Findings', contentPattern: '*'";
    QTest::newRow("process and title") << "processName: 'Edit.exe', topLevelWindowName: 'Report*'";
    QTest::newRow("empty class") << "processName: 'Edit.exe', windowClassName: ''";
}

void tst_KyScriptRichEdit::searchNeedsAClassAndAProcessOrATitle()
{
    QFETCH(QString, config);
    addEditor(Kind::RichEdit, "abc");
    const QStringList operations =
        observed([&] { QVERIFY(!run("new RichEditCtrl({" + config + "}).isValid()").toBool()); });
    QCOMPARE(operations, QStringList());
    QCOMPARE(mLog->take(), QStringList());
}

void tst_KyScriptRichEdit::missingControlIsToldInTheLog()
{
    run("var c = new RichEditCtrl({ processName: 'a*.exe', windowClassName: /\u00e4+/, convertCRLFToLF: true,"
        " contentPattern: 'x', topLevelWindowName: 'y', parentWindowName: 'z', windowName: '\u20ac' })");
    const QString line =
        QString::fromUtf8("1|KyScriptRichEdit|RichEdit not found (processName 'a[\\d\\D]*\\.exe', "
                          "windowClassName '\u00e4+', contentPattern 'x', topLevelWindowName 'y', "
                          "parentWindowName 'z', windowName '?', convertCRLFToLF 'true')");
    for (const char* call : {"isValid()", "isReadable()", "getText()", "getSelection()", "setSelection(0, 1)",
                             "replace('a', 'b')", "replaceSelection('a')", "insertAfter('a', 'b')"})
    {
        run(QStringLiteral("c.") + call);
        QCOMPARE(mLog->take(), QStringList(line));
    }
    run("c.getHtml(); c.setHtml('a'); c.replaceSelectionHtml('b')");
    QCOMPARE(mLog->take(), QStringList());
}

void tst_KyScriptRichEdit::systemWithoutWindowsFindsNothing()
{
    mDesktop.reset();
    QCOMPARE(text("var c = " + editor() +
                  "}); [c.isValid(), c.isReadable(), c.getText(), c.getSelection().length]"),
             QStringLiteral("false,false,,0"));
    run("c.setSelection(0, 1); c.replace('a', 'b'); c.replaceSelection('a'); c.insertAfter('a', 'b')");
    QCOMPARE(mLog->take().size(), 8);
}

void tst_KyScriptRichEdit::contentIsTheBeginningOfTheText()
{
    addEditor(Kind::Edit, QString(1024, 'a'));
    QVERIFY(run(editor() + ", contentPattern: /a{1024}/ }).isValid()").toBool());
    mDesktop->destroy(mTop);
    addEditor(Kind::Edit, QString(1024, 'a') + "b");
    QVERIFY(run(editor() + ", contentPattern: /a{1024}/ }).isValid()").toBool());
    QVERIFY(!run(editor() + ", contentPattern: /a{1024}b/ }).isValid()").toBool());
    QVERIFY(!run(editor() + ", contentPattern: /a{1023}/ }).isValid()").toBool());
}

void tst_KyScriptRichEdit::contentIsConvertedBeforeItIsTested()
{
    addEditor(Kind::RichEdit, "a\nb");
    QVERIFY(run(editor() + ", contentPattern: /a\\r\\nb/ }).isValid()").toBool());
    QVERIFY(!run(editor() + ", contentPattern: /a\\nb/ }).isValid()").toBool());
    QVERIFY(run(editor() + ", contentPattern: /a\\nb/, convertCRLFToLF: true }).isValid()").toBool());
    QVERIFY(!run(editor() + ", contentPattern: /a\\r\\nb/, convertCRLFToLF: true }).isValid()").toBool());
}

void tst_KyScriptRichEdit::firstMatchWins()
{
    addEditor(Kind::RichEdit, "first");
    mDesktop->add({.parent = mPanel, .className = u"RICHEDIT50W", .kind = Kind::RichEdit, .text = u"second"});
    const Window other = mDesktop->add({.process = mProcess, .title = u"Report of Doe"});
    mDesktop->add({.parent = other, .className = u"RICHEDIT50W", .kind = Kind::RichEdit, .text = u"third"});
    QCOMPARE(text(editor() + "}).getText()"), QStringLiteral("first"));
    QCOMPARE(text(editor() + ", contentPattern: 'third' }).getText()"), QStringLiteral("third"));
}

/// A child of an earlier sibling stands before a later sibling, and behind its own parent.
void tst_KyScriptRichEdit::searchGoesInPreOrder()
{
    const auto add = [&](Window inParent, const char16_t* inText) {
        return mDesktop->add({.parent = inParent, .className = u"E", .kind = Kind::Edit, .text = inText});
    };
    const Window top = mDesktop->add({.title = u"Top"});
    const Window a = add(top, u"a");
    const Window a1 = add(a, u"a1");
    add(a1, u"a1x");
    add(a, u"a2");
    add(top, u"b");
    QList<Window> asked;
    mDesktop->setObserver([&](const char* inOperation, Window inWindow) {
        if (QByteArray(inOperation) == "GetClassNameW")
            asked.append(inWindow);
    });
    run("new RichEditCtrl({ topLevelWindowName: 'Top', windowClassName: 'none' }).isValid()");
    QStringList texts;
    for (const Window window : asked)
        texts.append(QString::fromStdU16String(mDesktop->content(window)));
    QCOMPARE(texts, QStringList({"a", "a1", "a1x", "a2", "b"}));
}

void tst_KyScriptRichEdit::searchEndsAtTheFirstMatch()
{
    addEditor(Kind::RichEdit, "first");
    const Window other = mDesktop->add({.process = mProcess, .title = u"Other"});
    QList<Window> asked;
    mDesktop->setObserver([&](const char*, Window inWindow) { asked.append(inWindow); });
    QVERIFY(run(editor() + "}).isValid()").toBool());
    QVERIFY(!asked.contains(other));
}

void tst_KyScriptRichEdit::topLevelWindowIsNoCandidate()
{
    mDesktop->add({.className = u"RICHEDIT50W", .title = u"Report", .kind = Kind::RichEdit, .text = u"abc"});
    QVERIFY(!run("new RichEditCtrl({ topLevelWindowName: 'Report', windowClassName: 'RICHEDIT*' }).isValid()")
                 .toBool());
}

void tst_KyScriptRichEdit::hiddenControlIsNoCandidate()
{
    addEditor(Kind::RichEdit, "first");
    mDesktop->setVisible(mControl, false);
    QVERIFY(!run(editor() + "}).isValid()").toBool());
    mDesktop->add({.parent = mPanel, .className = u"RICHEDIT50W", .kind = Kind::RichEdit, .text = u"second"});
    QCOMPARE(text(editor() + "}).getText()"), QStringLiteral("second"));
}

void tst_KyScriptRichEdit::testsGoInTheirOrder()
{
    addEditor(Kind::RichEdit, "abc");
    mDesktop->destroy(mPanel);
    mControl = mDesktop->add({.parent = mTop,
                              .className = u"RICHEDIT50W",
                              .title = u"Findings",
                              .kind = Kind::RichEdit,
                              .text = u"abc"});
    const QStringList operations = observed([&] {
        run(editor() + ", topLevelWindowName: '*', windowName: '*', contentPattern: '*', parentWindowName: "
                       "'*' }).isValid()");
    });
    QCOMPARE(operations,
             QStringList({"EnumWindows", "GetWindowThreadProcessId", "OpenProcess", "K32GetModuleFileNameExW",
                          "CloseHandle", "GetWindowTextW", "FindWindowExA", "FindWindowExA", "FindWindowExA",
                          "GetClassNameW", "GetWindowTextW", "WM_GETTEXT W", "GetParent", "GetWindowTextW",
                          "IsWindowVisible"}));
}

void tst_KyScriptRichEdit::emptyExpressionsAskNothing()
{
    addEditor(Kind::RichEdit, "abc");
    mDesktop->setTitle(mTop, u"");
    mDesktop->setTitle(mControl, u"");
    QStringList operations = observed([&] { QVERIFY(run(editor() + "}).isValid()").toBool()); });
    QVERIFY(!operations.contains("GetWindowTextW") && !operations.contains("WM_GETTEXT W"));
    // A title that is asked for must be there, even if the expression would take an empty one.
    QVERIFY(!run(editor() + ", windowName: '*' }).isValid()").toBool());
    QVERIFY(!run(editor() + ", topLevelWindowName: '*' }).isValid()").toBool());
    mDesktop->setTitle(mTop, u"Report");
    operations = observed([&] {
        QVERIFY(run("new RichEditCtrl({ topLevelWindowName: 'Report', windowClassName: '*' }).isValid()")
                    .toBool());
    });
    QVERIFY(!operations.contains("OpenProcess"));
}

void tst_KyScriptRichEdit::processIsOpenedForItsNameOnly()
{
    const std::uint32_t foreign = mDesktop->addProcess(u"C:\\Edit.exe", false);
    const Window top = mDesktop->add({.process = foreign, .title = u"Report of Doe"});
    mDesktop->add({.parent = top, .className = u"RICHEDIT50W", .kind = Kind::RichEdit, .text = u"foreign"});
    QVERIFY(!run(editor() + "}).isValid()").toBool());
    QCOMPARE(
        text("new RichEditCtrl({ topLevelWindowName: 'Report*', windowClassName: 'RICHEDIT*' }).getText()"),
        QStringLiteral("foreign"));
    addEditor(Kind::RichEdit, "ours");
    QCOMPARE(text(editor() + "}).getText()"), QStringLiteral("ours"));
    QCOMPARE(mDesktop->openProcesses(), 0);
}

/// What JavaScript takes for an expression need not be one for this library; nothing is said about it.
void tst_KyScriptRichEdit::brokenExpressionsMatchNothing()
{
    addEditor(Kind::RichEdit, "[abc");
    QTest::failOnWarning(QRegularExpression(".*"));
    QVERIFY(!run(editor() + ", contentPattern: '[abc' }).isValid()").toBool());
    QVERIFY(!run(editor() + ", contentPattern: /[^]*/ }).isValid()").toBool());
    run(editor() + "}).replace(/[^]/, 'x')");
    QCOMPARE(content(), QStringLiteral("[abc"));
}

void tst_KyScriptRichEdit::knownWindowIsFoundWithoutASearch()
{
    addEditor(Kind::RichEdit, "abc");
    run("var c = " + editor() + ", windowName: 'Findings' })");
    QVERIFY(observed([&] { run("c.isValid()"); }).contains("EnumWindows"));
    QCOMPARE(observed([&] { run("c.isValid()"); }), QStringList({"IsWindow", "IsWindowVisible"}));
    QCOMPARE(observed([&] { run("c.isReadable()"); }), QStringList({"IsWindow", "IsWindowVisible"}));
    mDesktop->setTitle(mControl, u"Other");
    QVERIFY(run("c.isValid()").toBool());
}

void tst_KyScriptRichEdit::equalDescriptionsShareAnEntry()
{
    addEditor(Kind::RichEdit, "abc");
    const QString config = ", windowName: 'Find*', parentWindowName: /Te.t/i ";
    const qsizetype before = KyScriptRichEditSearch::knownTargets();
    QVERIFY(run(editor() + config + "}).isValid()").toBool());
    QCOMPARE(KyScriptRichEditSearch::knownTargets(), before + 1);
    QCOMPARE(observed([&] { run(editor() + config + "}).isValid()"); }),
             QStringList({"IsWindow", "IsWindowVisible"}));
    QCOMPARE(KyScriptRichEditSearch::knownTargets(), before + 1);
    QVERIFY(observed([&] {
                run(editor() + config + ", convertCRLFToLF: true }).isValid()");
            }).contains("EnumWindows"));
    QCOMPARE(KyScriptRichEditSearch::knownTargets(), before + 2);
    // The options take no part in matching, but they do in this.
    QVERIFY(observed([&] {
                run(editor() + ", windowName: 'Find*', parentWindowName: /Te.t/ }).isValid()");
            }).contains("EnumWindows"));
    QCOMPARE(KyScriptRichEditSearch::knownTargets(), before + 3);
    // Of another engine.
    KyScriptEngine other(nullptr, ScriptRichEditCtrl);
    QCOMPARE(observed([&] { other.evaluate(editor() + config + "}).isValid()"); }),
             QStringList({"IsWindow", "IsWindowVisible"}));
}

void tst_KyScriptRichEdit::hiddenWindowIsSearchedAnew()
{
    addEditor(Kind::RichEdit, "first");
    run("var c = " + editor() + ", contentPattern: '*' })");
    QCOMPARE(text("c.getText()"), QStringLiteral("first"));
    mDesktop->add({.parent = mPanel, .className = u"RICHEDIT50W", .kind = Kind::RichEdit, .text = u"second"});
    QCOMPARE(text("c.getText()"), QStringLiteral("first"));
    mDesktop->setVisible(mControl, false);
    QCOMPARE(text("c.getText()"), QStringLiteral("second"));
    mDesktop->setVisible(mControl, true);
    QCOMPARE(text("c.getText()"), QStringLiteral("second"));
}

void tst_KyScriptRichEdit::closedWindowIsSearchedAnew()
{
    addEditor(Kind::RichEdit, "first");
    run("var c = " + editor() + ", topLevelWindowName: '*Doe' })");
    QVERIFY(run("c.isValid()").toBool());
    mDesktop->destroy(mTop);
    addEditor(Kind::RichEdit, "again");
    QCOMPARE(text("c.getText()"), QStringLiteral("again"));
}

void tst_KyScriptRichEdit::vanishedWindowIsForgotten()
{
    addEditor(Kind::RichEdit, "first");
    run("var c = " + editor() + ", parentWindowName: 'Tex*' })");
    QVERIFY(run("c.isValid()").toBool());
    mDesktop->destroy(mControl);
    QVERIFY(!run("c.isValid()").toBool());
    QCOMPARE(mLog->take().size(), 1);
    QVERIFY(!observed([&] { run("c.isValid()"); }).contains("IsWindow"));
}

void tst_KyScriptRichEdit::descriptionThatCannotBeSearchedIsKnownToo()
{
    const qsizetype before = KyScriptRichEditSearch::knownTargets();
    run("new RichEditCtrl({ windowClassName: 'known' }).isValid(); new RichEditCtrl({ windowClassName: "
        "'known' }).isValid()");
    QCOMPARE(KyScriptRichEditSearch::knownTargets(), before + 1);
    run("new RichEditCtrl({ windowClassName: 'OvReportEditor' }).isValid()");
    QCOMPARE(KyScriptRichEditSearch::knownTargets(), before + 1);
}

void tst_KyScriptRichEdit::textIsRead_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isConverted");
    QTest::addColumn<QString>("read");
    for (const auto& [name, kind] : {std::pair("edit", Kind::Edit), std::pair("rich edit", Kind::RichEdit)}) {
        QTest::addRow("%s, empty", name) << int(kind) << "" << false << "";
        QTest::addRow("%s, lines", name) << int(kind) << "a\nb" << false << "a\r\nb";
        QTest::addRow("%s, lines converted", name) << int(kind) << "a\n\nb" << true << "a\n\nb";
        QTest::addRow("%s, code page", name) << int(kind) << QString::fromUtf8("\xC3\xA4\xE2\x82\xAC")
                                             << false << QString::fromUtf8("\xC3\xA4\xE2\x82\xAC");
        QTest::addRow("%s, beyond it", name)
            << int(kind) << QString::fromUtf8("a\xCE\xB1\xF0\x9F\x99\x82z") << false << "a???z";
        QTest::addRow("%s, up to a NUL", name)
            << int(kind) << QString(QLatin1String("ab\0cd", 5)) << false << "ab";
        QTest::addRow("%s, long", name) << int(kind) << QString(120000, 'x') << false << QString(120000, 'x');
    }
}

void tst_KyScriptRichEdit::textIsRead()
{
    QFETCH(int, kind);
    QFETCH(QString, text);
    QFETCH(bool, isConverted);
    addEditor(Kind(kind), text);
    QTEST(this->text(editor() + (isConverted ? ", convertCRLFToLF: true" : "") + "}).getText()"), "read");
    QCOMPARE(this->text("typeof " + editor() + "}).getText()"), QStringLiteral("string"));
}

namespace {

/// A desktop with one control that claims a length of its text.
class Claiming final : public RnWindows
{
public:
    explicit Claiming(std::intptr_t inLength)
        : length(inLength)
    {}
    void enumWindows(const std::function<bool(Window)>& inCallback) override { inCallback(1); }
    Window findWindowEx(Window inParent, Window inAfter) override
    {
        return inParent == 1 && !inAfter ? 2 : 0;
    }
    Window parent(Window) override { return 1; }
    bool isWindow(Window) override { return true; }
    bool isWindowVisible(Window) override { return true; }
    std::u16string className(Window, int) override { return u"Claiming"; }
    std::u16string windowText(Window, int) override { return u"Top"; }
    std::uint32_t processId(Window) override { return 1; }
    Process openProcess(std::uint32_t, std::uint32_t) override { return 0; }
    std::u16string moduleFileName(Process, int) override { return {}; }
    void closeHandle(Process) override {}
    std::u16string wideText(Window, int) override { return {}; }
    std::intptr_t textLength(Window) override { return length; }
    void text(Window, std::size_t inSize, char* outBuffer) override
    {
        if (inSize > 1)
            outBuffer[0] = 'x';
    }
    Selection selection(Window) override { return {7, 4000000000u}; }
    void setSelection(Window, int, int) override {}
    void replaceSelection(Window, bool, const std::string&) override {}
    std::u16string fromLocal8Bit(std::string_view inText) override { return {inText.begin(), inText.end()}; }
    std::string toLocal8Bit(std::u16string_view) override { return {}; }

    const std::intptr_t length;
};

} // namespace

void tst_KyScriptRichEdit::absurdLengthGivesNoText()
{
    mDesktop.reset();
    for (const std::intptr_t length : {std::intptr_t(-1), std::numeric_limits<std::intptr_t>::min(),
                                       std::numeric_limits<std::intptr_t>::max()})
    {
        const Claiming claiming(length);
        QCOMPARE(text("var c = new RichEditCtrl({ topLevelWindowName: 'Top', windowClassName: 'Claiming' }); "
                      "typeof c.getText() + c.getText()"),
                 QStringLiteral("string"));
        run("c.replace('x', 'y'); c.insertAfter('x', 'y')");
    }
    const Claiming claiming(100);
    QCOMPARE(text("c.getText()"), QStringLiteral("x"));
}

void tst_KyScriptRichEdit::absentTargetAnswersNeutrally()
{
    run("var c = " + editor() + "})");
    QVERIFY(run("c.getText()").isUndefined());
    QVERIFY(run("c.getHtml()").isUndefined());
    QCOMPARE(text("Array.isArray(c.getSelection()) + '' + c.getSelection().length"), QStringLiteral("true0"));
    for (const char* call :
         {"setHtml('a')", "setSelection(0, 1)", "replace('a', 'b')", "replaceSelection('a', true)",
          "replaceSelectionHtml('a')", "insertAfter('a', 'b')"})
        QVERIFY2(run(QStringLiteral("c.") + call).isUndefined(), call);
}

void tst_KyScriptRichEdit::htmlIsNotServed()
{
    addEditor(Kind::RichEdit, "abc");
    run("var c = " + editor() + "})");
    QVERIFY(run("c.getHtml()").isUndefined());
    run("c.setHtml('<b>x</b>'); c.setSelection(0, 3); c.replaceSelectionHtml('<b>x</b>')");
    QCOMPARE(content(), QStringLiteral("abc"));
}

void tst_KyScriptRichEdit::validAndReadableAreTheSame()
{
    run("var c = " + editor() + "})");
    QCOMPARE(text("[c.isValid(), c.isReadable()]"), QStringLiteral("false,false"));
    addEditor(Kind::RichEdit, "abc");
    QCOMPARE(text("[c.isValid(), c.isReadable()]"), QStringLiteral("true,true"));
}

void tst_KyScriptRichEdit::controlThatVanishesGivesEmptyText()
{
    addEditor(Kind::RichEdit, "abc");
    run("var c = " + editor() + ", parentWindowName: 'T*' }); c.isValid()");
    mDesktop->setObserver([&](const char* inOperation, Window) {
        if (QByteArray(inOperation) == "WM_GETTEXTLENGTH")
            mDesktop->destroy(mTop);
    });
    QCOMPARE(text("JSON.stringify(c.getText())"), QStringLiteral("\"\""));
    mDesktop->setObserver({});
    QVERIFY(run("c.getText()").isUndefined());
}

void tst_KyScriptRichEdit::selectionIsReadAndSet()
{
    addEditor(Kind::RichEdit, "abcdef");
    run("var c = " + editor() + "})");
    QCOMPARE(text("c.getSelection()"), QStringLiteral("0,0"));
    run("c.setSelection(2, 4)");
    QCOMPARE(text("c.getSelection()"), QStringLiteral("2,4"));
    run("c.setSelection(3, 3)");
    QCOMPARE(text("c.getSelection()"), QStringLiteral("3,3"));
    run("c.setSelection(0, -1)"); // as the control has it, with nothing limited
    QCOMPARE(text("c.getSelection()"), QStringLiteral("0,7"));
    QCOMPARE(text("typeof c.getSelection()[0]"), QStringLiteral("number"));
}

void tst_KyScriptRichEdit::selectionIsReplaced_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("content");
    QTest::newRow("text") << "c.replaceSelection('xyz')"
                          << "axyzd";
    QTest::newRow("empty") << "c.replaceSelection('')"
                           << "ad";
    QTest::newRow("lines") << "c.replaceSelection('x\\ny')"
                           << "ax\r\nyd";
    QTest::newRow("code page") << "c.replaceSelection('\\u00e4\\u20ac\\u03b1')"
                               << QString::fromUtf8("a\xC3\xA4\xE2\x82\xAC?d");
    QTest::newRow("up to a NUL") << "c.replaceSelection('x\\0y')"
                                 << "axd";
    QTest::newRow("null") << "c.replaceSelection(null)"
                          << "ad";
    QTest::newRow("number") << "c.replaceSelection(5, false)"
                            << "a5d";
    QTest::newRow("object") << "c.replaceSelection({ toString: function () { return 'o'; } })"
                            << "aod";
}

void tst_KyScriptRichEdit::selectionIsReplaced()
{
    QFETCH(QString, call);
    addEditor(Kind::RichEdit, "abcd");
    run("var c = " + editor() + "}); c.setSelection(1, 3); " + call);
    QTEST(content(), "content");
}

void tst_KyScriptRichEdit::replacementMayBeUndone()
{
    for (const auto& [arguments, canUndo] :
         {std::pair("'x'", true), std::pair("'x', true", true), std::pair("'x', false", false),
          std::pair("'x', undefined", true)})
    {
        addEditor(Kind::RichEdit, "abcd");
        run("var c = " + editor() + "}); c.setSelection(1, 3); c.replaceSelection(" + arguments + ")");
        QCOMPARE(content(), QStringLiteral("axd"));
        QCOMPARE(mDesktop->undo(mControl), canUndo);
        mDesktop->destroy(mTop);
    }
    addEditor(Kind::RichEdit, "abcd");
    run("c.replace('b', 'x')");
    QVERIFY(mDesktop->undo(mControl));
    run("c.insertAfter('b', 'x')");
    QVERIFY(mDesktop->undo(mControl));
}

void tst_KyScriptRichEdit::replaceTakesTheFirstMatch_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("text") << "'b'"
                          << "abcb"
                          << "axcb";
    QTest::newRow("text, letter case counts") << "'B'"
                                              << "abc"
                                              << "abc";
    QTest::newRow("text with special characters") << "'[b]'"
                                                  << "ab[b]"
                                                  << "abx";
    QTest::newRow("no match") << "'z'"
                              << "abc"
                              << "abc";
    QTest::newRow("empty text stands before all") << "''"
                                                  << "abc"
                                                  << "xabc";
    QTest::newRow("expression") << "/b+/"
                                << "abbbc"
                                << "axbbc";
    QTest::newRow("expression is lazy") << "/a.*b/"
                                        << "aXbYb"
                                        << "xYb";
    QTest::newRow("lazy one is greedy") << "/a.*?b/"
                                        << "aXbYb"
                                        << "x";
    QTest::newRow("its options are replaced") << "/B/i"
                                              << "abc"
                                              << "abc";
    QTest::newRow("expression at the start only") << "/^b/"
                                                  << "abc"
                                                  << "abc";
    QTest::newRow("not over lines") << "/b.c/"
                                    << "ab\nc"
                                    << "ab\nc";
    QTest::newRow("number") << "5"
                            << "a5"
                            << "a5";
    QTest::newRow("array") << "['b']"
                           << "abc"
                           << "abc";
    QTest::newRow("symbol") << "Symbol()"
                            << "abc"
                            << "abc";
    QTest::newRow("array with a symbol") << "[Symbol()]"
                                         << "abc"
                                         << "abc";
    QTest::newRow("object with a symbol") << "{ a: Symbol() }"
                                          << "abc"
                                          << "abc";
    QTest::newRow("null") << "null"
                          << "anull"
                          << "anull";
    QTest::newRow("undefined") << "undefined"
                               << "undefined"
                               << "undefined";
    QTest::newRow("String object") << "new String('b')"
                                   << "abc"
                                   << "abc";
}

void tst_KyScriptRichEdit::replaceTakesTheFirstMatch()
{
    QFETCH(QString, pattern);
    QFETCH(QString, before);
    addEditor(Kind::Edit, before);
    run(editor() + ", convertCRLFToLF: true }).replace(" + pattern + ", 'x')");
    QTEST(content().replace("\r\n", "\n"), "after");
}

void tst_KyScriptRichEdit::replaceKeepsTheSelection_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("after");
    // "01abc56789": the match lies from 2 to 5
    QTest::newRow("behind it, shorter") << 7 << 9 << "x"
                                        << "5,7";
    QTest::newRow("behind it, longer") << 7 << 9 << "vwxyz"
                                       << "9,11";
    QTest::newRow("before it") << 0 << 1 << "x"
                               << "0,1";
    QTest::newRow("before it, at its start") << 1 << 2 << "x"
                                             << "1,2";
    QTest::newRow("straight behind it: the start stays") << 5 << 7 << "vwxyz"
                                                         << "5,9";
    QTest::newRow("cursor straight behind it: only the end moves") << 5 << 5 << "vwxyz"
                                                                   << "5,7";
    QTest::newRow("around it") << 1 << 8 << "x"
                               << "1,6";
    QTest::newRow("all of it") << 2 << 5 << "x"
                               << "2,3";
    QTest::newRow("inside it") << 3 << 4 << "vwxyz"
                               << "3,4";
    QTest::newRow("same length") << 6 << 8 << "xyz"
                                 << "6,8";
    QTest::newRow("empty text") << 6 << 8 << ""
                                << "3,5";
}

void tst_KyScriptRichEdit::replaceKeepsTheSelection()
{
    QFETCH(int, start);
    QFETCH(int, end);
    QFETCH(QString, text);
    addEditor(Kind::RichEdit, "01abc56789");
    mDesktop->setSelection(mControl, start, end);
    QTEST(this->text("var c = " + editor() + "}); c.replace('abc', '" + text + "'); c.getSelection()"),
          "after");
    QCOMPARE(content(), "01" + text + "56789");
}

void tst_KyScriptRichEdit::insertAfterTakesTheFirstOccurrence_data()
{
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("after");
    QTest::newRow("found") << "'b'"
                           << "abxcab";
    QTest::newRow("letter case counts") << "'B'"
                                        << "abcab";
    QTest::newRow("missing") << "'z'"
                             << "abcab";
    QTest::newRow("at the end") << "'cab'"
                                << "abcabx";
    QTest::newRow("empty") << "''"
                           << "xabcab";
    QTest::newRow("expression is its text") << "/b/"
                                            << "abcab";
}

void tst_KyScriptRichEdit::insertAfterTakesTheFirstOccurrence()
{
    QFETCH(QString, search);
    addEditor(Kind::Edit, "abcab");
    run(editor() + "}).insertAfter(" + search + ", 'x')");
    QTEST(content(), "after");
}

void tst_KyScriptRichEdit::insertAfterKeepsTheSelection_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("after");
    // "01abc56789": the place is 5
    QTest::newRow("behind it") << 6 << 8 << "9,11";
    QTest::newRow("before it") << 0 << 2 << "0,2";
    QTest::newRow("at it") << 5 << 5 << "5,5";
    QTest::newRow("from it on") << 5 << 7 << "5,10";
    QTest::newRow("up to it") << 3 << 5 << "3,5";
    QTest::newRow("around it") << 1 << 8 << "1,11";
}

void tst_KyScriptRichEdit::insertAfterKeepsTheSelection()
{
    QFETCH(int, start);
    QFETCH(int, end);
    addEditor(Kind::RichEdit, "01abc56789");
    mDesktop->setSelection(mControl, start, end);
    QTEST(text("var c = " + editor() + "}); c.insertAfter('abc', 'xyz'); c.getSelection()"), "after");
    QCOMPARE(content(), QStringLiteral("01abcxyz56789"));
}

void tst_KyScriptRichEdit::replaceSendsItsMessagesInOrder()
{
    addEditor(Kind::RichEdit, "abc");
    run("var c = " + editor() + "}); c.isValid()");
    const QStringList found{"IsWindow", "IsWindowVisible", "EM_GETSEL", "WM_GETTEXTLENGTH", "WM_GETTEXT"};
    QCOMPARE(observed([&] { run("c.replace('z', 'x')"); }), found);
    QCOMPARE(observed([&] { run("c.replace(5, 'x')"); }), found);
    QCOMPARE(observed([&] { run("c.replace('b', 'x')"); }),
             found + QStringList({"EM_SETSEL", "EM_REPLACESEL", "EM_SETSEL"}));
}

void tst_KyScriptRichEdit::insertAfterSendsItsMessagesInOrder()
{
    addEditor(Kind::RichEdit, "abc");
    run("var c = " + editor() + "}); c.isValid()");
    const QStringList found{"IsWindow", "IsWindowVisible", "EM_GETSEL", "WM_GETTEXTLENGTH", "WM_GETTEXT"};
    QCOMPARE(observed([&] { run("c.insertAfter('z', 'x')"); }), found);
    QCOMPARE(observed([&] { run("c.insertAfter('b', 'x')"); }),
             found + QStringList({"EM_SETSEL", "EM_REPLACESEL", "EM_SETSEL"}));
}

void tst_KyScriptRichEdit::positionsOfARichEditAreThoseOfConvertedText()
{
    addEditor(Kind::RichEdit, "a\nb\nc[X]");
    run(editor() + ", convertCRLFToLF: true }).replace('[X]', 'done')");
    QCOMPARE(content(), QStringLiteral("a\r\nb\r\ncdone"));
    mDesktop->destroy(mTop);
    addEditor(Kind::Edit, "a\nb\nc[X]");
    run(editor() + "}).replace('[X]', 'done')");
    QCOMPARE(content(), QStringLiteral("a\r\nb\r\ncdone"));
}

void tst_KyScriptRichEdit::templateIsFilled()
{
    addEditor(Kind::RichEdit, "Patient: [NAME]\nFindings:\nImpression: [TEXT]");
    run("var c = " + editor() +
        ", contentPattern: 'Patient:*', convertCRLFToLF: true });"
        "c.replace('[NAME]', 'Doe, Jane'); c.insertAfter('Findings:', ' none');"
        "c.replace(/\\[T.*\\]/, 'normal'); c.setSelection(0, 7); c.replaceSelection('Name')");
    QCOMPARE(content(), QStringLiteral("Name: Doe, Jane\r\nFindings: none\r\nImpression: normal"));
}

void tst_KyScriptRichEdit::hungProgramBlocksUntilItAnswers()
{
    addEditor(Kind::RichEdit, "abc");
    mDesktop->hang(mControl);
    bool hasWaited = false;
    std::thread user([&] {
        while (!mDesktop->isWaiting())
            std::this_thread::yield();
        hasWaited = true;
        mDesktop->wake(mControl);
    });
    QCOMPARE(text(editor() + "}).getText()"), QStringLiteral("abc"));
    user.join();
    QVERIFY(hasWaited);
}

KY_TEST_MAIN(tst_KyScriptRichEdit)
#include "tst_KyScriptRichEdit.moc"

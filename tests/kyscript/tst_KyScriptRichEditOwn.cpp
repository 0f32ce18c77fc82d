// The application's own report editor.

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>
#include <support/LogCapture.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptRichEdit.h>

#include <kyreporttab/OvReportEditor.h>
#include <rnwin/RnSimulatedDesktop.h>

#include <QTextBlock>
#include <QTextCursor>
#include <QTextEdit>

class tst_KyScriptRichEditOwn : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // who is the target
    void withoutAReportNothingIsFound_data();
    void withoutAReportNothingIsFound();
    void activeReportIsFoundAnewEachTime();
    void windowsAreNotLookedAt();
    void readOnlyReportIsOnlyRead();
    void platformMayBeGone();

    // text
    void textIsReadAndWritten();
    void htmlIsReadAndWritten();
    void htmlIsInsertedAtTheSelection();

    // selection
    void selectionIsReadAndSet_data();
    void selectionIsReadAndSet();
    void startIsNotLimited_data();
    void startIsNotLimited();
    void selectionIsReplacedInItsFormat();
    void textIsInsertedAtTheCursor();
    void argumentOfUndoIsNotUsed();

    // replace
    void replaceTakesTheFirstMatch_data();
    void replaceTakesTheFirstMatch();
    void replacementTakesOnTheFormat();
    void replaceKeepsTheCursor_data();
    void replaceKeepsTheCursor();
    void brokenExpressionsMatchNothing();

    // insertAfter
    void insertAfterTakesTheFirstOccurrence_data();
    void insertAfterTakesTheFirstOccurrence();
    void insertAfterKeepsTheCursor();

    // state
    void changesAreUndone();
    void searchLeavesTheCursorAlone();
    void handlersMayChangeTheReport();
    void editorMayEndInAHandler_data();
    void editorMayEndInAHandler();
    void hostConfiguresByAMap();

private:
    QJSValue run(const QString& inSource) { return mEngine->evaluate(inSource); }
    QString text(const QString& inSource) { return run(inSource).toString(); }
    void select(int inStart, int inEnd)
    {
        QTextCursor cursor = mText->textCursor();
        cursor.setPosition(inStart);
        cursor.setPosition(inEnd, QTextCursor::KeepAnchor);
        mText->setTextCursor(cursor);
    }
    bool isBold(int inPosition) const
    {
        QTextCursor cursor(mText->document());
        cursor.setPosition(inPosition + 1);
        return cursor.charFormat().fontWeight() > QFont::Normal;
    }

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
    std::unique_ptr<QTextEdit> mText;
    std::unique_ptr<Ovg::OvReportEditor> mReport;
    std::unique_ptr<KyScriptEngine> mEngine;
    std::unique_ptr<LogCapture> mLog;
};

void tst_KyScriptRichEditOwn::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    mText = std::make_unique<QTextEdit>();
    mReport = std::make_unique<Ovg::OvReportEditor>(mText.get());
    mPlatform->reports.setActiveReport(mReport.get());
    mEngine = std::make_unique<KyScriptEngine>(nullptr, ScriptRichEditCtrl);
    mLog = std::make_unique<LogCapture>();
    run("var c = new RichEditCtrl({ windowClassName: 'OvReportEditor' })");
}

void tst_KyScriptRichEditOwn::cleanup()
{
    const QString broken = mContracts->verify();
    const QStringList lines = mLog->take();
    mLog.reset();
    mEngine.reset();
    mReport.reset();
    mText.reset();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
    QCOMPARE(lines, QStringList());
}

void tst_KyScriptRichEditOwn::withoutAReportNothingIsFound_data()
{
    QTest::addColumn<int>("missing");
    QTest::newRow("no report on view") << 0;
    QTest::newRow("no widget") << 1;
    QTest::newRow("the report has ended") << 2;
}

void tst_KyScriptRichEditOwn::withoutAReportNothingIsFound()
{
    QFETCH(int, missing);
    if (missing == 0)
        mPlatform->reports.setActiveReport(nullptr);
    else if (missing == 1)
        mText.reset();
    else
        mReport.reset();
    QCOMPARE(text("[c.isValid(), c.isReadable(), c.getSelection().length]"), QStringLiteral("false,false,0"));
    QVERIFY(run("c.getText()").isUndefined());
    QVERIFY(run("c.getHtml()").isUndefined());
    run("c.setHtml('a'); c.setSelection(0, 1); c.replace('a', 'b'); c.replaceSelection('a'); "
        "c.replaceSelectionHtml('a'); c.insertAfter('a', 'b')");
    QCOMPARE(mLog->take(), QStringList());
}

void tst_KyScriptRichEditOwn::activeReportIsFoundAnewEachTime()
{
    QTextEdit other;
    Ovg::OvReportEditor otherReport(&other);
    mText->setPlainText("first");
    other.setPlainText("second");
    QCOMPARE(text("c.getText()"), QStringLiteral("first"));
    mPlatform->reports.setActiveReport(&otherReport);
    QCOMPARE(text("c.getText()"), QStringLiteral("second"));
    mPlatform->reports.setActiveReport(nullptr);
    QVERIFY(run("c.getText()").isUndefined());
}

void tst_KyScriptRichEditOwn::windowsAreNotLookedAt()
{
    RnSimulatedDesktop desktop;
    bool isAsked = false;
    desktop.setObserver([&](const char*, RnWindows::Window) { isAsked = true; });
    run("var d = new RichEditCtrl({ windowClassName: 'OvReportEditor', processName: '*' })");
    run("d.isValid(); d.getText()");
    mPlatform->reports.setActiveReport(nullptr);
    run("d.isValid(); d.getText(); d.replace('a', 'b')");
    QVERIFY(!isAsked);
}

void tst_KyScriptRichEditOwn::readOnlyReportIsOnlyRead()
{
    mText->setPlainText("some text");
    mReport->setReadOnly(true);
    QCOMPARE(text("[c.isReadable(), c.isValid()]"), QStringLiteral("true,false"));
    QCOMPARE(text("c.getText()"), QStringLiteral("some text"));
    QVERIFY(text("c.getHtml()").contains("some text"));
    run("c.setSelection(1, 3)");
    QCOMPARE(text("c.getSelection()"), QStringLiteral("1,3"));
    run("c.setHtml('x'); c.replace('some', 'x'); c.replaceSelection('x'); c.replaceSelectionHtml('x'); "
        "c.insertAfter('some', 'x')");
    QCOMPARE(text("c.getText()"), QStringLiteral("some text"));
    QCOMPARE(text("c.getSelection()"), QStringLiteral("1,3"));
    mReport->setReadOnly(false);
    QVERIFY(run("c.isValid()").toBool());
    run("c.replaceSelection('x')");
    QCOMPARE(text("c.getText()"), QStringLiteral("sxe text"));
}

void tst_KyScriptRichEditOwn::platformMayBeGone()
{
    mPlatform.reset();
    QCOMPARE(text("[c.isValid(), c.isReadable(), c.getText()]"), QStringLiteral("false,false,"));
}

void tst_KyScriptRichEditOwn::textIsReadAndWritten()
{
    QCOMPARE(text("typeof c.getText() + c.getText()"), QStringLiteral("string"));
    mText->setPlainText(QString::fromUtf8("a\n\xCE\xB1\xF0\x9F\x99\x82"));
    QCOMPARE(text("c.getText()"), QString::fromUtf8("a\n\xCE\xB1\xF0\x9F\x99\x82"));
}

void tst_KyScriptRichEditOwn::htmlIsReadAndWritten()
{
    run("c.setHtml('<p>one</p><p><b>two</b></p>')");
    QCOMPARE(mText->toPlainText(), QStringLiteral("one\ntwo"));
    QVERIFY(isBold(4) && !isBold(0));
    QCOMPARE(text("c.getHtml()"), mText->toHtml());
    run("c.setHtml('')");
    QCOMPARE(mText->toPlainText(), QString());
}

void tst_KyScriptRichEditOwn::htmlIsInsertedAtTheSelection()
{
    mText->setPlainText("abcd");
    select(1, 3);
    run("c.replaceSelectionHtml('<b>xy</b>z')");
    QCOMPARE(mText->toPlainText(), QStringLiteral("axyzd"));
    QVERIFY(isBold(1) && isBold(2) && !isBold(3));
    QCOMPARE(text("c.getSelection()"), QStringLiteral("4,4"));
    run("c.replaceSelectionHtml('<i>!</i>')");
    QCOMPARE(mText->toPlainText(), QStringLiteral("axyz!d"));
}

void tst_KyScriptRichEditOwn::selectionIsReadAndSet_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("selection");
    QTest::newRow("forwards") << 1 << 3 << "1,3";
    QTest::newRow("backwards") << 3 << 1 << "1,3";
    QTest::newRow("cursor") << 2 << 2 << "2,2";
    QTest::newRow("to the end") << 0 << 5 << "0,5";
    QTest::newRow("beyond the end") << 1 << 99 << "1,5";
    QTest::newRow("from the end") << 5 << 99 << "5,5";
}

void tst_KyScriptRichEditOwn::selectionIsReadAndSet()
{
    QFETCH(int, start);
    QFETCH(int, end);
    mText->setPlainText("ab\ncd");
    QTEST(text(QStringLiteral("c.setSelection(%1, %2); c.getSelection()").arg(start).arg(end)), "selection");
    QCOMPARE(mText->textCursor().anchor(), start);
}

void tst_KyScriptRichEditOwn::startIsNotLimited_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::newRow("beyond the end") << "99, 99";
    QTest::newRow("negative") << "-1, -1";
    QTest::newRow("both, beyond") << "6, 7";
}

/// A cursor that cannot be there stays where it is.
void tst_KyScriptRichEditOwn::startIsNotLimited()
{
    QFETCH(QString, arguments);
    mText->setPlainText("ab\ncd");
    select(2, 2);
    run("c.setSelection(" + arguments + ")");
    QCOMPARE(text("c.getSelection()[0]"), QStringLiteral("2"));
}

void tst_KyScriptRichEditOwn::selectionIsReplacedInItsFormat()
{
    mText->setHtml("a<b>b</b>cd");
    select(1, 3);
    run("c.replaceSelection('xyz')");
    QCOMPARE(mText->toPlainText(), QStringLiteral("axyzd"));
    QVERIFY(!isBold(0) && isBold(1) && isBold(3) && !isBold(4));
    QCOMPARE(text("c.getSelection()"), QStringLiteral("4,4"));
    mText->setHtml("a<b>b</b>cd");
    select(3, 0);
    run("c.replaceSelection('xyz')");
    QVERIFY(!isBold(0) && !isBold(2));
}

void tst_KyScriptRichEditOwn::textIsInsertedAtTheCursor()
{
    mText->setPlainText("ab");
    select(1, 1);
    run("c.replaceSelection('x\\ny')");
    QCOMPARE(mText->toPlainText(), QStringLiteral("ax\nyb"));
    QCOMPARE(text("c.getSelection()"), QStringLiteral("4,4"));
    run("c.replaceSelection(null)");
    QCOMPARE(mText->toPlainText(), QStringLiteral("ax\nyb"));
}

void tst_KyScriptRichEditOwn::argumentOfUndoIsNotUsed()
{
    for (const char* arguments : {"'x'", "'x', true", "'x', false"}) {
        mText->setPlainText("abc");
        select(1, 2);
        run(QStringLiteral("c.replaceSelection(%1)").arg(arguments));
        QCOMPARE(mText->toPlainText(), QStringLiteral("axc"));
        mReport->undo();
        QCOMPARE(mText->toPlainText(), QStringLiteral("abc"));
    }
}

void tst_KyScriptRichEditOwn::replaceTakesTheFirstMatch_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("text") << "'b'"
                          << "abcb"
                          << "axcb";
    QTest::newRow("text in any letter case") << "'B'"
                                             << "abcb"
                                             << "axcb";
    QTest::newRow("text with special characters") << "'[b]'"
                                                  << "ab[b]"
                                                  << "abx";
    QTest::newRow("no match") << "'z'"
                              << "abc"
                              << "abc";
    QTest::newRow("empty text") << "''"
                                << "abc"
                                << "abc";
    QTest::newRow("in a later paragraph") << "'d'"
                                          << "ab\ncd"
                                          << "ab\ncx";
    QTest::newRow("not over paragraphs") << "'b\\nc'"
                                         << "ab\ncd"
                                         << "ab\ncd";
    QTest::newRow("expression") << "/b+/"
                                << "abbbc"
                                << "axbbc";
    QTest::newRow("expression is lazy") << "/a.*b/"
                                        << "aXbYb"
                                        << "xYb";
    QTest::newRow("lazy one is greedy") << "/a.*?b/"
                                        << "aXbYb"
                                        << "x";
    QTest::newRow("expression in any letter case") << "/B/"
                                                   << "abc"
                                                   << "axc";
    QTest::newRow("expression that matches nothing") << "/z*/"
                                                     << "abc"
                                                     << "xabc";
    QTest::newRow("on an empty report") << "/^/"
                                        << ""
                                        << "x";
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
    QTest::newRow("null") << "null"
                          << "null"
                          << "null";
    QTest::newRow("undefined") << "undefined"
                               << "undefined"
                               << "undefined";
}

void tst_KyScriptRichEditOwn::replaceTakesTheFirstMatch()
{
    QFETCH(QString, pattern);
    QFETCH(QString, before);
    mText->setPlainText(before);
    run("c.replace(" + pattern + ", 'x')");
    QTEST(mText->toPlainText(), "after");
}

void tst_KyScriptRichEditOwn::replacementTakesOnTheFormat()
{
    mText->setHtml("a[<b>N</b>]z");
    run("c.replace('[N]', 'Name')");
    QCOMPARE(mText->toPlainText(), QStringLiteral("aNamez"));
    QVERIFY(!isBold(1) && !isBold(4));
    mText->setHtml("a<b>[N</b>]z");
    run("c.replace(/\\[N\\]/, 'Name')");
    QVERIFY(!isBold(0) && isBold(1) && isBold(4) && !isBold(5));
}

void tst_KyScriptRichEditOwn::replaceKeepsTheCursor_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("selection");
    // "01abc56789": the match lies from 2 to 5, what takes its place to 9
    QTest::newRow("before it") << 0 << 1 << "0,1";
    QTest::newRow("behind it") << 6 << 8 << "10,12";
    QTest::newRow("around it") << 1 << 8 << "1,12";
}

void tst_KyScriptRichEditOwn::replaceKeepsTheCursor()
{
    QFETCH(int, start);
    QFETCH(int, end);
    mText->setPlainText("01abc56789");
    select(start, end);
    QTEST(text("c.replace('abc', 'ABCDEFG'); c.getSelection()"), "selection");
}

void tst_KyScriptRichEditOwn::brokenExpressionsMatchNothing()
{
    mText->setPlainText("abc");
    QTest::failOnWarning(QRegularExpression(".*"));
    run("c.replace(/[^]/, 'x')");
    QCOMPARE(mText->toPlainText(), QStringLiteral("abc"));
}

void tst_KyScriptRichEditOwn::insertAfterTakesTheFirstOccurrence_data()
{
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("after");
    QTest::newRow("found") << "'b'"
                           << "abxcab";
    QTest::newRow("in any letter case") << "'B'"
                                        << "abxcab";
    QTest::newRow("missing") << "'z'"
                             << "abcab";
    QTest::newRow("at the end") << "'cab'"
                                << "abcabx";
    QTest::newRow("empty") << "''"
                           << "abcab";
}

void tst_KyScriptRichEditOwn::insertAfterTakesTheFirstOccurrence()
{
    QFETCH(QString, search);
    mText->setPlainText("abcab");
    run("c.insertAfter(" + search + ", 'x')");
    QTEST(mText->toPlainText(), "after");
}

void tst_KyScriptRichEditOwn::insertAfterKeepsTheCursor()
{
    mText->setPlainText("abcab");
    select(3, 4);
    QCOMPARE(text("c.insertAfter('B', 'xy'); c.getSelection()"), QStringLiteral("5,6"));
    QCOMPARE(text("c.insertAfter('z', 'xy'); c.getSelection()"), QStringLiteral("5,6"));
    select(0, 1);
    QCOMPARE(text("c.insertAfter('c', 'xy'); c.getSelection()"), QStringLiteral("0,1"));
}

void tst_KyScriptRichEditOwn::changesAreUndone()
{
    mText->setHtml("a <b>[N]</b> z");
    for (const char* call :
         {"replace('[N]', 'Name')", "insertAfter('[N]', 'Name')", "replaceSelectionHtml('<i>x</i>')"})
    {
        run(QStringLiteral("c.") + call);
        QVERIFY(mText->toPlainText() != QStringLiteral("a [N] z"));
        mReport->undo();
        QCOMPARE(mText->toPlainText(), QStringLiteral("a [N] z"));
        QVERIFY(isBold(2));
    }
}

void tst_KyScriptRichEditOwn::searchLeavesTheCursorAlone()
{
    mText->setPlainText("abc");
    select(2, 1);
    run("c.replace('z', 'x'); c.replace(5, 'x'); c.insertAfter('z', 'x')");
    QCOMPARE(mText->textCursor().anchor(), 2);
    QCOMPARE(mText->textCursor().position(), 1);
    QCOMPARE(mText->textCursor().document(), mText->document());
}

void tst_KyScriptRichEditOwn::handlersMayChangeTheReport()
{
    mText->setPlainText("abc");
    bool isFirst = true;
    connect(mText.get(), &QTextEdit::textChanged, this, [&] {
        if (!std::exchange(isFirst, false))
            return;
        run("c.setHtml('<b>other</b>'); c.replace('o', 'O'); c.setSelection(0, 1)");
    });
    run("c.replace('b', 'x')");
    QCOMPARE(mText->toPlainText(), QStringLiteral("Other"));
    mText->disconnect(this);
    run("c.replaceSelection('!')");
    QVERIFY(mText->toPlainText().contains('!'));
}

void tst_KyScriptRichEditOwn::editorMayEndInAHandler_data()
{
    QTest::addColumn<QString>("call");
    for (const char* call : {"replace('b', 'x')", "insertAfter('b', 'x')", "replaceSelection('x')",
                             "setHtml('x')", "replaceSelectionHtml('x')"})
        QTest::newRow(call) << call;
}

/// Later, as all who show reports do that: at once would end the editor in the middle of its own work.
void tst_KyScriptRichEditOwn::editorMayEndInAHandler()
{
    QFETCH(QString, call);
    mText->setPlainText("abc");
    QTextEdit* edit = mText.release();
    connect(edit, &QTextEdit::textChanged, this, [&] {
        mReport.reset();
        edit->deleteLater();
    });
    run("c." + call);
    QVERIFY(!run("c.isReadable()").toBool());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void tst_KyScriptRichEditOwn::hostConfiguresByAMap()
{
    mText->setPlainText("abc");
    KyScriptRichEdit own(QVariantMap{{"windowClassName", "OvReportEditor"}});
    QVERIFY(own.isValid());
    QCOMPARE(own.getText(), QVariant("abc"));
    own.replace(QRegularExpression("B"), "x");
    QCOMPARE(own.getText(), QVariant("axc"));
    own.replaceSelection("1");
    QCOMPARE(own.getSelection(), QVariantList({1, 1}));
    QVERIFY(!KyScriptRichEdit().isValid());
    QVERIFY(!KyScriptRichEdit().getText().isValid());
}

KY_TEST_MAIN(tst_KyScriptRichEditOwn)
#include "tst_KyScriptRichEditOwn.moc"

#include <support/KyTest.h>

#include <kyscript/KyScriptPrintBuffer.h>

#include <QPointer>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextEdit>
#include <QTimer>

class tst_KyScriptPrintBuffer : public QObject
{
    Q_OBJECT

private slots:
    void textIsWhatAppendWouldMake_data();
    void textIsWhatAppendWouldMake();
    void linesFollowTextThatStandsThere();
    void firstLinesStandThereAtOnce();
    void flushPutsInTheRest();
    void restComesWithTheEventLoop();
    void paneIsPaintedMeanwhileAndNoEventIsServed();
    void oneBufferForAWidget();
    void widgetCanGoWithLinesOnTheirWay();

    void paneThatShowsTheEndGoesOnShowingIt();
    void paneThatIsScrolledUpStaysThere();

    void oldestLinesGoAtTheLimit();
    void oldestCharactersGoAtTheLimit();
    void singleLineIsNeverCut();
    void withoutALimitNothingGoes();
    void linesOnViewStayOnViewWhenOlderOnesGo();
};

namespace {

constexpr int sManyLines = 5000;

/// A pane like the console's.
class Pane : public QTextEdit
{
public:
    Pane()
    {
        setReadOnly(true);
        setAcceptRichText(false);
        setUndoRedoEnabled(false);
        resize(300, 100);
        show();
        (void)QTest::qWaitForWindowExposed(this);
    }
    KyScriptPrintBuffer& buffer() { return KyScriptPrintBuffer::of(*this); }
    void print(const QStringList& inLines)
    {
        for (const QString& line : inLines)
            buffer().append(line);
    }
    int paints = 0;

protected:
    void paintEvent(QPaintEvent* inEvent) override
    {
        ++paints;
        QTextEdit::paintEvent(inEvent);
    }
};

QStringList numbered(int inFrom, int inCount)
{
    QStringList lines;
    for (int i = inFrom; i < inFrom + inCount; ++i)
        lines.append(QStringLiteral("line %1").arg(i));
    return lines;
}

QStringList repeated(const QStringList& inLines, int inTimes)
{
    QStringList lines;
    for (int i = 0; i < inTimes; ++i)
        lines += inLines;
    return lines;
}

} // namespace

void tst_KyScriptPrintBuffer::textIsWhatAppendWouldMake_data()
{
    QTest::addColumn<QStringList>("lines");
    const auto row = [](const char* name, const QStringList& lines) {
        QTest::newRow(name) << lines;
        QTest::addRow("%s, many", name) << repeated(lines, 100);
        // What opens the burst is then put in together with the rest.
        QTest::addRow("%s, behind many", name) << numbered(0, 200) + repeated(lines, 100);
    };
    row("plain", {"a", "b", "c"});
    row("empty", {"", "", ""});
    row("empty at the head", {"", "", "a", ""});
    row("line breaks within", {"a\nb", "c\n", "\nd", "\n"});
    row("carriage returns", {"a\r", "\nb", "a\r\nb", "\r"});
    row("separators", {QString("a%1b").arg(QChar(0x2028)), QString("a%1b%1").arg(QChar(0x2029)), "c"});
    row("blanks and tabs", {"  a", "\tb ", " "});
    row("rich text", {"<b>bold</b>", "plain", "<i>x</i> tail", "a &lt; b"});
    row("block elements", {"<p>one</p><p>two</p>", "plain", "<h1>h</h1>", "plain"});
    row("list and table", {"<ul><li>a</li></ul>", "x", "<table><tr><td>1</td></tr></table>", "y", "z"});
    row("a tag that is none in one line", {"a <", "b>", "c"});
    row("comparison", {"1 < 2", "2 > 1", "if (a<b) c"});
    row("other scripts", {QString::fromUtf8("Müller 日本語 \xf0\x9f\x98\x80"), "x"});
    row("null", {QString(), "x", QString()});
}

void tst_KyScriptPrintBuffer::textIsWhatAppendWouldMake()
{
    QFETCH(QStringList, lines);
    Pane plain;
    for (const QString& line : lines)
        plain.append(line);
    Pane buffered;
    buffered.print(lines);
    buffered.buffer().flush();
    QCOMPARE(buffered.toPlainText(), plain.toPlainText());
    QCOMPARE(buffered.document()->blockCount(), plain.document()->blockCount());
    QCOMPARE(buffered.toHtml(), plain.toHtml());
}

void tst_KyScriptPrintBuffer::linesFollowTextThatStandsThere()
{
    Pane pane;
    pane.setPlainText("before");
    pane.print(numbered(0, 3));
    pane.buffer().flush();
    QCOMPARE(pane.toPlainText(), QStringLiteral("before\nline 0\nline 1\nline 2"));
}

void tst_KyScriptPrintBuffer::firstLinesStandThereAtOnce()
{
    Pane pane;
    for (int i = 0; i < 20; ++i) {
        pane.buffer().append(QStringLiteral("x"));
        QCOMPARE(pane.document()->blockCount(), i + 1);
    }
}

void tst_KyScriptPrintBuffer::flushPutsInTheRest()
{
    Pane pane;
    const QStringList lines = numbered(0, sManyLines);
    pane.print(lines);
    pane.buffer().flush();
    QCOMPARE(pane.toPlainText(), lines.join('\n'));
    pane.buffer().flush();
    QCOMPARE(pane.document()->blockCount(), sManyLines);
}

void tst_KyScriptPrintBuffer::restComesWithTheEventLoop()
{
    Pane pane;
    const QStringList lines = numbered(0, sManyLines + 1);
    pane.print(lines);
    QVERIFY(pane.document()->blockCount() < lines.size());
    QTRY_COMPARE(pane.document()->blockCount(), int(lines.size()));
    QCOMPARE(pane.toPlainText(), lines.join('\n'));
    pane.print(numbered(0, 30));
    QTRY_COMPARE(pane.document()->lastBlock().text(), QStringLiteral("line 29"));
}

void tst_KyScriptPrintBuffer::paneIsPaintedMeanwhileAndNoEventIsServed()
{
    Pane pane;
    bool isServed = false;
    QTimer::singleShot(0, &pane, [&] { isServed = true; });
    pane.paints = 0;
    QElapsedTimer watch;
    watch.start();
    int count = 0;
    while (watch.elapsed() < 300)
        pane.buffer().append(QString::number(++count));
    QVERIFY2(pane.paints >= 3, qPrintable(QString::number(pane.paints)));
    QVERIFY(!isServed);
    pane.buffer().flush();
    QCOMPARE(pane.document()->blockCount(), count);
}

void tst_KyScriptPrintBuffer::oneBufferForAWidget()
{
    Pane pane;
    Pane other;
    QCOMPARE(&pane.buffer(), &KyScriptPrintBuffer::of(pane));
    QVERIFY(&pane.buffer() != &other.buffer());
    QCOMPARE(pane.findChildren<KyScriptPrintBuffer*>().size(), 1);
}

void tst_KyScriptPrintBuffer::widgetCanGoWithLinesOnTheirWay()
{
    auto pane = std::make_unique<Pane>();
    const QPointer<KyScriptPrintBuffer> buffer = &pane->buffer();
    pane->print(numbered(0, 500));
    pane.reset();
    QVERIFY(!buffer);
    QCoreApplication::processEvents();
}

void tst_KyScriptPrintBuffer::paneThatShowsTheEndGoesOnShowingIt()
{
    Pane pane;
    pane.print(numbered(0, sManyLines));
    pane.buffer().flush();
    QVERIFY(pane.verticalScrollBar()->maximum() > 0);
    QCOMPARE(pane.verticalScrollBar()->value(), pane.verticalScrollBar()->maximum());
}

void tst_KyScriptPrintBuffer::paneThatIsScrolledUpStaysThere()
{
    Pane pane;
    pane.print(numbered(0, 200));
    pane.buffer().flush();
    pane.verticalScrollBar()->setValue(17);
    pane.print(numbered(200, sManyLines));
    pane.buffer().flush();
    QCOMPARE(pane.verticalScrollBar()->value(), 17);
}

void tst_KyScriptPrintBuffer::oldestLinesGoAtTheLimit()
{
    Pane pane;
    QSignalSpy trimmed(&pane.buffer(), &KyScriptPrintBuffer::trimmed);
    pane.buffer().keepNewest(1000, 10'000'000);
    pane.print(numbered(0, 1500));
    pane.buffer().flush();
    QCOMPARE(pane.document()->blockCount(), 1500);
    QCOMPARE(trimmed.size(), 0);

    pane.print({"last"});
    pane.buffer().flush();
    QCOMPARE(pane.document()->blockCount(), 1000);
    QCOMPARE(pane.document()->firstBlock().text(), QStringLiteral("line 501"));
    QCOMPARE(pane.document()->lastBlock().text(), QStringLiteral("last"));
    QCOMPARE(trimmed.size(), 1);

    pane.print(numbered(0, 100'000));
    pane.buffer().flush();
    QVERIFY(pane.document()->blockCount() <= 1500);
    QVERIFY(pane.document()->blockCount() >= 1000);
    QCOMPARE(pane.document()->lastBlock().text(), QStringLiteral("line 99999"));
    QVERIFY(!pane.document()->isUndoAvailable());
}

void tst_KyScriptPrintBuffer::oldestCharactersGoAtTheLimit()
{
    Pane pane;
    pane.buffer().keepNewest(1000, 10'000);
    for (int i = 0; i < 400; ++i)
        pane.buffer().append(QString(99, 'x'));
    pane.buffer().flush();
    QVERIFY(pane.document()->characterCount() <= 15'000);
    QVERIFY(pane.document()->characterCount() >= 10'000);
    QCOMPARE(pane.document()->firstBlock().text(), QString(99, 'x'));
}

void tst_KyScriptPrintBuffer::singleLineIsNeverCut()
{
    Pane pane;
    pane.buffer().keepNewest(10, 100);
    pane.buffer().append(QString(1000, 'x'));
    QCOMPARE(pane.toPlainText(), QString(1000, 'x'));
    pane.buffer().append(QString(500, 'y'));
    QCOMPARE(pane.toPlainText(), QString(500, 'y'));
}

void tst_KyScriptPrintBuffer::withoutALimitNothingGoes()
{
    Pane pane;
    pane.print(numbered(0, 20'000));
    pane.buffer().flush();
    QCOMPARE(pane.document()->blockCount(), 20'000);
}

void tst_KyScriptPrintBuffer::linesOnViewStayOnViewWhenOlderOnesGo()
{
    Pane pane;
    pane.buffer().keepNewest(1000, 10'000'000);
    pane.print(numbered(0, 1500));
    pane.buffer().flush();
    pane.verticalScrollBar()->setValue(pane.verticalScrollBar()->maximum() - 1000);
    const QString shown = pane.cursorForPosition(QPoint(5, 5)).block().text();
    QVERIFY(!shown.isEmpty());
    pane.print({"last"});
    pane.buffer().flush();
    QCOMPARE(pane.document()->blockCount(), 1000);
    QCOMPARE(pane.cursorForPosition(QPoint(5, 5)).block().text(), shown);
}

KY_TEST_MAIN(tst_KyScriptPrintBuffer)
#include "tst_KyScriptPrintBuffer.moc"

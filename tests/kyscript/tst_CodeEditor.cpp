#include <support/KyTest.h>

#include <kyscript/CodeEditor.h>

#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QTextBlock>

class tst_CodeEditor : public QObject
{
    Q_OBJECT

private slots:
    void emptyDocumentShowsTheNumberOne();
    void widthGrowsWithTheDigits_data();
    void widthGrowsWithTheDigits();
    void tenthLineWidensGutterAndMargin();
    void widthFollowsTheFont();

    void gutterStandsAtTheLeftOverTheWholeHeight();
    void gutterIsLightGrey();
    void numbersAreBlackAndFlushRight();
    void everyLineOnViewHasItsNumber();
    void foldedLineHasNoNumber();
    void wrappedLineHasOneNumber();
    void numbersAreThoseOfTheLinesOnView_data();
    void numbersAreThoseOfTheLinesOnView();

    void currentLineIsDarkYellowOverTheWholeWidth();
    void currentLineIsReadableInDarkColours();
    void highlightFollowsTheCursor();
    void highlightIgnoresTheSelection();
    void readOnlyEditorLosesItsHighlightAtTheNextMove();

    void scrollingMovesTheNumbers();
    void scrollingDoesNotRepaintTheWholeGutter();
    void typingRepaintsOnlyTheLine();
    void keysAreThoseOfAPlainEditor();
};

namespace {

const QRgb sHighlight = QColor(Qt::yellow).darker(160).rgb();
const QRgb sGutter = QColor(Qt::lightGray).rgb();

/// An editor on screen, so that it paints.
class Editor : public CodeEditor
{
public:
    explicit Editor(const QString& inText = QString())
        : CodeEditor(nullptr)
    {
        setPlainText(inText);
        resize(300, 200);
        show();
        (void)QTest::qWaitForWindowExposed(this);
    }

    using CodeEditor::viewportMargins;

    QWidget& gutter() const { return *findChild<LineNumberArea*>(); }
    /// The rows of a line, in pixels from the top of the viewport.
    QRect rowsOf(int inLine) const
    {
        const QTextBlock block = document()->findBlockByNumber(inLine);
        return blockBoundingGeometry(block).translated(contentOffset()).toAlignedRect();
    }
    QImage gutterImage() const { return gutter().grab().toImage(); }
    QImage viewportImage() const { return viewport()->grab().toImage(); }
};

QString lines(int inCount)
{
    return QString(inCount - 1, '\n');
}

int digitWidth(const QWidget& inWidget)
{
    return inWidget.fontMetrics().horizontalAdvance('9');
}

/// The columns from the left with dark pixels between two rows, as first and last; -1 and -1 without any.
std::pair<int, int> darkColumns(const QImage& inImage, const QRect& inRows)
{
    std::pair<int, int> found(-1, -1);
    for (int x = 0; x < inImage.width(); ++x) {
        for (int y = std::max(0, inRows.top()); y <= std::min(inRows.bottom(), inImage.height() - 1); ++y) {
            if (qGray(inImage.pixel(x, y)) < 100)
                found = {found.first < 0 ? x : found.first, x};
        }
    }
    return found;
}

/// Collects what a widget is asked to paint.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget& inWidget) { inWidget.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* inEvent) override
    {
        if (inEvent->type() == QEvent::Paint)
            region += static_cast<QPaintEvent*>(inEvent)->region();
        return false;
    }
    QRegion region;
};

} // namespace

void tst_CodeEditor::emptyDocumentShowsTheNumberOne()
{
    Editor editor;
    QCOMPARE(editor.lineNumberAreaWidth(), 3 + digitWidth(editor));
    QVERIFY(darkColumns(editor.gutterImage(), editor.rowsOf(0)).first >= 0);
    QCOMPARE(
        darkColumns(editor.gutterImage(), editor.rowsOf(0).translated(0, editor.rowsOf(0).height())).first,
        -1);
}

void tst_CodeEditor::widthGrowsWithTheDigits_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("digits");
    QTest::newRow("1") << 1 << 1;
    QTest::newRow("9") << 9 << 1;
    QTest::newRow("10") << 10 << 2;
    QTest::newRow("99") << 99 << 2;
    QTest::newRow("100") << 100 << 3;
    QTest::newRow("999") << 999 << 3;
    QTest::newRow("1000") << 1000 << 4;
}

void tst_CodeEditor::widthGrowsWithTheDigits()
{
    QFETCH(int, count);
    QFETCH(int, digits);
    Editor editor(lines(count));
    QCOMPARE(editor.lineNumberAreaWidth(), 3 + digits * digitWidth(editor));
    QCOMPARE(editor.viewportMargins(), QMargins(editor.lineNumberAreaWidth(), 0, 0, 0));
    QCOMPARE(editor.gutter().sizeHint(), QSize(editor.lineNumberAreaWidth(), 0));
}

void tst_CodeEditor::tenthLineWidensGutterAndMargin()
{
    Editor editor(lines(9));
    const int before = editor.lineNumberAreaWidth();
    editor.moveCursor(QTextCursor::End);
    QTest::keyClick(&editor, Qt::Key_Return);
    QCOMPARE(editor.blockCount(), 10);
    QCOMPARE(editor.lineNumberAreaWidth(), before + digitWidth(editor));
    QCOMPARE(editor.viewportMargins().left(), before + digitWidth(editor));
    QCOMPARE(editor.gutter().width(), before + digitWidth(editor));
    QTest::keyClick(&editor, Qt::Key_Backspace);
    QCOMPARE(editor.viewportMargins().left(), before);
}

void tst_CodeEditor::widthFollowsTheFont()
{
    Editor editor;
    QFont large = editor.font();
    large.setPointSize(30);
    editor.setFont(large);
    QCOMPARE(editor.lineNumberAreaWidth(), 3 + QFontMetrics(large).horizontalAdvance('9'));
    QTRY_COMPARE(editor.viewportMargins().left(), editor.lineNumberAreaWidth());
}

void tst_CodeEditor::gutterStandsAtTheLeftOverTheWholeHeight()
{
    Editor editor;
    const QRect area = editor.contentsRect();
    QCOMPARE(editor.gutter().geometry(),
             QRect(area.left(), area.top(), editor.lineNumberAreaWidth(), area.height()));
    QCOMPARE(editor.viewport()->x(), editor.gutter().geometry().right() + 1);
    editor.resize(400, 333);
    QCOMPARE(editor.gutter().height(), editor.contentsRect().height());
}

void tst_CodeEditor::gutterIsLightGrey()
{
    Editor editor;
    const QImage image = editor.gutterImage();
    QCOMPARE(image.pixel(0, image.height() - 1), sGutter);
    QCOMPARE(image.pixel(image.width() - 1, image.height() - 1), sGutter);
    QCOMPARE(image.pixel(0, 0), sGutter);
}

void tst_CodeEditor::numbersAreBlackAndFlushRight()
{
    Editor editor(lines(100));
    const QImage image = editor.gutterImage();
    const auto [left, right] = darkColumns(image, editor.rowsOf(0));
    QVERIFY(right >= 0);
    QVERIFY2(right >= image.width() - digitWidth(editor), "the last digit stands at the right edge");
    QVERIFY2(left >= image.width() - digitWidth(editor) - 1, "one digit only");
    bool isBlack = false;
    for (int y = editor.rowsOf(0).top(); y <= editor.rowsOf(0).bottom(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            isBlack = isBlack || qGray(image.pixel(x, y)) < 40;
    }
    QVERIFY(isBlack);
}

void tst_CodeEditor::everyLineOnViewHasItsNumber()
{
    Editor editor(lines(5));
    const QImage image = editor.gutterImage();
    for (int line = 0; line < 5; ++line)
        QVERIFY2(darkColumns(image, editor.rowsOf(line)).first >= 0, qPrintable(QString::number(line)));
    const QRect below = editor.rowsOf(4).translated(0, editor.rowsOf(4).height());
    QCOMPARE(darkColumns(image, below).first, -1);
}

void tst_CodeEditor::foldedLineHasNoNumber()
{
    Editor editor(lines(3));
    editor.document()->findBlockByNumber(1).setVisible(false);
    editor.document()->markContentsDirty(0, editor.document()->characterCount());
    const QRect second = editor.rowsOf(0).translated(0, editor.rowsOf(0).height());
    const QImage image = editor.gutterImage();
    Editor plain(lines(3));
    const QImage usual = plain.gutterImage();
    QVERIFY(darkColumns(image, second).first >= 0);
    QVERIFY2(image.copy(0, second.top(), image.width(), second.height()) !=
                 usual.copy(0, second.top(), usual.width(), second.height()),
             "the second number on view is the 3, not the 2");
    QCOMPARE(darkColumns(image, second.translated(0, second.height())).first, -1);
}

void tst_CodeEditor::wrappedLineHasOneNumber()
{
    Editor editor(QString(200, 'x') + QLatin1String("\nsecond"));
    const int lineHeight = editor.fontMetrics().height();
    QVERIFY(editor.rowsOf(0).height() > 2 * lineHeight);
    const QImage image = editor.gutterImage();
    const QRect first = editor.rowsOf(0);
    QVERIFY(darkColumns(image, QRect(0, first.top(), 1, lineHeight)).first >= 0);
    QCOMPARE(darkColumns(image, first.adjusted(0, lineHeight + 1, 0, -2)).first, -1);
    QVERIFY(darkColumns(image, editor.rowsOf(1)).first >= 0);
}

void tst_CodeEditor::numbersAreThoseOfTheLinesOnView_data()
{
    QTest::addColumn<int>("scrolled");
    QTest::newRow("top") << 0;
    QTest::newRow("two lines") << 2;
    QTest::newRow("into the two digits") << 7;
    QTest::newRow("far") << 83;
    QTest::newRow("end") << 10'000;
}

/// The gutter against the numbers drawn by themselves, pixel by pixel.
void tst_CodeEditor::numbersAreThoseOfTheLinesOnView()
{
    QFETCH(int, scrolled);
    Editor editor(lines(120));
    editor.verticalScrollBar()->setValue(scrolled);
    const int first = std::min(scrolled, editor.verticalScrollBar()->maximum());
    QVERIFY(first > 0 || scrolled == 0);

    QImage expected(editor.gutter().size(), QImage::Format_RGB32);
    expected.fill(Qt::lightGray);
    QPainter painter(&expected);
    painter.setFont(editor.font());
    int count = 0;
    for (int line = first; editor.rowsOf(line).top() < expected.height() && line < 120; ++line, ++count)
        painter.drawText(0, editor.rowsOf(line).top(), expected.width(), editor.fontMetrics().height(),
                         Qt::AlignRight, QString::number(line + 1));
    painter.end();
    QVERIFY(count > 8);
    QCOMPARE(editor.gutterImage().convertToFormat(QImage::Format_RGB32), expected);
}

void tst_CodeEditor::currentLineIsDarkYellowOverTheWholeWidth()
{
    QCOMPARE(sHighlight, qRgb(159, 159, 0));
    Editor editor(lines(3));
    const QImage image = editor.viewportImage();
    const int middle = editor.rowsOf(0).center().y();
    const int right = image.width() - int(editor.document()->documentMargin()) - 1;
    QCOMPARE(image.pixel(right, middle), sHighlight);
    QCOMPARE(image.pixel(image.width() / 2, middle), sHighlight);
    QVERIFY(image.pixel(image.width() / 2, editor.rowsOf(1).center().y()) != sHighlight);
}

void tst_CodeEditor::currentLineIsReadableInDarkColours()
{
    Editor editor("text\ntext");
    QVERIFY(!editor.extraSelections().first().format.hasProperty(QTextFormat::ForegroundBrush));
    QPalette dark = editor.palette();
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::Text, Qt::white);
    editor.setPalette(dark);
    editor.setCursorWidth(0);

    const auto darkest = [&](int line) {
        const QImage image = editor.viewportImage();
        int value = 255;
        for (int y = editor.rowsOf(line).top(); y < editor.rowsOf(line).bottom(); ++y) {
            for (int x = 0; x < image.width() / 2; ++x)
                value = std::min(value, qGray(image.pixel(x, y)));
        }
        return value;
    };
    QVERIFY2(darkest(0) < 40, qPrintable(QString::number(darkest(0))));
    const QImage image = editor.viewportImage();
    QCOMPARE(image.pixel(image.width() / 2, editor.rowsOf(0).center().y()), sHighlight);
    int lightest = 0;
    for (int x = 0; x < image.width() / 2; ++x)
        lightest = std::max(lightest, qGray(image.pixel(x, editor.rowsOf(1).center().y())));
    QVERIFY2(lightest > 200, "the other lines have the colour of the palette");

    editor.setPalette(QPalette(QColor(240, 240, 240)));
    QVERIFY(!editor.extraSelections().first().format.hasProperty(QTextFormat::ForegroundBrush));
}

void tst_CodeEditor::highlightFollowsTheCursor()
{
    Editor editor(lines(3));
    QTest::keyClick(&editor, Qt::Key_Down);
    const QImage image = editor.viewportImage();
    QVERIFY(image.pixel(image.width() / 2, editor.rowsOf(0).center().y()) != sHighlight);
    QCOMPARE(image.pixel(image.width() / 2, editor.rowsOf(1).center().y()), sHighlight);
}

void tst_CodeEditor::highlightIgnoresTheSelection()
{
    Editor editor(lines(3));
    QTest::keyClick(&editor, Qt::Key_Down, Qt::ShiftModifier);
    const auto selections = editor.extraSelections();
    QCOMPARE(selections.size(), 1);
    QVERIFY(!selections.first().cursor.hasSelection());
    QCOMPARE(selections.first().cursor.blockNumber(), 1);
    QCOMPARE(selections.first().format.background(), QBrush(QColor(Qt::yellow).darker(160)));
    QCOMPARE(selections.first().format.property(QTextFormat::FullWidthSelection), QVariant(true));
}

void tst_CodeEditor::readOnlyEditorLosesItsHighlightAtTheNextMove()
{
    Editor editor(lines(3));
    editor.setReadOnly(true);
    QCOMPARE(editor.extraSelections().size(), 1);
    editor.moveCursor(QTextCursor::Down);
    QVERIFY(editor.extraSelections().isEmpty());
    const QImage image = editor.viewportImage();
    for (int line = 0; line < 3; ++line)
        QVERIFY(image.pixel(image.width() / 2, editor.rowsOf(line).center().y()) != sHighlight);

    editor.setReadOnly(false);
    editor.moveCursor(QTextCursor::Down);
    QCOMPARE(editor.extraSelections().size(), 1);
}

void tst_CodeEditor::scrollingMovesTheNumbers()
{
    Editor editor(lines(100));
    editor.moveCursor(QTextCursor::End);
    QCoreApplication::processEvents();
    editor.verticalScrollBar()->setValue(20);
    QCoreApplication::processEvents();
    editor.verticalScrollBar()->setValue(23);
    QCoreApplication::processEvents();

    const QPoint corner = editor.gutter().mapTo(&editor, QPoint(0, 0));
    const QImage shown = editor.screen()
                             ->grabWindow(editor.winId(), corner.x(), corner.y(), editor.gutter().width(),
                                          editor.gutter().height())
                             .toImage()
                             .convertToFormat(QImage::Format_RGB32);
    QCOMPARE(shown, editor.gutterImage().convertToFormat(QImage::Format_RGB32));
}

void tst_CodeEditor::scrollingDoesNotRepaintTheWholeGutter()
{
    Editor editor(lines(100));
    QCoreApplication::processEvents();
    PaintWatch watch(editor.gutter());
    editor.verticalScrollBar()->setValue(2);
    QTRY_VERIFY(!watch.region.isEmpty());
    QVERIFY2(watch.region.boundingRect().height() < editor.gutter().height() / 2,
             qPrintable(QString::number(watch.region.boundingRect().height())));
}

void tst_CodeEditor::typingRepaintsOnlyTheLine()
{
    Editor editor(lines(3));
    QCoreApplication::processEvents();
    PaintWatch watch(editor.gutter());
    QTest::keyClick(&editor, 'x');
    QTRY_VERIFY(!watch.region.isEmpty());
    QVERIFY(watch.region.boundingRect().height() <= 2 * editor.rowsOf(0).height());
}

void tst_CodeEditor::keysAreThoseOfAPlainEditor()
{
    Editor editor;
    QTest::keyClicks(&editor, "  {");
    QTest::keyClick(&editor, Qt::Key_Return);
    QTest::keyClick(&editor, Qt::Key_Tab);
    QTest::keyClicks(&editor, "x");
    QCOMPARE(editor.toPlainText(), QStringLiteral("  {\n\tx"));
}

KY_TEST_MAIN(tst_CodeEditor)
#include "tst_CodeEditor.moc"

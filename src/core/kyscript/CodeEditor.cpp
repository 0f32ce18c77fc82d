#include "CodeEditor.h"

#include <QtGui/QPainter>
#include <QtGui/QTextBlock>

namespace {

constexpr int GutterSlack = 3;
constexpr int HighlightDarkness = 160;

/// Of a colour on the screen, from 0 to 255.
constexpr int LightText = 160;

} // namespace

CodeEditor::CodeEditor(QWidget* parent)
    : QPlainTextEdit(parent)
    , mLineNumberArea(new LineNumberArea(this))
{
    connect(this, &CodeEditor::blockCountChanged, this, &CodeEditor::updateLineNumberAreaWidth);
    connect(this, &CodeEditor::updateRequest, this, &CodeEditor::updateLineNumberArea);
    connect(this, &CodeEditor::cursorPositionChanged, this, &CodeEditor::highlightCurrentLine);
    updateLineNumberAreaWidth(0);
    highlightCurrentLine();
}

int CodeEditor::lineNumberAreaWidth()
{
    int digits = 1;
    for (int lines = std::max(1, blockCount()); lines >= 10; lines /= 10)
        ++digits;
    return GutterSlack + digits * fontMetrics().horizontalAdvance(QLatin1Char('9'));
}

void CodeEditor::updateLineNumberAreaWidth(int)
{
    setViewportMargins(lineNumberAreaWidth(), 0, 0, 0);
}

void CodeEditor::updateLineNumberArea(QRect rect, int dy)
{
    if (dy != 0)
        mLineNumberArea->scroll(0, dy);
    else
        mLineNumberArea->update(0, rect.y(), mLineNumberArea->width(), rect.height());
    if (rect.contains(viewport()->rect()))
        updateLineNumberAreaWidth(0);
}

void CodeEditor::resizeEvent(QResizeEvent* event)
{
    QPlainTextEdit::resizeEvent(event);
    const QRect area = contentsRect();
    mLineNumberArea->setGeometry(area.left(), area.top(), lineNumberAreaWidth(), area.height());
}

void CodeEditor::changeEvent(QEvent* event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !isReadOnly())
        highlightCurrentLine();
}

void CodeEditor::lineNumberAreaPaintEvent(QPaintEvent* event)
{
    QPainter painter(mLineNumberArea);
    painter.fillRect(event->rect(), Qt::lightGray);

    QTextBlock block = firstVisibleBlock();
    int number = block.blockNumber();
    int top = qRound(blockBoundingGeometry(block).translated(contentOffset()).top());
    int bottom = top + qRound(blockBoundingRect(block).height());
    while (block.isValid() && top <= event->rect().bottom()) {
        if (block.isVisible() && bottom >= event->rect().top()) {
            painter.setPen(Qt::black);
            painter.drawText(0, top, mLineNumberArea->width(), fontMetrics().height(), Qt::AlignRight,
                             QString::number(number + 1));
        }
        block = block.next();
        top = bottom;
        bottom = top + qRound(blockBoundingRect(block).height());
        ++number;
    }
}

void CodeEditor::highlightCurrentLine()
{
    QList<QTextEdit::ExtraSelection> selections;
    if (!isReadOnly()) {
        QTextEdit::ExtraSelection line;
        line.format.setBackground(QColor(Qt::yellow).darker(HighlightDarkness));
        line.format.setProperty(QTextFormat::FullWidthSelection, true);
        // The light text of dark colours would be hard to read on it.
        if (qGray(palette().color(QPalette::Text).rgb()) > LightText)
            line.format.setForeground(Qt::black);
        line.cursor = textCursor();
        line.cursor.clearSelection();
        selections.append(line);
    }
    setExtraSelections(selections);
}

LineNumberArea::LineNumberArea(CodeEditor* inEditor)
    : QWidget(inEditor)
    , mEditor(inEditor)
{
    // It paints every pixel: so a scroll need not paint all of it again.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QSize LineNumberArea::sizeHint() const
{
    return QSize(mEditor->lineNumberAreaWidth(), 0);
}

void LineNumberArea::paintEvent(QPaintEvent* event)
{
    mEditor->lineNumberAreaPaintEvent(event);
}

#include "KyScriptPrintBuffer.h"

#include <QtGui/QAbstractTextDocumentLayout>
#include <QtGui/QTextBlock>
#include <QtGui/QTextDocument>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTextEdit>

#include <algorithm>
#include <utility>

namespace {

constexpr int DirectLines = 20; ///< In each interval.
constexpr int GatheredLines = 1000;
constexpr qsizetype GatheredCharacters = 100'000;
constexpr qint64 WriteInterval = 30; ///< In milliseconds.

} // namespace

KyScriptPrintBuffer::KyScriptPrintBuffer(QTextEdit& inWidget)
    : QObject(&inWidget)
    , mWidget(inWidget)
{
    mFlushTimer.setSingleShot(true);
    connect(&mFlushTimer, &QTimer::timeout, this, &KyScriptPrintBuffer::flush);
}

KyScriptPrintBuffer& KyScriptPrintBuffer::of(QTextEdit& inWidget)
{
    auto* present = inWidget.findChild<KyScriptPrintBuffer*>(QString(), Qt::FindDirectChildrenOnly);
    return present ? *present : *new KyScriptPrintBuffer(inWidget);
}

void KyScriptPrintBuffer::append(const QString& inLine)
{
    mLines.append(inLine);
    mCharacters += inLine.size();
    const bool isDue = !mSinceDue.isValid() || mSinceDue.elapsed() >= WriteInterval;
    if (isDue)
        mBurst = 0;
    if (++mBurst <= DirectLines || mLines.size() >= GatheredLines || mCharacters >= GatheredCharacters)
        flush();
    else
        scheduleFlush();
    if (!isDue)
        return;
    mWidget.viewport()->repaint();
    mWidget.verticalScrollBar()->repaint();
    mSinceDue.start();
}

void KyScriptPrintBuffer::scheduleFlush()
{
    if (!mFlushTimer.isActive())
        mFlushTimer.start(int(std::max<qint64>(WriteInterval - mSinceDue.elapsed(), 0)));
}

void KyScriptPrintBuffer::flush()
{
    mFlushTimer.stop();
    if (mLines.isEmpty())
        return;
    mCharacters = 0;
    writeLines(std::exchange(mLines, {}));
    trim();
}

/// Joined are only lines that append() would take as plain text: each line on its own says which it is. The
/// first line of an empty document makes no line break, so it is not joined either.
void KyScriptPrintBuffer::writeLines(const QStringList& inLines)
{
    QString joined;
    bool isEmpty = true;
    const auto insertJoined = [&] {
        if (!isEmpty)
            insertPlainLines(joined);
        joined.clear();
        isEmpty = true;
    };
    for (const QString& line : inLines) {
        if (mWidget.document()->isEmpty() || Qt::mightBeRichText(line)) {
            insertJoined();
            mWidget.append(line);
            continue;
        }
        if (!isEmpty)
            joined += QChar::ParagraphSeparator;
        joined += line;
        isEmpty = false;
    }
    insertJoined();
}

/// What append() does, for lines that are known to be plain text.
void KyScriptPrintBuffer::insertPlainLines(const QString& inText)
{
    QScrollBar& bar = *mWidget.verticalScrollBar();
    const QTextCursor shown = mWidget.textCursor();
    const bool isAtEnd = mWidget.isReadOnly() ? bar.value() >= bar.maximum() : shown.atEnd();

    QTextCursor cursor(mWidget.document());
    cursor.beginEditBlock();
    cursor.movePosition(QTextCursor::End);
    cursor.insertBlock(shown.blockFormat(), shown.charFormat());
    cursor.insertText(inText);
    cursor.endEditBlock();
    if (isAtEnd)
        bar.setValue(bar.maximum());
}

void KyScriptPrintBuffer::keepNewest(int inLines, int inCharacters)
{
    mMaxLines = inLines;
    mMaxCharacters = inCharacters;
}

int KyScriptPrintBuffer::firstLineToKeep() const
{
    const QTextDocument& document = *mWidget.document();
    int first = 0;
    if (document.blockCount() > mMaxLines + mMaxLines / 2)
        first = document.blockCount() - mMaxLines;
    if (document.characterCount() > mMaxCharacters + mMaxCharacters / 2) {
        const int position = document.characterCount() - mMaxCharacters;
        first = std::max(first, document.findBlock(position).blockNumber());
    }
    return first;
}

/// Half as much again before anything goes, since taking lines from the top costs as much as the whole text
/// is long. A reader who has scrolled up keeps the lines that he reads, as long as they are there.
void KyScriptPrintBuffer::trim()
{
    const int first = mMaxLines > 0 ? firstLineToKeep() : 0;
    if (first == 0)
        return;
    QTextDocument& document = *mWidget.document();
    const QTextBlock kept = document.findBlockByNumber(first);
    QScrollBar& bar = *mWidget.verticalScrollBar();
    const bool isAtEnd = bar.value() >= bar.maximum();
    const QAbstractTextDocumentLayout& layout = *document.documentLayout();
    const int removedHeight =
        qRound(layout.blockBoundingRect(kept).top() - layout.blockBoundingRect(document.firstBlock()).top());
    const int value = bar.value() - removedHeight;

    QTextCursor oldest(&document);
    oldest.setPosition(kept.position(), QTextCursor::KeepAnchor);
    oldest.removeSelectedText();
    bar.setValue(isAtEnd ? bar.maximum() : std::max(value, 0));
    Q_EMIT trimmed();
}

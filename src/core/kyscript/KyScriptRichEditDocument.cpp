#include "KyScriptRichEditDocument.h"

#include <QtCore/QRegularExpression>
#include <QtGui/QTextCursor>
#include <QtGui/QTextDocument>
#include <QtWidgets/QTextEdit>

#include <algorithm>

namespace {

/// Of the first character of the selection.
QTextCharFormat formatOfSelection(const QTextCursor& inCursor)
{
    QTextCursor behind(inCursor);
    const int last = inCursor.document()->characterCount() - 1;
    behind.setPosition(std::min(inCursor.selectionStart() + 1, last));
    return behind.charFormat();
}

} // namespace

KyScriptRichEditDocument::KyScriptRichEditDocument(QTextEdit& inTextEdit)
    : mTextEdit(&inTextEdit)
{}

QVariantList KyScriptRichEditDocument::selection() const
{
    const QTextCursor cursor = mTextEdit->textCursor();
    if (!cursor.hasSelection())
        return {cursor.position(), cursor.position()};
    return {cursor.selectionStart(), cursor.selectionEnd()};
}

void KyScriptRichEditDocument::setSelection(int inStart, int inEnd)
{
    QTextCursor cursor = mTextEdit->textCursor();
    cursor.setPosition(inStart, QTextCursor::MoveAnchor);
    if (inStart != inEnd) {
        cursor.setPosition(std::min(mTextEdit->document()->characterCount() - 1, inEnd),
                           QTextCursor::KeepAnchor);
    }
    mTextEdit->setTextCursor(cursor);
}

void KyScriptRichEditDocument::replaceSelection(const QString& inText)
{
    QTextCursor cursor = mTextEdit->textCursor();
    if (cursor.hasSelection())
        cursor.insertText(inText, formatOfSelection(cursor));
    else
        cursor.insertText(inText);
    restore(cursor);
}

void KyScriptRichEditDocument::replace(const QVariant& inPattern, const QString& inText)
{
    const QTextCursor before = mTextEdit->textCursor();
    if (findFromStart(inPattern)) {
        QTextCursor match = mTextEdit->textCursor();
        match.insertText(inText, formatOfSelection(match));
    }
    restore(before);
}

void KyScriptRichEditDocument::insertAfter(const QString& inSearch, const QString& inText)
{
    const QTextCursor before = mTextEdit->textCursor();
    if (findFromStart(inSearch)) {
        QTextCursor match = mTextEdit->textCursor();
        const int end = match.selectionEnd();
        match.clearSelection();
        match.setPosition(end, QTextCursor::MoveAnchor);
        match.insertText(inText);
    }
    restore(before);
}

/// The match becomes the selection of the editor.
bool KyScriptRichEditDocument::findFromStart(const QVariant& inPattern)
{
    mTextEdit->setTextCursor(QTextCursor());
    if (!mTextEdit)
        return false;
    if (inPattern.typeId() == QMetaType::QString)
        return mTextEdit->find(inPattern.toString());
    if (inPattern.typeId() != QMetaType::QRegularExpression)
        return false;
    QRegularExpression expression = inPattern.toRegularExpression();
    expression.setPatternOptions(QRegularExpression::InvertedGreedinessOption);
    return expression.isValid() && mTextEdit->find(expression);
}

void KyScriptRichEditDocument::restore(const QTextCursor& inCursor)
{
    if (mTextEdit)
        mTextEdit->setTextCursor(inCursor);
}

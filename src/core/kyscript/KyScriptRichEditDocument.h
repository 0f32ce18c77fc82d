#pragma once

#include <QtCore/QPointer>
#include <QtCore/QVariant>

class QTextCursor;
class QTextEdit;

/// The text and the selection of the application's own report editor.
///
/// Each change is one step of the user's undo. Made for one operation: who is told of a change may end the
/// editor, and the rest of the operation is left out then.
class KyScriptRichEditDocument
{
public:
    explicit KyScriptRichEditDocument(QTextEdit& inTextEdit);

    /// Start and end; twice the place of the cursor when nothing is selected.
    QVariantList selection() const;
    /// The end is limited to that of the document. A place beyond it is not taken otherwise.
    void setSelection(int inStart, int inEnd);
    /// The new text takes on the format of the first selected character.
    void replaceSelection(const QString& inText);

    /// Replaces the first match of a text or a regular expression, in any letter case; the latter matches as
    /// little as it can, and within a paragraph. Another kind of pattern matches nowhere. The new text takes
    /// on the format of the first character that matches.
    void replace(const QVariant& inPattern, const QString& inText);
    /// Puts \a inText behind the first \a inSearch, in any letter case.
    void insertAfter(const QString& inSearch, const QString& inText);

private:
    bool findFromStart(const QVariant& inPattern);
    void restore(const QTextCursor& inCursor);

    const QPointer<QTextEdit> mTextEdit;
};

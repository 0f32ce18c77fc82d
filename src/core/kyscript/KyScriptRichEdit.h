#pragma once

#include "KyScriptRichEditTarget.h"

#include <QtCore/QObject>
#include <QtCore/QVariant>

class QJSValue;
class QTextEdit;

/// The text of a reporting editor, published as `new RichEditCtrl(config)`: the application's own report
/// editor, or a control of another program. docs/scripting/report.md tells of the configuration.
///
/// The object holds only the description of its target, and each operation finds it anew. Without a target,
/// or with one that does not serve an operation, reading gives an invalid QVariant or an empty list and
/// changing does nothing. Positions count UTF-16 units of the own editor's text, a paragraph's end as one, or
/// are those of the control. Text reaches other programs in the local 8-bit code page. A program that does
/// not answer blocks the caller until it does. GUI thread only.
class KyScriptRichEdit : public QObject
{
    Q_OBJECT

public:
    explicit KyScriptRichEdit(QVariantMap config);
    /// An empty configuration, which no target fits. Cheap, as every engine makes one to check that scripts
    /// can.
    Q_INVOKABLE KyScriptRichEdit();
    /// Scripts reach this one, since Qt's conversion to maps doesn't survive every value.
    Q_INVOKABLE explicit KyScriptRichEdit(const QJSValue& config);

    /// Whether the target is there and can be changed.
    Q_INVOKABLE bool isValid();
    /// Whether the target is there and can be read.
    Q_INVOKABLE bool isReadable();

    /// Plain text.
    Q_INVOKABLE QVariant getText();
    /// Of the own editor only.
    Q_INVOKABLE QVariant getHtml();
    /// Replaces the whole text of the own editor, which can't be undone.
    Q_INVOKABLE void setHtml(QString html);

    /// Two ints: start and end.
    Q_INVOKABLE QVariantList getSelection();
    /// Works on an editor that can only be read, too.
    Q_INVOKABLE void setSelection(int start, int end);

    /// Replaces the first match of \a pattern, a text or a regular expression; anything else matches nowhere.
    Q_INVOKABLE void replace(QVariant pattern, QString text);
    /// \a allowUndo says whether the user of another program may take it back; in the own editor that is so
    /// always.
    Q_INVOKABLE void replaceSelection(QString text, bool allowUndo = true);
    /// Of the own editor only.
    Q_INVOKABLE void replaceSelectionHtml(QString text);
    /// Inserts \a text behind the first occurrence of \a search.
    Q_INVOKABLE void insertAfter(QString search, QString text);

private:
    QTextEdit* findOwnEditor(bool readOnlyAllowed) const;

    const KyScriptRichEditTarget mTarget;
};

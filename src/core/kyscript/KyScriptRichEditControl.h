#pragma once

#include <rnwin/RnWindows.h>

#include <QtCore/QString>
#include <QtCore/QVariant>

/// The text and the selection of a control of another program.
///
/// Positions are those of the control. They are positions of the text that is read when a rich-edit control's
/// is read with \a inConvertCRLFToLF, and that of a plain one without. Made for one operation; a control that
/// goes meanwhile gives empty texts.
class KyScriptRichEditControl
{
public:
    KyScriptRichEditControl(RnWindows& inWindows, RnWindows::Window inWindow, bool inConvertCRLFToLF);

    /// Empty also for a text of more than 1 GB.
    QString text() const;

    RnWindows::Selection selection() const;
    void setSelection(int inStart, int inEnd);
    void replaceSelection(const QString& inText, bool inAllowUndo);

    /// Replaces the first match of a text, in its own letter case, or of a regular expression, which matches
    /// as little as it can; another kind of pattern matches nowhere. The selection stays on the same text.
    void replace(const QVariant& inPattern, const QString& inText);
    /// Puts \a inText behind the first \a inSearch. The selection stays on the same text.
    void insertAfter(const QString& inSearch, const QString& inText);

private:
    RnWindows& mWindows;
    const RnWindows::Window mWindow;
    const bool mConvertCRLFToLF;
};

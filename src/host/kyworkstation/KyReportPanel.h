#pragma once

#include <kyreporttab/OvReportEditor.h>

#include <QtWidgets/QWidget>

class KyReportEditor;
class QTextCharFormat;
class QTextEdit;
class QToolBar;

/// The report on the screen: the document of a KyReportEditor with buttons for bold, italic and underlined
/// text, for undo, and to guard it against changes by the user and by scripts.
///
/// Made behind the editor and ended before it.
class KyReportPanel : public QWidget
{
    Q_OBJECT

public:
    KyReportPanel(KyReportEditor& inEditor, QWidget* inParent = nullptr);

    /// What scripts get while the panel is open.
    Ovg::OvReportEditor& report() { return mReport; }

private:
    void addChanges();
    QAction* addChange(const QString& inText, const QString& inToolTip);
    void setReadOnly(bool inIsReadOnly);
    void showChanges();
    void addFormats();
    QAction* addFormat(const QString& inText, const QString& inToolTip, const QKeySequence& inKeys);
    void showFormat(const QTextCharFormat& inFormat);

    QTextEdit* const mText;
    Ovg::OvReportEditor mReport;
    QToolBar* const mFormats;
    QAction* mBold = nullptr;
    QAction* mItalic = nullptr;
    QAction* mUnderline = nullptr;
    QAction* mUndo = nullptr;
    QAction* mRedo = nullptr;
};

#pragma once

#include <QtWidgets/QWidget>

class KyReportEditor;
class QTextCharFormat;
class QTextEdit;
class QToolBar;

/// The report on the screen: the document of a KyReportEditor with buttons for bold, italic and underlined
/// text.
///
/// Made behind the editor and ended before it.
class KyReportPanel : public QWidget
{
    Q_OBJECT

public:
    KyReportPanel(KyReportEditor& inEditor, QWidget* inParent = nullptr);

private:
    void addFormats();
    QAction* addFormat(const QString& inText, const QString& inToolTip, const QKeySequence& inKeys);
    void showFormat(const QTextCharFormat& inFormat);

    QTextEdit* const mText;
    QToolBar* const mFormats;
    QAction* mBold = nullptr;
    QAction* mItalic = nullptr;
    QAction* mUnderline = nullptr;
};

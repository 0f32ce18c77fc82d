#include "KyReportPanel.h"

#include <common/KyReportEditor.h>

#include <QtGui/QAction>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

KyReportPanel::KyReportPanel(KyReportEditor& inEditor, QWidget* inParent)
    : QWidget(inParent)
    , mText(new QTextEdit(this))
    , mReport(mText)
    , mFormats(new QToolBar(this))
{
    mText->setObjectName(QStringLiteral("reportText"));
    mText->setAccessibleName(tr("Report"));
    mText->setPlaceholderText(tr("The report"));
    mText->setTabChangesFocus(true);
    mText->setDocument(&inEditor.document());
    addFormats();
    addChanges();

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(mFormats);
    column->addWidget(mText);
    connect(mText, &QTextEdit::currentCharFormatChanged, this, &KyReportPanel::showFormat);
}

void KyReportPanel::addFormats()
{
    mBold = addFormat(tr("B", "bold"), tr("Bold"), QKeySequence::Bold);
    mItalic = addFormat(tr("I", "italic"), tr("Italic"), QKeySequence::Italic);
    mUnderline = addFormat(tr("U", "underlined"), tr("Underlined"), QKeySequence::Underline);
    showFormat(mText->currentCharFormat());
    connect(mBold, &QAction::triggered, mText,
            [this](bool on) { mText->setFontWeight(on ? QFont::Bold : QFont::Normal); });
    connect(mItalic, &QAction::triggered, mText, &QTextEdit::setFontItalic);
    connect(mUnderline, &QAction::triggered, mText, &QTextEdit::setFontUnderline);
}

void KyReportPanel::addChanges()
{
    mFormats->addSeparator();
    mUndo = addChange(tr("Undo"), tr("Take the last change back"));
    mRedo = addChange(tr("Redo"), tr("Make the change again that was taken back"));
    connect(mUndo, &QAction::triggered, this, [this] { mReport.undo(); });
    connect(mRedo, &QAction::triggered, this, [this] { mReport.redo(); });
    connect(mText, &QTextEdit::undoAvailable, this, &KyReportPanel::showChanges);
    connect(mText, &QTextEdit::redoAvailable, this, &KyReportPanel::showChanges);

    mFormats->addSeparator();
    QAction* readOnly =
        addChange(tr("Read Only"), tr("Guard the report against changes, also those of scripts"));
    readOnly->setCheckable(true);
    connect(readOnly, &QAction::toggled, this, &KyReportPanel::setReadOnly);
    showChanges();
}

QAction* KyReportPanel::addChange(const QString& inText, const QString& inToolTip)
{
    QAction* action = mFormats->addAction(inText);
    action->setToolTip(inToolTip);
    mFormats->widgetForAction(action)->setAccessibleName(inText);
    return action;
}

void KyReportPanel::setReadOnly(bool inIsReadOnly)
{
    mReport.setReadOnly(inIsReadOnly);
    for (QAction* format : {mBold, mItalic, mUnderline})
        format->setEnabled(!inIsReadOnly);
    showChanges();
}

void KyReportPanel::showChanges()
{
    const QTextDocument& document = *mText->document();
    mUndo->setEnabled(!mReport.isReadOnly() && document.isUndoAvailable());
    mRedo->setEnabled(!mReport.isReadOnly() && document.isRedoAvailable());
}

QAction* KyReportPanel::addFormat(const QString& inText, const QString& inToolTip, const QKeySequence& inKeys)
{
    QAction* action = mFormats->addAction(inText);
    action->setCheckable(true);
    action->setShortcut(inKeys);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    action->setToolTip(QStringLiteral("%1 (%2)").arg(inToolTip, inKeys.toString(QKeySequence::NativeText)));
    mText->addAction(action);
    QWidget* button = mFormats->widgetForAction(action);
    button->setAccessibleName(inToolTip);
    QFont font = button->font();
    font.setBold(inKeys == QKeySequence(QKeySequence::Bold));
    font.setItalic(inKeys == QKeySequence(QKeySequence::Italic));
    font.setUnderline(inKeys == QKeySequence(QKeySequence::Underline));
    button->setFont(font);
    return action;
}

void KyReportPanel::showFormat(const QTextCharFormat& inFormat)
{
    mBold->setChecked(inFormat.fontWeight() >= QFont::Bold);
    mItalic->setChecked(inFormat.fontItalic());
    mUnderline->setChecked(inFormat.fontUnderline());
}

// How the dialog of scripts comes up: its size and place, its focus, and the names of its parts.

#include "KyScriptDialogPrivate.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtGui/QTextDocumentFragment>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QButtonGroup>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QStyle>

#include <algorithm>
#include <utility>

namespace {

QString firstFilled(const QStringList& inTexts)
{
    const auto found =
        std::find_if(inTexts.begin(), inTexts.end(), [](const QString& t) { return !t.isEmpty(); });
    return found == inTexts.end() ? QString() : *found;
}

/// The number of letters between two blanks, at most.
int longestWord(const QString& inText)
{
    int longest = 0, length = 0;
    for (const QChar c : inText) {
        length = c.isSpace() ? 0 : length + 1;
        longest = std::max(longest, length);
    }
    return longest;
}

} // namespace

QString KyScriptDialog::plainText(const QString& inText)
{
    return Qt::mightBeRichText(inText) ? QTextDocumentFragment::fromHtml(inText).toPlainText() : inText;
}

/// What show() has put off.
void KyScriptDialog::appear()
{
    if (!isVisible())
        chooseFocus();
    makeRoom();
    QWidget::show();
    // Window managers leave the keyboard with the main window, and some let nobody reach a tool window by
    // keys.
    if (QGuiApplication::applicationState() == Qt::ApplicationActive)
        activateWindow();
    if (std::exchange(d->isToScroll, false))
        d->scroll(true);
}

/// The keyboard starts where the user has something to do.
void KyScriptDialog::chooseFocus()
{
    const auto isUsable = [this](const QWidget* widget) {
        return widget->isVisibleTo(this) && widget->isEnabledTo(this);
    };
    if (isUsable(d->lineEdit))
        return d->lineEdit->setFocus();
    if (isUsable(d->field()))
        return d->field()->setFocus();
    const auto buttons = d->group->buttons();
    const auto first = std::find_if(buttons.begin(), buttons.end(), isUsable);
    if (first != buttons.end())
        (*first)->setFocus();
}

/// What the window system adds around the dialog; the style's guess as long as it is not on show.
QSize KyScriptDialog::borderSize() const
{
    if (isVisible())
        return frameGeometry().size() - size();
    const int frame = style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
    return QSize(2 * frame, 2 * frame + style()->pixelMetric(QStyle::PM_TitleBarHeight));
}

/// Whether the message has a word that would make the window wider than half of the screen. Such a word is
/// cut.
bool KyScriptDialog::isMessageTooWide() const
{
    const int most = screen()->availableSize().width() / 2;
    const QString text = d->label->text();
    // To measure all words costs as much as to paint them.
    if (!Qt::mightBeRichText(text) && longestWord(text) * d->label->fontMetrics().maxWidth() <= most)
        return false;
    d->label->setMinimumWidth(0);
    return d->label->minimumSizeHint().width() > most;
}

/// Makes the dialog large enough for its message, as far as the screen goes: the size that was kept may be
/// that of a dialog with less to say.
void KyScriptDialog::makeRoom()
{
    if (isMaximized() || isFullScreen())
        return;
    // What is polished only when it comes up is measured twice.
    ensurePolished();
    d->label->ensurePolished();
    if (!testAttribute(Qt::WA_Resized))
        adjustSize();
    const auto heightFor = [this](int width) { return layout()->totalMinimumHeightForWidth(width); };
    if (heightFor(width()) <= height())
        return;
    const QRect area = screen()->availableGeometry();
    const QSize most = area.size() - borderSize();
    int newWidth = std::clamp(sizeHint().width(), width(), std::max(width(), most.width()));
    if (heightFor(newWidth) > most.height())
        newWidth = most.width();
    resize(newWidth, std::clamp(heightFor(newWidth), height(), std::max(height(), most.height())));

    comeInside(area);
}

/// Widens the dialog for a status that has too little room, in steps and up to half of the screen: it changes
/// often, and the window must not follow each letter.
void KyScriptDialog::makeStatusRoom()
{
    constexpr int step = 40;
    if (!isVisible() || isMaximized() || isFullScreen())
        return;
    d->indicator->layout()->activate();
    layout()->activate();
    if (d->indicator->width() >= d->indicator->sizeHint().width())
        return;
    const QLayoutItem* row = layout()->itemAt(layout()->count() - 1);
    const QRect area = screen()->availableGeometry();
    const int newWidth =
        std::min(width() + row->sizeHint().width() - row->geometry().width() + step, area.width() / 2);
    if (newWidth <= width())
        return;
    resize(newWidth, height());
    comeInside(area);
}

/// Moves the dialog to the left and up as far as it stands out of the screen.
void KyScriptDialog::comeInside(const QRect& inArea)
{
    const QPoint outside = frameGeometry().bottomRight() - inArea.bottomRight();
    if (outside.x() > 0 || outside.y() > 0)
        move(pos() - QPoint(std::max(outside.x(), 0), std::max(outside.y(), 0)));
}

/// Gives screen readers a name for everything that has none of its own.
void KyScriptDialog::nameParts()
{
    const QString message = plainText(d->label->text()), title = windowTitle();
    setAccessibleName(title.isEmpty() ? firstFilled({message, QGuiApplication::applicationDisplayName()})
                                      : QString());
    setAccessibleDescription(title.isEmpty() ? QString() : message);
    d->edit->setAccessibleName(firstFilled({title, message, tr("Text")}));
    d->textBrowser->setAccessibleName(d->edit->accessibleName());
    d->lineEdit->setAccessibleName(firstFilled({message, title, tr("Input")}));
}

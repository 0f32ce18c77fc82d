// The buttons of the dialog of scripts, and its answers.

#include "KyScriptDialogButtons.h"
#include "KyScriptDialogPrivate.h"
#include "KyScriptKeeper.h"
#include "KyScriptVariant.h"

#include <rnlib/RnContract.h>

#include <QtGui/QAction>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPushButton>

void KyScriptDialog::setButtons(QVariantList buttons)
{
    const bool hadFocus = focusWidget() && d->box->isAncestorOf(focusWidget());
    d->buttons->set(buttons);
    if (hadFocus)
        chooseFocus();
}

void KyScriptDialog::setButtons(const QJSValue& buttons)
{
    const QPointer<KyScriptDialog> self(this);
    const QVariant descriptions = KyScriptVariant::cut(buttons, this);
    if (self)
        setButtons(KyScriptVariant::listOf(descriptions));
}

void KyScriptDialog::setButtonToolTips(const QJSValue& buttonToolTips)
{
    const QPointer<KyScriptDialog> self(this);
    const QVariant texts = KyScriptVariant::cut(buttonToolTips, this);
    if (self)
        setButtonToolTips(texts.toStringList());
}

void KyScriptDialog::setButtonToolTips(QStringList buttonToolTips)
{
    d->buttons->setToolTips(buttonToolTips);
}

void KyScriptDialog::setButtonEnabled(QVariant index, bool enabled)
{
    const QPointer<KyScriptDialog> self(this);
    const QVariant which = KyScriptVariant::cut(index, this);
    if (self)
        d->buttons->setEnabled(which, enabled);
}

void KyScriptDialog::setButtonsEnabled(QVariant indices, bool enabled)
{
    const QPointer<KyScriptDialog> self(this);
    const QVariant which = KyScriptVariant::cut(indices, this);
    if (self)
        d->buttons->setAllEnabled(KyScriptVariant::listOf(which), enabled);
}

int KyScriptDialog::result()
{
    return d->result;
}

int KyScriptDialog::clickedButton()
{
    return d->clickedButton;
}

int KyScriptDialog::clickedButtonMenuItem()
{
    return d->buttonMenuItem;
}

int KyScriptDialog::autoClosed()
{
    return d->autoClose && d->clickedButton == AutoClosed ? 1 : 0;
}

/// A user action. In the normal mode the dialog closes, which leads to finish().
void KyScriptDialog::answer(int inButton, int inMenuItem, const QString& inLogText)
{
    const KyScriptKeeper::Scope scope(d->keeper);
    d->clickedButton = inButton;
    d->buttonMenuItem = inMenuItem;
    if (!d->manuallyCloseDialog)
        return inButton == 0 ? accept() : reject();

    log(inLogText);
    const QPointer<KyScriptDialog> self(this);
    Q_EMIT processed();
    if (!self)
        return;
    d->result = 0;
    d->clickedButton = NoButton;
    d->buttonMenuItem = -1;
}

void KyScriptDialog::done(int result)
{
    const KyScriptKeeper::Scope scope(d->keeper);
    JxDialog::done(result);
}

void KyScriptDialog::finish(int inResult)
{
    const KyScriptKeeper::Scope scope(d->keeper);
    d->result = inResult;
    log(finishText());
    Q_EMIT processed();
}

QString KyScriptDialog::finishText() const
{
    if (d->clickedButton == AutoClosed)
        return QStringLiteral("Rejected due to auto-close");
    if (d->clickedButton == EnterPressed)
        return QStringLiteral("Rejected because the user pressed enter in the line edit");
    if (d->clickedButton < 0)
        return QStringLiteral("Rejected without button click");

    const auto* pushButton = d->buttons->button(d->clickedButton);
    if (!dbc_holds(pushButton))
        return QString();
    const QString text =
        QStringLiteral("%1 with \"%2\"")
            .arg(d->clickedButton == 0 ? QStringLiteral("Accepted") : QStringLiteral("Rejected"),
                 pushButton->text());
    if (d->buttonMenuItem < 0)
        return text;
    const QMenu* menu = pushButton->menu();
    if (!dbc_holds(menu) || !dbc_holds(d->buttonMenuItem < menu->actions().size()))
        return text;
    return text + QStringLiteral(" -> \"%1\"").arg(menu->actions().at(d->buttonMenuItem)->text());
}

#include "JxDialog.h"

#include <QWindow>

JxDialog::JxDialog(QWidget* inOwner)
    : JxDialogWrapper<QDialog>(inOwner)
{}

void JxDialog::standAbove(QWidget& ioWindow, const QWidget* inOwner)
{
    QWindow* const owner = inOwner ? inOwner->windowHandle() : nullptr;
    // The dialog needs its native window for that, which without an owner may come when Qt wants it.
    if (owner && !ioWindow.windowHandle())
        ioWindow.winId();
    if (QWindow* const window = ioWindow.windowHandle())
        window->setTransientParent(owner);
}

void JxDialog::centerOn(QWidget& ioWindow, const QWidget& inOwner)
{
    QRect frame = ioWindow.frameGeometry();
    frame.moveCenter(inOwner.frameGeometry().center());
    ioWindow.move(frame.topLeft());
}

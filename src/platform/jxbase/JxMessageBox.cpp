#include "JxMessageBox.h"

JxMessageBox::JxMessageBox(QWidget* inParent, bool inStaysOnTop)
    : QMessageBox(inParent)
{
    setWindowFlag(Qt::WindowStaysOnTopHint, inStaysOnTop);
    // A widget tells of its end before it deletes its children, of which the box must not be one then.
    if (inParent)
        connect(inParent, &QObject::destroyed, this, &JxMessageBox::leaveParent);
}

int JxMessageBox::exec()
{
    setWindowModality(Qt::ApplicationModal);
    return QMessageBox::exec();
}

void JxMessageBox::leaveParent()
{
    setParent(nullptr, windowFlags());
    reject();
}

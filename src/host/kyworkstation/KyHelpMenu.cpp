#include "KyHelpMenu.h"

#include <rnlib/RnBuildInfo.h>

#include <QtWidgets/QMessageBox>

namespace {

constexpr int IconSize = 64;

} // namespace

KyHelpMenu::KyHelpMenu(QWidget* inParent)
    : QMenu(tr("&Help"), inParent)
{
    setObjectName(QStringLiteral("helpMenu"));
    QAction* action = addAction(tr("&About Ky Workstation"), this, &KyHelpMenu::about);
    action->setShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F1));
    action->setMenuRole(QAction::AboutRole);
}

void KyHelpMenu::about()
{
    auto* box = new QMessageBox(parentWidget());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(tr("About Ky Workstation"));
    box->setIconPixmap(box->windowIcon().pixmap(IconSize));
    box->setText(tr("<b>Ky Workstation</b> %1").arg(QString::fromStdString(RnBuildInfo::getBuildString(1))));
    box->setInformativeText(
        tr("A workstation for DICOM studies that scripts can extend. Not for diagnosis."));
    box->open();
}

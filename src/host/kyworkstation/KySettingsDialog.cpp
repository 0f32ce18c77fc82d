#include "KySettingsDialog.h"

#include "KySettingsTree.h"

#include <kybase/KyGUISizeManager.h>

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

KySettingsDialog::KySettingsDialog(QWidget* inParent)
    : QDialog(inParent)
{
    setWindowTitle(tr("Settings"));
    setObjectName(QStringLiteral("settings"));

    auto* search = new QLineEdit(this);
    search->setPlaceholderText(tr("Search the settings"));
    search->setAccessibleName(tr("Search the settings"));
    search->setClearButtonEnabled(true);
    auto* tree = new KySettingsTree(this);
    connect(search, &QLineEdit::textChanged, tree, &KySettingsTree::showMatching);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto* all = new QVBoxLayout(this);
    all->addWidget(search);
    all->addWidget(tree);
    all->addWidget(buttons);
    KyGUISizeManager::makeWidgetGeometryPersistent(this, "Settings", QSize(560, 500), QPoint(60, 60));
}

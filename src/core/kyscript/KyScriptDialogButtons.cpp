#include "KyScriptDialogButtons.h"

#include "KyScriptVariant.h"

#include <rnlib/RnContract.h>

#include <QtGui/QAction>
#include <QtWidgets/QButtonGroup>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPushButton>

#include <algorithm>

namespace {

QList<QAction*> menuItems(const QPushButton& inButton)
{
    return inButton.menu() ? inButton.menu()->actions() : QList<QAction*>();
}

} // namespace

KyScriptDialogButtons::KyScriptDialogButtons(QWidget* inDialog, QDialogButtonBox* inBox,
                                             QButtonGroup* inGroup)
    : QObject(inDialog)
    , mDialog(inDialog)
    , mBox(inBox)
    , mGroup(inGroup)
{
    connect(mBox, &QDialogButtonBox::clicked, this, [this](QAbstractButton* button) {
        Q_EMIT chosen(mGroup->id(button), -1,
                      QStringLiteral("User clicked button \"%1\"").arg(button->text()));
    });
}

int KyScriptDialogButtons::count() const
{
    return int(mGroup->buttons().size());
}

QPushButton* KyScriptDialogButtons::button(int inIndex) const
{
    return qobject_cast<QPushButton*>(mGroup->button(inIndex));
}

void KyScriptDialogButtons::set(const QVariantList& inDescriptions)
{
    const auto present = mGroup->buttons();
    for (QAbstractButton* old : present)
        mGroup->removeButton(old);
    mBox->clear();
    for (int i = 0; i < int(inDescriptions.size()); ++i)
        add(inDescriptions.at(i), i);
}

void KyScriptDialogButtons::add(const QVariant& inDescription, int inIndex)
{
    const bool isString = inDescription.typeId() == QMetaType::QString;
    const QVariantMap map = isString ? QVariantMap() : inDescription.toMap();
    const QString text = isString ? inDescription.toString() : map.value(QStringLiteral("text")).toString();
    QPushButton* button =
        mBox->addButton(text, inIndex == 0 ? QDialogButtonBox::AcceptRole : QDialogButtonBox::RejectRole);
    const QString toolTip = map.value(QStringLiteral("toolTip")).toString();
    if (!toolTip.isEmpty())
        button->setToolTip(toolTip);
    const QVariantList items = KyScriptVariant::listOf(map.value(QStringLiteral("menuItems")));
    if (!items.isEmpty())
        button->setMenu(makeMenu(text, items, inIndex));
    button->setDefault(false);
    button->setAutoDefault(false);
    mGroup->addButton(button, inIndex);
}

/// The menu is a child of the dialog, so that it outlives its button: a handler that a choice leads to may
/// replace the buttons.
QMenu* KyScriptDialogButtons::makeMenu(const QString& inButtonText, const QVariantList& inItems, int inIndex)
{
    auto* menu = new QMenu(mDialog);
    for (int i = 0; i < int(inItems.size()); ++i) {
        const QVariantMap item = inItems.at(i).toMap();
        const QString text = item.value(QStringLiteral("text")).toString();
        const QString toolTip = item.value(QStringLiteral("toolTip")).toString();
        QAction* action = menu->addAction(text);
        if (!toolTip.isEmpty()) {
            menu->setToolTipsVisible(true);
            action->setToolTip(toolTip);
        }
        const QString log = QStringLiteral("User clicked button \"%1\" -> \"%2\"").arg(inButtonText, text);
        connect(action, &QAction::triggered, this, [=, this] { Q_EMIT chosen(inIndex, i, log); });
    }
    return menu;
}

void KyScriptDialogButtons::setToolTips(const QStringList& inToolTips)
{
    const int size = std::min(int(inToolTips.size()), count());
    for (int i = 0; i < size; ++i)
        mGroup->button(i)->setToolTip(inToolTips.at(i));
}

void KyScriptDialogButtons::setEnabled(const QVariant& inIndex, bool inEnabled)
{
    if (inIndex.typeId() == QMetaType::Int || inIndex.typeId() == QMetaType::Double)
        setButtonEnabled(inIndex.toInt(), inEnabled);
    else
        setItemEnabled(KyScriptVariant::listOf(inIndex), inEnabled);
}

void KyScriptDialogButtons::setButtonEnabled(int inIndex, bool inEnabled)
{
    if (inIndex < 0 || inIndex >= count())
        return;
    QPushButton* const button = this->button(inIndex);
    if (!dbc_holds(button))
        return;
    button->setEnabled(inEnabled);
    const auto items = menuItems(*button);
    for (QAction* item : items)
        item->setEnabled(inEnabled);
}

void KyScriptDialogButtons::setItemEnabled(const QVariantList& l, bool inEnabled)
{
    if (!dbc_holds(l.size() >= 2))
        return;
    const int index = l.at(0).toInt(), item = l.at(1).toInt();
    if (index < 0 || index >= count())
        return;
    const QPushButton* const button = this->button(index);
    if (!dbc_holds(button))
        return;
    const auto items = menuItems(*button);
    if (item >= 0 && item < items.size())
        items.at(item)->setEnabled(inEnabled);
}

void KyScriptDialogButtons::setAllEnabled(const QVariantList& inIndices, bool inEnabled)
{
    QVariantList list = inIndices;
    if (list.isEmpty()) {
        for (int i = 0; i < count(); ++i)
            list.append(i);
    }
    for (const QVariant& index : std::as_const(list))
        setEnabled(index, inEnabled);
}

#include "KySettingsDialog.h"

#include "KyPropertyEditor.h"

#include <kybase/KyGUISizeManager.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <QtCore/QRegularExpression>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>

namespace {

QString lastWord(const QString& inPath)
{
    return inPath.mid(inPath.lastIndexOf(QLatin1Char('.')) + 1);
}

QString parentPath(const QString& inPath)
{
    return inPath.left(std::max<qsizetype>(inPath.lastIndexOf(QLatin1Char('.')), 0));
}

/// The label of a path, or else its last word, with blanks before capitals: "AutoClose" is "Auto Close".
QString labelOf(const QString& inPath)
{
    const QString label = OvTranslationProperty::label(inPath);
    static const QRegularExpression wordStart(QStringLiteral("(?<=[a-z])(?=[A-Z])"));
    return label.isEmpty() ? lastWord(inPath).replace(wordStart, QStringLiteral(" ")) : label;
}

/// Whether an item or one below it is to be shown; hides what isn't.
bool showMatching(QTreeWidgetItem& ioItem, const QString& inText)
{
    const bool isMatch = ioItem.text(0).contains(inText, Qt::CaseInsensitive);
    bool isShown = isMatch;
    for (int i = 0; i < ioItem.childCount(); ++i)
        isShown = showMatching(*ioItem.child(i), isMatch ? QString() : inText) || isShown;
    ioItem.setHidden(!isShown);
    return isShown;
}

} // namespace

KySettingsDialog::KySettingsDialog(QWidget* inParent)
    : QDialog(inParent)
    , mTree(new QTreeWidget(this))
    , mSearch(new QLineEdit(this))
{
    setWindowTitle(tr("Settings"));
    setObjectName(QStringLiteral("settings"));
    layOut();
    fill();
    connect(mSearch, &QLineEdit::textChanged, this, &KySettingsDialog::filter);
    KyGUISizeManager::makeWidgetGeometryPersistent(this, "Settings", QSize(560, 420), QPoint(60, 60));
}

void KySettingsDialog::layOut()
{
    mSearch->setPlaceholderText(tr("Search the settings"));
    mSearch->setAccessibleName(tr("Search the settings"));
    mSearch->setClearButtonEnabled(true);
    mTree->setAccessibleName(tr("Settings"));
    mTree->setColumnCount(2);
    mTree->setHeaderLabels({tr("Setting"), tr("Value")});
    mTree->setSelectionMode(QAbstractItemView::NoSelection);
    mTree->setFocusPolicy(Qt::NoFocus);
    mTree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto* all = new QVBoxLayout(this);
    all->addWidget(mSearch);
    all->addWidget(mTree);
    all->addWidget(buttons);
}

void KySettingsDialog::fill()
{
    OvPropertyPool* pool = OvPropertyPool::instance();
    if (!pool)
        return;
    for (OvVariant* property : pool->variants())
        add(*property);
    mTree->sortItems(0, Qt::AscendingOrder);
    mTree->expandAll();
    pool->observeAdditions(this, [this](const OvVariant* added) {
        add(*OvPropertyPool::instance()->variant(added->identifier()));
        filter(mSearch->text());
    });
}

void KySettingsDialog::add(OvVariant& ioProperty)
{
    const QString id = QString::fromLatin1(ioProperty.identifier().c_str());
    auto* item = new QTreeWidgetItem(group(parentPath(id)), {labelOf(id)});
    item->setToolTip(0, id);
    mTree->setItemWidget(item, 1, new KyPropertyEditor(ioProperty, labelOf(id), mTree));
}

/// The item of a group, made with those above it if need be; the tree's root for the empty path. Groups of
/// one label are one to the user.
QTreeWidgetItem* KySettingsDialog::group(const QString& inPath)
{
    if (inPath.isEmpty())
        return mTree->invisibleRootItem();
    QTreeWidgetItem* parent = group(parentPath(inPath));
    const QString label = labelOf(inPath);
    for (int i = 0; i < parent->childCount(); ++i) {
        if (parent->child(i)->text(0) == label)
            return parent->child(i);
    }
    auto* made = new QTreeWidgetItem(parent, {label});
    QFont bold = mTree->font();
    bold.setBold(true);
    made->setFont(0, bold);
    made->setExpanded(true);
    return made;
}

void KySettingsDialog::filter(const QString& inText)
{
    for (int i = 0; i < mTree->topLevelItemCount(); ++i)
        showMatching(*mTree->topLevelItem(i), inText);
}

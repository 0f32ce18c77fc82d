#include "KySettingsTree.h"

#include "KyPropertyEditor.h"

#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QSpinBox>

#include <utility>

namespace {

constexpr int IdRole = Qt::UserRole; ///< Of a property's row; groups have none.
constexpr int RowSpace = 2;
constexpr int RowsAround = 50;
constexpr int FewRows = 100;

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

OvVariant* propertyOf(const QString& inId)
{
    const OvPropertyPool* pool = OvPropertyPool::instance();
    return pool ? pool->variant(inId.toLatin1().toStdString()) : nullptr;
}

/// Without regard of case, and numbers by their value.
QCollator alphabeticalOrder()
{
    // The C locale has no such order.
    const QLocale user;
    QCollator order(user.language() == QLocale::C ? QLocale(QLocale::English) : user);
    order.setCaseSensitivity(Qt::CaseInsensitive);
    order.setNumericMode(true);
    return order;
}

/// All rows have the height that an editor takes, so that none moves when one is made.
QSize rowSize()
{
    static const int editorHeight = QSpinBox().sizeHint().height();
    return {1, editorHeight + RowSpace};
}

/// Whether an item or one below it is to be shown; hides what isn't.
bool hideOthers(QTreeWidgetItem& ioItem, const QString& inText)
{
    const bool isMatch = ioItem.text(0).contains(inText, Qt::CaseInsensitive);
    bool isShown = isMatch;
    for (int i = 0; i < ioItem.childCount(); ++i)
        isShown = hideOthers(*ioItem.child(i), isMatch ? QString() : inText) || isShown;
    ioItem.setHidden(!isShown);
    return isShown;
}

} // namespace

KySettingsTree::KySettingsTree(QWidget* inParent)
    : QTreeWidget(inParent)
    , mRoot(invisibleRootItem())
    , mOrder(alphabeticalOrder())
{
    setAccessibleName(tr("Settings"));
    setColumnCount(2);
    setHeaderLabels({tr("Setting"), tr("Value")});
    setSelectionMode(QAbstractItemView::NoSelection);
    setFocusPolicy(Qt::NoFocus);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setUniformRowHeights(true);
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &KySettingsTree::makeEditorsInView);
    connect(this, &QTreeWidget::itemExpanded, this, &KySettingsTree::updateLater);
    connect(this, &QTreeWidget::itemCollapsed, this, &KySettingsTree::updateLater);
    connect(qApp, &QApplication::focusChanged, this,
            [this](const QWidget*, const QWidget* widget) { showFocused(widget); });
    follow();
}

/// The end of its parts must not be heard as a scrolling, or as a way of the focus.
KySettingsTree::~KySettingsTree()
{
    disconnect(verticalScrollBar(), nullptr, this, nullptr);
    disconnect(qApp, nullptr, this, nullptr);
}

void KySettingsTree::follow()
{
    OvPropertyPool* pool = OvPropertyPool::instance();
    if (!pool)
        return;
    for (const OvVariant* property : pool->variants())
        mNewIds.append(QString::fromLatin1(property->identifier().c_str()));
    catchUp();
    pool->observeAdditions(this, [this](const OvVariant* added) {
        mNewIds.append(QString::fromLatin1(added->identifier().c_str()));
        updateLater();
    });
    OvTranslationProperty::observeLabels(this, [this](const QString& path) {
        mNewPaths.append(path);
        updateLater();
    });
}

/// Makes rows for new properties, and puts those below a path with a new label anew where they belong.
void KySettingsTree::catchUp()
{
    const QStringList paths = std::exchange(mNewPaths, QStringList());
    for (const QString& path : paths) {
        for (const QString& id : idsBelow(path)) {
            remove(id);
            mNewIds.append(id);
        }
    }
    mGroups.clear();
    const QStringList ids = std::exchange(mNewIds, QStringList());
    if (ids.size() > FewRows) {
        rebuild(mItems.keys() + ids);
        return;
    }
    for (const QString& id : ids)
        add(id);
}

/// Makes all rows apart from the tree, which would lay itself out anew for each of them.
void KySettingsTree::rebuild(const QStringList& inIds)
{
    const int position = verticalScrollBar()->value();
    clear();
    mItems.clear();
    QTreeWidgetItem root;
    mRoot = &root;
    for (const QString& id : inIds)
        add(id);
    mRoot = invisibleRootItem();
    mRoot->addChildren(root.takeChildren());
    expandAll();
    verticalScrollBar()->setValue(position);
}

QTreeWidgetItem* KySettingsTree::item(const QString& inId)
{
    catchUp();
    return mItems.value(inId);
}

void KySettingsTree::add(const QString& inId)
{
    const QString label = labelOf(inId);
    auto* made = new QTreeWidgetItem({label});
    made->setToolTip(0, inId);
    made->setData(0, IdRole, inId);
    made->setSizeHint(1, rowSize());
    QTreeWidgetItem* parent = group(parentPath(inId));
    parent->insertChild(place(*parent, label), made);
    mItems.insert(inId, made);
}

void KySettingsTree::remove(const QString& inId)
{
    const QTreeWidgetItem* gone = mItems.take(inId);
    // Groups that have nothing below them any more go with it.
    while (gone && gone->parent() && gone->parent()->childCount() == 1)
        gone = gone->parent();
    delete gone;
}

/// The property of the path itself, and all whose id goes on with a dot.
QStringList KySettingsTree::idsBelow(const QString& inPath) const
{
    const QString below = inPath + QLatin1Char('.');
    QStringList ids;
    for (auto it = mItems.lowerBound(inPath); it != mItems.end() && it.key().startsWith(inPath); ++it) {
        if (it.key() == inPath || it.key().startsWith(below))
            ids.append(it.key());
    }
    return ids;
}

/// The item of a group, made with those above it if need be; the tree's root for the empty path.
QTreeWidgetItem* KySettingsTree::group(const QString& inPath)
{
    if (inPath.isEmpty())
        return mRoot;
    if (QTreeWidgetItem* known = mGroups.value(inPath))
        return known;
    QTreeWidgetItem* parent = group(parentPath(inPath));
    const QString label = labelOf(inPath);
    QTreeWidgetItem* found = findGroup(*parent, label);
    if (!found) {
        found = new QTreeWidgetItem({label});
        QFont bold = font();
        bold.setBold(true);
        found->setFont(0, bold);
        found->setSizeHint(1, rowSize());
        parent->insertChild(place(*parent, label), found);
        found->setExpanded(true);
    }
    mGroups.insert(inPath, found);
    return found;
}

QTreeWidgetItem* KySettingsTree::findGroup(const QTreeWidgetItem& inParent, const QString& inLabel) const
{
    for (int i = place(inParent, inLabel) - 1; i >= 0; --i) {
        QTreeWidgetItem* child = inParent.child(i);
        if (mOrder.compare(child->text(0), inLabel) != 0)
            return nullptr;
        if (child->text(0) == inLabel && !child->data(0, IdRole).isValid())
            return child;
    }
    return nullptr;
}

/// Where an item of that label belongs: behind all that are not greater.
int KySettingsTree::place(const QTreeWidgetItem& inParent, const QString& inLabel) const
{
    int begin = 0, end = inParent.childCount();
    while (begin < end) {
        const int middle = (begin + end) / 2;
        if (mOrder.compare(inParent.child(middle)->text(0), inLabel) <= 0)
            begin = middle + 1;
        else
            end = middle;
    }
    return begin;
}

void KySettingsTree::showMatching(const QString& inText)
{
    mSearched = inText;
    for (int i = 0; i < topLevelItemCount(); ++i)
        hideOthers(*topLevelItem(i), inText);
    makeEditorsInView();
}

/// Once for any number of changes.
void KySettingsTree::updateLater()
{
    if (std::exchange(mIsUpdatePending, true))
        return;
    QTimer::singleShot(0, this, [this] {
        mIsUpdatePending = false;
        catchUp();
        showMatching(mSearched);
    });
}

void KySettingsTree::resizeEvent(QResizeEvent* inEvent)
{
    QTreeWidget::resizeEvent(inEvent);
    makeEditorsInView();
}

void KySettingsTree::showEvent(QShowEvent* inEvent)
{
    QTreeWidget::showEvent(inEvent);
    makeEditorsInView();
}

/// Makes the editors of the rows in view and of some before and behind them, which the Tab key can reach.
void KySettingsTree::makeEditorsInView()
{
    QTreeWidgetItem* row = isVisible() ? itemAt(0, 0) : nullptr;
    for (int i = 0; row && i < RowsAround && itemAbove(row); ++i)
        row = itemAbove(row);
    int behind = 0;
    const KyPropertyEditor* previous = nullptr;
    for (; row && behind < RowsAround; row = itemBelow(row)) {
        if (visualItemRect(row).top() > viewport()->height())
            ++behind;
        KyPropertyEditor* editor = editorOf(*row);
        if (previous && editor)
            editor->followInTabOrder(*previous);
        previous = editor ? editor : previous;
    }
}

/// The editor of a property's row, made if need be; null for a group.
KyPropertyEditor* KySettingsTree::editorOf(QTreeWidgetItem& ioItem)
{
    if (QWidget* present = itemWidget(&ioItem, 1))
        return static_cast<KyPropertyEditor*>(present);
    const QVariant id = ioItem.data(0, IdRole);
    OvVariant* property = id.isValid() ? propertyOf(id.toString()) : nullptr;
    if (!property)
        return nullptr;
    auto* editor = new KyPropertyEditor(*property, ioItem.text(0), viewport());
    setItemWidget(&ioItem, 1, editor);
    return editor;
}

/// Brings the row of an editor that the Tab key has reached into view.
void KySettingsTree::showFocused(const QWidget* inWidget)
{
    if (!inWidget || !viewport()->isAncestorOf(inWidget) || QApplication::mouseButtons() != Qt::NoButton)
        return;
    while (inWidget->parentWidget() != viewport())
        inWidget = inWidget->parentWidget();
    if (QTreeWidgetItem* row = mItems.value(inWidget->objectName()))
        scrollToItem(row);
}

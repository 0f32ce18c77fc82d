#include "KyLogPane.h"

#include "KyLogModel.h"

#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTreeView>

#include <algorithm>

void KyLogFilter::setLeastLevel(int inLevel)
{
    mLeastLevel = inLevel;
    invalidateFilter();
}

void KyLogFilter::setText(const QString& inText)
{
    mText = inText;
    invalidateFilter();
}

bool KyLogFilter::filterAcceptsRow(int inRow, const QModelIndex& inParent) const
{
    const QAbstractItemModel& lines = *sourceModel();
    if (lines.index(inRow, 0, inParent).data(KyLogModel::LevelRole).toInt() < mLeastLevel)
        return false;
    const auto holdsText = [&](int column, int role) {
        return lines.index(inRow, column, inParent)
            .data(role)
            .toString()
            .contains(mText, Qt::CaseInsensitive);
    };
    return mText.isEmpty() || holdsText(KyLogModel::Text, KyLogModel::WholeTextRole) ||
           holdsText(KyLogModel::Context, Qt::DisplayRole);
}

KyLogPane::KyLogPane(RnLogFile& inLog, const QString& inName, QWidget* inParent)
    : QWidget(inParent)
    , mModel(new KyLogModel(inLog, this))
    , mFilter(new KyLogFilter(this))
    , mView(new QTreeView(this))
    , mLevels(new QComboBox(this))
    , mSearch(new QLineEdit(this))
{
    mFilter->setSourceModel(mModel);
    mView->setModel(mFilter);
    layOut(inName);
    connect(mLevels, &QComboBox::currentIndexChanged, mFilter, &KyLogFilter::setLeastLevel);
    connect(mSearch, &QLineEdit::textChanged, mFilter, &KyLogFilter::setText);

    connect(mView->verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this](int value) { mIsAtEnd = value >= mView->verticalScrollBar()->maximum(); });
    connect(mView->verticalScrollBar(), &QScrollBar::rangeChanged, this, &KyLogPane::follow);
}

void KyLogPane::layOut(const QString& inName)
{
    for (int level = 0; level <= 3; ++level)
        mLevels->addItem(level == 0   ? tr("All levels")
                         : level == 3 ? tr("Errors")
                                      : tr("%1 and above").arg(KyLogModel::levelName(level)));
    mLevels->setObjectName(inName + QStringLiteral("Levels"));
    mLevels->setAccessibleName(tr("Least level on view"));
    mSearch->setObjectName(inName + QStringLiteral("Search"));
    mSearch->setPlaceholderText(tr("Search the log"));
    mSearch->setAccessibleName(tr("Search the log"));
    mSearch->setClearButtonEnabled(true);
    auto* clear = new QPushButton(tr("&Clear"), this);
    connect(clear, &QPushButton::clicked, mModel, &KyLogModel::clear);

    mView->setObjectName(inName + QStringLiteral("View"));
    mView->setAccessibleName(tr("Log"));
    mView->setRootIsDecorated(false);
    mView->setUniformRowHeights(true);
    mView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mView->header()->setStretchLastSection(true);
    const int digit = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    mView->setColumnWidth(KyLogModel::Time, 16 * digit);
    mView->setColumnWidth(KyLogModel::Level, 16 * digit);
    mView->setColumnWidth(KyLogModel::Context, 20 * digit);
    auto* copy = new QAction(tr("&Copy"), this);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(copy, &QAction::triggered, this, &KyLogPane::copySelection);
    mView->addAction(copy);
    mView->setContextMenuPolicy(Qt::ActionsContextMenu);

    auto* level = new QLabel(tr("&Level:"), this);
    level->setBuddy(mLevels);
    auto* tools = new QHBoxLayout;
    tools->addWidget(level);
    tools->addWidget(mLevels);
    tools->addWidget(mSearch, 1);
    tools->addWidget(clear);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(4, 4, 4, 4);
    all->addLayout(tools);
    all->addWidget(mView);
}

void KyLogPane::follow()
{
    if (mIsAtEnd)
        mView->scrollToBottom();
}

void KyLogPane::copySelection() const
{
    QModelIndexList rows = mView->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    QStringList lines;
    for (const QModelIndex& row : rows) {
        QStringList cells;
        for (int column = 0; column < KyLogModel::Text; ++column)
            cells.append(row.siblingAtColumn(column).data().toString());
        cells.append(row.data(KyLogModel::WholeTextRole).toString());
        lines.append(cells.join(QLatin1Char('\t')));
    }
    QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

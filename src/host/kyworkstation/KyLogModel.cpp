#include "KyLogModel.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>

#include <utility>
#include <vector>

namespace {

/// A row shows one line; the tool tip has all.
QString firstLine(const QString& inText)
{
    const auto end = inText.indexOf(QLatin1Char('\n'));
    return end < 0 ? inText : inText.left(end) + QStringLiteral(" …");
}

} // namespace

/// Hands lines of any thread to the model. It lives on in the log's hands while a line is being written.
class KyLogModel::Sink final : public RnLogSink
{
public:
    explicit Sink(KyLogModel* inModel)
        : mModel(inModel)
    {}

    void write(const RnLogRecord& inRecord) override
    {
        const std::scoped_lock lock(mMutex);
        mRecords.push_back(inRecord);
        if (mRecords.size() > MaxLines)
            mRecords.pop_front();
        if (!std::exchange(mIsPosted, true))
            QMetaObject::invokeMethod(mModel, &KyLogModel::takeLines, Qt::QueuedConnection);
    }

    std::deque<RnLogRecord> take()
    {
        const std::scoped_lock lock(mMutex);
        mIsPosted = false;
        return std::exchange(mRecords, {});
    }

private:
    KyLogModel* const mModel;
    std::mutex mMutex;
    std::deque<RnLogRecord> mRecords;
    bool mIsPosted = false;
};

KyLogModel::KyLogModel(RnLogFile& inLog, QObject* inParent)
    : QAbstractTableModel(inParent)
    , mLog(inLog)
    , mSink(std::make_shared<Sink>(this))
{
    mLog.addSink(mSink);
}

KyLogModel::~KyLogModel()
{
    mLog.removeSink(mSink.get());
}

KyLogModel::Line KyLogModel::lineOf(const RnLogRecord& inRecord)
{
    const auto since = inRecord.time.time_since_epoch();
    const auto msecs = std::chrono::duration_cast<std::chrono::milliseconds>(since).count();
    return {QDateTime::fromMSecsSinceEpoch(msecs), inRecord.level,
            QString::fromStdString(RnLogFile::toUtf8(inRecord.context)),
            QString::fromStdString(RnLogFile::toUtf8(inRecord.text)).trimmed()};
}

void KyLogModel::takeLines()
{
    const std::deque<RnLogRecord> records = mSink->take();
    const int excess = std::min(int(mLines.size() + records.size()) - MaxLines, int(mLines.size()));
    if (excess > 0) {
        beginRemoveRows(QModelIndex(), 0, excess - 1);
        mLines.erase(mLines.begin(), mLines.begin() + excess);
        endRemoveRows();
    }
    if (records.empty())
        return;
    beginInsertRows(QModelIndex(), int(mLines.size()), int(mLines.size() + records.size()) - 1);
    for (const RnLogRecord& record : records)
        mLines.push_back(lineOf(record));
    endInsertRows();
}

void KyLogModel::clear()
{
    beginResetModel();
    mLines.clear();
    endResetModel();
}

int KyLogModel::rowCount(const QModelIndex& inParent) const
{
    return inParent.isValid() ? 0 : int(mLines.size());
}

int KyLogModel::columnCount(const QModelIndex& inParent) const
{
    return inParent.isValid() ? 0 : ColumnCount;
}

QString KyLogModel::levelName(int inLevel)
{
    switch (inLevel) {
    case 0:
        return tr("Operation");
    case 1:
        return tr("Detail");
    case 2:
        return tr("Warning");
    default:
        return tr("Error");
    }
}

QVariant KyLogModel::display(const Line& inLine, int inColumn) const
{
    switch (inColumn) {
    case Time:
        return inLine.time.toString(QStringLiteral("HH:mm:ss.zzz"));
    case Level:
        return levelName(inLine.level);
    case Context:
        return inLine.context;
    default:
        return firstLine(inLine.text);
    }
}

QVariant KyLogModel::data(const QModelIndex& inIndex, int inRole) const
{
    if (!checkIndex(inIndex, CheckIndexOption::IndexIsValid))
        return QVariant();
    const Line& line = mLines[size_t(inIndex.row())];
    switch (inRole) {
    case Qt::DisplayRole:
        return display(line, inIndex.column());
    case Qt::ToolTipRole:
        return inIndex.column() == Text ? line.text : QVariant();
    case WholeTextRole:
        return line.text;
    case LevelRole:
        return line.level;
    case Qt::DecorationRole:
        if (inIndex.column() != Level || line.level < 2)
            return QVariant();
        return QApplication::style()->standardIcon(line.level == 2 ? QStyle::SP_MessageBoxWarning
                                                                   : QStyle::SP_MessageBoxCritical);
    default:
        return QVariant();
    }
}

QVariant KyLogModel::headerData(int inSection, Qt::Orientation inOrientation, int inRole) const
{
    if (inOrientation != Qt::Horizontal || inRole != Qt::DisplayRole)
        return QVariant();
    return QStringList{tr("Time"), tr("Level"), tr("Context"), tr("Text")}.value(inSection);
}

#pragma once

#include <rnlib/RnLogFile.h>

#include <QtCore/QAbstractTableModel>
#include <QtCore/QDateTime>

#include <deque>
#include <memory>

/// The newest lines of a log, from its own start on. Made by the log pane.
///
/// Lines of any thread reach it with the next turn of the GUI thread's event loop.
class KyLogModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Time,
        Level,
        Context,
        Text,
        ColumnCount
    };

    /// The level of a line as a number.
    static constexpr int LevelRole = Qt::UserRole;
    /// The whole text of a line, of which the display has the first line only.
    static constexpr int WholeTextRole = Qt::UserRole + 1;

    /// How many lines it keeps.
    static constexpr int MaxLines = 10'000;

    /// The log must outlive the model.
    KyLogModel(RnLogFile& inLog, QObject* inParent);
    ~KyLogModel() override;

    void clear();

    int rowCount(const QModelIndex& inParent = QModelIndex()) const override;
    int columnCount(const QModelIndex& inParent = QModelIndex()) const override;
    QVariant data(const QModelIndex& inIndex, int inRole = Qt::DisplayRole) const override;
    QVariant headerData(int inSection, Qt::Orientation inOrientation,
                        int inRole = Qt::DisplayRole) const override;

    /// What the user reads for a level.
    static QString levelName(int inLevel);

private:
    class Sink;
    struct Line
    {
        QDateTime time;
        int level = 1;
        QString context;
        QString text;
    };

    static Line lineOf(const RnLogRecord& inRecord);
    void takeLines();
    QVariant display(const Line& inLine, int inColumn) const;

    RnLogFile& mLog;
    std::deque<Line> mLines;
    std::shared_ptr<Sink> mSink;
};

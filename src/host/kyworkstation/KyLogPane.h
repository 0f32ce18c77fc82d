#pragma once

#include <QtCore/QSortFilterProxyModel>
#include <QtWidgets/QWidget>

class KyLogModel;
class RnLogFile;
class QComboBox;
class QLineEdit;
class QTreeView;

/// The lines of a log model of a least level that hold a text, in any letter case.
class KyLogFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setLeastLevel(int inLevel);
    void setText(const QString& inText);

protected:
    bool filterAcceptsRow(int inRow, const QModelIndex& inParent) const override;

private:
    int mLeastLevel = 0;
    QString mText;
};

/// A log with a choice of levels and a search. Made by the main window, for the log of the process, and by
/// the pane of the session log.
///
/// It follows the newest line as long as that is on view.
class KyLogPane : public QWidget
{
    Q_OBJECT

public:
    /// \a inLog must outlive the pane. The names of the widgets begin with \a inName.
    KyLogPane(RnLogFile& inLog, const QString& inName, QWidget* inParent);

private:
    void layOut(const QString& inName);
    void follow();
    void copySelection() const;

    KyLogModel* const mModel;
    KyLogFilter* const mFilter;
    QTreeView* const mView;
    QComboBox* const mLevels;
    QLineEdit* const mSearch;
    bool mIsAtEnd = true;
};

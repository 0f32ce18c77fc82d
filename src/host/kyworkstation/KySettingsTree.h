#pragma once

#include <QtCore/QCollator>
#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtWidgets/QTreeWidget>

class KyPropertyEditor;

/// The properties of the application under the labels of each level of their ids, in alphabetical order, with
/// an editor each. Groups of one label are one to the user; a path without a label shows its own last word.
///
/// New properties, and new labels of those that are there, show when control is back in the event loop.
/// Editors are made when their row comes into view, so that thousands of properties cost no more than those
/// that the user looks at.
///
/// Made behind the pool of properties and ended before it.
class KySettingsTree : public QTreeWidget
{
    Q_OBJECT

public:
    explicit KySettingsTree(QWidget* inParent);
    ~KySettingsTree() override;

    /// Shows only groups and properties whose label has \a inText in it, with what is above and below them;
    /// everything for the empty text.
    void showMatching(const QString& inText);

    /// The row of a property; null for none.
    QTreeWidgetItem* item(const QString& inId);

protected:
    void resizeEvent(QResizeEvent* inEvent) override;
    void showEvent(QShowEvent* inEvent) override;

private:
    void follow();
    void catchUp();
    void rebuild(const QStringList& inIds);
    void add(const QString& inId);
    void remove(const QString& inId);
    QStringList idsBelow(const QString& inPath) const;
    QTreeWidgetItem* group(const QString& inPath);
    QTreeWidgetItem* findGroup(const QTreeWidgetItem& inParent, const QString& inLabel) const;
    int place(const QTreeWidgetItem& inParent, const QString& inLabel) const;
    void updateLater();
    void makeEditorsInView();
    KyPropertyEditor* editorOf(QTreeWidgetItem& ioItem);
    void showFocused(const QWidget* inWidget);

    QTreeWidgetItem* mRoot;                   ///< What new rows come under: that of the tree, or a new one.
    QMap<QString, QTreeWidgetItem*> mItems;   ///< By the id of the property.
    QHash<QString, QTreeWidgetItem*> mGroups; ///< By path; several paths may share one.
    const QCollator mOrder;
    QStringList mNewIds;   ///< Of properties that have no row yet.
    QStringList mNewPaths; ///< That have been labelled anew.
    QString mSearched;
    bool mIsUpdatePending = false;
};

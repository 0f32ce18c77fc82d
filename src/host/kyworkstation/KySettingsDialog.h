#pragma once

#include <QtWidgets/QDialog>

class OvVariant;
class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

/// All properties of the application under their translated groups and labels, with an editor each. Changes
/// hold at once. A path without a label shows its own last word. Made by the main window, not modal.
class KySettingsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit KySettingsDialog(QWidget* inParent);

private:
    void layOut();
    void fill();
    void add(OvVariant& ioProperty);
    QTreeWidgetItem* group(const QString& inPath);
    void filter(const QString& inText);

    QTreeWidget* const mTree;
    QLineEdit* const mSearch;
};

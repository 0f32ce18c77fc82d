#pragma once

#include <QtWidgets/QDialog>

/// All properties of the application with an editor each, and a field to search them. Changes hold at once.
/// Made by the main window, not modal.
class KySettingsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit KySettingsDialog(QWidget* inParent);
};

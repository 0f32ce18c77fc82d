#pragma once

#include <QtWidgets/QMenu>

/// The menu that tells what this program is. Made by the main window.
class KyHelpMenu : public QMenu
{
    Q_OBJECT

public:
    explicit KyHelpMenu(QWidget* inParent);

private:
    void about();
};

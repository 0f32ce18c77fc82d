#pragma once

#include "JxTopLevelWidget.h"

#include <QMainWindow>

/// A main window of the client: a top-level window with menus, tool bars and panels.
///
/// It belongs to its parent, or without one to whoever made it. GUI thread only.
class JxMainWindow : public JxTopLevelWidgetWrapper<QMainWindow>
{
    Q_OBJECT

public:
    explicit JxMainWindow(QWidget* inParent = nullptr, Qt::WindowFlags inFlags = {});
};

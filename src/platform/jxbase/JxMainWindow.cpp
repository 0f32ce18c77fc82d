#include "JxMainWindow.h"

JxMainWindow::JxMainWindow(QWidget* inParent, Qt::WindowFlags inFlags)
    : JxTopLevelWidgetWrapper<QMainWindow>(inParent, inFlags)
{}

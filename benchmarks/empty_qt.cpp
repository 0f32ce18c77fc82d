// The least Qt Widgets program with a window: the yardstick of a program's start.

#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    if (argc > 1) // such as --version
        return 0;
    QMainWindow window;
    window.resize(1100, 720);
    window.show();
    return QApplication::exec();
}

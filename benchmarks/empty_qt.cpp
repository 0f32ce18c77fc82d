// The least Qt Widgets program that comes to its end by itself: the yardstick of a program's start.

#include <QtWidgets/QApplication>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    return 0;
}

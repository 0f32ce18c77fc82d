// A WebEngine program that does nothing but show an empty page, as a yardstick: it prints a line when its
// window is there.

#include <QtCore/QTimer>
#include <QtWebEngineWidgets/QWebEngineView>
#include <QtWidgets/QApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWebEngineView view;
    view.setUrl(QUrl(QStringLiteral("about:blank")));
    view.show();
    QTimer::singleShot(0, [] {
        std::puts("shown");
        std::fflush(stdout);
    });
    return QApplication::exec();
}

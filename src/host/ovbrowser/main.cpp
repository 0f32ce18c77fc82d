// ovbrowser: the browser as a program of its own.

#include "OvBrowserOptions.h"
#include "OvBrowserPipe.h"

#include <webengine/KyWebEngineProfile.h>
#include <webengine/KyWebEngineSandbox.h>
#include <webengine/KyWebEngineView.h>

#include <kywebview/KyWebViewBrowser.h>
#include <kywebview/KyWebViewRuntime.h>
#include <kywebview/KyWebViewWidget.h>

#include <QtCore/QLoggingCategory>
#include <QtCore/QStandardPaths>
#include <QtGui/QIcon>
#include <QtWebEngineCore/QtWebEngineCore>
#include <QtWidgets/QApplication>

#include <cstdio>

namespace {

constexpr int Failed = 1;
constexpr int BadInput = 2;

int fail(int inStatus, const QString& inReason)
{
    std::fprintf(stderr, "ovbrowser: %s\n", qPrintable(inReason));
    return inStatus;
}

/// Views that keep their data in one folder, whatever a browser calls itself.
class Runtime final : public KyWebViewRuntime
{
public:
    explicit Runtime(QString inFolder)
        : mFolder(std::move(inFolder))
    {}
    QString version() const override { return QString::fromLatin1(qWebEngineVersion()); }
    KyWebView* makeView(const QString&, QWidget* inParent) override
    {
        return new KyWebEngineView(KyWebEngineProfile::of(mFolder), inParent);
    }

private:
    const QString mFolder;
};

QString dataFolder(const OvBrowserOptions& inOptions)
{
    const QString root = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    return KyWebEngineProfile::folder(root, inOptions.userDataFolder);
}

/// The name that a script has given the browser, as windows of the application have it in their title.
QString title(const OvBrowserOptions& inOptions)
{
    const QString prefix = QStringLiteral("ovbrowser-OrvaneBrowser.");
    const QString name =
        inOptions.userDataFolder.startsWith(prefix) ? inOptions.userDataFolder.mid(prefix.size()) : QString();
    return name == QLatin1String("Default") ? QString() : name;
}

/// Commands that have come meanwhile wait in the pipe until the window is there.
int serve(OvBrowserPipe& ioPipe, const OvBrowserOptions& inOptions)
{
    QApplication::setQuitOnLastWindowClosed(false);
    Runtime runtime(dataFolder(inOptions));
    KyWebViewBrowser browser(nullptr, QString());
    browser.setWindowTitle(title(inOptions));
    browser.setReceiver([&](const QString& message) { ioPipe.send(message); });
    QObject::connect(&ioPipe, &OvBrowserPipe::commandReceived, &browser, &KyWebViewBrowser::receiveCommand);
    QObject::connect(&ioPipe, &OvBrowserPipe::closed, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    return QApplication::exec();
}

int show(const OvBrowserOptions& inOptions)
{
    Runtime runtime(dataFolder(inOptions));
    KyWebViewBrowser browser(nullptr, QString());
    browser.resize(1000, 700);
    if (!inOptions.address.isEmpty() && !browser.page().open(inOptions.address))
        return fail(BadInput, QStringLiteral("Not an address: %1").arg(inOptions.address));
    browser.show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    OvBrowserOptions options;
    QString text;
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    switch (options.parse(arguments, text)) {
    case OvBrowserOptions::Outcome::Run:
        break;
    case OvBrowserOptions::Outcome::Help:
    case OvBrowserOptions::Outcome::Version:
        std::fputs(qPrintable(text), stdout);
        return 0;
    case OvBrowserOptions::Outcome::Bad:
        return fail(BadInput, text);
    }
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", options.engineEnvironment(qgetenv("QTWEBENGINE_CHROMIUM_FLAGS")));
    const QString obstacle = KyWebEngineSandbox::obstacle();
    if (!obstacle.isEmpty())
        return fail(Failed, obstacle);

    // The options are not Qt's: only the name of the program is.
    int one = 1;
    QApplication application(one, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Ky"));
    QCoreApplication::setApplicationName(QStringLiteral("ovbrowser"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KY_VERSION));
    QLoggingCategory::setFilterRules(QStringLiteral("js.info=false\nqt.webenginecontext*=false"));
    if (options.namedPipe.isEmpty())
        return show(options);

    OvBrowserPipe pipe;
    if (!pipe.connectTo(options.namedPipe))
        return fail(
            Failed,
            QStringLiteral("Cannot connect to the pipe %1: %2").arg(options.namedPipe, pipe.errorText()));
    return serve(pipe, options);
}

// kyworkstation: the workstation with its windows.

#include "KyMainWindow.h"
#include "KyScriptingMenu.h"
#include "KyToolKeys.h"
#include "KyTranslations.h"
#include "KyWebViews.h"
#include "KyWorkstationOptions.h"
#include "KyWorkstationTools.h"
#include "KyWorkstationViewers.h"

#include <common/KyHostPlatform.h>
#include <common/KyMessageLog.h>
#include <kysite/KyArchive.h>
#include <rnlib/RnLogFileSink.h>
#include <rnlib/RnLogStreamSink.h>

#include <QtCore/QTimer>
#include <QtGui/QIcon>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStatusBar>

#include <algorithm>
#include <cstdio>
#include <optional>

namespace {

constexpr int BadInput = 2;

int fail(const QString& inReason)
{
    std::fprintf(stderr, "kyworkstation: %s\n", qPrintable(inReason));
    return BadInput;
}

/// Sends the log to a file or standard error; gives what is wrong with it, or nothing.
QString openLog(const QString& inFile)
{
    if (inFile.isEmpty())
        return QString();
    if (inFile == QLatin1String("-")) {
        getTheLogInstance().addSink(std::make_shared<RnLogStreamSink>(stderr));
        return QString();
    }
    auto sink = std::make_shared<RnLogFileSink>(inFile.toStdString());
    if (!sink->isOpen())
        return KyWorkstationOptions::tr("Cannot write the log %1: %2")
            .arg(inFile, QString::fromStdString(sink->errorText()));
    getTheLogInstance().addSink(sink);
    return QString();
}

int runWindow(const KyWorkstationOptions& inOptions)
{
    KyScriptingMenu::registerProperties();
    KyToolKeys::registerProperties();
    const KyWebViews webViews(inOptions.host.profile);
    KyHostPlatform platform(inOptions.host);
    const QString badProperty = platform.applyProperties();
    if (!badProperty.isEmpty())
        return fail(
            KyWorkstationOptions::tr("There is no property %1 that takes this text").arg(badProperty));

    KyMainWindow window;
    const KyWorkstationViewers viewers(window);
    KyWorkstationTools tools(window, platform.reportEditor());
    const QStringList badTools = tools.load(inOptions.host.profile, inOptions.host.toolFiles);
    window.show();
    if (!badTools.isEmpty())
        window.statusBar()->showMessage(badTools.first());
    for (const QString& folder : inOptions.host.studyFolders)
        window.openFolder(folder);
    for (const QString& patient : inOptions.host.patients)
        window.openFolder(KyArchive::folderOf(patient));
    for (const QString& folder : inOptions.host.additionalFolders)
        window.openFolder(folder, KyStudyLoader::Kind::Additional);
    for (const QString& script : inOptions.scripts)
        QTimer::singleShot(0, &window, [&window, script] { window.runScript(script); });
    return QApplication::exec();
}

/// Reads the command line. Gives the exit status, or nothing when the program is to go on.
std::optional<int> readOptions(KyWorkstationOptions& outOptions)
{
    QString text;
    switch (outOptions.parse(QCoreApplication::arguments(), text)) {
    case KyWorkstationOptions::Outcome::Run:
        return std::nullopt;
    case KyWorkstationOptions::Outcome::Help:
    case KyWorkstationOptions::Outcome::Version:
        std::fputs(qPrintable(text), stdout);
        return 0;
    case KyWorkstationOptions::Outcome::Bad:
        return fail(text);
    }
    return BadInput;
}

/// Whether the command line asks something that is answered without windows, and so without a display.
bool isQuestion(int argc, char** argv)
{
    return std::any_of(argv + 1, argv + argc, [](const char* argument) {
        const QByteArrayView text(argument);
        return text == "-h" || text == "--help" || text == "-v" || text == "--version";
    });
}

void nameApplication()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Ky"));
    QCoreApplication::setApplicationName(QStringLiteral("kyworkstation"));
}

int answer(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    nameApplication();
    const KyTranslations translations;
    KyWorkstationOptions options;
    return readOptions(options).value_or(BadInput);
}

} // namespace

int main(int argc, char** argv)
{
    if (isQuestion(argc, argv))
        return answer(argc, argv);
    QApplication application(argc, argv);
    nameApplication();
    QGuiApplication::setDesktopFileName(QStringLiteral("kyworkstation"));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/kyworkstation/icon.png")));

    const KyTranslations translations;
    KyWorkstationOptions options;
    if (const auto status = readOptions(options))
        return *status;
    const QString text = openLog(options.logFile);
    if (!text.isEmpty())
        return fail(text);
    const KyMessageLog messages;
    return runWindow(options);
}

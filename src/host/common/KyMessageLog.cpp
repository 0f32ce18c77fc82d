#include "KyMessageLog.h"

#include <rnlib/RnLogFile.h>

#include <QtCore/QRegularExpression>
#include <QtCore/qlogging.h>

namespace {

RnLogLevel levelOf(QtMsgType inType)
{
    switch (inType) {
    case QtDebugMsg:
    case QtInfoMsg:
        return 1;
    case QtWarningMsg:
        return 2;
    case QtCriticalMsg:
    case QtFatalMsg:
        return 3;
    }
    return 3;
}

/// Qt tells of an uncaught error of a handler as "file:dir/a.js:42: ReferenceError: x is not defined".
bool isHandlerError(const QString& inText)
{
    static const QRegularExpression form(
        QStringLiteral("^(\\S.*|<Unknown File>):\\d+: \\w*(Error|Exception)\\b"));
    return form.match(inText).hasMatch();
}

/// A machine without a user session or a display is normal for a program that scripts start; so is a function
/// that uses a variable declared further down, as compilers to JavaScript write them.
bool isRoutine(const QString& inText)
{
    return inText.contains(QLatin1String(" is used before its declaration at ")) ||
           inText.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set")) ||
           inText.startsWith(QLatin1String("This plugin does not support "));
}

void handle(QtMsgType inType, const QMessageLogContext&, const QString& inText)
{
    const bool isScripts = inType == QtWarningMsg && isHandlerError(inText);
    const RnLogLevel level = isScripts ? 3 : isRoutine(inText) ? 1 : levelOf(inType);
    getTheLogInstance().tracef(level, isScripts ? "Script Interface" : "Qt", "%s",
                               inText.toUtf8().constData());
}

QtMessageHandler sPrevious = nullptr;

} // namespace

KyMessageLog::KyMessageLog()
{
    sPrevious = qInstallMessageHandler(handle);
}

KyMessageLog::~KyMessageLog()
{
    qInstallMessageHandler(sPrevious);
}

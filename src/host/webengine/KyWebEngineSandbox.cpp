#include "KyWebEngineSandbox.h"

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

QString KyWebEngineSandbox::obstacle()
{
#ifdef Q_OS_LINUX
    const bool isOff = qEnvironmentVariableIntValue("QTWEBENGINE_DISABLE_SANDBOX") != 0 ||
                       qgetenv("QTWEBENGINE_CHROMIUM_FLAGS").contains("--no-sandbox");
    if (geteuid() == 0 && !isOff)
        return QStringLiteral("web pages are not shown to the superuser, unless the environment has "
                              "QTWEBENGINE_DISABLE_SANDBOX=1");
#endif
    return QString();
}

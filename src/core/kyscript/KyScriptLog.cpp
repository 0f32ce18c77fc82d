#include "KyScriptLog.h"

#include <ovvolren/OvServerPeer.h>

#include <QtCore/QString>

void KyScriptLog::line(RnLogLevel inLevel, const QString& inText, const char* inContext)
{
    getTheLogInstance().tracef(inLevel, inContext, "%s", inText.toLatin1().constData());
}

void KyScriptLog::sessionLine(const QString& inText, const char* inContext)
{
    if (OvServerPeer* peer = OvServerPeer::instance())
        peer->printSessionLog(inContext, inText.toLatin1().constData(), 1);
}

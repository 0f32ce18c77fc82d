#include "KySessionLog.h"

#include <rnlib/RnLogFileSink.h>

#include <QtCore/QFileInfo>

namespace {

KySessionLog* sInstance = nullptr;

} // namespace

KySessionLog::KySessionLog(const QString& inFile)
{
    sInstance = this;
    if (inFile.isEmpty())
        return;
    const auto sink = std::make_shared<RnLogFileSink>(inFile.toStdString());
    if (!sink->isOpen()) {
        getTheLogInstance().tracef(3, "Session", "Cannot write the session log %s: %s",
                                   inFile.toUtf8().constData(), sink->errorText().c_str());
        return;
    }
    mFile = QFileInfo(inFile).absoluteFilePath();
    log().addSink(sink);
}

KySessionLog::~KySessionLog()
{
    if (sInstance == this)
        sInstance = nullptr;
}

KySessionLog* KySessionLog::instance()
{
    return sInstance;
}

#include "LogCapture.h"

#include <QTest>

#include <memory>
#include <utility>

namespace {

QString decoded(const std::string& inText)
{
    return QString::fromStdString(RnLogFile::toUtf8(inText));
}

QStringList stringsOf(const QList<LogCapture::Line>& inLines)
{
    QStringList strings;
    for (const LogCapture::Line& line : inLines)
        strings.append(line.toString());
    return strings;
}

} // namespace

QString LogCapture::Line::toString() const
{
    return QStringLiteral("%1|%2|%3").arg(QString::number(level), context, text);
}

LogCapture::LogCapture(RnLogLevel inLeastLevel)
{
    // The capture owns itself; the destructor takes the log's share back in time.
    getTheLogInstance().addSink(std::shared_ptr<RnLogSink>(std::shared_ptr<void>(), this), inLeastLevel);
}

LogCapture::~LogCapture()
{
    getTheLogInstance().removeSink(this);
}

QList<LogCapture::Line> LogCapture::lines() const
{
    const std::lock_guard lock(mMutex);
    return mLines;
}

QStringList LogCapture::toStrings() const
{
    return stringsOf(lines());
}

QStringList LogCapture::take()
{
    const std::lock_guard lock(mMutex);
    return stringsOf(std::exchange(mLines, {}));
}

void LogCapture::write(const RnLogRecord& inRecord)
{
    const std::lock_guard lock(mMutex);
    mLines.append({inRecord.level, decoded(inRecord.context), decoded(inRecord.text)});
}

char* toString(const LogCapture::Line& inLine)
{
    return QTest::toString(inLine.toString());
}

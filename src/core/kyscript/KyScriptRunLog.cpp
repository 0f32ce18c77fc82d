#include "KyScriptRunLog.h"

#include "KyScriptLog.h"

#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QSet>

namespace {

constexpr const char* GroupId = "Scripting";
constexpr const char* LogNumLinesId = "Scripting.LogNumLines";
constexpr int LogNumLinesDefault = 1;

int logNumLines()
{
    const OvPropertyPool* pool = OvPropertyPool::instance();
    return pool ? pool->value<int>(LogNumLinesId, LogNumLinesDefault) : LogNumLinesDefault;
}

/// The texts that have run in this process, on whatever engine. Never emptied.
QSet<QUuid>& executedScripts()
{
    static QSet<QUuid> sExecutedScripts;
    return sExecutedScripts;
}

QString announcement(const QUuid& inIdentity, const QString& inInfo, const QString& inFileName, int inLine)
{
    QString text = QStringLiteral("Executing script ") + inIdentity.toString();
    if (!inInfo.isEmpty())
        text += QLatin1Char(' ') + inInfo;
    if (inFileName.isEmpty())
        return text;
    text += QStringLiteral(", in file: %1").arg(inFileName);
    if (inLine >= 1)
        text += QStringLiteral(", line %1").arg(inLine);
    return text;
}

/// The first \a inLines lines of \a inSource with "..." where there is more; all of it for a negative number.
QByteArray excerpt(QByteArray inSource, int inLines)
{
    inSource.replace("\r\n", "\n");
    qsizetype end = -1;
    for (int line = 0; line < inLines; ++line) {
        end = inSource.indexOf('\n', end + 1);
        if (end < 0)
            return inSource;
    }
    return inLines < 0 ? inSource : inSource.left(end + 1) + "...";
}

} // namespace

KyScriptRunLog::KyScriptRunLog(const QString& inSource, const QString& inInfo, const QString& inFileName,
                               int inLine)
    : mLogLines(logNumLines())
{
    if (mLogLines == 0)
        return;

    const QByteArray source = inSource.toLatin1();
    mIdentity = QUuid::fromRfc4122(QCryptographicHash::hash(source, QCryptographicHash::Md5));
    const QByteArray line = announcement(mIdentity, inInfo, inFileName, inLine).toLatin1();

    auto& executed = executedScripts();
    const auto known = executed.size();
    executed.insert(mIdentity);
    if (executed.size() == known)
        getTheLogInstance().tracef(1, KyScriptLog::Context, "%s", line.constData());
    else
        getTheLogInstance().tracef(1, KyScriptLog::Context, "%s, source code:\n%s", line.constData(),
                                   excerpt(source, mLogLines).constData());
}

void KyScriptRunLog::finish() const
{
    const auto elapsed = mWatch.milliseconds();
    if (mLogLines != 0 && elapsed > 1)
        getTheLogInstance().tracef(1, KyScriptLog::Context, "Executed script %s in %d ms",
                                   mIdentity.toByteArray().constData(), int(elapsed));
}

void KyScriptRunLog::registerProperties()
{
    OvTranslationProperty::translate(GroupId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Advanced Settings"),
                                     nullptr);
    OvTranslationProperty::translate(
        LogNumLinesId, QT_TRANSLATE_NOOP("OvTranslationProperty", "Number of Logged Lines for Scripts"),
        nullptr);
    OvPropertyPool::addRegisterProperties([](OvPropertyPool& ioPool) {
        ioPool.property<int>(LogNumLinesId, LogNumLinesDefault, ioPool.defaultSerializer());
    });
}

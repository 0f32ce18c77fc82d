#include "KyWebViewCommands.h"

#include <ovbase/OvStoredGeometry.h>

#include <algorithm>
#include <utility>

QStringList KyWebViewCommands::split(const QString& inText)
{
    QStringList commands;
    for (const QString& part : inText.split(QLatin1Char(';'))) {
        const QString command = part.trimmed();
        if (!command.isEmpty())
            commands.append(command);
    }
    return commands;
}

QString KyWebViewCommands::word(const QString& inCommand)
{
    return inCommand.section(QLatin1Char(' '), 0, 0);
}

QString KyWebViewCommands::argument(const QString& inCommand)
{
    return inCommand.section(QLatin1Char(' '), 1).trimmed();
}

std::optional<QRect> KyWebViewCommands::geometry(const QString& inArgument)
{
    constexpr int most = OvStoredGeometry::MaxEdge;
    const QStringList texts = inArgument.split(QLatin1Char(' '));
    if (texts.size() != 4)
        return std::nullopt;
    int edges[4] = {};
    for (int i = 0; i < 4; ++i) {
        bool isNumber = false;
        edges[i] = std::clamp(texts.at(i).toInt(&isNumber), -most, most);
        if (!isNumber)
            return std::nullopt;
    }
    return QRect(QPoint(edges[1], edges[0]), QPoint(edges[3], edges[2]));
}

QString KyWebViewCommands::geometryMessage(const QRect& inGeometry)
{
    return QStringLiteral("GEOMETRY %1 %2 %3 %4")
        .arg(inGeometry.top())
        .arg(inGeometry.left())
        .arg(inGeometry.bottom())
        .arg(inGeometry.right());
}

QString KyWebViewCommands::isHiddenMessage(bool inIsHidden)
{
    return QStringLiteral("ISHIDDEN %1").arg(inIsHidden ? 1 : 0);
}

QString KyWebViewCommands::errorMessage(const QString& inCommand)
{
    return QStringLiteral("ERROR ") + inCommand;
}

QStringList KyWebViewCommandReader::read(const QByteArray& inBytes)
{
    QStringList commands;
    qsizetype start = 0;
    for (qsizetype end; (end = inBytes.indexOf(';', start)) >= 0; start = end + 1) {
        const QByteArray whole = std::exchange(mRest, QByteArray()) + inBytes.mid(start, end - start);
        if (!std::exchange(mIsTooLong, false) && whole.size() <= LongestCommand)
            commands += KyWebViewCommands::split(QString::fromUtf8(whole));
    }
    if (mIsTooLong || mRest.size() + inBytes.size() - start > LongestCommand) {
        mIsTooLong = true;
        mRest.clear();
    } else {
        mRest += inBytes.mid(start);
    }
    return commands;
}

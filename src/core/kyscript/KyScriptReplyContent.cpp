#include "KyScriptReplyContent.h"

namespace {

QByteArray withoutNull(const QByteArray& inBytes)
{
    return inBytes.isNull() ? QByteArray("") : inBytes;
}

} // namespace

QVariantMap KyScriptReplyContent::headerMap(const QList<QNetworkReply::RawHeaderPair>& inPairs)
{
    QVariantMap map;
    for (const auto& [name, value] : inPairs)
        map.insert(QString::fromLatin1(name), withoutNull(value));
    return map;
}

QByteArray KyScriptReplyContent::body(QNetworkReply& inReply)
{
    return withoutNull(inReply.size() != 0 ? inReply.readAll() : QByteArray());
}

bool KyScriptReplyContent::isPlainText(const QString& inContentType)
{
    return inContentType.contains(QLatin1String("text/plain"));
}

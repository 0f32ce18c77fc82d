#pragma once

#include <QtCore/QVariantMap>
#include <QtNetwork/QNetworkReply>

/// What a network reply has brought, in the forms in which the module hands it on.
///
/// No byte array is null: a script could not use the ArrayBuffer that Qt makes of one.
class KyScriptReplyContent
{
public:
    KyScriptReplyContent() = delete;

    /// The headers of an answer: under each name, as the server wrote it, a QByteArray. A name that is there
    /// more than once keeps its last value.
    static QVariantMap headerMap(const QList<QNetworkReply::RawHeaderPair>& inPairs);

    /// What has not been read yet.
    static QByteArray body(QNetworkReply& inReply);

    /// Whether a content type is one of plain text, with or without parameters. Case counts.
    static bool isPlainText(const QString& inContentType);
};

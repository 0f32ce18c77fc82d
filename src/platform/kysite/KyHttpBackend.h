#pragma once

#include <ovbase/OvBackend.h>

#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QSslConfiguration>

class QNetworkReply;

/// A backend at an address of HTTP. Each call is one POST request with the body, as JSON (RFC 8259) in UTF-8:
///
///     {"class": "Reports", "method": "count", "parameters": [1, "a"]}
///
/// and is answered, with the status 200, by one of
///
///     {"result": VALUE}      what the method has given
///     {}                     it has given nothing
///     {"error": "MESSAGE"}   it has failed; with any status
///
/// Everything else is a failure: another status, another body, an answer that does not come in time,
/// redirects, and a server whose certificate does not hold. Any number of calls may be under way. GUI thread.
class KyHttpBackend final : public QObject, public OvBackend
{
    Q_OBJECT

public:
    /// \a inCaFile holds further certificates, in PEM, that servers may be signed by; empty for none.
    explicit KyHttpBackend(QUrl inUrl, const QString& inCaFile = QString(), int inTimeoutSeconds = 60);
    /// What is under way fails.
    ~KyHttpBackend() override;

    void start(const OvBackendCall& inCall, const Reply& inReply) override;

private:
    void finish(QNetworkReply& ioAnswer, OvBackendReply& ioReply) const;

    const QUrl mUrl;
    const int mTimeoutSeconds;
    QSslConfiguration mTls;
    QNetworkAccessManager mNetwork;
};

#pragma once

#include <QtCore/QObject>
#include <QtCore/QVariant>

#include <memory>

class QNetworkReply;

/// An HTTP client for scripts: `new HttpRequest()`.
///
/// Requests run side by side, and each answer comes through response(), which does not tell its request: a
/// script that has to know uses an object for each. Headers and the TLS choice stay in force for all later
/// requests of the object. No header is set by the class itself. The client's proxy is read once, at
/// construction.
///
/// Owner: the script. With the object its requests end, and their answers are never told; a wait in progress
/// returns. Redirects, cookies, connections and TLS are Qt's (RFC 9110, RFC 9112, RFC 9113).
class KyScriptHttpRequest : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE explicit KyScriptHttpRequest(QObject* parent = nullptr);
    ~KyScriptHttpRequest() override;

    /// Send a request to the URL \a request and return at once. A URL that can't be used, or reached, shows
    /// up as an answer without a status; so does one for which the process has too few files left to open. \a
    /// data goes as UTF-8; without a header `Content-Type` Qt calls it a form.
    Q_INVOKABLE void get(QString request);
    Q_INVOKABLE void post(QString request, QString data);
    Q_INVOKABLE void put(QString request, QString data);
    Q_INVOKABLE void del(QString request);

    /// Sets one header, in Latin-1 and up to its first NUL. There is no way to clear it, but to set it anew.
    Q_INVOKABLE void setHeader(QString headerName, QString headerValue);

    /// Accepts any certificate, or with false only those that Qt trusts. Hosts to which this object holds a
    /// connection keep the choice with which that was made.
    Q_INVOKABLE void setSSLNoVerify(bool noSSLVerify = true);

    /// Returns when all requests have been answered and handled, at the latest after \a inMsecs milliseconds;
    /// the application goes on meanwhile. Below 1, with nothing under way, and inside another such wait of
    /// this object it returns at once. A limit that passes ends nothing: answers still come later.
    Q_INVOKABLE void waitForFinished(int inMsecs);

Q_SIGNALS:
    /// One for each request, good or bad. \a message is the body, \a header maps names as the server wrote
    /// them to byte arrays, \a statusCode is undefined when no HTTP answer came.
    ///
    /// They are a QByteArray, a QVariantMap and an int. A script can send a signal with anything, and Qt does
    /// not survive to make bytes or a map of what holds a symbol.
    void response(QVariant message, QVariant header, QVariant statusCode);

public Q_SLOTS:
    /// Tells and releases one answer. Nothing for null.
    void replyFinished(QNetworkReply* reply);

private:
    class Private;

    template <class Send>
    void send(const char* inVerb, const QString& inUrl, Send inSend);

    const std::unique_ptr<Private> d;
};

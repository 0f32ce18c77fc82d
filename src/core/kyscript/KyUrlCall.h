#pragma once

#include "KyScriptExport.h"

#include <QtCore/QObject>

#include <memory>

template <class T>
class KyScriptSender;
class QNetworkAccessManager;
class QNetworkReply;

/// Calls URLs for their effect: fire and forget.
///
/// Nothing is returned to the caller. Answers of plain text and failures stand in the log, and a failure that
/// is not the server's refusal of that one page opens an error box. The client's proxy is read once, at
/// construction.
///
/// Owner: whoever makes it. Calls under way end with it. GUI thread only.
class KYSCRIPT_EXPORT KyUrlCall : public QObject
{
    Q_OBJECT

public:
    explicit KyUrlCall(QObject* parent = nullptr);
    ~KyUrlCall() override;

    /// Sends one GET to \a inUrl. Any number may be under way.
    void sendRequest(const QString& inUrl);

public Q_SLOTS:
    /// Logs one answer and, if need be, shows its error. The reply of a failure is kept until this object
    /// goes. Nothing for null.
    void replyFinished(QNetworkReply* reply);

private:
    /// A child of this object.
    const std::unique_ptr<const KyScriptSender<QNetworkAccessManager>> mManager;
};

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace Ovg {
class DicomHeader;
}

/// A client of a DICOMweb archive (PS3.18): QIDO-RS for what there is, WADO-RS for headers and instances.
/// A value. Its calls block, on any thread, and serve no events of that thread.
class KyDicomWeb
{
public:
    /// \a inUrl is the service's root, such as "http://archive:8042/dicom-web". \a inCaFile holds further
    /// certificates; empty for none.
    explicit KyDicomWeb(QString inUrl, QString inCaFile = QString());

    /// One thing to be fetched, and what has come of it.
    struct Request
    {
        QString path; ///< Below the root, with its query.
        QByteArray accept;
        QByteArray body;
        QByteArray contentType;
        QString error; ///< Empty when the body is there.
    };
    /// Hears of each request that is done; false stops the others. On a thread of the client's.
    using Done = std::function<bool(Request& ioRequest)>;

    /// Fetches all, several at a time. A connection that is cut, or an answer that is not whole, is tried
    /// again, \a attempts times in all.
    void fetch(QList<Request>& ioRequests, const Done& inDone = {}) const;

    static Request json(const QString& inPath);
    /// An instance as it is stored, in any transfer syntax.
    static Request instance(const QString& inStudy, const QString& inSeries, const QString& inInstance);

    /// The one part of a multipart answer (RFC 2046), whole; null when it is none or has been cut off.
    static QByteArray onlyPart(const QByteArray& inContentType, const QByteArray& inBody);

    /// The elements of \a inJson, of the DICOM JSON model (PS3.18 F.2), in \a outHeader: texts and numbers,
    /// at the top level and in sequences. Private elements and those of bytes are left out.
    static void readHeader(const QJsonObject& inJson, Ovg::DicomHeader& outHeader);
    /// The first value of an element of the DICOM JSON model as text; empty without one.
    static QString text(const QJsonObject& inJson, const char* inTag);

    static constexpr int attempts = 4;

private:
    const QString mUrl;
    const QString mCaFile;
};

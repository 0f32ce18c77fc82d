#include "KyArchiveStudies.h"

#include <ovwebservice/StudyGrouping.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QUrl>

namespace {

constexpr int PageSize = 500;

constexpr const char* PatientId = "00100020";
constexpr const char* StudyUid = "0020000D";
constexpr const char* SeriesUid = "0020000E";
constexpr const char* SopUid = "00080018";
constexpr const char* SopClass = "00080016";
constexpr const char* Modality = "00080060";
constexpr const char* SeriesNumber = "00200011";
constexpr const char* InstanceNumber = "00200013";

QList<QJsonObject> objectsOf(KyDicomWeb::Request& ioRequest)
{
    QList<QJsonObject> objects;
    const QJsonDocument document = QJsonDocument::fromJson(ioRequest.body);
    if (ioRequest.error.isEmpty() && !ioRequest.body.isEmpty() && !document.isArray())
        ioRequest.error = QStringLiteral("the answer is no JSON");
    for (const QJsonValue& value : document.array())
        objects.append(value.toObject());
    return objects;
}

/// One run of KyArchiveStudies::load().
class Load
{
public:
    Load(const KyDicomWeb& inArchive, const KyArchiveCache& inCache)
        : mArchive(inArchive)
        , mCache(inCache)
    {}

    Ovg::StudySourceResult run(const QString& inPatientId, const Ovg::StudySource::Progress& inProgress)
    {
        const QString query =
            QStringLiteral("PatientID=%1").arg(QString::fromLatin1(QUrl::toPercentEncoding(inPatientId)));
        QStringList uids;
        QStringList queries;
        const QList<QList<QJsonObject>> ofPatient = pages({QStringLiteral("/studies?") + query});
        for (const QJsonObject& study : ofPatient.first()) {
            // Some archives take "*" and "?" in an id for wildcards.
            if (KyDicomWeb::text(study, PatientId) != inPatientId)
                continue;
            uids.append(KyDicomWeb::text(study, StudyUid));
            queries.append(instancesOf(uids.last()));
        }
        if (inProgress && !inProgress(0, int(uids.size()))) {
            mResult.cancelled = true;
            return std::move(mResult);
        }
        const QList<QList<QJsonObject>> instances = pages(queries);
        for (qsizetype i = 0; i < uids.size(); ++i)
            addInstances(uids.at(i), instances.at(i));
        makeStudies();
        if (inProgress)
            inProgress(int(uids.size()), int(uids.size()));
        finish(mResult);
        getTheLogInstance().tracef(1, "Archive", "%d studies, %d instances", int(mResult.studies.size()),
                                   mResult.instances);
        return std::move(mResult);
    }

private:
    /// All objects of each query, page by page, the queries side by side.
    QList<QList<QJsonObject>> pages(const QStringList& inQueries)
    {
        QList<QList<QJsonObject>> all(inQueries.size());
        QList<qsizetype> open;
        for (qsizetype i = 0; i < inQueries.size(); ++i)
            open.append(i);
        for (int offset = 0; !open.isEmpty(); offset += PageSize) {
            QList<KyDicomWeb::Request> requests;
            for (const qsizetype i : open)
                requests.append(KyDicomWeb::json(
                    inQueries.at(i) + QStringLiteral("&limit=%1&offset=%2").arg(PageSize).arg(offset)));
            mArchive.fetch(requests);
            QList<qsizetype> further;
            for (qsizetype i = 0; i < requests.size(); ++i) {
                const QList<QJsonObject> objects = objectsOf(requests[i]);
                if (!requests[i].error.isEmpty())
                    fail(requests[i]);
                else if (objects.size() == PageSize)
                    further.append(open.at(i));
                all[open.at(i)] += objects;
            }
            open = further;
        }
        return all;
    }

    static QString instancesOf(const QString& inStudy)
    {
        return QStringLiteral("/studies/%1/instances?includefield=%2&includefield=%3")
            .arg(inStudy, QLatin1String(Modality), QLatin1String(SeriesNumber));
    }

    void addInstances(const QString& inStudy, const QList<QJsonObject>& inInstances)
    {
        int origin = 0;
        for (const QJsonObject& json : inInstances) {
            const auto text = [&json](const char* inTag) { return KyDicomWeb::text(json, inTag); };
            const QString series = text(SeriesUid);
            const QString file = mCache.path(inStudy, series, text(SopUid));
            if (file.isEmpty())
                continue;
            Ovg::DicomInstanceFacts facts;
            facts.studyInstanceUid = inStudy.toStdString();
            facts.seriesInstanceUid = series.toStdString();
            facts.modality = text(Modality).toStdString();
            facts.seriesNumber = text(SeriesNumber).toInt();
            facts.instance = {file, text(SopUid).toStdString(), text(SopClass).toStdString(),
                              text(InstanceNumber).toInt()};
            facts.origin = origin++;
            mGrouping.add(facts);
        }
    }

    /// The header of each study is that of its first instance, as of studies in files.
    void makeStudies()
    {
        const auto studies = mGrouping.studies();
        QList<KyDicomWeb::Request> requests;
        for (const auto& instances : studies) {
            const Ovg::DicomInstanceFacts& first = instances.front();
            requests.append(
                KyDicomWeb::json(KyDicomWeb::instance(QString::fromStdString(first.studyInstanceUid),
                                                      QString::fromStdString(first.seriesInstanceUid),
                                                      QString::fromStdString(first.instance.sopInstanceUid))
                                     .path +
                                 QStringLiteral("/metadata")));
        }
        mArchive.fetch(requests);
        for (qsizetype i = 0; i < requests.size(); ++i) {
            const QList<QJsonObject> objects = objectsOf(requests[i]);
            if (objects.isEmpty()) {
                fail(requests[i]);
                continue;
            }
            Ovg::DicomHeader header;
            KyDicomWeb::readHeader(objects.first(), header);
            mResult.studies.push_back(Ovg::makeStudy(header, studies[std::size_t(i)]));
            mResult.files += int(studies[std::size_t(i)].size());
        }
    }

    void fail(const KyDicomWeb::Request& inRequest)
    {
        const QString error = inRequest.error.isEmpty() ? QStringLiteral("no header") : inRequest.error;
        mResult.errors.append(
            QStringLiteral("Archive %1: %2").arg(inRequest.path.section(QLatin1Char('?'), 0, 0), error));
        getTheLogInstance().trace(3, "Archive", mResult.errors.last().toLatin1().constData());
    }

    const KyDicomWeb& mArchive;
    const KyArchiveCache& mCache;
    Ovg::StudyGrouping mGrouping;
    Ovg::StudySourceResult mResult;
};

} // namespace

KyArchiveStudies::KyArchiveStudies(KyDicomWeb inArchive, QString inPatientId,
                                   std::shared_ptr<const KyArchiveCache> inCache)
    : mArchive(std::move(inArchive))
    , mPatientId(std::move(inPatientId))
    , mCache(std::move(inCache))
{}

Ovg::StudySourceResult KyArchiveStudies::load(const Progress& inProgress)
{
    return Load(mArchive, *mCache).run(mPatientId, inProgress);
}

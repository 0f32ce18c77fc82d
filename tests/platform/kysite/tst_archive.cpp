#include <support/KyTest.h>
#include <support/LogCapture.h>
#include <support/LoopbackHttpServer.h>
#include <support/OrthancServer.h>

#include <kysite/KyArchive.h>
#include <kysite/KyArchiveStudies.h>
#include <ovwebservice/DicomHeader.h>

#include <QDir>
#include <QDirIterator>
#include <QJsonDocument>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThread>

namespace {

constexpr const char* Samples = "/usr/lib/python3/dist-packages/pydicom/data/test_files";

QByteArray read(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Passes connections on to a server, and cuts them as told.
class CuttingProxy : public QObject
{
public:
    explicit CuttingProxy(int inTarget)
        : mTarget(inTarget)
    {
        mServer.listen(QHostAddress::LocalHost);
        connect(&mServer, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* client = mServer.nextPendingConnection())
                join(client);
        });
    }
    QString url() const { return QStringLiteral("http://127.0.0.1:%1/dicom-web").arg(mServer.serverPort()); }

    int cuts = 0;              ///< Connections that are still to be cut.
    qint64 bytesBeforeCut = 0; ///< Of the answer.
    int connections = 0;

private:
    void join(QTcpSocket* inClient)
    {
        ++connections;
        auto* server = new QTcpSocket(inClient);
        server->connectToHost(QHostAddress(QHostAddress::LocalHost), quint16(mTarget));
        connect(inClient, &QTcpSocket::readyRead, server, [=] { server->write(inClient->readAll()); });
        connect(inClient, &QTcpSocket::disconnected, inClient, &QObject::deleteLater);
        connect(server, &QTcpSocket::disconnected, inClient, [=] { inClient->disconnectFromHost(); });
        connect(server, &QTcpSocket::readyRead, inClient,
                [this, inClient, server, passed = qint64(0)]() mutable {
                    const QByteArray bytes = server->readAll();
                    passed += bytes.size();
                    inClient->write(bytes);
                    if (cuts > 0 && passed > bytesBeforeCut) {
                        --cuts;
                        inClient->flush();
                        inClient->abort();
                    }
                });
    }

    QTcpServer mServer;
    const int mTarget;
};

} // namespace

class tst_archive : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void partsAreRead_data();
    void partsAreRead();
    void headersAreRead();

    void studiesOfAPatient();
    void headersComeFirstAndFilesOnDemand();
    void filesAreTheArchives();
    void filesStayInTheCache();
    void cacheKeepsItsLimit();
    void cutConnectionsAreTakenUpAgain();
    void whatIsThereIsNotFetchedAgain();
    void unknownPatientsHaveNoStudies();
    void foldersAreReadAsEver();

    void archiveIsNotThere();
    void wrongAnswers_data();
    void wrongAnswers();
    void wildcardsInAnIdAreNoWildcards();
    void pathsAreOfUidsOnly_data();
    void pathsAreOfUidsOnly();
    void stoppingStops();

private:
    QString url() const { return mOrthanc->url(); }
    /// As a host does it, in another thread, while this one serves the proxy and the servers of the test.
    template <class Function>
    static void inBackground(const Function& inFunction)
    {
        const std::unique_ptr<QThread> thread(QThread::create(inFunction));
        thread->start();
        QTRY_VERIFY_WITH_TIMEOUT(thread->isFinished(), 120000);
    }
    Ovg::StudySourceResult load(const QString& inPatient)
    {
        Ovg::StudySourceResult result;
        inBackground([&] { result = KyArchive::read(KyArchive::folderOf(inPatient)); });
        return result;
    }
    static void provide(const QStringList& inPaths)
    {
        const auto files = Ovg::InstanceFiles::instance();
        inBackground([&] { files->provide(inPaths); });
    }
    static QStringList paths(const Ovg::DicomDirectoryEntry& inStudy)
    {
        QStringList paths;
        for (const Ovg::DicomSeries& series : inStudy.series()) {
            for (const Ovg::DicomInstance& instance : series.instances)
                paths.append(instance.path);
        }
        return paths;
    }
    QStringList cached() const
    {
        QStringList files;
        QDirIterator it(mCache->path(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            files.append(it.next());
        return files;
    }
    void open(const QString& inUrl, qint64 inMostBytes = qint64(1) << 30)
    {
        mArchive.reset();
        mArchive = std::make_unique<KyArchive>(inUrl, QString(), mCache->path(), inMostBytes);
    }

    QTemporaryDir mFolder;
    std::unique_ptr<OrthancServer> mOrthanc;
    QString mPatient;
    int mInstances = 0;
    QMap<QString, QByteArray> mFiles; ///< What was uploaded, by SOP instance UID.
    std::unique_ptr<QTemporaryDir> mCache;
    std::unique_ptr<KyArchive> mArchive;
};

void tst_archive::initTestCase()
{
    if (!OrthancServer::isInstalled())
        return;
    mOrthanc = std::make_unique<OrthancServer>();
    QVERIFY2(mOrthanc->isRunning(), mOrthanc->log().constData());

    QCOMPARE(QProcess::execute(KYSAMPLE, {mFolder.filePath("sample")}), 0);
    QDirIterator it(mFolder.filePath("sample"), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        Ovg::DicomHeader header;
        QString reason;
        if (Ovg::DicomHeader::readFile(file, header, reason) != Ovg::DicomHeader::Outcome::Read)
            continue;
        const QString patient = header.value(Ovg::DicomTagPath::fromText("PatientID")).toString();
        if (mPatient.isEmpty())
            mPatient = patient;
        mInstances += patient == mPatient ? 1 : 0;
        mFiles.insert(header.value(Ovg::DicomTagPath::fromText("SOPInstanceUID")).toString(), read(file));
        QVERIFY(mOrthanc->upload(file));
    }
    for (const char* real : {"CT_small.dcm", "MR_small.dcm", "JPEG2000.dcm", "MR_small_RLE.dcm"}) {
        if (QFile::exists(QDir(Samples).filePath(real)))
            QVERIFY2(mOrthanc->upload(QDir(Samples).filePath(real)), real);
    }
    QVERIFY(mInstances > 0);
}

void tst_archive::init()
{
    mCache = std::make_unique<QTemporaryDir>();
    const QByteArray function = QTest::currentTestFunction();
    const bool isReal = !function.startsWith("parts") && !function.startsWith("headersAre") &&
                        !function.startsWith("archiveIs") && !function.startsWith("wrong") &&
                        !function.startsWith("wildcards") && !function.startsWith("paths");
    if (isReal && !mOrthanc)
        QSKIP("Orthanc with its DICOMweb plugin is not installed; scripts/setup --tests does that");
    if (isReal)
        open(url());
}

void tst_archive::cleanup()
{
    mArchive.reset();
    mCache.reset();
}

void tst_archive::partsAreRead_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("part");
    const QByteArray type = "multipart/related; type=\"application/dicom\"; boundary=XX";
    const QByteArray binary("ab\r\n\r\n\0c--XX\r\n", 14);
    const QByteArray whole = "--XX\r\nContent-Type: application/dicom\r\n\r\n" + binary + "\r\n--XX--";
    QTest::newRow("one") << type << QByteArray("--XX\r\nA: b\r\n\r\ncontent\r\n--XX--\r\n")
                         << QByteArray("content");
    QTest::newRow("quoted") << QByteArray("multipart/related; boundary=\"X X\"; a=b")
                            << QByteArray("--X X\r\nA: b\r\n\r\ncontent\r\n--X X--") << QByteArray("content");
    QTest::newRow("preamble") << type << QByteArray("hello\r\n--XX\r\nA: b\r\n\r\ncontent\r\n--XX--")
                              << QByteArray("content");
    QTest::newRow("line breaks within") << type << whole << binary;
    QTest::newRow("no content") << type << QByteArray("--XX\r\nA: b\r\n\r\n\r\n--XX--") << QByteArray("");
    QTest::newRow("cut off") << type << QByteArray("--XX\r\nA: b\r\n\r\nconte") << QByteArray();
    QTest::newRow("cut in the headers") << type << QByteArray("--XX\r\nA: b") << QByteArray();
    QTest::newRow("empty") << type << QByteArray() << QByteArray();
    QTest::newRow("no boundary") << QByteArray("application/dicom") << QByteArray("content") << QByteArray();
    QTest::newRow("another boundary")
        << type << QByteArray("--YY\r\nA: b\r\n\r\ncontent\r\n--YY--") << QByteArray();
}

void tst_archive::partsAreRead()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, part);
    const QByteArray read = KyDicomWeb::onlyPart(type, body);
    QCOMPARE(read.isNull(), part.isNull());
    QCOMPARE(read, part);
}

void tst_archive::headersAreRead()
{
    Ovg::DicomHeader header;
    KyDicomWeb::readHeader(
        QJsonDocument::fromJson(
            R"({"00100010": {"vr": "PN", "Value": [{"Alphabetic": "Yamada^Tarou", "Ideographic": "山田^太郎"}]},
                "00080060": {"vr": "CS", "Value": ["CT"]}, "00280010": {"vr": "US", "Value": [512]},
                "00280030": {"vr": "DS", "Value": [0.5, 0.25]}, "00080020": {"vr": "DA", "Value": ["20260131"]},
                "00081030": {"vr": "LO"}, "00020010": {"vr": "UI", "Value": ["1.2"]}, "nonsense": 5,
                "7FE00010": {"vr": "OW", "BulkDataURI": "http://x"},
                "00400275": {"vr": "SQ", "Value": [{}, {"00400007": {"vr": "LO", "Value": ["Müller"]}}]}})")
            .object(),
        header);
    const auto value = [&](const char* inPath) { return header.value(Ovg::DicomTagPath::fromText(inPath)); };
    QCOMPARE(value("PatientName").toString(), QString::fromUtf8("Yamada^Tarou=山田^太郎"));
    QCOMPARE(value("Modality").toString(), QStringLiteral("CT"));
    QCOMPARE(value("Rows").toInt(), 512);
    QCOMPARE(value("PixelSpacing").toList(), (QVariantList{0.5, 0.25}));
    QCOMPARE(value("StudyDate").toDate(), QDate(2026, 1, 31));
    QCOMPARE(value("RequestAttributesSequence[1].ScheduledProcedureStepDescription").toString(),
             QString::fromUtf8("Müller"));
    QVERIFY(!value("PixelData").isValid());
    KyDicomWeb::readHeader(QJsonObject(), header);
}

void tst_archive::studiesOfAPatient()
{
    const Ovg::StudySourceResult result = load(mPatient);
    QCOMPARE(result.errors, QStringList());
    QVERIFY(!result.studies.empty());
    QCOMPARE(result.instances, mInstances);
    for (const auto& study : result.studies) {
        QCOMPARE(study->patientId(), mPatient);
        QVERIFY(!study->studyInstanceUid().empty());
        QVERIFY(!study->patientName().isEmpty());
        QVERIFY(!study->modalities().empty());
    }
}

void tst_archive::headersComeFirstAndFilesOnDemand()
{
    const Ovg::StudySourceResult result = load(mPatient);
    QCOMPARE(cached(), QStringList());
    const Ovg::DicomSeries& series = result.studies.front()->series().front();
    QStringList wanted;
    for (const Ovg::DicomInstance& instance : series.instances)
        wanted.append(instance.path);
    provide(wanted);
    QStringList there = cached();
    there.sort();
    wanted.sort();
    QCOMPARE(there, wanted);
}

void tst_archive::filesAreTheArchives()
{
    const Ovg::StudySourceResult result = load(mPatient);
    int compared = 0;
    for (const auto& study : result.studies) {
        provide(paths(*study));
        for (const Ovg::DicomSeries& series : study->series()) {
            for (const Ovg::DicomInstance& instance : series.instances) {
                QCOMPARE(read(instance.path), mFiles.value(QString::fromStdString(instance.sopInstanceUid)));
                ++compared;
            }
        }
    }
    QCOMPARE(compared, mInstances);
}

void tst_archive::filesStayInTheCache()
{
    const QStringList files = paths(*load(mPatient).studies.front());
    provide(files);
    open("http://127.0.0.1:1/dicom-web"); // nobody is there
    LogCapture log(3);
    provide(files);
    QCOMPARE(log.toStrings(), QStringList());
    for (const QString& file : files)
        QVERIFY(QFile::exists(file));
}

void tst_archive::cacheKeepsItsLimit()
{
    const Ovg::StudySourceResult result = load(mPatient);
    const QStringList files = paths(*result.studies.front());
    QVERIFY(files.size() >= 4);
    const QStringList first = files.mid(0, 2);
    const QStringList second = files.mid(2, 2);
    provide(first);
    const qint64 size = QFileInfo(first.first()).size();
    open(url(), size * 3);
    provide(second);
    QVERIFY(QFile::exists(second.at(0)) && QFile::exists(second.at(1)));
    qint64 total = 0;
    for (const QString& file : cached())
        total += QFileInfo(file).size();
    QVERIFY2(total <= size * 3 + size / 2, qPrintable(QString::number(total)));
    QVERIFY(cached().size() < 4);
    open(url(), 1); // what is being brought stays, be it more than the limit
    provide(first);
    QVERIFY(QFile::exists(first.at(0)) && QFile::exists(first.at(1)));
    QCOMPARE(cached().size(), 2);
}

void tst_archive::cutConnectionsAreTakenUpAgain()
{
    CuttingProxy proxy(mOrthanc->port());
    open(proxy.url());
    proxy.cuts = 3;
    const Ovg::StudySourceResult result = load(mPatient);
    QVERIFY2(result.errors.isEmpty(), qPrintable(result.errors.join('\n')));
    QCOMPARE(result.instances, mInstances);
    QCOMPARE(proxy.cuts, 0);
    proxy.cuts = 3;
    proxy.bytesBeforeCut = 2000;
    const QStringList files = paths(*result.studies.front());
    provide(files);
    QCOMPARE(proxy.cuts, 0);
    for (const QString& file : files)
        QVERIFY2(mFiles.values().contains(read(file)), qPrintable(file));
}

void tst_archive::whatIsThereIsNotFetchedAgain()
{
    const Ovg::StudySourceResult result = load(mPatient);
    QVERIFY2(result.errors.isEmpty(), qPrintable(result.errors.join('\n')));
    QVERIFY(!result.studies.empty());
    const QStringList files = paths(*result.studies.front());
    provide(files.mid(1));
    CuttingProxy proxy(mOrthanc->port());
    open(proxy.url());
    provide(files);
    QCOMPARE(proxy.connections, 1);
    QVERIFY(QFile::exists(files.first()));
}

void tst_archive::unknownPatientsHaveNoStudies()
{
    const Ovg::StudySourceResult result = load("nobody & nothing=1#?");
    QCOMPARE(result.errors, QStringList());
    QVERIFY(result.studies.empty());
}

void tst_archive::foldersAreReadAsEver()
{
    const Ovg::StudySourceResult result = KyArchive::read(mFolder.filePath("sample"));
    QCOMPARE(result.instances, int(mFiles.size()));
}

void tst_archive::archiveIsNotThere()
{
    LogCapture log(3);
    open("http://127.0.0.1:1/dicom-web");
    const Ovg::StudySourceResult result = load("P");
    QCOMPARE(result.errors.size(), 1);
    QVERIFY2(result.errors.first().contains("refused"), qPrintable(result.errors.first()));
    QCOMPARE(log.lines().size(), 1);
}

void tst_archive::wrongAnswers_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("errors");
    QTest::newRow("not found") << LoopbackHttpServer::reply("404 Not Found", "") << 1;
    QTest::newRow("refused") << LoopbackHttpServer::reply("401 Unauthorized", "") << 1;
    QTest::newRow("no JSON") << LoopbackHttpServer::reply("200 OK", "<html>") << 1;
    QTest::newRow("an object") << LoopbackHttpServer::reply("200 OK", "{}") << 1;
    QTest::newRow("other values") << LoopbackHttpServer::reply("200 OK", "[1,null,\"x\",[],{\"0020000D\":5}]")
                                  << 0;
    QTest::newRow("nothing") << LoopbackHttpServer::reply("200 OK", "[]") << 0;
    QTest::newRow("no content") << QByteArray("HTTP/1.1 204 No Content\r\n\r\n") << 0;
}

void tst_archive::wrongAnswers()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, errors);
    LoopbackHttpServer server;
    for (const char* path : {"/studies?PatientID=P&limit=500&offset=0", "/studies"})
        server.answer(path, answer);
    open(server.url(QString()));
    LogCapture log(3);
    const Ovg::StudySourceResult result = load("P");
    QCOMPARE(result.errors.size(), errors);
    QVERIFY(result.studies.empty());
}

void tst_archive::wildcardsInAnIdAreNoWildcards()
{
    LoopbackHttpServer server;
    server.answer("/studies?PatientID=P%2A&limit=500&offset=0",
                  LoopbackHttpServer::reply("200 OK", R"([{"00100020":{"vr":"LO","Value":["P1"]},
                                                          "0020000D":{"vr":"UI","Value":["1.2"]}}])"));
    open(server.url(QString()));
    const Ovg::StudySourceResult result = load("P*");
    QVERIFY(result.studies.empty());
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(server.requests.size(), 1);
}

void tst_archive::pathsAreOfUidsOnly_data()
{
    QTest::addColumn<QString>("uid");
    for (const char* uid : {"", "..", "1/2", "../../etc/passwd", "1.2\n", "a", ".1"})
        QTest::newRow(uid) << QString::fromLatin1(uid);
    QTest::newRow("too long") << QString(65, '1');
}

void tst_archive::pathsAreOfUidsOnly()
{
    QFETCH(QString, uid);
    const KyArchiveCache cache(KyDicomWeb("http://127.0.0.1:1"), mCache->path(), 1);
    QCOMPARE(cache.path(uid, "1", "1"), QString());
    QCOMPARE(cache.path("1", uid, "1"), QString());
    QCOMPARE(cache.path("1", "1", uid), QString());
    QCOMPARE(cache.path("1.2", "3.4", "5"), mCache->path() + "/1.2/3.4/5.dcm");
}

void tst_archive::stoppingStops()
{
    const auto cache = std::make_shared<KyArchiveCache>(KyDicomWeb(url()), mCache->path(), 1 << 30);
    KyArchiveStudies studies(KyDicomWeb(url()), mPatient, cache);
    const Ovg::StudySourceResult result = studies.load([](int, int) { return false; });
    QVERIFY(result.cancelled);
    QVERIFY(result.studies.empty());
    const QStringList files = paths(*load(mPatient).studies.front());
    const auto provider = Ovg::InstanceFiles::instance();
    provider->provide(files, [](int, int) { return false; });
    QVERIFY(cached().size() < files.size());
}

KY_TEST_MAIN(tst_archive)
#include "tst_archive.moc"

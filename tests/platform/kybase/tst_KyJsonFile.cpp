#include <kybase/KyJsonFile.h>
#include <rnlib/RnLogFile.h>

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Lines final : RnLogSink
{
    void write(const RnLogRecord& inRecord) override { records.push_back(inRecord); }
    std::vector<RnLogRecord> records;
};

constexpr QLatin1String Key("count");

bool countUp(QJsonObject& ioDocument)
{
    ioDocument[Key] = ioDocument[Key].toInt() + 1;
    return true;
}

} // namespace

class tst_KyJsonFile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aMissingFileIsAnEmptyDocument();
    void anUpdateMakesTheFileAndItsFolder();
    void anUpdateWorksOnWhatOthersWrote();
    void anUpdateMayChangeNothing();
    void aChangeOnDiskIsNoticed();
    void aDamagedFileIsReportedAndSetAside_data();
    void aDamagedFileIsReportedAndSetAside();
    void whatIsNoFileIsReportedAndLeftAlone();
    void nothingIsLostWhenTheFileCannotBeWritten();

private:
    QStringList filesBeside() const;

    std::unique_ptr<QTemporaryDir> mFolder;
    QString mPath;
    std::shared_ptr<Lines> mLines;
};

void tst_KyJsonFile::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    mPath = mFolder->filePath(QStringLiteral("a/b/data.json"));
    mLines = std::make_shared<Lines>();
    getTheLogInstance().addSink(mLines);
}

void tst_KyJsonFile::cleanup()
{
    getTheLogInstance().removeSink(mLines.get());
}

QStringList tst_KyJsonFile::filesBeside() const
{
    return QFileInfo(mPath).dir().entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
}

void tst_KyJsonFile::aMissingFileIsAnEmptyDocument()
{
    KyJsonFile file(mPath);
    const auto document = file.read();
    QVERIFY(document);
    QVERIFY(document->isEmpty());
    QVERIFY(!file.hasChanged());
    QVERIFY(!QFile::exists(mPath));
    QVERIFY(mLines->records.empty());
}

void tst_KyJsonFile::anUpdateMakesTheFileAndItsFolder()
{
    KyJsonFile file(mPath);
    QVERIFY(file.update(countUp).isOk());
    QCOMPARE(KyJsonFile(mPath).read()->value(Key).toInt(), 1);
    QCOMPARE(filesBeside(), QStringList(QStringLiteral("data.json")));
}

void tst_KyJsonFile::anUpdateWorksOnWhatOthersWrote()
{
    KyJsonFile a(mPath);
    KyJsonFile b(mPath);
    QVERIFY(a.update(countUp).isOk());
    QVERIFY(b.update(countUp).isOk());
    QVERIFY(a.update(countUp).isOk());
    QCOMPARE(b.read()->value(Key).toInt(), 3);
}

void tst_KyJsonFile::anUpdateMayChangeNothing()
{
    KyJsonFile file(mPath);
    const RnResult result = file.update([](QJsonObject& ioDocument) {
        countUp(ioDocument);
        return false;
    });
    QVERIFY(result.isOk());
    QVERIFY(!QFile::exists(mPath));
}

void tst_KyJsonFile::aChangeOnDiskIsNoticed()
{
    KyJsonFile mine(mPath);
    mine.read();
    KyJsonFile theirs(mPath);
    QVERIFY(theirs.update(countUp).isOk());
    QVERIFY(!theirs.hasChanged());
    QVERIFY(mine.hasChanged());
    mine.read();
    QVERIFY(!mine.hasChanged());
    QVERIFY(QFile::remove(mPath));
    QVERIFY(mine.hasChanged());
}

void tst_KyJsonFile::aDamagedFileIsReportedAndSetAside_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("broken off") << QByteArray(R"({"count":)");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("an array") << QByteArray("[1,2]");
    QTest::newRow("binary") << QByteArray("\0\xff\x01", 3);
}

void tst_KyJsonFile::aDamagedFileIsReportedAndSetAside()
{
    QFETCH(QByteArray, content);
    QVERIFY(KyJsonFile(mPath).update(countUp).isOk());
    QFile broken(mPath);
    QVERIFY(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write(content);
    broken.close();

    KyJsonFile file(mPath);
    QVERIFY(file.update(countUp).isOk());
    QCOMPARE(file.read()->value(Key).toInt(), 1);
    const QStringList beside = filesBeside();
    QCOMPARE(beside.size(), 2);
    QVERIFY(beside.last().startsWith(QLatin1String("data.json.damaged-")));
    QFile kept(QFileInfo(mPath).dir().filePath(beside.last()));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), content);
    QCOMPARE(mLines->records.size(), std::size_t(1));
    QCOMPARE(mLines->records[0].level, 3);
    QVERIFY(mLines->records[0].text.find(mPath.toStdString()) == 0);
}

void tst_KyJsonFile::whatIsNoFileIsReportedAndLeftAlone()
{
    QVERIFY(QDir().mkpath(mPath));
    KyJsonFile file(mPath);
    QVERIFY(!file.read());
    QVERIFY(!file.update(countUp).isOk());
    QVERIFY(QFileInfo(mPath).isDir());
    QCOMPARE(mLines->records.size(), std::size_t(2));
    QCOMPARE(mLines->records[0].level, 3);
}

void tst_KyJsonFile::nothingIsLostWhenTheFileCannotBeWritten()
{
    const QString inTheWay = mFolder->filePath(QStringLiteral("a"));
    QFile plainFile(inTheWay);
    QVERIFY(plainFile.open(QIODevice::WriteOnly));
    KyJsonFile file(mPath);
    const RnResult result = file.update(countUp);
    QVERIFY(!result.isOk());
    QVERIFY(!result.text().isEmpty());
    QVERIFY(QFileInfo(inTheWay).isFile());
}

QTEST_GUILESS_MAIN(tst_KyJsonFile)
#include "tst_KyJsonFile.moc"

#include "MadeStudy.h"

#include <kybase/KyFileWorklistStore.h>
#include <kybase/KyMemoryWorklistStore.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

Ovg::WorklistEntry row(const char* inUid, const char* inAccession, const char* inPatient,
                       const char* inStatus)
{
    Ovg::WorklistEntry entry;
    entry.studyInstanceUid = inUid;
    entry.accessionNumber = inAccession;
    entry.patientId = inPatient;
    entry.status = inStatus;
    return entry;
}

std::string statusOf(KyWorklistStore& inStore, const char* inUid, const char* inAccession,
                     const char* inPatient)
{
    const auto entry = inStore.find(*madeStudy(
        {{"StudyInstanceUID", inUid}, {"AccessionNumber", inAccession}, {"PatientID", inPatient}}));
    return entry ? entry->status : "none";
}

} // namespace

/// The same questions to both forms of the port.
class tst_KyWorklistStore : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void constructionInstallsAndDestructionClears();
    void anEmptyStoreFindsNothing_data() { forms(); }
    void anEmptyStoreFindsNothing();
    void rowsAreFoundByStudy_data() { forms(); }
    void rowsAreFoundByStudy();
    void rowsWithoutAStudyAreFoundByAccessionNumber_data() { forms(); }
    void rowsWithoutAStudyAreFoundByAccessionNumber();
    void aRowOfTheStudyGoesBeforeOneOfTheAccessionNumber_data() { forms(); }
    void aRowOfTheStudyGoesBeforeOneOfTheAccessionNumber();
    void aRowReplacesTheOneAboutTheSameStudy_data() { forms(); }
    void aRowReplacesTheOneAboutTheSameStudy();
    void aRowThatNamesNoStudyIsRefused_data() { forms(); }
    void aRowThatNamesNoStudyIsRefused();
    void anEntryThatWasGivenOutStaysAsItWas_data() { forms(); }
    void anEntryThatWasGivenOutStaysAsItWas();

    void theFileKeepsEverything();
    void theFileIsReadAgainWhenItHasChanged();
    void membersMayBeMissingInTheFile();
    void foreignMembersOfTheFileStay();
    void aDamagedFileIsSetAside();

private:
    void forms();
    std::unique_ptr<KyWorklistStore> makeStore();
    void writeFile(const QByteArray& inText);

    std::unique_ptr<QTemporaryDir> mFolder;
    QString mPath;
};

void tst_KyWorklistStore::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    mPath = mFolder->filePath(QStringLiteral("profile/worklist.json"));
}

void tst_KyWorklistStore::forms()
{
    QTest::addColumn<bool>("inFile");
    QTest::newRow("memory") << false;
    QTest::newRow("file") << true;
}

std::unique_ptr<KyWorklistStore> tst_KyWorklistStore::makeStore()
{
    QFETCH(bool, inFile);
    if (inFile)
        return std::make_unique<KyFileWorklistStore>(mPath);
    return std::make_unique<KyMemoryWorklistStore>();
}

void tst_KyWorklistStore::writeFile(const QByteArray& inText)
{
    QDir().mkpath(QFileInfo(mPath).path());
    QFile file(mPath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(inText);
}

void tst_KyWorklistStore::constructionInstallsAndDestructionClears()
{
    QCOMPARE(KyWorklistStore::instance(), nullptr);
    {
        const KyMemoryWorklistStore store;
        QCOMPARE(KyWorklistStore::instance(), &store);
    }
    QCOMPARE(KyWorklistStore::instance(), nullptr);
}

void tst_KyWorklistStore::anEmptyStoreFindsNothing()
{
    const auto store = makeStore();
    QCOMPARE(statusOf(*store, "1.1", "A1", "P1"), "none");
    QCOMPARE(statusOf(*store, "", "", ""), "none");
}

void tst_KyWorklistStore::rowsAreFoundByStudy()
{
    const auto store = makeStore();
    QVERIFY(store->put(row("1.1", "A1", "P1", "DRAFT")).isOk());
    QVERIFY(store->put(row("1.2", "A1", "P1", "LOCKED")).isOk());
    QCOMPARE(statusOf(*store, "1.1", "A1", "P1"), "DRAFT");
    QCOMPARE(statusOf(*store, "1.2", "", ""), "LOCKED");
    QCOMPARE(statusOf(*store, "1.3", "A1", "P1"), "none");
}

void tst_KyWorklistStore::rowsWithoutAStudyAreFoundByAccessionNumber()
{
    const auto store = makeStore();
    QVERIFY(store->put(row("", "A1", "P1", "DRAFT")).isOk());
    QVERIFY(store->put(row("", "A1", "P2", "LOCKED")).isOk());
    QVERIFY(store->put(row("", "A2", "", "SCHEDULED")).isOk());
    QCOMPARE(statusOf(*store, "1.1", "A1", "P1"), "DRAFT");
    QCOMPARE(statusOf(*store, "1.1", "A1", "P2"), "LOCKED");
    QCOMPARE(statusOf(*store, "1.1", "A1", "P3"), "none");
    QCOMPARE(statusOf(*store, "1.1", "A2", "P3"), "SCHEDULED");
    QCOMPARE(statusOf(*store, "1.1", "", "P1"), "none");
}

void tst_KyWorklistStore::aRowOfTheStudyGoesBeforeOneOfTheAccessionNumber()
{
    const auto store = makeStore();
    store->put(row("", "A1", "P1", "DRAFT"));
    store->put(row("1.1", "", "", "LOCKED"));
    QCOMPARE(statusOf(*store, "1.1", "A1", "P1"), "LOCKED");
}

void tst_KyWorklistStore::aRowReplacesTheOneAboutTheSameStudy()
{
    const auto store = makeStore();
    store->put(row("1.1", "A1", "P1", "DRAFT"));
    store->put(row("1.1", "A9", "P9", "LOCKED"));
    QCOMPARE(statusOf(*store, "1.1", "A1", "P1"), "LOCKED");
    store->put(row("", "A2", "P2", "DRAFT"));
    store->put(row("", "A2", "P2", "REVIEWED"));
    QCOMPARE(statusOf(*store, "1.2", "A2", "P2"), "REVIEWED");
}

void tst_KyWorklistStore::aRowThatNamesNoStudyIsRefused()
{
    const auto store = makeStore();
    const RnResult result = store->put(row("", "", "P1", "DRAFT"));
    QVERIFY(!result.isOk());
    QVERIFY(!result.text().isEmpty());
}

void tst_KyWorklistStore::anEntryThatWasGivenOutStaysAsItWas()
{
    const auto store = makeStore();
    store->put(row("1.1", "", "", "DRAFT"));
    const auto entry = store->find(*madeStudy({{"StudyInstanceUID", "1.1"}}));
    store->put(row("1.1", "", "", "LOCKED"));
    QCOMPARE(entry->status, "DRAFT");
}

void tst_KyWorklistStore::theFileKeepsEverything()
{
    Ovg::WorklistEntry written = row("1.1", "A1", "P1", "DRAFT");
    written.assignee = "M\xfcller";
    written.flags = 6;
    written.attributes.insert(QStringLiteral("Comment"), QStringLiteral("山田"));
    QVERIFY(KyFileWorklistStore(mPath).put(written).isOk());

    KyFileWorklistStore store(mPath);
    const auto read = store.find(*madeStudy({{"StudyInstanceUID", "1.1"}}));
    QVERIFY(read);
    QCOMPARE(read->studyInstanceUid, written.studyInstanceUid);
    QCOMPARE(read->accessionNumber, written.accessionNumber);
    QCOMPARE(read->patientId, written.patientId);
    QCOMPARE(read->status, written.status);
    QCOMPARE(read->assignee, written.assignee);
    QCOMPARE(read->flags, written.flags);
    QCOMPARE(read->attributes, written.attributes);
}

void tst_KyWorklistStore::theFileIsReadAgainWhenItHasChanged()
{
    KyFileWorklistStore store(mPath);
    QCOMPARE(statusOf(store, "1.1", "", ""), "none");
    writeFile(R"({"entries":[{"studyInstanceUid":"1.1","status":"DRAFT"}]})");
    QCOMPARE(statusOf(store, "1.1", "", ""), "DRAFT");
    writeFile(R"({"entries":[{"studyInstanceUid":"1.1","status":"REVIEWED"}]})");
    QCOMPARE(statusOf(store, "1.1", "", ""), "REVIEWED");
    QVERIFY(QFile::remove(mPath));
    QCOMPARE(statusOf(store, "1.1", "", ""), "none");
}

void tst_KyWorklistStore::membersMayBeMissingInTheFile()
{
    writeFile(R"({"entries":[{}, 5, null, {"studyInstanceUid":"1.1"}]})");
    KyFileWorklistStore store(mPath);
    QCOMPARE(statusOf(store, "1.1", "", ""), "");
    writeFile(R"({"entries":"none"})");
    QCOMPARE(statusOf(store, "1.1", "", ""), "none");
}

void tst_KyWorklistStore::foreignMembersOfTheFileStay()
{
    writeFile(R"({"site":"north","entries":[{"studyInstanceUid":"1.1","status":"DRAFT","room":"7"}]})");
    QVERIFY(KyFileWorklistStore(mPath).put(row("1.2", "", "", "LOCKED")).isOk());
    QFile file(mPath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY(text.contains(R"("site": "north")"));
    QVERIFY(text.contains(R"("room": "7")"));
}

void tst_KyWorklistStore::aDamagedFileIsSetAside()
{
    const QByteArray damaged = R"({"entries":[{"studyInsta)";
    writeFile(damaged);
    KyFileWorklistStore store(mPath);
    QCOMPARE(statusOf(store, "1.1", "", ""), "none");
    QVERIFY(store.put(row("1.1", "", "", "DRAFT")).isOk());
    QCOMPARE(statusOf(store, "1.1", "", ""), "DRAFT");
    const QDir folder = QFileInfo(mPath).dir();
    const QStringList kept = folder.entryList({QStringLiteral("worklist.json.damaged-*")});
    QCOMPARE(kept.size(), 1);
    QFile file(folder.filePath(kept.front()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), damaged);
}

QTEST_GUILESS_MAIN(tst_KyWorklistStore)
#include "tst_KyWorklistStore.moc"

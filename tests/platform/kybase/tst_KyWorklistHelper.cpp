#include "MadeStudy.h"

#include <kybase/KyMemoryWorklistStore.h>
#include <kybase/KyWorklistHelper.h>

#include <QTest>

namespace {

Ovg::WorklistEntry entryOf(const char* inUid, const char* inStatus)
{
    Ovg::WorklistEntry entry;
    entry.studyInstanceUid = inUid;
    entry.status = inStatus;
    return entry;
}

constexpr auto KnownOnly = KyWorklistHelper::KnownOnly;
constexpr auto KnownOrAsk = KyWorklistHelper::KnownOrAsk;
constexpr auto Current = KyWorklistHelper::Current;

} // namespace

class tst_KyWorklistHelper : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aSessionIsNotFromTheWorklistAtFirst();
    void optionTwoAsksForTheCurrentEntry();
    void theStoreIsAskedForTheCurrentEntry();
    void aKnownEntryIsKept();
    void knownOnlyDoesNotAsk();
    void aMissingEntryIsAskedForAgain();
    void anEntryThatHasGoneIsForgotten();
    void withoutAStoreThereIsNoEntry();
    void withoutAStudyThereIsNoEntry();
    void studiesWithoutUidAreNotMixedUp();

    void wordsHaveCodes_data();
    void wordsHaveCodes();
    void unknownWordsHaveNone_data();
    void unknownWordsHaveNone();
    void codesGiveTheTextOfTheirColumn_data();
    void codesGiveTheTextOfTheirColumn();
    void unknownCodesGiveNothing_data();
    void unknownCodesGiveNothing();

private:
    std::unique_ptr<KyMemoryWorklistStore> mStore;
    std::unique_ptr<KySessionContext> mContext;
    KyWorklistHelper* mWorklist = nullptr;
    const std::shared_ptr<Ovg::DicomDirectoryEntry> mStudy = madeStudy({{"StudyInstanceUID", "1.1"}});
};

void tst_KyWorklistHelper::init()
{
    mStore = std::make_unique<KyMemoryWorklistStore>();
    mContext = std::make_unique<KySessionContext>();
    mWorklist = mContext->component<KyWorklistHelper>(true);
}

void tst_KyWorklistHelper::cleanup()
{
    mContext.reset();
    mStore.reset();
}

void tst_KyWorklistHelper::aSessionIsNotFromTheWorklistAtFirst()
{
    QVERIFY(!mWorklist->loadedFromWorklist);
}

void tst_KyWorklistHelper::optionTwoAsksForTheCurrentEntry()
{
    QCOMPARE(KyWorklistHelper::Option(2), Current);
}

void tst_KyWorklistHelper::theStoreIsAskedForTheCurrentEntry()
{
    mStore->put(entryOf("1.1", "DRAFT"));
    QCOMPARE(mWorklist->worklistEntry(mStudy, Current)->status, "DRAFT");
    mStore->put(entryOf("1.1", "LOCKED"));
    QCOMPARE(mWorklist->worklistEntry(mStudy, Current)->status, "LOCKED");
}

void tst_KyWorklistHelper::aKnownEntryIsKept()
{
    mStore->put(entryOf("1.1", "DRAFT"));
    QCOMPARE(mWorklist->worklistEntry(mStudy, KnownOrAsk)->status, "DRAFT");
    mStore->put(entryOf("1.1", "LOCKED"));
    QCOMPARE(mWorklist->worklistEntry(mStudy, KnownOrAsk)->status, "DRAFT");
    mWorklist->worklistEntry(mStudy, Current);
    QCOMPARE(mWorklist->worklistEntry(mStudy, KnownOrAsk)->status, "LOCKED");
}

void tst_KyWorklistHelper::knownOnlyDoesNotAsk()
{
    mStore->put(entryOf("1.1", "DRAFT"));
    QCOMPARE(mWorklist->worklistEntry(mStudy, KnownOnly), nullptr);
    const auto asked = mWorklist->worklistEntry(mStudy, KnownOrAsk);
    QVERIFY(asked);
    QCOMPARE(mWorklist->worklistEntry(mStudy, KnownOnly), asked);
}

void tst_KyWorklistHelper::aMissingEntryIsAskedForAgain()
{
    QCOMPARE(mWorklist->worklistEntry(mStudy, KnownOrAsk), nullptr);
    mStore->put(entryOf("1.1", "DRAFT"));
    QVERIFY(mWorklist->worklistEntry(mStudy, KnownOrAsk));
}

void tst_KyWorklistHelper::anEntryThatHasGoneIsForgotten()
{
    mStore->put(entryOf("1.1", "DRAFT"));
    QVERIFY(mWorklist->worklistEntry(mStudy, Current));
    mStore.reset();
    QVERIFY(mWorklist->worklistEntry(mStudy, KnownOnly));
    QCOMPARE(mWorklist->worklistEntry(mStudy, Current), nullptr);
    QCOMPARE(mWorklist->worklistEntry(mStudy, KnownOnly), nullptr);
}

void tst_KyWorklistHelper::withoutAStoreThereIsNoEntry()
{
    mStore.reset();
    QCOMPARE(mWorklist->worklistEntry(mStudy, Current), nullptr);
}

void tst_KyWorklistHelper::withoutAStudyThereIsNoEntry()
{
    mStore->put(entryOf("1.1", "DRAFT"));
    QCOMPARE(mWorklist->worklistEntry(nullptr, Current), nullptr);
}

void tst_KyWorklistHelper::studiesWithoutUidAreNotMixedUp()
{
    Ovg::WorklistEntry entry;
    entry.accessionNumber = "A1";
    mStore->put(entry);
    QVERIFY(mWorklist->worklistEntry(madeStudy({{"AccessionNumber", "A1"}}), KnownOrAsk));
    QCOMPARE(mWorklist->worklistEntry(madeStudy({{"AccessionNumber", "A2"}}), KnownOrAsk), nullptr);
}

void tst_KyWorklistHelper::wordsHaveCodes_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("code");
    const char* const words[] = {"Assignee",
                                 "Status",
                                 "Flags",
                                 "StudyInstanceUID",
                                 "AccessionNumber",
                                 "PatientID",
                                 "PatientName",
                                 "PatientBirthDate",
                                 "PatientSex",
                                 "RequestedProcedureID",
                                 "RequestedProcedureDescription",
                                 "ScheduledDateTime",
                                 "Modality",
                                 "Location",
                                 "Priority",
                                 "ReferringPhysician",
                                 "Comment"};
    int code = 0;
    for (const char* word : words)
        QTest::newRow(word) << QString::fromLatin1(word) << code++;
}

void tst_KyWorklistHelper::wordsHaveCodes()
{
    QFETCH(QString, word);
    QFETCH(int, code);
    QCOMPARE(KyWorklistHelper::code(word), code);
}

void tst_KyWorklistHelper::unknownWordsHaveNone_data()
{
    QTest::addColumn<QString>("word");
    QTest::newRow("empty") << QString();
    QTest::newRow("other case") << QStringLiteral("status");
    QTest::newRow("unknown") << QStringLiteral("Colour");
    QTest::newRow("blank") << QStringLiteral("Status ");
}

void tst_KyWorklistHelper::unknownWordsHaveNone()
{
    QFETCH(QString, word);
    QVERIFY(KyWorklistHelper::code(word) < 0);
}

void tst_KyWorklistHelper::codesGiveTheTextOfTheirColumn_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("text");
    QTest::newRow("assignee") << QStringLiteral("Assignee") << QStringLiteral("Müller");
    QTest::newRow("status") << QStringLiteral("Status") << QStringLiteral("DRAFT");
    QTest::newRow("flags") << QStringLiteral("Flags") << QStringLiteral("-6");
    QTest::newRow("study") << QStringLiteral("StudyInstanceUID") << QStringLiteral("1.1");
    QTest::newRow("accession") << QStringLiteral("AccessionNumber") << QStringLiteral("A1");
    QTest::newRow("patient") << QStringLiteral("PatientID") << QStringLiteral("P1");
    QTest::newRow("column of the site") << QStringLiteral("Priority") << QStringLiteral("HIGH");
    QTest::newRow("missing column") << QStringLiteral("Comment") << QString();
}

void tst_KyWorklistHelper::codesGiveTheTextOfTheirColumn()
{
    QFETCH(QString, word);
    QFETCH(QString, text);
    Ovg::WorklistEntry entry = entryOf("1.1", "DRAFT");
    entry.assignee = "M\xfcller";
    entry.flags = -6;
    entry.accessionNumber = "A1";
    entry.patientId = "P1";
    entry.attributes.insert(QStringLiteral("Priority"), QStringLiteral("HIGH"));
    QCOMPARE(KyWorklistHelper::data(entry, KyWorklistHelper::code(word)), text);
}

void tst_KyWorklistHelper::unknownCodesGiveNothing_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("negative") << -1;
    QTest::newRow("behind the last") << KyWorklistHelper::code(QStringLiteral("Comment")) + 1;
}

void tst_KyWorklistHelper::unknownCodesGiveNothing()
{
    QFETCH(int, code);
    QCOMPARE(KyWorklistHelper::data(entryOf("1.1", "DRAFT"), code), QString());
}

QTEST_APPLESS_MAIN(tst_KyWorklistHelper)
#include "tst_KyWorklistHelper.moc"

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptStudy.h>

#include <ovwebservice/WorklistEntry.h>

#include <QTest>

class tst_KyScriptStudy : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void tagsAreReadByTheirNames_data();
    void tagsAreReadByTheirNames();
    void dateArrivesInScriptsAsLocalMidnight();
    void timeArrivesInScriptsAsAnObjectThatPrints();
    void severalValuesArriveAsAnArray();
    void withoutAnEngineDatesStayDates();

    void worklistTagWithoutACallbackIsInvalid();
    void worklistTagIsReadThroughTheCallback();
    void worklistTagOfAnUnknownWordIsInvalid_data();
    void worklistTagOfAnUnknownWordIsInvalid();
    void worklistTagWithoutAnEntryIsInvalid();
    void prefixInAnotherCaseIsNoWorklistTag();

    void worklistOperationsReadTheEntry();
    void worklistOperationsWithoutAnEntryAreNeutral();
    void worklistEntryIsAskedForOnce();
    void loadedFromWorklistIsTheSessions();

    void timeSpentIsReadByTheStudyInstanceUid();
    void timeSpentWithoutAUidIsZero();

    void statusWordBecomesALetter_data();
    void statusWordBecomesALetter();

    void equalsComparesStudiesNotObjects();
    void equalsOfAnythingElseIsFalse();
    void orderIsThatOfTheEntries();
    void studyWithoutAnEntryIsNeutral();
    void withoutASessionEverythingIsNeutral();

private:
    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

std::shared_ptr<Ovg::WorklistEntry> entry(const char* inUid)
{
    auto e = std::make_shared<Ovg::WorklistEntry>();
    e->studyInstanceUid = inUid;
    e->assignee = "M\xfcller";
    e->status = "ASSIGNED";
    e->flags = 6;
    e->accessionNumber = "A17";
    return e;
}

/// Publishes a study as the global `study`.
void publish(KyScriptEngine& ioEngine, KyScriptStudy& ioStudy)
{
    QJSEngine::setObjectOwnership(&ioStudy, QJSEngine::CppOwnership);
    ioEngine.globalObject().setProperty("study", ioEngine.newQObject(&ioStudy));
}

} // namespace

void tst_KyScriptStudy::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
    KyScriptStudy::worklistDataCB = &KyWorklistHelper::data;
}

void tst_KyScriptStudy::cleanup()
{
    KyScriptStudy::worklistDataCB = nullptr;
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptStudy::tagsAreReadByTheirNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("keyword") << "DICOM.StudyInstanceUID" << QVariant("1.2.3");
    QTest::newRow("group and element") << "DICOM.(0020,000D)" << QVariant("1.2.3");
    QTest::newRow("number") << "DICOM.SeriesNumber" << QVariant(4);
    QTest::newRow("missing") << "DICOM.StudyDescription" << QVariant();
    QTest::newRow("unknown keyword") << "DICOM.NoSuchKeyword" << QVariant();
    QTest::newRow("without prefix") << "StudyInstanceUID" << QVariant();
    QTest::newRow("other prefix") << "dicom.StudyInstanceUID" << QVariant();
    QTest::newRow("prefix alone") << "DICOM." << QVariant();
    QTest::newRow("malformed") << "DICOM.(0020,000" << QVariant();
    QTest::newRow("empty") << "" << QVariant();
}

void tst_KyScriptStudy::tagsAreReadByTheirNames()
{
    QFETCH(QString, name);
    QFETCH(QVariant, value);
    const KyScriptStudy study(
        KyTestPlatform::studyWith({{"StudyInstanceUID", "1.2.3"}, {"SeriesNumber", "4"}}));
    const QVariant read = study.getTag(name);
    QCOMPARE(read.isValid(), value.isValid());
    QCOMPARE(read, value);
}

void tst_KyScriptStudy::dateArrivesInScriptsAsLocalMidnight()
{
    KyScriptEngine engine(nullptr, 0);
    KyScriptStudy study(KyTestPlatform::studyWith({{"StudyDate", "20240331"}}));
    publish(engine, study);
    QCOMPARE(
        engine
            .evaluate("var d = study.getTag('DICOM.StudyDate');"
                      "[d instanceof Date, d.getFullYear(), d.getMonth(), d.getDate(), d.getHours()].join()")
            .toString(),
        QStringLiteral("true,2024,2,31,0"));
}

void tst_KyScriptStudy::timeArrivesInScriptsAsAnObjectThatPrints()
{
    KyScriptEngine engine(nullptr, 0);
    KyScriptStudy study(KyTestPlatform::studyWith({{"StudyTime", "140509.12"}}));
    publish(engine, study);
    QCOMPARE(engine.evaluate("String(study.getTag('DICOM.StudyTime'))").toString(),
             QStringLiteral("14:05:09.120"));
    QVERIFY(!engine.evaluate("guiTime(study.getTag('DICOM.StudyTime'))").toString().isEmpty());
}

void tst_KyScriptStudy::severalValuesArriveAsAnArray()
{
    KyScriptEngine engine(nullptr, 0);
    KyScriptStudy study(KyTestPlatform::studyWith({{"ImageType", "ORIGINAL\\PRIMARY\\AXIAL"}}));
    publish(engine, study);
    QCOMPARE(
        engine.evaluate("var t = study.getTag('DICOM.ImageType'); Array.isArray(t) + t.join('|')").toString(),
        QStringLiteral("trueORIGINAL|PRIMARY|AXIAL"));
}

void tst_KyScriptStudy::withoutAnEngineDatesStayDates()
{
    const KyScriptStudy study(KyTestPlatform::studyWith({{"StudyDate", "20240331"}}));
    QCOMPARE(study.getTag("DICOM.StudyDate"), QVariant(QDate(2024, 3, 31)));
}

void tst_KyScriptStudy::worklistTagWithoutACallbackIsInvalid()
{
    KyScriptStudy::worklistDataCB = nullptr;
    mPlatform->worklist.put(*entry("1.2.3"));
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    QVERIFY(!study.getTag("Worklist.Status").isValid());
}

void tst_KyScriptStudy::worklistTagIsReadThroughTheCallback()
{
    mPlatform->worklist.put(*entry("1.2.3"));
    int asked = -1;
    KyScriptStudy::worklistDataCB = [&](const Ovg::WorklistEntry& e, int code) {
        asked = code;
        return QString::fromLatin1(e.accessionNumber) + "!";
    };
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    QCOMPARE(study.getTag("Worklist.AccessionNumber"), QVariant("A17!"));
    QCOMPARE(asked, KyWorklistHelper::code("AccessionNumber"));
    QVERIFY(asked >= 0);
}

void tst_KyScriptStudy::worklistTagOfAnUnknownWordIsInvalid_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("prefix alone") << "Worklist.";
    QTest::newRow("unknown word") << "Worklist.NoSuchWord";
    QTest::newRow("word in another case") << "Worklist.status";
}

void tst_KyScriptStudy::worklistTagOfAnUnknownWordIsInvalid()
{
    QFETCH(QString, name);
    mPlatform->worklist.put(*entry("1.2.3"));
    bool called = false;
    KyScriptStudy::worklistDataCB = [&](const Ovg::WorklistEntry&, int) {
        called = true;
        return QString("x");
    };
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    QVERIFY(!study.getTag(name).isValid());
    QVERIFY(!called);
}

void tst_KyScriptStudy::worklistTagWithoutAnEntryIsInvalid()
{
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    QVERIFY(!study.getTag("Worklist.Status").isValid());
}

void tst_KyScriptStudy::prefixInAnotherCaseIsNoWorklistTag()
{
    mPlatform->worklist.put(*entry("1.2.3"));
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    QVERIFY(study.getTag("Worklist.Status").isValid());
    QVERIFY(!study.getTag("worklist.Status").isValid());
    QVERIFY(!study.getTag("WORKLIST.Status").isValid());
}

void tst_KyScriptStudy::worklistOperationsReadTheEntry()
{
    mPlatform->worklist.put(*entry("1.2.3"));
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    QCOMPARE(study.worklistStatus(), QStringLiteral("ASSIGNED"));
    QCOMPARE(study.worklistAssignee(), QString::fromUtf8("Müller"));
    QCOMPARE(study.worklistFlags(), 6);
    QCOMPARE(study.getTag("Worklist.Flags"), QVariant("6"));
}

void tst_KyScriptStudy::worklistOperationsWithoutAnEntryAreNeutral()
{
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    QCOMPARE(study.worklistStatus(), QString());
    QCOMPARE(study.worklistAssignee(), QString());
    QCOMPARE(study.worklistFlags(), 0);
    QVERIFY(!study.worklistEntry());
}

void tst_KyScriptStudy::worklistEntryIsAskedForOnce()
{
    const auto dde = KyTestPlatform::study("1.2.3");
    const KyScriptStudy before(dde);
    QCOMPARE(before.worklistFlags(), 0);

    mPlatform->worklist.put(*entry("1.2.3"));
    QCOMPARE(before.worklistFlags(), 0);
    QCOMPARE(before.worklistStatus(), QString());
    QCOMPARE(KyScriptStudy(dde).worklistFlags(), 6);
}

void tst_KyScriptStudy::loadedFromWorklistIsTheSessions()
{
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    QVERIFY(!study.loadedFromWorklist());
    mPlatform->session.component<KyWorklistHelper>(true)->loadedFromWorklist = true;
    QVERIFY(study.loadedFromWorklist());
    QVERIFY(KyScriptStudy(nullptr).loadedFromWorklist());
}

void tst_KyScriptStudy::timeSpentIsReadByTheStudyInstanceUid()
{
    mPlatform->metrics.addTimeSpent("1.2.3", 12.5f);
    KyScriptEngine engine(nullptr, 0);
    KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    publish(engine, study);
    QCOMPARE(engine.evaluate("study.getTimeSpent()").toNumber(), 12.5);
    QCOMPARE(KyScriptStudy(KyTestPlatform::study("1.2.4")).getTimeSpent(), 0.0f);
}

void tst_KyScriptStudy::timeSpentWithoutAUidIsZero()
{
    mPlatform->metrics.addTimeSpent("", 12.5f);
    const KyScriptStudy study(KyTestPlatform::studyWith({{"PatientName", "Doe^Jane"}}));
    QCOMPARE(study.getTimeSpent(), 0.0f);
}

void tst_KyScriptStudy::statusWordBecomesALetter_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QString>("letter");
    QTest::newRow("COMPLETED") << QByteArray("COMPLETED") << "F";
    QTest::newRow("SCHEDULED") << QByteArray("SCHEDULED") << "N";
    QTest::newRow("PRELIMINARY") << QByteArray("PRELIMINARY") << "P";
    QTest::newRow("REVIEWED") << QByteArray("REVIEWED") << "R";
    QTest::newRow("DRAFT") << QByteArray("DRAFT") << "D";
    QTest::newRow("INPROGRESS") << QByteArray("INPROGRESS") << "I";
    QTest::newRow("LOCKED") << QByteArray("LOCKED") << "L";
    QTest::newRow("empty") << QByteArray("") << "";
    QTest::newRow("lower case") << QByteArray("completed") << "";
    QTest::newRow("other word") << QByteArray("ARRIVED") << "";
    QTest::newRow("beginning of a word") << QByteArray("LOCK") << "";
    QTest::newRow("longer word") << QByteArray("LOCKEDX") << "";
}

void tst_KyScriptStudy::statusWordBecomesALetter()
{
    QFETCH(QByteArray, word);
    QFETCH(QString, letter);
    const auto dde = KyTestPlatform::study("1.2.3");
    dde->setStudyStatus(word.toStdString());
    QCOMPARE(KyScriptStudy(dde).getInterpretationStatus(), letter);
}

void tst_KyScriptStudy::equalsComparesStudiesNotObjects()
{
    const auto dde = KyTestPlatform::study("1.2.3");
    const KyScriptStudy a(dde), b(dde), same(KyTestPlatform::study("1.2.3")),
        other(KyTestPlatform::study("1.2.4"));
    QVERIFY(a.equals(&a));
    QVERIFY(a.equals(&b));
    QVERIFY(a.equals(&same));
    QVERIFY(!a.equals(&other));
}

void tst_KyScriptStudy::equalsOfAnythingElseIsFalse()
{
    KyScriptEngine engine(nullptr, -1);
    KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    publish(engine, study);
    QVERIFY(!study.equals(nullptr));
    QVERIFY(!study.equals(&engine));
    QCOMPARE(engine
                 .evaluate("[study.equals(study), study.equals(null), study.equals(undefined),"
                           " study.equals(StudyList)].join()")
                 .toString(),
             QStringLiteral("true,false,false,false"));
}

void tst_KyScriptStudy::orderIsThatOfTheEntries()
{
    const KyScriptStudy a(KyTestPlatform::study("1.2.3", "A")), b(KyTestPlatform::study("1.2.3", "B"));
    QVERIFY(a < b);
    QVERIFY(!(b < a));
    QVERIFY(!(a < a));
    QVERIFY(KyScriptStudy(nullptr) < a);
    QVERIFY(!(a < KyScriptStudy(nullptr)));
}

void tst_KyScriptStudy::studyWithoutAnEntryIsNeutral()
{
    const KyScriptStudy study(nullptr);
    QVERIFY(!study.getTag("DICOM.StudyInstanceUID").isValid());
    QVERIFY(!study.getTag("Worklist.Status").isValid());
    QCOMPARE(study.getInterpretationStatus(), QString());
    QCOMPARE(study.getTimeSpent(), 0.0f);
    QCOMPARE(study.worklistFlags(), 0);
}

void tst_KyScriptStudy::withoutASessionEverythingIsNeutral()
{
    const KyScriptStudy study(KyTestPlatform::study("1.2.3"));
    mPlatform.reset();
    QCOMPARE(study.getTag("DICOM.StudyInstanceUID"), QVariant("1.2.3"));
    QVERIFY(!study.getTag("Worklist.Status").isValid());
    QCOMPARE(study.worklistStatus(), QString());
    QVERIFY(!study.loadedFromWorklist());
    QCOMPARE(study.getTimeSpent(), 0.0f);
}

KY_TEST_MAIN(tst_KyScriptStudy)
#include "tst_KyScriptStudy.moc"

#include <support/ContractWatch.h>
#include <support/KyTest.h>
#include <support/KyTestPlatform.h>

#include <kyscript/KyScriptEngine.h>
#include <kyscript/KyScriptProgram.h>
#include <kyscript/KyScriptStudy.h>

#include <kybase/KyBaseViewer.h>
#include <kyreporttab/KyReportHelper.h>
#include <ovbase/OvReportLocker.h>
#include <ovvolren/OvVolume.h>
#include <ovwebservice/WorklistEntry.h>

#include <QPointer>
#include <QTest>

#include <algorithm>

class tst_KyScriptStudyList : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void listsComeInTheirOrder_data();
    void listsComeInTheirOrder();
    void unknownWordIsTakenAsAStudy_data();
    void unknownWordIsTakenAsAStudy();
    void wordsOfListsMindCase();
    void relevantStudiesAreThoseFlaggedOrPinned();

    void activeViewerGivesItsStudy();
    void activeViewerWithSomethingMissingGivesNone_data();
    void activeViewerWithSomethingMissingGivesNone();
    void layoutGivesEachStudyOnceInViewerOrder();
    void layoutSkipsWhatHasNoStudy();

    void sameStudyFetchedTwiceIsTwoEqualObjects();
    void listIsAnArrayOfScripts();

    void setOperationsWalkSortedLists_data();
    void setOperationsWalkSortedLists();
    void setOperationsKeepTheElementsOfTheFirstList();
    void equivalentElementsKeepTheirOrder();
    void foreignObjectsSortBehindStudies();
    void setOperationsTakeWhatScriptsPass_data();
    void setOperationsTakeWhatScriptsPass();
    void uniteOfTwoFetchesYieldsEachStudyOnce();
    void setOperationsWrapNothing();

    void lockForReportingLocksTheEntries();
    void lockForReportingReportsWhatIsNoStudy();
    void lockForReportingOfNothingTouchesNoComponent();
    void lockForReportingWithoutEntriesTouchesNoComponent();

    void studiesEndWithTheRun();
    void studyKeptBeyondTheRunAnswersNeutrally();
    void methodCalledFirstAfterTheRunDoesNoHarm();
    void studiesThatNoScriptHasSeenGoAtOnce();
    void manyRunsLeaveABoundedNumberOfObjects();
    void studiesStayWithoutCleanup();
    void garbageCollectionLeavesStudiesAlone();
    void scriptCannotDestroyAStudy();
    void withoutASessionListsAreEmpty();

private:
    QStringList uids(const QObjectList& inStudies) const;

    std::unique_ptr<KyTestPlatform> mPlatform;
    std::unique_ptr<ContractWatch> mContracts;
};

namespace {

using Entry = std::shared_ptr<Ovg::DicomDirectoryEntry>;

/// A viewer on the study \a inUid; with a null one it shows a volume of no series.
class Viewer final : public KyBaseViewer
{
public:
    explicit Viewer(const char* inUid)
        : mVolume(new OvVolume(inUid ? std::make_unique<OvDBMetaInfo>() : nullptr))
    {
        if (inUid)
            mVolume->dbMetaInfo()->studyId = inUid;
    }
    OvVolume* volume(int inIndex) override { return inIndex == 0 ? mVolume.get() : nullptr; }

private:
    RnHandle<OvVolume> mVolume;
};

/// A viewer without a volume.
class EmptyViewer final : public KyBaseViewer
{};

/// Studies of one name and the uids given, for the tests of set operations.
std::vector<std::unique_ptr<KyScriptStudy>> studies(const QString& inUids)
{
    std::vector<std::unique_ptr<KyScriptStudy>> made;
    for (const QString& uid : inUids.split(' ', Qt::SkipEmptyParts))
        made.push_back(std::make_unique<KyScriptStudy>(KyTestPlatform::study(uid)));
    return made;
}

QObjectList objects(const std::vector<std::unique_ptr<KyScriptStudy>>& inStudies)
{
    QObjectList list;
    for (const auto& study : inStudies)
        list.append(study.get());
    return list;
}

} // namespace

QStringList tst_KyScriptStudyList::uids(const QObjectList& inStudies) const
{
    QStringList result;
    for (QObject* object : inStudies) {
        const auto* study = qobject_cast<KyScriptStudy*>(object);
        result.append(study ? QString::fromStdString(study->dde()->studyInstanceUid()) : "-");
    }
    return result;
}

void tst_KyScriptStudyList::init()
{
    mPlatform = std::make_unique<KyTestPlatform>();
    mContracts = std::make_unique<ContractWatch>();
}

void tst_KyScriptStudyList::cleanup()
{
    const QString broken = mContracts->verify();
    mContracts.reset();
    mPlatform.reset();
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptStudyList::listsComeInTheirOrder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("primary") << "PRIMARY_STUDIES" << QStringList({"3", "1"});
    QTest::newRow("additional") << "ADDITIONAL_STUDIES" << QStringList({"9", "2"});
    QTest::newRow("primary, old") << "PRIMARY_STUDIES_OLD" << QStringList({"6", "5"});
    QTest::newRow("additional, old") << "ADDITIONAL_STUDIES_OLD" << QStringList({"8", "7"});
    QTest::newRow("all of the patient") << "ALL_STUDIES_OF_PATIENT" << QStringList({"3", "1", "9"});
    QTest::newRow("relevant of the patient") << "RELEVANT_STUDIES_OF_PATIENT" << QStringList({"3", "1"});
    QTest::newRow("active viewer") << "ACTIVE_VIEWER" << QStringList();
    QTest::newRow("active layout") << "ACTIVE_LAYOUT" << QStringList();
}

void tst_KyScriptStudyList::listsComeInTheirOrder()
{
    QFETCH(QString, name);
    QFETCH(QStringList, expected);
    auto& loader = mPlatform->loader();
    const auto s = [](const char* uid, const char* patient) { return KyTestPlatform::study(uid, patient); };
    loader.setPrimaryExams({s("6", "A"), s("5", "A")});
    loader.setAdditionalExams({s("8", "B"), s("7", "B")});
    loader.setPrimaryExams({s("3", "A"), s("1", "A")});
    loader.setAdditionalExams({s("9", "A"), s("2", "B")});
    KyScriptStudyList list(nullptr);
    QCOMPARE(uids(list.get(name)), expected);
}

void tst_KyScriptStudyList::unknownWordIsTakenAsAStudy_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("primary study") << "1.2.3" << QStringList("1.2.3");
    QTest::newRow("additional study") << "1.2.4" << QStringList("1.2.4");
    QTest::newRow("unknown study") << "1.2.5" << QStringList();
    QTest::newRow("empty") << "" << QStringList();
    QTest::newRow("word") << "MY_STUDIES" << QStringList();
}

void tst_KyScriptStudyList::unknownWordIsTakenAsAStudy()
{
    QFETCH(QString, name);
    QFETCH(QStringList, expected);
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1.2.3")});
    mPlatform->loader().setAdditionalExams({KyTestPlatform::study("1.2.4")});
    KyScriptStudyList list(nullptr);
    QCOMPARE(uids(list.get(name)), expected);
}

void tst_KyScriptStudyList::wordsOfListsMindCase()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1.2.3")});
    KyScriptStudyList list(nullptr);
    QVERIFY(list.get("primary_studies").isEmpty());
    QVERIFY(list.get(" PRIMARY_STUDIES").isEmpty());
}

void tst_KyScriptStudyList::relevantStudiesAreThoseFlaggedOrPinned()
{
    auto& loader = mPlatform->loader();
    loader.setPrimaryExams({KyTestPlatform::study("1", "A")});
    loader.setAdditionalExams(
        {KyTestPlatform::study("2", "A"), KyTestPlatform::study("3", "A"), KyTestPlatform::study("4", "A")});
    const auto& all = loader.allStudiesOfPatientInfo();
    QCOMPARE(all.size(), 4u);
    all[1]->setPinned(true);
    QVERIFY(!all[1]->relevant);
    all[3]->relevant = true;
    KyScriptStudyList list(nullptr);
    QCOMPARE(uids(list.get("RELEVANT_STUDIES_OF_PATIENT")), QStringList({"1", "2", "4"}));
}

void tst_KyScriptStudyList::activeViewerGivesItsStudy()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1.2.3"), KyTestPlatform::study("1.2.4")});
    const RnHandle<Viewer> first(new Viewer("1.2.3")), second(new Viewer("1.2.4"));
    mPlatform->viewers.setActiveViewer(second.get());
    KyScriptStudyList list(nullptr);
    QCOMPARE(uids(list.get("ACTIVE_VIEWER")), QStringList("1.2.4"));
}

void tst_KyScriptStudyList::activeViewerWithSomethingMissingGivesNone_data()
{
    QTest::addColumn<QString>("missing");
    for (const char* missing : {"active viewer", "volume", "database information", "study"})
        QTest::newRow(missing) << missing;
}

void tst_KyScriptStudyList::activeViewerWithSomethingMissingGivesNone()
{
    QFETCH(QString, missing);
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1.2.3")});
    RnHandle<KyBaseViewer> viewer;
    if (missing == "volume")
        viewer = RnHandle<KyBaseViewer>(new EmptyViewer);
    else if (missing == "database information")
        viewer = RnHandle<KyBaseViewer>(new Viewer(nullptr));
    else
        viewer = RnHandle<KyBaseViewer>(new Viewer(missing == "study" ? "9.9.9" : "1.2.3"));
    if (missing != "active viewer")
        mPlatform->viewers.setActiveViewer(viewer.get());
    KyScriptStudyList list(nullptr);
    QVERIFY(list.get("ACTIVE_VIEWER").isEmpty());
}

void tst_KyScriptStudyList::layoutGivesEachStudyOnceInViewerOrder()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1"), KyTestPlatform::study("2")});
    const RnHandle<Viewer> a(new Viewer("2")), b(new Viewer("1")), c(new Viewer("2"));
    KyScriptStudyList list(nullptr);
    QCOMPARE(uids(list.get("ACTIVE_LAYOUT")), QStringList({"2", "1"}));
}

void tst_KyScriptStudyList::layoutSkipsWhatHasNoStudy()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    const RnHandle<KyBaseViewer> a(new EmptyViewer), b(new Viewer(nullptr)), c(new Viewer("9")),
        d(new Viewer("1"));
    KyScriptStudyList list(nullptr);
    QCOMPARE(uids(list.get("ACTIVE_LAYOUT")), QStringList("1"));
}

void tst_KyScriptStudyList::sameStudyFetchedTwiceIsTwoEqualObjects()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptStudyList list(nullptr);
    QObject* first = list.get("PRIMARY_STUDIES").value(0);
    QObject* second = list.get("PRIMARY_STUDIES").value(0);
    QVERIFY(first && second && first != second);
    QVERIFY(qobject_cast<KyScriptStudy*>(first)->equals(second));
    QVERIFY(!first->parent());
}

void tst_KyScriptStudyList::listIsAnArrayOfScripts()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1"), KyTestPlatform::study("2")});
    KyScriptEngine engine(nullptr, ScriptStudyList);
    QCOMPARE(engine
                 .evaluate("var l = StudyList.get('PRIMARY_STUDIES'); Array.isArray(l) + ' ' + "
                           "l.map(function(s) { return s.getTag('DICOM.StudyInstanceUID'); }).join()")
                 .toString(),
             QStringLiteral("true 1,2"));
}

void tst_KyScriptStudyList::setOperationsWalkSortedLists_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<QString>("united");
    QTest::addColumn<QString>("subtracted");
    QTest::addColumn<QString>("intersected");
    QTest::newRow("both empty") << ""
                                << ""
                                << ""
                                << ""
                                << "";
    QTest::newRow("A empty") << ""
                             << "3 1 2"
                             << "1 2 3"
                             << ""
                             << "";
    QTest::newRow("B empty") << "3 1 2"
                             << ""
                             << "1 2 3"
                             << "1 2 3"
                             << "";
    QTest::newRow("disjoint") << "4 2"
                              << "3 1"
                              << "1 2 3 4"
                              << "2 4"
                              << "";
    QTest::newRow("overlapping") << "3 1 2"
                                 << "4 2 3"
                                 << "1 2 3 4"
                                 << "1"
                                 << "2 3";
    QTest::newRow("equal") << "2 1"
                           << "1 2"
                           << "1 2"
                           << ""
                           << "1 2";
    QTest::newRow("twice in A, once in B") << "1 1"
                                           << "1"
                                           << "1 1"
                                           << "1"
                                           << "1";
    QTest::newRow("once in A, twice in B") << "1"
                                           << "1 1"
                                           << "1 1"
                                           << ""
                                           << "1";
    QTest::newRow("duplicates in A alone") << "2 1 2"
                                           << "3"
                                           << "1 2 2 3"
                                           << "1 2 2"
                                           << "";
    QTest::newRow("duplicates with an empty list") << "2 1 2"
                                                   << ""
                                                   << "1 2 2"
                                                   << "1 2 2"
                                                   << "";
}

void tst_KyScriptStudyList::setOperationsWalkSortedLists()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    const auto studiesA = studies(a), studiesB = studies(b);
    const QObjectList listA = objects(studiesA), listB = objects(studiesB);
    const KyScriptStudyList list(nullptr);
    QTEST(uids(list.unite(listA, listB)).join(' '), "united");
    QTEST(uids(list.subtract(listA, listB)).join(' '), "subtracted");
    QTEST(uids(list.intersect(listA, listB)).join(' '), "intersected");
}

void tst_KyScriptStudyList::setOperationsKeepTheElementsOfTheFirstList()
{
    const auto a = studies("2 1"), b = studies("1 3");
    const KyScriptStudyList list(nullptr);
    QCOMPARE(list.unite(objects(a), objects(b)), QObjectList({a[1].get(), a[0].get(), b[1].get()}));
    QCOMPARE(list.intersect(objects(a), objects(b)), QObjectList({a[1].get()}));
    QCOMPARE(list.subtract(objects(a), objects(b)), QObjectList({a[0].get()}));
}

void tst_KyScriptStudyList::equivalentElementsKeepTheirOrder()
{
    const auto a = studies("2 1 2 1 1");
    const KyScriptStudyList list(nullptr);
    QCOMPARE(list.unite(objects(a), {}),
             QObjectList({a[1].get(), a[3].get(), a[4].get(), a[0].get(), a[2].get()}));
}

void tst_KyScriptStudyList::foreignObjectsSortBehindStudies()
{
    const auto a = studies("2 1");
    QObject x, y;
    QObject* low = std::min(&x, &y, std::less<QObject*>());
    QObject* high = std::max(&x, &y, std::less<QObject*>());
    const KyScriptStudyList list(nullptr);
    const QObjectList mixed = {high, a[0].get(), nullptr, low, a[1].get()};
    QCOMPARE(list.unite(mixed, {}), QObjectList({a[1].get(), a[0].get(), nullptr, low, high}));
    QCOMPARE(list.subtract(mixed, {low, nullptr}), QObjectList({a[1].get(), a[0].get(), high}));
    QCOMPARE(list.intersect(mixed, {high, a[0].get()}), QObjectList({a[0].get(), high}));
    QCOMPARE(list.unite({low}, {low}), QObjectList({low}));
}

void tst_KyScriptStudyList::setOperationsTakeWhatScriptsPass_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("result");
    QTest::newRow("empty arrays") << "StudyList.unite([], []).length"
                                  << "0";
    QTest::newRow("null for a list is a list of null") << "StudyList.unite(null, []).length"
                                                       << "1";
    QTest::newRow("null in a list") << "StudyList.unite([null], [s]).length"
                                    << "2";
    QTest::newRow("texts and numbers count as null") << "StudyList.subtract([1, 'x', s], [null]).length"
                                                     << "2";
    QTest::newRow("one study for a list") << "StudyList.intersect(s, [s]).length"
                                          << "1";
    QTest::newRow("other host objects") << "StudyList.unite([StudyList, s], []).indexOf(StudyList)"
                                        << "1";
}

void tst_KyScriptStudyList::setOperationsTakeWhatScriptsPass()
{
    QFETCH(QString, source);
    QFETCH(QString, result);
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptEngine engine(nullptr, ScriptStudyList);
    engine.evaluate("var s = StudyList.get('PRIMARY_STUDIES')[0]");
    QCOMPARE(engine.evaluate(source).toString(), result);
}

void tst_KyScriptStudyList::uniteOfTwoFetchesYieldsEachStudyOnce()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("2"), KyTestPlatform::study("1")});
    KyScriptStudyList list(nullptr);
    const QObjectList first = list.get("PRIMARY_STUDIES"), second = list.get("PRIMARY_STUDIES");
    QCOMPARE(list.unite(first, second), QObjectList({first[1], first[0]}));
}

void tst_KyScriptStudyList::setOperationsWrapNothing()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptStudyList list(nullptr);
    const QPointer<QObject> fetched = list.get("PRIMARY_STUDIES").first();
    const auto own = studies("2");
    const QPointer<QObject> mine = own[0].get();
    QCOMPARE(list.unite({fetched}, objects(own)).size(), 2);
    list.clear();
    QVERIFY(!fetched);
    QVERIFY(mine);
}

void tst_KyScriptStudyList::lockForReportingLocksTheEntries()
{
    Ovg::WorklistEntry entry;
    entry.studyInstanceUid = "1";
    mPlatform->worklist.put(entry);
    const auto some = studies("1 2");
    KyScriptStudyList(nullptr).lockForReporting(objects(some));

    auto* reports = mPlatform->session.component<KyReportHelper>(false);
    QVERIFY(reports);
    OvReportLocker* locker = reports->locker(false);
    QVERIFY(locker);
    QCOMPARE(locker->locked().size(), 1u);
    QCOMPARE(locker->locked().front()->studyInstanceUid, std::string("1"));
}

void tst_KyScriptStudyList::lockForReportingReportsWhatIsNoStudy()
{
    Ovg::WorklistEntry entry;
    entry.studyInstanceUid = "1";
    mPlatform->worklist.put(entry);
    const auto some = studies("1");
    QObject foreign;
    mContracts->expect("study");
    mContracts->expect("study");
    KyScriptStudyList(nullptr).lockForReporting({&foreign, nullptr, some[0].get()});
    QVERIFY(mPlatform->session.component<KyReportHelper>(false));
    QCOMPARE(mPlatform->session.component<KyReportHelper>(false)->locker(false)->locked().size(), 1u);
}

void tst_KyScriptStudyList::lockForReportingOfNothingTouchesNoComponent()
{
    KyScriptStudyList(nullptr).lockForReporting({});
    QVERIFY(!mPlatform->session.component<KyReportHelper>(false));
}

void tst_KyScriptStudyList::lockForReportingWithoutEntriesTouchesNoComponent()
{
    const auto some = studies("1 2");
    KyScriptStudyList(nullptr).lockForReporting(objects(some));
    QVERIFY(!mPlatform->session.component<KyReportHelper>(false));
}

void tst_KyScriptStudyList::studiesEndWithTheRun()
{
    auto entry = KyTestPlatform::study("1");
    const std::weak_ptr<Ovg::DicomDirectoryEntry> study = entry;
    mPlatform->loader().setPrimaryExams({std::move(entry)});
    KyScriptEngine engine(nullptr, ScriptStudyList);
    engine.runScript(KyScriptProgram("var kept = StudyList.get('PRIMARY_STUDIES');", nullptr), false);
    const QPointer<QObject> object = engine.evaluate("kept[0]").toQObject();
    QVERIFY(object);
    mPlatform->loader().setPrimaryExams({});
    mPlatform->loader().setPrimaryExams({});
    QVERIFY2(study.expired(), "the object has let go of the study");
    QVERIFY(!qobject_cast<KyScriptStudy*>(object)->dde());
}

void tst_KyScriptStudyList::studyKeptBeyondTheRunAnswersNeutrally()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptEngine engine(nullptr, ScriptStudyList);
    engine.runScript(KyScriptProgram("var kept = StudyList.get('PRIMARY_STUDIES');", nullptr), false);
    engine.collectGarbage();
    QCOMPARE(
        engine
            .evaluate(
                "var k = kept[0]; [k.getTag('DICOM.StudyInstanceUID'), k.worklistFlags(), k.getTimeSpent(),"
                "k.getInterpretationStatus(), k.equals(StudyList.get('1')[0])].join('|')")
            .toString(),
        QStringLiteral("|0|0||false"));
    QCOMPARE(engine.evaluate("StudyList.unite(kept, []).length").toInt(), 1);
    engine.runScript(KyScriptProgram("StudyList.lockForReporting(kept)", nullptr), false);
}

void tst_KyScriptStudyList::methodCalledFirstAfterTheRunDoesNoHarm()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptEngine engine(nullptr, ScriptStudyList);
    engine.runScript(
        KyScriptProgram("var s = StudyList.get('PRIMARY_STUDIES')[0];"
                        "var status = s.getInterpretationStatus, named = s.objectNameChanged; s = null;",
                        nullptr),
        false);
    for (int i = 0; i < 2; ++i) {
        engine.collectGarbage();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(engine.evaluate("String(status())").toString(), QString());
        engine.evaluate("named.connect(function() {})");
    }
}

void tst_KyScriptStudyList::studiesThatNoScriptHasSeenGoAtOnce()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptStudyList list(nullptr);
    const QPointer<QObject> study = list.get("PRIMARY_STUDIES").first();
    list.clear();
    QVERIFY(!study);
}

void tst_KyScriptStudyList::manyRunsLeaveABoundedNumberOfObjects()
{
    KyLoadHelper::Exams exams;
    for (int i = 0; i < 1000; ++i)
        exams.push_back(KyTestPlatform::study(QString::number(i)));
    mPlatform->loader().setPrimaryExams(exams);
    KyScriptEngine engine(nullptr, ScriptStudyList);
    QList<QPointer<QObject>> firsts;
    for (int i = 0; i < 8; ++i) {
        engine.runScript(KyScriptProgram("var first = StudyList.get('PRIMARY_STUDIES')[0]", nullptr), false);
        firsts.append(engine.evaluate("first").toQObject());
    }
    QVERIFY2(!firsts[0] && !firsts[2], "the oldest are gone");
    QVERIFY2(firsts[3] && firsts[7], "the newest 5000 are there");
}

void tst_KyScriptStudyList::studiesStayWithoutCleanup()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptEngine engine(nullptr, ScriptStudyList);
    engine.runScript(KyScriptProgram("var kept = StudyList.get('PRIMARY_STUDIES');", nullptr), false, false,
                     false);
    QCOMPARE(engine.evaluate("kept[0].getTag('DICOM.StudyInstanceUID')").toString(), QStringLiteral("1"));
}

void tst_KyScriptStudyList::garbageCollectionLeavesStudiesAlone()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptEngine engine(nullptr, ScriptStudyList);
    const QPointer<QObject> study = engine.evaluate("StudyList.get('PRIMARY_STUDIES')[0]").toQObject();
    QVERIFY(study);
    engine.collectGarbage();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(study);
}

void tst_KyScriptStudyList::scriptCannotDestroyAStudy()
{
    mPlatform->loader().setPrimaryExams({KyTestPlatform::study("1")});
    KyScriptEngine engine(nullptr, ScriptStudyList);
    QVERIFY(engine.evaluate("StudyList.get('PRIMARY_STUDIES')[0].destroy()").isError());
}

void tst_KyScriptStudyList::withoutASessionListsAreEmpty()
{
    mPlatform.reset();
    KyScriptStudyList list(nullptr);
    for (const char* name :
         {"PRIMARY_STUDIES", "ACTIVE_VIEWER", "ACTIVE_LAYOUT", "ALL_STUDIES_OF_PATIENT", "1.2.3"})
        QVERIFY(list.get(name).isEmpty());
    const auto some = studies("1");
    list.lockForReporting(objects(some));
}

KY_TEST_MAIN(tst_KyScriptStudyList)
#include "tst_KyScriptStudyList.moc"

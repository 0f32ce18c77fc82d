#include "MadeStudy.h"

#include <support/KyTest.h>
#include <support/ModalAnswer.h>

#include <jxbase/JxMessageBox.h>
#include <kybase/KyLoadHelper.h>

#include <QPushButton>
#include <QStringList>
#include <QTest>

namespace {

using Study = std::shared_ptr<Ovg::DicomDirectoryEntry>;
using Exams = KyLoadHelper::Exams;

Study studyOf(const char* inPatientId, const char* inUid, const char* inName = "Meier^Anna")
{
    return madeStudy({{"PatientID", inPatientId}, {"PatientName", inName}, {"StudyInstanceUID", inUid}});
}

QStringList uidsOfPatient(const KyLoadHelper& inLoader)
{
    QStringList uids;
    for (const auto& study : inLoader.allStudiesOfPatientInfo())
        uids += QString::fromLatin1(study->dde()->studyInstanceUid());
    return uids;
}

OvStudyObject* ofPatient(const KyLoadHelper& inLoader, const char* inUid)
{
    for (const auto& study : inLoader.allStudiesOfPatientInfo()) {
        if (study->dde()->studyInstanceUid() == inUid)
            return study.get();
    }
    return nullptr;
}

} // namespace

class tst_KyLoadHelper : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void everythingIsEmptyAtFirst();
    void listsKeepTheirOrder();
    void settingAListMovesItToTheOldOne();
    void eachListHasItsOwnOldOne();
    void nullEntriesAreLeftOut();

    void aLoadedStudyIsFoundByItsUid();
    void anUnloadedStudyIsNotFound();
    void emptyAndNullIdsFindNothing();
    void thePrimaryOneOfTwoEqualStudiesIsFound();

    void accessionNumbersAreCompared_data();
    void accessionNumbersAreCompared();
    void inSyncNothingIsShown();
    void outOfSyncTheUserIsWarned();
    void sessionMayEndUnderTheWarning();

    void studiesOfThePatientComeFromBothLists();
    void studiesOfOtherPatientsStayOut();
    void withoutAPrimaryStudyThereIsNoPatient();
    void aStudyInBothListsCountsOnce();
    void aStudyOfANamelessPatientIsItsOwn();
    void primaryStudiesAreRelevant();
    void flagsStayWithTheirStudy();
    void flagsGoWithTheirStudy();
    void aReloadedStudyKeepsItsFlags();
    void aPrimaryStudyThatBecomesAdditionalStaysRelevant();

    void patientsAreToldApart_data();
    void patientsAreToldApart();

private:
    std::unique_ptr<KySessionContext> mContext;
    KyLoadHelper* mLoader = nullptr;
};

void tst_KyLoadHelper::init()
{
    mContext = std::make_unique<KySessionContext>();
    mLoader = mContext->component<KyLoadHelper>(true);
}

void tst_KyLoadHelper::cleanup()
{
    mContext.reset();
}

void tst_KyLoadHelper::everythingIsEmptyAtFirst()
{
    QVERIFY(mLoader->primaryExams().empty());
    QVERIFY(mLoader->additionalExams().empty());
    QVERIFY(mLoader->primaryExamsOld().empty());
    QVERIFY(mLoader->additionalExamsOld().empty());
    QVERIFY(mLoader->allStudiesOfPatientInfo().empty());
}

void tst_KyLoadHelper::listsKeepTheirOrder()
{
    const Exams exams{studyOf("P1", "1.9"), studyOf("P2", "1.1"), studyOf("P1", "1.5")};
    mLoader->setPrimaryExams(exams);
    QVERIFY(mLoader->primaryExams() == exams);
}

void tst_KyLoadHelper::settingAListMovesItToTheOldOne()
{
    const Exams first{studyOf("P1", "1.1")};
    const Exams second{studyOf("P1", "1.2")};
    mLoader->setPrimaryExams(first);
    QVERIFY(mLoader->primaryExamsOld().empty());
    mLoader->setPrimaryExams(second);
    QVERIFY(mLoader->primaryExamsOld() == first);
    mLoader->setPrimaryExams({});
    QVERIFY(mLoader->primaryExamsOld() == second);
    QVERIFY(mLoader->primaryExams().empty());
}

void tst_KyLoadHelper::eachListHasItsOwnOldOne()
{
    const Exams prior{studyOf("P1", "1.1")};
    mLoader->setAdditionalExams(prior);
    mLoader->setPrimaryExams({studyOf("P1", "1.2")});
    QVERIFY(mLoader->additionalExamsOld().empty());
    mLoader->setAdditionalExams({});
    QVERIFY(mLoader->additionalExamsOld() == prior);
    QVERIFY(mLoader->primaryExamsOld().empty());
}

void tst_KyLoadHelper::nullEntriesAreLeftOut()
{
    const Study study = studyOf("P1", "1.1");
    mLoader->setPrimaryExams({nullptr, study, nullptr});
    mLoader->setAdditionalExams({nullptr});
    QVERIFY(mLoader->primaryExams() == Exams{study});
    QVERIFY(mLoader->additionalExams().empty());
}

void tst_KyLoadHelper::aLoadedStudyIsFoundByItsUid()
{
    const Study primary = studyOf("P1", "1.1");
    const Study additional = studyOf("P2", "1.2");
    mLoader->setPrimaryExams({primary});
    mLoader->setAdditionalExams({additional});
    QCOMPARE(mLoader->dicomDirectoryEntryForStudy("1.1"), primary);
    QCOMPARE(mLoader->dicomDirectoryEntryForStudy("1.2"), additional);
}

void tst_KyLoadHelper::anUnloadedStudyIsNotFound()
{
    mLoader->setPrimaryExams({studyOf("P1", "1.1")});
    QCOMPARE(mLoader->dicomDirectoryEntryForStudy("1.1.1"), nullptr);
    mLoader->setPrimaryExams({});
    QCOMPARE(mLoader->dicomDirectoryEntryForStudy("1.1"), nullptr);
}

void tst_KyLoadHelper::emptyAndNullIdsFindNothing()
{
    mLoader->setPrimaryExams({madeStudy({{"PatientID", "P1"}})});
    QCOMPARE(mLoader->dicomDirectoryEntryForStudy(""), nullptr);
    QCOMPARE(mLoader->dicomDirectoryEntryForStudy(nullptr), nullptr);
}

void tst_KyLoadHelper::thePrimaryOneOfTwoEqualStudiesIsFound()
{
    const Study primary = studyOf("P1", "1.1");
    mLoader->setAdditionalExams({studyOf("P1", "1.1")});
    mLoader->setPrimaryExams({primary});
    QCOMPARE(mLoader->dicomDirectoryEntryForStudy("1.1"), primary);
}

void tst_KyLoadHelper::accessionNumbersAreCompared_data()
{
    QTest::addColumn<QStringList>("primary");
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<bool>("isOutOfSync");
    const auto row = [](const char* inName, const char* inPrimary, const char* inGiven, bool inResult) {
        QTest::newRow(inName) << QString(inPrimary).split('/') << QString(inGiven).split('/') << inResult;
    };
    QTest::newRow("nothing is given") << QStringList("A1") << QStringList() << false;
    QTest::newRow("nothing at all") << QStringList() << QStringList() << false;
    QTest::newRow("nothing is loaded") << QStringList() << QStringList("A1") << true;
    row("the same", "A1", "A1", false);
    row("another", "A1", "A2", true);
    row("order", "A1/A2", "A2/A1", false);
    row("repetition", "A1/A1", "A1/A1/A1", false);
    row("one too many", "A1/A2", "A1", true);
    row("one too few", "A1", "A1/A2", true);
    row("white space", "A1", " A1 ", false);
    row("case", "A1", "a1", true);
    row("empty texts", "A1", "/A1/ ", false);
    row("only empty texts", "A1", "/ ", false);
    row("study without a number", "A1/", "A1", false);
    row("only a study without a number", "", "A1", true);
}

void tst_KyLoadHelper::accessionNumbersAreCompared()
{
    QFETCH(QStringList, primary);
    QFETCH(QStringList, given);
    QFETCH(bool, isOutOfSync);
    Exams exams;
    for (const QString& number : primary)
        exams.push_back(madeStudy({{"AccessionNumber", number.toUtf8().constData()}}));
    KyLoadHelper loader;
    loader.setPrimaryExams(exams);
    loader.setAdditionalExams({madeStudy({{"AccessionNumber", "A9"}})});
    QCOMPARE(loader.isOutOfSync(given), isOutOfSync);
}

void tst_KyLoadHelper::inSyncNothingIsShown()
{
    KyLoadHelper loader;
    loader.setPrimaryExams({madeStudy({{"AccessionNumber", "A1"}})});
    QCOMPARE(loader.showOutOfSyncWarning({}), 0);
    QCOMPARE(loader.showOutOfSyncWarning({"A1"}), 0);
}

void tst_KyLoadHelper::outOfSyncTheUserIsWarned()
{
    KyLoadHelper loader;
    loader.setPrimaryExams({madeStudy({{"AccessionNumber", "A1"}}), madeStudy({{"AccessionNumber", "<b>"}})});
    ModalAnswer answer([](QWidget* inWindow) {
        auto* box = qobject_cast<JxMessageBox*>(inWindow);
        QVERIFY(box);
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->text(),
                 QStringLiteral("The studies on the screen are not those of the other program."));
        QCOMPARE(box->informativeText(),
                 QStringLiteral("Accession numbers there: A2, A3\nAccession numbers here: <b>, A1"));
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        box->button(QMessageBox::Ok)->click();
    });
    QCOMPARE(loader.showOutOfSyncWarning({"A3", "A2"}), int(QMessageBox::Ok));
    QVERIFY(answer.happened());
    ModalAnswer closing([](QWidget* inWindow) { inWindow->close(); });
    QCOMPARE(KyLoadHelper().showOutOfSyncWarning({"A3"}), int(QMessageBox::Ok));
}

void tst_KyLoadHelper::sessionMayEndUnderTheWarning()
{
    auto loader = std::make_unique<KyLoadHelper>();
    ModalAnswer answer([&](QWidget* inWindow) {
        loader.reset();
        inWindow->close();
    });
    QCOMPARE(loader->showOutOfSyncWarning({"A1"}), int(QMessageBox::Ok));
}

void tst_KyLoadHelper::studiesOfThePatientComeFromBothLists()
{
    mLoader->setAdditionalExams({studyOf("P1", "1.4"), studyOf("P1", "1.3")});
    mLoader->setPrimaryExams({studyOf("P1", "1.2"), studyOf("P1", "1.1")});
    QCOMPARE(uidsOfPatient(*mLoader), QStringLiteral("1.2 1.1 1.4 1.3").split(QLatin1Char(' ')));
}

void tst_KyLoadHelper::studiesOfOtherPatientsStayOut()
{
    mLoader->setPrimaryExams({studyOf("P1", "1.1"), studyOf("P2", "1.2")});
    mLoader->setAdditionalExams({studyOf("P2", "1.3"), studyOf("P1", "1.4")});
    QCOMPARE(uidsOfPatient(*mLoader), QStringLiteral("1.1 1.4").split(QLatin1Char(' ')));
}

void tst_KyLoadHelper::withoutAPrimaryStudyThereIsNoPatient()
{
    mLoader->setAdditionalExams({studyOf("P1", "1.1")});
    QVERIFY(mLoader->allStudiesOfPatientInfo().empty());
}

void tst_KyLoadHelper::aStudyInBothListsCountsOnce()
{
    const Study study = studyOf("P1", "1.1");
    mLoader->setPrimaryExams({study, study});
    mLoader->setAdditionalExams({studyOf("P1", "1.1")});
    QCOMPARE(uidsOfPatient(*mLoader), QStringList(QStringLiteral("1.1")));
    QCOMPARE(mLoader->allStudiesOfPatientInfo().front()->dde(), study);
}

void tst_KyLoadHelper::aStudyOfANamelessPatientIsItsOwn()
{
    const Study study = madeStudy({{"StudyInstanceUID", "1.1"}});
    mLoader->setPrimaryExams({study, madeStudy({{"StudyInstanceUID", "1.2"}})});
    QCOMPARE(uidsOfPatient(*mLoader), QStringList(QStringLiteral("1.1")));
}

void tst_KyLoadHelper::primaryStudiesAreRelevant()
{
    mLoader->setPrimaryExams({studyOf("P1", "1.1")});
    mLoader->setAdditionalExams({studyOf("P1", "1.2")});
    QVERIFY(ofPatient(*mLoader, "1.1")->relevant);
    QVERIFY(!ofPatient(*mLoader, "1.1")->pinned());
    QVERIFY(!ofPatient(*mLoader, "1.2")->relevant);
    QVERIFY(!ofPatient(*mLoader, "1.2")->pinned());
}

void tst_KyLoadHelper::flagsStayWithTheirStudy()
{
    const Study prior = studyOf("P1", "1.2");
    const Study other = studyOf("P1", "1.3");
    mLoader->setPrimaryExams({studyOf("P1", "1.1")});
    mLoader->setAdditionalExams({prior, other});
    ofPatient(*mLoader, "1.2")->setPinned(true);
    ofPatient(*mLoader, "1.3")->relevant = true;
    mLoader->setAdditionalExams({other, studyOf("P1", "1.4"), prior});
    QVERIFY(ofPatient(*mLoader, "1.2")->pinned());
    QVERIFY(!ofPatient(*mLoader, "1.2")->relevant);
    QVERIFY(!ofPatient(*mLoader, "1.3")->pinned());
    QVERIFY(ofPatient(*mLoader, "1.3")->relevant);
    QVERIFY(!ofPatient(*mLoader, "1.4")->pinned());
    QVERIFY(!ofPatient(*mLoader, "1.4")->relevant);
}

void tst_KyLoadHelper::flagsGoWithTheirStudy()
{
    const Study prior = studyOf("P1", "1.2");
    mLoader->setPrimaryExams({studyOf("P1", "1.1")});
    mLoader->setAdditionalExams({prior});
    ofPatient(*mLoader, "1.2")->setPinned(true);
    mLoader->setAdditionalExams({});
    mLoader->setAdditionalExams({prior});
    QVERIFY(!ofPatient(*mLoader, "1.2")->pinned());
}

void tst_KyLoadHelper::aReloadedStudyKeepsItsFlags()
{
    mLoader->setPrimaryExams({studyOf("P1", "1.1")});
    mLoader->setAdditionalExams({studyOf("P1", "1.2")});
    ofPatient(*mLoader, "1.2")->setPinned(true);
    const Study reloaded = studyOf("P1", "1.2");
    mLoader->setAdditionalExams({reloaded});
    QVERIFY(ofPatient(*mLoader, "1.2")->pinned());
    QCOMPARE(ofPatient(*mLoader, "1.2")->dde(), reloaded);
}

void tst_KyLoadHelper::aPrimaryStudyThatBecomesAdditionalStaysRelevant()
{
    const Study study = studyOf("P1", "1.1");
    mLoader->setPrimaryExams({study});
    mLoader->setPrimaryExams({studyOf("P1", "1.2"), study});
    mLoader->setAdditionalExams({study});
    mLoader->setPrimaryExams({studyOf("P1", "1.2")});
    QVERIFY(ofPatient(*mLoader, "1.1")->relevant);
}

void tst_KyLoadHelper::patientsAreToldApart_data()
{
    QTest::addColumn<QString>("idA");
    QTest::addColumn<QString>("nameA");
    QTest::addColumn<QString>("issuerA");
    QTest::addColumn<QString>("idB");
    QTest::addColumn<QString>("nameB");
    QTest::addColumn<QString>("issuerB");
    QTest::addColumn<bool>("same");

    const auto row = [](const char* inTitle, const char* inA, const char* inB, bool inSame) {
        const QStringList a = QString::fromUtf8(inA).split(QLatin1Char('|'));
        const QStringList b = QString::fromUtf8(inB).split(QLatin1Char('|'));
        QTest::newRow(inTitle) << a[0] << a[1] << a[2] << b[0] << b[1] << b[2] << inSame;
    };
    row("equal", "P1|Meier^Anna|A", "P1|Meier^Anna|A", true);
    row("other id", "P1|Meier^Anna|", "P2|Meier^Anna|", false);
    row("ids mind case", "P1|Meier^Anna|", "p1|Meier^Anna|", false);
    row("blanks around the id", " P1 |Meier^Anna|", "P1|Meier^Anna|", true);
    row("other name", "P1|Meier^Anna|", "P1|Meier^Bernd|", false);
    row("name in other case", "P1|MEIER^ANNA|", "P1|Meier^Anna|", true);
    row("name with empty components", "P1|Meier^Anna^^^|", "P1|Meier^Anna|", true);
    row("name with an empty group", "P1|Meier^Anna==|", "P1|Meier^Anna|", true);
    row("one name missing", "P1||", "P1|Meier^Anna|", true);
    row("both names missing", "P1||", "P1||", true);
    row("other issuer", "P1|Meier^Anna|A", "P1|Meier^Anna|B", false);
    row("one issuer missing", "P1|Meier^Anna|A", "P1|Meier^Anna|", true);
    row("one id missing", "|Meier^Anna|", "P1|Meier^Anna|", false);
    row("both ids missing", "|Meier^Anna|", "|Meier^Anna|", true);
    row("both ids and a name missing", "|Meier^Anna|", "||", false);
    row("nothing known", "||", "||", false);
}

void tst_KyLoadHelper::patientsAreToldApart()
{
    QFETCH(QString, idA);
    QFETCH(QString, nameA);
    QFETCH(QString, issuerA);
    QFETCH(QString, idB);
    QFETCH(QString, nameB);
    QFETCH(QString, issuerB);
    QFETCH(bool, same);
    const auto study = [](const char* inUid, const QString& inId, const QString& inName,
                          const QString& inIssuer) {
        return madeStudy({{"StudyInstanceUID", inUid},
                          {"PatientID", inId.toUtf8().constData()},
                          {"PatientName", inName.toUtf8().constData()},
                          {"IssuerOfPatientID", inIssuer.toUtf8().constData()}});
    };
    const Study a = study("1.1", idA, nameA, issuerA);
    const Study b = study("1.2", idB, nameB, issuerB);
    QCOMPARE(KyLoadHelper::isSamePatient(*a, *b), same);
    QCOMPARE(KyLoadHelper::isSamePatient(*b, *a), same);
    QVERIFY(KyLoadHelper::isSamePatient(*a, *a));
}

KY_TEST_MAIN(tst_KyLoadHelper)
#include "tst_KyLoadHelper.moc"

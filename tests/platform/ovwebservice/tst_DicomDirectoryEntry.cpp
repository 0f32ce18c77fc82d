#include <support/KyTest.h>

#include <ovwebservice/DicomDirectoryEntry.h>

#include <cstring>
#include <map>

using Ovg::DicomDirectoryEntry;
using Ovg::DicomHeader;
using Ovg::DicomSeries;
using Ovg::DicomTagPath;

namespace {

using Elements = std::map<QString, QString>;

DicomDirectoryEntry entry(const Elements& inElements, const std::vector<DicomSeries>& inSeries = {})
{
    DicomHeader header;
    for (const auto& [keyword, text] : inElements) {
        if (!header.setText(DicomTagPath::fromText(keyword), text))
            qFatal("%s", qPrintable(keyword));
    }
    return DicomDirectoryEntry(header, inSeries);
}

DicomSeries series(int inNumber, const std::string& inUid, const std::string& inModality, size_t inInstances)
{
    return {inUid, inModality, inNumber, std::vector<Ovg::DicomInstance>(inInstances)};
}

QVariant value(const DicomDirectoryEntry& inEntry, const char* inPath)
{
    return inEntry.value(DicomTagPath::fromText(QLatin1String(inPath)));
}

} // namespace

class TestDicomDirectoryEntry final : public QObject
{
    Q_OBJECT

private slots:
    void theFieldsComeFromTheHeader()
    {
        const DicomDirectoryEntry study = entry({{"StudyInstanceUID", "1.2"},
                                                 {"PatientName", "Müller^Änne"},
                                                 {"PatientID", "P1"},
                                                 {"IssuerOfPatientID", "H"},
                                                 {"AccessionNumber", "A1"},
                                                 {"StudyDescription", "CT Köln"},
                                                 {"StudyDate", "20240311"},
                                                 {"StudyTime", "084512.375"},
                                                 {"StudyStatusID", "COMPLETED"}});
        QCOMPARE(study.studyInstanceUid(), std::string("1.2"));
        QCOMPARE(study.patientName(), "Müller^Änne");
        QCOMPARE(study.patientId(), "P1");
        QCOMPARE(study.issuerOfPatientId(), "H");
        QCOMPARE(study.accessionNumber(), std::string("A1"));
        QCOMPARE(study.studyDescription(), "CT Köln");
        QCOMPARE(study.studyDate(), QDate(2024, 3, 11));
        QCOMPARE(study.studyTime(), QTime(8, 45, 12, 375));
        QCOMPARE(study.studyStatus, "COMPLETED");
    }

    void missingAndMalformedFieldsAreNeutral()
    {
        const DicomDirectoryEntry study = entry({{"StudyDate", "19991332"}, {"StudyTime", "99"}});
        QCOMPARE(study.studyInstanceUid(), std::string());
        QCOMPARE(study.patientName(), QString());
        QVERIFY(!study.studyDate().isValid());
        QVERIFY(!study.studyTime().isValid());
        QCOMPARE(study.studyStatus, "");
        QCOMPARE(study.instanceCount(), 0);
    }

    void ofSeveralValuesTheFirstIsTheField() { QCOMPARE(entry({{"PatientID", "P1\\P2"}}).patientId(), "P1"); }

    void aStatusIsCutAtSixteenCharacters()
    {
        DicomDirectoryEntry study = entry({});
        study.setStudyStatus("SEVENTEEN_LETTERS");
        QCOMPARE(study.studyStatus, "SEVENTEEN_LETTER");
        study.setStudyStatus("LOCKED");
        QCOMPARE(std::strlen(study.studyStatus), size_t(6));
        for (size_t i = 6; i < sizeof study.studyStatus; ++i)
            QCOMPARE(study.studyStatus[i], '\0');
    }

    void studiesAreEqualByUid()
    {
        const auto a = entry({{"StudyInstanceUID", "1.2"}});
        const auto b = entry({{"StudyInstanceUID", "1.2"}, {"PatientName", "X"}});
        const auto c = entry({{"StudyInstanceUID", "1.3"}});
        QVERIFY(DicomDirectoryEntry::studyEquals(a, a));
        QVERIFY(DicomDirectoryEntry::studyEquals(a, b));
        QVERIFY(!DicomDirectoryEntry::studyEquals(a, c));
    }

    void withoutAUidOnlyTheSameObjectIsEqual()
    {
        const auto a = entry({});
        const auto b = entry({});
        QVERIFY(DicomDirectoryEntry::studyEquals(a, a));
        QVERIFY(!DicomDirectoryEntry::studyEquals(a, b));
    }

    void theOrderGoesFieldByField_data()
    {
        QTest::addColumn<QString>("keyword");
        QTest::addColumn<QString>("less");
        QTest::addColumn<QString>("more");
        QTest::newRow("name") << "PatientName"
                              << "A"
                              << "B";
        QTest::newRow("a name goes before longer ones") << "PatientName"
                                                        << "Doe"
                                                        << "Doe^Jane";
        QTest::newRow("names by Unicode") << "PatientName"
                                          << "Zoe"
                                          << "Änne";
        QTest::newRow("no name goes first") << "PatientName"
                                            << ""
                                            << "A";
        QTest::newRow("ID") << "PatientID"
                            << "1"
                            << "2";
        QTest::newRow("date") << "StudyDate"
                              << "20231231"
                              << "20240101";
        QTest::newRow("no date goes first") << "StudyDate"
                                            << ""
                                            << "20240101";
        QTest::newRow("time") << "StudyTime"
                              << "0845"
                              << "084501";
        QTest::newRow("fraction") << "StudyTime"
                                  << "084501.1"
                                  << "084501.2";
        QTest::newRow("UID") << "StudyInstanceUID"
                             << "1.2"
                             << "1.3";
    }
    void theOrderGoesFieldByField()
    {
        QFETCH(QString, keyword);
        QFETCH(QString, less);
        QFETCH(QString, more);
        const Elements middle{{"PatientName", "M"},
                              {"PatientID", "5"},
                              {"StudyDate", "20240101"},
                              {"StudyTime", "084501.1"},
                              {"StudyInstanceUID", "1.2"}};
        Elements a = middle;
        Elements b = middle;
        a[keyword] = less;
        b[keyword] = more;
        QVERIFY(entry(a) < entry(b));
        QVERIFY(!(entry(b) < entry(a)));
        QVERIFY(!(entry(a) < entry(a)));
    }

    void anEarlierFieldDecides()
    {
        const QStringList keywords{"PatientName", "PatientID", "StudyDate", "StudyTime", "StudyInstanceUID"};
        const Elements low{{"PatientName", "A"},
                           {"PatientID", "1"},
                           {"StudyDate", "20230101"},
                           {"StudyTime", "01"},
                           {"StudyInstanceUID", "1.1"}};
        const Elements high{{"PatientName", "B"},
                            {"PatientID", "2"},
                            {"StudyDate", "20240101"},
                            {"StudyTime", "02"},
                            {"StudyInstanceUID", "1.2"}};
        for (int i = 0; i < keywords.size(); ++i) {
            Elements a = low;
            Elements b = low;
            b[keywords[i]] = high.at(keywords[i]);
            for (int later = i + 1; later < keywords.size(); ++later)
                a[keywords[later]] = high.at(keywords[later]);
            QVERIFY2(entry(a) < entry(b), qPrintable(keywords[i]));
        }
    }

    void seriesAreKeptInTheirOrder()
    {
        const DicomDirectoryEntry study =
            entry({}, {series(3, "1.9", "SR", 1), series(1, "1.8", "CT", 2), series(1, "1.7", "CT", 3)});
        QCOMPARE(study.series().size(), size_t(3));
        QCOMPARE(study.series()[0].seriesInstanceUid, std::string("1.7"));
        QCOMPARE(study.series()[1].seriesInstanceUid, std::string("1.8"));
        QCOMPARE(study.series()[2].seriesInstanceUid, std::string("1.9"));
        QCOMPARE(study.instanceCount(), 6);
        QCOMPARE(study.modalities(), (std::vector<std::string>{"CT", "SR"}));
    }

    void elementsOfTheQueryModelAreCounted()
    {
        const DicomDirectoryEntry study = entry({{"NumberOfStudyRelatedInstances", "99"}},
                                                {series(1, "1.7", "CT", 3), series(2, "1.8", "SR", 1)});
        QCOMPARE(value(study, "NumberOfStudyRelatedSeries"), 2);
        QCOMPARE(value(study, "NumberOfStudyRelatedInstances"), 4);
        QCOMPARE(value(study, "(0020,1208)"), 4);
        QCOMPARE(value(study, "ModalitiesInStudy"), (QVariantList{"CT", "SR"}));
    }

    void oneModalityIsAListToo()
    {
        QCOMPARE(value(entry({}, {series(1, "1.7", "CT", 1)}), "ModalitiesInStudy"), QVariantList{"CT"});
    }

    void withoutSeriesTheHeaderAnswers()
    {
        const DicomDirectoryEntry study = entry({{"NumberOfStudyRelatedInstances", "99"}});
        QCOMPARE(value(study, "NumberOfStudyRelatedInstances"), 99);
        QVERIFY(!value(study, "NumberOfStudyRelatedSeries").isValid());
        QVERIFY(!value(study, "ModalitiesInStudy").isValid());
    }

    void valuesComeFromTheHeader()
    {
        QStringList problems;
        const DicomDirectoryEntry study = entry({{"StudyDate", "2024-03-11"}});
        QCOMPARE(study.value(DicomTagPath::fromText("StudyDate"), &problems), "2024-03-11");
        QCOMPARE(problems, QStringList("(0008,0020): \"2024-03-11\" is no DA"));
    }
};

KY_TEST_MAIN(TestDicomDirectoryEntry)

#include "tst_DicomDirectoryEntry.moc"

#include <support/KyTest.h>

#include <ovwebservice/MemoryStudySource.h>

#include <algorithm>
#include <random>

using Ovg::DicomHeader;
using Ovg::DicomTagPath;
using Ovg::MemoryStudySource;
using Ovg::StudySourceResult;

namespace {

DicomHeader header(const QString& inStudy, const QString& inSeries, int inSeriesNumber, int inNumber)
{
    DicomHeader made;
    const QString sopInstance = inSeries + QLatin1Char('.') + QString::number(inNumber);
    made.setText(DicomTagPath::fromText("StudyInstanceUID"), inStudy);
    made.setText(DicomTagPath::fromText("SeriesInstanceUID"), inSeries);
    made.setText(DicomTagPath::fromText("SeriesNumber"), QString::number(inSeriesNumber));
    made.setText(DicomTagPath::fromText("InstanceNumber"), QString::number(inNumber));
    made.setText(DicomTagPath::fromText("SOPInstanceUID"), sopInstance);
    made.setText(DicomTagPath::fromText("Modality"), "CT");
    made.setText(DicomTagPath::fromText("PatientName"), "Patient " + inStudy);
    made.setText(DicomTagPath::fromText("ImageComments"), sopInstance);
    return made;
}

QString comments(const Ovg::DicomDirectoryEntry& inStudy)
{
    return inStudy.value(DicomTagPath::fromText("ImageComments")).toString();
}

} // namespace

class TestMemoryStudySource final : public QObject
{
    Q_OBJECT

private slots:
    void nothingGivesNoStudies()
    {
        MemoryStudySource source;
        int calls = 0;
        const StudySourceResult result = source.load([&calls](int, int) { return ++calls > 0; });
        QVERIFY(result.studies.empty());
        QCOMPARE(result.files, 0);
        QCOMPARE(calls, 0);
        QVERIFY(!result.cancelled);
        QCOMPARE(result.errors, QStringList());
    }

    void headersAreGroupedIntoStudiesAndSeries()
    {
        MemoryStudySource source;
        source.add(header("1.2", "1.2.5", 2, 1));
        source.add(header("1.1", "1.1.1", 1, 1));
        source.add(header("1.2", "1.2.4", 1, 2));
        source.add(header("1.2", "1.2.4", 1, 1));
        const StudySourceResult result = source.load();
        QCOMPARE(result.studies.size(), size_t(2));
        QCOMPARE(result.files, 4);
        QCOMPARE(result.instances, 4);
        QCOMPARE(result.studies[0]->studyInstanceUid(), std::string("1.1"));
        const Ovg::DicomDirectoryEntry& second = *result.studies[1];
        QCOMPARE(second.series().size(), size_t(2));
        QCOMPARE(second.series()[0].seriesInstanceUid, std::string("1.2.4"));
        QCOMPARE(second.series()[0].instances[0].sopInstanceUid, std::string("1.2.4.1"));
        QCOMPARE(second.series()[0].instances[1].instanceNumber, 2);
        QCOMPARE(second.series()[0].modality, std::string("CT"));
        QCOMPARE(second.series()[1].seriesNumber, 2);
    }

    /// Series number, instance number, SOP instance UID decide, and not the order of arrival.
    void theRepresentativeDoesNotDependOnTheOrder()
    {
        std::vector<DicomHeader> headers{header("1.2", "1.2.9", 1, 10), header("1.2", "1.2.9", 1, 2),
                                         header("1.2", "1.2.8", 1, 2), header("1.2", "1.2.1", 2, 1)};
        std::mt19937 random(1);
        for (int round = 0; round < 20; ++round) {
            std::shuffle(headers.begin(), headers.end(), random);
            MemoryStudySource source;
            for (const DicomHeader& one : headers)
                source.add(one);
            const StudySourceResult result = source.load();
            QCOMPARE(result.studies.size(), size_t(1));
            QCOMPARE(comments(*result.studies[0]), "1.2.8.2");
            QCOMPARE(result.studies[0]->series()[0].seriesInstanceUid, std::string("1.2.8"));
        }
    }

    void anInstanceCountsOnce()
    {
        MemoryStudySource source;
        source.add(header("1.2", "1.2.4", 1, 1));
        source.add(header("1.2", "1.2.4", 1, 1));
        const StudySourceResult result = source.load();
        QCOMPARE(result.files, 2);
        QCOMPARE(result.instances, 1);
        QCOMPARE(result.duplicates, 1);
    }

    void instancesWithoutAUidAllCount()
    {
        MemoryStudySource source;
        DicomHeader one;
        one.setText(DicomTagPath::fromText("StudyInstanceUID"), "1.2");
        source.add(one);
        source.add(one);
        QCOMPARE(source.load().instances, 2);
    }

    void withoutAStudyThereIsNoPlace()
    {
        MemoryStudySource source;
        source.add(DicomHeader());
        const StudySourceResult result = source.load();
        QVERIFY(result.studies.empty());
        QCOMPARE(result.noStudy, 1);
    }

    void studiesComeInTheirOrder()
    {
        MemoryStudySource source;
        for (const char* uid : {"1.3", "1.1", "1.2"})
            source.add(header(uid, uid, 1, 1));
        const StudySourceResult result = source.load();
        QVERIFY(std::is_sorted(result.studies.begin(), result.studies.end(),
                               [](const auto& a, const auto& b) { return *a < *b; }));
        QCOMPARE(result.studies.front()->studyInstanceUid(), std::string("1.1"));
    }

    void progressIsToldAndCanStop()
    {
        MemoryStudySource source;
        for (int i = 1; i <= 3; ++i)
            source.add(header("1.2", "1.2.4", 1, i));
        QList<int> done;
        QVERIFY(!source
                     .load([&done](int now, int total) {
                         done += now;
                         return total == 3;
                     })
                     .cancelled);
        QCOMPARE(done, (QList<int>{1, 2, 3}));
        const StudySourceResult stopped = source.load([](int now, int) { return now < 2; });
        QVERIFY(stopped.cancelled);
        QCOMPARE(stopped.files, 2);
        QCOMPARE(stopped.instances, 2);
    }
};

KY_TEST_MAIN(TestMemoryStudySource)

#include "tst_MemoryStudySource.moc"

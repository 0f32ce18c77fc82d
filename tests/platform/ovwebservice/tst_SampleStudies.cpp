#include <support/KyTest.h>

#include <ovwebservice/FolderStudySource.h>

#include <QDirIterator>
#include <QProcess>
#include <QTemporaryDir>

using Ovg::DicomTagPath;

namespace {

/// Runs the generator; what it says goes to \a outErrors.
int kysample(const QStringList& inArguments, QString& outErrors)
{
    QProcess process;
    process.start(QStringLiteral(KYSAMPLE), inArguments);
    process.waitForFinished();
    outErrors = QString::fromUtf8(process.readAllStandardError());
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QVariant value(const Ovg::DicomDirectoryEntry& inStudy, const QString& inPath)
{
    return inStudy.value(DicomTagPath::fromText(inPath));
}

} // namespace

/// The sample of the repository, as the study source reads it.
class TestSampleStudies final : public QObject
{
    Q_OBJECT

private slots:
    void theSampleHasTwoStudiesOfOnePatientAndOneOfAnother()
    {
        const QTemporaryDir folder;
        QString errors;
        QCOMPARE(kysample({folder.path()}, errors), 0);
        QCOMPARE(errors, QString());
        const Ovg::StudySourceResult result = Ovg::FolderStudySource(folder.path()).load();
        QCOMPARE(result.studies.size(), size_t(3));
        QCOMPARE(result.instances, result.files);
        const Ovg::DicomDirectoryEntry& first = *result.studies[0];
        const Ovg::DicomDirectoryEntry& second = *result.studies[1];
        const Ovg::DicomDirectoryEntry& third = *result.studies[2];
        QCOMPARE(first.patientName(), "Müller^Änne");
        QCOMPARE(first.patientId(), second.patientId());
        QVERIFY(first.patientId() != third.patientId());
        QCOMPARE(first.studyDate(), QDate(2024, 3, 11));
        QCOMPARE(first.studyTime(), QTime(8, 45, 12, 375));
        QCOMPARE(second.studyDescription(), "CT Thorax, Verlauf für Rundherd");
        QCOMPARE(third.patientName(), "Sørensen^Bjørn");
        QCOMPARE(first.studyStatus, "COMPLETED");
        QCOMPARE(second.studyStatus, "SCHEDULED");
        QCOMPARE(third.studyStatus, "PRELIMINARY");
    }

    void itsSeriesAreWholeCtVolumes()
    {
        const QTemporaryDir folder;
        QString errors;
        QCOMPARE(kysample({folder.path()}, errors), 0);
        for (const auto& study : Ovg::FolderStudySource(folder.path()).load().studies) {
            for (const Ovg::DicomSeries& series : study->series()) {
                QCOMPARE(series.modality, std::string("CT"));
                QCOMPARE(series.instances.size(), size_t(20));
                QCOMPARE(series.instances.back().instanceNumber, 20);
                QVERIFY(series.seriesInstanceUid.starts_with("2.25."));
            }
            QCOMPARE(value(*study, "Rows"), 256);
            QCOMPARE(value(*study, "BitsAllocated"), 16);
            QCOMPARE(value(*study, "PixelSpacing"), (QVariantList{1.5, 1.5}));
            QCOMPARE(value(*study, "ImageOrientationPatient"), (QVariantList{1.0, 0.0, 0.0, 0.0, 1.0, 0.0}));
            QCOMPARE(value(*study, "RescaleIntercept"), -1024.0);
            QCOMPARE(value(*study, "RequestAttributesSequence.ScheduledProcedureStepID"),
                     "SPS" + QString::fromStdString(study->accessionNumber()));
        }
    }

    void theSameSampleComesOutEachTime()
    {
        const QTemporaryDir a;
        const QTemporaryDir b;
        QString errors;
        QCOMPARE(kysample({a.path()}, errors), 0);
        QCOMPARE(kysample({b.path()}, errors), 0);
        int compared = 0;
        QDirIterator it(a.path(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile left(it.next());
            QFile right(b.path() + left.fileName().mid(a.path().size()));
            QVERIFY(left.open(QIODevice::ReadOnly) && right.open(QIODevice::ReadOnly));
            QVERIFY2(left.readAll() == right.readAll(), qPrintable(left.fileName()));
            ++compared;
        }
        QCOMPARE(compared, 80);
    }

    void aPetSeriesCanBeAdded()
    {
        const QTemporaryDir folder;
        QString errors;
        QCOMPARE(kysample({"--fusion", folder.path()}, errors), 0);
        const Ovg::StudySourceResult result = Ovg::FolderStudySource(folder.path()).load();
        QCOMPARE(result.instances, 106);
        const auto& series = result.studies[1]->series();
        QCOMPARE(series.size(), size_t(2));
        QCOMPARE(series[1].modality, std::string("PT"));
        QCOMPARE(series[1].instances.size(), size_t(26));
        Ovg::DicomHeader header;
        QString reason;
        Ovg::DicomHeader::readFile(series[1].instances[1].path, header, reason);
        const auto pet = [&](const char* inPath) { return header.value(DicomTagPath::fromText(inPath)); };
        QCOMPARE(pet("FrameOfReferenceUID"), value(*result.studies[1], "FrameOfReferenceUID"));
        QCOMPARE(pet("RescaleSlope"), 0.625);
        QCOMPARE(pet("Rows"), 96);
    }

    void manyInstancesCanBeWritten()
    {
        const QTemporaryDir folder;
        QString errors;
        QCOMPARE(kysample({"--instances", "1050", folder.path()}, errors), 0);
        const Ovg::StudySourceResult result = Ovg::FolderStudySource(folder.path()).load();
        QCOMPARE(result.studies.size(), size_t(2));
        QCOMPARE(result.instances, 1050);
        QCOMPARE(result.studies[0]->series().size(), size_t(10));
        QCOMPARE(result.studies[1]->instanceCount(), 50);
    }

    void aBadCommandLineIsTold_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const QString number = "kysample: --instances takes a number from 1\n";
        QTest::newRow("no folder") << QStringList() << "kysample: one output folder is needed, see --help\n";
        QTest::newRow("two folders") << QStringList{"a", "b"}
                                     << "kysample: one output folder is needed, see --help\n";
        QTest::newRow("no number") << QStringList{"--instances", "x", "a"} << number;
        QTest::newRow("zero") << QStringList{"--instances", "0", "a"} << number;
        QTest::newRow("unknown option")
            << QStringList{"--nothing", "a"} << "kysample: Unknown option 'nothing'.\n";
    }
    void aBadCommandLineIsTold()
    {
        QFETCH(QStringList, arguments);
        QString errors;
        QCOMPARE(kysample(arguments, errors), 2);
        QTEST(errors, "message");
    }

    void aFolderThatCannotBeMadeIsTold()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QString errors;
        QCOMPARE(kysample({file.fileName()}, errors), 1);
        QCOMPARE(errors, "kysample: " + file.fileName() + "/mueller/2024-03-11/2: cannot be made\n");
    }
};

KY_TEST_MAIN(TestSampleStudies)

#include "tst_SampleStudies.moc"

#include <support/KyTest.h>

#include <kybase/KyDICOMAccessDicomDirectoryEntry.h>

namespace {

std::shared_ptr<Ovg::DicomDirectoryEntry> study(const QString& inKeyword, const QString& inText)
{
    Ovg::DicomHeader header;
    header.setText(Ovg::DicomTagPath::fromText(inKeyword), inText);
    return std::make_shared<Ovg::DicomDirectoryEntry>(header);
}

KyDICOMObjectInfo::TagKey key(const QString& inName)
{
    KyDICOMObjectInfo::TagKey made;
    made.deserialize(inName, nullptr);
    return made;
}

} // namespace

class TestKyDICOMAccess final : public QObject
{
    Q_OBJECT

private slots:
    void theStudyAnswers()
    {
        const KyDICOMAccessDicomDirectoryEntry access(study("StudyDate", "20240311"));
        QCOMPARE(access.tag(key("DICOM.StudyDate"), nullptr, QVariant()), QDate(2024, 3, 11));
        QCOMPARE(access.tag(key("DICOM.StudyDate"), nullptr, "default"), QDate(2024, 3, 11));
    }

    void theDefaultStandsInForWhatIsMissing()
    {
        const KyDICOMAccessDicomDirectoryEntry access(study("StudyDate", "20240311"));
        QCOMPARE(access.tag(key("DICOM.StudyTime"), nullptr, "default"), "default");
        QCOMPARE(access.tag(KyDICOMObjectInfo::TagKey(), nullptr, 5), 5);
        QVERIFY(!access.tag(key("DICOM.StudyTime"), nullptr, QVariant()).isValid());
    }

    void anEmptyElementIsNotMissing()
    {
        const KyDICOMAccessDicomDirectoryEntry access(study("StudyDescription", ""));
        QCOMPARE(access.tag(key("DICOM.StudyDescription"), nullptr, "default"), "");
    }

    void withoutAStudyThereIsTheDefault()
    {
        const KyDICOMAccessDicomDirectoryEntry access(nullptr);
        QCOMPARE(access.tag(key("DICOM.StudyDate"), nullptr, "default"), "default");
        QCOMPARE(access.entry(), nullptr);
    }

    void theStudyIsShared()
    {
        auto entry = study("PatientID", "P");
        const KyDICOMAccessDicomDirectoryEntry access(entry);
        QCOMPARE(access.entry(), entry);
        entry.reset();
        QCOMPARE(access.tag(key("DICOM.PatientID"), nullptr, QVariant()), "P");
    }

    void warningsGrow()
    {
        const KyDICOMAccessDicomDirectoryEntry access(study("StudyDate", "soon"));
        KyDICOMObjectInfo::Warnings warnings;
        QCOMPARE(access.tag(key("DICOM.StudyDate"), &warnings, QVariant()), "soon");
        access.tag(key("DICOM.StudyDate"), &warnings, QVariant());
        QCOMPARE(warnings.texts, QStringList(2, "(0008,0020): \"soon\" is no DA"));
    }
};

KY_TEST_MAIN(TestKyDICOMAccess)

#include "tst_KyDICOMAccess.moc"

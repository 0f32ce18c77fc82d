#include <support/KyTest.h>

#include <kybase/KyDICOMAccessDicomDirectoryEntry.h>
#include <kybase/KyDICOMAccessOvVolume.h>

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

/// A volume of images in memory; two images may have one header, as frames do.
class HeadersOnly final : public OvVolume
{
public:
    explicit HeadersOnly(std::vector<std::shared_ptr<Ovg::DicomHeader>> inHeaders)
        : mHeaders(std::move(inHeaders))
    {}

    int imageCount() const override { return int(mHeaders.size()); }
    const Ovg::DicomHeader* header(int inImage) const override
    {
        return inImage >= 0 && inImage < imageCount() ? mHeaders[size_t(inImage)].get() : nullptr;
    }

private:
    const std::vector<std::shared_ptr<Ovg::DicomHeader>> mHeaders;
};

std::shared_ptr<Ovg::DicomHeader> image(const QString& inNumber, const QString& inDate = "20240311")
{
    auto made = std::make_shared<Ovg::DicomHeader>();
    made->setText(Ovg::DicomTagPath::fromText("InstanceNumber"), inNumber);
    made->setText(Ovg::DicomTagPath::fromText("StudyDate"), inDate);
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

    void theImageOfAVolumeAnswers()
    {
        const RnHandle<OvVolume> volume(new HeadersOnly({image("4"), image("5")}));
        QCOMPARE(KyDICOMAccessOvVolume(volume.get(), 0).tag(key("DICOM.InstanceNumber"), nullptr, {}), 4);
        QCOMPARE(KyDICOMAccessOvVolume(volume.get(), 1).tag(key("DICOM.InstanceNumber"), nullptr, {}), 5);
        QCOMPARE(KyDICOMAccessOvVolume(volume.get(), 1).tag(key("DICOM.PatientID"), nullptr, "none"), "none");
    }

    void withoutAnImageTheSharedElementsAnswer_data()
    {
        QTest::addColumn<int>("slice");
        for (const int slice : {-1, 2, 1000, -1000})
            QTest::addRow("%d", slice) << slice;
    }

    void withoutAnImageTheSharedElementsAnswer()
    {
        QFETCH(int, slice);
        const RnHandle<OvVolume> volume(new HeadersOnly({image("4"), image("5")}));
        const KyDICOMAccessOvVolume access(volume.get(), slice);
        QCOMPARE(access.tag(key("DICOM.StudyDate"), nullptr, {}), QDate(2024, 3, 11));
        QCOMPARE(access.tag(key("DICOM.InstanceNumber"), nullptr, "none"), "none");
    }

    void sharedElementsAreTheSameInAllImages()
    {
        const auto first = image("4");
        const RnHandle<OvVolume> frames(new HeadersOnly({first, first}));
        QCOMPARE(KyDICOMAccessOvVolume(frames.get(), 0).sharedTag(key("DICOM.InstanceNumber"), nullptr, {}),
                 4);
        const RnHandle<OvVolume> volume(new HeadersOnly({first, image("4"), image("4", "20240312")}));
        const KyDICOMAccessOvVolume access(volume.get(), 0);
        QCOMPARE(access.sharedTag(key("DICOM.InstanceNumber"), nullptr, {}), 4);
        QCOMPARE(access.sharedTag(key("DICOM.StudyDate"), nullptr, "none"), "none");
        QCOMPARE(access.tag(key("DICOM.StudyDate"), nullptr, "none"), QDate(2024, 3, 11));
    }

    void anImageWithoutAHeaderSharesNothing()
    {
        const RnHandle<OvVolume> volume(new HeadersOnly({image("4"), nullptr}));
        QCOMPARE(KyDICOMAccessOvVolume(volume.get(), 0).sharedTag(key("DICOM.StudyDate"), nullptr, "none"),
                 "none");
    }

    void withoutAVolumeThereIsTheDefault()
    {
        const KyDICOMAccessOvVolume none(nullptr, 0);
        QCOMPARE(none.tag(key("DICOM.StudyDate"), nullptr, "default"), "default");
        const RnHandle<OvVolume> empty(new HeadersOnly({}));
        QCOMPARE(KyDICOMAccessOvVolume(empty.get(), 0).tag(key("DICOM.StudyDate"), nullptr, "default"),
                 "default");
    }

    void theVolumeIsKept()
    {
        RnHandle<OvVolume> volume(new HeadersOnly({image("4")}));
        const KyDICOMAccessOvVolume access(volume.get(), 0);
        const RnUniqueID id = volume->uniqueID();
        volume.reset();
        QVERIFY(OvInterface::instanceWithUID(id));
        QCOMPARE(access.tag(key("DICOM.InstanceNumber"), nullptr, {}), 4);
    }

    void warningsOfImagesGrow()
    {
        const RnHandle<OvVolume> volume(new HeadersOnly({image("4", "soon")}));
        KyDICOMObjectInfo::Warnings warnings;
        KyDICOMAccessOvVolume(volume.get(), 0).tag(key("DICOM.StudyDate"), &warnings, {});
        QCOMPARE(warnings.texts, QStringList("(0008,0020): \"soon\" is no DA"));
    }
};

KY_TEST_MAIN(TestKyDICOMAccess)

#include "tst_KyDICOMAccess.moc"

#include <ovvolren/OvVolume.h>

#include <QTest>

class tst_OvVolume : public QObject
{
    Q_OBJECT

private slots:
    void aVolumeOfASeriesTellsItsStudy();
    void aComputedVolumeHasNoDatabaseInformation();
    void aVolumeIsFoundById();
    void aComputedVolumeHasNoImages();
};

void tst_OvVolume::aVolumeOfASeriesTellsItsStudy()
{
    const RnHandle<OvVolume> volume(
        new OvVolume(std::make_unique<OvDBMetaInfo>(OvDBMetaInfo{"1.2.3", "1.2.3.4"})));
    QVERIFY(volume->dbMetaInfo());
    QCOMPARE(volume->dbMetaInfo()->studyId.c_str(), "1.2.3");
    QCOMPARE(volume->dbMetaInfo()->seriesId.c_str(), "1.2.3.4");
}

void tst_OvVolume::aComputedVolumeHasNoDatabaseInformation()
{
    const RnHandle<OvVolume> volume(new OvVolume);
    QCOMPARE(volume->dbMetaInfo(), nullptr);
}

void tst_OvVolume::aVolumeIsFoundById()
{
    const RnHandle<OvVolume> volume(new OvVolume);
    QCOMPARE(dynamic_cast<OvVolume*>(OvInterface::instanceWithUID(volume->uniqueID())), volume.get());
}

void tst_OvVolume::aComputedVolumeHasNoImages()
{
    const RnHandle<OvVolume> volume(new OvVolume);
    QCOMPARE(volume->data(0), nullptr);
    QCOMPARE(volume->imageCount(), 0);
    QCOMPARE(volume->header(0), nullptr);
}

QTEST_APPLESS_MAIN(tst_OvVolume)
#include "tst_OvVolume.moc"

#include <support/DicomSeriesMaker.h>
#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <ovvolren/OvData.h>
#include <ovvolren/OvImageVolume.h>
#include <ovwebservice/DicomHeader.h>

#include <QTemporaryDir>

#include <thread>

class tst_OvVolumeContent : public QObject
{
    Q_OBJECT

private slots:
    void aSeriesIsRead();
    void pixelsComeLater();
    void loadingCanBeStoppedAndGoesOn();
    void pixelsAreThereWhileOthersLoad();
    void anIndexOutsideHasNothing();
    void noFilesAreAnError();
    void filesWithoutImagesAreAnError();
    void someFilesWithoutImagesAreANotice();
    void anInstanceInMemoryIsNotShown();
    void noticesAreCounted();
    void mixedSizesAreAStackWithTheLargestSize();
    void tooLargeASeriesIsAnError();
    void wildSizesAreAnError_data();
    void wildSizesAreAnError();
    void theBoundIsSensible();
    void rangeHasAllImages();

    void theVolumeTellsItsStudyAndSeries();
    void theVolumeHasDimensions();
    void theVolumeHasTheHeadersInItsOrder();
    void anEmptyVolumeHasNothing();

private:
    QStringList save(const DicomSeriesMaker& inMaker)
    {
        return inMaker.save(mFolder.filePath(QTest::currentTestFunction()));
    }

    QTemporaryDir mFolder;
};

void tst_OvVolumeContent::aSeriesIsRead()
{
    const auto content = OvVolumeContent::read(save({}));
    QCOMPARE(content->error(), QString());
    QCOMPARE(content->notices(), QStringList());
    QCOMPARE(content->count(), 5);
    QVERIFY(content->geometry().isVolume());
    QCOMPARE(content->columns(), 4);
    QCOMPARE(content->rows(), 3);
    QCOMPARE(content->bytes(), std::uint64_t(5 * 4 * 3 * 2));
    QVERIFY(!content->isLoaded());
    QVERIFY(!content->range());
}

void tst_OvVolumeContent::pixelsComeLater()
{
    const auto content = OvVolumeContent::read(save({}));
    for (int i = 0; i < 5; ++i)
        QVERIFY(!content->pixels(i));
    QVERIFY(content->loadPixels());
    QVERIFY(content->isLoaded());
    for (int i = 0; i < 5; ++i) {
        QVERIFY(content->pixels(i));
        QCOMPARE(content->pixels(i)->as<quint16>()[11], quint16(100 * i + 23));
        QCOMPARE(content->problem(i), QString());
    }
}

void tst_OvVolumeContent::loadingCanBeStoppedAndGoesOn()
{
    DicomSeriesMaker maker;
    maker.images = 60;
    maker.columns = 512;
    maker.rows = 512;
    const auto content = OvVolumeContent::read(save(maker));
    QVERIFY(!content->loadPixels([](int, int) { return false; }));
    QVERIFY(!content->isLoaded());
    int last = 0;
    QVERIFY(content->loadPixels([&](int inDone, int inTotal) {
        last = inDone;
        return inTotal == 60;
    }));
    QCOMPARE(last, 60);
    QVERIFY(content->isLoaded());
    QCOMPARE(content->pixels(59)->as<quint16>()[0], quint16(5900));
    QVERIFY(content->loadPixels());
}

void tst_OvVolumeContent::pixelsAreThereWhileOthersLoad()
{
    DicomSeriesMaker maker;
    maker.images = 100;
    maker.columns = 128;
    maker.rows = 128;
    const auto content = OvVolumeContent::read(save(maker));
    std::jthread loader([&] { content->loadPixels(); });
    int seen = 0;
    while (seen < 100) {
        for (int i = 0; i < 100; ++i) {
            const OvPixels* pixels = content->pixels(i);
            if (pixels)
                QCOMPARE(pixels->as<quint16>()[128 * 128 - 1], quint16(100 * i + 1270 + 127));
            seen = pixels ? std::max(seen, i + 1) : seen;
        }
        QVERIFY(!content->range() || content->range()->first >= 0);
        if (content->isLoaded())
            seen = 100;
    }
}

void tst_OvVolumeContent::anIndexOutsideHasNothing()
{
    const auto content = OvVolumeContent::read(save({}));
    content->loadPixels();
    for (const int index : {-1, 5, 1000}) {
        QVERIFY(!content->pixels(index));
        QCOMPARE(content->problem(index), QString());
    }
}

void tst_OvVolumeContent::noFilesAreAnError()
{
    const auto content = OvVolumeContent::read({});
    QCOMPARE(content->error(), "There are no images");
    QCOMPARE(content->count(), 0);
    QVERIFY(content->loadPixels());
    QVERIFY(content->isLoaded());
}

void tst_OvVolumeContent::filesWithoutImagesAreAnError()
{
    DicomSeriesMaker maker;
    maker.adjust = [](int, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_Modality, "SR");
        ioSet.findAndDeleteElement(DCM_Rows);
        ioSet.findAndDeleteElement(DCM_Columns);
    };
    maker.images = 1;
    QCOMPARE(OvVolumeContent::read(save(maker))->error(), "The file has no image (SR)");
    maker.images = 3;
    QCOMPARE(OvVolumeContent::read(save(maker))->error(),
             "None of the 3 files can be shown: The file has no image (SR)");
}

void tst_OvVolumeContent::someFilesWithoutImagesAreANotice()
{
    DicomSeriesMaker maker;
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        if (inImage == 4)
            ioSet.putAndInsertUint16(DCM_Rows, 0);
    };
    LogCapture log;
    const QStringList paths = save(maker);
    const auto content = OvVolumeContent::read(paths);
    QCOMPARE(content->count(), 4);
    QCOMPARE(content->error(), QString());
    QCOMPARE(content->notices(), QStringList("1 file is not shown: The image has no sensible size (4 x 0)"));
    QCOMPARE(log.take(), QStringList("2|Volume|" + paths[4] + ": The image has no sensible size (4 x 0)"));
    QCOMPARE(OvVolumeContent::read({paths[0], paths[1], paths[4], paths[4]})->notices(),
             QStringList("2 files are not shown: The image has no sensible size (4 x 0)"));
}

void tst_OvVolumeContent::anInstanceInMemoryIsNotShown()
{
    QCOMPARE(OvVolumeContent::read({QString()})->error(), "The image is not in a file");
}

void tst_OvVolumeContent::noticesAreCounted()
{
    DicomSeriesMaker maker;
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        if (inImage < 2)
            DicomSeriesMaker::put(ioSet, DCM_RescaleSlope, "0");
    };
    QCOMPARE(
        OvVolumeContent::read(save(maker))->notices(),
        QStringList("The rescale slope or intercept makes no sense: values are as stored (2 of 5 images)"));
}

void tst_OvVolumeContent::mixedSizesAreAStackWithTheLargestSize()
{
    DicomSeriesMaker maker;
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        if (inImage != 1)
            return;
        ioSet.putAndInsertUint16(DCM_Rows, 7);
        ioSet.putAndInsertUint16(DCM_Columns, 2);
        DicomSeriesMaker::putPixels(ioSet, 2, 7, [](int c, int r) { return 1000 + 10 * r + c; });
    };
    const auto content = OvVolumeContent::read(save(maker));
    content->loadPixels();
    QVERIFY(!content->geometry().isVolume());
    QCOMPARE(content->notices(),
             QStringList("The images are not all of one size and kind: no other orientations"));
    QCOMPARE(content->columns(), 4);
    QCOMPARE(content->rows(), 7);
    QCOMPARE(content->pixels(0)->as<quint16>()[11], quint16(23));
    QCOMPARE(content->pixels(1)->as<quint16>()[13], quint16(1061));
    QCOMPARE(content->image(1).format.rows, 7);
}

void tst_OvVolumeContent::tooLargeASeriesIsAnError()
{
    LogCapture log(2);
    const QStringList paths = save({});
    const auto content = OvVolumeContent::read(paths, 119);
    QCOMPARE(content->error(), "The images need 0.0 GiB of memory, and only 0.0 GiB may be used");
    QCOMPARE(content->count(), 5);
    QVERIFY(content->isLoaded());
    QVERIFY(content->loadPixels());
    for (int i = 0; i < 5; ++i) {
        QVERIFY(!content->pixels(i));
        QCOMPARE(content->problem(i), "it needs too much memory");
    }
    QCOMPARE(log.take(), QStringList("2|Volume|" + paths[0] + ": " + content->error()));
    QCOMPARE(OvVolumeContent::read(paths, 120)->error(), QString());
}

void tst_OvVolumeContent::wildSizesAreAnError_data()
{
    QTest::addColumn<int>("edge");
    QTest::addColumn<QString>("frames");
    QTest::newRow("many frames") << 65535 << "100000";
    QTest::newRow("more frames than there can be") << 65535 << "2147483647";
    QTest::newRow("a large image, many times") << 65535 << "5000";
}

void tst_OvVolumeContent::wildSizesAreAnError()
{
    QFETCH(int, edge);
    QFETCH(QString, frames);
    DicomSeriesMaker maker;
    maker.images = 1;
    maker.adjust = [&](int, DcmDataset& ioSet) {
        ioSet.putAndInsertUint16(DCM_Rows, Uint16(edge));
        ioSet.putAndInsertUint16(DCM_Columns, Uint16(edge));
        DicomSeriesMaker::put(ioSet, DCM_NumberOfFrames, frames.toStdString());
    };
    const auto content = OvVolumeContent::read(save(maker));
    QVERIFY(!content->error().isEmpty());
    content->loadPixels();
    QVERIFY(!content->pixels(0));
}

void tst_OvVolumeContent::theBoundIsSensible()
{
    QVERIFY(OvVolumeContent::mostBytes() >= std::uint64_t(64) << 20);
    QVERIFY(OvVolumeContent::mostBytes() <= std::uint64_t(16) << 30);
}

void tst_OvVolumeContent::rangeHasAllImages()
{
    DicomSeriesMaker maker;
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_RescaleSlope, inImage == 4 ? "-1" : "1");
        DicomSeriesMaker::put(ioSet, DCM_RescaleIntercept, "-1024");
    };
    const auto content = OvVolumeContent::read(save(maker));
    content->loadPixels();
    QCOMPARE(*content->range(), (std::pair<double, double>(-423 - 1024, 323 - 1024)));
}

void tst_OvVolumeContent::theVolumeTellsItsStudyAndSeries()
{
    const RnHandle<OvImageVolume> volume(new OvImageVolume(OvVolumeContent::read(save({}))));
    QCOMPARE(volume->dbMetaInfo()->studyId.c_str(), "1.2.3.1");
    QCOMPARE(volume->dbMetaInfo()->seriesId.c_str(), "1.2.3.1.1");
    QCOMPARE(OvInterface::instanceWithUID(volume->uniqueID()), volume.get());
}

void tst_OvVolumeContent::theVolumeHasDimensions()
{
    const RnHandle<OvImageVolume> volume(new OvImageVolume(OvVolumeContent::read(save({}))));
    int dims[3] = {};
    volume->data(0)->dimensions(dims[0], dims[1], dims[2]);
    QCOMPARE(dims[0], 4);
    QCOMPARE(dims[1], 3);
    QCOMPARE(dims[2], 5);
    QVERIFY(!volume->data(1));
}

void tst_OvVolumeContent::theVolumeHasTheHeadersInItsOrder()
{
    QStringList paths = save({});
    std::reverse(paths.begin(), paths.end());
    const RnHandle<OvImageVolume> volume(new OvImageVolume(OvVolumeContent::read(paths)));
    QCOMPARE(volume->imageCount(), 5);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(volume->header(i)->value({0x0020, 0x0013}), i + 1);
    QVERIFY(!volume->header(-1));
    QVERIFY(!volume->header(5));
}

void tst_OvVolumeContent::anEmptyVolumeHasNothing()
{
    const RnHandle<OvImageVolume> volume(new OvImageVolume(OvVolumeContent::read({})));
    QVERIFY(!volume->dbMetaInfo());
    QVERIFY(!volume->data(0));
    QVERIFY(!volume->header(0));
    QCOMPARE(volume->imageCount(), 0);
}

KY_TEST_MAIN(tst_OvVolumeContent)
#include "tst_OvVolumeContent.moc"

#include <support/DicomSeriesMaker.h>
#include <support/KyTest.h>

#include <ovvolren/OvFusion.h>
#include <ovvolren/OvImageSlice.h>
#include <ovvolren/OvPlaneRenderer.h>

#include <QRgb>
#include <QTemporaryDir>

#include <cmath>

namespace {

const OvWindow bytes{.centre = 127.5, .width = 255, .function = OvWindow::LinearExact};

/// A base of 6 x 5 x 4 voxels of 1 x 1 x 2 mm, black.
DicomSeriesMaker base()
{
    DicomSeriesMaker maker;
    maker.columns = 6;
    maker.rows = 5;
    maker.images = 4;
    maker.columnSpacing = maker.rowSpacing = 1;
    maker.first = {0, 0, 0};
    maker.step = {0, 0, 2};
    maker.pixel = [](int, int, int) { return 0; };
    return maker;
}

/// A coarser volume, of 2 mm, whose values grow by 10 for each mm along x, by 3 along y and by 7 along z.
DicomSeriesMaker second()
{
    DicomSeriesMaker maker = base();
    maker.series = "2";
    maker.columns = 4;
    maker.rows = 3;
    maker.images = 3;
    maker.columnSpacing = maker.rowSpacing = 2;
    maker.step = {0, 0, 3};
    maker.pixel = [](int c, int r, int i) { return 20 * c + 6 * r + 21 * i; };
    return maker;
}

int redOf(double inValue)
{
    return qRed(OvFusion::colour(std::floor(bytes.brightness(inValue) * 255 + 0.5) / 255));
}

} // namespace

class tst_OvFusion : public QObject
{
    Q_OBJECT

private slots:
    void obstaclesAreTold();
    void valuesBetweenVoxelsAreInterpolated();
    void pixelsOutsideStayAsTheyAre();
    void weightMixes_data();
    void weightMixes();
    void slopesCount();
    void missingImagesLeaveTheBase();
    void planesAcrossAreFusedToo();
    void sliceNumberIsAFraction_data();
    void sliceNumberIsAFraction();
    void sliceNumberPassesOverMissingImages();
    void coloursGoFromBlackToWhite();

    void aSliceStartsInTheMiddle();
    void aSliceKnowsItsLayers();
    void aSliceMoves();
    void aSliceOfNothingHasNoNumber();

private:
    RnHandle<OvImageVolume> volume(const DicomSeriesMaker& inMaker)
    {
        auto content = OvVolumeContent::read(inMaker.save(
            mFolder.filePath(QString("%1-%2").arg(QTest::currentTestFunction()).arg(++mSeries))));
        content->loadPixels();
        return new OvImageVolume(std::move(content));
    }

    std::vector<std::uint32_t> fused(const OvPlane& inPlane, const OvVolumeContent& inSecond,
                                     double inWeight = 1)
    {
        std::vector<std::uint32_t> pixels(size_t(inPlane.width()) * size_t(inPlane.height()));
        OvPlaneRenderer().draw(inPlane, bytes, false, pixels.data(), inPlane.width());
        OvFusion::blend(inPlane, inSecond, bytes, inWeight, pixels.data(), inPlane.width());
        return pixels;
    }

    QTemporaryDir mFolder;
    int mSeries = 0;
};

void tst_OvFusion::obstaclesAreTold()
{
    const auto first = volume(base());
    QCOMPARE(OvFusion::obstacle(first->content(), volume(second())->content()), QString());
    DicomSeriesMaker stack = second();
    stack.step = {0, 0, 0};
    QCOMPARE(OvFusion::obstacle(first->content(), volume(stack)->content()),
             "The images of the second series make up no volume.");
    DicomSeriesMaker elsewhere = second();
    elsewhere.frameOfReference = "1.2.3.10";
    QCOMPARE(OvFusion::obstacle(first->content(), volume(elsewhere)->content()),
             "The two series have no common frame of reference.");
    DicomSeriesMaker nowhere = second();
    nowhere.frameOfReference.clear();
    DicomSeriesMaker alsoNowhere = base();
    alsoNowhere.frameOfReference.clear();
    QCOMPARE(OvFusion::obstacle(volume(alsoNowhere)->content(), volume(nowhere)->content()),
             "The two series have no common frame of reference.");
    DicomSeriesMaker unplaced = base();
    unplaced.adjust = [](int, DcmDataset& ioSet) { ioSet.findAndDeleteElement(DCM_ImagePositionPatient); };
    QCOMPARE(OvFusion::obstacle(volume(unplaced)->content(), volume(second())->content()),
             "The images of the first series do not say where they lie.");
    QCOMPARE(OvFusion::obstacle(first->content(), *OvVolumeContent::read({})),
             "There are no images to fuse.");
}

void tst_OvFusion::valuesBetweenVoxelsAreInterpolated()
{
    const auto first = volume(base());
    const auto over = volume(second());
    for (int image = 0; image < 4; ++image) {
        const auto pixels = fused(OvPlane(first->content(), 2, image), over->content());
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 6; ++x)
                QCOMPARE(qRed(pixels[size_t(6 * y + x)]), redOf(10 * x + 3 * y + 7 * 2 * image));
        }
    }
}

void tst_OvFusion::pixelsOutsideStayAsTheyAre()
{
    DicomSeriesMaker bright = base();
    bright.pixel = [](int, int, int) { return 100; };
    bright.first = {-3, 0, 0};
    const auto first = volume(bright);
    const auto over = volume(second());
    const auto pixels = fused(OvPlane(first->content(), 2, 0), over->content());
    // The outermost voxels reach 1 mm beyond their centres.
    QCOMPARE(pixels[0], qRgb(100, 100, 100));
    QCOMPARE(pixels[1], qRgb(100, 100, 100));
    QCOMPARE(qRed(pixels[2]), redOf(0));
    QCOMPARE(qRed(pixels[4]), redOf(10));
}

void tst_OvFusion::weightMixes_data()
{
    QTest::addColumn<double>("weight");
    QTest::addColumn<int>("part"); // of 256
    QTest::newRow("none") << 0.0 << 0;
    QTest::newRow("a quarter") << 0.25 << 64;
    QTest::newRow("half") << 0.5 << 128;
    QTest::newRow("all") << 1.0 << 256;
    QTest::newRow("less than none") << -3.0 << 0;
    QTest::newRow("more than all") << 7.0 << 256;
}

void tst_OvFusion::weightMixes()
{
    QFETCH(double, weight);
    QFETCH(int, part);
    DicomSeriesMaker bright = base();
    bright.pixel = [](int, int, int) { return 200; };
    const auto first = volume(bright);
    const auto over = volume(second());
    const auto pixels = fused(OvPlane(first->content(), 2, 1), over->content(), weight);
    const QRgb shade = OvFusion::colour(std::floor(bytes.brightness(20 + 6 + 14) * 255 + 0.5) / 255);
    const auto mixed = [&](int inOver) { return (200 * (256 - part) + inOver * part) >> 8; };
    QCOMPARE(pixels[2 + 6 * 2], qRgb(mixed(qRed(shade)), mixed(qGreen(shade)), mixed(qBlue(shade))));
}

void tst_OvFusion::slopesCount()
{
    DicomSeriesMaker scaled = second();
    scaled.pixel = [](int, int, int) { return 10; };
    scaled.adjust = [](int inImage, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_RescaleSlope, inImage == 0 ? "2" : "4");
        DicomSeriesMaker::put(ioSet, DCM_RescaleIntercept, "1");
    };
    const auto first = volume(base());
    const auto over = volume(scaled);
    QCOMPARE(qRed(fused(OvPlane(first->content(), 2, 0), over->content())[0]), redOf(21));
    // At 2 mm of 3 between 21 and 41.
    QCOMPARE(qRed(fused(OvPlane(first->content(), 2, 1), over->content())[0]), redOf(21 + 20 * 2 / 3.0));
}

void tst_OvFusion::missingImagesLeaveTheBase()
{
    DicomSeriesMaker bright = base();
    bright.pixel = [](int, int, int) { return 100; };
    bright.images = 10;
    bright.step = {0, 0, 1};
    DicomSeriesMaker gap = second();
    gap.pixel = [](int, int, int) { return 50; };
    gap.images = 4;
    gap.adjust = [](int inImage, DcmDataset& ioSet) {
        const double places[] = {0, 3, 9, 12};
        DicomSeriesMaker::put(ioSet, DCM_ImagePositionPatient,
                              DicomSeriesMaker::decimals({0, 0, places[inImage]}));
    };
    const auto first = volume(bright);
    const auto over = volume(gap);
    QCOMPARE(over->content().geometry().missing(), 1);
    for (int image = 0; image < 10; ++image) {
        const auto pixels = fused(OvPlane(first->content(), 2, image), over->content());
        const bool isMissing = image > 3 && image < 9;
        QCOMPARE(pixels[0] == qRgb(100, 100, 100), isMissing);
    }
}

void tst_OvFusion::planesAcrossAreFusedToo()
{
    const auto first = volume(base());
    const auto over = volume(second());
    const OvPlane plane(first->content(), 1, 3); // coronal, the head above
    const auto pixels = fused(plane, over->content());
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x)
            QCOMPARE(qRed(pixels[size_t(6 * y + x)]), redOf(10 * x + 3 * 3 + 7 * 2 * (3 - y)));
    }
}

void tst_OvFusion::sliceNumberIsAFraction_data()
{
    QTest::addColumn<int>("axis");
    QTest::addColumn<int>("number");
    QTest::addColumn<float>("other");
    QTest::newRow("axial, first") << 2 << 0 << 0.0F;
    QTest::newRow("axial, second") << 2 << 1 << 2 / 3.0F;
    QTest::newRow("axial, last") << 2 << 3 << 2.0F;
    QTest::newRow("sagittal") << 0 << 3 << 1.5F;
    QTest::newRow("coronal") << 1 << 4 << 2.0F;
}

void tst_OvFusion::sliceNumberIsAFraction()
{
    QFETCH(int, axis);
    QFETCH(int, number);
    QFETCH(float, other);
    OvImageSlice* slice = new OvImageSlice({volume(base()), volume(second())});
    const RnHandle<OvImageSlice> holder(slice);
    slice->setPlane(axis, number);
    QCOMPARE(slice->sliceNumber(0), float(number));
    QVERIFY(std::fabs(slice->sliceNumber(1) - other) < 1e-5F);
    QCOMPARE(slice->sliceNumber(2), -1.0F);
    QCOMPARE(slice->sliceNumber(-1), -1.0F);
}

void tst_OvFusion::sliceNumberPassesOverMissingImages()
{
    DicomSeriesMaker gap = second();
    gap.images = 3;
    gap.adjust = [](int inImage, DcmDataset& ioSet) {
        const double places[] = {0, 2, 6};
        DicomSeriesMaker::put(ioSet, DCM_ImagePositionPatient,
                              DicomSeriesMaker::decimals({0, 0, places[inImage]}));
    };
    const auto first = volume(base());
    const auto over = volume(gap);
    const float expected[] = {0, 1, 1.5F, 2};
    for (int image = 0; image < 4; ++image)
        QCOMPARE(OvFusion::sliceNumber(OvPlane(first->content(), 2, image), over->content()),
                 expected[image]);
    DicomSeriesMaker below = base();
    below.first = {0, 0, -2};
    QCOMPARE(OvFusion::sliceNumber(OvPlane(volume(below)->content(), 2, 0), over->content()), -1.0F);
}

void tst_OvFusion::coloursGoFromBlackToWhite()
{
    QCOMPARE(OvFusion::colour(0), qRgb(0, 0, 0));
    QCOMPARE(OvFusion::colour(1), qRgb(255, 255, 255));
    QCOMPARE(OvFusion::colour(0.4), qRgb(255, 0, 0));
    QCOMPARE(OvFusion::colour(0.8), qRgb(255, 255, 0));
    for (int i = 1; i <= 255; ++i)
        QVERIFY(qGray(OvFusion::colour(i / 255.0)) >= qGray(OvFusion::colour((i - 1) / 255.0)));
}

void tst_OvFusion::aSliceStartsInTheMiddle()
{
    const RnHandle<OvImageSlice> slice(new OvImageSlice({volume(base())}));
    QCOMPARE(slice->sliceNumber(0), 2.0F);
    QCOMPARE(slice->orientation(0), OvSlice::Axial);
    QCOMPARE(OvInterface::instanceWithUID(slice->uniqueID()), slice.get());
}

void tst_OvFusion::aSliceKnowsItsLayers()
{
    const auto first = volume(base());
    const auto over = volume(second());
    const RnHandle<OvImageSlice> slice(new OvImageSlice({first, over}));
    QCOMPARE(slice->layers(), 2);
    QCOMPARE(slice->layer(0), first.get());
    QCOMPARE(slice->layer(1), over.get());
    QCOMPARE(slice->layer(2), nullptr);
    QCOMPARE(slice->layer(-1), nullptr);
    QCOMPARE(slice->orientation(1), OvSlice::Axial);
    QCOMPARE(slice->orientation(2), OvSlice::Unknown);
}

void tst_OvFusion::aSliceMoves()
{
    const RnHandle<OvImageSlice> slice(new OvImageSlice({volume(base())}));
    slice->setPlane(1, 3);
    QCOMPARE(slice->orientation(0), OvSlice::Coronal);
    QCOMPARE(slice->sliceNumber(0), 3.0F);
    slice->setPlane(1, 300);
    QCOMPARE(slice->sliceNumber(0), 4.0F);
    slice->setPlane(0, -300);
    QCOMPARE(slice->orientation(0), OvSlice::Sagittal);
    QCOMPARE(slice->sliceNumber(0), 0.0F);
    slice->setPlane(9, 1);
    QCOMPARE(slice->orientation(0), OvSlice::Axial);
}

void tst_OvFusion::aSliceOfNothingHasNoNumber()
{
    const RnHandle<OvImageVolume> nothing(new OvImageVolume(OvVolumeContent::read({})));
    const RnHandle<OvImageSlice> slice(new OvImageSlice({nothing}));
    QCOMPARE(slice->sliceNumber(0), -1.0F);
    QCOMPARE(slice->orientation(0), OvSlice::Unknown);
}

KY_TEST_MAIN(tst_OvFusion)
#include "tst_OvFusion.moc"

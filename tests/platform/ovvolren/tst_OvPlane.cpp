#include <support/DicomSeriesMaker.h>
#include <support/KyTest.h>

#include <ovvolren/OvPlaneRenderer.h>

#include <QRgb>
#include <QTemporaryDir>

#include <cmath>

namespace {

using Vector = DicomSeriesMaker::Vector;

QString text(const OvVector3& inVector)
{
    const auto rounded = [](double inNumber) { return std::round(inNumber * 1000) / 1000 + 0.0; };
    return QString("%1 %2 %3").arg(rounded(inVector.x)).arg(rounded(inVector.y)).arg(rounded(inVector.z));
}

/// What a window from 0 to 255 makes of a grey value.
QRgb grey(int inLevel)
{
    return qRgb(inLevel, inLevel, inLevel);
}

const OvWindow bytes{.centre = 128, .width = 256, .function = OvWindow::Linear};

struct Drawn
{
    int width = 0;
    std::vector<std::uint32_t> pixels;

    std::uint32_t at(int inX, int inY) const { return pixels[size_t(inY) * size_t(width) + size_t(inX)]; }
};

Drawn drawn(const OvPlane& inPlane, const OvWindow& inWindow = bytes, bool inInverted = false)
{
    Drawn image{.width = inPlane.width(),
                .pixels = std::vector<std::uint32_t>(size_t(inPlane.width()) * size_t(inPlane.height()), 1)};
    OvPlaneRenderer renderer;
    renderer.draw(inPlane, inWindow, inInverted, image.pixels.data(), inPlane.width());
    return image;
}

/// A field of values over the patient, in mm, such that every place has one of its own.
int valueAt(const OvVector3& inPlace)
{
    return int(std::lround(100 + inPlace.x + 3 * inPlace.y + 11 * inPlace.z));
}

/// A series whose pixels are valueAt() their place.
DicomSeriesMaker fieldMaker(const Vector& inRow, const Vector& inColumn, const Vector& inStep)
{
    DicomSeriesMaker maker;
    maker.columns = 5;
    maker.rows = 4;
    maker.images = 3;
    maker.columnSpacing = 1;
    maker.rowSpacing = 2;
    maker.first = {1, 2, 3};
    maker.row = inRow;
    maker.column = inColumn;
    maker.step = inStep;
    maker.pixel = [=](int c, int r, int i) {
        const auto part = [&](size_t k) {
            return maker.first[k] + inRow[k] * c * 1.0 + inColumn[k] * r * 2.0 + inStep[k] * i;
        };
        return valueAt({part(0), part(1), part(2)});
    };
    return maker;
}

} // namespace

class tst_OvPlane : public QObject
{
    Q_OBJECT

private slots:
    void planesAreCounted();
    void aStackHasOnlyItsImages();
    void nothingHasNoPlanes();
    void numbersAreBroughtToTheNearest();
    void anImageIsShownAsItIsStored();
    void aspectIsThatOfThePixels();
    void axesAreFoundByOrientation_data();
    void axesAreFoundByOrientation();
    void planesLieAsPeopleAreUsedTo_data();
    void planesLieAsPeopleAreUsedTo();
    void everyPixelShowsItsPlace_data();
    void everyPixelShowsItsPlace();
    void lettersNameDirections_data();
    void lettersNameDirections();

    void greyValuesFollowTheWindow();
    void theTableGrowsAndChanges();
    void slopesOfEachImageCount();
    void inversionSwapsBlackAndWhite();
    void paddingIsBlack();
    void coloursAreDrawnAsTheyAre();
    void largeAndFractionalValuesAreDrawn();
    void missingAndWaitingImagesHaveTheirColours();
    void linesMayBeFartherApart();

private:
    std::shared_ptr<OvVolumeContent> loaded(const DicomSeriesMaker& inMaker, bool inPixels = true)
    {
        auto content = OvVolumeContent::read(inMaker.save(
            mFolder.filePath(QString("%1-%2").arg(QTest::currentTestFunction()).arg(++mSeries))));
        if (inPixels)
            content->loadPixels();
        return content;
    }

    QTemporaryDir mFolder;
    int mSeries = 0;
};

void tst_OvPlane::planesAreCounted()
{
    DicomSeriesMaker maker;
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        if (inImage >= 3)
            DicomSeriesMaker::put(ioSet, DCM_ImagePositionPatient,
                                  DicomSeriesMaker::decimals({-10, -20, 30 + 2.0 * inImage + 4}));
    };
    const auto content = loaded(maker);
    QVERIFY(content->geometry().isVolume());
    QCOMPARE(OvPlane::count(*content, 0), 4);
    QCOMPARE(OvPlane::count(*content, 1), 3);
    QCOMPARE(OvPlane::count(*content, 2), 5);
    const OvPlane across(*content, 0, 1);
    QCOMPARE(across.width(), 3);
    QCOMPARE(across.height(), 7); // with the two that are missing
}

void tst_OvPlane::aStackHasOnlyItsImages()
{
    DicomSeriesMaker maker;
    maker.step = {0, 0, 0};
    const auto content = loaded(maker);
    QCOMPARE(OvPlane::count(*content, 0), 0);
    QCOMPARE(OvPlane::count(*content, 1), 0);
    QCOMPARE(OvPlane::count(*content, 2), 5);
    QCOMPARE(OvPlane(*content, 0, 3).axis(), 2);
    QCOMPARE(OvPlane(*content, 0, 3).image(), 3);
    QCOMPARE(OvPlane::axisFor(*content, OvSlice::Axial), 2);
    QCOMPARE(OvPlane::axisFor(*content, OvSlice::Coronal), -1);
}

void tst_OvPlane::nothingHasNoPlanes()
{
    const auto content = OvVolumeContent::read({});
    const OvPlane plane(*content, 2, 5);
    QCOMPARE(OvPlane::count(*content, 2), 0);
    QCOMPARE(plane.width(), 0);
    QCOMPARE(plane.height(), 0);
    QVERIFY(!plane.hasPlace());
    QCOMPARE(plane.orientation(), OvSlice::Unknown);
    QCOMPARE(OvPlane::axisFor(*content, OvSlice::Axial), -1);
    OvPlaneRenderer().draw(plane, bytes, false, nullptr, 0);
}

void tst_OvPlane::numbersAreBroughtToTheNearest()
{
    const auto content = loaded({});
    QCOMPARE(OvPlane(*content, 2, -3).number(), 0);
    QCOMPARE(OvPlane(*content, 2, 99).number(), 4);
    QCOMPARE(OvPlane(*content, 0, 99).number(), 3);
    QCOMPARE(OvPlane(*content, 7, 1).axis(), 2);
    QCOMPARE(OvPlane(*content, -1, 1).axis(), 2);
}

void tst_OvPlane::anImageIsShownAsItIsStored()
{
    const auto content = loaded({});
    const OvPlane plane(*content, 2, 1);
    QCOMPARE(plane.image(), 1);
    QCOMPARE(plane.width(), 4);
    QCOMPARE(plane.height(), 3);
    QVERIFY(plane.hasPlace());
    QCOMPARE(text(plane.origin()), "-10 -20 32");
    QCOMPARE(text(plane.right()), "0.5 0 0");
    QCOMPARE(text(plane.down()), "0 0.75 0");
    QCOMPARE(text(plane.centre()), "-9.25 -19.25 32");
    QCOMPARE(plane.orientation(), OvSlice::Axial);
}

void tst_OvPlane::aspectIsThatOfThePixels()
{
    const auto content = loaded({});
    QCOMPARE(OvPlane(*content, 2, 0).aspect(), 1.5);
    QCOMPARE(OvPlane(*content, 0, 0).aspect(), 2 / 0.75);
    QCOMPARE(OvPlane(*content, 1, 0).aspect(), 2 / 0.5);
    DicomSeriesMaker maker;
    maker.images = 1;
    maker.adjust = [](int, DcmDataset& ioSet) {
        ioSet.findAndDeleteElement(DCM_PixelSpacing);
        DicomSeriesMaker::put(ioSet, DCM_PixelAspectRatio, "2\\1");
    };
    const OvPlane unspaced(*loaded(maker), 2, 0);
    QCOMPARE(unspaced.aspect(), 2.0);
    QVERIFY(!unspaced.hasPlace());
    QCOMPARE(unspaced.orientation(), OvSlice::Axial);
}

void tst_OvPlane::axesAreFoundByOrientation_data()
{
    QTest::addColumn<QList<double>>("directions");
    QTest::addColumn<QList<int>>("axes"); // for axial, sagittal and coronal planes
    QTest::newRow("axial") << QList<double>{1, 0, 0, 0, 1, 0} << QList<int>{2, 0, 1};
    QTest::newRow("sagittal") << QList<double>{0, 1, 0, 0, 0, -1} << QList<int>{1, 2, 0};
    QTest::newRow("coronal") << QList<double>{1, 0, 0, 0, 0, -1} << QList<int>{1, 0, 2};
}

DicomSeriesMaker makerOf(const QList<double>& inDirections)
{
    const Vector row{inDirections[0], inDirections[1], inDirections[2]};
    const Vector column{inDirections[3], inDirections[4], inDirections[5]};
    const OvVector3 normal =
        OvVector3{row[0], row[1], row[2]}.cross(OvVector3{column[0], column[1], column[2]}) * 3;
    return fieldMaker(row, column, {normal.x, normal.y, normal.z});
}

void tst_OvPlane::axesAreFoundByOrientation()
{
    QFETCH(QList<double>, directions);
    QFETCH(QList<int>, axes);
    const auto content = loaded(makerOf(directions));
    QCOMPARE(OvPlane::axisFor(*content, OvSlice::Axial), axes[0]);
    QCOMPARE(OvPlane::axisFor(*content, OvSlice::Sagittal), axes[1]);
    QCOMPARE(OvPlane::axisFor(*content, OvSlice::Coronal), axes[2]);
    QCOMPARE(OvPlane::axisFor(*content, OvSlice::Oblique), -1);
    QCOMPARE(OvPlane::axisFor(*content, OvSlice::Unknown), -1);
    for (const auto orientation : {OvSlice::Axial, OvSlice::Sagittal, OvSlice::Coronal})
        QCOMPARE(OvPlane(*content, OvPlane::axisFor(*content, orientation), 1).orientation(), orientation);
}

void tst_OvPlane::planesLieAsPeopleAreUsedTo_data()
{
    QTest::addColumn<QList<double>>("directions");
    for (const auto& [name, directions] : {std::pair("axial", QList<double>{1, 0, 0, 0, 1, 0}),
                                           std::pair("prone", QList<double>{-1, 0, 0, 0, -1, 0}),
                                           std::pair("feet first", QList<double>{-1, 0, 0, 0, 1, 0}),
                                           std::pair("sagittal", QList<double>{0, 1, 0, 0, 0, -1}),
                                           std::pair("upside down", QList<double>{0, -1, 0, 0, 0, 1}),
                                           std::pair("coronal", QList<double>{1, 0, 0, 0, 0, -1})})
        QTest::newRow(name) << directions;
}

void tst_OvPlane::planesLieAsPeopleAreUsedTo()
{
    QFETCH(QList<double>, directions);
    const auto content = loaded(makerOf(directions));
    const std::pair<OvSlice::Orientation, const char*> looks[] = {
        {OvSlice::Axial, "L P"}, {OvSlice::Sagittal, "P F"}, {OvSlice::Coronal, "L F"}};
    for (const auto& [orientation, look] : looks) {
        const int axis = OvPlane::axisFor(*content, orientation);
        const OvPlane plane(*content, axis, 0);
        if (axis != OvPlane::AcrossImages)
            QCOMPARE(OvPlane::letters(plane.right()) + " " + OvPlane::letters(plane.down()), look);
    }
}

void tst_OvPlane::everyPixelShowsItsPlace_data()
{
    planesLieAsPeopleAreUsedTo_data();
}

/// The values are a function of the place, so each pixel must have the value of the place that the plane says
/// it has.
void tst_OvPlane::everyPixelShowsItsPlace()
{
    QFETCH(QList<double>, directions);
    const auto content = loaded(makerOf(directions));
    QVERIFY(content->geometry().isVolume());
    int pixels = 0;
    for (int axis = 0; axis < 3; ++axis) {
        for (int number = 0; number < OvPlane::count(*content, axis); ++number) {
            const OvPlane plane(*content, axis, number);
            const Drawn image = drawn(plane);
            for (int y = 0; y < plane.height(); ++y) {
                for (int x = 0; x < plane.width(); ++x, ++pixels)
                    QCOMPARE(image.at(x, y),
                             grey(valueAt(plane.origin() + plane.right() * x + plane.down() * y)));
            }
        }
    }
    QCOMPARE(pixels, 3 * 5 * 4 * 3);
}

void tst_OvPlane::lettersNameDirections_data()
{
    QTest::addColumn<QList<double>>("direction");
    QTest::addColumn<QString>("letters");
    QTest::newRow("left") << QList<double>{3, 0, 0} << "L";
    QTest::newRow("right") << QList<double>{-1, 0, 0} << "R";
    QTest::newRow("front") << QList<double>{0, -1, 0} << "A";
    QTest::newRow("back") << QList<double>{0, 1, 0} << "P";
    QTest::newRow("head") << QList<double>{0, 0, 1} << "H";
    QTest::newRow("feet") << QList<double>{0, 0, -1} << "F";
    QTest::newRow("left and a little front") << QList<double>{2, -1, 0} << "LA";
    QTest::newRow("hardly front") << QList<double>{9, -1, 0} << "L";
    QTest::newRow("all three") << QList<double>{-1, 2, 1.5} << "PHR";
    QTest::newRow("none") << QList<double>{0, 0, 0} << "";
}

void tst_OvPlane::lettersNameDirections()
{
    QFETCH(QList<double>, direction);
    QTEST(OvPlane::letters({direction[0], direction[1], direction[2]}), "letters");
}

void tst_OvPlane::greyValuesFollowTheWindow()
{
    DicomSeriesMaker maker;
    maker.isSigned = true;
    maker.pixel = [](int c, int r, int) { return -300 + 60 * (4 * r + c); };
    const auto content = loaded(maker);
    const OvWindow window{.centre = 40, .width = 400, .function = OvWindow::Linear};
    const Drawn image = drawn(OvPlane(*content, 2, 0), window);
    for (int i = 0; i < 12; ++i) {
        // The standard's formula, written out.
        const double value = -300 + 60 * i;
        const double level = value <= 40 - 0.5 - 199.5  ? 0
                             : value > 40 - 0.5 + 199.5 ? 255
                                                        : ((value - 39.5) / 399 + 0.5) * 255;
        QCOMPARE(image.at(i % 4, i / 4), grey(int(level + 0.5)));
    }
}

void tst_OvPlane::theTableGrowsAndChanges()
{
    DicomSeriesMaker maker;
    maker.pixel = [](int c, int r, int i) { return i == 1 ? 200 + c : 4 * r + c; };
    maker.images = 3;
    const auto content = loaded(maker);
    OvPlaneRenderer renderer;
    std::vector<std::uint32_t> pixels(12);
    const auto first = [&](int inImage, const OvWindow& inWindow) {
        renderer.draw(OvPlane(*content, 2, inImage), inWindow, false, pixels.data(), 4);
        return pixels[2];
    };
    QCOMPARE(first(0, bytes), grey(2));
    QCOMPARE(first(1, bytes), grey(202));
    QCOMPARE(first(0, bytes), grey(2));
    const OvWindow narrow{.centre = 2, .width = 1, .function = OvWindow::Linear};
    QCOMPARE(first(0, narrow), grey(255));
    QCOMPARE(first(1, narrow), grey(255));
    QCOMPARE(pixels[0], grey(255));
    QCOMPARE(first(2, narrow), grey(255));
    QCOMPARE(pixels[0], grey(0));
    QCOMPARE(first(1, bytes), grey(202));
}

void tst_OvPlane::slopesOfEachImageCount()
{
    DicomSeriesMaker maker;
    maker.pixel = [](int, int, int) { return 10; };
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_RescaleSlope, std::to_string(inImage + 1));
        DicomSeriesMaker::put(ioSet, DCM_RescaleIntercept, "5");
    };
    const auto content = loaded(maker);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(drawn(OvPlane(*content, 2, i)).at(1, 1), grey(10 * (i + 1) + 5));
    const Drawn across = drawn(OvPlane(*content, 1, 1));
    for (int i = 0; i < 5; ++i)
        QCOMPARE(across.at(2, 4 - i), grey(10 * (i + 1) + 5));
}

void tst_OvPlane::inversionSwapsBlackAndWhite()
{
    DicomSeriesMaker maker;
    maker.images = 2;
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        if (inImage == 1)
            DicomSeriesMaker::put(ioSet, DCM_PhotometricInterpretation, "MONOCHROME1");
    };
    maker.pixel = [](int c, int, int) { return 80 * c; };
    const auto content = loaded(maker);
    QCOMPARE(drawn(OvPlane(*content, 2, 0)).at(1, 0), grey(80));
    QCOMPARE(drawn(OvPlane(*content, 2, 0), bytes, true).at(1, 0), grey(175));
    QCOMPARE(drawn(OvPlane(*content, 2, 1)).at(1, 0), grey(175));
    QCOMPARE(drawn(OvPlane(*content, 2, 1), bytes, true).at(1, 0), grey(80));
}

void tst_OvPlane::paddingIsBlack()
{
    DicomSeriesMaker maker;
    maker.images = 1;
    maker.adjust = [](int, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_PhotometricInterpretation, "MONOCHROME1");
        ioSet.putAndInsertUint16(DcmTag(DCM_PixelPaddingValue, EVR_US), 0);
        ioSet.putAndInsertUint16(DcmTag(DCM_PixelPaddingRangeLimit, EVR_US), 60000);
    };
    maker.pixel = [](int c, int, int) { return c == 3 ? 65000 : 30000 * c; };
    const auto content = loaded(maker);
    const Drawn image = drawn(OvPlane(*content, 2, 0), {.centre = 80000, .width = 100});
    QCOMPARE(image.at(0, 0), grey(0));
    QCOMPARE(image.at(1, 0), grey(0));
    QCOMPARE(image.at(2, 0), grey(0));
    QCOMPARE(image.at(3, 0), grey(255));
}

void tst_OvPlane::coloursAreDrawnAsTheyAre()
{
    DicomSeriesMaker maker;
    maker.images = 3;
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_PhotometricInterpretation, "RGB");
        ioSet.putAndInsertUint16(DCM_SamplesPerPixel, 3);
        ioSet.putAndInsertUint16(DCM_PlanarConfiguration, 0);
        ioSet.putAndInsertUint16(DCM_BitsAllocated, 8);
        ioSet.putAndInsertUint16(DCM_BitsStored, 8);
        ioSet.putAndInsertUint16(DCM_HighBit, 7);
        std::vector<Uint8> pixels;
        for (int i = 0; i < 12; ++i) {
            for (const int part : {10 * i, 255 - i, 50 * inImage})
                pixels.push_back(Uint8(part));
        }
        ioSet.putAndInsertUint8Array(DCM_PixelData, pixels.data(), pixels.size());
    };
    const auto content = loaded(maker);
    for (int i = 0; i < 12; ++i)
        QCOMPARE(drawn(OvPlane(*content, 2, 1)).at(i % 4, i / 4), qRgb(10 * i, 255 - i, 50));
    const Drawn across = drawn(OvPlane(*content, 1, 2));
    for (int image = 0; image < 3; ++image)
        QCOMPARE(across.at(3, 2 - image), qRgb(110, 244, 50 * image));
}

void tst_OvPlane::largeAndFractionalValuesAreDrawn()
{
    DicomSeriesMaker maker;
    maker.images = 1;
    maker.adjust = [](int, DcmDataset& ioSet) {
        for (const DcmTagKey& key : {DCM_BitsStored, DCM_HighBit, DCM_PixelRepresentation, DCM_PixelData})
            ioSet.findAndDeleteElement(key);
        ioSet.putAndInsertUint16(DCM_BitsAllocated, 32);
        std::vector<Float32> floats;
        for (int i = 0; i < 12; ++i)
            floats.push_back(float(i) / 10);
        floats[3] = NAN;
        floats[4] = INFINITY;
        floats[5] = -INFINITY;
        ioSet.putAndInsertFloat32Array(DCM_FloatPixelData, floats.data(), floats.size());
    };
    const Drawn image =
        drawn(OvPlane(*loaded(maker), 2, 0), {.centre = 0.5, .width = 1, .function = OvWindow::LinearExact});
    QCOMPARE(image.at(2, 0), grey(51));
    QCOMPARE(image.at(3, 0), grey(0));
    QCOMPARE(image.at(0, 1), grey(255));
    QCOMPARE(image.at(1, 1), grey(0));
    QCOMPARE(image.at(3, 2), grey(255));
}

void tst_OvPlane::missingAndWaitingImagesHaveTheirColours()
{
    DicomSeriesMaker maker;
    maker.pixel = [](int, int, int i) { return i; };
    maker.adjust = [](int inImage, DcmDataset& ioSet) {
        if (inImage == 3)
            DicomSeriesMaker::putPixels(ioSet, 1, 1, [](int, int) { return 0; });
        if (inImage == 4)
            DicomSeriesMaker::put(ioSet, DCM_ImagePositionPatient,
                                  DicomSeriesMaker::decimals({-10, -20, 40}));
    };
    const auto waiting = loaded(maker, false);
    QCOMPARE(drawn(OvPlane(*waiting, 2, 0)).at(3, 2), OvPlaneRenderer::WaitingColour);
    QCOMPARE(drawn(OvPlane(*waiting, 0, 0)).at(1, 1), OvPlaneRenderer::MissingColour);
    QCOMPARE(drawn(OvPlane(*waiting, 0, 0)).at(1, 0), OvPlaneRenderer::WaitingColour);
    waiting->loadPixels();
    QCOMPARE(drawn(OvPlane(*waiting, 2, 3)).at(3, 2), OvPlaneRenderer::MissingColour);
    const Drawn across = drawn(OvPlane(*waiting, 0, 0));
    const QList<QRgb> expected{
        grey(4), OvPlaneRenderer::MissingColour, OvPlaneRenderer::MissingColour, grey(2), grey(1), grey(0)};
    for (int y = 0; y < 6; ++y)
        QCOMPARE(across.at(1, y), expected[y]);
}

void tst_OvPlane::linesMayBeFartherApart()
{
    DicomSeriesMaker maker;
    maker.pixel = [](int c, int r, int i) { return 20 * i + 4 * r + c; };
    const auto content = loaded(maker);
    for (int axis = 0; axis < 3; ++axis) {
        const OvPlane plane(*content, axis, 1);
        const Drawn dense = drawn(plane);
        std::vector<std::uint32_t> wide(size_t(plane.height()) * 10, 7);
        OvPlaneRenderer().draw(plane, bytes, false, wide.data(), 10);
        for (int y = 0; y < plane.height(); ++y) {
            for (int x = 0; x < 10; ++x)
                QCOMPARE(wide[size_t(10 * y + x)], x < plane.width() ? dense.at(x, y) : 7U);
        }
    }
}

KY_TEST_MAIN(tst_OvPlane)
#include "tst_OvPlane.moc"

#include <support/KyTest.h>

#include <ovvolren/OvVolumeGeometry.h>

namespace {

/// A series of axial images, 2 mm apart, which tests then spoil.
struct Series
{
    explicit Series(int inCount, const OvVector3& inStep = {0, 0, 2})
    {
        for (int i = 0; i < inCount; ++i) {
            OvImageInfo image;
            image.path = QString::number(i);
            image.instanceNumber = i + 1;
            image.format = {.type = OvPixelFormat::Int16, .columns = 10, .rows = 20};
            image.placement.axes = OvPlacement::Axes{.row = {1, 0, 0}, .column = {0, 1, 0}};
            image.placement.position = OvVector3{-5, -6, 7} + inStep * i;
            image.placement.columnSpacing = 0.5;
            image.placement.rowSpacing = 0.75;
            image.placement.frameOfReference = "1.2.3";
            images.push_back(image);
        }
    }

    OvVolumeGeometry geometry() { return OvVolumeGeometry(images, notices); }

    QString order() const
    {
        QStringList paths;
        for (const OvImageInfo& image : images)
            paths += image.path;
        return paths.join(',');
    }

    std::vector<OvImageInfo> images;
    QStringList notices;
};

using Spoil = std::function<void(Series&)>;

QString text(const OvVector3& inVector)
{
    const auto rounded = [](double inNumber) { return std::round(inNumber * 1000) / 1000 + 0.0; };
    return QString("%1 %2 %3").arg(rounded(inVector.x)).arg(rounded(inVector.y)).arg(rounded(inVector.z));
}

QString numbers(const std::vector<int>& inNumbers)
{
    QStringList texts;
    for (const int number : inNumbers)
        texts += QString::number(number);
    return texts.join(',');
}

} // namespace

Q_DECLARE_METATYPE(Spoil)

class tst_OvVolumeGeometry : public QObject
{
    Q_OBJECT

private slots:
    void parallelImagesMakeUpAVolume();
    void placesDecideNotTheOrderOfFiles();
    void instanceNumbersDecideTheDirection();
    void framesDecideTheDirectionWithoutInstanceNumbers();
    void roundedPositionsAreGoodEnough();
    void missingImagesLeaveGaps_data();
    void missingImagesLeaveGaps();
    void otherImagesAreAStack_data();
    void otherImagesAreAStack();
    void aStackIsInOrderOfInstanceNumbers();
    void imagesWithoutPlacesAreNotTalkedAbout();
    void oneImageIsAStack();
    void noImagesAreAStack();
    void axesAreNamedAfterThePatients_data();
    void axesAreNamedAfterThePatients();
    void orientationIsThatOfTheNormal_data();
    void orientationIsThatOfTheNormal();
};

void tst_OvVolumeGeometry::parallelImagesMakeUpAVolume()
{
    Series series(4);
    const OvVolumeGeometry geometry = series.geometry();
    QVERIFY(geometry.isVolume());
    QCOMPARE(series.notices, QStringList());
    QCOMPARE(series.order(), "0,1,2,3");
    QCOMPARE(numbers(geometry.grid()), "0,1,2,3");
    QCOMPARE(text(geometry.origin()), "-5 -6 7");
    QCOMPARE(text(geometry.stepAlong(0)), "0.5 0 0");
    QCOMPARE(text(geometry.stepAlong(1)), "0 0.75 0");
    QCOMPARE(text(geometry.stepAlong(2)), "0 0 2");
    QCOMPARE(text(geometry.step()), "0 0 2");
    QCOMPARE(geometry.countAlong(0), 10);
    QCOMPARE(geometry.countAlong(1), 20);
    QCOMPARE(geometry.countAlong(2), 4);
    QCOMPARE(geometry.missing(), 0);
}

void tst_OvVolumeGeometry::placesDecideNotTheOrderOfFiles()
{
    Series series(5);
    std::swap(series.images[1], series.images[3]);
    std::swap(series.images[0], series.images[2]);
    QVERIFY(series.geometry().isVolume());
    QCOMPARE(series.order(), "0,1,2,3,4");
}

void tst_OvVolumeGeometry::instanceNumbersDecideTheDirection()
{
    Series series(3);
    for (OvImageInfo& image : series.images)
        image.instanceNumber = 10 - image.instanceNumber;
    const OvVolumeGeometry geometry = series.geometry();
    QCOMPARE(series.order(), "2,1,0");
    QCOMPARE(text(geometry.origin()), "-5 -6 11");
    QCOMPARE(text(geometry.step()), "0 0 -2");
}

void tst_OvVolumeGeometry::framesDecideTheDirectionWithoutInstanceNumbers()
{
    Series series(3, {0, 0, -2});
    for (size_t i = 0; i < 3; ++i) {
        series.images[i].instanceNumber = 1;
        series.images[i].frame = int(i);
    }
    const OvVolumeGeometry geometry = series.geometry();
    QCOMPARE(series.order(), "0,1,2");
    QCOMPARE(text(geometry.step()), "0 0 -2");
}

void tst_OvVolumeGeometry::roundedPositionsAreGoodEnough()
{
    Series series(200, {0, 0, 1.0 / 3});
    for (OvImageInfo& image : series.images)
        image.placement.position->z = std::round(image.placement.position->z * 100) / 100;
    const OvVolumeGeometry geometry = series.geometry();
    QCOMPARE(series.notices, QStringList());
    QVERIFY(geometry.isVolume());
    QCOMPARE(geometry.grid().size(), size_t(200));
    QVERIFY(std::fabs(geometry.step().z - 1.0 / 3) < 1e-4);
}

void tst_OvVolumeGeometry::missingImagesLeaveGaps_data()
{
    QTest::addColumn<QList<int>>("missing");
    QTest::addColumn<QString>("grid");
    QTest::addColumn<QString>("notice");
    QTest::newRow("one") << QList<int>{2} << "0,1,-1,2,3,4"
                         << "1 image is missing between the others";
    QTest::newRow("two together") << QList<int>{2, 3} << "0,1,-1,-1,2,3"
                                  << "2 images are missing between the others";
    QTest::newRow("two apart") << QList<int>{1, 3} << "0,-1,1,-1,2,3"
                               << "2 images are missing between the others";
    QTest::newRow("at the ends") << QList<int>{0, 5} << "0,1,2,3"
                                 << "";
}

void tst_OvVolumeGeometry::missingImagesLeaveGaps()
{
    QFETCH(QList<int>, missing);
    QFETCH(QString, notice);
    Series series(6);
    std::sort(missing.begin(), missing.end(), std::greater<>());
    for (const int index : missing)
        series.images.erase(series.images.begin() + index);
    const OvVolumeGeometry geometry = series.geometry();
    QVERIFY(geometry.isVolume());
    QTEST(numbers(geometry.grid()), "grid");
    QCOMPARE(series.notices, notice.isEmpty() ? QStringList() : QStringList(notice));
    QCOMPARE(geometry.missing(), int(std::count(geometry.grid().begin(), geometry.grid().end(), -1)));
    QCOMPARE(text(geometry.step()), "0 0 2");
    QCOMPARE(geometry.countAlong(2), int(geometry.grid().size()));
}

void tst_OvVolumeGeometry::otherImagesAreAStack_data()
{
    QTest::addColumn<Spoil>("spoil");
    QTest::addColumn<QString>("notice");
    const auto row = [](const char* inName, const Spoil& inSpoil, const char* inNotice) {
        QTest::newRow(inName) << inSpoil << QString(inNotice) + ": no other orientations";
    };
    row(
        "another size", [](Series& s) { s.images[2].format.columns = 11; },
        "The images are not all of one size and kind");
    row(
        "another type", [](Series& s) { s.images[2].format.type = OvPixelFormat::UInt8; },
        "The images are not all of one size and kind");
    row(
        "a colour image", [](Series& s) { s.images[2].format.type = OvPixelFormat::Rgb24; },
        "The images are not all of one size and kind");
    row(
        "turned",
        [](Series& s) {
            s.images[2].placement.axes = OvPlacement::Axes{{0, 1, 0}, {0, 0, -1}};
        },
        "The images are not parallel");
    row(
        "turned by 2 degrees",
        [](Series& s) {
            const double a = 2 * M_PI / 180;
            s.images[2].placement.axes =
                OvPlacement::Axes{{std::cos(a), std::sin(a), 0}, {-std::sin(a), std::cos(a), 0}};
        },
        "The images are not parallel");
    row(
        "mirrored",
        [](Series& s) {
            s.images[2].placement.axes = OvPlacement::Axes{{-1, 0, 0}, {0, 1, 0}};
        },
        "The images are not parallel");
    row(
        "another spacing", [](Series& s) { s.images[2].placement.rowSpacing = 0.8; },
        "The pixel spacings of the images differ");
    row(
        "another frame of reference", [](Series& s) { s.images[2].placement.frameOfReference = "4"; },
        "The images have different frames of reference");
    row(
        "two at one place",
        [](Series& s) { s.images[2].placement.position = s.images[1].placement.position; },
        "Several images lie at the same place");
    row(
        "all at one place",
        [](Series& s) {
            for (OvImageInfo& image : s.images)
                image.placement.position = OvVector3{1, 2, 3};
        },
        "Several images lie at the same place");
    row(
        "uneven", [](Series& s) { s.images[2].placement.position->z += 0.5; },
        "The distances between the images differ");
    row(
        "far away", [](Series& s) { s.images[4].placement.position->z = 90000; },
        "The images lie too far from each other");
    row(
        "a tilted gantry",
        [](Series& s) {
            for (size_t i = 0; i < s.images.size(); ++i)
                s.images[i].placement.position->y += 0.3 * double(i);
        },
        "The images lie aslant behind each other, as with a tilted gantry");
    row(
        "one to the side", [](Series& s) { s.images[2].placement.position->x += 3; },
        "The images lie aslant behind each other, as with a tilted gantry");
    row(
        "a place is missing", [](Series& s) { s.images[2].placement.position.reset(); },
        "Some images do not say where they lie");
    row(
        "a spacing is missing", [](Series& s) { s.images[2].placement.columnSpacing = 0; },
        "Some images do not say where they lie");
}

void tst_OvVolumeGeometry::otherImagesAreAStack()
{
    QFETCH(Spoil, spoil);
    QFETCH(QString, notice);
    Series series(5);
    spoil(series);
    const OvVolumeGeometry geometry = series.geometry();
    QVERIFY(!geometry.isVolume());
    QCOMPARE(series.notices, QStringList(notice));
    QCOMPARE(series.order(), "0,1,2,3,4");
    QVERIFY(geometry.grid().empty());
    QCOMPARE(text(geometry.step()), "0 0 0");
    QCOMPARE(geometry.missing(), 0);
}

void tst_OvVolumeGeometry::aStackIsInOrderOfInstanceNumbers()
{
    Series series(4);
    for (OvImageInfo& image : series.images)
        image.placement.position.reset();
    series.images[0].instanceNumber = 3;
    series.images[1].instanceNumber = 2;
    series.images[2].instanceNumber = 3;
    series.images[3].instanceNumber = 0;
    series.geometry();
    QCOMPARE(series.order(), "3,1,0,2");
}

void tst_OvVolumeGeometry::imagesWithoutPlacesAreNotTalkedAbout()
{
    Series series(4);
    for (OvImageInfo& image : series.images)
        image.placement = OvPlacement();
    QVERIFY(!series.geometry().isVolume());
    QCOMPARE(series.notices, QStringList());
}

void tst_OvVolumeGeometry::oneImageIsAStack()
{
    Series series(1);
    QVERIFY(!series.geometry().isVolume());
    QCOMPARE(series.notices, QStringList());
}

void tst_OvVolumeGeometry::noImagesAreAStack()
{
    Series series(0);
    QVERIFY(!series.geometry().isVolume());
    QCOMPARE(series.notices, QStringList());
}

void tst_OvVolumeGeometry::axesAreNamedAfterThePatients_data()
{
    QTest::addColumn<QList<double>>("directions");
    QTest::addColumn<QString>("axes"); // of the volume, for the patient's x, y and z
    QTest::newRow("axial") << QList<double>{1, 0, 0, 0, 1, 0} << "0,1,2";
    QTest::newRow("axial, prone") << QList<double>{-1, 0, 0, 0, -1, 0} << "0,1,2";
    QTest::newRow("axial, turned") << QList<double>{0, 1, 0, 1, 0, 0} << "1,0,2";
    QTest::newRow("sagittal") << QList<double>{0, 1, 0, 0, 0, -1} << "2,0,1";
    QTest::newRow("coronal") << QList<double>{1, 0, 0, 0, 0, -1} << "0,2,1";
    QTest::newRow("tilted axial") << QList<double>{1, 0, 0, 0, 0.9, 0.4358898943540674} << "0,1,2";
    QTest::newRow("tilted by half a right angle")
        << QList<double>{1, 0, 0, 0, 0.7071067811865476, 0.7071067811865476} << "0,1,2";
}

void tst_OvVolumeGeometry::axesAreNamedAfterThePatients()
{
    QFETCH(QList<double>, directions);
    const OvPlacement::Axes axes{.row = {directions[0], directions[1], directions[2]},
                                 .column = {directions[3], directions[4], directions[5]}};
    Series series(3, axes.normal());
    for (OvImageInfo& image : series.images)
        image.placement.axes = axes;
    const OvVolumeGeometry geometry = series.geometry();
    QVERIFY(geometry.isVolume());
    QTEST(numbers({geometry.volumeAxisFor(0), geometry.volumeAxisFor(1), geometry.volumeAxisFor(2)}), "axes");
}

void tst_OvVolumeGeometry::orientationIsThatOfTheNormal_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("z");
    QTest::addColumn<int>("orientation");
    QTest::newRow("axial") << 0.0 << 0.0 << -3.0 << int(OvSlice::Axial);
    QTest::newRow("sagittal") << 5.0 << 0.0 << 0.0 << int(OvSlice::Sagittal);
    QTest::newRow("coronal") << 0.0 << -1.0 << 0.0 << int(OvSlice::Coronal);
    QTest::newRow("36 degrees off") << 0.0 << 0.58 << 0.81 << int(OvSlice::Axial);
    QTest::newRow("38 degrees off") << 0.0 << 0.62 << 0.785 << int(OvSlice::Oblique);
    QTest::newRow("none") << 0.0 << 0.0 << 0.0 << int(OvSlice::Unknown);
}

void tst_OvVolumeGeometry::orientationIsThatOfTheNormal()
{
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(double, z);
    QTEST(int(orientationOf({x, y, z})), "orientation");
}

KY_TEST_MAIN(tst_OvVolumeGeometry)
#include "tst_OvVolumeGeometry.moc"

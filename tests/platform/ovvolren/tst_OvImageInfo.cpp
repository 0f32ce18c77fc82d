#include <support/KyTest.h>

#include <ovvolren/OvImageInfo.h>
#include <ovwebservice/DicomHeader.h>

namespace {

using Elements = std::vector<std::pair<const char*, const char*>>;

/// The header of a small CT image, with \a inChanges; a null text takes an element away.
std::shared_ptr<Ovg::DicomHeader> headerWith(const Elements& inChanges)
{
    std::map<std::string, std::string> elements{{"Modality", "CT"},
                                                {"Rows", "3"},
                                                {"Columns", "4"},
                                                {"SamplesPerPixel", "1"},
                                                {"BitsAllocated", "16"},
                                                {"BitsStored", "12"},
                                                {"HighBit", "11"},
                                                {"PixelRepresentation", "0"},
                                                {"PhotometricInterpretation", "MONOCHROME2"},
                                                {"InstanceNumber", "7"}};
    for (const auto& [name, text] : inChanges) {
        if (text)
            elements[name] = text;
        else
            elements.erase(name);
    }
    auto header = std::make_shared<Ovg::DicomHeader>();
    for (const auto& [name, text] : elements) {
        if (!header->setText(Ovg::DicomTagPath::fromText(QString::fromStdString(name)),
                             QString::fromStdString(text)))
            qFatal("%s", name.c_str());
    }
    return header;
}

struct Read
{
    std::vector<OvImageInfo> images;
    QString problem;
    QStringList notices;
};

Read readWith(const Elements& inChanges)
{
    Read read;
    read.images = OvImageInfo::ofFile("a.dcm", headerWith(inChanges), read.problem, read.notices);
    return read;
}

const char* const spacingNotice = "The pixel spacing makes no sense";
const char* const rescaleNotice = "The rescale slope or intercept makes no sense: values are as stored";

} // namespace

class tst_OvImageInfo : public QObject
{
    Q_OBJECT

private slots:
    void anImageIsDescribed();
    void pixelTypeFollowsTheCoding_data();
    void pixelTypeFollowsTheCoding();
    void whatIsNoImageIsTold_data();
    void whatIsNoImageIsTold();
    void defaultsOfTheStandardHold();
    void rescaleIsRead_data();
    void rescaleIsRead();
    void windowIsRead_data();
    void windowIsRead();
    void paddingIsRead_data();
    void paddingIsRead();
    void placementIsRead();
    void senselessPlacementIsTold_data();
    void senselessPlacementIsTold();
    void nearlyRightDirectionsAreMended();
    void aspectComesFromTheNextBestElement_data();
    void aspectComesFromTheNextBestElement();
    void framesAreImages();
    void framesWithoutPlacesHaveNone();
    void doseFramesLieAtTheirOffsets();
    void doseFramesLieAtTheirCoordinates();
    void doseFramesOfAnotherCountHaveNoPlaces();
    void enhancedFramesHaveTheirFunctionalGroups();
    void wildNumbersOfFramesAreTold_data();
    void wildNumbersOfFramesAreTold();
};

void tst_OvImageInfo::anImageIsDescribed()
{
    const Read read = readWith({});
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.notices, QStringList());
    QCOMPARE(read.images.size(), size_t(1));
    const OvImageInfo& image = read.images[0];
    QCOMPARE(image.path, "a.dcm");
    QCOMPARE(image.frame, 0);
    QCOMPARE(image.frameCount, 1);
    QCOMPARE(image.instanceNumber, 7);
    QCOMPARE(image.format.columns, 4);
    QCOMPARE(image.format.rows, 3);
    QCOMPARE(image.coding.bitsStored, 12);
    QCOMPARE(image.coding.highBit, 11);
    QVERIFY(!image.isColour());
    QVERIFY(!image.inverted);
    QVERIFY(!image.window);
    QVERIFY(!image.padding);
    QVERIFY(!image.placement.axes);
    QCOMPARE(image.toValue(5), 5.0);
    QVERIFY(image.header);
}

void tst_OvImageInfo::pixelTypeFollowsTheCoding_data()
{
    QTest::addColumn<Elements>("changes");
    QTest::addColumn<int>("type");
    const auto row = [](const char* inName, const Elements& inChanges, OvPixelFormat::Type inType) {
        QTest::newRow(inName) << inChanges << int(inType);
    };
    row("12 of 16", {}, OvPixelFormat::UInt16);
    row("signed", {{"PixelRepresentation", "1"}}, OvPixelFormat::Int16);
    row("8", {{"BitsAllocated", "8"}, {"BitsStored", "8"}, {"HighBit", "7"}}, OvPixelFormat::UInt8);
    row("8 of 16", {{"BitsStored", "8"}, {"HighBit", "7"}}, OvPixelFormat::UInt8);
    row("signed 8",
        {{"BitsAllocated", "8"}, {"BitsStored", "8"}, {"HighBit", "7"}, {"PixelRepresentation", "1"}},
        OvPixelFormat::Int16);
    row("1", {{"BitsAllocated", "1"}, {"BitsStored", "1"}, {"HighBit", "0"}}, OvPixelFormat::UInt8);
    row("32", {{"BitsAllocated", "32"}, {"BitsStored", "32"}, {"HighBit", "31"}}, OvPixelFormat::UInt32);
    row("signed 24 of 32",
        {{"BitsAllocated", "32"}, {"BitsStored", "24"}, {"HighBit", "23"}, {"PixelRepresentation", "1"}},
        OvPixelFormat::Int32);
    row("floats",
        {{"BitsAllocated", "32"},
         {"BitsStored", nullptr},
         {"HighBit", nullptr},
         {"PixelRepresentation", nullptr}},
        OvPixelFormat::Float32);
    row("doubles",
        {{"BitsAllocated", "64"},
         {"BitsStored", nullptr},
         {"HighBit", nullptr},
         {"PixelRepresentation", nullptr}},
        OvPixelFormat::Float32);
    row("RGB", {{"SamplesPerPixel", "3"}, {"PhotometricInterpretation", "RGB"}}, OvPixelFormat::Rgb24);
    row("palette", {{"PhotometricInterpretation", "PALETTE COLOR"}}, OvPixelFormat::Rgb24);
    row("no photometric interpretation", {{"PhotometricInterpretation", nullptr}}, OvPixelFormat::UInt16);
}

void tst_OvImageInfo::pixelTypeFollowsTheCoding()
{
    QFETCH(Elements, changes);
    const Read read = readWith(changes);
    QCOMPARE(read.problem, QString());
    QTEST(int(read.images.at(0).format.type), "type");
}

void tst_OvImageInfo::whatIsNoImageIsTold_data()
{
    QTest::addColumn<Elements>("changes");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char* inName, const Elements& inChanges, const char* inProblem) {
        QTest::newRow(inName) << inChanges << inProblem;
    };
    row("a report", {{"Rows", nullptr}, {"Columns", nullptr}, {"Modality", "SR"}},
        "The file has no image (SR)");
    row("something", {{"Rows", nullptr}, {"Columns", nullptr}, {"Modality", nullptr}},
        "The file has no image (no modality)");
    row("no rows", {{"Rows", nullptr}}, "The image has no sensible size (4 x 0)");
    row("0 columns", {{"Columns", "0"}}, "The image has no sensible size (0 x 3)");
    const auto coded = [](const char* inText) {
        return QByteArray("The pixels are coded in an unknown way (") + inText + ")";
    };
    row("no bits", {{"BitsAllocated", nullptr}, {"BitsStored", nullptr}, {"HighBit", nullptr}},
        coded("1 samples, 0 bits allocated, 0 stored, high bit -1"));
    row("12 bits", {{"BitsAllocated", "12"}}, coded("1 samples, 12 bits allocated, 12 stored, high bit 11"));
    row("64 bits", {{"BitsAllocated", "64"}}, coded("1 samples, 64 bits allocated, 12 stored, high bit 11"));
    row("0 stored", {{"BitsStored", "0"}}, coded("1 samples, 16 bits allocated, 0 stored, high bit 11"));
    row("more stored than there are", {{"BitsStored", "17"}, {"HighBit", "16"}},
        coded("1 samples, 16 bits allocated, 17 stored, high bit 16"));
    row("high bit too high", {{"HighBit", "16"}},
        coded("1 samples, 16 bits allocated, 12 stored, high bit 16"));
    row("high bit too low", {{"HighBit", "10"}},
        coded("1 samples, 16 bits allocated, 12 stored, high bit 10"));
    row("2 samples", {{"SamplesPerPixel", "2"}},
        coded("2 samples, 16 bits allocated, 12 stored, high bit 11"));
    row("65535 samples", {{"SamplesPerPixel", "65535"}},
        coded("65535 samples, 16 bits allocated, 12 stored, high bit 11"));
}

void tst_OvImageInfo::whatIsNoImageIsTold()
{
    QFETCH(Elements, changes);
    const Read read = readWith(changes);
    QVERIFY(read.images.empty());
    QTEST(read.problem, "problem");
}

void tst_OvImageInfo::defaultsOfTheStandardHold()
{
    const Read read = readWith({{"SamplesPerPixel", nullptr},
                                {"BitsStored", nullptr},
                                {"HighBit", nullptr},
                                {"InstanceNumber", nullptr}});
    QCOMPARE(read.problem, QString());
    const OvPixelCoding& coding = read.images.at(0).coding;
    QCOMPARE(coding.samplesPerPixel, 1);
    QCOMPARE(coding.bitsStored, 16);
    QCOMPARE(coding.highBit, 15);
    QVERIFY(!coding.isSigned);
    QCOMPARE(read.images[0].instanceNumber, 0);
}

void tst_OvImageInfo::rescaleIsRead_data()
{
    QTest::addColumn<Elements>("changes");
    QTest::addColumn<double>("slope");
    QTest::addColumn<double>("intercept");
    QTest::addColumn<QStringList>("notices");
    const auto row = [](const char* inSlope, const char* inIntercept, double inReadSlope,
                        double inReadIntercept, bool inGood = true) {
        QTest::addRow("%s, %s", inSlope ? inSlope : "none", inIntercept ? inIntercept : "none")
            << Elements{{"RescaleSlope", inSlope}, {"RescaleIntercept", inIntercept}} << inReadSlope
            << inReadIntercept << (inGood ? QStringList() : QStringList(rescaleNotice));
    };
    row(nullptr, nullptr, 1, 0);
    row("1", "-1024", 1, -1024);
    row("0.0123", "0", 0.0123, 0);
    row("-2", "5", -2, 5);
    row("2", nullptr, 2, 0);
    row(nullptr, "5", 1, 0, false);
    row("0", "5", 1, 0, false);
    row("nan", "5", 1, 0, false);
    row("inf", "0", 1, 0, false);
    row("1e300", "0", 1, 0, false);
    row("1", "-1e300", 1, 0, false);
}

void tst_OvImageInfo::rescaleIsRead()
{
    QFETCH(Elements, changes);
    const Read read = readWith(changes);
    QTEST(read.images.at(0).slope, "slope");
    QTEST(read.images.at(0).intercept, "intercept");
    QTEST(read.notices, "notices");
}

void tst_OvImageInfo::windowIsRead_data()
{
    QTest::addColumn<Elements>("changes");
    QTest::addColumn<QString>("window");
    const auto row = [](const char* inCentre, const char* inWidth, const char* inFunction,
                        const char* inWindow) {
        QTest::addRow("%s, %s, %s", inCentre ? inCentre : "none", inWidth ? inWidth : "none",
                      inFunction ? inFunction : "none")
            << Elements{{"WindowCenter", inCentre}, {"WindowWidth", inWidth}, {"VOILUTFunction", inFunction}}
            << inWindow;
    };
    row(nullptr, nullptr, nullptr, "none");
    row("40", nullptr, nullptr, "none");
    row(nullptr, "400", nullptr, "none");
    row("40", "400", nullptr, "40 400 0");
    row("40\\-600", "400\\1500", nullptr, "40 400 0");
    row("40", "400", "LINEAR", "40 400 0");
    row("40", "400", "LINEAR_EXACT", "40 400 1");
    row("40", "400", "SIGMOID", "40 400 2");
    row("40", "400", "OTHER", "40 400 0");
    row("0.2", "0.5", nullptr, "0.2 0.5 1");
    row("40", "0", nullptr, "none");
    row("40", "-5", nullptr, "none");
    row("40", "nan", nullptr, "none");
    row("1e300", "5", nullptr, "none");
    row("5", "1e300", nullptr, "none");
}

void tst_OvImageInfo::windowIsRead()
{
    QFETCH(Elements, changes);
    const auto window = readWith(changes).images.at(0).window;
    const QString text =
        window ? QString("%1 %2 %3").arg(window->centre).arg(window->width).arg(int(window->function))
               : "none";
    QTEST(text, "window");
}

void tst_OvImageInfo::paddingIsRead_data()
{
    QTest::addColumn<Elements>("changes");
    QTest::addColumn<QString>("padding");
    const auto row = [](const char* inName, const Elements& inChanges, const char* inPadding) {
        QTest::newRow(inName) << inChanges << inPadding;
    };
    row("none", {}, "none");
    row("a value", {{"PixelPaddingValue", "63"}}, "63..63");
    row("a range", {{"PixelPaddingValue", "63"}, {"PixelPaddingRangeLimit", "60"}}, "60..63");
    row("a limit alone", {{"PixelPaddingRangeLimit", "60"}}, "none");
    // As a file with implicit VRs has it, where every word counts as unsigned.
    row("a signed value in an unsigned word", {{"PixelRepresentation", "1"}, {"PixelPaddingValue", "63536"}},
        "-2000..-2000");
}

void tst_OvImageInfo::paddingIsRead()
{
    QFETCH(Elements, changes);
    const auto padding = readWith(changes).images.at(0).padding;
    QTEST(padding ? QString("%1..%2").arg(padding->first).arg(padding->second) : QString("none"), "padding");
}

void tst_OvImageInfo::placementIsRead()
{
    const Read read = readWith({{"PixelSpacing", "0.75\\0.5"},
                                {"ImageOrientationPatient", "0\\1\\0\\0\\0\\-1"},
                                {"ImagePositionPatient", "-10\\20.5\\30"},
                                {"FrameOfReferenceUID", "1.2.3"}});
    QCOMPARE(read.notices, QStringList());
    const OvPlacement& placement = read.images.at(0).placement;
    QVERIFY(placement.isComplete());
    QCOMPARE(placement.rowSpacing, 0.75);
    QCOMPARE(placement.columnSpacing, 0.5);
    QCOMPARE(placement.aspect, 1.5);
    QCOMPARE(placement.axes->row.y, 1.0);
    QCOMPARE(placement.axes->column.z, -1.0);
    QCOMPARE(placement.axes->normal().x, -1.0);
    QCOMPARE(placement.position->x, -10.0);
    QCOMPARE(placement.position->y, 20.5);
    QCOMPARE(placement.position->z, 30.0);
    QCOMPARE(placement.frameOfReference, std::string("1.2.3"));
}

void tst_OvImageInfo::senselessPlacementIsTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("notice");
    const auto rows = [](const char* inName, const std::vector<const char*>& inTexts, const char* inNotice) {
        for (const char* text : inTexts)
            QTest::addRow("%s %s", inName, text) << inName << text << inNotice;
    };
    rows("PixelSpacing",
         {"0\\0", "0.5\\0", "-1\\1", "1", "1\\1\\1", "nan\\1", "1e9\\1e9", "1000\\0.001", "1\\abc",
          "inf\\inf"},
         spacingNotice);
    rows("ImageOrientationPatient",
         {"1\\0\\0", "0\\0\\0\\0\\0\\0", "1\\0\\0\\1\\0\\0", "2\\0\\0\\0\\2\\0", "1\\0\\0\\0\\nan\\0",
          "1\\0\\0\\0.5\\0.866\\0", "a\\b\\c\\d\\e\\f"},
         "The orientation makes no sense");
    rows("ImagePositionPatient", {"1\\2", "1\\2\\3\\4", "1e9\\0\\0", "nan\\0\\0", "x\\y\\z", "-1e300\\0\\0"},
         "The position makes no sense");
}

void tst_OvImageInfo::senselessPlacementIsTold()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, notice);
    const Read read = readWith({{name.toLatin1().constData(), text.toLatin1().constData()}});
    QCOMPARE(read.problem, QString());
    QCOMPARE(read.notices, QStringList(notice));
    const OvPlacement& placement = read.images.at(0).placement;
    QVERIFY(!placement.axes && !placement.position && placement.columnSpacing == 0 && placement.aspect == 1);
}

void tst_OvImageInfo::nearlyRightDirectionsAreMended()
{
    const Read read = readWith({{"ImageOrientationPatient", "0.999\\0.01\\0\\-0.005\\1.001\\0"}});
    QCOMPARE(read.notices, QStringList());
    const auto& axes = *read.images.at(0).placement.axes;
    QVERIFY(std::fabs(axes.row.length() - 1) < 1e-12);
    QVERIFY(std::fabs(axes.column.length() - 1) < 1e-12);
    QVERIFY(std::fabs(axes.row.dot(axes.column)) < 1e-12);
}

void tst_OvImageInfo::aspectComesFromTheNextBestElement_data()
{
    QTest::addColumn<Elements>("changes");
    QTest::addColumn<double>("aspect");
    const auto row = [](const char* inName, const Elements& inChanges, double inAspect) {
        QTest::newRow(inName) << inChanges << inAspect;
    };
    row("none", {}, 1);
    row("imager", {{"ImagerPixelSpacing", "0.3\\0.1"}}, 3);
    row("scanner", {{"NominalScannedPixelSpacing", "0.1\\0.2"}}, 0.5);
    row("ratio", {{"PixelAspectRatio", "4\\3"}}, 4.0 / 3);
    row("spacing first", {{"PixelSpacing", "2\\1"}, {"PixelAspectRatio", "4\\3"}}, 2);
    row("senseless ratio", {{"PixelAspectRatio", "4\\0"}}, 1);
    row("wild ratio", {{"PixelAspectRatio", "2000000000\\1"}}, 1);
}

void tst_OvImageInfo::aspectComesFromTheNextBestElement()
{
    QFETCH(Elements, changes);
    const Read read = readWith(changes);
    QTEST(read.images.at(0).placement.aspect, "aspect");
    QCOMPARE(read.notices, QStringList());
}

void tst_OvImageInfo::framesAreImages()
{
    const Read read = readWith({{"NumberOfFrames", "3"}});
    QCOMPARE(read.images.size(), size_t(3));
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(read.images[size_t(i)].frame, i);
        QCOMPARE(read.images[size_t(i)].frameCount, 3);
        QCOMPARE(read.images[size_t(i)].header, read.images[0].header);
    }
}

void tst_OvImageInfo::framesWithoutPlacesHaveNone()
{
    const Read read = readWith({{"NumberOfFrames", "2"},
                                {"PixelSpacing", "1\\1"},
                                {"ImageOrientationPatient", "1\\0\\0\\0\\1\\0"},
                                {"ImagePositionPatient", "1\\2\\3"}});
    QVERIFY(read.images[0].placement.axes);
    QVERIFY(!read.images[0].placement.position);
    QVERIFY(!read.images[1].placement.position);
}

void tst_OvImageInfo::doseFramesLieAtTheirOffsets()
{
    const Read read = readWith({{"NumberOfFrames", "3"},
                                {"PixelSpacing", "1\\1"},
                                {"ImageOrientationPatient", "1\\0\\0\\0\\1\\0"},
                                {"ImagePositionPatient", "1\\2\\3"},
                                {"GridFrameOffsetVector", "0\\2.5\\5"}});
    QCOMPARE(read.images[0].placement.position->z, 3.0);
    QCOMPARE(read.images[1].placement.position->z, 5.5);
    QCOMPARE(read.images[2].placement.position->z, 8.0);
    QCOMPARE(read.images[2].placement.position->x, 1.0);
}

void tst_OvImageInfo::doseFramesLieAtTheirCoordinates()
{
    const Elements elements{{"NumberOfFrames", "2"},
                            {"PixelSpacing", "1\\1"},
                            {"ImageOrientationPatient", "1\\0\\0\\0\\-1\\0"},
                            {"ImagePositionPatient", "1\\2\\-90"},
                            {"GridFrameOffsetVector", "-90\\-93"}};
    QCOMPARE(readWith(elements).images[0].placement.position->z, -90.0);
    QCOMPARE(readWith(elements).images[1].placement.position->z, -93.0);
    Elements coronal = elements;
    coronal[2].second = "1\\0\\0\\0\\0\\-1";
    QVERIFY(!readWith(coronal).images[1].placement.position);
}

void tst_OvImageInfo::doseFramesOfAnotherCountHaveNoPlaces()
{
    const Read read = readWith({{"NumberOfFrames", "3"},
                                {"PixelSpacing", "1\\1"},
                                {"ImageOrientationPatient", "1\\0\\0\\0\\1\\0"},
                                {"ImagePositionPatient", "1\\2\\3"},
                                {"GridFrameOffsetVector", "0\\2.5"}});
    QVERIFY(!read.images[0].placement.position);
    QVERIFY(!read.images[2].placement.position);
}

void tst_OvImageInfo::enhancedFramesHaveTheirFunctionalGroups()
{
    const Read read = readWith(
        {{"NumberOfFrames", "2"},
         {"SharedFunctionalGroupsSequence.PixelMeasuresSequence.PixelSpacing", "0.5\\0.5"},
         {"SharedFunctionalGroupsSequence.PlaneOrientationSequence.ImageOrientationPatient",
          "1\\0\\0\\0\\1\\0"},
         {"SharedFunctionalGroupsSequence.FrameVOILUTSequence.WindowCenter", "40"},
         {"SharedFunctionalGroupsSequence.FrameVOILUTSequence.WindowWidth", "400"},
         {"PerFrameFunctionalGroupsSequence[0].PlanePositionSequence.ImagePositionPatient", "1\\2\\3"},
         {"PerFrameFunctionalGroupsSequence[1].PlanePositionSequence.ImagePositionPatient", "1\\2\\5"},
         {"PerFrameFunctionalGroupsSequence[0].PixelValueTransformationSequence.RescaleSlope", "2"},
         {"PerFrameFunctionalGroupsSequence[0].PixelValueTransformationSequence.RescaleIntercept", "10"},
         {"PerFrameFunctionalGroupsSequence[1].PixelValueTransformationSequence.RescaleSlope", "3"},
         {"PerFrameFunctionalGroupsSequence[1].PixelValueTransformationSequence.RescaleIntercept", "20"}});
    QCOMPARE(read.notices, QStringList());
    for (size_t i = 0; i < 2; ++i) {
        const OvImageInfo& image = read.images.at(i);
        QVERIFY(image.placement.isComplete());
        QCOMPARE(image.placement.columnSpacing, 0.5);
        QCOMPARE(image.placement.position->z, i == 0 ? 3.0 : 5.0);
        QCOMPARE(image.slope, i == 0 ? 2.0 : 3.0);
        QCOMPARE(image.intercept, i == 0 ? 10.0 : 20.0);
        QCOMPARE(image.window->centre, 40.0);
    }
}

void tst_OvImageInfo::wildNumbersOfFramesAreTold_data()
{
    QTest::addColumn<QString>("frames");
    QTest::addColumn<QString>("problem");
    QTest::addColumn<QStringList>("notices");
    const QStringList notice("The number of frames makes no sense: only the first is shown");
    for (const char* text : {"0", "-1", "-2147483648", "1A", "99999999999"})
        QTest::newRow(text) << text << "" << notice;
    for (const char* text : {"100001", "2147483647"})
        QTest::newRow(text) << text << QString("The image has %1 frames, more than can be shown").arg(text)
                            << QStringList();
}

void tst_OvImageInfo::wildNumbersOfFramesAreTold()
{
    QFETCH(QString, frames);
    const Read read = readWith({{"NumberOfFrames", frames.toLatin1().constData()}});
    QTEST(read.problem, "problem");
    QTEST(read.notices, "notices");
    QCOMPARE(read.images.size(), size_t(read.problem.isEmpty() ? 1 : 0));
}

KY_TEST_MAIN(tst_OvImageInfo)
#include "tst_OvImageInfo.moc"

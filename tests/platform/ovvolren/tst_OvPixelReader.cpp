#include <support/DicomSeriesMaker.h>
#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <ovvolren/OvVolumeContent.h>

#include "dcmtk/dcmdata/dcpixel.h"
#include "dcmtk/dcmdata/dcpixseq.h"
#include "dcmtk/dcmdata/dcpxitem.h"
#include "dcmtk/dcmdata/dcrleerg.h"
#include "dcmtk/dcmjpeg/djencode.h"
#include "dcmtk/dcmjpeg/djrplol.h"

#include <QTemporaryDir>

#include <cmath>

namespace {

const QString pydicomFiles = QStringLiteral("/usr/lib/python3/dist-packages/pydicom/data/test_files/");

#define SKIP_WITHOUT_PYDICOM()                                                                               \
    do {                                                                                                     \
        if (!QFile::exists(pydicomFiles))                                                                    \
            QSKIP("needs the DICOM files of the package python3-pydicom");                                   \
    } while (false)

using Adjust = std::function<void(DcmDataset&)>;

std::shared_ptr<OvVolumeContent> loaded(const QString& inPath)
{
    auto content = OvVolumeContent::read({inPath});
    content->loadPixels();
    return content;
}

/// The value of the image's pixel as it is in memory.
double pixelAt(const OvVolumeContent& inContent, int inImage, int inColumn, int inRow)
{
    const OvPixels* pixels = inContent.pixels(inImage);
    double value = std::nan("");
    if (!pixels)
        return value;
    withPixelType(pixels->format.type, [&](const auto* inType) {
        using Pixel = std::remove_cvref_t<decltype(*inType)>;
        value = double(pixels->as<Pixel>()[inRow * pixels->format.columns + inColumn]);
    });
    return value;
}

QString rgbAt(const OvVolumeContent& inContent, int inImage, int inColumn, int inRow)
{
    const OvPixels* pixels = inContent.pixels(inImage);
    if (!pixels)
        return QStringLiteral("none");
    const unsigned char* at = pixels->bytes.data() + 3 * (inRow * pixels->format.columns + inColumn);
    return QStringLiteral("%1,%2,%3").arg(at[0]).arg(at[1]).arg(at[2]);
}

bool isNearColour(const QString& inA, const QString& inB, int inTolerance)
{
    const QStringList a = inA.split(',');
    const QStringList b = inB.split(',');
    for (int i = 0; i < 3; ++i) {
        if (std::abs(a.value(i, "-1000").toInt() - b.value(i).toInt()) > inTolerance)
            return false;
    }
    return true;
}

/// The little-endian words at the end of a file, which is where its pixels are.
std::vector<int> lastWords(const QString& inPath, int inCount)
{
    QFile file(inPath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll().right(2 * inCount);
    std::vector<int> words;
    for (int i = 0; i < inCount; ++i)
        words.push_back(qint16(quint8(bytes[2 * i]) | quint8(bytes[2 * i + 1]) << 8));
    return words;
}

} // namespace

class tst_OvPixelReader : public QObject
{
    Q_OBJECT

private slots:
    void lossFreeSyntaxesGiveTheSamePixels_data();
    void lossFreeSyntaxesGiveTheSamePixels();
    void colourBarsAreRight_data();
    void colourBarsAreRight();
    void secondFramesAreRight_data();
    void secondFramesAreRight();
    void dosesHaveBigNumbers_data();
    void dosesHaveBigNumbers();
    void bitMasksAreUnpacked_data();
    void bitMasksAreUnpacked();
    void otherFilesAreReadOrToldAbout_data();
    void otherFilesAreReadOrToldAbout();

    void storedBitsAreTakenOut_data();
    void storedBitsAreTakenOut();
    void framesOfPackedBitsBeginWithinBytes();
    void bigEndianWordsAreTurned_data();
    void bigEndianWordsAreTurned();
    void floatsAreRead_data();
    void floatsAreRead();
    void paddingIsLeftOutOfTheRange();
    void modalityLutIsApplied_data();
    void modalityLutIsApplied();
    void malformedModalityLutIsTold_data();
    void malformedModalityLutIsTold();
    void palettesAreApplied();
    void rleFramesAreRead();
    void eightBitJpegInWordsIsRead();

    void truncatedLastFrameIsTold();
    void shortPixelsAreTold();
    void missingPixelsAreTold();
    void fileThatVanishedIsTold();
    void garbageInEncapsulatedPixelsIsTold_data();
    void garbageInEncapsulatedPixelsIsTold();
    void unknownCompressionIsTold();
    void jpeg2000OfAnotherSizeIsTold();

private:
    QString saved(const Adjust& inAdjust, E_TransferSyntax inSyntax = EXS_LittleEndianExplicit);
    QString savedEncapsulated(const std::vector<std::vector<unsigned char>>& inFragments,
                              E_TransferSyntax inSyntax, const Adjust& inAdjust = {});

    QTemporaryDir mFolder;
};

QString tst_OvPixelReader::saved(const Adjust& inAdjust, E_TransferSyntax inSyntax)
{
    DicomSeriesMaker maker;
    maker.images = 1;
    maker.adjust = [&](int, DcmDataset& ioSet) { inAdjust(ioSet); };
    return maker.save(mFolder.path(), inSyntax).constFirst();
}

QString tst_OvPixelReader::savedEncapsulated(const std::vector<std::vector<unsigned char>>& inFragments,
                                             E_TransferSyntax inSyntax, const Adjust& inAdjust)
{
    DicomSeriesMaker maker;
    DcmFileFormat file;
    maker.fill(0, *file.getDataset());
    if (inAdjust)
        inAdjust(*file.getDataset());
    file.getDataset()->findAndDeleteElement(DCM_PixelData);
    auto* sequence = new DcmPixelSequence(DcmTag(DCM_PixelData, EVR_OB));
    sequence->insert(new DcmPixelItem(DcmTag(DCM_Item, EVR_OB)));
    for (const auto& bytes : inFragments) {
        auto* item = new DcmPixelItem(DcmTag(DCM_Item, EVR_OB));
        item->putUint8Array(bytes.data(), bytes.size());
        sequence->insert(item);
    }
    auto* pixels = new DcmPixelData(DcmTag(DCM_PixelData, EVR_OB));
    pixels->putOriginalRepresentation(inSyntax, nullptr, sequence);
    file.getDataset()->insert(pixels);
    return DicomSeriesMaker::saveFile(file, mFolder.filePath("encapsulated.dcm"), inSyntax);
}

void tst_OvPixelReader::lossFreeSyntaxesGiveTheSamePixels_data()
{
    QTest::addColumn<QString>("file");
    for (const char* file :
         {"MR_small", "MR_small_RLE", "MR_small_bigendian", "MR_small_expb", "MR_small_implicit",
          "MR_small_jp2klossless", "MR_small_jpeg_ls_lossless", "MR_small_padded"})
        QTest::newRow(file) << QString(file);
}

void tst_OvPixelReader::lossFreeSyntaxesGiveTheSamePixels()
{
    SKIP_WITHOUT_PYDICOM();
    QFETCH(QString, file);
    // The file ends with its pixels and an element of padding behind them, so these come from another one.
    const auto expected = lastWords(pydicomFiles + "MR_small_implicit.dcm", 64 * 64);
    const auto content = loaded(pydicomFiles + file + ".dcm");
    QCOMPARE(content->error(), QString());
    QCOMPARE(content->problem(0), QString());
    QCOMPARE(content->image(0).format, (OvPixelFormat{OvPixelFormat::Int16, 64, 64}));
    int different = 0;
    for (int i = 0; i < 64 * 64; ++i)
        different += pixelAt(*content, 0, i % 64, i / 64) != expected[size_t(i)] ? 1 : 0;
    QCOMPARE(different, 0);
    QCOMPARE(content->range()->first, double(*std::min_element(expected.begin(), expected.end())));
    QCOMPARE(content->range()->second, double(*std::max_element(expected.begin(), expected.end())));
}

void tst_OvPixelReader::colourBarsAreRight_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("tolerance");
    for (const char* file : {"SC_rgb_rle", "SC_rgb_rle_16bit", "SC_rgb_rle_32bit", "SC_rgb_rle_2frame",
                             "SC_rgb_rle_16bit_2frame", "SC_rgb_rle_32bit_2frame", "SC_rgb_jpeg_gdcm",
                             "SC_rgb_gdcm_KY", "SC_rgb_dcmtk_+eb+cr"})
        QTest::newRow(file) << QString(file) << 0;
    for (const char* file : {"SC_rgb_dcmtk_+eb+cy+n1", "SC_rgb_dcmtk_+eb+cy+n2", "SC_rgb_dcmtk_+eb+cy+np",
                             "SC_rgb_dcmtk_+eb+cy+s2", "SC_rgb_dcmtk_+eb+cy+s4", "SC_rgb_jpeg_dcmtk",
                             "SC_ybr_full_422_uncompressed"})
        QTest::newRow(file) << QString(file) << 5;
}

void tst_OvPixelReader::colourBarsAreRight()
{
    SKIP_WITHOUT_PYDICOM();
    QFETCH(QString, file);
    QFETCH(int, tolerance);
    const auto content = loaded(pydicomFiles + file + ".dcm");
    QCOMPARE(content->problem(0), QString());
    const char* const bars[] = {"255,0,0",     "255,128,128", "0,255,0",  "128,255,128", "0,0,255",
                                "128,128,255", "0,0,0",       "64,64,64", "192,192,192", "255,255,255"};
    for (int bar = 0; bar < 10; ++bar) {
        const QString colour = rgbAt(*content, 0, 50, 10 * bar + 5);
        QVERIFY2(isNearColour(colour, bars[bar], tolerance), qPrintable(colour + " is not " + bars[bar]));
    }
    QVERIFY(!content->range());
}

void tst_OvPixelReader::secondFramesAreRight_data()
{
    QTest::addColumn<QString>("file");
    for (const char* file : {"SC_rgb_rle_2frame", "SC_rgb_rle_16bit_2frame", "SC_rgb_rle_32bit_2frame"})
        QTest::newRow(file) << QString(file);
}

/// Its colours are the first one's, reversed.
void tst_OvPixelReader::secondFramesAreRight()
{
    SKIP_WITHOUT_PYDICOM();
    QFETCH(QString, file);
    const auto content = loaded(pydicomFiles + file + ".dcm");
    QCOMPARE(content->count(), 2);
    for (int row = 0; row < 100; ++row) {
        const QStringList first = rgbAt(*content, 0, 50, row).split(',');
        const QStringList second = rgbAt(*content, 1, 50, row).split(',');
        for (int i = 0; i < 3; ++i)
            QCOMPARE(second.at(i).toInt(), 255 - first.at(i).toInt());
    }
}

void tst_OvPixelReader::dosesHaveBigNumbers_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("frames");
    QTest::newRow("implicit") << "rtdose" << 15;
    QTest::newRow("big endian") << "rtdose_expb" << 15;
    QTest::newRow("run lengths") << "rtdose_rle" << 15;
    QTest::newRow("big endian, one frame") << "rtdose_expb_1frame" << 1;
    QTest::newRow("run lengths, one frame") << "rtdose_rle_1frame" << 1;
}

void tst_OvPixelReader::dosesHaveBigNumbers()
{
    SKIP_WITHOUT_PYDICOM();
    QFETCH(QString, file);
    QFETCH(int, frames);
    QFile plain(pydicomFiles + "rtdose.dcm");
    QVERIFY(plain.open(QIODevice::ReadOnly));
    const QByteArray bytes = plain.readAll().right(15 * 100 * 4);
    const auto content = loaded(pydicomFiles + file + ".dcm");
    QCOMPARE(content->count(), frames);
    int different = 0;
    for (int i = 0; i < frames * 100; ++i) {
        quint32 expected = 0;
        memcpy(&expected, bytes.constData() + 4 * i, 4);
        different += pixelAt(*content, i / 100, i % 10, i % 100 / 10) != double(expected) ? 1 : 0;
    }
    QCOMPARE(different, 0);
}

void tst_OvPixelReader::bitMasksAreUnpacked_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("little endian") << "liver_1frame";
    QTest::newRow("big endian") << "liver_expb_1frame";
}

void tst_OvPixelReader::bitMasksAreUnpacked()
{
    SKIP_WITHOUT_PYDICOM();
    QFETCH(QString, file);
    QFile plain(pydicomFiles + "liver_1frame.dcm");
    QVERIFY(plain.open(QIODevice::ReadOnly));
    const QByteArray all = plain.readAll();
    // The pixels are the element of that length.
    const auto place = all.indexOf(QByteArray("\xe0\x7f\x10\x00OB\x00\x00\x00\x80\x00\x00", 12));
    const auto words = all.indexOf(QByteArray("\xe0\x7f\x10\x00OW\x00\x00\x00\x80\x00\x00", 12));
    const QByteArray bits = all.mid(std::max(place, words) + 12, 512 * 512 / 8);
    QCOMPARE(bits.size(), 512 * 512 / 8);
    const auto content = loaded(pydicomFiles + file + ".dcm");
    int different = 0;
    int set = 0;
    for (int i = 0; i < 512 * 512; ++i) {
        const int expected = bits[i / 8] >> (i % 8) & 1;
        set += expected;
        different += pixelAt(*content, 0, i % 512, i / 512) != expected ? 1 : 0;
    }
    QVERIFY(set > 1000);
    QCOMPARE(different, 0);
}

void tst_OvPixelReader::otherFilesAreReadOrToldAbout_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* inFile, const char* inText) {
        QTest::newRow(inFile) << inFile << inText;
    };
    row("CT_small", "");
    row("693_J2KI", "");
    row("J2K_pixelrep_mismatch", "");
    row("JPEG-lossy", "");
    row("JPEG2000", "");
    row("GDCMJ2K_TextGBR", "");
    row("ExplVR_BigEnd", "");
    row("SC_rgb_small_odd", "");
    row("SC_rgb_small_odd_jpeg", "");
    row("image_dfl", "");
    row("badVR", "The number of frames makes no sense: only the first is shown");
    row("JPEG2000-embedded-sequence-delimiter", "its pixels cannot be decoded (damaged)");
    row("MR_truncated", "The file is damaged: ends inside element (7FE0,0010)");
    row("SC_rgb_jpeg", "The file is damaged: I/O suspension or premature end of stream");
    row("rtplan", "The file has no image (RTPLAN)");
    row("test-SR", "The file has no image (SR)");
    row("waveform_ecg", "The file has no image (ECG)");
    row("README", "The file is not a DICOM file");
    row("no_such_file", "The file cannot be read: No such file or directory");
}

void tst_OvPixelReader::otherFilesAreReadOrToldAbout()
{
    SKIP_WITHOUT_PYDICOM();
    QFETCH(QString, file);
    const auto content = loaded(pydicomFiles + file + (file == "README" ? ".txt" : ".dcm"));
    QTEST(content->error() + content->problem(0) + content->notices().join("; "), "text");
    QVERIFY(content->isLoaded());
}

void tst_OvPixelReader::storedBitsAreTakenOut_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("highBit");
    QTest::addColumn<bool>("isSigned");
    QTest::addColumn<int>("cell");
    QTest::addColumn<double>("pixel");
    const auto row = [](int inStored, int inHighBit, bool inSigned, int inCell, double inPixel) {
        QTest::addRow("%d bits below %d, %s, %x", inStored, inHighBit, inSigned ? "signed" : "unsigned",
                      inCell)
            << inStored << inHighBit << inSigned << inCell << inPixel;
    };
    row(16, 15, false, 0xFFFF, 65535);
    row(16, 15, true, 0xFFFF, -1);
    row(16, 15, true, 0x8000, -32768);
    row(12, 11, false, 0xFFFF, 4095); // What lies above belongs to an overlay.
    row(12, 11, false, 0xF123, 0x123);
    row(12, 11, true, 0x0800, -2048);
    row(12, 11, true, 0xF7FF, 2047);
    row(12, 15, false, 0xABCD, 0xABC);
    row(12, 15, true, 0x8000, -2048);
    row(10, 13, false, 0xFFFF, 1023);
    row(8, 7, false, 0xFF80, 128);
    row(8, 7, true, 0xFF80, -128);
    row(1, 0, false, 0xFFFF, 1);
    row(1, 0, true, 0x0001, -1);
    row(1, 15, false, 0x8000, 1);
}

void tst_OvPixelReader::storedBitsAreTakenOut()
{
    QFETCH(int, stored);
    QFETCH(int, highBit);
    QFETCH(bool, isSigned);
    QFETCH(int, cell);
    const QString path = saved([&](DcmDataset& ioSet) {
        ioSet.putAndInsertUint16(DCM_BitsStored, Uint16(stored));
        ioSet.putAndInsertUint16(DCM_HighBit, Uint16(highBit));
        ioSet.putAndInsertUint16(DCM_PixelRepresentation, isSigned ? 1 : 0);
        DicomSeriesMaker::putPixels(ioSet, 4, 3, [&](int c, int) { return c == 2 ? cell : 0; });
    });
    const auto content = loaded(path);
    QCOMPARE(content->problem(0), QString());
    QTEST(pixelAt(*content, 0, 2, 1), "pixel");
    QCOMPARE(pixelAt(*content, 0, 1, 1), 0.0);
}

void tst_OvPixelReader::framesOfPackedBitsBeginWithinBytes()
{
    constexpr int count = 3 * 12;
    std::vector<Uint8> bytes((count + 7) / 8);
    const auto bitAt = [](int i) { return i * i % 7 % 2; };
    for (int i = 0; i < count; ++i)
        bytes[size_t(i / 8)] = Uint8(bytes[size_t(i / 8)] | bitAt(i) << (i % 8));
    bytes.resize(6);
    const QString path = saved([&](DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_NumberOfFrames, "3");
        ioSet.putAndInsertUint16(DCM_BitsAllocated, 1);
        ioSet.putAndInsertUint16(DCM_BitsStored, 1);
        ioSet.putAndInsertUint16(DCM_HighBit, 0);
        ioSet.putAndInsertUint8Array(DCM_PixelData, bytes.data(), bytes.size());
    });
    const auto content = loaded(path);
    QCOMPARE(content->count(), 3);
    for (int i = 0; i < count; ++i)
        QCOMPARE(int(pixelAt(*content, i / 12, i % 4, i % 12 / 4)), bitAt(i));
}

void tst_OvPixelReader::bigEndianWordsAreTurned_data()
{
    QTest::addColumn<int>("bits");
    QTest::newRow("8") << 8;
    QTest::newRow("16") << 16;
    QTest::newRow("32") << 32;
}

void tst_OvPixelReader::bigEndianWordsAreTurned()
{
    QFETCH(int, bits);
    const auto value = [&](int i) { return bits == 8 ? 10 + i : bits == 16 ? 1000 + i : 0x12340000 + i; };
    const QString path = saved(
        [&](DcmDataset& ioSet) {
            ioSet.putAndInsertUint16(DCM_BitsAllocated, Uint16(bits));
            ioSet.putAndInsertUint16(DCM_BitsStored, Uint16(bits));
            ioSet.putAndInsertUint16(DCM_HighBit, Uint16(bits - 1));
            std::vector<unsigned char> bytes;
            for (int i = 0; i < 12; ++i) {
                // As a big-endian machine would write it, word by word.
                for (int shift = bits - 8; shift >= 0; shift -= 8)
                    bytes.push_back(static_cast<unsigned char>(value(i) >> shift));
            }
            std::vector<Uint16> words;
            for (size_t i = 0; i < bytes.size(); i += 2)
                words.push_back(
                    Uint16(bits == 8 ? bytes[i] | bytes[i + 1] << 8 : bytes[i] << 8 | bytes[i + 1]));
            ioSet.putAndInsertUint16Array(DCM_PixelData, words.data(), words.size());
        },
        EXS_BigEndianExplicit);
    const auto content = loaded(path);
    QCOMPARE(content->problem(0), QString());
    for (int i = 0; i < 12; ++i)
        QCOMPARE(pixelAt(*content, 0, i % 4, i / 4), double(value(i)));
}

void tst_OvPixelReader::floatsAreRead_data()
{
    QTest::addColumn<bool>("isDouble");
    QTest::newRow("floats") << false;
    QTest::newRow("doubles") << true;
}

void tst_OvPixelReader::floatsAreRead()
{
    QFETCH(bool, isDouble);
    const QString path = saved([&](DcmDataset& ioSet) {
        for (const DcmTagKey& key : {DCM_BitsStored, DCM_HighBit, DCM_PixelRepresentation, DCM_PixelData})
            ioSet.findAndDeleteElement(key);
        DicomSeriesMaker::put(ioSet, DCM_NumberOfFrames, "2");
        ioSet.putAndInsertUint16(DCM_BitsAllocated, isDouble ? 64 : 32);
        std::vector<Float32> floats(24);
        std::vector<Float64> doubles(24);
        for (size_t i = 0; i < 24; ++i)
            doubles[i] = floats[i] = float(i) / 4 - 2;
        floats[5] = float(doubles[5] = std::nan(""));
        if (isDouble)
            ioSet.putAndInsertFloat64Array(DCM_DoubleFloatPixelData, doubles.data(), doubles.size());
        else
            ioSet.putAndInsertFloat32Array(DCM_FloatPixelData, floats.data(), floats.size());
    });
    const auto content = loaded(path);
    QCOMPARE(content->problem(0), QString());
    QCOMPARE(content->count(), 2);
    QCOMPARE(pixelAt(*content, 0, 3, 0), -1.25);
    QCOMPARE(pixelAt(*content, 1, 3, 2), 3.75);
    QVERIFY(std::isnan(pixelAt(*content, 0, 1, 1)));
    QCOMPARE(*content->range(), (std::pair<double, double>(-2, 3.75)));
}

void tst_OvPixelReader::paddingIsLeftOutOfTheRange()
{
    const QString path = saved([](DcmDataset& ioSet) {
        ioSet.putAndInsertUint16(DCM_PixelRepresentation, 1);
        ioSet.insert(new DcmSignedShort(DcmTag(DCM_PixelPaddingValue, EVR_SS)));
        ioSet.putAndInsertSint16(DcmTag(DCM_PixelPaddingValue, EVR_SS), -2000);
        DicomSeriesMaker::put(ioSet, DCM_RescaleSlope, "-2");
        DicomSeriesMaker::put(ioSet, DCM_RescaleIntercept, "1");
        DicomSeriesMaker::putPixels(ioSet, 4, 3, [](int c, int r) { return c == 0 ? -2000 : 10 * r + c; });
    });
    const auto content = loaded(path);
    QCOMPARE(pixelAt(*content, 0, 0, 0), -2000.0);
    QCOMPARE(*content->range(), (std::pair<double, double>(-45, -1)));
}

void tst_OvPixelReader::modalityLutIsApplied_data()
{
    QTest::addColumn<bool>("asWords");
    QTest::newRow("numbers") << false;
    QTest::newRow("words") << true;
}

void putModalityLut(DcmDataset& ioSet, const std::vector<Uint16>& inDescriptor,
                    const std::vector<Uint16>& inData, bool inAsWords)
{
    DcmItem* item = nullptr;
    ioSet.findOrCreateSequenceItem(DCM_ModalityLUTSequence, item, 0);
    item->putAndInsertUint16Array(DcmTag(DCM_LUTDescriptor, EVR_US), inDescriptor.data(),
                                  inDescriptor.size());
    const DcmTag data(DCM_LUTData, inAsWords ? EVR_OW : EVR_US);
    item->putAndInsertUint16Array(data, inData.data(), inData.size());
}

void tst_OvPixelReader::modalityLutIsApplied()
{
    QFETCH(bool, asWords);
    const QString path = saved([&](DcmDataset& ioSet) {
        putModalityLut(ioSet, {4, 10, 16}, {100, 200, 300, 60000}, asWords);
        DicomSeriesMaker::put(ioSet, DCM_RescaleSlope, "2");
        DicomSeriesMaker::putPixels(ioSet, 4, 3, [](int c, int r) { return 8 + 4 * r + c; });
    });
    const auto content = loaded(path);
    QCOMPARE(content->notices(), QStringList());
    const double expected[] = {100, 100, 100, 200, 300, 60000, 60000, 60000, 60000, 60000, 60000, 60000};
    for (int i = 0; i < 12; ++i)
        QCOMPARE(pixelAt(*content, 0, i % 4, i / 4), expected[i]);
    QCOMPARE(content->image(0).toValue(100), 100.0);
    QCOMPARE(*content->range(), (std::pair<double, double>(100, 60000)));
}

void tst_OvPixelReader::malformedModalityLutIsTold_data()
{
    QTest::addColumn<int>("declared");
    QTest::addColumn<int>("numbers");
    QTest::newRow("too short") << 5 << 3;
    QTest::newRow("two numbers") << 4 << 2;
    QTest::newRow("65536 entries") << 0 << 3;
}

void tst_OvPixelReader::malformedModalityLutIsTold()
{
    QFETCH(int, declared);
    QFETCH(int, numbers);
    const QString path = saved([&](DcmDataset& ioSet) {
        std::vector<Uint16> descriptor{Uint16(declared), 0, 16};
        descriptor.resize(size_t(numbers));
        putModalityLut(ioSet, descriptor, {1, 2, 3, 4}, false);
    });
    const auto content = loaded(path);
    QCOMPARE(content->notices(), QStringList("The look-up table of the values is malformed and not used"));
    QCOMPARE(pixelAt(*content, 0, 3, 2), 23.0);
}

void tst_OvPixelReader::palettesAreApplied()
{
    const QString path = saved([](DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_PhotometricInterpretation, "PALETTE COLOR");
        ioSet.putAndInsertUint16(DCM_BitsAllocated, 8);
        ioSet.putAndInsertUint16(DCM_BitsStored, 8);
        ioSet.putAndInsertUint16(DCM_HighBit, 7);
        const DcmTagKey descriptors[] = {DCM_RedPaletteColorLookupTableDescriptor,
                                         DCM_GreenPaletteColorLookupTableDescriptor,
                                         DCM_BluePaletteColorLookupTableDescriptor};
        const DcmTagKey tables[] = {DCM_RedPaletteColorLookupTableData, DCM_GreenPaletteColorLookupTableData,
                                    DCM_BluePaletteColorLookupTableData};
        for (int i = 0; i < 3; ++i) {
            const Uint16 descriptor[] = {12, 0, 16};
            ioSet.putAndInsertUint16Array(DcmTag(descriptors[i], EVR_US), descriptor, 3);
            std::vector<Uint16> table;
            for (int entry = 0; entry < 12; ++entry)
                table.push_back(Uint16((20 * entry + i) << 8));
            ioSet.putAndInsertUint16Array(DcmTag(tables[i], EVR_OW), table.data(), table.size());
        }
        std::vector<Uint8> pixels;
        for (int i = 0; i < 12; ++i)
            pixels.push_back(Uint8(11 - i));
        ioSet.putAndInsertUint8Array(DCM_PixelData, pixels.data(), pixels.size());
    });
    const auto content = loaded(path);
    QCOMPARE(content->problem(0), QString());
    for (int i = 0; i < 12; ++i) {
        const int level = 20 * (11 - i);
        const QString expected = QString("%1,%2,%3").arg(level).arg(level + 1).arg(level + 2);
        QVERIFY2(isNearColour(rgbAt(*content, 0, i % 4, i / 4), expected, 1),
                 qPrintable(rgbAt(*content, 0, i % 4, i / 4) + " is not " + expected));
    }
}

void tst_OvPixelReader::rleFramesAreRead()
{
    DcmRLEEncoderRegistration::registerCodecs();
    DicomSeriesMaker maker;
    DcmFileFormat file;
    maker.fill(0, *file.getDataset());
    DicomSeriesMaker::put(*file.getDataset(), DCM_NumberOfFrames, "70");
    DicomSeriesMaker::putPixels(*file.getDataset(), 4, 3 * 70, [](int c, int r) { return 300 * r + c; });
    QVERIFY(file.getDataset()->chooseRepresentation(EXS_RLELossless, nullptr).good());
    const auto content =
        loaded(DicomSeriesMaker::saveFile(file, mFolder.filePath("frames.dcm"), EXS_RLELossless));
    DcmRLEEncoderRegistration::cleanup();
    QCOMPARE(content->count(), 70);
    for (int i = 0; i < 70; ++i) {
        QCOMPARE(content->problem(i), QString());
        QCOMPARE(content->image(i).frame, i);
        QCOMPARE(pixelAt(*content, i, 3, 2), double(300 * (3 * i + 2) + 3));
    }
}

/// Bytes decoded where words are expected must not pass for words.
void tst_OvPixelReader::eightBitJpegInWordsIsRead()
{
    SKIP_WITHOUT_PYDICOM();
    DJEncoderRegistration::registerCodecs();
    DcmFileFormat file;
    DicomSeriesMaker maker;
    maker.columns = 16;
    maker.rows = 16;
    maker.fill(0, *file.getDataset());
    DcmDataset& set = *file.getDataset();
    set.putAndInsertUint16(DCM_BitsAllocated, 8);
    set.putAndInsertUint16(DCM_BitsStored, 8);
    set.putAndInsertUint16(DCM_HighBit, 7);
    std::vector<Uint8> pixels(256);
    for (size_t i = 0; i < 256; ++i)
        pixels[i] = Uint8(i);
    set.putAndInsertUint8Array(DCM_PixelData, pixels.data(), pixels.size());
    const DJ_RPLossless lossless;
    QVERIFY(set.chooseRepresentation(EXS_JPEGProcess14SV1, &lossless).good());
    set.removeAllButCurrentRepresentations();
    const QString path = mFolder.filePath("bytes.dcm");
    DicomSeriesMaker::saveFile(file, path, EXS_JPEGProcess14SV1);
    DJEncoderRegistration::cleanup();
    QCOMPARE(pixelAt(*loaded(path), 0, 3, 2), 35.0);

    set.putAndInsertUint16(DCM_BitsAllocated, 16);
    set.putAndInsertUint16(DCM_BitsStored, 12);
    set.putAndInsertUint16(DCM_HighBit, 11);
    DicomSeriesMaker::saveFile(file, path, EXS_JPEGProcess14SV1);
    const auto content = loaded(path);
    const bool right = pixelAt(*content, 0, 3, 2) == 35 && pixelAt(*content, 0, 15, 15) == 255;
    QVERIFY2(right || !content->problem(0).isEmpty(),
             qPrintable(QString::number(pixelAt(*content, 0, 3, 2))));
}

void tst_OvPixelReader::truncatedLastFrameIsTold()
{
    const QString path = saved([](DcmDataset& ioSet) {
        DicomSeriesMaker::put(ioSet, DCM_NumberOfFrames, "3");
        DicomSeriesMaker::putPixels(ioSet, 4, 8, [](int c, int r) { return 10 * r + c; });
    });
    LogCapture log;
    const auto content = loaded(path);
    QCOMPARE(content->count(), 3);
    QCOMPARE(pixelAt(*content, 1, 3, 2), 53.0);
    QVERIFY(!content->pixels(2));
    QCOMPARE(content->problem(2), "it ends in the midst of its pixels");
    QVERIFY(content->isLoaded());
    QCOMPARE(log.take(), QStringList("2|Volume|" + path + ": it ends in the midst of its pixels"));
}

void tst_OvPixelReader::shortPixelsAreTold()
{
    const QString path = saved([](DcmDataset& ioSet) { ioSet.putAndInsertUint16(DCM_Rows, 60000); });
    const auto content = loaded(path);
    QCOMPARE(content->problem(0), "it ends in the midst of its pixels");
}

void tst_OvPixelReader::missingPixelsAreTold()
{
    const auto content = loaded(saved([](DcmDataset& ioSet) { ioSet.findAndDeleteElement(DCM_PixelData); }));
    QCOMPARE(content->count(), 1);
    QCOMPARE(content->problem(0), "it has no pixels");
}

void tst_OvPixelReader::fileThatVanishedIsTold()
{
    const QString path = saved([](DcmDataset&) {});
    const auto content = OvVolumeContent::read({path});
    QVERIFY(QFile::remove(path));
    QVERIFY(content->loadPixels());
    QCOMPARE(content->problem(0), "its file cannot be read (No such file or directory)");
}

void tst_OvPixelReader::garbageInEncapsulatedPixelsIsTold_data()
{
    QTest::addColumn<int>("syntax");
    QTest::addColumn<int>("bytes");
    const std::pair<const char*, E_TransferSyntax> syntaxes[] = {
        {"baseline JPEG", EXS_JPEGProcess1},
        {"extended JPEG", EXS_JPEGProcess2_4},
        {"lossless JPEG", EXS_JPEGProcess14},
        {"JPEG first order", EXS_JPEGProcess14SV1},
        {"JPEG-LS", EXS_JPEGLSLossless},
        {"JPEG-LS lossy", EXS_JPEGLSLossy},
        {"JPEG 2000", EXS_JPEG2000LosslessOnly},
        {"JPEG 2000 lossy", EXS_JPEG2000},
        {"RLE", EXS_RLELossless},
    };
    for (const auto& [name, syntax] : syntaxes) {
        for (const int bytes : {0, 2, 64, 5000})
            QTest::addRow("%s, %d bytes", name, bytes) << int(syntax) << bytes;
    }
}

void tst_OvPixelReader::garbageInEncapsulatedPixelsIsTold()
{
    QFETCH(int, syntax);
    QFETCH(int, bytes);
    std::vector<unsigned char> garbage;
    for (int i = 0; i < bytes; ++i)
        garbage.push_back(static_cast<unsigned char>(i * 37 + 11));
    const auto content = loaded(savedEncapsulated({garbage}, E_TransferSyntax(syntax)));
    QVERIFY(content->isLoaded());
    QVERIFY2(!(content->error() + content->problem(0)).isEmpty(), "passed for an image");
}

void tst_OvPixelReader::unknownCompressionIsTold()
{
    const auto content = loaded(savedEncapsulated({{1, 2, 3, 4}}, EXS_MPEG2MainProfileAtMainLevel));
    QVERIFY2(content->problem(0).startsWith("its pixels cannot be decoded (MPEG2 Main Profile @ Main Level"),
             qPrintable(content->problem(0)));
}

void tst_OvPixelReader::jpeg2000OfAnotherSizeIsTold()
{
    SKIP_WITHOUT_PYDICOM();
    DcmFileFormat file;
    QVERIFY(file.loadFile(QFile::encodeName(pydicomFiles + "MR_small_jp2klossless.dcm").constData()).good());
    for (const auto& [rows, columns] : {std::pair(64, 63), std::pair(65535, 65535), std::pair(1, 1)}) {
        file.getDataset()->putAndInsertUint16(DCM_Rows, Uint16(rows));
        file.getDataset()->putAndInsertUint16(DCM_Columns, Uint16(columns));
        const QString path = mFolder.filePath("other.dcm");
        DicomSeriesMaker::saveFile(file, path, EXS_JPEG2000LosslessOnly);
        const auto content = OvVolumeContent::read({path}, std::uint64_t(1) << 40);
        content->loadPixels();
        QCOMPARE(content->problem(0), "its pixels describe another image than its header");
    }
}

KY_TEST_MAIN(tst_OvPixelReader)
#include "tst_OvPixelReader.moc"

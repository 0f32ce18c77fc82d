#include "DicomFileMaker.h"

#include <support/KyTest.h>

#include <ovwebservice/DicomDictionary.h>
#include <ovwebservice/DicomValue.h>

#include <QTimeZone>

#include <cmath>
#include <limits>
#include <memory>

using Ovg::dicomValue;

namespace {

/// A private element of the VR, with DCMTK's own reading of \a inText.
std::unique_ptr<DcmElement> element(const char* inVr, const QByteArray& inText)
{
    DcmElement* made = nullptr;
    DcmItem::newDicomElementWithVR(made, DcmTag(0x0009, 0x1001, DcmVR(inVr)));
    std::unique_ptr<DcmElement> owner(made);
    owner->putString(inText.constData(), static_cast<Uint32>(inText.size()));
    return owner;
}

QVariantList list(std::initializer_list<QVariant> inValues)
{
    return QVariantList(inValues);
}

} // namespace

class TestDicomValue final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Ovg::DicomDictionary::instance(); }

    void valuesComeByTheirVr_data()
    {
        QTest::addColumn<QByteArray>("vr");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QVariant>("expected");
        const auto row = [](const char* vr, const char* text, const QVariant& expected) {
            QTest::newRow(qPrintable(QLatin1String(vr) + QLatin1Char(' ') + QLatin1String(text)))
                << QByteArray(vr) << QByteArray(text) << expected;
        };
        row("DA", "20240229", QDate(2024, 2, 29));
        row("DA", "20240229 ", QDate(2024, 2, 29));
        row("DA", "20240229\\20240301",
            list({QDateTime({2024, 2, 29}, {0, 0}), QDateTime({2024, 3, 1}, {0, 0})}));
        row("TM", "084512.375", QTime(8, 45, 12, 375));
        row("TM", "0845", QTime(8, 45));
        row("TM", "08\\084512.375", list({"08:00:00.000", "08:45:12.375"}));
        row("DT", "20240311084512.375-0500", QDateTime({2024, 3, 11}, {8, 45, 12, 375}, QTimeZone(-18000)));
        row("DT", "20240311", QDateTime({2024, 3, 11}, {0, 0}));
        row("IS", "42", 42);
        row("IS", "+42", 42);
        row("IS", " -2147483648 ", std::numeric_limits<int>::min());
        row("IS", "2147483648", qlonglong(2147483648));
        row("IS", "1\\-2\\3", list({1, -2, 3}));
        row("DS", "2.5", 2.5);
        row("DS", "-1.5E-3", -0.0015);
        row("DS", "7", 7.0);
        row("DS", "0.5\\0.25", list({0.5, 0.25}));
        row("US", "65535", 65535);
        row("US", "1\\2", list({1, 2}));
        row("SS", "-32768", -32768);
        row("UL", "2147483647", 2147483647);
        row("UL", "4294967295", qlonglong(4294967295));
        row("SL", "-2147483648", std::numeric_limits<int>::min());
        row("UV", "5", 5);
        row("UV", "9223372036854775807", std::numeric_limits<qlonglong>::max());
        row("UV", "18446744073709551615", 18446744073709551615.0);
        row("SV", "-9223372036854775808", std::numeric_limits<qlonglong>::min());
        row("SV", "-5", -5);
        row("FL", "0.5", 0.5);
        row("FD", "0.1", 0.1);
        row("FD", "1\\0.25", list({1.0, 0.25}));
        row("AT", "(0010,0010)", "(0010,0010)");
        row("AT", "(7fe0,0010)\\(0008,0018)", list({"(7FE0,0010)", "(0008,0018)"}));
        row("AE", " STORE ", "STORE");
        row("AS", "065Y", "065Y");
        row("CS", "ORIGINAL\\PRIMARY\\AXIAL", list({"ORIGINAL", "PRIMARY", "AXIAL"}));
        row("UI", "1.2.840.10008.1.2", "1.2.840.10008.1.2");
        row("UI", "1.2\\1.3", list({"1.2", "1.3"}));
        row("PN", "M\xc3\xbcller^\xc3\x84nne", "Müller^Änne");
        row("PN", " Doe^Jane \\Roe^Jim", list({"Doe^Jane", "Roe^Jim"}));
        row("LO", " a b ", "a b");
        row("LO", "a\\\\b", list({"a", "", "b"}));
        row("SH", "x", "x");
        row("UC", " a\\b ", list({" a", "b"}));
        row("LT", "  indented\\still one ", "  indented\\still one");
        row("ST", "a\\b", "a\\b");
        row("UT", "a\\b", "a\\b");
        row("UR", "http://x/a\\b ", "http://x/a\\b");
    }
    void valuesComeByTheirVr()
    {
        QFETCH(QByteArray, vr);
        QFETCH(QByteArray, text);
        QFETCH(QVariant, expected);
        QStringList problems;
        const QVariant value =
            dicomValue(*element(vr, text), {.characterSet = "ISO_IR 192", .problems = &problems});
        QCOMPARE(value, expected);
        QCOMPARE(value.typeName(), expected.typeName());
        QCOMPARE(problems, QStringList());
    }

    void aValueThatItsVrForbidsIsItsText_data()
    {
        QTest::addColumn<QByteArray>("vr");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QVariant>("expected");
        QTest::addColumn<QStringList>("problems");
        const auto row = [](const char* vr, const char* text, const QVariant& expected,
                            const QStringList& problems) {
            QTest::newRow(qPrintable(QLatin1String(vr) + QLatin1Char(' ') + QLatin1String(text)))
                << QByteArray(vr) << QByteArray(text) << expected << problems;
        };
        row("DA", "19991332", "19991332", {"(0009,1001): \"19991332\" is no DA"});
        row("DA", "20240101-", "20240101-", {"(0009,1001): \"20240101-\" is no DA"});
        row("TM", "2561", "2561", {"(0009,1001): \"2561\" is no TM"});
        row("DT", "soon", "soon", {"(0009,1001): \"soon\" is no DT"});
        row("IS", "1.5", "1.5", {"(0009,1001): \"1.5\" is no IS"});
        row("IS", "99999999999999999999", "99999999999999999999",
            {"(0009,1001): \"99999999999999999999\" is no IS"});
        row("DS", "1,5", "1,5", {"(0009,1001): \"1,5\" is no DS"});
        row("DS", "nan", "nan", {"(0009,1001): \"nan\" is no DS"});
        row("DS", "1\\x\\3", list({1.0, "x", 3.0}), {"(0009,1001): \"x\" is no DS"});
        row("LO", "M\xfcller", "Müller",
            {"(0009,1001): text doesn't fit the character set \"ISO_IR 192\" and is read as Latin-1"});
    }
    void aValueThatItsVrForbidsIsItsText()
    {
        QFETCH(QByteArray, vr);
        QFETCH(QByteArray, text);
        QFETCH(QVariant, expected);
        QStringList problems;
        QCOMPARE(dicomValue(*element(vr, text), {.characterSet = "ISO_IR 192", .problems = &problems}),
                 expected);
        QTEST(problems, "problems");
        QCOMPARE(dicomValue(*element(vr, text), {.characterSet = "ISO_IR 192"}), expected);
    }

    void presentButEmptyIsAnEmptyValue_data()
    {
        QTest::addColumn<QByteArray>("vr");
        for (const char* vr : {"AE", "AS", "AT", "CS", "DA", "DS", "DT", "FD", "FL", "IS", "LO", "LT", "PN",
                               "SH", "SL", "SS", "ST", "SV", "TM", "UC", "UI", "UL", "UR", "US", "UT", "UV"})
            QTest::newRow(vr) << QByteArray(vr);
    }
    void presentButEmptyIsAnEmptyValue()
    {
        QFETCH(QByteArray, vr);
        QStringList problems;
        const QVariant value = dicomValue(*element(vr, ""), {.problems = &problems});
        QCOMPARE(value.typeId(), int(QMetaType::QString));
        QCOMPARE(value.toString(), QString());
        QVERIFY(!value.toString().isNull());
        QCOMPARE(problems, QStringList());
    }

    void bytesComeAsTheyStandInLittleEndian()
    {
        DcmOtherByteOtherWord bytes(DcmTag(0x0009, 0x1001, DcmVR(EVR_OB)));
        const Uint8 three[] = {1, 2, 0};
        bytes.putUint8Array(three, 3);
        QCOMPARE(dicomValue(bytes, {}), QByteArray("\1\2\0\0", 4)); // padded to an even length
        DcmOtherByteOtherWord words(DcmTag(0x0009, 0x1001, DcmVR(EVR_OW)));
        const Uint16 two[] = {0x0102, 0x0304};
        words.putUint16Array(two, 2);
        QCOMPARE(dicomValue(words, {}), QByteArray("\2\1\4\3", 4));
        DcmOtherFloat floats(DcmTag(0x0009, 0x1001, DcmVR(EVR_OF)));
        const Float32 one[] = {1.0F};
        floats.putFloat32Array(one, 1);
        QCOMPARE(dicomValue(floats, {}), QByteArray("\0\0\x80\x3f", 4));
    }

    void emptyBytesAreNotNull()
    {
        DcmOtherByteOtherWord empty(DcmTag(0x0009, 0x1001, DcmVR(EVR_UN)));
        const QVariant value = dicomValue(empty, {});
        QCOMPARE(value.typeId(), int(QMetaType::QByteArray));
        QVERIFY(value.toByteArray().isEmpty());
        QVERIFY(!value.toByteArray().isNull());
    }

    void aSequenceIsTheNumberOfItsItems()
    {
        DcmSequenceOfItems sequence(DCM_RequestAttributesSequence);
        QCOMPARE(dicomValue(sequence, {}), QVariant(0));
        sequence.append(new DcmItem);
        sequence.append(new DcmItem);
        QCOMPARE(dicomValue(sequence, {}), QVariant(2));
    }

    void theDataSetsOffsetHoldsForInstantsWithoutOne()
    {
        const QVariant value =
            dicomValue(*element("DT", "20240311084512"), {.utcOffset = QStringLiteral("+0200")});
        QCOMPARE(value.toDateTime().toUTC(), QDateTime({2024, 3, 11}, {6, 45, 12}, Qt::UTC));
    }

    void notANumberIsADouble()
    {
        DcmFloatingPointDouble number(DcmTag(0x0009, 0x1001, DcmVR(EVR_FD)));
        number.putFloat64(std::nan(""), 0);
        const QVariant value = dicomValue(number, {});
        QCOMPARE(value.typeId(), int(QMetaType::Double));
        QVERIFY(std::isnan(value.toDouble()));
    }
};

KY_TEST_MAIN(TestDicomValue)

#include "tst_DicomValue.moc"

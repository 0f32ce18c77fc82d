#include <support/KyTest.h>

#include <ovwebservice/DicomDictionary.h>

using Ovg::DicomDictionary;

class TestDicomDictionary final : public QObject
{
    Q_OBJECT

private slots:
    /// Before the first use: an environment that names no dictionary must not leave the client without one.
    void initTestCase() { qputenv("DCMDICTPATH", "/nonexistent/dicom.dic"); }

    void keywordsAreKnownWhateverTheEnvironment()
    {
        QCOMPARE(DicomDictionary::instance().tag("PatientName").value_or(0), quint32(0x00100010));
        QCOMPARE(DicomDictionary::instance().keyword(0x00100010), "PatientName");
    }

    void keywordsAreTheStandards_data()
    {
        QTest::addColumn<QString>("keyword");
        QTest::addColumn<quint32>("tag");
        QTest::newRow("current") << "SOPInstanceUID" << quint32(0x00080018);
        QTest::newRow("retired") << "StudyStatusID" << quint32(0x0032000A);
        QTest::newRow("before DICOM") << "RecognitionCode" << quint32(0x00080010);
        QTest::newRow("repeating group") << "OverlayRows" << quint32(0x60000010);
        QTest::newRow("meta information") << "MediaStorageSOPClassUID" << quint32(0x00020002);
    }
    void keywordsAreTheStandards()
    {
        QFETCH(QString, keyword);
        QFETCH(quint32, tag);
        QCOMPARE(DicomDictionary::instance().tag(keyword).value_or(0), tag);
        QCOMPARE(DicomDictionary::instance().keyword(tag), keyword);
    }

    void othersAreUnknown_data()
    {
        QTest::addColumn<QString>("keyword");
        for (const char* keyword :
             {"", "patientName", "RETIRED_StudyStatusID", "ACR_NEMA_RecognitionCode", "CRImageParamsCommon"})
            QTest::newRow(qPrintable(QLatin1Char('<') + QLatin1String(keyword) + QLatin1Char('>')))
                << keyword;
    }
    void othersAreUnknown()
    {
        QFETCH(QString, keyword);
        QVERIFY(!DicomDictionary::instance().tag(keyword).has_value());
    }

    void tagsWithoutAKeywordHaveNone()
    {
        QCOMPARE(DicomDictionary::instance().keyword(0x00109999), QString());
        QCOMPARE(DicomDictionary::instance().keyword(0x60020010), QString());
    }
};

KY_TEST_MAIN(TestDicomDictionary)

#include "tst_DicomDictionary.moc"

#include <support/KyTest.h>

#include <kybase/KyDICOMObjectInfo.h>

using TagKey = KyDICOMObjectInfo::TagKey;

class TestKyDICOMObjectInfo final : public QObject
{
    Q_OBJECT

private slots:
    void aNewKeyNamesNothing()
    {
        QVERIFY(!TagKey().isValid());
        QCOMPARE(TagKey().serialize(), QString());
    }

    void namesAreRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("canonical");
        const auto row = [](const char* name, const char* canonical) {
            QTest::newRow(name) << name << canonical;
        };
        row("DICOM.StudyInstanceUID", "DICOM.StudyInstanceUID");
        row("DICOM.(0010,0010)", "DICOM.PatientName");
        row("DICOM.(0029,\"ACME\",10)", "DICOM.(0029,\"ACME\",10)");
        row("DICOM.RequestAttributesSequence[0].ScheduledProcedureStepID",
            "DICOM.RequestAttributesSequence.ScheduledProcedureStepID");
        row("DICOM.StudyStatusID", "DICOM.StudyStatusID");
    }
    void namesAreRead()
    {
        QFETCH(QString, name);
        QFETCH(QString, canonical);
        TagKey key;
        bool ok = false;
        key.deserialize(name, &ok);
        QVERIFY(ok);
        QVERIFY(key.isValid());
        QCOMPARE(key.serialize(), canonical);
        TagKey again;
        again.deserialize(canonical, nullptr);
        QCOMPARE(again, key);
    }

    void otherNamesClearTheKey_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name :
             {"", "DICOM", "DICOM.", "StudyInstanceUID", "dicom.StudyInstanceUID", "Dicom.StudyInstanceUID",
              "DICOM.studyInstanceUID", "DICOM.NoSuchKeyword", "DICOM.DICOM.StudyInstanceUID",
              "worklist.Status", " DICOM.StudyInstanceUID", "DICOM.(0010,001)", "DICOM. StudyInstanceUID"})
            QTest::newRow(qPrintable(QLatin1Char('<') + QLatin1String(name) + QLatin1Char('>'))) << name;
    }
    void otherNamesClearTheKey()
    {
        QFETCH(QString, name);
        TagKey key;
        key.deserialize("DICOM.PatientID", nullptr);
        QVERIFY(key.isValid());
        bool ok = true;
        key.deserialize(name, &ok);
        QVERIFY(!ok);
        QCOMPARE(key, TagKey());
    }
};

KY_TEST_MAIN(TestKyDICOMObjectInfo)

#include "tst_KyDICOMObjectInfo.moc"

#include <support/KyTest.h>

#include <ovwebservice/DicomTagPath.h>

#include <thread>

using Ovg::DicomTagPath;

class TestDicomTagPath final : public QObject
{
    Q_OBJECT

private slots:
    void soundTextsAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("canonical");
        QTest::addColumn<int>("group");
        QTest::addColumn<int>("element");
        const auto row = [](const char* text, const char* canonical, int group, int element) {
            QTest::newRow(text) << text << canonical << group << element;
        };
        row("PatientName", "PatientName", 0x0010, 0x0010);
        row("StudyInstanceUID", "StudyInstanceUID", 0x0020, 0x000D);
        row("(0010,0010)", "PatientName", 0x0010, 0x0010);
        row("(7fe0,0010)", "PixelData", 0x7FE0, 0x0010);
        row("(7FE0,0010)", "PixelData", 0x7FE0, 0x0010);
        row("(0009,10ff)", "(0009,10FF)", 0x0009, 0x10FF);
        row("(0010,9999)", "(0010,9999)", 0x0010, 0x9999);
        row("StudyStatusID", "StudyStatusID", 0x0032, 0x000A);
        row("RecognitionCode", "RecognitionCode", 0x0008, 0x0010);
        row("OverlayData", "OverlayData", 0x6000, 0x3000);
        row("(6002,3000)", "(6002,3000)", 0x6002, 0x3000);
        row("TransferSyntaxUID", "TransferSyntaxUID", 0x0002, 0x0010);
        row("RequestAttributesSequence.ScheduledProcedureStepID",
            "RequestAttributesSequence.ScheduledProcedureStepID", 0x0040, 0x0009);
        row("RequestAttributesSequence[0].ScheduledProcedureStepID",
            "RequestAttributesSequence.ScheduledProcedureStepID", 0x0040, 0x0009);
        row("(0040,0275)[12].(0040,0009)", "RequestAttributesSequence[12].ScheduledProcedureStepID", 0x0040,
            0x0009);
        row("(0029,\"ACME\",10)", "(0029,\"ACME\",10)", 0x0029, 0x10);
        row("(0029,\"A.B [1],(x)\",0a)", "(0029,\"A.B [1],(x)\",0A)", 0x0029, 0x0A);
        row("(0029,\"say \"\"A\"\" %1\",ff)", "(0029,\"say \"\"A\"\" %1\",FF)", 0x0029, 0xFF);
        row("(0029,\"ACME\",10)[3].(0029,\"ACME\",11)", "(0029,\"ACME\",10)[3].(0029,\"ACME\",11)", 0x0029,
            0x11);
    }
    void soundTextsAreRead()
    {
        QFETCH(QString, text);
        QFETCH(QString, canonical);
        const DicomTagPath path = DicomTagPath::fromText(text);
        QVERIFY(path.isValid());
        QTEST(int(path.steps().back().group), "group");
        QTEST(int(path.steps().back().element), "element");
        QCOMPARE(path.toText(), canonical);
        QCOMPARE(DicomTagPath::fromText(canonical), path);
    }

    void malformedAndUnknownTextsAreInvalid_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text : {"",
                                 " ",
                                 ".",
                                 "NoSuchKeyword",
                                 "patientname",
                                 "PATIENTNAME",
                                 " PatientName",
                                 "PatientName ",
                                 "PatientName.",
                                 ".PatientName",
                                 "PatientName[0]",
                                 "Patient Name",
                                 "RETIRED_StudyStatusID",
                                 "PatientName\n",
                                 "0010,0010",
                                 "00100010",
                                 "(0010,0010",
                                 "(0010,010)",
                                 "(0010,00100)",
                                 "(0010, 0010)",
                                 "(001g,0010)",
                                 "(0010;0010)",
                                 "()",
                                 "(",
                                 "(0010,0010)x",
                                 "(0029,\"ACME\",1)",
                                 "(0029,\"ACME\",1010)",
                                 "(0029,\"ACME\",10",
                                 "(0029,\"ACME,10)",
                                 "(0029,\"\",10)",
                                 "(0029,ACME,10)",
                                 "(0028,\"ACME\",10)",
                                 "RequestAttributesSequence[].PatientID",
                                 "RequestAttributesSequence[-1].PatientID",
                                 "RequestAttributesSequence[+1].PatientID",
                                 "RequestAttributesSequence[1a].PatientID",
                                 "RequestAttributesSequence[99999999999].PatientID",
                                 "RequestAttributesSequence[0]PatientID",
                                 "RequestAttributesSequence[0].",
                                 "RequestAttributesSequence[0][1].PatientID",
                                 "RequestAttributesSequence..PatientID",
                                 "PatientN\xc3\xa4me",
                                 "(\xd9\xa0\xd9\xa0\xd9\xa1\xd9\xa0,0010)"})
            QTest::newRow(qPrintable(QLatin1Char('<') + QString::fromUtf8(text) + QLatin1Char('>'))) << text;
    }
    void malformedAndUnknownTextsAreInvalid()
    {
        QFETCH(QString, text);
        const DicomTagPath path = DicomTagPath::fromText(text);
        QVERIFY(!path.isValid());
        QCOMPARE(path.toText(), QString());
        QCOMPARE(path, DicomTagPath());
    }

    void stepsCarryItemsAndCreators()
    {
        const DicomTagPath path =
            DicomTagPath::fromText("(0029,\"ACME\",10)[3].RequestAttributesSequence.PatientID");
        QCOMPARE(path.steps().size(), size_t(3));
        QCOMPARE(path.steps()[0].creator, std::string("ACME"));
        QCOMPARE(path.steps()[0].item, 3);
        QCOMPARE(path.steps()[1].item, 0);
        QVERIFY(path.steps()[1].creator.empty());
    }

    void numbersMakeAPathToo()
    {
        QCOMPARE(DicomTagPath(0x0010, 0x0010), DicomTagPath::fromText("PatientName"));
        QVERIFY(DicomTagPath(0x0010, 0x0010) != DicomTagPath(0x0010, 0x0020));
    }

    /// The first use loads the dictionary; it may come on several threads at once.
    void theFirstUseMayBeOnAnyThread()
    {
        std::atomic<int> found{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back(
                [&found] { found += DicomTagPath::fromText("StudyDate").isValid() ? 1 : 0; });
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(found.load(), 8);
    }

    void tagsPrintAsTheStandardDoes()
    {
        QCOMPARE(Ovg::dicomTagText(0x7fe0, 0x0010), "(7FE0,0010)");
        QCOMPARE(Ovg::dicomTagText(0x0008, 0x0005), "(0008,0005)");
    }
};

KY_TEST_MAIN(TestDicomTagPath)

#include "tst_DicomTagPath.moc"

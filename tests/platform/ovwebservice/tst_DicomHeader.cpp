#include "DicomFileMaker.h"
#include "DicomNestingMaker.h"

#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <ovwebservice/DicomHeader.h>

#include <QTemporaryDir>

#include <thread>

using Ovg::DicomHeader;
using Ovg::DicomTagPath;
using Outcome = DicomHeader::Outcome;

namespace {

QVariant valueOf(const DicomHeader& inHeader, const QString& inPath, QStringList* outProblems = nullptr)
{
    return inHeader.value(DicomTagPath::fromText(inPath), outProblems);
}

DicomHeader headerOf(const QString& inPath)
{
    DicomHeader header;
    QString reason;
    if (DicomHeader::readFile(inPath, header, reason) != Outcome::Read)
        QTest::qFail(qPrintable(inPath + QLatin1String(": ") + reason), __FILE__, __LINE__);
    return header;
}

QByteArray contentOf(const QString& inPath)
{
    QFile file(inPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& inPath, const QByteArray& inContent)
{
    QFile file(inPath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(inContent), qint64(inContent.size()));
}

} // namespace

class TestDicomHeader final : public QObject
{
    Q_OBJECT

private slots:
    void nestingIsBounded_data()
    {
        QTest::addColumn<int>("syntax");
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("knownLengths");
        const auto rows = [](const char* name, int syntax, int mode) {
            QTest::addRow("%s", name) << syntax << mode << false;
            QTest::addRow("%s, known lengths", name) << syntax << mode << true;
        };
        rows("explicit", EXS_LittleEndianExplicit, EWM_fileformat);
        rows("implicit", EXS_LittleEndianImplicit, EWM_fileformat);
        rows("big endian", EXS_BigEndianExplicit, EWM_fileformat);
        rows("explicit, no preamble", EXS_LittleEndianExplicit, EWM_dataset);
        rows("implicit, no preamble", EXS_LittleEndianImplicit, EWM_dataset);
        rows("big endian, no preamble", EXS_BigEndianExplicit, EWM_dataset);
    }
    void nestingIsBounded()
    {
        QFETCH(int, syntax);
        QFETCH(int, mode);
        QFETCH(bool, knownLengths);
        const DicomNestingMaker nesting{.bigEndian = syntax == EXS_BigEndianExplicit,
                                        .implicit = syntax == EXS_LittleEndianImplicit,
                                        .knownLengths = knownLengths};
        const QString path =
            DicomFileMaker().save(mFolder.filePath(QStringLiteral("deep")), E_TransferSyntax(syntax),
                                  EET_ExplicitLength, E_FileWriteMode(mode));
        const QByteArray start = contentOf(path);
        DicomHeader header;
        QString reason;
        write(path, start + nesting.levels(64));
        QCOMPARE(DicomHeader::readFile(path, header, reason), Outcome::Read);
        QCOMPARE(valueOf(header, QStringLiteral("(0040,0275)")), QVariant(1));
        for (const int levels : {65, 20000}) {
            write(path, start + nesting.levels(levels));
            QCOMPARE(DicomHeader::readFile(path, header, reason), Outcome::Damaged);
            QCOMPARE(reason, "damaged: sequences are nested too deep, in more than 64 levels");
        }
        write(path, start + nesting.items(50000));
        QCOMPARE(DicomHeader::readFile(path, header, reason), Outcome::Read);
        QCOMPARE(valueOf(header, QStringLiteral("(0040,0275)")), QVariant(50000));
    }

    void nestingBehindThePixelsIsBounded()
    {
        const QString path = DicomFileMaker().putPixels(64).save(mFolder.filePath(QStringLiteral("behind")));
        QByteArray content = contentOf(path);
        for (const QByteArray& group : {QByteArray("\xe1\x7f", 2), QByteArray("\x40\0", 2)}) {
            QByteArray levels = DicomNestingMaker{.knownLengths = true}.levels(20000);
            write(path, content + levels.replace(0, 2, group));
            DicomHeader header;
            QString reason;
            QCOMPARE(DicomHeader::readFile(path, header, reason), Outcome::Damaged);
            QCOMPARE(reason, "damaged: sequences are nested too deep, in more than 64 levels");
        }
    }

    void nestingInADeflatedFileIsBounded()
    {
        for (const int levels : {64, 65}) {
            DicomFileMaker maker;
            DcmItem* item = &maker.dataset();
            for (int i = 0; i < levels; ++i)
                item->findOrCreateSequenceItem(DCM_RequestAttributesSequence, item);
            const QString path =
                maker.save(mFolder.filePath(QStringLiteral("deflated")), EXS_DeflatedLittleEndianExplicit);
            DicomHeader header;
            QString reason;
            QCOMPARE(DicomHeader::readFile(path, header, reason),
                     levels > 64 ? Outcome::Damaged : Outcome::Read);
            QCOMPARE(reason.contains("nested too deep"), levels > 64);
        }
    }

    /// Values are not looked into for their own sake: pixels full of marks are pixels.
    void marksInPixelsDoNotCount()
    {
        DicomFileMaker maker;
        std::vector<Uint16> pixels;
        for (int i = 0; i < 1000; ++i)
            pixels.insert(pixels.end(), {0xFFFE, 0xE000, 0xFFFF, 0xFFFF});
        maker.dataset().putAndInsertUint16Array(DCM_PixelData, pixels.data(), pixels.size());
        headerOf(maker.save(mFolder.filePath(QStringLiteral("marks"))));
    }

    void everyTransferSyntaxIsRead_data()
    {
        QTest::addColumn<int>("syntax");
        QTest::addColumn<int>("lengths");
        QTest::addColumn<int>("mode");
        const auto row = [](const char* name, int syntax, int lengths, int mode) {
            QTest::newRow(name) << syntax << lengths << mode;
        };
        row("explicit", EXS_LittleEndianExplicit, EET_UndefinedLength, EWM_fileformat);
        row("explicit lengths", EXS_LittleEndianExplicit, EET_ExplicitLength, EWM_fileformat);
        row("implicit", EXS_LittleEndianImplicit, EET_UndefinedLength, EWM_fileformat);
        row("big endian", EXS_BigEndianExplicit, EET_UndefinedLength, EWM_fileformat);
        row("deflated", EXS_DeflatedLittleEndianExplicit, EET_UndefinedLength, EWM_fileformat);
        row("explicit, no preamble", EXS_LittleEndianExplicit, EET_UndefinedLength, EWM_dataset);
        row("implicit, no preamble", EXS_LittleEndianImplicit, EET_UndefinedLength, EWM_dataset);
        row("big endian, no preamble", EXS_BigEndianExplicit, EET_UndefinedLength, EWM_dataset);
    }
    void everyTransferSyntaxIsRead()
    {
        QFETCH(int, syntax);
        QFETCH(int, lengths);
        QFETCH(int, mode);
        DicomFileMaker maker;
        maker.put(DCM_SpecificCharacterSet, "ISO_IR 192").put(DCM_PatientName, "Müller^Änne");
        maker.put(DCM_StudyTime, "084512.375").put(DCM_ImagePositionPatient, "1\\2.5\\-3").putPixels(64);
        maker.dataset().putAndInsertUint16(DCM_Rows, 512);
        DcmItem* item = nullptr;
        maker.dataset().findOrCreateSequenceItem(DCM_RequestAttributesSequence, item, 1);
        item->putAndInsertString(DCM_ScheduledProcedureStepID, "second");
        const DicomHeader header =
            headerOf(maker.save(mFolder.filePath(QStringLiteral("x")), E_TransferSyntax(syntax),
                                E_EncodingType(lengths), E_FileWriteMode(mode)));
        QCOMPARE(valueOf(header, "PatientName"), "Müller^Änne");
        QCOMPARE(valueOf(header, "StudyTime"), QTime(8, 45, 12, 375));
        QCOMPARE(valueOf(header, "ImagePositionPatient"), (QVariantList{1.0, 2.5, -3.0}));
        QCOMPARE(valueOf(header, "Rows"), 512);
        QCOMPARE(valueOf(header, "RequestAttributesSequence"), 2);
        QCOMPARE(valueOf(header, "RequestAttributesSequence[1].ScheduledProcedureStepID"), "second");
    }

    void whatIsNotThereIsInvalid_data()
    {
        QTest::addColumn<QString>("path");
        for (const char* path :
             {"PatientBirthDate", "(0010,9999)", "PixelData", "(7FE0,0010)", "RequestAttributesSequence",
              "RequestAttributesSequence.PatientID", "ReferencedStudySequence[1].ReferencedSOPInstanceUID",
              "PatientName.PatientID", "(0029,\"ACME\",10)", "ReferencedStudySequence.PatientName.PatientID",
              "SOPInstanceUID[0].PatientID"})
            QTest::newRow(path) << path;
    }
    void whatIsNotThereIsInvalid()
    {
        QFETCH(QString, path);
        DicomFileMaker maker;
        DcmItem* item = nullptr;
        maker.dataset().findOrCreateSequenceItem(DCM_ReferencedStudySequence, item);
        item->putAndInsertString(DCM_ReferencedSOPInstanceUID, "1.2");
        const DicomHeader header = headerOf(maker.putPixels(4).save(mFolder.filePath(QStringLiteral("x"))));
        QVERIFY(DicomTagPath::fromText(path).isValid());
        QVERIFY(!valueOf(header, path).isValid());
    }

    void anInvalidPathHasNoValue() { QVERIFY(!DicomHeader().value({}).isValid()); }

    void fileMetaInformationIsPartOfTheHeader()
    {
        const DicomHeader header = headerOf(DicomFileMaker().save(mFolder.filePath(QStringLiteral("x"))));
        QCOMPARE(valueOf(header, "TransferSyntaxUID"), "1.2.840.10008.1.2.1");
        QCOMPARE(valueOf(header, "MediaStorageSOPInstanceUID"), "1.2.3.1.1.1");
    }

    void theCreatorFindsThePrivateBlock()
    {
        DicomFileMaker maker;
        const DcmVR text(EVR_LO);
        maker.put(DcmTag(0x0029, 0x0010, text), "OTHER").put(DcmTag(0x0029, 0x1001, text), "of other");
        maker.put(DcmTag(0x0029, 0x0011, text), "ACME").put(DcmTag(0x0029, 0x1101, text), "of acme");
        maker.put(DcmTag(0x0029, 0x00FF, text), "ACME").put(DcmTag(0x0029, 0xFF02, text), "second block");
        const DicomHeader header = headerOf(maker.save(mFolder.filePath(QStringLiteral("x"))));
        QCOMPARE(valueOf(header, "(0029,\"OTHER\",01)"), "of other");
        QCOMPARE(valueOf(header, "(0029,\"ACME\",01)"), "of acme");
        QCOMPARE(valueOf(header, "(0029,\"ACME\",02)"), "second block");
        QCOMPARE(valueOf(header, "(0029,1101)"), "of acme");
        QVERIFY(!valueOf(header, "(0029,\"ACME\",03)").isValid());
        QVERIFY(!valueOf(header, "(0029,\"acme\",01)").isValid());
        QVERIFY(!valueOf(header, "(0031,\"ACME\",01)").isValid());
    }

    void privateElementsWithoutAVrAreBytes()
    {
        DicomFileMaker maker;
        maker.put(DcmTag(0x0029, 0x0010, DcmVR(EVR_LO)), "ACME");
        maker.put(DcmTag(0x0029, 0x1001, DcmVR(EVR_LO)), "four");
        const DicomHeader header =
            headerOf(maker.save(mFolder.filePath(QStringLiteral("x")), EXS_LittleEndianImplicit));
        QCOMPARE(valueOf(header, "(0029,\"ACME\",01)"), QByteArray("four"));
    }

    /// A gateway that does not know an element may hand it on as UN.
    void standardElementsThatLostTheirVrGetItBack()
    {
        DicomFileMaker maker;
        const QString path = maker.put(DCM_StudyDate, "20240311").save(mFolder.filePath(QStringLiteral("x")));
        QByteArray content = contentOf(path);
        const QByteArray lost("\x08\0\x20\0UN\0\0\x08\0\0\0"
                              "20240311",
                              20);
        content.replace(QByteArray("\x08\0\x20\0DA\x08\0"
                                   "20240311",
                                   16),
                        lost);
        QVERIFY(content.contains(lost));
        write(path, content);
        QCOMPARE(valueOf(headerOf(path), "StudyDate"), QDate(2024, 3, 11));
    }

    void longValuesAreReadToo()
    {
        DicomFileMaker maker;
        const std::string text(300 * 1024, 'x');
        maker.dataset().putAndInsertString(DCM_TextValue, text.c_str());
        const DicomHeader header = headerOf(maker.save(mFolder.filePath(QStringLiteral("x"))));
        QCOMPARE(valueOf(header, "TextValue").toString().size(), qsizetype(text.size()));
    }

    void aLongValueOfAFileThatWentIsAbsent()
    {
        DicomFileMaker maker;
        const std::string text(300 * 1024, 'x');
        maker.dataset().putAndInsertString(DCM_TextValue, text.c_str());
        const QString path = maker.save(mFolder.filePath(QStringLiteral("gone")));
        const DicomHeader header = headerOf(path);
        QVERIFY(QFile::remove(path));
        QVERIFY(!valueOf(header, "TextValue").isValid());
        QCOMPARE(valueOf(header, "PatientName"), "Doe^Jane");
    }

    void namesInEveryCharacterSet_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("name");
        const auto row = [](const char* file, const char* name) {
            QTest::newRow(file) << QString::fromUtf8(file) << QString::fromUtf8(name);
        };
        row("chrArab", "قباني^لنزار");
        row("chrFren", "Buc^Jérôme");
        row("chrFrenMulti", "Buc^Jérôme");
        row("chrGerm", "Äneas^Rüdiger");
        row("chrGreek", "Διονυσιος");
        row("chrH31", "Yamada^Tarou=山田^太郎=やまだ^たろう");
        row("chrH32", "ﾔﾏﾀﾞ^ﾀﾛｳ=山田^太郎=やまだ^たろう");
        row("chrHbrw", "שרון^דבורה");
        row("chrI2", "Hong^Gildong=洪^吉洞=홍^길동");
        row("chrJapMulti", "やまだ^たろう");
        row("chrJapMultiExplicitIR6", "やまだ^たろう");
        row("chrKoreanMulti", "김희중");
        row("chrRuss", "Люкceмбypг");
        row("chrX1", "Wang^XiaoDong=王^小東=");
        row("chrX2", "Wang^XiaoDong=王^小东=");
    }
    void namesInEveryCharacterSet()
    {
        SKIP_WITHOUT_PYDICOM();
        QFETCH(QString, file);
        QStringList problems;
        const DicomHeader header = headerOf(pydicomFolder() + "/charset_files/" + file + ".dcm");
        QTEST(valueOf(header, "PatientName", &problems).toString(), "name");
        QCOMPARE(problems, QStringList());
    }

    void anItemHasTheCharacterSetAroundIt()
    {
        SKIP_WITHOUT_PYDICOM();
        for (const char* file : {"/charset_files/chrSQEncoding.dcm", "/charset_files/chrSQEncoding1.dcm"}) {
            const DicomHeader header = headerOf(pydicomFolder() + file);
            QStringList problems;
            QCOMPARE(valueOf(header, "RequestedProcedureCodeSequence.PatientName", &problems),
                     "ﾔﾏﾀﾞ^ﾀﾛｳ=山田^太郎=やまだ^たろう");
            QCOMPARE(problems, QStringList());
        }
    }

    void anItemCanHaveACharacterSetOfItsOwn()
    {
        DicomFileMaker maker;
        maker.put(DCM_SpecificCharacterSet, "ISO_IR 100").put(DCM_PatientName, "\xc4");
        DcmItem* outer = nullptr;
        maker.dataset().findOrCreateSequenceItem(DCM_ReferencedStudySequence, outer);
        outer->putAndInsertString(DCM_SpecificCharacterSet, "ISO_IR 192");
        outer->putAndInsertString(DCM_PatientName, "Ä");
        DcmItem* inner = nullptr;
        outer->findOrCreateSequenceItem(DCM_ReferencedStudySequence, inner);
        inner->putAndInsertString(DCM_PatientName, "Ö");
        const DicomHeader header = headerOf(maker.save(mFolder.filePath(QStringLiteral("x"))));
        QCOMPARE(valueOf(header, "PatientName"), "Ä");
        QCOMPARE(valueOf(header, "ReferencedStudySequence.PatientName"), "Ä");
        QCOMPARE(valueOf(header, "ReferencedStudySequence.ReferencedStudySequence.PatientName"), "Ö");
    }

    void aWrongCharacterSetIsAProblemAndNoMore()
    {
        DicomFileMaker maker;
        maker.put(DCM_SpecificCharacterSet, "ISO_IR 192").put(DCM_PatientName, "M\xfcller");
        const DicomHeader header = headerOf(maker.save(mFolder.filePath(QStringLiteral("x"))));
        QStringList problems;
        QCOMPARE(valueOf(header, "PatientName", &problems), "Müller");
        QCOMPARE(
            problems,
            QStringList(
                "(0010,0010): text doesn't fit the character set \"ISO_IR 192\" and is read as Latin-1"));
    }

    void otherFilesAreToldFromDicom_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("text") << QByteArray("Patient: Doe, Jane\n").repeated(20);
        QTest::newRow("short text") << QByteArray("x");
        QTest::newRow("zeros") << QByteArray(4096, '\0');
        QTest::newRow("DICM at the start") << QByteArray("DICM\2\0\0\0UL\4\0\0\0\0\0", 16);
        QTest::newRow("DICM in a text") << QByteArray(120, 'x') + "the word DICM";
        QTest::newRow("group 8 with a wild length") << QByteArray("\x08\0\x05\0\xff\xff\xff\x7fxxxx", 12);
        QTest::newRow("group 8 cut") << QByteArray("\x08\0\x05\0CS", 6);
        QTest::newRow("picture") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    }
    void otherFilesAreToldFromDicom()
    {
        QFETCH(QByteArray, content);
        const QString path = mFolder.filePath(QStringLiteral("other.dcm"));
        write(path, content);
        DicomHeader header;
        QString reason;
        QCOMPARE(DicomHeader::readFile(path, header, reason), Outcome::NotDicom);
        QCOMPARE(reason, "not a DICOM file");
    }

    void aMissingFileIsUnreadable()
    {
        DicomHeader header;
        QString reason;
        QCOMPARE(DicomHeader::readFile(mFolder.filePath(QStringLiteral("none")), header, reason),
                 Outcome::Unreadable);
        QVERIFY2(reason.startsWith("cannot be read: "), qPrintable(reason));
    }

    void aDirectoryIsToldFromInstances()
    {
        SKIP_WITHOUT_PYDICOM();
        DicomHeader header;
        QString reason;
        QCOMPARE(
            DicomHeader::readFile(pydicomFolder() + "/test_files/dicomdirtests/DICOMDIR", header, reason),
            Outcome::Directory);
        QVERIFY(valueOf(header, "DirectoryRecordSequence").toInt() > 10);
    }

    void brokenFilesAreDamaged_data()
    {
        QTest::addColumn<QString>("file");
        for (const char* file : {"MR_truncated.dcm", "rtplan_truncated.dcm", "SC_rgb_jpeg.dcm"})
            QTest::newRow(file) << file;
    }
    void brokenFilesAreDamaged()
    {
        SKIP_WITHOUT_PYDICOM();
        QFETCH(QString, file);
        DicomHeader header;
        header.setText({0x0010, 0x0010}, QStringLiteral("untouched"));
        QString reason;
        QCOMPARE(DicomHeader::readFile(pydicomFolder() + "/test_files/" + file, header, reason),
                 Outcome::Damaged);
        QVERIFY2(reason.startsWith("damaged: "), qPrintable(reason));
        QCOMPARE(valueOf(header, "PatientName"), "untouched");
    }

    void nothingOfThisIsLogged()
    {
        SKIP_WITHOUT_PYDICOM();
        const LogCapture log;
        DicomHeader header;
        QString reason;
        DicomHeader::readFile(pydicomFolder() + "/test_files/MR_truncated.dcm", header, reason);
        QCOMPARE(log.toStrings(), QStringList());
    }

    void textsCanBeSet()
    {
        DicomHeader header;
        QVERIFY(header.setText(DicomTagPath::fromText("PatientName"), "山田^太郎"));
        QVERIFY(header.setText(DicomTagPath::fromText("StudyDate"), "20240311"));
        QVERIFY(header.setText(DicomTagPath::fromText("Rows"), "512"));
        QVERIFY(header.setText(DicomTagPath::fromText("ImageType"), "A\\B"));
        QVERIFY(
            header.setText(DicomTagPath::fromText("RequestAttributesSequence[1].RequestedProcedureID"), "R"));
        QVERIFY(header.setText(DicomTagPath::fromText("TransferSyntaxUID"), "1.2"));
        QCOMPARE(valueOf(header, "PatientName"), "山田^太郎");
        QCOMPARE(valueOf(header, "StudyDate"), QDate(2024, 3, 11));
        QCOMPARE(valueOf(header, "Rows"), 512);
        QCOMPARE(valueOf(header, "ImageType"), (QVariantList{"A", "B"}));
        QCOMPARE(valueOf(header, "RequestAttributesSequence"), 2);
        QCOMPARE(valueOf(header, "RequestAttributesSequence[1].RequestedProcedureID"), "R");
        QCOMPARE(valueOf(header, "TransferSyntaxUID"), "1.2");
        QVERIFY(header.setText(DicomTagPath::fromText("PatientName"), "Roe"));
        QCOMPARE(valueOf(header, "PatientName"), "Roe");
        QVERIFY(header.setText(DicomTagPath::fromText("PatientName"), ""));
        QCOMPARE(valueOf(header, "PatientName"), "");
    }

    void whatTakesNoTextCannotBeSet_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("text");
        QTest::newRow("invalid path") << "NoKeyword"
                                      << "x";
        QTest::newRow("sequence") << "RequestAttributesSequence"
                                  << "x";
        QTest::newRow("bytes") << "PixelData"
                               << "1\\2";
        QTest::newRow("private") << "(0029,\"ACME\",10)"
                                 << "x";
        QTest::newRow("private by number") << "(0029,1010)"
                                           << "x";
        QTest::newRow("unknown element") << "(0010,9999)"
                                         << "x";
        QTest::newRow("path through no sequence") << "PatientName.PatientID"
                                                  << "x";
        QTest::newRow("no number") << "RequestAttributesSequence.Rows"
                                   << "many";
        QTest::newRow("the character set") << "SpecificCharacterSet"
                                           << "ISO_IR 100";
    }
    void whatTakesNoTextCannotBeSet()
    {
        QFETCH(QString, path);
        QFETCH(QString, text);
        DicomHeader header;
        QVERIFY(!header.setText(DicomTagPath::fromText(path), text));
        QVERIFY(!valueOf(header, "RequestAttributesSequence").isValid());
        QCOMPARE(valueOf(header, "SpecificCharacterSet"), "ISO_IR 192");
    }

    void aFilesCharacterSetLimitsWhatCanBeSet()
    {
        DicomFileMaker maker;
        DicomHeader header = headerOf(
            maker.put(DCM_SpecificCharacterSet, "ISO_IR 100").save(mFolder.filePath(QStringLiteral("x"))));
        QVERIFY(!header.setText(DicomTagPath::fromText("PatientName"), "Müller"));
        QVERIFY(header.setText(DicomTagPath::fromText("PatientName"), "Mueller"));
        QCOMPARE(valueOf(header, "PatientName"), "Mueller");
    }

    void copiesAreIndependent()
    {
        DicomHeader a;
        a.setText({0x0010, 0x0010}, "A");
        DicomHeader b = a;
        b.setText({0x0010, 0x0010}, "B");
        QCOMPARE(valueOf(a, "PatientName"), "A");
        QCOMPARE(valueOf(b, "PatientName"), "B");
    }

    void anyThreadsMayReadAtOnce()
    {
        DicomHeader header;
        header.setText({0x0010, 0x0010}, "Müller^Änne");
        header.setText({0x0020, 0x0032}, "1\\2\\3");
        std::atomic<int> right{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&header, &right] {
                for (int i = 0; i < 500; ++i) {
                    right += valueOf(header, "PatientName") == "Müller^Änne" ? 1 : 0;
                    right += valueOf(header, "ImagePositionPatient").toList().size() == 3 ? 1 : 0;
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(right.load(), 4000);
    }

private:
    QTemporaryDir mFolder;
};

KY_TEST_MAIN(TestDicomHeader)

#include "tst_DicomHeader.moc"

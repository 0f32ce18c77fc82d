#include "DicomFileMaker.h"
#include "DicomNestingMaker.h"

#include <support/KyTest.h>

#include <ovwebservice/DicomFileScan.h>
#include <ovwebservice/DicomHeader.h>
#include <ovwebservice/StudyGrouping.h>

#include <QDirIterator>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>

using Ovg::DicomFileScan;
using Ovg::DicomHeader;
using Outcome = DicomFileScan::Outcome;

namespace {

struct Scanned
{
    Outcome outcome;
    Ovg::DicomInstanceFacts facts;
    QString reason;
};

Scanned scanned(const QString& inPath)
{
    QFile file(inPath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        qFatal("%s", qPrintable(inPath));
    DicomFileScan scan(file);
    const Outcome outcome = scan.run();
    return {outcome, scan.facts(), scan.reason()};
}

QStringList text(const Ovg::DicomInstanceFacts& inFacts)
{
    return {QString::fromStdString(inFacts.studyInstanceUid),
            QString::fromStdString(inFacts.seriesInstanceUid),
            QString::fromStdString(inFacts.modality),
            QString::number(inFacts.seriesNumber),
            QString::fromStdString(inFacts.instance.sopInstanceUid),
            QString::fromStdString(inFacts.instance.sopClassUid),
            QString::number(inFacts.instance.instanceNumber)};
}

/// With sequences of every kind before and behind what the scan looks for.
DicomFileMaker nestedFile()
{
    DicomFileMaker maker("7", "3", 12);
    DcmItem* outer = nullptr;
    DcmItem* inner = nullptr;
    for (const DcmTagKey& key : {DCM_ReferencedStudySequence, DCM_RequestAttributesSequence}) {
        maker.dataset().findOrCreateSequenceItem(key, outer, 1);
        outer->putAndInsertString(DCM_StudyInstanceUID, "9.9");
        outer->findOrCreateSequenceItem(DCM_RequestedProcedureCodeSequence, inner);
        inner->putAndInsertString(DCM_CodeValue, "x");
    }
    DcmSequenceOfItems* empty = new DcmSequenceOfItems(DCM_ReferencedPatientSequence);
    maker.dataset().insert(empty);
    maker.putPixels(32);
    return maker;
}

const QStringList nestedFacts{"1.2.3.7", "1.2.3.7.3", "CT", "3", "1.2.3.7.3.12", UID_CTImageStorage, "12"};

} // namespace

class TestDicomFileScan final : public QObject
{
    Q_OBJECT

private slots:
    void theCommonSyntaxesAreScanned_data()
    {
        QTest::addColumn<int>("syntax");
        QTest::addColumn<int>("lengths");
        QTest::newRow("explicit") << int(EXS_LittleEndianExplicit) << int(EET_UndefinedLength);
        QTest::newRow("explicit, known lengths") << int(EXS_LittleEndianExplicit) << int(EET_ExplicitLength);
        QTest::newRow("implicit") << int(EXS_LittleEndianImplicit) << int(EET_UndefinedLength);
        QTest::newRow("implicit, known lengths") << int(EXS_LittleEndianImplicit) << int(EET_ExplicitLength);
    }
    void theCommonSyntaxesAreScanned()
    {
        QFETCH(int, syntax);
        QFETCH(int, lengths);
        const QString path = nestedFile().save(mFolder.filePath(QStringLiteral("x")),
                                               E_TransferSyntax(syntax), E_EncodingType(lengths));
        const Scanned result = scanned(path);
        QCOMPARE(int(result.outcome), int(Outcome::Complete));
        QCOMPARE(text(result.facts), nestedFacts);
    }

    void othersAreLeftToTheLibrary_data()
    {
        QTest::addColumn<int>("syntax");
        QTest::addColumn<int>("mode");
        QTest::newRow("big endian") << int(EXS_BigEndianExplicit) << int(EWM_fileformat);
        QTest::newRow("deflated") << int(EXS_DeflatedLittleEndianExplicit) << int(EWM_fileformat);
        QTest::newRow("no preamble") << int(EXS_LittleEndianExplicit) << int(EWM_dataset);
    }
    void othersAreLeftToTheLibrary()
    {
        QFETCH(int, syntax);
        QFETCH(int, mode);
        const QString path =
            nestedFile().save(mFolder.filePath(QStringLiteral("x")), E_TransferSyntax(syntax),
                              EET_UndefinedLength, E_FileWriteMode(mode));
        QCOMPARE(int(scanned(path).outcome), int(Outcome::Unsure));
    }

    /// Elements behind the first window of the file, and values longer than it.
    void longHeadersAreScanned()
    {
        DicomFileMaker maker = nestedFile();
        maker.dataset().putAndInsertString(DCM_PatientComments, std::string(9000, 'x').c_str());
        maker.dataset().putAndInsertString(DCM_AdditionalPatientHistory, std::string(60000, 'x').c_str());
        const Scanned result = scanned(maker.save(mFolder.filePath(QStringLiteral("x"))));
        QCOMPARE(int(result.outcome), int(Outcome::Complete));
        QCOMPARE(text(result.facts), nestedFacts);
    }

    void aDirectoryIsKnown()
    {
        SKIP_WITHOUT_PYDICOM();
        QCOMPARE(int(scanned(pydicomFolder() + "/test_files/dicomdirtests/DICOMDIR").outcome),
                 int(Outcome::Directory));
    }

    /// A data set cut anywhere is damaged, unless whole elements are left; and what the scan takes for whole
    /// is whole to DCMTK too.
    void everyCutIsSeen_data() { theCommonSyntaxesAreScanned_data(); }
    void everyCutIsSeen()
    {
        QFETCH(int, syntax);
        QFETCH(int, lengths);
        DicomFileMaker maker = nestedFile();
        const QString path = maker.save(mFolder.filePath(QStringLiteral("cut")), E_TransferSyntax(syntax),
                                        E_EncodingType(lengths));
        QFile file(path);
        QSet<qint64> ends{file.size()};
        for (unsigned long i = maker.dataset().card(); i > 0; --i)
            ends += *std::min_element(ends.begin(), ends.end()) -
                    maker.dataset().getElement(i - 1)->calcElementLength(E_TransferSyntax(syntax),
                                                                         E_EncodingType(lengths));
        const qint64 start = *std::min_element(ends.begin(), ends.end());
        for (qint64 size = file.size() - 1; size > start; --size) {
            QVERIFY(file.resize(size));
            const bool complete = scanned(path).outcome == Outcome::Complete;
            QVERIFY2(complete == ends.contains(size), qPrintable(QString::number(size)));
            DicomHeader header;
            QString reason;
            const bool read = DicomHeader::readFile(path, header, reason) == DicomHeader::Outcome::Read;
            QVERIFY2(read == complete, qPrintable(QString::number(size) + ' ' + reason));
        }
        for (qint64 size = start; size >= 0; --size) {
            QVERIFY(file.resize(size));
            QVERIFY2(scanned(path).outcome == Outcome::Unsure, qPrintable(QString::number(size)));
        }
    }

    void aCutNamesTheElement()
    {
        const QString path = nestedFile().save(mFolder.filePath(QStringLiteral("cut")));
        QFile file(path);
        QVERIFY(file.resize(file.size() - 1));
        QCOMPARE(scanned(path).reason, "damaged: ends inside element (7FE0,0010)");
    }

    void aCutInsideCompressedPixelsIsSeen()
    {
        SKIP_WITHOUT_PYDICOM();
        const QString path = mFolder.filePath(QStringLiteral("compressed"));
        QFile::remove(path);
        QVERIFY(QFile::copy(pydicomFolder() + "/test_files/MR_small_RLE.dcm", path));
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
        QCOMPARE(int(scanned(path).outcome), int(Outcome::Complete));
        QFile file(path);
        QVERIFY(file.resize(file.size() - 500));
        QCOMPARE(int(scanned(path).outcome), int(Outcome::BrokenOff));
    }

    /// What the scan says of real files of all kinds is what DCMTK says of them.
    void itAgreesWithTheLibrary()
    {
        SKIP_WITHOUT_PYDICOM();
        int complete = 0;
        QDirIterator it(pydicomFolder(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            const Scanned result = scanned(path);
            if (result.outcome == Outcome::Unsure)
                continue;
            DicomHeader header;
            QString reason;
            const DicomHeader::Outcome read = DicomHeader::readFile(path, header, reason);
            QVERIFY2((result.outcome == Outcome::Complete) == (read == DicomHeader::Outcome::Read),
                     qPrintable(path));
            QVERIFY2((result.outcome == Outcome::BrokenOff) == (read == DicomHeader::Outcome::Damaged),
                     qPrintable(path));
            if (result.outcome != Outcome::Complete)
                continue;
            QVERIFY2(text(result.facts) == text(Ovg::factsOf(header)), qPrintable(path));
            ++complete;
        }
        QVERIFY2(complete > 100, qPrintable(QString::number(complete)));
    }

    void sequencesNestedTooDeepAreAnOutcomeOfTheirOwn_data()
    {
        QTest::addColumn<int>("levels");
        QTest::addColumn<int>("outcome");
        QTest::newRow("64") << 64 << int(Outcome::Complete);
        QTest::newRow("65") << 65 << int(Outcome::TooDeep);
        QTest::newRow("20000") << 20000 << int(Outcome::TooDeep);
    }
    void sequencesNestedTooDeepAreAnOutcomeOfTheirOwn()
    {
        QFETCH(int, levels);
        QFETCH(int, outcome);
        const QString path = DicomFileMaker().save(mFolder.filePath(QStringLiteral("deep")));
        QFile file(path);
        QVERIFY(file.open(QIODevice::Append));
        file.write(DicomNestingMaker().levels(levels));
        file.close();
        const Scanned result = scanned(path);
        QCOMPARE(int(result.outcome), outcome);
        if (result.outcome == Outcome::TooDeep)
            QCOMPARE(result.reason, "damaged: sequences are nested too deep, in more than 64 levels");
    }

    /// Bytes of a whole file changed at random: the scan ends, whatever it says.
    void changedBytesDoNoHarm()
    {
        const QString path = nestedFile().save(mFolder.filePath(QStringLiteral("fuzzed")));
        QFile original(path);
        QVERIFY(original.open(QIODevice::ReadOnly));
        const QByteArray content = original.readAll();
        unsigned seed = 1;
        for (int round = 0; round < 500; ++round) {
            QByteArray changed = content;
            for (int i = 0; i < 3; ++i) {
                seed = seed * 1103515245 + 12345;
                changed[qsizetype(seed % unsigned(content.size() - 132)) + 132] = char(seed >> 16);
            }
            QFile file(mFolder.filePath(QStringLiteral("changed")));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(changed);
            file.close();
            if (scanned(file.fileName()).outcome == Outcome::Unsure) {
                DicomHeader header;
                QString reason;
                DicomHeader::readFile(file.fileName(), header, reason);
            }
        }
    }

private:
    QTemporaryDir mFolder;
};

KY_TEST_MAIN(TestDicomFileScan)

#include "tst_DicomFileScan.moc"

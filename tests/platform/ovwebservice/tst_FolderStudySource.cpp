#include "DicomFileMaker.h"
#include "DicomNestingMaker.h"

#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <ovwebservice/FolderStudySource.h>

#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <thread>

#ifdef Q_OS_UNIX
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

std::atomic<int> allocationsToFail{0}; // of other threads than the main one
const auto mainThread = std::this_thread::get_id();

} // namespace

void* operator new(size_t inSize)
{
    if (allocationsToFail > 0 && std::this_thread::get_id() != mainThread && allocationsToFail-- > 0)
        throw std::bad_alloc();
    if (void* memory = std::malloc(inSize > 0 ? inSize : 1))
        return memory;
    throw std::bad_alloc();
}

void* operator new(size_t inSize, const std::nothrow_t&) noexcept
{
    return std::malloc(inSize > 0 ? inSize : 1);
}

void operator delete(void* inMemory) noexcept
{
    std::free(inMemory);
}

void operator delete(void* inMemory, size_t) noexcept
{
    std::free(inMemory);
}

using Ovg::DicomTagPath;
using Ovg::FolderStudySource;
using Ovg::StudySourceResult;

namespace {

QString comments(const Ovg::DicomDirectoryEntry& inStudy)
{
    return inStudy.value(DicomTagPath::fromText("ImageComments")).toString();
}

} // namespace

class TestFolderStudySource final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mFolder = std::make_unique<QTemporaryDir>();
        mLog = std::make_unique<LogCapture>(2);
    }
    void cleanup()
    {
        mLog.reset();
        mFolder.reset();
    }

    void anEmptyFolderHasNoStudies()
    {
        const StudySourceResult result = load();
        QVERIFY(result.studies.empty());
        QCOMPARE(result.files, 0);
        QCOMPARE(result.errors, QStringList());
        QVERIFY(!result.cancelled);
        QCOMPARE(mLog->toStrings(), QStringList());
    }

    void aMissingFolderIsAnError()
    {
        const QString missing = path("missing");
        const StudySourceResult result = FolderStudySource(missing).load();
        QVERIFY(result.studies.empty());
        QCOMPARE(result.errors, QStringList(missing + ": No such file or directory"));
        QCOMPARE(mLog->toStrings(), QStringList("3|Studies|" + missing + ": No such file or directory"));
    }

    void aFileIsNoFolder()
    {
        const StudySourceResult result = FolderStudySource(DicomFileMaker().save(path("file"))).load();
        QVERIFY(result.studies.empty());
        QCOMPARE(result.errors, QStringList(path("file") + ": Not a directory"));
    }

    void filesAreFoundByContentAndNotByName()
    {
        DicomFileMaker("1", "1", 1).save(path("IM0001"));
        DicomFileMaker("1", "1", 2).save(path("notes.txt"));
        DicomFileMaker("1", "1", 3).save(path("a/b/c d/ä.jpg"));
        DicomFileMaker("1", "1", 4).save(path(".hidden/.dcm"));
        write("picture.dcm", "not DICOM at all");
        const StudySourceResult result = load();
        QCOMPARE(result.studies.size(), size_t(1));
        QCOMPARE(result.files, 5);
        QCOMPARE(result.instances, 4);
        QCOMPARE(result.notDicom, 1);
        QCOMPARE(result.damaged, 0);
        QCOMPARE(result.studies[0]->series()[0].instances[0].path, path("IM0001"));
        QCOMPARE(result.studies[0]->series()[0].instances[2].path, path("a/b/c d/ä.jpg"));
        QCOMPARE(mLog->toStrings(), QStringList("2|Studies|" + path("picture.dcm") + ": not a DICOM file"));
    }

    void instancesOfOneStudyMergeAcrossFolders()
    {
        DicomFileMaker("1", "1", 1).save(path("x/1"));
        DicomFileMaker("2", "1", 1).save(path("x/2"));
        DicomFileMaker("1", "1", 2).save(path("y/1"));
        DicomFileMaker("1", "2", 1).put(DCM_Modality, "SR").save(path("z/1"));
        const StudySourceResult result = load();
        QCOMPARE(result.studies.size(), size_t(2));
        QCOMPARE(result.studies[0]->instanceCount(), 3);
        QCOMPARE(result.studies[0]->series().size(), size_t(2));
        QCOMPARE(result.studies[0]->modalities(), (std::vector<std::string>{"CT", "SR"}));
        QCOMPARE(result.studies[1]->instanceCount(), 1);
    }

    void theRepresentativeIsTheFirstInstance()
    {
        DicomFileMaker("1", "2", 1).put(DCM_ImageComments, "series 2").save(path("a"));
        DicomFileMaker("1", "1", 10).put(DCM_ImageComments, "number 10").save(path("b"));
        DicomFileMaker("1", "1", 9).put(DCM_ImageComments, "number 9").save(path("c"));
        QCOMPARE(comments(*load().studies[0]), "number 9");
    }

    void ofDuplicatesTheFirstPathCounts()
    {
        DicomFileMaker("1", "1", 1).put(DCM_ImageComments, "b").save(path("b"));
        DicomFileMaker("1", "1", 1).put(DCM_ImageComments, "a").save(path("a"));
        DicomFileMaker("1", "1", 1).put(DCM_ImageComments, "sub").save(path("sub/a"));
        const StudySourceResult result = load();
        QCOMPARE(result.instances, 1);
        QCOMPARE(result.duplicates, 2);
        QCOMPARE(comments(*result.studies[0]), "a");
        QCOMPARE(mLog->toStrings(), QStringList());
    }

    void damagedFilesAreCountedWithOneLineEach()
    {
        DicomFileMaker("1", "1", 1).putPixels(64).save(path("1"));
        cut(DicomFileMaker("1", "1", 2).putPixels(64).save(path("2")), 10);
        cut(DicomFileMaker("1", "1", 3).save(path("3"), EXS_BigEndianExplicit), 3);
        write("4", QByteArray(128, '\0') + "DICM");
        const StudySourceResult result = load();
        QCOMPARE(result.instances, 1);
        QCOMPARE(result.damaged, 3);
        QCOMPARE(result.notDicom, 0);
        const QStringList lines = mLog->toStrings();
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[0], "2|Studies|" + path("2") + ": damaged: ends inside element (7FE0,0010)");
        QVERIFY2(lines[1].startsWith("2|Studies|" + path("3") + ": damaged: "), qPrintable(lines[1]));
        QVERIFY2(lines[2].startsWith("2|Studies|" + path("4") + ": damaged: "), qPrintable(lines[2]));
    }

    /// The scan believes the length of a sequence and does not look inside; DCMTK does when the study is
    /// made.
    void theNextInstanceStandsInForADamagedFirst()
    {
        DicomFileMaker first("1", "1", 1);
        DcmItem* item = nullptr;
        first.dataset().findOrCreateSequenceItem(DCM_ReferencedStudySequence, item);
        item->putAndInsertString(DCM_ReferencedSOPInstanceUID, "1.2.3.4.5.6");
        const QString damaged = first.save(path("1"), EXS_LittleEndianExplicit, EET_ExplicitLength);
        replace(damaged, QByteArray("UI\x0c\0", 4), QByteArray("UI\xf0\x7f", 4));
        DicomFileMaker("1", "1", 2).put(DCM_ImageComments, "second").save(path("2"));
        const StudySourceResult result = load();
        QCOMPARE(result.damaged, 1);
        QCOMPARE(result.instances, 1);
        QCOMPARE(comments(*result.studies[0]), "second");
        QCOMPARE(mLog->toStrings().size(), 1);
        QVERIFY(mLog->toStrings()[0].startsWith("2|Studies|" + damaged + ": damaged: "));
    }

    void aStudyWithoutAnyReadableInstanceIsNone()
    {
        DicomFileMaker only("1", "1", 1);
        DcmItem* item = nullptr;
        only.dataset().findOrCreateSequenceItem(DCM_ReferencedStudySequence, item);
        item->putAndInsertString(DCM_ReferencedSOPInstanceUID, "1.2.3.4.5.6");
        replace(only.save(path("1"), EXS_LittleEndianExplicit, EET_ExplicitLength), QByteArray("UI\x0c\0", 4),
                QByteArray("UI\xf0\x7f", 4));
        const StudySourceResult result = load();
        QVERIFY(result.studies.empty());
        QCOMPARE(result.damaged, 1);
    }

    void filesNestedTooDeepAreDamaged()
    {
        DicomFileMaker("1", "1", 2).save(path("sound"));
        const DicomNestingMaker kinds[] = {
            {}, {.knownLengths = true}, {.bigEndian = true}, {.bigEndian = true, .knownLengths = true}};
        for (int i = 0; i < 4; ++i) {
            const QString deep =
                DicomFileMaker("1", "1", 1)
                    .save(path(QByteArray::number(i)),
                          kinds[i].bigEndian ? EXS_BigEndianExplicit : EXS_LittleEndianExplicit);
            QFile file(deep);
            QVERIFY(file.open(QIODevice::Append));
            file.write(kinds[i].levels(20000));
        }
        const StudySourceResult result = load();
        // Those of known lengths in little endian are only found out if they stand for their study.
        QCOMPARE(result.damaged, 4);
        QCOMPARE(result.instances, 1);
        QCOMPARE(mLog->toStrings().filter("nested too deep").size(), 4);
    }

    void memoryThatRunsOutCostsTheFileAndNotTheProgram()
    {
        DicomFileMaker("1", "1", 1).save(path("1"));
        DicomFileMaker("1", "1", 2).put(DCM_ImageComments, "second").save(path("2"));
        const StudySourceResult result = FolderStudySource(mFolder->path()).load([](int done, int total) {
            allocationsToFail = done == total;
            return true;
        });
        QCOMPARE(int(allocationsToFail), 0);
        QCOMPARE(result.damaged, 1);
        QCOMPARE(result.instances, 1);
        QCOMPARE(comments(*result.studies.at(0)), "second");
        QCOMPARE(mLog->toStrings(), QStringList("2|Studies|" + path("1") + ": damaged: std::bad_alloc"));
    }

    void aStudySpreadOverTwoFoldersKeepsAllInstances()
    {
        DicomFileMaker("1", "1", 1).put(DCM_ImageComments, "z").save(path("z/1"));
        DicomFileMaker("1", "1", 2).save(path("z/2"));
        DicomFileMaker("1", "1", 1).put(DCM_ImageComments, "a").save(path("a/1"));
        DicomFileMaker("1", "1", 3).save(path("a/3"));
        const StudySourceResult result = FolderStudySource(QStringList{path("z"), path("a")}).load();
        QCOMPARE(result.studies.size(), size_t(1));
        QCOMPARE(result.instances, 3);
        QCOMPARE(result.duplicates, 1);
        QCOMPARE(result.files, 4);
        QCOMPARE(comments(*result.studies[0]), "z");
        QCOMPARE(result.errors, QStringList());
    }

    void foldersInOneAnotherAreReadOnce()
    {
        DicomFileMaker("1", "1", 1).save(path("a/1"));
        DicomFileMaker("1", "1", 2).save(path("a/b/2"));
        const StudySourceResult result =
            FolderStudySource(QStringList{path("a"), path("a/b"), path("a")}).load();
        QCOMPARE(result.files, 2);
        QCOMPARE(result.duplicates, 0);
        QCOMPARE(result.errors, QStringList());
    }

    void everyBadFolderIsNamed()
    {
        DicomFileMaker().save(path("good/1"));
        const StudySourceResult result =
            FolderStudySource(QStringList{path("no"), path("good"), path("good/1")}).load();
        const QStringList errors{path("no") + ": No such file or directory",
                                 path("good/1") + ": Not a directory"};
        QCOMPARE(result.errors, errors);
        QCOMPARE(result.instances, 1);
        QCOMPARE(mLog->toStrings(), QStringList({"3|Studies|" + errors[0], "3|Studies|" + errors[1]}));
    }

    void noFolderIsNoError()
    {
        const StudySourceResult result = FolderStudySource(QStringList()).load();
        QCOMPARE(result.files, 0);
        QCOMPARE(result.errors, QStringList());
    }

    void eachLoadEndsWithItsCounts()
    {
        mLog = std::make_unique<LogCapture>(1);
        DicomFileMaker("1", "1", 1).save(path("a/1"));
        DicomFileMaker("1", "1", 1).save(path("a/2"));
        DicomFileMaker("1", "1", 3).save(path("a/3"));
        DicomFileMaker("2", "1", 1).save(path("b/4"));
        DicomFileMaker().put(DCM_StudyInstanceUID, "").save(path("b/5"));
        cut(DicomFileMaker("1", "1", 2).putPixels(64).save(path("b/6")), 10);
        write("b/7", "text");
        FolderStudySource source(QStringList{path("a"), path("b")});
        source.load();
        const QString line = "1|Studies|" + path("a") + ", " + path("b") +
                             ": 7 files, 3 instances, 2 studies; skipped: 1 not DICOM, 1 damaged, "
                             "1 without study, 1 duplicates, 0 unreadable folders";
        QCOMPARE(mLog->toStrings().filter("1|Studies|"), QStringList(line));
        QCOMPARE(mLog->take().last(), line);
        source.load([](int, int) { return false; });
        const QStringList stopped = mLog->take().filter("1|Studies|");
        QCOMPARE(stopped.size(), 1);
        QVERIFY2(stopped[0].endsWith("folders; stopped early"), qPrintable(stopped[0]));
    }

#ifdef Q_OS_UNIX
    /// Such as one whose path is too long for the system, which even an administrator can't read.
    void anUnreadableFolderBelowIsSkipped()
    {
        DicomFileMaker().save(path("a/1"));
        makeTooDeep(path("b"));
        const StudySourceResult result = load();
        std::filesystem::remove_all(path("b").toStdString());
        QCOMPARE(result.errors, QStringList());
        QCOMPARE(result.unreadableFolders, 1);
        QCOMPARE(result.instances, 1);
        const QStringList lines = mLog->toStrings();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines[0].startsWith("2|Studies|" + path("b/")));
        QVERIFY(lines[0].endsWith(": folder cannot be read: File name too long"));
    }
#endif

    void instancesWithoutAStudyAreCountedApart()
    {
        DicomFileMaker().put(DCM_StudyInstanceUID, "").save(path("1"));
        const StudySourceResult result = load();
        QVERIFY(result.studies.empty());
        QCOMPARE(result.noStudy, 1);
        QCOMPARE(result.damaged, 0);
        QCOMPARE(mLog->toStrings(),
                 QStringList("2|Studies|" + path("1") + ": belongs to no study: has no study instance UID"));
    }

    void aWrongCharacterSetIsToldOnce()
    {
        for (int i = 1; i <= 3; ++i)
            DicomFileMaker("1", "1", i)
                .put(DCM_SpecificCharacterSet, "ISO_IR 192")
                .put(DCM_PatientName, "M\xfcller")
                .save(path(QByteArray::number(i)));
        const StudySourceResult result = load();
        QCOMPARE(result.studies[0]->patientName(), "Müller");
        QCOMPARE(result.instances, 3);
        QCOMPARE(
            mLog->toStrings(),
            QStringList(
                "2|Studies|" + path("1") +
                ": (0010,0010): text doesn't fit the character set \"ISO_IR 192\" and is read as Latin-1"));
    }

    void everyWayToWriteAFileIsRead()
    {
        int number = 0;
        for (const E_TransferSyntax syntax : {EXS_LittleEndianExplicit, EXS_LittleEndianImplicit,
                                              EXS_BigEndianExplicit, EXS_DeflatedLittleEndianExplicit})
        {
            for (const E_EncodingType lengths : {EET_UndefinedLength, EET_ExplicitLength}) {
                ++number;
                DicomFileMaker("1", "1", number)
                    .putPixels(8)
                    .save(path(QByteArray::number(number)), syntax, lengths);
            }
        }
        for (const E_TransferSyntax syntax :
             {EXS_LittleEndianExplicit, EXS_LittleEndianImplicit, EXS_BigEndianExplicit})
        {
            ++number;
            DicomFileMaker("1", "1", number)
                .save(path(QByteArray::number(number)), syntax, EET_UndefinedLength, EWM_dataset);
        }
        const StudySourceResult result = load();
        QCOMPARE(result.instances, number);
        QCOMPARE(result.files, number);
        QCOMPARE(mLog->toStrings(), QStringList());
    }

    void directoriesOfMediaArePassedOver()
    {
        SKIP_WITHOUT_PYDICOM();
        QVERIFY(QFile::copy(pydicomFolder() + "/test_files/dicomdirtests/DICOMDIR", path("DICOMDIR")));
        const StudySourceResult result = load();
        QCOMPARE(result.files, 1);
        QCOMPARE(result.instances + result.damaged + result.notDicom + result.noStudy, 0);
        QCOMPARE(mLog->toStrings(), QStringList());
    }

    void aFileSetIsReadWhole()
    {
        SKIP_WITHOUT_PYDICOM();
        const StudySourceResult result =
            FolderStudySource(pydicomFolder() + "/test_files/dicomdirtests/TINY_ALPHA").load();
        QCOMPARE(result.studies.size(), size_t(1));
        QCOMPARE(result.instances, 50);
        QCOMPARE(result.notDicom, 1);
        QCOMPARE(result.studies[0]->patientName(), "Citizen^Jan");
    }

    /// The sum of all counts is the number of files, and each file that was skipped has its line.
    void realFilesOfAllKindsAddUp()
    {
        SKIP_WITHOUT_PYDICOM();
        const StudySourceResult result = FolderStudySource(pydicomFolder()).load();
        QVERIFY(result.studies.size() > 30);
        QVERIFY(result.instances > 100);
        QVERIFY(result.damaged >= 3);
        const int skipped = result.damaged + result.notDicom + result.noStudy;
        QCOMPARE(mLog->toStrings().size(), skipped);
        const int directories = result.files - skipped - result.instances - result.duplicates;
        QVERIFY2(directories > 0 && directories < 10, qPrintable(QString::number(directories)));
    }

    void linksAreFollowedAndLoopsEnd()
    {
        DicomFileMaker("1", "1", 1).save(path("inside/1"));
        DicomFileMaker("1", "1", 2).save(path("outside/2"));
        QVERIFY(QFile::link(path("outside"), path("inside/link")));
        QVERIFY(QFile::link(path("inside"), path("outside/loop")));
        QVERIFY(QFile::link(path("inside"), path("inside/self")));
        QVERIFY(QFile::link(path("inside/1"), path("inside/file link")));
        QVERIFY(QFile::link(path("nowhere"), path("inside/dangling")));
        const StudySourceResult result = FolderStudySource(path("inside")).load();
        QCOMPARE(result.instances, 2);
        QCOMPARE(result.duplicates, 1);
        QCOMPARE(result.files, 3);
        QCOMPARE(result.errors, QStringList());
    }

#ifdef Q_OS_UNIX
    void pipesAreNotOpened()
    {
        QCOMPARE(mkfifo(qPrintable(path("pipe")), 0600), 0);
        QCOMPARE(load().files, 0);
    }
#endif

#ifdef Q_OS_LINUX
    /// Such as one whose name is no text, which Qt can't open.
    void anUnreadableFileIsCountedAsDamaged()
    {
        const QByteArray name = QFile::encodeName(path("1")) + "\xff";
        QCOMPARE(::rename(QFile::encodeName(DicomFileMaker().save(path("1"))).constData(), name.constData()),
                 0);
        const StudySourceResult result = load();
        QCOMPARE(result.damaged, 1);
        QCOMPARE(mLog->toStrings(), QStringList("2|Studies|" + QFile::decodeName(name) +
                                                ": cannot be read: No such file or directory"));
    }
#endif

    void progressComesOnTheCallersThread()
    {
        for (int i = 1; i <= 200; ++i)
            DicomFileMaker("1", "1", i).save(path(QByteArray::number(i)));
        QList<int> done;
        bool sameThread = true;
        const StudySourceResult result = FolderStudySource(mFolder->path()).load([&](int now, int total) {
            sameThread = sameThread && QThread::currentThread() == thread();
            done += now;
            return total == 200;
        });
        QVERIFY(!result.cancelled);
        QVERIFY(sameThread);
        QVERIFY(std::is_sorted(done.begin(), done.end()));
        QCOMPARE(done.last(), 200);
        QCOMPARE(result.instances, 200);
    }

    void aCancelledSearchSaysSo()
    {
        for (int i = 1; i <= 20; ++i)
            DicomFileMaker("1", "1", i).save(path(QByteArray::number(i)));
        const StudySourceResult result =
            FolderStudySource(mFolder->path()).load([](int, int) { return false; });
        QVERIFY(result.cancelled);
        QCOMPARE(result.files, result.instances);
    }

    /// The same folder gives the same studies each time, whichever thread reads what.
    void theResultDoesNotDependOnThreads()
    {
        for (int i = 1; i <= 60; ++i)
            DicomFileMaker(std::to_string(i % 7), std::to_string(i % 3), i)
                .put(DCM_ImageComments, std::to_string(i))
                .save(path(QByteArray::number(i * 7919 % 1000)));
        QStringList first;
        for (int round = 0; round < 10; ++round) {
            QStringList now;
            const StudySourceResult result = load();
            for (const auto& study : result.studies) {
                now += comments(*study);
                for (const Ovg::DicomSeries& series : study->series()) {
                    for (const Ovg::DicomInstance& instance : series.instances)
                        now += instance.path;
                }
            }
            QCOMPARE(now.size(), 67);
            first = round == 0 ? now : first;
            QCOMPARE(now, first);
        }
    }

    void loadLooksAgain()
    {
        FolderStudySource source(mFolder->path());
        QCOMPARE(source.load().instances, 0);
        DicomFileMaker().save(path("1"));
        QCOMPARE(source.load().instances, 1);
    }

private:
    QString path(const char* inName) const
    {
        return mFolder->filePath(QString::fromUtf8(inName));
    }
    StudySourceResult load() const
    {
        return FolderStudySource(mFolder->path()).load();
    }

    void write(const char* inName, const QByteArray& inContent) const
    {
        QFile file(path(inName));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(inContent), qint64(inContent.size()));
    }

#ifdef Q_OS_UNIX
    /// Folders in one another until the path of the last, and only of that, is too long.
    static void makeTooDeep(const QString& inPath)
    {
        const std::string name(250, 'x');
        QVERIFY(QDir().mkpath(inPath));
        int folder = ::open(qPrintable(inPath), O_RDONLY | O_DIRECTORY);
        for (qsizetype length = inPath.size(); length < PATH_MAX; length += qsizetype(name.size()) + 1) {
            QCOMPARE(::mkdirat(folder, name.c_str(), 0700), 0);
            const int inner = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
            ::close(folder);
            folder = inner;
        }
        ::close(folder);
    }
#endif

    static void cut(const QString& inPath, qint64 inBytes)
    {
        QFile file(inPath);
        QVERIFY(file.resize(file.size() - inBytes));
    }

    /// Replaces the last place of \a inBefore.
    static void replace(const QString& inPath, const QByteArray& inBefore, const QByteArray& inAfter)
    {
        QFile file(inPath);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QByteArray content = file.readAll();
        const qsizetype at = content.lastIndexOf(inBefore);
        QVERIFY(at > 0);
        content.replace(at, inBefore.size(), inAfter);
        QVERIFY(file.seek(0));
        QCOMPARE(file.write(content), qint64(content.size()));
    }

    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<LogCapture> mLog;
};

KY_TEST_MAIN(TestFolderStudySource)

#include "tst_FolderStudySource.moc"

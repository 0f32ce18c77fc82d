#include "FolderStudySource.h"

#include "DicomFileScan.h"
#include "ParallelFor.h"
#include "StudyGrouping.h"

#include <rnlib/RnLogFile.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <unordered_set>
#include <utility>

namespace Ovg {

namespace {

namespace fs = std::filesystem;

constexpr const char* logContext = "Studies";

/// One file of the folder, and what became of it.
struct FoundFile
{
    QString path;
    bool read = false; ///< Not when the search was cancelled before.
    DicomHeader::Outcome outcome = DicomHeader::Outcome::Unreadable;
    DicomInstanceFacts facts = {};
    QString reason = {};
};

void log(int inLevel, const QString& inPath, const QString& inText)
{
    getTheLogInstance().trace(inLevel, logContext,
                              (inPath + QLatin1String(": ") + inText).toUtf8().constData());
}

/// The regular files below some folders, each folder once, however many links lead to it.
class FolderWalk
{
public:
    explicit FolderWalk(const QStringList& inFolders)
    {
        for (const QString& folder : inFolders)
            walk(QFileInfo(folder).filesystemFilePath());
    }

    /// By folder given, and there by path.
    const QStringList& files() const { return mFiles; }
    /// Of the folders given.
    const QStringList& errors() const { return mErrors; }
    int unreadable() const { return mUnreadable; }

private:
    void walk(const fs::path& inRoot)
    {
        std::error_code error;
        const fs::directory_iterator opened(inRoot, error);
        if (error) {
            fail(inRoot, error);
            return;
        }
        const auto before = mFiles.size();
        std::vector<fs::path> folders{inRoot};
        while (!folders.empty()) {
            const fs::path folder = folders.back();
            folders.pop_back();
            error = isNew(folder) ? read(folder, folders) : std::error_code();
            if (error && folder == inRoot)
                fail(folder, error);
            else if (error)
                skip(folder, error);
        }
        std::sort(mFiles.begin() + before, mFiles.end());
    }

    bool isNew(const fs::path& inFolder)
    {
        std::error_code error;
        const fs::path real = fs::canonical(inFolder, error);
        return error || mSeen.insert(real.native()).second;
    }

    std::error_code read(const fs::path& inFolder, std::vector<fs::path>& ioFolders)
    {
        std::error_code error;
        for (fs::directory_iterator it(inFolder, error), end; !error && it != end; it.increment(error)) {
            std::error_code unknown;
            if (it->is_directory(unknown))
                ioFolders.push_back(it->path());
            else if (it->is_regular_file(unknown))
                mFiles += text(it->path());
        }
        return error;
    }

    void fail(const fs::path& inFolder, const std::error_code& inError)
    {
        mErrors += text(inFolder) + QLatin1String(": ") + text(inError);
        getTheLogInstance().trace(3, logContext, mErrors.constLast().toUtf8().constData());
    }

    void skip(const fs::path& inFolder, const std::error_code& inError)
    {
        log(2, text(inFolder), QLatin1String("folder cannot be read: ") + text(inError));
        ++mUnreadable;
    }

    static QString text(const fs::path& inPath) { return QFileInfo(inPath).filePath(); }
    static QString text(const std::error_code& inError)
    {
        return QString::fromLocal8Bit(inError.message().c_str());
    }

    std::unordered_set<fs::path::string_type> mSeen;
    QStringList mFiles;
    QStringList mErrors;
    int mUnreadable = 0;
};

/// The slow way, for files that the scan leaves open.
void readWhole(FoundFile& ioFile)
{
    DicomHeader header;
    ioFile.outcome = DicomHeader::readFile(ioFile.path, header, ioFile.reason);
    if (ioFile.outcome == DicomHeader::Outcome::Read)
        ioFile.facts = factsOf(header);
}

void scan(FoundFile& ioFile)
{
    QFile file(ioFile.path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        ioFile.reason = QLatin1String("cannot be read: ") + file.errorString();
        return;
    }
    DicomFileScan fileScan(file);
    switch (fileScan.run()) {
    case DicomFileScan::Outcome::Complete:
        ioFile.outcome = DicomHeader::Outcome::Read;
        ioFile.facts = fileScan.facts();
        break;
    case DicomFileScan::Outcome::Directory:
        ioFile.outcome = DicomHeader::Outcome::Directory;
        break;
    case DicomFileScan::Outcome::BrokenOff:
    case DicomFileScan::Outcome::TooDeep:
        ioFile.outcome = DicomHeader::Outcome::Damaged;
        ioFile.reason = fileScan.reason();
        break;
    case DicomFileScan::Outcome::Unsure:
        readWhole(ioFile);
    }
}

/// A file that exhausts the memory, say, costs that file and not the program.
template <typename Function>
void safely(FoundFile& ioFile, const Function& inFunction)
{
    try {
        inFunction();
    } catch (const std::exception& problem) {
        ioFile.outcome = DicomHeader::Outcome::Damaged;
        ioFile.reason = QLatin1String("damaged: ") + QString::fromLocal8Bit(problem.what());
    }
}

void scanSafely(FoundFile& ioFile, int inOrigin)
{
    safely(ioFile, [&ioFile] { scan(ioFile); });
    ioFile.facts.origin = inOrigin;
    ioFile.facts.instance.path = ioFile.path;
    ioFile.read = true;
}

/// A study on its way: its instances in order, and the header of the first that could be read.
struct FoundStudy
{
    std::vector<DicomInstanceFacts> instances;
    DicomHeader representative = {};
    std::vector<FoundFile> failures = {}; ///< Of those before it.
};

/// Drops the instances at the front that the scan let pass and DCMTK does not.
void readRepresentative(FoundStudy& ioStudy)
{
    while (!ioStudy.instances.empty()) {
        FoundFile file{.path = ioStudy.instances.front().instance.path};
        safely(file,
               [&] { file.outcome = DicomHeader::readFile(file.path, ioStudy.representative, file.reason); });
        if (file.outcome == DicomHeader::Outcome::Read)
            return;
        ioStudy.failures.push_back(file);
        ioStudy.instances.erase(ioStudy.instances.begin());
    }
}

/// One run of FolderStudySource::load().
class FolderLoad
{
public:
    StudySourceResult run(const QStringList& inFolders, const StudySource::Progress& inProgress)
    {
        const FolderWalk walk(inFolders);
        mResult.errors = walk.errors();
        mResult.unreadableFolders = walk.unreadable();
        for (const QString& path : walk.files())
            mFiles.push_back({.path = path});
        mResult.cancelled = !parallelFor(
            static_cast<int>(mFiles.size()), [this](int i) { scanSafely(mFiles[static_cast<size_t>(i)], i); },
            inProgress);
        group();
        makeStudies();
        finish(mResult);
        log(1, inFolders.join(QLatin1String(", ")), counts());
        return std::move(mResult);
    }

private:
    void group()
    {
        for (const FoundFile& file : mFiles) {
            if (!file.read)
                continue;
            ++mResult.files;
            if (file.outcome == DicomHeader::Outcome::Read)
                add(file);
            else if (file.outcome != DicomHeader::Outcome::Directory)
                skip(file);
        }
    }

    void add(const FoundFile& inFile)
    {
        const StudyGrouping::Added added = mGrouping.add(inFile.facts);
        if (added == StudyGrouping::Added::Duplicate)
            ++mResult.duplicates;
        if (added == StudyGrouping::Added::NoStudy) {
            log(2, inFile.path, QStringLiteral("belongs to no study: has no study instance UID"));
            ++mResult.noStudy;
        }
    }

    void skip(const FoundFile& inFile)
    {
        log(2, inFile.path, inFile.reason);
        ++(inFile.outcome == DicomHeader::Outcome::NotDicom ? mResult.notDicom : mResult.damaged);
    }

    void makeStudies()
    {
        std::vector<FoundStudy> studies;
        for (auto& instances : mGrouping.studies())
            studies.push_back({.instances = std::move(instances)});
        parallelFor(static_cast<int>(studies.size()),
                    [&studies](int i) { readRepresentative(studies[static_cast<size_t>(i)]); });
        for (const FoundStudy& study : studies) {
            for (const FoundFile& failure : study.failures)
                skip(failure);
            if (study.instances.empty())
                continue;
            mResult.studies.push_back(makeStudy(study.representative, study.instances));
            warnOfTexts(study);
        }
    }

    /// One line for a study whose texts don't fit the character set that the file names.
    static void warnOfTexts(const FoundStudy& inStudy)
    {
        constexpr unsigned short tags[][2] = {{0x0010, 0x0010}, {0x0010, 0x0020}, {0x0008, 0x1030}};
        QStringList problems;
        for (const auto& [groupNumber, element] : tags)
            inStudy.representative.value({groupNumber, element}, &problems);
        if (!problems.isEmpty())
            log(2, inStudy.instances.front().instance.path, problems.join(QLatin1String("; ")));
    }

    QString counts() const
    {
        const QString found = QStringLiteral("%1 files, %2 instances, %3 studies")
                                  .arg(mResult.files)
                                  .arg(mResult.instances)
                                  .arg(mResult.studies.size());
        const QString skipped = QStringLiteral("; skipped: %1 not DICOM, %2 damaged, %3 without study, "
                                               "%4 duplicates, %5 unreadable folders")
                                    .arg(mResult.notDicom)
                                    .arg(mResult.damaged)
                                    .arg(mResult.noStudy)
                                    .arg(mResult.duplicates)
                                    .arg(mResult.unreadableFolders);
        return found + skipped + (mResult.cancelled ? QLatin1String("; stopped early") : QLatin1String());
    }

    StudySourceResult mResult;
    std::vector<FoundFile> mFiles;
    StudyGrouping mGrouping;
};

} // namespace

FolderStudySource::FolderStudySource(const QString& inFolder)
    : FolderStudySource(QStringList(inFolder))
{}

FolderStudySource::FolderStudySource(QStringList inFolders)
    : mFolders(std::move(inFolders))
{}

StudySourceResult FolderStudySource::load(const Progress& inProgress)
{
    return FolderLoad().run(mFolders, inProgress);
}

} // namespace Ovg

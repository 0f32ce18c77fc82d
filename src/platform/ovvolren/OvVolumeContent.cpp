#include "OvVolumeContent.h"

#include "OvPixelReader.h"
#include "OvTexts.h"

#include <ovwebservice/DicomHeader.h>
#include <ovwebservice/ParallelFor.h>
#include <rnlib/RnLogFile.h>

#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <map>
#include <new>
#include <numeric>
#include <unistd.h>

namespace {

/// Frames of one file that one worker reads in one go: each opens the file anew.
constexpr int LargestPart = 64;

void log(const QString& inPath, const QString& inReason)
{
    getTheLogInstance().trace(2, "Volume", (inPath + QLatin1String(": ") + inReason).toUtf8().constData());
}

QString times(int inCount, const QString& inNotice, int inAll)
{
    return inAll == 1 || inCount == inAll
               ? inNotice
               : inNotice + OvTexts::tr(" (%1 of %2 images)").arg(inCount).arg(inAll);
}

QString inGibibytes(std::uint64_t inBytes)
{
    return QString::number(double(inBytes) / (1024.0 * 1024 * 1024), 'f', 1);
}

/// Makes a sentence of the reason that a header's reading gives.
QString unreadable(const QString& inReason)
{
    if (inReason.isEmpty())
        return OvTexts::tr("The file is no image");
    if (inReason == QLatin1String("not a DICOM file"))
        return OvTexts::tr("The file is not a DICOM file");
    constexpr QLatin1String damaged("damaged: ");
    if (inReason.startsWith(damaged))
        return OvTexts::tr("The file is damaged: %1").arg(inReason.mid(damaged.size()));
    constexpr QLatin1String unread("cannot be read: ");
    return inReason.startsWith(unread)
               ? OvTexts::tr("The file cannot be read: %1").arg(inReason.mid(unread.size()))
               : OvTexts::tr("The file is unreadable: %1").arg(inReason);
}

} // namespace

/// One file on the way in.
struct OvVolumeContent::Part
{
    std::vector<OvImageInfo> images;
    QString problem;
    QStringList notices;
};

OvVolumeContent::~OvVolumeContent() = default;

std::uint64_t OvVolumeContent::mostBytes()
{
    constexpr std::uint64_t Most = 16ULL << 30;
    const auto pages = static_cast<std::uint64_t>(std::max(0L, sysconf(_SC_PHYS_PAGES)));
    return std::min(Most, pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) / 2);
}

std::shared_ptr<OvVolumeContent> OvVolumeContent::read(const QStringList& inPaths, std::uint64_t inMostBytes)
{
    const std::shared_ptr<OvVolumeContent> content(new OvVolumeContent);
    content->readFiles(inPaths);
    content->measure(inMostBytes);
    return content;
}

void OvVolumeContent::readFiles(const QStringList& inPaths)
{
    std::vector<Part> parts(std::size_t(inPaths.size()));
    Ovg::parallelFor(int(inPaths.size()), [&](int inIndex) {
        Part& part = parts[std::size_t(inIndex)];
        const QString& path = inPaths[inIndex];
        auto header = std::make_shared<Ovg::DicomHeader>();
        using Outcome = Ovg::DicomHeader::Outcome;
        QString reason;
        if (path.isEmpty())
            part.problem = OvTexts::tr("The image is not in a file");
        else if (Ovg::DicomHeader::readFile(path, *header, reason) == Outcome::Read)
            part.images = OvImageInfo::ofFile(path, header, part.problem, part.notices);
        else
            part.problem = unreadable(reason);
        if (!part.problem.isEmpty())
            log(path, part.problem);
    });
    for (const Part& part : parts)
        mImages.insert(mImages.end(), part.images.begin(), part.images.end());
    addNotices(parts);
    mGeometry = OvVolumeGeometry(mImages, mNotices);
}

void OvVolumeContent::addNotices(const std::vector<Part>& inParts)
{
    std::map<QString, int> problems;
    std::map<QString, int> notices;
    for (const Part& part : inParts) {
        if (!part.problem.isEmpty())
            ++problems[part.problem];
        for (const QString& notice : part.notices)
            notices[notice] += int(part.images.size());
    }
    for (const auto& [notice, count] : notices)
        mNotices += times(count, notice, this->count());
    const int failed = std::accumulate(problems.begin(), problems.end(), 0,
                                       [](int inSum, const auto& inRow) { return inSum + inRow.second; });
    if (failed == 0)
        return;
    const QString& first = problems.begin()->first;
    if (!mImages.empty())
        mNotices += failed == 1 ? OvTexts::tr("1 file is not shown: %1").arg(first)
                                : OvTexts::tr("%1 files are not shown: %2").arg(failed).arg(first);
    else
        mError =
            failed == 1 ? first : OvTexts::tr("None of the %1 files can be shown: %2").arg(failed).arg(first);
}

/// Sizes are bounded by 65535 x 65535 pixels of 4 bytes, the number of images by that of frames and files, so
/// that a sum of 64 bits can overflow only beyond 2^30 images; those would not be here.
void OvVolumeContent::measure(std::uint64_t inMostBytes)
{
    for (const OvImageInfo& image : mImages) {
        mColumns = std::max(mColumns, image.format.columns);
        mRows = std::max(mRows, image.format.rows);
        mBytes += image.format.bytes();
    }
    mPixels.resize(mImages.size());
    mProblems.resize(mImages.size());
    mStates = std::make_unique<std::atomic<State>[]>(mImages.size());
    if (mImages.empty() && mError.isEmpty())
        mError = OvTexts::tr("There are no images");
    if (mBytes > inMostBytes)
        mError = OvTexts::tr("The images need %1 GiB of memory, and only %2 GiB may be used")
                     .arg(inGibibytes(mBytes), inGibibytes(inMostBytes));
    if (mError.isEmpty())
        return;
    if (!mImages.empty())
        log(mImages.front().path, mError);
    for (int i = 0; i < count(); ++i)
        fail(i, OvTexts::tr("it needs too much memory"));
}

bool OvVolumeContent::loadPixels(const Progress& inProgress)
{
    // By file, and in the order in which a user will scroll.
    std::vector<int> waiting;
    for (int i = 0; i < count(); ++i) {
        if (mStates[std::size_t(i)] == Waiting)
            waiting.push_back(i);
    }
    std::vector<int> parts;
    for (std::size_t i = 0; i < waiting.size(); ++i) {
        const bool same = i > 0 && image(waiting[i]).path == image(waiting[i - 1]).path;
        if (!same || int(i) - parts.back() >= LargestPart)
            parts.push_back(int(i));
    }
    parts.push_back(int(waiting.size()));
    const auto load = [&](int inPart) {
        loadPart(parts[std::size_t(inPart)], parts[std::size_t(inPart) + 1], waiting);
    };
    return Ovg::parallelFor(int(parts.size()) - 1, load,
                            [&](int, int) { return !inProgress || inProgress(mDone, count()); });
}

void OvVolumeContent::loadPart(int inFirst, int inEnd, const std::vector<int>& inOrder)
{
    OvPixelReader reader(image(inOrder[std::size_t(inFirst)]).path);
    for (int i = inFirst; i < inEnd; ++i) {
        const int index = inOrder[std::size_t(i)];
        OvPixels& pixels = mPixels[std::size_t(index)];
        QString problem;
        try {
            problem = reader.read(image(index), pixels);
        } catch (const std::bad_alloc&) {
            problem = OvTexts::tr("there is not enough memory for it");
        }
        if (!problem.isEmpty()) {
            pixels = OvPixels();
            log(image(index).path, problem);
            fail(index, problem);
            continue;
        }
        noteRange(image(index), pixels);
        mStates[std::size_t(index)] = Loaded;
        ++mDone;
    }
}

void OvVolumeContent::noteRange(const OvImageInfo& inImage, const OvPixels& inPixels)
{
    if (inImage.isColour())
        return;
    // The form with a list gives values; that with two arguments would refer to temporary ones.
    const auto [least, greatest] =
        std::minmax({inImage.toValue(inPixels.least), inImage.toValue(inPixels.greatest)});
    const std::scoped_lock lock(mMutex);
    mRange = mRange ? std::pair(std::min(mRange->first, least), std::max(mRange->second, greatest))
                    : std::pair(least, greatest);
}

void OvVolumeContent::fail(int inImage, const QString& inReason)
{
    {
        const std::scoped_lock lock(mMutex);
        mProblems[std::size_t(inImage)] = inReason;
    }
    mStates[std::size_t(inImage)] = Failed;
    ++mDone;
}

const OvPixels* OvVolumeContent::pixels(int inImage) const
{
    const bool known = inImage >= 0 && inImage < count();
    return known && mStates[std::size_t(inImage)] == Loaded ? &mPixels[std::size_t(inImage)] : nullptr;
}

QString OvVolumeContent::problem(int inImage) const
{
    const std::scoped_lock lock(mMutex);
    return inImage >= 0 && inImage < count() ? mProblems[std::size_t(inImage)] : QString();
}

std::optional<std::pair<double, double>> OvVolumeContent::range() const
{
    const std::scoped_lock lock(mMutex);
    return mRange;
}

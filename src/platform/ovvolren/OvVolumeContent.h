#pragma once

#include "OvImageInfo.h"
#include "OvVolumeGeometry.h"

#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

/// The images of a series: first what their headers say, later their pixels.
///
/// Any thread may make one and load its pixels, and from then on all threads may read it. Nothing changes
/// after that but that pixels appear, image by image. What can't be read or makes no sense is told to people
/// by notices(), error() and problem(), and to the log with the context "Volume".
class OvVolumeContent
{
public:
    /// Gets the number of images done and of all; returns false to stop.
    using Progress = std::function<bool(int inDone, int inTotal)>;

    /// Reads the headers of the files \a inPaths, on all cores. What their pixels would take in memory is
    /// bounded by \a inMostBytes; a series with more has an error and no pixels.
    static std::shared_ptr<OvVolumeContent> read(const QStringList& inPaths,
                                                 std::uint64_t inMostBytes = mostBytes());

    /// Half of the machine's memory, but at most 16 GiB.
    static std::uint64_t mostBytes();

    ~OvVolumeContent();
    OvVolumeContent(const OvVolumeContent&) = delete;
    OvVolumeContent& operator=(const OvVolumeContent&) = delete;

    /// Why nothing can be shown, a sentence; empty when something can.
    const QString& error() const { return mError; }
    /// What people must know of what they see, a sentence without a full stop each.
    const QStringList& notices() const { return mNotices; }

    int count() const { return int(mImages.size()); }
    const OvImageInfo& image(int inImage) const { return mImages[std::size_t(inImage)]; }
    const OvVolumeGeometry& geometry() const { return mGeometry; }
    /// The largest number of columns and of rows.
    int columns() const { return mColumns; }
    int rows() const { return mRows; }
    /// Of all images in memory.
    std::uint64_t bytes() const { return mBytes; }

    /// Reads all pixels that have not been read, on all cores. One call at a time. False when it was stopped.
    bool loadPixels(const Progress& inProgress = {});

    /// Null while they are not there, and for ever when they can't be read.
    const OvPixels* pixels(int inImage) const;
    /// Why an image has no pixels, as a part of a sentence; empty when it has, or may get them.
    QString problem(int inImage) const;
    /// Whether no image waits for its pixels any more.
    bool isLoaded() const { return mDone == count(); }

    /// The least and the greatest value of the pixels that are there, padding and colours left out. Nothing
    /// when there are none.
    std::optional<std::pair<double, double>> range() const;

private:
    enum State : char
    {
        Waiting,
        Loaded,
        Failed,
    };
    struct Part;

    OvVolumeContent() = default;

    void readFiles(const QStringList& inPaths);
    void addNotices(const std::vector<Part>& inParts);
    void measure(std::uint64_t inMostBytes);
    void loadPart(int inFirst, int inEnd, const std::vector<int>& inOrder);
    void noteRange(const OvImageInfo& inImage, const OvPixels& inPixels);
    void fail(int inImage, const QString& inReason);

    std::vector<OvImageInfo> mImages;
    OvVolumeGeometry mGeometry;
    QString mError;
    QStringList mNotices;
    int mColumns = 0;
    int mRows = 0;
    std::uint64_t mBytes = 0;

    std::vector<OvPixels> mPixels;
    std::unique_ptr<std::atomic<State>[]> mStates;
    std::atomic<int> mDone{0};
    mutable std::mutex mMutex; ///< Of the two below.
    std::vector<QString> mProblems;
    std::optional<std::pair<double, double>> mRange;
};

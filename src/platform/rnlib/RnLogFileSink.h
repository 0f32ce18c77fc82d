#pragma once

#include "RnLogFile.h"

#include <cstdint>
#include <cstdio>
#include <string>

/// Appends the log to a file, flushed line by line, and rotates it.
///
/// When a line would take the file beyond the size limit, the file is renamed to "NAME.1", an older "NAME.1"
/// to "NAME.2" and so on up to the number of kept files; the oldest goes. A single line longer than the
/// limit is written whole. Made by the host.
class RnLogFileSink final : public RnLogSink
{
public:
    static constexpr std::uint64_t DefaultMaxBytes = 10 * 1024 * 1024;
    static constexpr int DefaultKeptFiles = 5;

    /// Opens \a inPath (UTF-8) for appending. \a inMaxBytes of 0 never rotates.
    explicit RnLogFileSink(std::string inPath, std::uint64_t inMaxBytes = DefaultMaxBytes,
                           int inKeptFiles = DefaultKeptFiles);
    ~RnLogFileSink() override;

    /// Whether the file could be opened. A sink that could not writes nothing.
    bool isOpen() const { return mFile != nullptr; }
    /// The reason of the system why the file could not be opened or written; empty without a failure.
    const std::string& errorText() const { return mErrorText; }
    const std::string& path() const { return mPath; }

    void write(const RnLogRecord& inRecord) override;

private:
    void open();
    void rotate();

    const std::string mPath;
    const std::uint64_t mMaxBytes;
    const int mKeptFiles;
    std::FILE* mFile = nullptr;
    std::uint64_t mBytes = 0;
    std::string mErrorText;
};

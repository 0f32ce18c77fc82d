#include "RnLogFileSink.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

RnLogFileSink::RnLogFileSink(std::string inPath, std::uint64_t inMaxBytes, int inKeptFiles)
    : mPath(std::move(inPath))
    , mMaxBytes(inMaxBytes)
    , mKeptFiles(std::max(inKeptFiles, 0))
{
    open();
}

RnLogFileSink::~RnLogFileSink()
{
    if (mFile)
        std::fclose(mFile);
}

void RnLogFileSink::write(const RnLogRecord& inRecord)
{
    const std::string line = RnLogFile::format(inRecord);
    if (mFile && mMaxBytes > 0 && mBytes > 0 && mBytes + line.size() > mMaxBytes)
        rotate();
    if (!mFile)
        return;
    const bool written = std::fwrite(line.data(), 1, line.size(), mFile) == line.size();
    if (std::fflush(mFile) != 0 || !written) {
        mErrorText = std::strerror(errno);
        std::clearerr(mFile);
        return;
    }
    mBytes += line.size();
}

void RnLogFileSink::open()
{
    // "e": a started program must not inherit the file.
    mFile = std::fopen(mPath.c_str(), "abe");
    if (!mFile) {
        mErrorText = std::strerror(errno);
        return;
    }
    std::fseek(mFile, 0, SEEK_END);
    const long size = std::ftell(mFile);
    mBytes = size > 0 ? static_cast<std::uint64_t>(size) : 0;
}

void RnLogFileSink::rotate()
{
    namespace fs = std::filesystem;
    std::fclose(mFile);
    const auto kept = [&](int inNumber) { return fs::path(mPath + '.' + std::to_string(inNumber)); };
    std::error_code error;
    for (int number = mKeptFiles; number > 1; --number)
        if (fs::exists(kept(number - 1), error))
            fs::rename(kept(number - 1), kept(number), error);
    if (mKeptFiles > 0)
        fs::rename(mPath, kept(1), error);
    else
        fs::remove(mPath, error);
    // Without the rename the lines go on into the same file.
    if (error)
        mErrorText = error.message();
    open();
}

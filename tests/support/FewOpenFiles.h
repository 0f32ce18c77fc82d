#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vector>

/// While it lives the process may have only so many files open.
class FewOpenFiles
{
public:
    explicit FewOpenFiles(int inLimit)
    {
        getrlimit(RLIMIT_NOFILE, &mBefore);
        rlimit few = mBefore;
        few.rlim_cur = rlim_t(inLimit);
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewOpenFiles()
    {
        setrlimit(RLIMIT_NOFILE, &mBefore);
        for (const int file : mTaken)
            ::close(file);
    }
    FewOpenFiles(const FewOpenFiles&) = delete;
    FewOpenFiles& operator=(const FewOpenFiles&) = delete;

    /// The number that the next file would get; below 0 when there is none.
    static int next()
    {
        const int file = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        if (file >= 0)
            ::close(file);
        return file;
    }

    /// Opens files until no more than \a inCount can be opened.
    void takeAllBut(int inCount)
    {
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        for (int file = next(); file >= 0 && int(limit.rlim_cur) - file > inCount; file = next())
            mTaken.push_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    }

private:
    rlimit mBefore{};
    std::vector<int> mTaken;
};

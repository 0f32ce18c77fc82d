#include "KyScriptOpenFiles.h"

#include <QtCore/QtGlobal>

#include <limits>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

long KyScriptOpenFiles::limit()
{
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0 || files.rlim_cur > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    return static_cast<long>(files.rlim_cur);
}

/// The system always gives the lowest number that is free.
bool KyScriptOpenFiles::areLeft()
{
    const int lowest = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (lowest < 0)
        return false;
    ::close(lowest);
    return lowest < limit() - limit() / 8;
}

#else

long KyScriptOpenFiles::limit()
{
    return std::numeric_limits<int>::max();
}

bool KyScriptOpenFiles::areLeft()
{
    return true;
}

#endif

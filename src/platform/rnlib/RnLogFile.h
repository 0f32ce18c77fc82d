#pragma once

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdarg>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#if defined(__GNUC__)
#define RN_PRINTF_FORMAT(formatIndex, firstArgument)                                                         \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define RN_PRINTF_FORMAT(formatIndex, firstArgument)
#endif

/// Weight of a log line: 0 announces an operation, 1 is routine detail of a run, 2 is something unexpected
/// that is tolerated, 3 is a failure. Other values are kept as they are.
using RnLogLevel = int;

/// One entry of the log as every sink gets it.
struct RnLogRecord
{
    std::chrono::system_clock::time_point time;
    RnLogLevel level = 1;
    std::string context; ///< Short name of the writer, empty when none was given.
    std::string text;    ///< Latin-1 or UTF-8, see RnLogFile; may hold line breaks.
};

/// A place to which the log goes: a file, a stream, a pane of a window, a test's list.
///
/// write() is called on the thread that logs, one call at a time for each sink. A sink may log from inside
/// write(): the line reaches the other sinks after the present one did, and never the sink that wrote it, nor
/// those whose lines led to it. write() must not wait for another thread that logs, and must not throw.
class RnLogSink
{
public:
    virtual ~RnLogSink();
    virtual void write(const RnLogRecord& inRecord) = 0;
};

/// The log of the process. Always there, may be used from any thread.
///
/// A line goes to every sink whose least level it reaches; without a sink it is lost. Lines of one thread
/// reach a sink in the order in which they were written.
///
/// Text is Latin-1 by convention. A text that is well-formed UTF-8 is accepted too, and toUtf8() tells the
/// two apart. Null pointers count as empty texts.
class RnLogFile
{
public:
    RnLogFile();
    ~RnLogFile();
    RnLogFile(const RnLogFile&) = delete;
    RnLogFile& operator=(const RnLogFile&) = delete;

    /// Adds \a inSink for lines of at least \a inLeastLevel. The log shares its ownership. A sink that is
    /// there already only gets the new level. A null sink is ignored.
    void addSink(std::shared_ptr<RnLogSink> inSink, RnLogLevel inLeastLevel = 0);

    /// Ends the use of \a inSink. When the call returns, no other thread is inside its write(), and none
    /// comes again. Called from inside the write() of any sink it doesn't wait.
    void removeSink(const RnLogSink* inSink);

    void trace(RnLogLevel inLevel, const char* inContext, const char* inText);
    void tracef(RnLogLevel inLevel, const char* inContext, const char* inFormat, ...) RN_PRINTF_FORMAT(4, 5);

    /// A line of level 1.
    void print(const char* inContext, const char* inText);
    /// A line of level 1 without a context.
    void printf(const char* inFormat, ...) RN_PRINTF_FORMAT(2, 3);

    /// A line of level 2.
    void warn(const char* inContext, const char* inText);
    /// A line of level 2 without a context.
    void warnf(const char* inFormat, ...) RN_PRINTF_FORMAT(2, 3);

    /// A line of level 3.
    void error(const char* inContext, const char* inText);
    /// A line of level 3 without a context.
    void errorf(const char* inFormat, ...) RN_PRINTF_FORMAT(2, 3);

    /// Whether the calling thread is inside the write() of a sink of any log.
    static bool isWriting();

    /// \a inRecord as a line of a text log, with the line break at its end:
    /// `2026-01-31 14:05:09.120 L [Context] text` in local time, L being the level, in UTF-8. Further lines
    /// of the text are indented by two blanks; line breaks at its end are left out. Without a context the
    /// brackets are left out, and a line break in a context becomes a blank.
    static std::string format(const RnLogRecord& inRecord);

    /// \a inText as UTF-8: unchanged when it is well-formed UTF-8 already, else read as Latin-1.
    static std::string toUtf8(std::string_view inText);

private:
    struct Entry;
    struct Line;
    struct Delivery;
    using EntryList = std::vector<std::shared_ptr<Entry>>;

    bool reaches(RnLogLevel inLevel) const { return inLevel >= mLeastLevel.load(std::memory_order_relaxed); }
    void write(RnLogLevel inLevel, const char* inContext, std::string inText);
    void writef(RnLogLevel inLevel, const char* inContext, const char* inFormat, va_list inArguments);
    void deliver(Delivery& ioDelivery, const Line& inLine);
    EntryList sinksFor(RnLogLevel inLevel) const;
    void updateLeastLevel();

    mutable std::mutex mMutex;
    EntryList mSinks;
    /// The least level that any sink takes, to leave early when none takes a line.
    std::atomic<RnLogLevel> mLeastLevel{INT_MAX};
};

/// The log of the process. It is built on first use and lives to the very end of the process.
RnLogFile& getTheLogInstance();

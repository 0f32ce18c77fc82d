#include "RnLogFile.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <deque>
#include <utility>

/// One sink in use. Who was removed stays locked out, also for threads that found it before.
struct RnLogFile::Entry
{
    Entry(std::shared_ptr<RnLogSink> inSink, RnLogLevel inLeastLevel)
        : sink(std::move(inSink))
        , leastLevel(inLeastLevel)
    {}

    const std::shared_ptr<RnLogSink> sink;
    std::atomic<RnLogLevel> leastLevel;
    std::atomic<bool> removed{false};
    std::mutex writing;
};

/// A line on its way, with the sinks inside whose write() it came to be.
struct RnLogFile::Line
{
    RnLogRecord record;
    std::vector<const Entry*> origins;
};

/// What one thread delivers of one log. Lines that sinks write meanwhile queue up here: so a thread never
/// waits for a second sink while it is inside a first, and no two threads can wait for each other.
struct RnLogFile::Delivery
{
    explicit Delivery(const RnLogFile* inLog)
        : log(inLog)
        , outer(innermost)
    {
        innermost = this;
    }
    ~Delivery() { innermost = outer; }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    static Delivery* of(const RnLogFile* inLog)
    {
        Delivery* delivery = innermost;
        while (delivery && delivery->log != inLog)
            delivery = delivery->outer;
        return delivery;
    }

    /// The deliveries of this thread. A plain pointer, since it is read while thread and process end.
    static thread_local Delivery* innermost;

    const RnLogFile* const log;
    Delivery* const outer;
    std::deque<Line> lines;
    /// The origins of a line that is written now.
    std::vector<const Entry*> origins;
};

thread_local RnLogFile::Delivery* RnLogFile::Delivery::innermost = nullptr;

namespace {

const char* textOrEmpty(const char* inText)
{
    return inText ? inText : "";
}

std::string formatted(const char* inFormat, va_list inArguments)
{
    char buffer[512];
    va_list again;
    va_copy(again, inArguments);
    const int length = std::vsnprintf(buffer, sizeof buffer, inFormat, inArguments);
    std::string text;
    if (length < 0) {
        text = inFormat;
    } else if (static_cast<std::size_t>(length) < sizeof buffer) {
        text.assign(buffer, static_cast<std::size_t>(length));
    } else {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, inFormat, again);
    }
    va_end(again);
    return text;
}

/// Length of the well-formed UTF-8 sequence at \a inAt (the Unicode standard, table 3-7), 0 without one.
std::size_t utf8SequenceLength(std::string_view inText, std::size_t inAt)
{
    const auto byte = [&](std::size_t inOffset) {
        return inAt + inOffset < inText.size() ? static_cast<unsigned char>(inText[inAt + inOffset]) : 0u;
    };
    const auto continues = [&](std::size_t inOffset) { return (byte(inOffset) & 0xC0u) == 0x80u; };
    const unsigned lead = byte(0);
    if (lead < 0x80u)
        return 1;
    if (lead < 0xC2u || lead > 0xF4u || !continues(1))
        return 0;
    if (lead < 0xE0u)
        return 2;
    if ((lead == 0xE0u && byte(1) < 0xA0u) || (lead == 0xEDu && byte(1) > 0x9Fu) || !continues(2))
        return 0;
    if (lead < 0xF0u)
        return 3;
    const bool inRange = !(lead == 0xF0u && byte(1) < 0x90u) && !(lead == 0xF4u && byte(1) > 0x8Fu);
    return inRange && continues(3) ? 4 : 0;
}

bool isUtf8(std::string_view inText)
{
    for (std::size_t at = 0; at < inText.size();) {
        const std::size_t length = utf8SequenceLength(inText, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

/// \a inText with \a inBreak in place of each line break, and without those at its end.
std::string withLineBreaks(std::string_view inText, std::string_view inBreak)
{
    inText = inText.substr(0, inText.find_last_not_of("\r\n") + 1);
    std::string out;
    out.reserve(inText.size() + inBreak.size());
    for (std::size_t i = 0; i < inText.size(); ++i) {
        const bool pair = inText[i] == '\r' && inText[i + 1] == '\n';
        if (pair)
            ++i;
        if (inText[i] == '\n' || inText[i] == '\r')
            out += inBreak;
        else
            out += inText[i];
    }
    return out;
}

std::string localTime(std::chrono::system_clock::time_point inTime)
{
    using namespace std::chrono;
    const auto seconds = floor<std::chrono::seconds>(inTime);
    const std::time_t time = system_clock::to_time_t(seconds);
    std::tm parts{};
    localtime_r(&time, &parts);
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    char milliseconds[8];
    std::snprintf(milliseconds, sizeof milliseconds, ".%03d",
                  static_cast<int>(duration_cast<std::chrono::milliseconds>(inTime - seconds).count()));
    return std::string(text, length) + milliseconds;
}

} // namespace

RnLogSink::~RnLogSink() = default;

RnLogFile::RnLogFile() = default;
RnLogFile::~RnLogFile() = default;

void RnLogFile::addSink(std::shared_ptr<RnLogSink> inSink, RnLogLevel inLeastLevel)
{
    if (!inSink)
        return;
    const std::lock_guard lock(mMutex);
    const auto known =
        std::find_if(mSinks.begin(), mSinks.end(), [&](const auto& entry) { return entry->sink == inSink; });
    if (known != mSinks.end())
        (*known)->leastLevel = inLeastLevel;
    else
        mSinks.push_back(std::make_shared<Entry>(std::move(inSink), inLeastLevel));
    updateLeastLevel();
}

void RnLogFile::removeSink(const RnLogSink* inSink)
{
    std::shared_ptr<Entry> removed;
    {
        const std::lock_guard lock(mMutex);
        const auto found = std::find_if(mSinks.begin(), mSinks.end(),
                                        [&](const auto& entry) { return entry->sink.get() == inSink; });
        if (found == mSinks.end())
            return;
        removed = *found;
        mSinks.erase(found);
        updateLeastLevel();
    }
    removed->removed = true;
    if (!isWriting())
        const std::lock_guard waitOut(removed->writing);
}

void RnLogFile::trace(RnLogLevel inLevel, const char* inContext, const char* inText)
{
    if (reaches(inLevel))
        write(inLevel, inContext, textOrEmpty(inText));
}

void RnLogFile::tracef(RnLogLevel inLevel, const char* inContext, const char* inFormat, ...)
{
    va_list arguments;
    va_start(arguments, inFormat);
    writef(inLevel, inContext, inFormat, arguments);
    va_end(arguments);
}

void RnLogFile::print(const char* inContext, const char* inText)
{
    trace(1, inContext, inText);
}

void RnLogFile::printf(const char* inFormat, ...)
{
    va_list arguments;
    va_start(arguments, inFormat);
    writef(1, nullptr, inFormat, arguments);
    va_end(arguments);
}

void RnLogFile::warn(const char* inContext, const char* inText)
{
    trace(2, inContext, inText);
}

void RnLogFile::warnf(const char* inFormat, ...)
{
    va_list arguments;
    va_start(arguments, inFormat);
    writef(2, nullptr, inFormat, arguments);
    va_end(arguments);
}

void RnLogFile::error(const char* inContext, const char* inText)
{
    trace(3, inContext, inText);
}

void RnLogFile::errorf(const char* inFormat, ...)
{
    va_list arguments;
    va_start(arguments, inFormat);
    writef(3, nullptr, inFormat, arguments);
    va_end(arguments);
}

bool RnLogFile::isWriting()
{
    return Delivery::innermost != nullptr;
}

std::string RnLogFile::format(const RnLogRecord& inRecord)
{
    std::string line = localTime(inRecord.time) + ' ' + std::to_string(inRecord.level) + ' ';
    if (!inRecord.context.empty())
        line += '[' + withLineBreaks(toUtf8(inRecord.context), " ") + "] ";
    return line + withLineBreaks(toUtf8(inRecord.text), "\n  ") + '\n';
}

std::string RnLogFile::toUtf8(std::string_view inText)
{
    if (isUtf8(inText))
        return std::string(inText);
    std::string out;
    out.reserve(inText.size() * 2);
    for (const char character : inText) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            out += character;
        } else {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return out;
}

void RnLogFile::write(RnLogLevel inLevel, const char* inContext, std::string inText)
{
    Line line{{std::chrono::system_clock::now(), inLevel, textOrEmpty(inContext), std::move(inText)}, {}};
    if (Delivery* running = Delivery::of(this)) {
        line.origins = running->origins;
        running->lines.push_back(std::move(line));
        return;
    }
    Delivery delivery(this);
    delivery.lines.push_back(std::move(line));
    while (!delivery.lines.empty()) {
        const Line next = std::move(delivery.lines.front());
        delivery.lines.pop_front();
        deliver(delivery, next);
    }
}

void RnLogFile::writef(RnLogLevel inLevel, const char* inContext, const char* inFormat, va_list inArguments)
{
    if (reaches(inLevel))
        write(inLevel, inContext, formatted(textOrEmpty(inFormat), inArguments));
}

void RnLogFile::deliver(Delivery& ioDelivery, const Line& inLine)
{
    for (const std::shared_ptr<Entry>& entry : sinksFor(inLine.record.level)) {
        if (std::find(inLine.origins.begin(), inLine.origins.end(), entry.get()) != inLine.origins.end())
            continue;
        const std::lock_guard lock(entry->writing);
        if (entry->removed)
            continue;
        ioDelivery.origins = inLine.origins;
        ioDelivery.origins.push_back(entry.get());
        entry->sink->write(inLine.record);
    }
}

RnLogFile::EntryList RnLogFile::sinksFor(RnLogLevel inLevel) const
{
    EntryList sinks;
    const std::lock_guard lock(mMutex);
    std::copy_if(mSinks.begin(), mSinks.end(), std::back_inserter(sinks),
                 [&](const auto& entry) { return inLevel >= entry->leastLevel; });
    return sinks;
}

void RnLogFile::updateLeastLevel()
{
    RnLogLevel least = INT_MAX;
    for (const std::shared_ptr<Entry>& entry : mSinks)
        least = std::min(least, entry->leastLevel.load());
    mLeastLevel = least;
}

RnLogFile& getTheLogInstance()
{
    // Never destroyed: lines may come while the process ends.
    static RnLogFile* const theLog = new RnLogFile;
    return *theLog;
}

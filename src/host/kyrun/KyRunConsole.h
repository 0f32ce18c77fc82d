#pragma once

#include <rnlib/RnLogStreamSink.h>

#include <optional>

/// The log on standard error. While it holds back, it keeps the latest report of an uncaught error, so that
/// the error of the script itself can be told in the form of a command-line program, and once.
class KyRunConsole final : public RnLogSink
{
public:
    KyRunConsole();
    ~KyRunConsole() override;

    void write(const RnLogRecord& inRecord) override;

    /// Whether \a inRecord is the report of an uncaught error of a script.
    static bool isReport(const RnLogRecord& inRecord);

    /// Begins or ends to hold back; the end writes what was kept.
    void setHoldingBack(bool inOn);

    /// Drops the report kept back if its text, in Latin-1, is \a inText.
    void drop(const std::string& inText);

private:
    void flush();

    RnLogStreamSink mStream;
    bool mIsHoldingBack = false;
    std::optional<RnLogRecord> mKept;
};

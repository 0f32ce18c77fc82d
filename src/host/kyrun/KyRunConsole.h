#pragma once

#include <rnlib/RnLogStreamSink.h>

#include <optional>

/// The log on standard error. It keeps back the latest report of an uncaught error, so that the error of the
/// script itself can be told in the form of a command-line program, and once.
class KyRunConsole final : public RnLogSink
{
public:
    KyRunConsole();
    ~KyRunConsole() override;

    void write(const RnLogRecord& inRecord) override;

    /// Drops the report kept back if its text, in Latin-1, is \a inText.
    void drop(const std::string& inText);

private:
    void flush();

    RnLogStreamSink mStream;
    std::optional<RnLogRecord> mKept;
};

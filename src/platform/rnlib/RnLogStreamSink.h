#pragma once

#include "RnLogFile.h"

#include <cstdio>

/// Writes the log to an open stream, such as standard error, flushed line by line. The stream stays the
/// caller's and must outlive the sink.
class RnLogStreamSink final : public RnLogSink
{
public:
    explicit RnLogStreamSink(std::FILE* inStream);

    void write(const RnLogRecord& inRecord) override;

private:
    std::FILE* const mStream;
};

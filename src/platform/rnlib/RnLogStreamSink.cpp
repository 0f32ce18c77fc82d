#include "RnLogStreamSink.h"

#include <string>

RnLogStreamSink::RnLogStreamSink(std::FILE* inStream)
    : mStream(inStream)
{}

void RnLogStreamSink::write(const RnLogRecord& inRecord)
{
    const std::string line = RnLogFile::format(inRecord);
    std::fwrite(line.data(), 1, line.size(), mStream);
    std::fflush(mStream);
}

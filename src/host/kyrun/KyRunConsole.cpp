#include "KyRunConsole.h"

KyRunConsole::KyRunConsole()
    : mStream(stderr)
{}

KyRunConsole::~KyRunConsole()
{
    flush();
}

void KyRunConsole::write(const RnLogRecord& inRecord)
{
    flush();
    const bool isReport = inRecord.level == 3 && inRecord.text.rfind("Uncaught ", 0) == 0 &&
                          inRecord.text.find("\nBacktrace:\n") != std::string::npos;
    if (isReport)
        mKept = inRecord;
    else
        mStream.write(inRecord);
}

void KyRunConsole::drop(const std::string& inText)
{
    if (mKept && mKept->text == inText)
        mKept.reset();
    flush();
}

void KyRunConsole::flush()
{
    if (mKept)
        mStream.write(*mKept);
    mKept.reset();
}

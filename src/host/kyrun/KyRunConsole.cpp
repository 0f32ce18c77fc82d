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
    if (mIsHoldingBack && isReport(inRecord))
        mKept = inRecord;
    else
        mStream.write(inRecord);
}

bool KyRunConsole::isReport(const RnLogRecord& inRecord)
{
    return inRecord.level == 3 && inRecord.text.rfind("Uncaught ", 0) == 0 &&
           inRecord.text.find("\nBacktrace:\n") != std::string::npos;
}

void KyRunConsole::setHoldingBack(bool inOn)
{
    mIsHoldingBack = inOn;
    flush();
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

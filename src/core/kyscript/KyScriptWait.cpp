#include "KyScriptWait.h"

#include "KyScriptLog.h"

#include <QtCore/QString>

namespace {

int sCount = 0;
bool sIsTold = false;

void tellOnce()
{
    if (sIsTold)
        return;
    sIsTold = true;
    KyScriptLog::line(2, QStringLiteral("A wait inside %1 others is left out").arg(KyScriptWait::Deepest));
}

} // namespace

KyScriptWait::KyScriptWait()
    : mMayBegin(sCount < Deepest)
{
    ++sCount;
    if (!mMayBegin)
        tellOnce();
}

KyScriptWait::~KyScriptWait()
{
    if (--sCount == 0)
        sIsTold = false;
}

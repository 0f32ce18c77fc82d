#include "KyTool.h"

namespace {

bool sTriggeredByScript = false;

} // namespace

void KyTool::setTriggeredByScript(bool inTriggered)
{
    sTriggeredByScript = inTriggered;
}

bool KyTool::triggeredByScript()
{
    return sTriggeredByScript;
}

#pragma once

#include "OvBackendScriptExecutor.h"

#include <QtCore/QList>
#include <QtCore/QPointer>

/// Who hears of the answers of an executor. Outlives it while an answer is on its way.
struct OvBackendScriptExecutor::Receivers
{
    QList<QPointer<OvBackendScriptResponseReceiver>> all;
};

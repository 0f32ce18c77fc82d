#include "KyScriptOrvane.h"

QStringList KyScriptOrvane::mExtAcc;

KyScriptOrvane::KyScriptOrvane(QObject* parent)
    : QObject(parent)
{}

KyScriptOrvane::~KyScriptOrvane() = default;

void KyScriptOrvane::setExtAcc(const QStringList& inExtAcc)
{
    if (inExtAcc == mExtAcc)
        return;
    mExtAcc = inExtAcc;
    Q_EMIT extAccChanged();
}

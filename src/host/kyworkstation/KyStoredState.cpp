#include "KyStoredState.h"

#include <ovbase/OvRegistry.h>

namespace {

QString idOf(const char* inName)
{
    return QStringLiteral("GUI.State.") + QLatin1String(inName);
}

} // namespace

QByteArray KyStoredState::read(const char* inName)
{
    OvRegistry::Value stored;
    const OvRegistry* registry = OvRegistry::getInstance();
    if (!registry || !registry->getProperty(idOf(inName), stored))
        return QByteArray();
    return QByteArray::fromBase64(stored.value.toLatin1());
}

void KyStoredState::write(const char* inName, const QByteArray& inState)
{
    if (OvRegistry* registry = OvRegistry::getInstance())
        registry->setProperty(idOf(inName), QString::fromLatin1(inState.toBase64()),
                              OvRegistry::UserPriority);
}

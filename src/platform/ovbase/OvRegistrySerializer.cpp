#include "OvRegistrySerializer.h"

#include "OvRegistry.h"
#include "OvVariant.h"

#include <rnlib/RnLogFile.h>

bool OvRegistrySerializer::write(const OvVariant& inProperty, int inPriority)
{
    OvRegistry* registry = OvRegistry::getInstance();
    return registry && registry->setProperty(QString::fromLatin1(inProperty.identifier().c_str()),
                                             inProperty.toQString(), inPriority);
}

bool OvRegistrySerializer::read(OvVariant& ioProperty)
{
    const OvRegistry* registry = OvRegistry::getInstance();
    const QString id = QString::fromLatin1(ioProperty.identifier().c_str());
    OvRegistry::Value stored;
    if (!registry || !registry->getProperty(id, stored))
        return false;
    if (ioProperty.fromQString(stored.value))
        return true;
    getTheLogInstance().tracef(2, "OvPropertyPool", "the stored value of \"%s\" can't be read: \"%s\"",
                               id.toUtf8().constData(), stored.value.toUtf8().constData());
    return false;
}

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
    OvRegistry::Value stored;
    if (!registry || !registry->getProperty(QString::fromLatin1(ioProperty.identifier().c_str()), stored))
        return false;
    if (ioProperty.fromQString(stored.value))
        return true;
    getTheLogInstance().tracef(2, "OvPropertyPool", "the stored value of \"%s\" can't be read: \"%s\"",
                               ioProperty.identifier().c_str(), stored.value.toUtf8().constData());
    return false;
}

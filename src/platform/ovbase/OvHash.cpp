#include "OvHash.h"

#include <QUuid>

QByteArray Ovg::generateHash32()
{
    return QUuid::createUuid().toRfc4122().toHex();
}

#include "OvPixels.h"

std::size_t OvPixelFormat::bytesPerPixel() const
{
    switch (type) {
    case UInt8:
        return 1;
    case UInt16:
    case Int16:
        return 2;
    case Rgb24:
        return 3;
    case UInt32:
    case Int32:
    case Float32:
        return 4;
    }
    return 0;
}

#include "RnWindows.h"

namespace {

RnWindows* sInstance = nullptr;

} // namespace

RnWindows::RnWindows()
{
    sInstance = this;
}

RnWindows::~RnWindows()
{
    if (sInstance == this)
        sInstance = nullptr;
}

RnWindows* RnWindows::instance()
{
    return sInstance;
}

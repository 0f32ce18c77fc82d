#include "RnCom.h"

namespace {

RnCom* sInstance = nullptr;

} // namespace

RnCom::RnCom()
{
    sInstance = this;
}

RnCom::~RnCom()
{
    if (sInstance == this)
        sInstance = nullptr;
}

RnCom* RnCom::instance()
{
    return sInstance;
}

#include "OvVolume.h"

OvVolume::OvVolume(std::unique_ptr<OvDBMetaInfo> inDbMetaInfo)
    : mDbMetaInfo(std::move(inDbMetaInfo))
{}

OvVolume::~OvVolume() = default;

OvData* OvVolume::data(unsigned int)
{
    return nullptr;
}

const Ovg::DicomHeader* OvVolume::header(int) const
{
    return nullptr;
}

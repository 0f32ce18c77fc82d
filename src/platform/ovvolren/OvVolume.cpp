#include "OvVolume.h"

OvVolume::OvVolume(std::unique_ptr<OvDBMetaInfo> inDbMetaInfo)
    : mDbMetaInfo(std::move(inDbMetaInfo))
{}

OvVolume::~OvVolume() = default;

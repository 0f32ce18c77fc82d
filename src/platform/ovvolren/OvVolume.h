#pragma once

#include "OvDBMetaInfo.h"
#include "OvInterface.h"

#include <memory>

/// The image data of one series as viewers show it.
///
/// Made by the host for a viewer and held by handles. A volume computed on the spot, such as a
/// subtraction, comes from no single series and has no database information.
class OvVolume : public OvInterface
{
public:
    /// \a inDbMetaInfo may be null.
    explicit OvVolume(std::unique_ptr<OvDBMetaInfo> inDbMetaInfo = nullptr);

    /// Null when the volume comes from no series. Valid as long as the volume.
    OvDBMetaInfo* dbMetaInfo() const { return mDbMetaInfo.get(); }

protected:
    ~OvVolume() override;

private:
    const std::unique_ptr<OvDBMetaInfo> mDbMetaInfo;
};

#pragma once

#include "OvDBMetaInfo.h"
#include "OvInterface.h"

#include <memory>

class OvData;

namespace Ovg {
class DicomHeader;
}

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

    /// The values, of the channel \a inIndex where there are several. Null when there is no such channel, or
    /// no values at all. Valid as long as the volume.
    virtual OvData* data(unsigned int inIndex);

    /// Number of images that the volume was made of, in its own order; 0 for one computed on the spot.
    virtual int imageCount() const { return 0; }
    /// The DICOM elements of the image \a inImage, counted from 0. Null when there is no such image. Valid as
    /// long as the volume.
    virtual const Ovg::DicomHeader* header(int inImage) const;

protected:
    ~OvVolume() override;

private:
    const std::unique_ptr<OvDBMetaInfo> mDbMetaInfo;
};

#pragma once

#include "OvData.h"
#include "OvVolume.h"
#include "OvVolumeContent.h"

/// The volume of a series of images.
///
/// Its content may have been read in any thread; the volume itself is of the GUI thread. Pixels may still be
/// on their way.
class OvImageVolume : public OvVolume, private OvData
{
public:
    /// \a inContent must not be null.
    explicit OvImageVolume(std::shared_ptr<OvVolumeContent> inContent);

    OvVolumeContent& content() const { return *mContent; }
    const std::shared_ptr<OvVolumeContent>& sharedContent() const { return mContent; }

    /// Channel 0; null when there are no images.
    OvData* data(unsigned int inIndex) override;
    int imageCount() const override { return mContent->count(); }
    const Ovg::DicomHeader* header(int inImage) const override;

protected:
    ~OvImageVolume() override;

private:
    /// Columns and rows are the largest of all images: those of a volume are all alike.
    void dimensions(int& outColumns, int& outRows, int& outImages) const override;

    const std::shared_ptr<OvVolumeContent> mContent;
};

#include "OvImageVolume.h"

#include <ovwebservice/DicomHeader.h>

namespace {

/// The study and the series of the first image, null when there is none.
std::unique_ptr<OvDBMetaInfo> metaInfoOf(const OvVolumeContent& inContent)
{
    if (inContent.count() == 0)
        return nullptr;
    const Ovg::DicomHeader& header = *inContent.image(0).header;
    const auto text = [&](unsigned short inElement) {
        return RnString(header.value({0x0020, inElement}).toString().toLatin1().toStdString());
    };
    return std::make_unique<OvDBMetaInfo>(OvDBMetaInfo{text(0x000D), text(0x000E)});
}

} // namespace

OvImageVolume::OvImageVolume(std::shared_ptr<OvVolumeContent> inContent)
    : OvVolume(metaInfoOf(*inContent))
    , mContent(std::move(inContent))
{}

OvImageVolume::~OvImageVolume() = default;

OvData* OvImageVolume::data(unsigned int inIndex)
{
    return inIndex == 0 && mContent->count() > 0 ? this : nullptr;
}

const Ovg::DicomHeader* OvImageVolume::header(int inImage) const
{
    const bool known = inImage >= 0 && inImage < imageCount();
    return known ? mContent->image(inImage).header.get() : nullptr;
}

void OvImageVolume::dimensions(int& outColumns, int& outRows, int& outImages) const
{
    outColumns = mContent->columns();
    outRows = mContent->rows();
    outImages = mContent->count();
}

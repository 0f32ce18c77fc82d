#pragma once

#include <rnlib/RnHandle.h>

#include <string>
#include <utility>

namespace Ky {

/// The id that a hanging protocol gives a set of images, bytes in Latin-1. A value.
class ImageSetID
{
public:
    ImageSetID() = default;
    explicit ImageSetID(std::string inText)
        : mText(std::move(inText))
    {}

    operator const std::string&() const { return mText; }

private:
    std::string mText;
};

} // namespace Ky

/// The images of one series as a viewer shows them, or a part of them.
///
/// Made by the host for its viewers and held by handles. Nothing changes after construction.
class OvImageSeries : public RnHandable
{
public:
    explicit OvImageSeries(Ky::ImageSetID inProtocolImageSetId)
        : mProtocolImageSetId(std::move(inProtocolImageSetId))
    {}

    /// The id by which the hanging protocol knows the images; empty when it doesn't.
    const Ky::ImageSetID& protocolImageSetId() const { return mProtocolImageSetId; }

protected:
    ~OvImageSeries() override = default;

private:
    const Ky::ImageSetID mProtocolImageSetId;
};

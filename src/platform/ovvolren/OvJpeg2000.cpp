#include "OvJpeg2000.h"

#include "OvTexts.h"

#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

/// The code as a stream of the library.
struct Source
{
    const std::vector<unsigned char>& code;
    std::size_t place = 0;
};

OPJ_SIZE_T readSome(void* outBuffer, OPJ_SIZE_T inCount, void* ioSource)
{
    auto* source = static_cast<Source*>(ioSource);
    const std::size_t count = std::min<std::size_t>(inCount, source->code.size() - source->place);
    if (count == 0)
        return static_cast<OPJ_SIZE_T>(-1);
    std::memcpy(outBuffer, source->code.data() + source->place, count);
    source->place += count;
    return count;
}

OPJ_OFF_T skip(OPJ_OFF_T inCount, void* ioSource)
{
    auto* source = static_cast<Source*>(ioSource);
    const auto left = static_cast<OPJ_OFF_T>(source->code.size() - source->place);
    const OPJ_OFF_T count = std::clamp<OPJ_OFF_T>(inCount, -static_cast<OPJ_OFF_T>(source->place), left);
    source->place = static_cast<std::size_t>(static_cast<OPJ_OFF_T>(source->place) + count);
    return count;
}

OPJ_BOOL seek(OPJ_OFF_T inPlace, void* ioSource)
{
    auto* source = static_cast<Source*>(ioSource);
    if (inPlace < 0 || static_cast<std::size_t>(inPlace) > source->code.size())
        return OPJ_FALSE;
    source->place = static_cast<std::size_t>(inPlace);
    return OPJ_TRUE;
}

// The library's codecs and streams have one type, a pointer to nothing in particular.
struct CodecDeleter
{
    void operator()(opj_codec_t* inCodec) const { opj_destroy_codec(inCodec); }
};
struct StreamDeleter
{
    void operator()(opj_stream_t* inStream) const { opj_stream_destroy(inStream); }
};
struct ImageDeleter
{
    void operator()(opj_image_t* inImage) const { opj_image_destroy(inImage); }
};

using Codec = std::unique_ptr<opj_codec_t, CodecDeleter>;
using Stream = std::unique_ptr<opj_stream_t, StreamDeleter>;
using Image = std::unique_ptr<opj_image_t, ImageDeleter>;

Stream streamOf(Source& ioSource)
{
    Stream stream(opj_stream_default_create(OPJ_TRUE));
    opj_stream_set_user_data(stream.get(), &ioSource, nullptr);
    opj_stream_set_user_data_length(stream.get(), ioSource.code.size());
    opj_stream_set_read_function(stream.get(), readSome);
    opj_stream_set_skip_function(stream.get(), skip);
    opj_stream_set_seek_function(stream.get(), seek);
    return stream;
}

/// Some writers put the whole file format around the code stream, against the standard.
bool isWholeFile(const std::vector<unsigned char>& inCode)
{
    constexpr unsigned char signature[] = {0, 0, 0, 12, 'j', 'P', ' ', ' '};
    return inCode.size() >= sizeof signature &&
           std::equal(std::begin(signature), std::end(signature), inCode.begin());
}

/// Whether the image is as large as expected, all of its components alike.
bool isAsExpected(const opj_image_t& inImage, const OvJpeg2000& inExpected)
{
    const auto isAlike = [&](const opj_image_comp_t& inComponent) {
        return inComponent.dx == 1 && inComponent.dy == 1 && inComponent.prec == inImage.comps[0].prec &&
               inComponent.prec >= 1 && inComponent.prec <= 31;
    };
    return inImage.x1 > inImage.x0 && inImage.y1 > inImage.y0 &&
           inImage.x1 - inImage.x0 == static_cast<OPJ_UINT32>(inExpected.columns) &&
           inImage.y1 - inImage.y0 == static_cast<OPJ_UINT32>(inExpected.rows) &&
           inImage.numcomps == static_cast<OPJ_UINT32>(inExpected.components) &&
           std::all_of(inImage.comps, inImage.comps + inImage.numcomps, isAlike);
}

bool hasColourTransform(opj_codec_t* ioCodec)
{
    opj_codestream_info_v2_t* info = opj_get_cstr_info(ioCodec);
    const bool transform = info && info->m_default_tile_info.mct != 0;
    opj_destroy_cstr_info(&info);
    return transform;
}

} // namespace

bool OvJpeg2000::decode(const std::vector<unsigned char>& inCode, QString& outProblem)
{
    Source source{inCode};
    const Stream stream = streamOf(source);
    const Codec codec(opj_create_decompress(isWholeFile(inCode) ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);

    opj_image_t* raw = nullptr;
    const bool begun =
        opj_setup_decoder(codec.get(), &parameters) && opj_read_header(stream.get(), codec.get(), &raw);
    const Image image(raw);
    if (begun && !isAsExpected(*image, *this)) {
        outProblem = OvTexts::tr("its pixels describe another image than its header");
        return false;
    }
    if (!begun || !opj_decode(codec.get(), stream.get(), image.get())) {
        outProblem = OvTexts::tr("its pixels cannot be decoded (damaged)");
        return false;
    }

    bits = int(image->comps[0].prec);
    isRgb = hasColourTransform(codec.get());
    const std::size_t count = std::size_t(columns) * std::size_t(rows);
    values.resize(count * std::size_t(components));
    for (std::size_t c = 0; c < std::size_t(components); ++c) {
        const OPJ_INT32* const from = image->comps[c].data;
        for (std::size_t i = 0; from && i < count; ++i)
            values[i * std::size_t(components) + c] = from[i];
    }
    return true;
}

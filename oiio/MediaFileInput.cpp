#include "MediaFileInput.h"

#include "Guarded.h"
#include "ImageFormat.h"
#include "IoProxyStream.h"

#include <MediaConversion/mediafile/HeaderStreamBuilders.h>
#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>
#include <pictures/FormatChoice.h>
#include <pictures/FrameConversion.h>

#include <opencv2/imgproc.hpp>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace ZetImageIo {
namespace {

using Zentrel::FrameFormat;
using Zentrel::FullFrameFormat;
using Zentrel::IImageFrame;

/// What the library decodes a format of media files to.
FrameFormat decodedFormat(const FrameFormat& format) {
    const bool alpha = ZetTool::holdsAlpha(format);
    if (ZetTool::bitsOf(format) == 8)
        return alpha ? FullFrameFormat::RGBA_U8() : FullFrameFormat::RGB_U8();
    return alpha ? FullFrameFormat::BGRA_F32() : FullFrameFormat::RGB_U16();
}

OIIO::TypeDesc sampleType(const FrameFormat& decoded) {
    switch (decoded.channelType) {
    case Zentrel::ChannelType::U8:
        return OIIO::TypeUInt8;
    case Zentrel::ChannelType::U16:
        return OIIO::TypeUInt16;
    default:
        return OIIO::TypeFloat;
    }
}

/// Of colour space and alpha nothing is in the file.
OIIO::ImageSpec specOf(const MediaConversion::ZentrelMediaFileInfo& info, OIIO::string_view colourSpace,
                       bool straight) {
    const FrameFormat& format = info.format;
    OIIO::ImageSpec spec(info.width, info.height, ZetTool::holdsAlpha(format) ? 4 : 3,
                         sampleType(decodedFormat(format)));
    spec.attribute("oiio:ColorSpace", colourSpace);
    if (straight && spec.nchannels == 4)
        spec.attribute("oiio:UnassociatedAlpha", 1);
    spec.attribute("oiio:BitsPerSample", ZetTool::bitsOf(format));
    spec.attribute("zet:format", ZetTool::closestOutputFormat(format).shortName);
    spec.attribute("zet:pixelFormat", FrameFormat::toString(format));
    return spec;
}

std::unique_ptr<IImageFrame> decode(std::unique_ptr<IImageFrame> frame) {
    const FrameFormat format = decodedFormat(frame->format());
    auto decoded = ZetTool::convertFrame(std::move(frame), format);
    if (decoded->format() == FullFrameFormat::BGRA_F32()) {
        cv::Mat matrix = decoded->image();
        cv::cvtColor(matrix, matrix, cv::COLOR_BGRA2RGBA);
    }
    return decoded;
}

} // namespace

const char* MediaFileInput::format_name() const { return formatName; }

int MediaFileInput::supports(OIIO::string_view feature) const { return feature == "ioproxy"; }

bool MediaFileInput::valid_file(const std::string& name) const {
    constexpr auto magic = MediaConversion::ZentrelHeaderStreamBuilder::mediaFileMagic;
    if (std::error_code error; !std::filesystem::is_regular_file(name, error)) // a pipe would keep us waiting
        return false;
    std::array<char, magic.size()> start{};
    std::ifstream(name, std::ios::binary).read(start.data(), start.size());
    return std::memcmp(start.data(), magic.data(), magic.size()) == 0;
}

bool MediaFileInput::open(const std::string& name, OIIO::ImageSpec& spec) { return open(name, spec, {}); }

bool MediaFileInput::open(const std::string& name, OIIO::ImageSpec& spec, const OIIO::ImageSpec& hints) {
    return guarded(*this, [&] {
        ioproxy_retrieve_from_config(hints);
        StreamFactory streams(ioproxy());
        m_spec = specOf(MediaConversion::ZentrelMediaFileReader(streams).readInfo(name),
                        hints.get_string_attribute("oiio:ColorSpace", "sRGB"),
                        hints.get_int_attribute("oiio:UnassociatedAlpha") != 0);
        file = name;
        pixels.reset();
        spec = m_spec;
    });
}

std::unique_ptr<IImageFrame> MediaFileInput::readPixels() {
    StreamFactory streams(ioproxy());
    auto decoded = decode(MediaConversion::ZentrelMediaFileReader(streams).readFrame(file));
    const cv::Mat image = decoded->image();
    if (image.size() != cv::Size(m_spec.width, m_spec.height) || image.elemSize() != m_spec.pixel_bytes(true))
        throw std::runtime_error(file + ": was replaced by another picture after it had been opened");
    return decoded;
}

bool MediaFileInput::close() {
    pixels.reset();
    ioproxy_clear();
    return true;
}

bool MediaFileInput::read_native_scanline(int subimage, int miplevel, int y, int z, void* data) {
    const lock_guard lock(*this);
    if (!seek_subimage(subimage, miplevel) || z != m_spec.z || y < m_spec.y || y >= m_spec.y + m_spec.height)
        return false;
    return guarded(*this, [&] {
        if (!pixels)
            pixels = readPixels();
        std::memcpy(data, pixels->image().ptr(y - m_spec.y), m_spec.scanline_bytes(true));
    });
}

} // namespace ZetImageIo

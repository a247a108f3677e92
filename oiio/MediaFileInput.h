// Media files as OpenImageIO reads them.
#pragma once

#include <MediaConversion/MediaPipeline/Frame.h>

#include <OpenImageIO/imageio.h>

#include <memory>
#include <string>

namespace ZetImageIo {

/// Samples of 8-bit formats come as 8 bits, deeper ones as 16 and those of the hybrid format as floats, in
/// the order R, G, B and, where the format has one, A. They come as they are in the file; what colour space
/// they are in, no file tells: it is that of the hint "oiio:ColorSpace" or else sRGB.
class MediaFileInput final : public OIIO::ImageInput {
public:
    ~MediaFileInput() override { close(); }

    const char* format_name() const override;
    int supports(OIIO::string_view feature) const override;
    /// Tells by the first four bytes.
    bool valid_file(const std::string& name) const override;

    /// Checks the headers and the length of the file; its pixels are decoded when the first are asked for.
    bool open(const std::string& name, OIIO::ImageSpec& spec) override;
    bool open(const std::string& name, OIIO::ImageSpec& spec, const OIIO::ImageSpec& hints) override;
    bool close() override;
    bool read_native_scanline(int subimage, int miplevel, int y, int z, void* data) override;

private:
    std::unique_ptr<Zentrel::IImageFrame> readPixels();

    std::string file;
    std::unique_ptr<Zentrel::IImageFrame> pixels;
};

} // namespace ZetImageIo

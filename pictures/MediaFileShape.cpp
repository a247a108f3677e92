#include "MediaFileShape.h"

#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <fmt/format.h>

#include <fstream>
#include <limits>
#include <stdexcept>

namespace ZetTool {
namespace {

void checkSides(const PictureSize& size) {
    constexpr int longest = std::numeric_limits<std::uint16_t>::max();
    if (size.width > longest || size.height > longest)
        throw std::runtime_error(fmt::format("{} is too large: a media file holds at most {} pixels a side",
                                             size.text(), longest));
}

void checkBlocks(const OutputFormat& output, const PixelPacking::Pixels& block, const PictureSize& size) {
    const auto rounded = [&](bool up) {
        const auto side = [up](int pixels, std::uint32_t blockSide) {
            const int step = static_cast<int>(blockSide);
            return (up ? pixels + step - 1 : pixels) / step * step;
        };
        return PictureSize{side(size.width, block.columns), side(size.height, block.rows)};
    };
    const PictureSize smaller = rounded(false);
    const PictureSize larger = rounded(true);
    if (smaller == size)
        return;
    const bool fits = smaller.width > 0 && smaller.height > 0;
    throw std::runtime_error(fmt::format(
        "\"{}\" stores blocks of {}x{} pixels, which do not divide a picture of {}; {}{} would do",
        output.label, block.columns, block.rows, size.text(), fits ? smaller.text() + " or " : "",
        larger.text()));
}

} // namespace

MediaFileShape::MediaFileShape(const OutputFormat& output, const PictureSize& size) : pictureSize(size) {
    const Zentrel::FrameFormat format = output.format();
    const PixelPacking::Pixels block = format.pixelPacking.pixels();
    checkSides(size);
    checkBlocks(output, block, size);
    headers = MediaConversion::ZentrelMediaFileWriter::headers(format, size.width, size.height);
    const std::uint64_t elements = std::uint64_t{static_cast<std::uint32_t>(size.width)} / block.columns *
                                   (static_cast<std::uint32_t>(size.height) / block.rows);
    length = headers.size() + elements * format.pixelPacking.bytes();
}

bool MediaFileShape::matches(const std::filesystem::path& file) const {
    std::error_code error;
    if (std::filesystem::file_size(file, error) != length || error)
        return false;
    std::string start(headers.size(), '\0');
    std::ifstream(file, std::ios::binary).read(start.data(), static_cast<std::streamsize>(start.size()));
    return start == headers;
}

} // namespace ZetTool

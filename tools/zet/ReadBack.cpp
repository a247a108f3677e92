#include "ReadBack.h"

#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>

#include <fmt/format.h>
#include <pictures/DisplayedPicture.h>
#include <pictures/FrameConversion.h>

#include <algorithm>
#include <stdexcept>

namespace ZetTool {
namespace {

using EmbeddedHost::RenderSettings;
using Zentrel::IImageFrame;

void requireSame(const IImageFrame& found, const IImageFrame& expected) {
    if (found.format() != expected.format() || found.rows() != expected.rows() ||
        found.cols() != expected.cols())
        throw std::runtime_error(
            fmt::format("it holds {}x{} pixels of {}, expected {}x{} of {}", found.cols(), found.rows(),
                        Zentrel::FrameFormat::toString(found.format()), expected.cols(), expected.rows(),
                        Zentrel::FrameFormat::toString(expected.format())));
    const cv::Mat is = found.image();
    const cv::Mat shouldBe = expected.image();
    const std::size_t rowBytes = is.elemSize() * static_cast<std::size_t>(is.cols);
    for (int row = 0; row < is.rows; ++row) {
        const std::uint8_t* const bytes = is.ptr(row);
        const auto [at, wanted] = std::mismatch(bytes, bytes + rowBytes, shouldBe.ptr(row));
        if (at != bytes + rowBytes)
            throw std::runtime_error(fmt::format("the pixel byte at offset {} is 0x{:02X}, expected 0x{:02X}",
                                                 found.rawFrameData().pixelDataOffset().value +
                                                     static_cast<std::uint64_t>(at - is.ptr(0)),
                                                 *at, *wanted));
    }
}

} // namespace

FileSum verifyFile(const std::filesystem::path& file, Picture& picture, const RenderSettings& settings,
                   const OutputFormat& output) {
    MediaConversion::FileStreamFactory streams;
    const auto found = MediaConversion::ZentrelMediaFileReader(streams).readFrame(file);
    const auto expected = convertFrame(displayedFrame(picture, settings), output.format());
    requireSame(*found, *expected);
    const MemoryAccess& wholeFile = found->rawFrameData().rawData();
    return sumBytes(wholeFile.data(), wholeFile.dataSize());
}

} // namespace ZetTool

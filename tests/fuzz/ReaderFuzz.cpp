// Any bytes at all as a media file: they are refused with a reason, the same for headers and frame, or they
// are a file that the writer would write.
#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>
#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <tests/MediaConversion/mediafile/MemoryFile.h>
#include <tests/fuzz/Require.h>

#include <optional>

using namespace MediaConversion;
using TestSupport::MemoryFile;

namespace {

template <class Read>
std::string refusalOf(Read const& read) {
    try {
        read();
        return {};
    } catch (MediaFileAccessException const& exception) {
        require(*exception.what() != 0, "a refusal has a reason");
        return exception.what();
    }
}

void requireWritesTheSame(MemoryFile const& file, ZentrelMediaFileInfo const& info,
                          std::unique_ptr<Zentrel::IImageFrame> frame) {
    require(frame->cols() == info.width && frame->rows() == info.height && frame->format() == info.format,
            "the frame is what the headers say");
    MemoryFile copy;
    ZentrelMediaFileWriter(copy).writeFrame("copy", std::move(frame));
    auto const offset = static_cast<std::ptrdiff_t>(info.pixelOffset);
    require(
        std::equal(copy.bytes.begin() + 28, copy.bytes.end(), file.bytes.begin() + offset, file.bytes.end()),
        "the pixels are written as they were read");
    // All but the versions, of which the writer has one.
    require(std::equal(copy.bytes.begin(), copy.bytes.begin() + 6, file.bytes.begin()) &&
                std::equal(copy.bytes.begin() + 8, copy.bytes.begin() + 20, file.bytes.begin() + 8) &&
                std::equal(copy.bytes.begin() + 20, copy.bytes.begin() + 28, file.bytes.begin() + offset - 8),
            "the headers are written as they were read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    MemoryFile file({data, data + size});
    ZentrelMediaFileReader reader(file);
    std::optional<ZentrelMediaFileInfo> info;
    std::unique_ptr<Zentrel::IImageFrame> frame;
    auto const refusal = refusalOf([&] { info.emplace(reader.readInfo("input")); });
    require(refusalOf([&] { frame = reader.readFrame("input"); }) == refusal,
            "headers and frame are judged alike");
    if (refusal.empty())
        requireWritesTheSame(file, *info, std::move(frame));
    return 0;
}

// Reads media files, whoever wrote them, and checks everything that they say of themselves.
#pragma once

#include <MediaConversion/MediaPipeline/Frame.h>
#include <MediaConversion/mediafile/Exceptions.h>
#include <MediaConversion/mediafile/FileStream.h>

#include <cstdint>
#include <filesystem>
#include <memory>

namespace MediaConversion {

/// What a media file says of itself, and what follows from it.
struct ZentrelMediaFileInfo {
    std::uint8_t frameCount;
    std::uint8_t targetFrameCount;
    std::uint8_t majorVersion;
    std::uint8_t minorVersion;
    std::uint32_t mediaFormat;   ///< the format's bits as they stand in the file
    Zentrel::FrameFormat format; ///< what they mean
    int width;                   ///< in pixels
    int height;
    std::uint16_t frameFlags;
    std::uint64_t pixelOffset; ///< bytes of all headers
    std::uint64_t fileBytes;   ///< length of the file
};

/// Takes only files that are right in every field: one frame, a format that the writer writes, sizes that are
/// whole blocks and agree between both headers, zero in everything reserved, frame flags of 1 and exactly the
/// pixels that the sizes ask for, at most 2147483647 bytes of them. Any version from 1.0 on will do.
///
/// Every fault of a file or its stream is a MediaFileAccessException that carries the path, and a text that
/// names where in the file it is, what stands there and what was expected. Nothing that a file says makes the
/// reader allocate more than the file's own length. What the operating system knows under the path as a
/// folder, device or pipe is refused without being opened.
class ZentrelMediaFileReader {
public:
    /// The factory must outlive the reader.
    explicit ZentrelMediaFileReader(IFileStreamFactory& factory) : factory(factory) {}

    /// Checks the headers and the file's length without reading the pixels.
    ZentrelMediaFileInfo readInfo(std::filesystem::path const& path);

    /// Checks the file and reads it whole, into one block of memory that the frame, full or packed, keeps
    /// (`rawFrameData`): its pixels are that block from the headers' end on. The frame may outlive the
    /// reader. The memory comes from a pool that all readers of the process share.
    std::unique_ptr<Zentrel::IImageFrame> readFrame(std::filesystem::path const& path);

private:
    IFileStreamFactory& factory;
};

} // namespace MediaConversion

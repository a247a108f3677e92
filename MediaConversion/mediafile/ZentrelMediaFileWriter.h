// Writes media files, one frame each.
#pragma once

#include <MediaConversion/MediaPipeline/Frame.h>
#include <MediaConversion/mediafile/Exceptions.h>
#include <MediaConversion/mediafile/FileStream.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace MediaConversion {

/// A file is a file header, a frame header (HeaderStreamBuilders.h has both) and the frame's matrix, row by
/// row from the top without padding.
class ZentrelMediaFileWriter {
public:
    /// The media format field of each format that can be written.
    static const std::map<Zentrel::FrameFormat, std::uint32_t> mediaHeaderFormat;

    /// The factory must outlive the writer.
    explicit ZentrelMediaFileWriter(IFileStreamFactory& factory) : factory(factory) {}

    /// Throws InternalException for a format that cannot be written.
    static std::uint32_t ZentrelMediaHeaderFormatBitMask(Zentrel::FrameFormat const& format);

    /// The bytes before the pixels: both headers of a file with one picture of this size, stored modulo
    /// 65536. Throws InternalException for a format that cannot be written.
    static std::string headers(Zentrel::FrameFormat const& format, int columns, int rows);

    /// Writes the whole file, over an existing one, which is emptied first. Throws MediaFileAccessException,
    /// which carries the path, for everything that fails; what has been written by then stays behind. Width
    /// and height are stored modulo 65536: of a larger picture no reader can make sense.
    void writeFrame(std::filesystem::path const& path, std::unique_ptr<Zentrel::IFrame> frame);
    void writeFrame(std::string const& path, std::unique_ptr<Zentrel::IFrame> frame);
    void writeFrame(const char* path, std::unique_ptr<Zentrel::IFrame> frame);
    /// Takes the path as UTF-8, whatever the locale. Throws std::filesystem::filesystem_error for characters
    /// that are not Unicode's.
    void writeFrame(std::wstring const& path, std::unique_ptr<Zentrel::IFrame> frame);
    void writeFrame(const wchar_t* path, std::unique_ptr<Zentrel::IFrame> frame);

private:
    IFileStreamFactory& factory;
};

} // namespace MediaConversion

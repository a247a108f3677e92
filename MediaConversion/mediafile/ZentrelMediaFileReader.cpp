#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>

#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/mediafile/HeaderStreamBuilders.h>
#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <algorithm>
#include <array>
#include <limits>

namespace MediaConversion {

using Zentrel::FrameFormat;

namespace {

/// The most that the writer writes.
constexpr std::uint64_t maxPixelBytes = std::numeric_limits<std::int32_t>::max();

constexpr std::uint64_t fileHeaderBytes(unsigned majorVersion) { return majorVersion < 2 ? 20 : 40; }
constexpr std::uint64_t frameHeaderBytes = 8;
constexpr std::uint64_t minHeaderBytes = fileHeaderBytes(1) + frameHeaderBytes;
constexpr std::uint64_t maxHeaderBytes = fileHeaderBytes(2) + frameHeaderBytes;

std::string bytesText(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

// ---- The stream ----

/// Opening a pipe waits for somebody to write to it, and devices have no length.
void requireRegularFile(std::filesystem::path const& path) {
    std::error_code unreadable; // the stream will tell, and it need not be one of the file system
    auto const status = std::filesystem::status(path, unreadable);
    if (std::filesystem::is_directory(status))
        throw InternalException("Expected a file, not a folder");
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw InternalException("Expected a file, not a device, pipe or socket");
}

/// A file opened for reading. Whatever the stream fails at is an exception.
class OpenedFile {
public:
    OpenedFile(IFileStreamFactory& factory, std::filesystem::path const& path) : stream(factory.create()) {
        requireRegularFile(path);
        stream->open(path, std::ios_base::in | std::ios_base::binary);
        if (!stream->is_open())
            throw InternalException("Failed to open file");
    }

    std::uint64_t length() {
        stream->seekg(0, std::ios_base::end);
        std::streamoff const end = stream->fail() ? -1 : std::streamoff{stream->tellg()};
        if (end < 0)
            throw InternalException("Failed to find out the file's length");
        return static_cast<std::uint64_t>(end);
    }

    /// Reads from the file's beginning.
    void read(std::uint8_t* bytes, std::uint64_t count) {
        stream->seekg(std::streampos(0));
        if (stream->fail())
            throw InternalException("Failed to go to the file's beginning");
        stream->read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count));
        if (stream->fail() || stream->gcount() != static_cast<std::streamsize>(count))
            throw InternalException("Failed to read file, got " + std::to_string(stream->gcount()) + " of " +
                                    bytesText(count));
    }

private:
    std::unique_ptr<IFileStream> stream;
};

// ---- The headers ----

std::string hex(std::uint32_t value, int digits) {
    std::string text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[value >> shift & 0xF];
    return text;
}

template <class Bytes>
std::string magicText(Bytes const& bytes) {
    return hex(bytes[0], 2) + " " + hex(bytes[1], 2) + " " + hex(bytes[2], 2) + " " + hex(bytes[3], 2);
}

[[noreturn]] void refuse(std::string const& field, std::uint64_t offset, std::string const& value,
                         std::string const& expected) {
    throw InternalException(field + " at offset " + std::to_string(offset) + " is " + value + ", expected " +
                            expected);
}

/// Both headers, as far as the file goes.
class Headers {
public:
    std::uint8_t* data() { return bytes.data(); }

    template <class Unsigned>
    Unsigned get(std::uint64_t offset) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < sizeof(Unsigned); ++i)
            value |= std::uint64_t{bytes.at(offset + i)} << 8 * i;
        return static_cast<Unsigned>(value);
    }

    /// `reason` follows the expected value in the error's text.
    template <class Unsigned>
    void require(const char* field, std::uint64_t offset, Unsigned expected, const char* reason = "") const {
        auto const value = get<Unsigned>(offset);
        if (value != expected)
            refuse(field, offset, std::to_string(value), std::to_string(expected) + reason);
    }

    void requireMagic() const {
        auto const& magic = ZentrelHeaderStreamBuilder::mediaFileMagic;
        if (!std::equal(magic.begin(), magic.end(), bytes.begin()))
            refuse("Magic", 0, magicText(bytes), magicText(magic) + ", \"9zt \"");
    }

private:
    std::array<std::uint8_t, maxHeaderBytes> bytes{};
};

FrameFormat formatOf(std::uint32_t mediaFormat) {
    auto const& formats = ZentrelMediaFileWriter::mediaHeaderFormat;
    for (auto const& [format, bits] : formats)
        if (bits == mediaFormat)
            return format;
    std::string known;
    for (auto const& [format, bits] : formats)
        known += " 0x" + hex(bits, 8);
    refuse("Media format", 8, "0x" + hex(mediaFormat, 8), "one of" + known);
}

void requireHeaderBytes(std::uint64_t fileBytes, std::uint64_t expected) {
    if (fileBytes < expected)
        throw InternalException("File of " + bytesText(fileBytes) +
                                " is too short for its headers, expected " + std::to_string(expected) +
                                " or more");
}

void checkFileHeader(Headers const& headers) {
    headers.requireMagic();
    headers.require<std::uint8_t>("Frame count", 4, 1);
    headers.require<std::uint8_t>("Target frame count", 5, 1);
    if (headers.get<std::uint8_t>(6) == 0)
        refuse("Major version", 6, "0", "1 or more");
}

/// What is not zero here means something that this reader does not know, perhaps larger sizes: the words
/// stand where the upper halves of width and height would.
void checkReserved(Headers const& headers, std::uint64_t frameHeader) {
    headers.require<std::uint16_t>("Reserved word", 14, 0);
    headers.require<std::uint16_t>("Reserved word", 18, 0);
    for (std::uint64_t offset = fileHeaderBytes(1); offset < frameHeader; offset += 2)
        headers.require<std::uint16_t>("Reserved word", offset, 0);
    headers.require<std::uint16_t>("Reserved word", frameHeader + 6, 0);
}

void checkFrameHeader(Headers const& headers, std::uint64_t frameHeader) {
    constexpr const char* reason = " as in the file header";
    headers.require("Frame width", frameHeader, headers.get<std::uint16_t>(12), reason);
    headers.require<std::uint16_t>("Frame flag word", frameHeader + 2, 1);
    headers.require("Frame height", frameHeader + 4, headers.get<std::uint16_t>(16), reason);
}

// ---- The sizes ----

std::uint64_t pixelBytes(FrameFormat const& format, std::uint64_t width, std::uint64_t height) {
    auto const block = format.pixelPacking.pixels();
    return (width / block.columns) * (height / block.rows) * format.pixelPacking.bytes();
}

std::string pictureText(FrameFormat const& format, std::uint64_t width, std::uint64_t height) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels of " +
           FrameFormat::toString(format);
}

/// The headers hold sizes modulo 65536. Names the sizes above that whose pixels have the length that is in
/// the file, if there are any; the widest ones, since pictures for walls of screens grow in width.
std::string truncationHint(ZentrelMediaFileInfo const& info) {
    constexpr std::uint64_t modulus = 65536; // a multiple of every block
    std::uint64_t const bytes = info.fileBytes - info.pixelOffset;
    if (bytes > maxPixelBytes)
        return {};
    std::uint64_t const blockColumns = info.format.pixelPacking.pixels().columns;
    for (auto height = static_cast<std::uint64_t>(info.height);; height += modulus) {
        std::uint64_t const columnBytes = pixelBytes(info.format, blockColumns, height);
        if (columnBytes > bytes)
            return {};
        if (columnBytes == 0 || bytes % columnBytes != 0)
            continue;
        std::uint64_t const width = bytes / columnBytes * blockColumns;
        if (width % modulus == static_cast<std::uint64_t>(info.width))
            return "; the file has the length of " + pictureText(info.format, width, height) +
                   ", sizes that do not fit the headers' 16 bits";
    }
}

void checkSize(const char* field, std::uint64_t offset, int size, std::uint32_t block,
               ZentrelMediaFileInfo const& info) {
    if (size == 0)
        refuse(field, offset, "0", "1 or more" + truncationHint(info));
    if (static_cast<std::uint32_t>(size) % block != 0)
        refuse(field, offset, std::to_string(size),
               "a multiple of " + std::to_string(block) + " for " + FrameFormat::toString(info.format));
}

void checkLength(ZentrelMediaFileInfo const& info) {
    auto const width = static_cast<std::uint64_t>(info.width),
               height = static_cast<std::uint64_t>(info.height);
    std::uint64_t const pixels = pixelBytes(info.format, width, height);
    std::uint64_t const expected = info.pixelOffset + pixels;
    std::string const expectation = ", expected " + bytesText(expected) + " for " +
                                    pictureText(info.format, width, height) + " from offset " +
                                    std::to_string(info.pixelOffset);
    if (info.fileBytes < expected)
        throw InternalException("File of " + bytesText(info.fileBytes) + " is " +
                                bytesText(expected - info.fileBytes) + " too short" + expectation);
    if (info.fileBytes > expected)
        throw InternalException("File of " + bytesText(info.fileBytes) + " is " +
                                bytesText(info.fileBytes - expected) + " too long" + expectation +
                                truncationHint(info));
    if (pixels > maxPixelBytes)
        throw InternalException("Pixels of " + bytesText(pixels) + " are too large, expected at most " +
                                std::to_string(maxPixelBytes));
}

ZentrelMediaFileInfo readInfoFrom(OpenedFile& file) {
    std::uint64_t const fileBytes = file.length();
    requireHeaderBytes(fileBytes, minHeaderBytes);
    Headers headers;
    file.read(headers.data(), std::min(fileBytes, maxHeaderBytes));
    checkFileHeader(headers);

    std::uint64_t const frameHeader = fileHeaderBytes(headers.get<std::uint8_t>(6));
    std::uint64_t const pixelOffset = frameHeader + frameHeaderBytes;
    requireHeaderBytes(fileBytes, pixelOffset);
    ZentrelMediaFileInfo const info{headers.get<std::uint8_t>(4),
                                    headers.get<std::uint8_t>(5),
                                    headers.get<std::uint8_t>(6),
                                    headers.get<std::uint8_t>(7),
                                    headers.get<std::uint32_t>(8),
                                    formatOf(headers.get<std::uint32_t>(8)),
                                    headers.get<std::uint16_t>(12),
                                    headers.get<std::uint16_t>(16),
                                    headers.get<std::uint16_t>(frameHeader + 2),
                                    pixelOffset,
                                    fileBytes};
    checkReserved(headers, frameHeader);
    checkFrameHeader(headers, frameHeader);
    auto const block = info.format.pixelPacking.pixels();
    checkSize("Width", 12, info.width, block.columns, info);
    checkSize("Height", 16, info.height, block.rows, info);
    checkLength(info);
    return info;
}

// ---- The frame ----

/// Frames refer to the pool of their memory, and nobody can tell when the last of them is gone. The pool of
/// all frames may be replaced before that; this one is never destroyed.
IMemoryPool& pool() {
    static auto* const framesOutliveIt = new SelfPruningMemoryPool<HostMemoryResource, true>(3);
    return *framesOutliveIt;
}

std::unique_ptr<Zentrel::IImageFrame> readFrameFrom(OpenedFile& file) {
    ZentrelMediaFileInfo const info = readInfoFrom(file);
    auto wholeFile = std::make_unique<MemoryAccess>(pool(), info.fileBytes);
    file.read(wholeFile->data(), info.fileBytes);
    auto pixels =
        std::make_unique<RawFrameData>(std::move(wholeFile), RawFrameData::Offset{info.pixelOffset});
    if (Zentrel::FullFrame::is(info.format))
        return Zentrel::FullFrame::createRaw(info.format, info.height, info.width, std::move(pixels));
    return Zentrel::PackedFrame::createRaw(info.format, info.height, info.width, std::move(pixels));
}

/// Does `read` with the opened file and tells of every failure with its path.
template <class Read>
auto withFile(IFileStreamFactory& factory, std::filesystem::path const& path, Read const& read) {
    try {
        OpenedFile file(factory, path);
        return read(file);
    } catch (std::exception const& reason) {
        throw MediaFileAccessException(path.string(), reason.what());
    }
}

} // namespace

ZentrelMediaFileInfo ZentrelMediaFileReader::readInfo(std::filesystem::path const& path) {
    return withFile(factory, path, readInfoFrom);
}

std::unique_ptr<Zentrel::IImageFrame> ZentrelMediaFileReader::readFrame(std::filesystem::path const& path) {
    return withFile(factory, path, readFrameFrom);
}

} // namespace MediaConversion

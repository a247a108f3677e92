#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <MediaConversion/mediafile/HeaderStreamBuilders.h>

#include <limits>
#include <system_error>

namespace MediaConversion {

using Zentrel::FrameFormat;
using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

// clang-format off
const std::map<FrameFormat, std::uint32_t> ZentrelMediaFileWriter::mediaHeaderFormat{
    {F::RGB_U8(),                               0x00000200},
    {F::BGR_U8(),                               0x00000202},
    {F::RGBA_U8(),                              0x00000204},
    {F::BGRA_U8(),                              0x00000206},
    {P::YCBCR_ITU_T871_YUYV_422_U8(),           0x00000008},
    {P::YCBCR_ITU_T871_9ZT_422_U10(),           0x00001108},
    {P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(),  0x0001100C},
    {P::YCBCR_ITU_T871_9ZT_420_U8(),            0x00000040},
    {P::RGB_DPX_FILLED_U10(),                   0x00001200},
    {P::BGR_DPX_FILLED_U10(),                   0x00001202},
    {P::RGB_SMPTE_2110_U12(),                   0x00010200},
    {P::BGR_SMPTE_2110_U12(),                   0x00010202},
    {P::YCOCG_DXT5_U8(),                        0x20000000},
    {P::RGB_DXT1_U8(),                          0x000083F0},
};
// clang-format on

namespace {

cv::Mat matrixOf(Zentrel::IFrame const& frame) {
    auto const* const imageFrame = dynamic_cast<Zentrel::IImageFrame const*>(&frame);
    cv::Mat const matrix = imageFrame ? imageFrame->image() : cv::Mat();
    if (!matrix.data)
        throw InternalException("No image data to write");
    return matrix;
}

/// The bytes of a matrix without gaps, as many as the file's readers can count.
std::int32_t byteCount(cv::Mat const& matrix) {
    std::uint64_t const bytes = matrix.total() * matrix.elemSize();
    if (bytes > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max()))
        throw InternalException("Image data of " + std::to_string(bytes) +
                                " bytes is too large, a media file holds at most 2147483647");
    return static_cast<std::int32_t>(bytes);
}

void checkWritten(IFileStream const& stream) {
    if (stream.fail())
        throw InternalException("Failed to write file");
}

void writeFrameUnguarded(IFileStreamFactory& factory, std::filesystem::path const& path,
                         Zentrel::IFrame const* frame) {
    if (!frame)
        throw InternalException("no frame data");
    cv::Mat matrix = matrixOf(*frame);

    std::unique_ptr<IFileStream> const stream = factory.create();
    stream->open(path, std::ios_base::out | std::ios_base::binary | std::ios_base::trunc);
    if (!stream->is_open())
        throw InternalException("Failed to open file");

    std::string const headers =
        ZentrelMediaFileWriter::headers(frame->format(), frame->cols(), frame->rows());
    std::int32_t const pixelBytes = byteCount(matrix);
    if (!matrix.isContinuous())
        matrix = matrix.clone();

    stream->write(headers.data(), static_cast<std::streamsize>(headers.size()));
    checkWritten(*stream);
    stream->write(reinterpret_cast<const char*>(matrix.data), pixelBytes);
    checkWritten(*stream);
    stream->close(); // a full disk may show only now
    checkWritten(*stream);
}

/// One character as UTF-8; empty for a number that is no character.
std::string utf8(char32_t character) {
    auto const byte = [character](unsigned prefix, unsigned shift, unsigned mask) {
        return static_cast<char>(prefix | ((character >> shift) & mask));
    };
    bool const surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < 0x80)
        return {byte(0, 0, 0x7F)};
    if (character < 0x800)
        return {byte(0xC0, 6, 0x1F), byte(0x80, 0, 0x3F)};
    if (character < 0x10000 && !surrogate)
        return {byte(0xE0, 12, 0x0F), byte(0x80, 6, 0x3F), byte(0x80, 0, 0x3F)};
    if (character >= 0x10000 && character <= 0x10FFFF)
        return {byte(0xF0, 18, 0x07), byte(0x80, 12, 0x3F), byte(0x80, 6, 0x3F), byte(0x80, 0, 0x3F)};
    return {};
}

std::string utf8(std::wstring const& text) {
    static_assert(sizeof(wchar_t) == sizeof(char32_t), "wide strings are taken to hold whole code points");
    std::string result;
    for (wchar_t const character : text) {
        std::string const bytes = utf8(static_cast<char32_t>(character));
        if (bytes.empty())
            throw std::filesystem::filesystem_error("Cannot convert character sequence",
                                                    std::make_error_code(std::errc::illegal_byte_sequence));
        result += bytes;
    }
    return result;
}

} // namespace

std::uint32_t ZentrelMediaFileWriter::ZentrelMediaHeaderFormatBitMask(FrameFormat const& format) {
    auto const found = mediaHeaderFormat.find(format);
    if (found == mediaHeaderFormat.end())
        throw InternalException("Frame writing is not supported for format " + FrameFormat::toString(format));
    return found->second;
}

std::string ZentrelMediaFileWriter::headers(FrameFormat const& format, int columns, int rows) {
    auto const width = static_cast<std::uint16_t>(columns);
    auto const height = static_cast<std::uint16_t>(rows);
    auto const file = ZentrelHeaderStreamBuilder()
                          .magicBytes(ZentrelHeaderStreamBuilder::mediaFileMagic)
                          .frameCount(1)
                          .targetFrameCount(1)
                          .majorVersion(1)
                          .minorVersion(0)
                          .mediaFormat(ZentrelMediaHeaderFormatBitMask(format))
                          .width(width)
                          .height(height)
                          .build();
    auto const frame = ZentrelFrameHeaderStreamBuilder().width(width).height(height).build();
    return file.str() + frame.str();
}

void ZentrelMediaFileWriter::writeFrame(std::filesystem::path const& path,
                                        std::unique_ptr<Zentrel::IFrame> frame) {
    try {
        writeFrameUnguarded(factory, path, frame.get());
    } catch (std::exception const& reason) {
        throw MediaFileAccessException(path.string(), reason.what());
    }
}

void ZentrelMediaFileWriter::writeFrame(std::string const& path, std::unique_ptr<Zentrel::IFrame> frame) {
    writeFrame(std::filesystem::path(path), std::move(frame));
}

void ZentrelMediaFileWriter::writeFrame(const char* path, std::unique_ptr<Zentrel::IFrame> frame) {
    writeFrame(std::filesystem::path(path), std::move(frame));
}

void ZentrelMediaFileWriter::writeFrame(std::wstring const& path, std::unique_ptr<Zentrel::IFrame> frame) {
    writeFrame(std::filesystem::path(utf8(path)), std::move(frame));
}

void ZentrelMediaFileWriter::writeFrame(const wchar_t* path, std::unique_ptr<Zentrel::IFrame> frame) {
    writeFrame(std::wstring(path), std::move(frame));
}

} // namespace MediaConversion

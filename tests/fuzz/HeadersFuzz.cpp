// Headers from their builders, and back through the reader.
#include <MediaConversion/mediafile/HeaderStreamBuilders.h>
#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>
#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <tests/MediaConversion/mediafile/MemoryFile.h>
#include <tests/fuzz/Require.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <optional>

using namespace MediaConversion;
using TestSupport::MemoryFile;

namespace {

struct Fields {
    std::uint8_t frameCount, targetFrameCount, majorVersion, minorVersion;
    std::uint32_t mediaFormat;
    std::uint16_t width, height, frameWidth, frameHeight, flags;
};

Fields fieldsFrom(FuzzedDataProvider& data) {
    auto const byte = [&] {
        return data.ConsumeBool() ? std::uint8_t{1} : data.ConsumeIntegral<std::uint8_t>();
    };
    auto const known = [&] {
        auto const& formats = ZentrelMediaFileWriter::mediaHeaderFormat;
        return std::next(formats.begin(),
                         data.ConsumeIntegralInRange<int>(0, static_cast<int>(formats.size()) - 1))
            ->second;
    };
    Fields fields{};
    fields.frameCount = byte();
    fields.targetFrameCount = byte();
    fields.majorVersion = byte();
    fields.minorVersion = byte();
    fields.mediaFormat = data.ConsumeBool() ? known() : data.ConsumeIntegral<std::uint32_t>();
    fields.width = data.ConsumeIntegral<std::uint16_t>();
    fields.height = data.ConsumeIntegral<std::uint16_t>();
    bool const alike = data.ConsumeBool();
    fields.frameWidth = alike ? fields.width : data.ConsumeIntegral<std::uint16_t>();
    fields.frameHeight = alike ? fields.height : data.ConsumeIntegral<std::uint16_t>();
    fields.flags = alike ? 1 : data.ConsumeIntegral<std::uint16_t>();
    return fields;
}

std::string headersOf(Fields const& fields) {
    return ZentrelHeaderStreamBuilder()
               .magicBytes(ZentrelHeaderStreamBuilder::mediaFileMagic)
               .frameCount(fields.frameCount)
               .targetFrameCount(fields.targetFrameCount)
               .majorVersion(fields.majorVersion)
               .minorVersion(fields.minorVersion)
               .mediaFormat(fields.mediaFormat)
               .width(fields.width)
               .height(fields.height)
               .build()
               .str() +
           ZentrelFrameHeaderStreamBuilder()
               .width(fields.frameWidth)
               .flags(fields.flags)
               .height(fields.frameHeight)
               .build()
               .str();
}

/// The bytes of the pixels, if there can be any.
std::optional<std::uint64_t> pixelBytesOf(Fields const& fields) {
    for (auto const& [format, bits] : ZentrelMediaFileWriter::mediaHeaderFormat) {
        auto const block = format.pixelPacking.pixels();
        if (bits == fields.mediaFormat && fields.width > 0 && fields.height > 0 &&
            fields.width % block.columns == 0 && fields.height % block.rows == 0)
            return std::uint64_t{fields.width} * fields.height / (block.columns * block.rows) *
                   format.pixelPacking.bytes();
    }
    return {};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    Fields const fields = fieldsFrom(data);
    std::string const headers = headersOf(fields);
    require(headers.size() == (fields.majorVersion < 2 ? 28u : 48u), "headers have their lengths");

    auto const pixels = pixelBytesOf(fields);
    bool const expected = pixels && fields.frameCount == 1 && fields.targetFrameCount == 1 &&
                          fields.majorVersion >= 1 && fields.frameWidth == fields.width &&
                          fields.frameHeight == fields.height && fields.flags == 1;
    if (pixels.value_or(0) > 1 << 16)
        return 0; // large pictures teach nothing more
    MemoryFile file({headers.begin(), headers.end()});
    file.bytes.resize(headers.size() + pixels.value_or(0));
    try {
        auto const info = ZentrelMediaFileReader(file).readInfo("file");
        require(expected, "only a right header is taken");
        require(info.majorVersion == fields.majorVersion && info.minorVersion == fields.minorVersion &&
                    info.mediaFormat == fields.mediaFormat && info.width == fields.width &&
                    info.height == fields.height && info.frameFlags == 1 &&
                    info.pixelOffset == headers.size(),
                "what was built is what is read");
    } catch (MediaFileAccessException const&) {
        require(!expected, "a right header is taken");
    }
    return 0;
}

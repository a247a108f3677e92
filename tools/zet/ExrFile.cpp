#include "ExrFile.h"

#include <MediaConversion/converters/ParallelRows.h>

#include <OpenEXR/openexr.h>
#include <opencv2/core/hal/intrin.hpp>
#include <strings.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

namespace ZetTool {
namespace {

using Byte = std::uint8_t;

/// Each byte plus all before it, modulo 256.
cv::v_uint8x16 sumsUpTo(cv::v_uint8x16 bytes) {
    bytes = cv::v_add_wrap(bytes, cv::v_rotate_left<1>(bytes));
    bytes = cv::v_add_wrap(bytes, cv::v_rotate_left<2>(bytes));
    bytes = cv::v_add_wrap(bytes, cv::v_rotate_left<4>(bytes));
    return cv::v_add_wrap(bytes, cv::v_rotate_left<8>(bytes));
}

/// Undoes what ZIP does to bytes before it compresses them. It stores the even ones and after them the odd
/// ones, each but the first as the difference to the one stored before, plus 128. There is an even number of
/// them.
void undoDifferences(const std::vector<Byte>& stored, Byte* to) {
    constexpr int vectorBytes = cv::v_uint8x16::nlanes;
    const std::size_t half = stored.size() / 2;
    Byte last[] = {128, 128}; // of the evens and the odds; the first of all stands for itself
    for (std::size_t i = 0; i < half; ++i)
        last[1] = static_cast<Byte>(last[1] + stored[i] - 128);

    std::size_t i = 0;
    for (; i + vectorBytes <= half; i += vectorBytes) {
        cv::v_uint8x16 bytes[2];
        for (int odd = 0; odd < 2; ++odd) {
            const cv::v_uint8x16 differences =
                cv::v_sub_wrap(cv::v_load(&stored[i + odd * half]), cv::v_setall_u8(128));
            const cv::v_uint8x16 sums = sumsUpTo(differences);
            bytes[odd] = cv::v_add_wrap(sums, cv::v_setall_u8(last[odd]));
            last[odd] = static_cast<Byte>(last[odd] + cv::v_extract_n<vectorBytes - 1>(sums));
        }
        cv::v_store_interleave(to + 2 * i, bytes[0], bytes[1]);
    }
    for (; i < half; ++i)
        for (std::size_t odd = 0; odd < 2; ++odd)
            to[2 * i + odd] = last[odd] = static_cast<Byte>(last[odd] + stored[i + odd * half] - 128);
}

/// The bytes of the chunk at hand, as stored and as inflated, in memory for one after the other.
struct ChunkBytes {
    std::vector<Byte> stored;
    std::vector<Byte> inflated;
};

/// What is open as long as this lives.
class Context {
public:
    explicit Context(const std::filesystem::path& file) {
        exr_context_initializer_t settings = EXR_DEFAULT_CONTEXT_INITIALIZER;
        settings.error_handler_fn = [](exr_const_context_t, exr_result_t, const char*) {}; // would print it
        if (exr_start_read(&context, file.c_str(), &settings) != EXR_ERR_SUCCESS)
            context = nullptr;
    }
    ~Context() { exr_finish(&context); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    operator exr_context_t() const { return context; }

private:
    exr_context_t context = nullptr;
};

class OpenExrFile final : public ExrFile {
public:
    explicit OpenExrFile(const std::filesystem::path& file) : context(file) {}

    bool isCommon();
    PictureHeader header() const override;
    std::optional<Picture> read() const override;

private:
    bool hasCommonMeaning() const;
    bool hasChunks() const;
    bool findChannels();
    bool findWindows();
    bool readChunk(int chunk, ChunkBytes& bytes, Byte* pixels) const;
    std::size_t rowBytes() const { return block().bytes() / static_cast<unsigned>(size.height); }
    PixelBlock block() const;

    Context context;
    exr_attr_box2i_t data{}, display{}; // windows: both ends belong to them
    PictureSize size;                   // of the data window
    Picture::ChannelPlaces places{};
    bool halfFloats = false;
    bool isZip = false;
    std::int32_t rowsPerChunk = 0;
};

bool OpenExrFile::isCommon() {
    int parts = 0;
    exr_storage_t storage;
    exr_compression_t compression;
    if (!context || exr_get_count(context, &parts) != EXR_ERR_SUCCESS || parts != 1 ||
        exr_get_storage(context, 0, &storage) != EXR_ERR_SUCCESS || storage != EXR_STORAGE_SCANLINE ||
        exr_get_compression(context, 0, &compression) != EXR_ERR_SUCCESS ||
        exr_get_scanlines_per_chunk(context, 0, &rowsPerChunk) != EXR_ERR_SUCCESS)
        return false;
    isZip = compression == EXR_COMPRESSION_ZIP || compression == EXR_COMPRESSION_ZIPS;
    return (isZip || compression == EXR_COMPRESSION_NONE) && hasCommonMeaning() && findChannels() &&
           findWindows() && hasChunks();
}

/// Whether no attribute gives the samples another meaning to OpenImageIO, which takes their names in any
/// case.
bool OpenExrFile::hasCommonMeaning() const {
    constexpr std::string_view prefix = "oiio:";
    std::int32_t count = 0;
    if (exr_get_attribute_count(context, 0, &count) != EXR_ERR_SUCCESS)
        return false;
    for (std::int32_t i = 0; i < count; ++i) {
        const exr_attribute_t* attribute;
        if (exr_get_attribute_by_index(context, 0, EXR_ATTR_LIST_FILE_ORDER, i, &attribute) !=
                EXR_ERR_SUCCESS ||
            ::strncasecmp(attribute->name, prefix.data(), prefix.size()) == 0)
            return false;
    }
    return true;
}

/// Whether the table of chunks agrees with the length of the file, as it does when the first is found.
bool OpenExrFile::hasChunks() const {
    exr_chunk_info_t info;
    return exr_read_scanline_chunk_info(context, 0, data.min.y, &info) == EXR_ERR_SUCCESS;
}

bool OpenExrFile::findChannels() {
    const exr_attr_chlist_t* channels;
    if (exr_get_channels(context, 0, &channels) != EXR_ERR_SUCCESS)
        return false;
    places.fill(-1);
    for (int i = 0; i < channels->num_channels; ++i) {
        const exr_attr_chlist_entry_t& channel = channels->entries[i];
        const std::size_t place = std::string_view("RGBA").find(channel.name.str);
        if (channel.name.length != 1 || place == std::string_view::npos || channel.x_sampling != 1 ||
            channel.y_sampling != 1 || channel.pixel_type == EXR_PIXEL_UINT ||
            channel.pixel_type != channels->entries[0].pixel_type)
            return false;
        places[place] = i;
        halfFloats = channel.pixel_type == EXR_PIXEL_HALF;
    }
    return *std::min_element(places.begin(), places.end() - 1) >= 0;
}

bool OpenExrFile::findWindows() {
    const auto extent = [](std::int32_t first, std::int32_t last) { return std::int64_t(last) - first + 1; };
    if (exr_get_data_window(context, 0, &data) != EXR_ERR_SUCCESS ||
        exr_get_display_window(context, 0, &display) != EXR_ERR_SUCCESS)
        return false;
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max() / 2;
    for (const auto& window : {data, display})
        if (const auto width = extent(window.min.x, window.max.x),
            height = extent(window.min.y, window.max.y);
            width < 1 || height < 1 || width > most || height > most)
            return false;
    size = {data.max.x - data.min.x + 1, data.max.y - data.min.y + 1};
    return true;
}

PixelBlock OpenExrFile::block() const {
    return {
        data.min.x - display.min.x, data.min.y - display.min.y, size, places.back() < 0 ? 3 : 4, halfFloats,
        SampleOrder::Channels};
}

PictureHeader OpenExrFile::header() const {
    PictureHeader header;
    header.size = {display.max.x - display.min.x + 1, display.max.y - display.min.y + 1};
    header.hasAlpha = header.premultiplied = places.back() >= 0;
    header.floatSamples = true;
    header.bytes = block().bytes();
    header.colourSpace = "Linear";
    return header;
}

bool OpenExrFile::readChunk(int chunk, ChunkBytes& bytes, Byte* pixels) const {
    const int row = chunk * rowsPerChunk;
    const std::size_t wanted = rowBytes() * static_cast<unsigned>(std::min(rowsPerChunk, size.height - row));
    Byte* const to = pixels + rowBytes() * static_cast<unsigned>(row);

    exr_chunk_info_t info;
    if (exr_read_scanline_chunk_info(context, 0, data.min.y + row, &info) != EXR_ERR_SUCCESS ||
        info.unpacked_size != wanted || info.packed_size > wanted)
        return false;
    if (info.packed_size == wanted) // so stored as well when compressing gains nothing
        return exr_read_chunk(context, 0, &info, to) == EXR_ERR_SUCCESS;

    bytes.stored.resize(info.packed_size);
    bytes.inflated.resize(wanted);
    uLongf inflated = wanted;
    if (!isZip || exr_read_chunk(context, 0, &info, bytes.stored.data()) != EXR_ERR_SUCCESS ||
        uncompress(bytes.inflated.data(), &inflated, bytes.stored.data(), bytes.stored.size()) != Z_OK ||
        inflated != wanted)
        return false;
    undoDifferences(bytes.inflated, to);
    return true;
}

std::optional<Picture> OpenExrFile::read() const {
    PixelBlock pixels = block();
    pixels.allocate();
    std::atomic<bool> whole = true;
    const int chunks = (size.height - 1) / rowsPerChunk + 1;
    MediaConversion::parallelRanges(chunks, [&](const cv::Range& range) {
        ChunkBytes bytes;
        for (int chunk = range.start; chunk < range.end && whole; ++chunk)
            if (!readChunk(chunk, bytes, pixels.samples->data()))
                whole = false;
    });
    if (!whole)
        return {};
    return Picture(header(), std::move(pixels), places);
}

} // namespace

std::unique_ptr<ExrFile> ExrFile::open(const std::filesystem::path& file) {
    auto exr = std::make_unique<OpenExrFile>(file);
    return exr->isCommon() ? std::move(exr) : nullptr;
}

} // namespace ZetTool

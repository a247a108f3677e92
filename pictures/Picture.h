// Pictures in memory, as a writer's input sees them.
#pragma once

#include <MediaConversion/MediaPipeline/MemoryPool.h>
#include <host/EmbeddedHost.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace ZetTool {

/// A size in pixels.
struct PictureSize {
    int width = 0;
    int height = 0;

    bool operator==(const PictureSize& other) const { return width == other.width && height == other.height; }
    bool operator!=(const PictureSize& other) const { return !(*this == other); }
    /// As in "1920x1080".
    std::string text() const;
};

/// The size written as "1920x1080". Throws std::runtime_error that quotes what cannot be read.
PictureSize parseSize(const std::string& text);

/// What is known of a picture before its pixels are read.
struct PictureHeader {
    PictureSize size; ///< of the whole picture, also where the file holds only a part of it
    bool hasAlpha = false;
    bool premultiplied = false; ///< colour is multiplied by alpha in the file
    bool floatSamples = false;
    std::uint64_t bytes = 0; ///< in memory once read: of the part that the file holds
    std::string colourSpace; ///< the file's or its reader's tag, such as "sRGB" or "Linear"; may be empty
};

/// Where pictures lie, one after another in the same memory: fresh memory costs as much as a conversion. A
/// program that loads the picture library lends it its own.
IMemoryPool& pictureMemory();

/// How the samples of a row follow one another: pixel by pixel, or all of one channel and then those of the
/// next.
enum class SampleOrder { Pixels, Channels };

/// A block of pixels that stands anywhere over, beside or partly over the whole picture.
struct PixelBlock {
    int left = 0; ///< column of the block's first pixel, counted from the picture's left edge
    int top = 0;  ///< row, counted from the top edge
    PictureSize size;
    int channels = 0;        ///< samples of each pixel
    bool halfFloats = false; ///< samples are half-floats, else floats
    SampleOrder order = SampleOrder::Pixels;
    std::unique_ptr<MemoryAccess> samples = nullptr; ///< rows from the top, without gaps

    /// The bytes that the samples take.
    std::uint64_t bytes() const;
    /// Where a sample is, counted in samples from the first.
    std::ptrdiff_t sampleAt(int row, int column, int channel) const;
    /// Takes memory for the samples. Throws std::bad_alloc.
    void allocate(IMemoryPool& memory = pictureMemory());
};

/// A picture. Outside the block that the file holds it is black, and transparent.
class Picture final : public EmbeddedHost::PictureSource {
public:
    /// Which of the block's channels red, green, blue and alpha are.
    using ChannelPlaces = std::array<int, 4>;

    Picture(PictureHeader header, PixelBlock block, ChannelPlaces places);

    const PictureHeader& header() const { return about; }

    int width() const override { return about.size.width; }
    int height() const override { return about.size.height; }
    bool hasAlpha() const override { return about.hasAlpha; }
    void readRow(int y, int x, int r, EmbeddedHost::PictureChannel channel, float* to) override;

private:
    PictureHeader about;
    PixelBlock block;
    ChannelPlaces places;
};

} // namespace ZetTool

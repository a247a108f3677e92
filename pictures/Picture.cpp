#include "Picture.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace ZetTool {
namespace {

/// The value without infinities and other excess, which some processors turn into black: no output tells
/// samples apart that are above 1, and half-floats end here.
float limited(float value) {
    constexpr float limit = 65504;
    return value > limit ? limit : value < -limit ? -limit : value; // NaN stays
}

/// The value of an IEEE 754 half-float, which every float can hold.
float valueOfHalf(std::uint32_t half) {
    using Float = std::numeric_limits<float>;
    const int exponent = static_cast<int>(half >> 10 & 31), mantissa = static_cast<int>(half & 1023);
    const float magnitude = exponent == 0   ? std::ldexp(static_cast<float>(mantissa), -24)
                            : exponent < 31 ? std::ldexp(static_cast<float>(1024 + mantissa), exponent - 25)
                            : mantissa == 0 ? Float::infinity()
                                            : Float::quiet_NaN();
    return half >> 15 == 0 ? magnitude : -magnitude;
}

/// The values of all half-floats: looking one up is faster than making it.
const float* halves() {
    static const std::vector<float> values = [] {
        std::vector<float> made;
        for (std::uint32_t half = 0; half <= 0xffff; ++half)
            made.push_back(limited(valueOfHalf(half)));
        return made;
    }();
    return values.data();
}

/// Every `stride`-th sample, as a float.
template <class Sample, class ToFloat>
void gather(const Sample* from, int stride, float* to, int count, ToFloat toFloat) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        to[i] = toFloat(from[i * stride]);
}

} // namespace

std::string PictureSize::text() const { return std::to_string(width) + "x" + std::to_string(height); }

PictureSize parseSize(const std::string& text) {
    PictureSize size;
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec == std::errc{} && width.ptr != end && *width.ptr == 'x') {
        const auto height = std::from_chars(width.ptr + 1, end, size.height);
        if (height.ec == std::errc{} && height.ptr == end)
            return size;
    }
    throw std::runtime_error("cannot read size \"" + text + "\": expected WIDTHxHEIGHT, as in 1920x1080");
}

IMemoryPool& pictureMemory() {
    static SelfPruningMemoryPool<HostMemoryResource, true> pool(3);
    return pool;
}

std::uint64_t PixelBlock::bytes() const {
    const std::uint64_t pixels = std::uint64_t(size.width) * std::uint64_t(size.height);
    return pixels * std::uint64_t(channels) * (halfFloats ? sizeof(std::uint16_t) : sizeof(float));
}

std::ptrdiff_t PixelBlock::sampleAt(int row, int column, int channel) const {
    const std::ptrdiff_t rowStart = std::ptrdiff_t(row) * size.width * channels;
    return rowStart + (order == SampleOrder::Pixels ? std::ptrdiff_t(column) * channels + channel
                                                    : std::ptrdiff_t(channel) * size.width + column);
}

void PixelBlock::allocate(IMemoryPool& memory) { samples = std::make_unique<MemoryAccess>(memory, bytes()); }

Picture::Picture(PictureHeader header, PixelBlock pixels, ChannelPlaces channelPlaces)
    : about(std::move(header)), block(std::move(pixels)), places(channelPlaces) {}

void Picture::readRow(int y, int x, int r, EmbeddedHost::PictureChannel channel, float* to) {
    const int row = height() - 1 - y - block.top; // the writer counts rows from the bottom
    const int inside = row >= 0 && row < block.size.height;
    const int first = inside ? std::clamp(block.left, x, r) : r;
    const int last = inside ? std::clamp(block.left + block.size.width, first, r) : r;

    to = std::fill_n(to, first - x, 0.0f);
    if (first < last) {
        const std::ptrdiff_t sample =
            block.sampleAt(row, first - block.left, places[static_cast<std::size_t>(channel)]);
        const int stride = block.order == SampleOrder::Pixels ? block.channels : 1;
        if (block.halfFloats)
            gather(reinterpret_cast<const std::uint16_t*>(block.samples->data()) + sample, stride, to,
                   last - first, [values = halves()](std::uint16_t half) { return values[half]; });
        else
            gather(reinterpret_cast<const float*>(block.samples->data()) + sample, stride, to, last - first,
                   limited);
        to += last - first;
    }
    std::fill_n(to, r - last, 0.0f);
}

} // namespace ZetTool

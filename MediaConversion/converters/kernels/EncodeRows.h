// Kernels that round values to codes: one block in each lane.
//
// A `Format` names
// - the rows and columns of pixels in a block, and its bytes,
// - `errorUnits`, how far its values may be off in single precision (Codes.h),
// - `limits`, which depths of samples it limits to their full scale,
// - `SameDepth`, the depth of samples that are its codes already, or void.
// `Format::encode(pixels, codes)` gives the block as 32-bit words, the lowest byte first; `pixels` are those
// of the block, row by row, and `codes` rounds.
#pragma once

#include <MediaConversion/converters/PixelTypes.h>
#include <MediaConversion/converters/kernels/Codes.h>
#include <MediaConversion/converters/kernels/Groups.h>
#include <MediaConversion/converters/kernels/Kernels.h>

#include <array>
#include <limits>
#include <type_traits>

namespace MediaConversion {
namespace {

/// One pixel of every block, as fractions of full scale: those of floats limited to 0..1, NaN excepted.
template <class Real>
struct Colours {
    Real blue, green, red, alpha;
};

/// A channel of the pixels `first`, `first + stride` and so on, as it is stored.
template <class Source>
Floats loadChannel(Source const* first, int stride, int channel) {
    std::array<float, lanes> samples;
    for (int lane = 0; lane < lanes; ++lane)
        samples[lane] = first[lane * stride].samples[channel];
    Floats result;
    std::memcpy(&result, samples.data(), sizeof result);
    return result;
}

template <class Source>
std::array<Floats, 4> loadChannels(Source const* first, int stride) {
    if constexpr (std::is_same_v<typename Source::Depth, F32> && Source::channels == 4) {
        auto const channels =
            loadTransposed(reinterpret_cast<std::uint8_t const*>(first), stride * sizeof(Source));
        return {Floats(channels[0]), Floats(channels[1]), Floats(channels[2]), Floats(channels[3])};
    } else if constexpr (sizeof(Source) == sizeof(std::int32_t)) {
        std::array<std::int32_t, lanes> numbers;
        for (int lane = 0; lane < lanes; ++lane)
            std::memcpy(&numbers[lane], first + lane * stride, sizeof(Source));
        Ints pixels;
        std::memcpy(&pixels, &numbers, sizeof pixels);
        return {Floats(pixels & 0xff), Floats(pixels >> 8 & 0xff), Floats(pixels >> 16 & 0xff),
                Floats(pixels >> 24 & 0xff)};
    } else {
        std::array<Floats, 4> channels{};
        for (int channel = 0; channel < Source::channels; ++channel)
            channels[channel] = loadChannel(first, stride, channel);
        return channels;
    }
}

/// Whether no value is above 1.
template <class Source, class Format>
constexpr bool isBounded = Format::template limits<typename Source::Depth> ||
                           Source::Depth::fullScale == std::numeric_limits<typename Source::Sample>::max();

/// For `Real` being integers the samples as they are.
template <class Real, class Source, class Format>
Real normalised(Floats samples) {
    using Depth = typename Source::Depth;
    using Sample = typename Depth::Sample;
    constexpr float scale = Depth::fullScale;
    if constexpr (std::is_same_v<Real, Ints>)
        return truncated(samples);
    else if constexpr (std::is_same_v<Depth, F32>)
        return Real(limited(samples, scale));
    else if constexpr (Format::template limits<Depth> &&
                       Depth::fullScale < std::numeric_limits<Sample>::max())
        return Real(limited(samples, scale)) / scale;
    else
        return Real(samples) / scale;
}

template <class Real, class Source, class Format>
Colours<Real> coloursOf(std::array<Floats, 4> const& channels) {
    using Order = typename Source::Order;
    auto const value = [&](int channel) { return normalised<Real, Source, Format>(channels[channel]); };
    Colours<Real> colours{value(Order::blue), value(Order::green), value(Order::red), 1};
    if constexpr (Source::channels == 4)
        colours.alpha = value(Order::alpha);
    return colours;
}

/// The pixels of blocks side by side.
template <class Format, class Source>
class BlockPixels {
public:
    BlockPixels(std::uint8_t const* pixels, std::size_t rowBytes) {
        for (int i = 0; i < Format::rows * Format::columns; ++i)
            channels[i] =
                loadChannels(reinterpret_cast<Source const*>(pixels + i / Format::columns * rowBytes) +
                                 i % Format::columns,
                             Format::columns);
    }

    template <class Codes>
    auto encode(Codes& codes) const {
        std::array<Colours<typename Codes::Real>, Format::rows * Format::columns> colours;
        for (std::size_t i = 0; i < colours.size(); ++i)
            colours[i] = coloursOf<typename Codes::Real, Source, Format>(channels[i]);
        return Format::encode(colours, codes);
    }

private:
    std::array<std::array<Floats, 4>, Format::rows * Format::columns> channels;
};

/// In single precision. The division by full scale, which only integer samples need, costs half a unit more.
template <class Format, class Source>
constexpr int errorUnits =
    std::is_same_v<typename Source::Depth, F32> ? Format::errorUnits : 2 * Format::errorUnits;

/// How the codes of a format are first made from a source.
template <class Format, class Source>
using FirstCodes = std::conditional_t<
    std::is_same_v<typename Source::Depth, typename Format::SameDepth>, SampleCodes,
    std::conditional_t<isBounded<Source, Format>, SingleCodes<errorUnits<Format, Source>>, DoubleCodes>>;

template <class Format, class Source_>
struct RoundedGroup {
    using Source = Source_;
    static constexpr int blocks = lanes, rows = Format::rows, columns = Format::columns,
                         bytes = Format::bytes;

    static void encode(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks) {
        BlockPixels<Format, Source> const source(pixels, rowBytes);
        FirstCodes<Format, Source> codes;
        auto words = source.encode(codes);
        if (__builtin_expect(!codes.certain(), false)) {
            DoubleCodes exactCodes;
            words = source.encode(exactCodes);
        }
        storeBlocks<bytes>(words, blocks);
    }
};

template <class Format, class Source>
constexpr EncodeRow encodeRow = encodeInGroups<RoundedGroup<Format, Source>>;

} // namespace
} // namespace MediaConversion

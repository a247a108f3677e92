// The frame of all kernels that make blocks from pixels: one block in each lane.
//
// A `Format` names the rows and columns of pixels in a block, its bytes, and `errorUnits`, how far its values
// may be off in single precision (Codes.h), and which depths of samples it limits to their full scale.
// `Format::encode<Source>(pixels, codes)` gives the block as 32-bit words, the lowest byte first; `pixels`
// are those of the block, row by row, and `codes` rounds.
#pragma once

#include <MediaConversion/converters/PixelTypes.h>
#include <MediaConversion/converters/kernels/Codes.h>

#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>
#include <utility>

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

/// In each quad of numbers: those of `a` (0..3) and `b` (4..7) that are named.
template <int i0, int i1, int i2, int i3, int... lane>
FloatVector quadsOf(FloatVector a, FloatVector b, std::integer_sequence<int, lane...>) {
    constexpr int chosen[] = {i0, i1, i2, i3};
    return __builtin_shufflevector(
        a, b, (lane / 4 * 4 + chosen[lane % 4] + (chosen[lane % 4] < 4 ? 0 : lanes - 4))...);
}

template <int i0, int i1, int i2, int i3>
FloatVector quadsOf(FloatVector a, FloatVector b) {
    return quadsOf<i0, i1, i2, i3>(a, b, std::make_integer_sequence<int, lanes>());
}

/// The four channels of float pixels: quads of the samples of a pixel, turned into quads of one channel.
template <class Source>
std::array<Floats, 4> loadFloatChannels(Source const* first, int stride) {
    auto const quads = [=](int i) { return loadQuads(first[i * stride].samples, 16 * stride); };
    FloatVector const a = quads(0), b = quads(1), c = quads(2), d = quads(3);
    FloatVector const ab01 = quadsOf<0, 4, 1, 5>(a, b), cd01 = quadsOf<0, 4, 1, 5>(c, d);
    FloatVector const ab23 = quadsOf<2, 6, 3, 7>(a, b), cd23 = quadsOf<2, 6, 3, 7>(c, d);
    return {Floats(quadsOf<0, 1, 4, 5>(ab01, cd01)), Floats(quadsOf<2, 3, 6, 7>(ab01, cd01)),
            Floats(quadsOf<0, 1, 4, 5>(ab23, cd23)), Floats(quadsOf<2, 3, 6, 7>(ab23, cd23))};
}

template <class Source>
std::array<Floats, 4> loadChannels(Source const* first, int stride) {
    if constexpr (std::is_same_v<typename Source::Depth, F32> && Source::channels == 4) {
        return loadFloatChannels(first, stride);
    } else {
        std::array<Floats, 4> channels{};
        for (int channel = 0; channel < Source::channels; ++channel)
            channels[channel] = loadChannel(first, stride, channel);
        return channels;
    }
}

template <class Real, class Source, class Format>
Real normalised(Floats samples) {
    using Depth = typename Source::Depth;
    using Sample = typename Depth::Sample;
    constexpr float scale = Depth::fullScale;
    if constexpr (std::is_same_v<Depth, F32>)
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
    Colours<Real> colours{value(Order::blue), value(Order::green), value(Order::red), 1.0};
    if constexpr (Source::channels == 4)
        colours.alpha = value(Order::alpha);
    return colours;
}

/// Writes the first `bytes` bytes of the words of each lane, lane by lane.
template <int bytes, std::size_t count>
void storeBlocks(std::array<Ints, count> const& words, std::uint8_t* blocks) {
    if constexpr (bytes == sizeof(std::int32_t)) {
        std::memcpy(blocks, &words[0], sizeof words[0]);
        return;
    }
    std::int32_t numbers[count][lanes];
    std::memcpy(numbers, words.data(), sizeof numbers);
    for (int lane = 0; lane < lanes; ++lane)
        for (std::size_t word = 0; word < count; ++word)
            std::memcpy(blocks + lane * bytes + 4 * word, &numbers[word][lane],
                        std::min<std::size_t>(4, bytes - 4 * word));
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

/// Encodes one block in each lane.
template <class Format, class Source>
void encodeGroup(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks) {
    BlockPixels<Format, Source> const source(pixels, rowBytes);
    if constexpr (std::is_same_v<typename Source::Depth, F32>) {
        SingleCodes<Format::errorUnits> codes;
        auto const words = source.encode(codes);
        if (__builtin_expect(codes.certain(), true))
            return storeBlocks<Format::bytes>(words, blocks);
    }
    DoubleCodes codes;
    storeBlocks<Format::bytes>(source.encode(codes), blocks);
}

/// Has the processor load what will be read soon. The address may lie behind the picture, where a pointer may not.
inline void fetch(std::uint8_t const* bytes, std::size_t ahead) {
    __builtin_prefetch(reinterpret_cast<void const*>(reinterpret_cast<std::uintptr_t>(bytes) + ahead));
}

/// Encodes whole groups, `lanes` blocks each. Flattened: only with everything in one function the compilers
/// keep the vectors in registers.
template <class Format, class Source>
[[gnu::flatten]] void encodeGroups(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks,
                                   int groups) {
    constexpr int groupBytes = lanes * Format::columns * sizeof(Source), fetchedAhead = 2048;
    for (; groups > 0; --groups, pixels += groupBytes, blocks += lanes * Format::bytes) {
        for (int row = 0; row < Format::rows; ++row)
            for (int byte = 0; byte < groupBytes; byte += 64)
                fetch(pixels + row * rowBytes + byte, fetchedAhead);
        encodeGroup<Format, Source>(pixels, rowBytes, blocks);
    }
}

/// An `EncodeRow`.
template <class Format, class Source>
void encodeRow(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks, int count) {
    constexpr int blockPixelBytes = Format::columns * sizeof(Source);
    int const groups = count / lanes, encoded = groups * lanes, rest = count - encoded;
    encodeGroups<Format, Source>(pixels, rowBytes, blocks, groups);
    if (rest == 0)
        return;

    // The rest is encoded as a group elsewhere.
    alignas(Source) std::uint8_t lastPixels[Format::rows * lanes * blockPixelBytes] = {};
    std::uint8_t lastBlocks[lanes * Format::bytes];
    for (int row = 0; row < Format::rows; ++row)
        std::memcpy(lastPixels + row * lanes * blockPixelBytes,
                    pixels + row * rowBytes + encoded * blockPixelBytes, rest * blockPixelBytes);
    encodeGroups<Format, Source>(lastPixels, lanes * blockPixelBytes, lastBlocks, 1);
    std::memcpy(blocks + encoded * Format::bytes, lastBlocks, rest * Format::bytes);
}

} // namespace
} // namespace MediaConversion

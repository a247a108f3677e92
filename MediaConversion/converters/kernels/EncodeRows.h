// Kernels that round values to codes: one block in each lane.
//
// A `Format` names
// - the rows and columns of pixels in a block, and its bytes,
// - `bits`, those of the codes that samples become, if it gives no weights,
// - `errorUnits`, how far its values may be off in single precision (Codes.h),
// - `limits`, which depths of samples it limits to their full scale,
// - `weightScale<part>`, the denominator of the weights that it gives to samples, 0 if it gives none,
// - `SameDepth`, the depth of samples that are its codes already, or void,
// - `parts`, the number of parts of a block that are rounded on their own: neutral pixels have chroma that
//   single precision never rounds with certainty, but that is no reason to make their luma twice.
// `Format::encode<part>(pixels, codes)` gives the block as 32-bit words, the lowest byte first, with all
// other parts 0; `pixels` are those of the block, row by row, and `codes` rounds.
#pragma once

#include <MediaConversion/converters/PixelTypes.h>
#include <MediaConversion/converters/kernels/BytePixels.h>
#include <MediaConversion/converters/kernels/Codes.h>
#include <MediaConversion/converters/kernels/Fractions.h>
#include <MediaConversion/converters/kernels/Groups.h>
#include <MediaConversion/converters/kernels/Kernels.h>

#include <array>
#include <limits>
#include <type_traits>

namespace MediaConversion {
namespace {

/// One pixel of every block: as fractions of full scale, those of floats limited to 0..1, NaN excepted; in
/// single precision integers as they are.
template <class Real>
struct Colours {
    Real blue, green, red, alpha;
};

template <class Real>
Colours<Real> operator+(Colours<Real> const& a, Colours<Real> const& b) {
    return {a.blue + b.blue, a.green + b.green, a.red + b.red, a.alpha + b.alpha};
}

/// Whether values may be above 1; they are never above 2.
template <class Source, class Format>
constexpr bool isAboveOne = !Format::template limits<typename Source::Depth> &&
                            Source::Depth::fullScale < std::numeric_limits<typename Source::Sample>::max();

/// A channel of one pixel of every block, as it is stored.
template <class Source, std::size_t count>
Ints storedSample(std::array<Ints, count> const& words, int pixel, int channel) {
    constexpr int bytes = sizeof(typename Source::Sample);
    int const byte = (pixel * Source::channels + channel) * bytes;
    if constexpr (bytes == 4)
        return words[byte / 4];
    else
        return words[byte / 4] >> (byte % 4 * 8) & ((1 << 8 * bytes) - 1);
}

/// A sample, given as it is stored, as `Colours` has it; for `Real` being integers as it is.
template <class Real, class Source, class Format>
Real valueOf(Ints sample) {
    using Depth = typename Source::Depth;
    constexpr bool isLimited = Format::template limits<Depth> &&
                               Depth::fullScale < std::numeric_limits<typename Depth::Sample>::max();
    if constexpr (std::is_same_v<Real, Ints>) {
        return sample;
    } else {
        constexpr bool isFloat = std::is_same_v<Depth, F32>;
        Floats number = isFloat ? Floats(reinterpret_cast<FloatVector>(sample.vector)) : Floats(sample);
        if constexpr (isLimited)
            number = limited(number, Depth::fullScale);
        if constexpr (isFloat || std::is_same_v<Real, Floats>)
            return Real(number);
        else
            return Fraction<Depth::fullScale>::of(Real(number));
    }
}

template <class Real, class Source, class Format, std::size_t count>
Colours<Real> coloursOf(std::array<Ints, count> const& words, int pixel) {
    using Order = typename Source::Order;
    auto const value = [&](int channel) {
        return valueOf<Real, Source, Format>(storedSample<Source>(words, pixel, channel));
    };
    Colours<Real> colours{value(Order::blue), value(Order::green), value(Order::red), 1};
    if constexpr (Source::channels == 4)
        colours.alpha = value(Order::alpha);
    return colours;
}

/// In single precision. Twice as many for integers, for whose codes a rounded factor costs up to one unit
/// more, and again for values up to 2: the number has to stay a power of two.
template <class Format, class Source>
constexpr int errorUnits =
    Format::errorUnits << (!std::is_same_v<typename Source::Depth, F32> + isAboveOne<Source, Format>);

/// How codes are made of samples in single precision, where all of them can be tried, without a doubt.
template <class Format, class Source>
constexpr auto codesOfSamples() {
    using Depth = typename Source::Depth;
    using Codes = SingleCodes<static_cast<int>(Depth::fullScale), errorUnits<Format, Source>,
                              isAboveOne<Source, Format>>;
    if constexpr (std::is_same_v<Depth, typename Format::SameDepth>)
        return SampleCodes();
    else if constexpr (std::is_same_v<Depth, F32> || Format::template weightScale<0> != 0)
        return Codes();
    else if constexpr (Codes::isExact(Format::bits) && !isAboveOne<Source, Format>)
        return ProvenCodes<Codes>();
    else
        return Codes();
}

/// The pixels of blocks side by side.
template <class Format, class Source>
class BlockPixels {
public:
    static constexpr int rowBytes = Format::columns * sizeof(Source);

    /// How codes are first made of them.
    template <int>
    using Codes = decltype(codesOfSamples<Format, Source>());

    BlockPixels(std::uint8_t const* pixels, std::size_t stride) {
        unrolled<Format::rows>([&](auto row) { words[row] = loadBlocks<rowBytes>(pixels + row * stride); });
    }

    template <int part, class Codes>
    auto encode(Codes& codes) const {
        using Real = typename Codes::Real;
        std::array<Colours<Real>, Format::rows * Format::columns> colours;
        unrolled<Format::rows * Format::columns>([&](auto i) {
            colours[i] = coloursOf<Real, Source, Format>(words[i / Format::columns], i % Format::columns);
        });
        return Format::template encode<part>(colours, codes);
    }

    template <int part>
    auto exact() const {
        DoubleCodes codes;
        return encode<part>(codes);
    }

private:
    std::array<BlockWords<rowBytes>, Format::rows> words;
};

/// The same of 8-bit samples to which the format gives weights: their sums are made with integers.
template <class Format, class Source>
class BlockBytes {
public:
    static constexpr int rowBytes = Format::columns * sizeof(Source);

    /// Sums are exact or off by one rounding; with what codes are off by, that stays below 4 units
    /// (Subsampling.h).
    template <int part>
    using Codes = SingleCodes<U8::fullScale * Format::template weightScale<part>, 4, false>;

    BlockBytes(std::uint8_t const* pixels, std::size_t stride) : pixels(pixels), stride(stride) {
        static_assert(Format::columns == 2);
        unrolled<Format::rows>([&](auto row) {
            auto const words = loadPixelPairs<Source>(pixels + row * stride);
            colours[2 * row] = Pixel(words[0]);
            colours[2 * row + 1] = Pixel(words[1]);
        });
    }

    template <int part, class Codes>
    auto encode(Codes& codes) const {
        return Format::template encode<part>(colours, codes);
    }

    template <int part>
    BlockWords<Format::bytes> exact() const {
        return exact<part>(pixels, stride);
    }

private:
    using Pixel = BytePixel<typename Source::Order>;

    /// Loads the pixels again, in a function of its own: else it would take registers from what is done
    /// nearly always.
    template <int part>
    [[gnu::flatten, gnu::noinline]] static BlockWords<Format::bytes> exact(std::uint8_t const* pixels,
                                                                           std::size_t stride) {
        return BlockPixels<Format, Source>(pixels, stride).template exact<part>();
    }

    std::uint8_t const* pixels;
    std::size_t stride;
    std::array<Pixel, 2 * Format::rows> colours;
};

template <class Format, class Source>
struct RoundedGroup {
    static constexpr bool weighsBytes =
        std::is_same_v<typename Source::Depth, U8> && Format::template weightScale<0> != 0;
    using Pixels = std::conditional_t<weighsBytes, BlockBytes<Format, Source>, BlockPixels<Format, Source>>;
    static constexpr int blocks = lanes, rows = Format::rows, blockRowBytes = Pixels::rowBytes,
                         readBytes = loadedBytes<blockRowBytes>, bytes = Format::bytes;

    static void encode(std::uint8_t const* pixels, std::size_t stride, std::uint8_t* blocks) {
        Pixels const source(pixels, stride);
        auto words = rounded<0>(source);
        unrolled<Format::parts - 1>([&](auto before) {
            auto const part = rounded<before + 1>(source);
            unrolled<sizeof words / sizeof words[0]>([&](auto i) { words[i] = words[i] | part[i]; });
        });
        storeBlocks<bytes>(words, blocks);
    }

private:
    template <int part>
    static auto rounded(Pixels const& source) {
        typename Pixels::template Codes<part> codes;
        auto words = source.template encode<part>(codes);
        if (__builtin_expect(!codes.certain(), false)) {
            auto const exact = source.template exact<part>();
            unrolled<sizeof words / sizeof words[0]>([&](auto i) { words[i] = exact[i]; });
        }
        return words;
    }
};

template <class Format, class Source>
constexpr EncodeRow encodeRow = encodeInGroups<RoundedGroup<Format, Source>>;

} // namespace
} // namespace MediaConversion

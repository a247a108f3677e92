// 10- and 12-bit samples packed to the bit to RGB.
#pragma once

#include <MediaConversion/converters/kernels/DecodeRows.h>
#include <MediaConversion/converters/kernels/RgbBitLayouts.h>

namespace MediaConversion {
namespace {

/// Codes of the depth `From` at the integer depth `To`: code / full scale * full scale, rounded half up. The
/// quotient of the full scales is split into its whole part and the rest, of which 24 bits are enough.
template <class From, class To>
struct Rescaling {
    static constexpr int whole = To::fullScale / From::fullScale, rest = To::fullScale % From::fullScale;
    static constexpr int bits = 24, factor = ((rest << bits) + From::fullScale / 2) / From::fullScale;

    template <class Int>
    static constexpr Int rescaled(Int code) {
        return code * whole + ((code * factor + (1 << (bits - 1))) >> bits);
    }

    /// Whether all codes become what double precision makes of them.
    static constexpr bool isExact() {
        for (int code = 0; code <= From::fullScale; ++code)
            if (rescaled(code) !=
                static_cast<int>(code / static_cast<double>(From::fullScale) * To::fullScale + 0.5))
                return false;
        return true;
    }
};
static_assert(Rescaling<U10, U16>::isExact() && Rescaling<U10, U15plus1>::isExact());
static_assert(Rescaling<U12, U16>::isExact() && Rescaling<U12, U15plus1>::isExact());

/// Whether the quotients of all codes are the same in single precision as when they are first made in double.
template <class From>
constexpr bool isExactInFloats() {
    for (int code = 0; code <= From::fullScale; ++code)
        if (static_cast<float>(code) / From::fullScale !=
            static_cast<float>(code / static_cast<double>(From::fullScale)))
            return false;
    return true;
}
static_assert(isExactInFloats<U10>() && isExactInFloats<U12>());

/// Codes at the depth `To`, as it is stored: unchanged at their own, the upper bits at 8, else rounded.
template <class Layout, class To>
Ints rescaled(Ints code) {
    using From = typename Layout::Depth;
    if constexpr (std::is_same_v<To, From>)
        return code;
    else if constexpr (std::is_same_v<To, U8>)
        return code >> (Layout::bits - 8);
    else if constexpr (std::is_same_v<To, F32>)
        return (Floats(code) / From::fullScale).bits();
    else
        return Rescaling<From, To>::rescaled(code);
}

/// `Order` is that of the packed samples. Pixels are opaque.
template <class Layout, class Order>
struct DecodeRgb {
    static constexpr int rows = 1, columns = Layout::pixels, bytes = blockBytes<Layout>;

    template <class Depth>
    static std::array<Samples, columns> decode(std::array<Ints, wordsFor(bytes)> const& words) {
        auto const samples = unpackBlock<Layout>(words);
        std::array<Samples, columns> pixels;
        for (int i = 0; i < columns; ++i) {
            auto const sample = [&](int channel) {
                return rescaled<Layout, Depth>(samples[3 * i + channel]);
            };
            pixels[i] = {sample(Order::red), sample(Order::green), sample(Order::blue), opaque<Depth>()};
        }
        return pixels;
    }
};

struct UnpackingTable {
    RowDecoder rows[62] = {};
    int count = 0;

    /// The conversions to a destination from the formats of these layouts, in both orders.
    template <class Destination, class... Layouts>
    constexpr void add(Zentrel::FrameFormat (*destination)()) {
        ((rows[count++] = {Layouts::rgbFormat, destination, decodeRow<DecodeRgb<Layouts, Rgb>, Destination>}),
         ...);
        ((rows[count++] = {Layouts::bgrFormat, destination, decodeRow<DecodeRgb<Layouts, Bgr>, Destination>}),
         ...);
    }
};

using F = Zentrel::FullFrameFormat;

// clang-format off
constexpr UnpackingTable unpacking = [] {
    UnpackingTable table;
    //        destination            sources                              destination
    table.add<Pixel<Rgb,  U8>,       DpxFilled, DpxPacked, SmpteSt2110>(F::RGB_U8);
    table.add<Pixel<Bgr,  U8>,       DpxFilled, DpxPacked, SmpteSt2110>(F::BGR_U8);
    table.add<Pixel<Rgb,  U10>,      DpxFilled                        >(F::RGB_U10);
    table.add<Pixel<Bgr,  U10>,      DpxFilled                        >(F::BGR_U10);
    table.add<Pixel<Rgb,  U12>,                 DpxPacked, SmpteSt2110>(F::RGB_U12);
    table.add<Pixel<Bgr,  U12>,                 DpxPacked, SmpteSt2110>(F::BGR_U12);
    table.add<Pixel<Rgb,  U16>,      DpxFilled,            SmpteSt2110>(F::RGB_U16);
    table.add<Pixel<Rgba, U8>,       DpxFilled, DpxPacked             >(F::RGBA_U8);
    table.add<Pixel<Bgra, U8>,       DpxFilled, DpxPacked, SmpteSt2110>(F::BGRA_U8);
    table.add<Pixel<Bgra, U16>,      DpxFilled, DpxPacked, SmpteSt2110>(F::BGRA_U16);
    table.add<Pixel<Bgra, F32>,      DpxFilled, DpxPacked, SmpteSt2110>(F::BGRA_F32);
    table.add<Pixel<Argb, U8>,       DpxFilled, DpxPacked, SmpteSt2110>(F::ARGB_U8);
    table.add<Pixel<Argb, U15plus1>, DpxFilled, DpxPacked, SmpteSt2110>(F::ARGB_U15plus1);
    return table;
}();
// clang-format on
static_assert(unpacking.count == std::size(unpacking.rows));

} // namespace
} // namespace MediaConversion

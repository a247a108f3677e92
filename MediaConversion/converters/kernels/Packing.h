// RGB to 10- and 12-bit samples packed to the bit.
#pragma once

#include <MediaConversion/converters/kernels/EncodeRows.h>
#include <MediaConversion/converters/kernels/Kernels.h>
#include <MediaConversion/converters/kernels/RgbBitLayouts.h>

namespace MediaConversion {
namespace {

/// `Order` is that of the packed samples. In single precision only the codes are rounded.
template <class Layout, class Order>
struct EncodeRgb {
    static constexpr int rows = 1, columns = Layout::pixels, bytes = blockBytes<Layout>, bits = Layout::bits,
                         errorUnits = 1, parts = 1;
    template <int>
    static constexpr int weightScale = 0;
    /// A sample of this depth stays as it is, out of range too; others are limited.
    using SameDepth = typename Layout::Depth;
    template <class Depth>
    static constexpr bool limits = true;

    template <int, class Real, class Codes>
    static auto encode(std::array<Colours<Real>, columns> const& pixels, Codes& codes) {
        BlockSamples<Layout> samples;
        for (int i = 0; i < columns; ++i) {
            samples[3 * i + Order::red] = codes(pixels[i].red, Layout::bits);
            samples[3 * i + Order::green] = codes(pixels[i].green, Layout::bits);
            samples[3 * i + Order::blue] = codes(pixels[i].blue, Layout::bits);
        }
        return packBlock<Layout>(samples);
    }
};

struct PackingTable {
    RowEncoder rows[72] = {};
    int count = 0;

    /// The conversions of a source to the formats of these layouts, in both orders.
    template <class Source, class... Layouts>
    constexpr void add(Zentrel::FrameFormat (*source)()) {
        ((rows[count++] = {source, Layouts::rgbFormat, encodeRow<EncodeRgb<Layouts, Rgb>, Source>}), ...);
        ((rows[count++] = {source, Layouts::bgrFormat, encodeRow<EncodeRgb<Layouts, Bgr>, Source>}), ...);
    }
};

using F = Zentrel::FullFrameFormat;

// clang-format off
constexpr PackingTable packing = [] {
    PackingTable table;
    //        source                 destinations                        source
    table.add<Pixel<Rgb,  U8>,       DpxFilled, DpxPacked, SmpteSt2110>(F::RGB_U8);
    table.add<Pixel<Rgb,  U10>,      DpxFilled                        >(F::RGB_U10);
    table.add<Pixel<Rgb,  U12>,                 DpxPacked, SmpteSt2110>(F::RGB_U12);
    table.add<Pixel<Rgb,  F32>,      DpxFilled, DpxPacked, SmpteSt2110>(F::RGB_F32);
    table.add<Pixel<Bgr,  U8>,       DpxFilled, DpxPacked, SmpteSt2110>(F::BGR_U8);
    table.add<Pixel<Bgr,  U10>,      DpxFilled                        >(F::BGR_U10);
    table.add<Pixel<Bgr,  U12>,                 DpxPacked, SmpteSt2110>(F::BGR_U12);
    table.add<Pixel<Bgr,  U16>,      DpxFilled, DpxPacked, SmpteSt2110>(F::BGR_U16);
    table.add<Pixel<Bgr,  F32>,      DpxFilled, DpxPacked, SmpteSt2110>(F::BGR_F32);
    table.add<Pixel<Bgra, U8>,       DpxFilled, DpxPacked, SmpteSt2110>(F::BGRA_U8);
    table.add<Pixel<Bgra, U16>,      DpxFilled, DpxPacked, SmpteSt2110>(F::BGRA_U16);
    table.add<Pixel<Bgra, F32>,      DpxFilled, DpxPacked, SmpteSt2110>(F::BGRA_F32);
    table.add<Pixel<Argb, U8>,       DpxFilled, DpxPacked, SmpteSt2110>(F::ARGB_U8);
    table.add<Pixel<Argb, U15plus1>, DpxFilled, DpxPacked, SmpteSt2110>(F::ARGB_U15plus1);
    return table;
}();
// clang-format on
static_assert(packing.count == std::size(packing.rows));

} // namespace
} // namespace MediaConversion

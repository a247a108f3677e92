#include <MediaConversion/converters/ImageToPackedFrame.h>

#include <MediaConversion/converters/ParallelRows.h>
#include <MediaConversion/converters/Quantisation.h>
#include <MediaConversion/converters/RgbBitLayouts.h>

#include <type_traits>

namespace MediaConversion {

namespace {

using Zentrel::FrameFormat;
using Zentrel::FullFrame;
using Zentrel::PackedFrame;
using F = Zentrel::FullFrameFormat;

/// A sample at another depth, limited to its range; NaN becomes 0. A sample that has the depth already stays
/// as it is, out of range too.
template <class From, class To>
std::uint32_t rescaled(typename From::Sample sample) {
    if constexpr (std::is_same_v<From, To>)
        return sample;
    else
        return sampleOf<To>(normalised<From>(sample));
}

template <class Source, class Layout, class Order>
void packRow(Source const* pixels, std::uint8_t* bytes, int blocks) {
    constexpr auto code = rescaled<typename Source::Depth, typename Layout::Depth>;
    for (int block = 0; block < blocks; ++block) {
        BlockSamples<Layout> samples;
        for (auto pixel = samples.begin(); pixel != samples.end(); pixel += 3, ++pixels) {
            pixel[Order::red] = code(pixels->red());
            pixel[Order::green] = code(pixels->green());
            pixel[Order::blue] = code(pixels->blue());
        }
        packBlock<Layout>(samples, bytes);
        bytes += blockBytes<Layout>;
    }
}

/// `Order` is that of the packed samples.
template <class Source, class Layout, class Order>
PackedFrame packBits(FullFrame const& source, FrameFormat const& destination) {
    PackedFrame packed(destination, source.rows(), source.cols());
    cv::Mat const from = source.image();
    cv::Mat to = packed.image();
    parallelRows(to.rows, [&](int row) {
        packRow<Source, Layout, Order>(from.ptr<Source>(row), to.ptr(row), to.cols);
    });
    return packed;
}

/// Adds the conversions of a source to the formats of these layouts, in both orders.
template <class Source, class... Layouts>
void add(ImageToPackedFrame::ConversionTable& table, FrameFormat const& source) {
    (table.emplace(std::tuple(source, Layouts::rgbFormat()), packBits<Source, Layouts, Rgb>), ...);
    (table.emplace(std::tuple(source, Layouts::bgrFormat()), packBits<Source, Layouts, Bgr>), ...);
}

} // namespace

// clang-format off
const ImageToPackedFrame::ConversionTable ImageToPackedFrame::packingConversion = [] {
    ConversionTable table;
    //  source                 destinations                              source
    add<Pixel<Rgb,  U8>,       DpxFilled, DpxPacked, SmpteSt2110>(table, F::RGB_U8());
    add<Pixel<Rgb,  U10>,      DpxFilled                        >(table, F::RGB_U10());
    add<Pixel<Rgb,  U12>,                 DpxPacked, SmpteSt2110>(table, F::RGB_U12());
    add<Pixel<Rgb,  F32>,      DpxFilled, DpxPacked, SmpteSt2110>(table, F::RGB_F32());
    add<Pixel<Bgr,  U8>,       DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGR_U8());
    add<Pixel<Bgr,  U10>,      DpxFilled                        >(table, F::BGR_U10());
    add<Pixel<Bgr,  U12>,                 DpxPacked, SmpteSt2110>(table, F::BGR_U12());
    add<Pixel<Bgr,  U16>,      DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGR_U16());
    add<Pixel<Bgr,  F32>,      DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGR_F32());
    add<Pixel<Bgra, U8>,       DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGRA_U8());
    add<Pixel<Bgra, U16>,      DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGRA_U16());
    add<Pixel<Bgra, F32>,      DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGRA_F32());
    add<Pixel<Argb, U8>,       DpxFilled, DpxPacked, SmpteSt2110>(table, F::ARGB_U8());
    add<Pixel<Argb, U15plus1>, DpxFilled, DpxPacked, SmpteSt2110>(table, F::ARGB_U15plus1());
    return table;
}();
// clang-format on

} // namespace MediaConversion

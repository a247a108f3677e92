#include <MediaConversion/converters/ImageToFullFrame.h>

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

/// A packed sample at the depth `To`: unchanged at its own, the top bits at 8, else rounded.
template <class Layout, class To>
typename To::Sample rescaled(std::uint32_t sample) {
    auto const code = static_cast<typename Layout::Depth::Sample>(sample);
    if constexpr (std::is_same_v<To, typename Layout::Depth>)
        return code;
    else if constexpr (std::is_same_v<To, U8>)
        return static_cast<std::uint8_t>(code >> (Layout::bits - 8));
    else
        return sampleOf<To>(normalised<typename Layout::Depth>(code));
}

template <class Layout, class Order, class Destination>
void unpackRow(std::uint8_t const* bytes, Destination* pixels, int blocks) {
    using Channels = typename Destination::Order;
    constexpr auto value = rescaled<Layout, typename Destination::Depth>;
    for (int block = 0; block < blocks; ++block) {
        auto const samples = unpackBlock<Layout>(bytes);
        bytes += blockBytes<Layout>;
        for (auto pixel = samples.begin(); pixel != samples.end(); pixel += 3, ++pixels) {
            pixels->samples[Channels::red] = value(pixel[Order::red]);
            pixels->samples[Channels::green] = value(pixel[Order::green]);
            pixels->samples[Channels::blue] = value(pixel[Order::blue]);
            if constexpr (Destination::channels == 4)
                pixels->samples[Channels::alpha] = Destination::Depth::fullScale;
        }
    }
}

/// `Order` is that of the packed samples. Where the destination has alpha, it is opaque.
template <class Layout, class Order, class Destination>
FullFrame unpackBits(PackedFrame const& source, FrameFormat const& destination) {
    FullFrame full(destination, source.rows(), source.cols());
    cv::Mat const from = source.image();
    cv::Mat to = full.image();
    parallelRows(from.rows, [&](int row) {
        unpackRow<Layout, Order, Destination>(from.ptr(row), to.ptr<Destination>(row), from.cols);
    });
    return full;
}

/// Adds the conversions to a destination from the formats of these layouts, in both orders.
template <class Destination, class... Layouts>
void add(ImageToFullFrame::ConversionTable& table, FrameFormat const& destination) {
    (table.emplace(std::tuple(Layouts::rgbFormat(), destination), unpackBits<Layouts, Rgb, Destination>),
     ...);
    (table.emplace(std::tuple(Layouts::bgrFormat(), destination), unpackBits<Layouts, Bgr, Destination>),
     ...);
}

} // namespace

// clang-format off
const ImageToFullFrame::ConversionTable ImageToFullFrame::packingConversion = [] {
    ConversionTable table;
    //  destination            sources                                   destination
    add<Pixel<Rgb,  U8>,       DpxFilled, DpxPacked, SmpteSt2110>(table, F::RGB_U8());
    add<Pixel<Bgr,  U8>,       DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGR_U8());
    add<Pixel<Rgb,  U10>,      DpxFilled                        >(table, F::RGB_U10());
    add<Pixel<Bgr,  U10>,      DpxFilled                        >(table, F::BGR_U10());
    add<Pixel<Rgb,  U12>,                 DpxPacked, SmpteSt2110>(table, F::RGB_U12());
    add<Pixel<Bgr,  U12>,                 DpxPacked, SmpteSt2110>(table, F::BGR_U12());
    add<Pixel<Rgb,  U16>,      DpxFilled,            SmpteSt2110>(table, F::RGB_U16());
    add<Pixel<Rgba, U8>,       DpxFilled, DpxPacked             >(table, F::RGBA_U8());
    add<Pixel<Bgra, U8>,       DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGRA_U8());
    add<Pixel<Bgra, U16>,      DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGRA_U16());
    add<Pixel<Bgra, F32>,      DpxFilled, DpxPacked, SmpteSt2110>(table, F::BGRA_F32());
    add<Pixel<Argb, U8>,       DpxFilled, DpxPacked, SmpteSt2110>(table, F::ARGB_U8());
    add<Pixel<Argb, U15plus1>, DpxFilled, DpxPacked, SmpteSt2110>(table, F::ARGB_U15plus1());
    return table;
}();
// clang-format on

} // namespace MediaConversion

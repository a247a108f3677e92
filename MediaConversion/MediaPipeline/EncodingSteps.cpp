// The table of encoding steps: for each source the filters that serve it, each with the formats that it
// reaches in one step, then the chains of several steps.
#include <MediaConversion/MediaPipeline/Encoder.h>

#include <MediaConversion/converters/ConvertBitDepth.h>
#include <MediaConversion/converters/ImageColourspace.h>
#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>
#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>
#include <MediaConversion/converters/ImageToFullFrame.h>
#include <MediaConversion/converters/ImageToPackedFrame.h>
#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

namespace MediaConversion {

namespace {

using Zentrel::FrameFormat;
using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

using Step = Encoder::EncodingStep;
using Chain = std::vector<Step>;

/// A destination and the way there.
struct Route {
    FrameFormat destination;
    Chain chain;
};

template <class Filter>
Step by(FrameFormat const& produced) {
    return {Filter::create, produced};
}

/// Routes of a single step.
template <class Filter>
std::vector<Route> direct(std::initializer_list<FrameFormat> destinations) {
    std::vector<Route> routes;
    for (FrameFormat const& destination : destinations)
        routes.push_back({destination, {by<Filter>(destination)}});
    return routes;
}

/// A route of several steps.
std::vector<Route> to(FrameFormat const& destination, Chain chain) {
    return {{destination, std::move(chain)}};
}

struct Source {
    FrameFormat format;
    std::vector<std::vector<Route>> routes;
};

Encoder::EncodingStepTable tableOf(std::initializer_list<Source> sources) {
    Encoder::EncodingStepTable table;
    for (Source const& source : sources)
        for (auto const& group : source.routes)
            for (Route const& route : group)
                table.emplace(std::tuple(source.format, route.destination), route.chain);
    return table;
}

constexpr auto colourspace = direct<ConvertColourspace>;
constexpr auto bitDepth = direct<ConvertBitDepth>;
constexpr auto toPacked = direct<ConvertToPackedFrame>;
constexpr auto toFull = direct<ConvertToFullFrame>;
constexpr auto toYCbCr = direct<ConvertRGBtoYCbCr42x>;
constexpr auto fromYCbCr = direct<ConvertYCbCr42xToRGB>;
constexpr auto toDxt = direct<ConvertRGBtoYCoCgDXT5>;
constexpr auto fromDxt = direct<ConvertYCoCgDXT5toRGB>;

} // namespace

// clang-format off
const Encoder::EncodingStepTable Encoder::encodingSteps = tableOf({
    {F::RGB_U8(), {
        colourspace({F::BGR_U8(), F::RGBA_U8(), F::BGRA_U8()}),
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_420_U8()}),
        toDxt({P::YCOCG_DXT5_U8()}),
        to(F::BGRA_F32(), {by<ConvertColourspace>(F::BGRA_U8()), by<ConvertBitDepth>(F::BGRA_F32())}),
        to(P::RGB_DXT1_U8(), {by<ConvertColourspace>(F::RGBA_U8()), by<ConvertRGBtoYCoCgDXT5>(P::RGB_DXT1_U8())})}},

    {F::RGB_U10(), {toPacked({P::RGB_DPX_FILLED_U10()})}},
    {F::RGB_U12(), {toPacked({P::RGB_SMPTE_2110_U12()})}},
    {F::RGB_U15plus1(), {toYCbCr({P::YCBCR_ITU_T871_9ZT_422_U10()})}},

    {F::BGR_U8(), {
        colourspace({F::RGB_U8(), F::BGRA_U8(), F::RGBA_U8()}),
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_420_U8()}),
        toDxt({P::YCOCG_DXT5_U8()}),
        to(F::BGRA_F32(), {by<ConvertColourspace>(F::BGRA_U8()), by<ConvertBitDepth>(F::BGRA_F32())}),
        to(P::RGB_DXT1_U8(), {by<ConvertColourspace>(F::RGBA_U8()), by<ConvertRGBtoYCoCgDXT5>(P::RGB_DXT1_U8())})}},

    {F::BGR_U16(), {
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10(), P::YCBCR_ITU_T871_9ZT_420_U8()}),
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        to(P::YCOCG_DXT5_U8(), {by<ConvertBitDepth>(F::BGR_U8()), by<ConvertRGBtoYCoCgDXT5>(P::YCOCG_DXT5_U8())})}},

    {F::BGR_F32(), {
        colourspace({F::BGRA_F32()}),
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10(), P::YCBCR_ITU_T871_9ZT_420_U8()}),
        to(P::YCOCG_DXT5_U8(), {by<ConvertBitDepth>(F::BGR_U8()), by<ConvertRGBtoYCoCgDXT5>(P::YCOCG_DXT5_U8())})}},

    {F::RGBA_U8(), {
        colourspace({F::BGR_U8(), F::RGB_U8(), F::BGRA_U8()}),
        toDxt({P::YCOCG_DXT5_U8()}),
        to(F::BGRA_F32(), {by<ConvertColourspace>(F::BGRA_U8()), by<ConvertBitDepth>(F::BGRA_F32())})}},

    {F::BGRA_U8(), {
        colourspace({F::RGB_U8(), F::BGR_U8(), F::RGBA_U8()}),
        bitDepth({F::BGRA_F32()}),
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10(), P::YCBCR_ITU_T871_9ZT_420_U8()}),
        toDxt({P::YCOCG_DXT5_U8()})}},

    {F::BGRA_U16(), {
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10(), P::YCBCR_ITU_T871_9ZT_420_U8()}),
        to(P::YCOCG_DXT5_U8(), {by<ConvertBitDepth>(F::BGRA_U8()), by<ConvertRGBtoYCoCgDXT5>(P::YCOCG_DXT5_U8())})}},

    {F::BGRA_F32(), {
        bitDepth({F::BGRA_U8()}),
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10(),
                 P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), P::YCBCR_ITU_T871_9ZT_420_U8()}),
        to(F::BGR_U8(), {by<ConvertBitDepth>(F::BGRA_U8()), by<ConvertColourspace>(F::BGR_U8())}),
        to(F::RGB_U8(), {by<ConvertBitDepth>(F::BGRA_U8()), by<ConvertColourspace>(F::RGB_U8())}),
        to(F::RGBA_U8(), {by<ConvertBitDepth>(F::BGRA_U8()), by<ConvertColourspace>(F::RGBA_U8())}),
        to(P::YCOCG_DXT5_U8(), {by<ConvertBitDepth>(F::BGRA_U8()), by<ConvertRGBtoYCoCgDXT5>(P::YCOCG_DXT5_U8())})}},

    {F::ARGB_U8(), {
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10()})}},

    {F::ARGB_U15plus1(), {
        toPacked({P::BGR_DPX_FILLED_U10(), P::RGB_DPX_FILLED_U10(), P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12()}),
        toYCbCr({P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10()})}},

    {P::BGR_DPX_FILLED_U10(), {
        toFull({F::BGR_U8(), F::RGB_U16(), F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()})}},

    {P::RGB_DPX_FILLED_U10(), {
        toFull({F::BGR_U8(), F::RGB_U16(), F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()})}},

    {P::BGR_SMPTE_2110_U12(), {
        toFull({F::RGB_U16(), F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()}),
        to(F::BGR_U8(), {by<ConvertToFullFrame>(F::BGR_U12()), by<ConvertBitDepth>(F::BGR_U8())}),
        to(P::RGB_SMPTE_2110_U12(), {by<ConvertToFullFrame>(F::BGR_U12()), by<ConvertToPackedFrame>(P::RGB_SMPTE_2110_U12())})}},

    {P::RGB_SMPTE_2110_U12(), {
        toFull({F::RGB_U12(), F::BGR_U12(), F::RGB_U16(), F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(),
                F::ARGB_U15plus1()}),
        to(F::RGB_U8(), {by<ConvertToFullFrame>(F::RGB_U12()), by<ConvertBitDepth>(F::RGB_U8())}),
        to(F::BGR_U8(), {by<ConvertToFullFrame>(F::RGB_U12()), by<ConvertBitDepth>(F::RGB_U8()), by<ConvertColourspace>(F::BGR_U8())}),
        // Swaps the components although its key names none to swap. An Encoder never takes it: equal formats pass through.
        to(P::RGB_SMPTE_2110_U12(), {by<ConvertToFullFrame>(F::RGB_U12()), by<ConvertToPackedFrame>(P::BGR_SMPTE_2110_U12())}),
        to(P::YCBCR_ITU_T871_9ZT_422_U10(), {by<ConvertToFullFrame>(F::RGB_U12()), by<ConvertBitDepth>(F::RGB_U15plus1()),
                                             by<ConvertRGBtoYCbCr42x>(P::YCBCR_ITU_T871_9ZT_422_U10())})}},

    // The converter refuses RGBA_U8, here and in the next row.
    {P::YCBCR_ITU_T871_YUYV_422_U8(), {
        fromYCbCr({F::RGB_U8(), F::BGR_U8(), F::RGBA_U8(), F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(),
                   F::ARGB_U15plus1()})}},

    {P::YCBCR_ITU_T871_9ZT_422_U10(), {
        fromYCbCr({F::BGR_U8(), F::RGB_U8(), F::RGB_U16(), F::BGRA_U8(), F::RGBA_U8(), F::BGRA_U16(), F::BGRA_F32(),
                   F::ARGB_U8(), F::ARGB_U15plus1()})}},

    {P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), {fromYCbCr({F::BGRA_F32()})}},

    {P::YCBCR_ITU_T871_9ZT_420_U8(), {
        fromYCbCr({F::RGB_U8(), F::BGR_U8(), F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32()})}},

    {P::YCOCG_DXT5_U8(), {
        fromDxt({F::RGB_U8(), F::BGR_U8(), F::BGRA_U8()}),
        to(F::BGRA_F32(), {by<ConvertYCoCgDXT5toRGB>(F::BGRA_U8()), by<ConvertBitDepth>(F::BGRA_F32())})}},

    {P::BGR_DPX_PACKED_U12(), {
        toFull({F::BGRA_U8(), F::RGBA_U8()}),
        to(F::BGR_U8(), {by<ConvertToFullFrame>(F::BGRA_U8()), by<ConvertColourspace>(F::BGR_U8())}),
        to(F::RGB_U8(), {by<ConvertToFullFrame>(F::RGBA_U8()), by<ConvertColourspace>(F::RGB_U8())}),
        to(P::BGR_SMPTE_2110_U12(), {by<ConvertToFullFrame>(F::BGR_U12()), by<ConvertToPackedFrame>(P::BGR_SMPTE_2110_U12())})}},

    {P::RGB_DPX_PACKED_U12(), {
        toFull({F::RGB_U12(), F::BGR_U12(), F::BGRA_U8(), F::RGBA_U8()}),
        to(F::RGB_U8(), {by<ConvertToFullFrame>(F::RGBA_U8()), by<ConvertColourspace>(F::RGB_U8())}),
        to(F::BGR_U8(), {by<ConvertToFullFrame>(F::RGBA_U8()), by<ConvertColourspace>(F::BGR_U8())}),
        to(P::RGB_SMPTE_2110_U12(), {by<ConvertToFullFrame>(F::RGB_U12()), by<ConvertToPackedFrame>(P::RGB_SMPTE_2110_U12())})}},
});
// clang-format on

} // namespace MediaConversion

// The catalogue of formats, one line each.
#include <MediaConversion/MediaPipeline/FrameFormat.h>

namespace Zentrel {

namespace {

/// A format that stores each pixel by itself, every sample in the smallest machine type that holds its depth.
FrameFormat full(Colourspace colourspace, ChannelType channelType, std::uint32_t channels,
                 const char* layout) {
    std::uint32_t const sampleBytes = channelType == ChannelType::U8    ? 1
                                      : channelType == ChannelType::F32 ? 4
                                                                        : 2;
    return {colourspace, channelType, PixelPacking({channels * sampleBytes}, {channels}, {1, 1}), layout};
}

FrameFormat packed(Colourspace colourspace, ChannelType channelType, std::uint32_t bytes,
                   std::uint32_t samples, PixelPacking::Pixels block, const char* layout) {
    return {colourspace, channelType, PixelPacking({bytes}, {samples}, block), layout};
}

} // namespace

using C = Colourspace;
using T = ChannelType;
using Full = FullFrameFormat;
using Packed = PackedFrameFormat;

// clang-format off
FrameFormat Full::RGB_U8()                   { return full(C::RGB,            T::U8,       3, "RGB"); }
FrameFormat Full::BGR_U8()                   { return full(C::RGB,            T::U8,       3, "BGR"); }
FrameFormat Full::RGB_U10()                  { return full(C::RGB,            T::U10,      3, "RGB"); }
FrameFormat Full::BGR_U10()                  { return full(C::RGB,            T::U10,      3, "BGR"); }
FrameFormat Full::RGB_U12()                  { return full(C::RGB,            T::U12,      3, "RGB"); }
FrameFormat Full::BGR_U12()                  { return full(C::RGB,            T::U12,      3, "BGR"); }
FrameFormat Full::RGB_U15plus1()             { return full(C::RGB,            T::U15plus1, 3, "RGB"); }
FrameFormat Full::BGR_U15plus1()             { return full(C::RGB,            T::U15plus1, 3, "BGR"); }
FrameFormat Full::RGB_U16()                  { return full(C::RGB,            T::U16,      3, "RGB"); }
FrameFormat Full::BGR_U16()                  { return full(C::RGB,            T::U16,      3, "BGR"); }
FrameFormat Full::RGB_F32()                  { return full(C::RGB,            T::F32,      3, "RGB"); }
FrameFormat Full::BGR_F32()                  { return full(C::RGB,            T::F32,      3, "BGR"); }
FrameFormat Full::RGBA_U8()                  { return full(C::RGBA,           T::U8,       4, "RGBA"); }
FrameFormat Full::BGRA_U8()                  { return full(C::RGBA,           T::U8,       4, "BGRA"); }
FrameFormat Full::ARGB_U8()                  { return full(C::RGBA,           T::U8,       4, "ARGB"); }
FrameFormat Full::ARGB_U15plus1()            { return full(C::RGBA,           T::U15plus1, 4, "ARGB"); }
FrameFormat Full::BGRA_U16()                 { return full(C::RGBA,           T::U16,      4, "BGRA"); }
FrameFormat Full::RGBA_F32()                 { return full(C::RGBA,           T::F32,      4, "RGBA"); }
FrameFormat Full::BGRA_F32()                 { return full(C::RGBA,           T::F32,      4, "BGRA"); }
FrameFormat Full::YCBCR_ITU_T871_YCBCR_U8()  { return full(C::YCbCr_ITU_T871, T::U8,       3, "YCbCr"); }
FrameFormat Full::YCBCR_ITU_T871_YCBCR_F32() { return full(C::YCbCr_ITU_T871, T::F32,      3, "YCbCr"); }
FrameFormat Full::YCBCR_ITU_T871_YCRCB_U8()  { return full(C::YCbCr_ITU_T871, T::U8,       3, "YCrCb"); }
FrameFormat Full::YCOCGA_COCGAY_U8()         { return full(C::YCoCgA,         T::U8,       4, "CoCgAY"); }
FrameFormat Full::YCBCR_ITU_T871_YCBCR_U10() { return full(C::YCbCr_ITU_T871, T::U10,      3, "YCbCr"); }

//                                                                    colourspace         depth  bytes samples block  layout
FrameFormat Packed::RGB_DPX_FILLED_U10()                  { return packed(C::RGB,             T::U10,  4,  3, {1, 1}, "RGB-DPX-FILLED"); }
FrameFormat Packed::BGR_DPX_FILLED_U10()                  { return packed(C::RGB,             T::U10,  4,  3, {1, 1}, "BGR-DPX-FILLED"); }
FrameFormat Packed::RGB_DPX_PACKED_U12()                  { return packed(C::RGB,             T::U12,  9,  6, {1, 2}, "RGB-DPX-PACKED"); }
FrameFormat Packed::BGR_DPX_PACKED_U12()                  { return packed(C::RGB,             T::U12,  9,  6, {1, 2}, "BGR-DPX-PACKED"); }
FrameFormat Packed::RGB_SMPTE_2110_U12()                  { return packed(C::RGB,             T::U12,  9,  6, {1, 2}, "RGB-SMPTE-2110"); }
FrameFormat Packed::BGR_SMPTE_2110_U12()                  { return packed(C::RGB,             T::U12,  9,  6, {1, 2}, "BGR-SMPTE-2110"); }
FrameFormat Packed::RGB_DXT1_U8()                         { return packed(C::RGB,             T::U8,   8, 48, {4, 4}, "RGB-DXT1"); }
FrameFormat Packed::YCBCR_ITU_T871_YUYV_422_U8()          { return packed(C::YCbCr_ITU_T871,  T::U8,   4,  4, {1, 2}, "YUYV-422"); }
FrameFormat Packed::YCBCR_ITU_T871_9ZT_422_U10()          { return packed(C::YCbCr_ITU_T871,  T::U10,  5,  4, {1, 2}, "9ZT-422"); }
FrameFormat Packed::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12() { return packed(C::YCbCrA_ITU_T871, T::U12,  8,  6, {1, 2}, "9ZT-4224-HYBRID"); }
FrameFormat Packed::YCBCR_ITU_T871_9ZT_420_U8()           { return packed(C::YCbCr_ITU_T871,  T::U8,   6,  6, {2, 2}, "9ZT-420"); }
FrameFormat Packed::YCOCG_DXT5_U8()                       { return packed(C::YCoCg,           T::U8,  16, 48, {4, 4}, "YCoCg-DXT5"); }
// clang-format on

} // namespace Zentrel

// The pixel formats: what a frame's samples mean and how they lie in memory, and the catalogue of all
// formats.
#pragma once

#include <MediaConversion/MediaPipeline/PixelPacking.h>

#include <cstdint>
#include <string>

namespace Zentrel {

/// The depth of one sample, with its full scale.
enum class ChannelType : std::uint32_t {
    U8,       ///< 0..255 in a byte
    U10,      ///< 0..1023, in a 16-bit word when unpacked
    U12,      ///< 0..4095, in a 16-bit word when unpacked
    U15plus1, ///< 0..32768 in a 16-bit word: full scale is 2 to the 15th
    U16,      ///< 0..65535
    F32       ///< 32-bit float, nominally 0..1
};

/// The colour model. It says nothing of the channels' order, which is in the format's layout name.
enum class Colourspace : std::uint32_t {
    RGB,
    RGBA,
    YCbCr_ITU_T871, ///< full-range YCbCr of ITU-T T.871
    YCbCrA_ITU_T871,
    YCoCg,
    YCoCgA
};

/// A pixel format. A plain value: formats with equal fields are the same format and the same map key.
struct FrameFormat {
    Colourspace colourspace;
    ChannelType channelType;
    PixelPacking pixelPacking;
    std::string layoutName; ///< channel order of a full format ("BGRA"), scheme of a packed one ("9ZT-422")

    /// Lexicographic over the fields in the order of their declaration; layout names compare as byte strings.
    bool operator<(FrameFormat const& other) const;
    bool operator==(FrameFormat const& other) const;
    bool operator!=(FrameFormat const& other) const { return !(*this == other); }

    /// "U8", "F32"; a value out of range gives "(Unknown ChannelType 6)".
    static std::string toString(ChannelType channelType);
    /// "RGB", "YCbCr_ITU_T871"; a value out of range gives "(Unknown Colourspace 9)".
    static std::string toString(Colourspace colourspace);
    /// Colourspace, channel type and layout, as in "RGB_U8_BGR".
    static std::string toString(FrameFormat const& format);
};

/// The formats with one pixel in each stored element and one stored sample for each channel.
struct FullFrameFormat {
    static FrameFormat RGB_U8();
    static FrameFormat BGR_U8();
    static FrameFormat RGB_U10();
    static FrameFormat BGR_U10();
    static FrameFormat RGB_U12();
    static FrameFormat BGR_U12();
    static FrameFormat RGB_U15plus1();
    static FrameFormat BGR_U15plus1();
    static FrameFormat RGB_U16();
    static FrameFormat BGR_U16();
    static FrameFormat RGB_F32();
    static FrameFormat BGR_F32();
    static FrameFormat RGBA_U8();
    static FrameFormat BGRA_U8();
    static FrameFormat ARGB_U8();
    static FrameFormat ARGB_U15plus1();
    static FrameFormat BGRA_U16();
    static FrameFormat RGBA_F32();
    static FrameFormat BGRA_F32();
    static FrameFormat YCBCR_ITU_T871_YCBCR_U8();
    static FrameFormat YCBCR_ITU_T871_YCBCR_F32();
    static FrameFormat YCBCR_ITU_T871_YCRCB_U8();
    static FrameFormat YCOCGA_COCGAY_U8();
    /// A format value only: no frame can have it.
    static FrameFormat YCBCR_ITU_T871_YCBCR_U10();
};

/// The formats that store several pixels, or samples packed to the bit, in one element.
struct PackedFrameFormat {
    static FrameFormat RGB_DPX_FILLED_U10();
    static FrameFormat BGR_DPX_FILLED_U10();
    static FrameFormat RGB_DPX_PACKED_U12();
    static FrameFormat BGR_DPX_PACKED_U12();
    static FrameFormat RGB_SMPTE_2110_U12();
    static FrameFormat BGR_SMPTE_2110_U12();
    static FrameFormat RGB_DXT1_U8();
    static FrameFormat YCBCR_ITU_T871_YUYV_422_U8();
    static FrameFormat YCBCR_ITU_T871_9ZT_422_U10();
    static FrameFormat YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12();
    static FrameFormat YCBCR_ITU_T871_9ZT_420_U8();
    static FrameFormat YCOCG_DXT5_U8();
};

} // namespace Zentrel

// The nine outputs of the writer: one row each, in menu order.
#pragma once

#include <MediaConversion/MediaPipeline/FrameFormat.h>

#include <array>

/// One entry of the "Output format" menu.
struct OutputFormat {
    const char* label;                ///< as the menu and the scripts of the host spell it
    const char* shortName;            ///< as people type it on a command line
    Zentrel::FrameFormat (*format)(); ///< the pixel format that goes into the file
};

/// The order is fixed: the menu's value, which scripts store, is the index into this table.
inline constexpr std::array<OutputFormat, 9> outputFormats{{
    {"8-bit YCoCg DXT5", "dxt5", Zentrel::PackedFrameFormat::YCOCG_DXT5_U8},
    {"8-bit YCbCr 4:2:0", "420", Zentrel::PackedFrameFormat::YCBCR_ITU_T871_9ZT_420_U8},
    {"8-bit YCbCr 4:2:2", "422", Zentrel::PackedFrameFormat::YCBCR_ITU_T871_YUYV_422_U8},
    {"10-bit YCbCr 4:2:2", "422-10", Zentrel::PackedFrameFormat::YCBCR_ITU_T871_9ZT_422_U10},
    {"12-bit RGB 4:4:4", "rgb12", Zentrel::PackedFrameFormat::RGB_SMPTE_2110_U12},
    {"10-bit RGB 4:4:4", "rgb10", Zentrel::PackedFrameFormat::RGB_DPX_FILLED_U10},
    {"8-bit RGB 4:4:4", "rgb8", Zentrel::FullFrameFormat::RGB_U8},
    {"8-bit RGB 4:4:4:4 (+ alpha)", "rgba8", Zentrel::FullFrameFormat::RGBA_U8},
    {"10/12-bit hybrid YCbCr 4:2:2:4 (+ alpha)", "4224",
     Zentrel::PackedFrameFormat::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12},
}};

// Pixels of full frames as types: the kernels of all converters are templates over them.
#pragma once

#include <cstdint>

namespace MediaConversion {

// The depths of samples: how one is stored and which value is full scale.
// clang-format off
struct U8       { using Sample = std::uint8_t;  static constexpr Sample fullScale = 255; };
struct U10      { using Sample = std::uint16_t; static constexpr Sample fullScale = 1023; };
struct U12      { using Sample = std::uint16_t; static constexpr Sample fullScale = 4095; };
struct U15plus1 { using Sample = std::uint16_t; static constexpr Sample fullScale = 32768; };
struct U16      { using Sample = std::uint16_t; static constexpr Sample fullScale = 65535; };
struct F32      { using Sample = float;         static constexpr Sample fullScale = 1; };

// The orders of channels: how many there are and where each lies. The alpha of three channels is nowhere.
struct Rgb  { static constexpr int channels = 3, red = 0, green = 1, blue = 2; };
struct Bgr  { static constexpr int channels = 3, blue = 0, green = 1, red = 2; };
struct Rgba { static constexpr int channels = 4, red = 0, green = 1, blue = 2, alpha = 3; };
struct Bgra { static constexpr int channels = 4, blue = 0, green = 1, red = 2, alpha = 3; };
struct Argb { static constexpr int channels = 4, alpha = 0, red = 1, green = 2, blue = 3; };
// clang-format on

/// One pixel of a full frame: the samples of `Depth` in the order of `Order`.
template <class Order_, class Depth_>
struct Pixel {
    using Order = Order_;
    using Depth = Depth_;
    using Sample = typename Depth::Sample;
    static constexpr int channels = Order::channels;

    Sample samples[channels];
};

} // namespace MediaConversion

// Half-floats, as pictures of linear light hold them.
#pragma once

#include <cstdint>
#include <cstring>

namespace ZetTool {

/// The value of an IEEE 754 half-float, which every float can hold. Without branches and without subnormal
/// floats, so that compilers make loops of it fast.
inline float floatOfHalf(std::uint16_t half) {
    constexpr int wider = 23 - 10; // a float's mantissa is, in bits
    constexpr std::uint32_t exponentMask = 0x7c00u << wider, bias = (127u - 15u) << 23;
    constexpr float smallestNormal = 0x1p-14f;

    const std::uint32_t magnitude = (half & 0x7fffu) << wider, exponent = magnitude & exponentMask;
    std::uint32_t bits = magnitude + bias;
    bits += exponent == exponentMask ? (128u - 16u) << 23 : 0; // infinity and what is no number stay it
    bits += exponent == 0 ? 1u << 23 : 0; // 0 and subnormal ones: a one too much before the point
    float value;
    std::memcpy(&value, &bits, sizeof value);
    value -= exponent == 0 ? smallestNormal : 0.0f;
    std::memcpy(&bits, &value, sizeof bits);
    bits |= (half & 0x8000u) << 16;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace ZetTool

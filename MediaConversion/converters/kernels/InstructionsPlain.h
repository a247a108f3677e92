// What vectors need of the compiler on any machine: 16 bytes, in the language of the compiler's own vectors.
#pragma once

#include <MediaConversion/converters/kernels/VectorTypes.h>

namespace MediaConversion {
namespace {

using FloatVector = VectorOf<float, 16>;
using IntVector = VectorOf<std::int32_t, 16>;
using ByteVector = VectorOf<std::uint8_t, 16>;

/// Whether one instruction can put the bytes of a quad of 16 into any order.
constexpr bool shufflesBytes = false;

/// 16 bytes each from `first`, `first + stride` and so on, as many as the vector takes.
inline FloatVector loadQuads(std::uint8_t const* first, int) {
    FloatVector quad;
    std::memcpy(&quad, first, sizeof quad);
    return quad;
}

/// The larger or the smaller numbers; where one is NaN, those of `b`. For vectors the compilers do not see
/// that this is one instruction.
inline FloatVector larger(FloatVector a, FloatVector b) { return a > b ? a : b; }
inline FloatVector smaller(FloatVector a, FloatVector b) { return a < b ? a : b; }

/// Without the fractions; NaN becomes 0 or the least integer.
inline IntVector truncated(FloatVector a) {
    return __builtin_convertvector(a == a ? a : FloatVector{}, IntVector);
}

/// Of pairs of 16-bit numbers, none below zero: the sums of the lower and the upper ones with these weights,
/// as integers or as floats. They must stay within 2^24, where floats are exact.
template <int lower, int upper>
FloatVector pairSums(IntVector pairs) {
    auto const weighted = [](IntVector numbers, int weight) {
        // To add -0 changes nothing, so that the compilers leave it out.
        return weight == 0 ? -FloatVector{}
                           : __builtin_convertvector(numbers, FloatVector) * static_cast<float>(weight);
    };
    return weighted(pairs & 0xffff, lower) + weighted(pairs >> 16, upper);
}

/// Whether any of the numbers is zero.
inline bool anyZero(IntVector a) {
    auto const isZero = reinterpret_cast<VectorOf<std::int64_t, 16>>(a == 0);
    return (isZero[0] | isZero[1]) != 0;
}

/// Limited to 0..255.
inline ByteVector limitedSum(ByteVector a, ByteVector b) {
    ByteVector const most = ~b;
    return (a < most ? a : most) + b;
}
inline ByteVector limitedDifference(ByteVector a, ByteVector b) { return (a > b ? a : b) - b; }

/// Rounded up.
inline ByteVector mean(ByteVector a, ByteVector b) {
    auto const half = reinterpret_cast<IntVector>(a ^ b) >> 1 & 0x7f7f7f7f;
    return (a | b) - reinterpret_cast<ByteVector>(half);
}

/// In each number: of the four bytes of `table` those that the bytes of `places` (0..3) name.
inline IntVector bytesAt(IntVector table, IntVector places) {
    auto const inAllBytes = [&](int byte) {
        IntVector const low = table >> (8 * byte) & 0xff, two = low | low << 8;
        return two | two << 16;
    };
    auto const isSet = [&](int bit) {
        using Bytes = VectorOf<std::int8_t, 16>;
        return reinterpret_cast<IntVector>(reinterpret_cast<Bytes>(places & bit * 0x01010101) > 0);
    };
    auto const chosen = [](IntVector condition, IntVector a, IntVector b) {
        return b ^ (condition & (a ^ b));
    };
    IntVector const odd = isSet(1);
    return chosen(isSet(2), chosen(odd, inAllBytes(3), inAllBytes(2)),
                  chosen(odd, inAllBytes(1), inAllBytes(0)));
}

} // namespace
} // namespace MediaConversion

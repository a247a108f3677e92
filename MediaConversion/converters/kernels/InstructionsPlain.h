// What vectors need of the compiler on any machine: 16 bytes, in the language of the compiler's own vectors.
#pragma once

#include <MediaConversion/converters/kernels/VectorTypes.h>

namespace MediaConversion {
namespace {

using FloatVector = VectorOf<float, 16>;
using IntVector = VectorOf<std::int32_t, 16>;

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

/// Whether any of the numbers is zero.
inline bool anyZero(IntVector a) { return a[0] == 0 || a[1] == 0 || a[2] == 0 || a[3] == 0; }

} // namespace
} // namespace MediaConversion

// AVX-512: 64 bytes. The functions are explained in InstructionsPlain.h.
#pragma once

#include <MediaConversion/converters/kernels/VectorTypes.h>

namespace MediaConversion {
namespace {

using FloatVector = VectorOf<float, 64>;
using IntVector = VectorOf<std::int32_t, 64>;

inline FloatVector loadQuads(float const* first, std::ptrdiff_t stride) {
    __m512 quads = _mm512_castps128_ps512(_mm_loadu_ps(first));
    quads = _mm512_insertf32x4(quads, _mm_loadu_ps(first + stride), 1);
    quads = _mm512_insertf32x4(quads, _mm_loadu_ps(first + 2 * stride), 2);
    return _mm512_insertf32x4(quads, _mm_loadu_ps(first + 3 * stride), 3);
}

inline bool anyZero(IntVector a) {
    auto const bits = reinterpret_cast<__m512i>(a);
    return _mm512_testn_epi32_mask(bits, bits) != 0;
}

} // namespace
} // namespace MediaConversion

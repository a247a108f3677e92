// AVX-512: 64 bytes. The functions are explained in InstructionsPlain.h.
#pragma once

#include <MediaConversion/converters/kernels/VectorTypes.h>

namespace MediaConversion {
namespace {

using FloatVector = VectorOf<float, 64>;
using IntVector = VectorOf<std::int32_t, 64>;
using ByteVector = VectorOf<std::uint8_t, 64>;

constexpr bool shufflesBytes = true;

inline __m128 loadQuad(std::uint8_t const* bytes) {
    return _mm_loadu_ps(reinterpret_cast<float const*>(bytes));
}

inline FloatVector loadQuads(std::uint8_t const* first, int stride) {
    if (stride == 16)
        return _mm512_loadu_ps(reinterpret_cast<float const*>(first));
    __m512 quads = _mm512_castps128_ps512(loadQuad(first));
    quads = _mm512_insertf32x4(quads, loadQuad(first + stride), 1);
    quads = _mm512_insertf32x4(quads, loadQuad(first + 2 * stride), 2);
    return _mm512_insertf32x4(quads, loadQuad(first + 3 * stride), 3);
}

// All lanes are chosen: for the forms without a choice g++ 12 warns of numbers that are not initialised.
inline FloatVector larger(FloatVector a, FloatVector b) { return _mm512_maskz_max_ps(0xffff, a, b); }
inline FloatVector smaller(FloatVector a, FloatVector b) { return _mm512_maskz_min_ps(0xffff, a, b); }

inline IntVector truncated(FloatVector a) {
    return reinterpret_cast<IntVector>(_mm512_maskz_cvttps_epi32(0xffff, a));
}

template <int lower, int upper>
IntVector pairSums(IntVector pairs) {
    return reinterpret_cast<IntVector>(_mm512_madd_epi16(
        reinterpret_cast<__m512i>(pairs), _mm512_set1_epi32((lower & 0xffff) | upper * (1 << 16))));
}

inline bool anyZero(IntVector a) {
    auto const bits = reinterpret_cast<__m512i>(a);
    return _mm512_testn_epi32_mask(bits, bits) != 0;
}

inline ByteVector limitedSum(ByteVector a, ByteVector b) {
    return reinterpret_cast<ByteVector>(
        _mm512_adds_epu8(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
}
inline ByteVector limitedDifference(ByteVector a, ByteVector b) {
    return reinterpret_cast<ByteVector>(
        _mm512_subs_epu8(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
}

inline ByteVector mean(ByteVector a, ByteVector b) {
    return reinterpret_cast<ByteVector>(
        _mm512_avg_epu8(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
}

inline IntVector bytesAt(IntVector table, IntVector places) {
    constexpr int number = 0x04040404;
    IntVector const inQuad =
        places | IntVector{0, number, 2 * number, 3 * number, 0, number, 2 * number, 3 * number,
                           0, number, 2 * number, 3 * number, 0, number, 2 * number, 3 * number};
    return reinterpret_cast<IntVector>(
        _mm512_shuffle_epi8(reinterpret_cast<__m512i>(table), reinterpret_cast<__m512i>(inQuad)));
}

} // namespace
} // namespace MediaConversion

// AVX2: 32 bytes. The functions are explained in InstructionsPlain.h.
#pragma once

#include <MediaConversion/converters/kernels/VectorTypes.h>

namespace MediaConversion {
namespace {

using FloatVector = VectorOf<float, 32>;
using IntVector = VectorOf<std::int32_t, 32>;
using ByteVector = VectorOf<std::uint8_t, 32>;

constexpr bool shufflesBytes = true;

inline __m128 loadQuad(std::uint8_t const* bytes) {
    return _mm_loadu_ps(reinterpret_cast<float const*>(bytes));
}

inline FloatVector loadQuads(std::uint8_t const* first, int stride) {
    if (stride == 16)
        return _mm256_loadu_ps(reinterpret_cast<float const*>(first));
    return _mm256_insertf128_ps(_mm256_castps128_ps256(loadQuad(first)), loadQuad(first + stride), 1);
}

inline FloatVector larger(FloatVector a, FloatVector b) { return _mm256_max_ps(a, b); }
inline FloatVector smaller(FloatVector a, FloatVector b) { return _mm256_min_ps(a, b); }

inline IntVector truncated(FloatVector a) { return reinterpret_cast<IntVector>(_mm256_cvttps_epi32(a)); }

template <int lower, int upper>
IntVector pairSums(IntVector pairs) {
    return reinterpret_cast<IntVector>(_mm256_madd_epi16(
        reinterpret_cast<__m256i>(pairs), _mm256_set1_epi32((lower & 0xffff) | upper * (1 << 16))));
}

inline bool anyZero(IntVector a) {
    return _mm256_movemask_epi8(_mm256_cmpeq_epi32(reinterpret_cast<__m256i>(a), _mm256_setzero_si256())) !=
           0;
}

inline ByteVector limitedSum(ByteVector a, ByteVector b) {
    return reinterpret_cast<ByteVector>(
        _mm256_adds_epu8(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
}
inline ByteVector limitedDifference(ByteVector a, ByteVector b) {
    return reinterpret_cast<ByteVector>(
        _mm256_subs_epu8(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
}

inline ByteVector mean(ByteVector a, ByteVector b) {
    return reinterpret_cast<ByteVector>(
        _mm256_avg_epu8(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
}

inline IntVector bytesAt(IntVector table, IntVector places) {
    constexpr int number = 0x04040404;
    IntVector const inQuad =
        places | IntVector{0, number, 2 * number, 3 * number, 0, number, 2 * number, 3 * number};
    return reinterpret_cast<IntVector>(
        _mm256_shuffle_epi8(reinterpret_cast<__m256i>(table), reinterpret_cast<__m256i>(inQuad)));
}

} // namespace
} // namespace MediaConversion

// Bytes as 32-bit words, the lowest byte first.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

#include <array>
#include <cstddef>

namespace MediaConversion {
namespace {

/// How many words so many bytes take.
constexpr int wordsFor(int bytes) { return (bytes + 3) / 4; }

/// The 32 bits from bit `bit` on; those behind the last word are 0.
template <std::size_t count>
Ints wordAt(std::array<Ints, count> const& words, int bit) {
    std::size_t const word = bit / 32;
    int const shift = bit % 32;
    if (shift == 0)
        return words[word];
    Ints const low = (words[word] >> shift) & static_cast<int>(0xffffffffu >> shift);
    return word + 1 < count ? low | words[word + 1] << (32 - shift) : low;
}

/// The words of what begins at bit `bit`.
template <std::size_t resultCount, std::size_t count>
std::array<Ints, resultCount> wordsAt(std::array<Ints, count> const& words, int bit) {
    std::array<Ints, resultCount> result;
    for (std::size_t i = 0; i < resultCount; ++i)
        result[i] = wordAt(words, bit + 32 * static_cast<int>(i));
    return result;
}

} // namespace
} // namespace MediaConversion

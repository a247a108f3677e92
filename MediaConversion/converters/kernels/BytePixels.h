// Pixels of 8-bit samples, of which weighted sums are made with integers.
#pragma once

#include <MediaConversion/converters/kernels/BlockWords.h>
#include <MediaConversion/converters/kernels/Shorts.h>
#include <MediaConversion/converters/kernels/Words.h>

#include <array>

namespace MediaConversion {
namespace {

/// A pixel of every block, or the sum of a few: the samples as pairs of 16-bit numbers, since one instruction
/// multiplies both of a pair with weights and adds them up.
template <class Order>
struct BytePixel {
    /// Channels 0 and 2, 1 and 3. Of three channels the last one may be anything.
    Shorts even, odd;

    BytePixel() = default;
    BytePixel(Shorts even, Shorts odd) : even(even), odd(odd) {}
    explicit BytePixel(Ints word) : even(lowerBytes(Shorts(word))), odd(upperBytes(Shorts(word))) {}

    /// The samples with these weights, added up: exact, if neither those above zero nor those below it come
    /// to 2^24.
    template <int blue, int green, int red>
    Floats weighted() const {
        constexpr auto weight = [](int channel) {
            return channel == Order::blue    ? blue
                   : channel == Order::green ? green
                   : channel == Order::red   ? red
                                             : 0;
        };
        auto const sums = pairSums<weight(0), weight(2)>(even.ints().vector) +
                          pairSums<weight(1), weight(3)>(odd.ints().vector);
        return Floats(__builtin_convertvector(sums, FloatVector));
    }
};

template <class Order>
BytePixel<Order> operator+(BytePixel<Order> const& a, BytePixel<Order> const& b) {
    return {a.even + b.even, a.odd + b.odd};
}

/// In each quad the first four groups of three bytes, a number each.
template <int... i>
FloatVector groupsOfThree(FloatVector quads, std::integer_sequence<int, i...>) {
    auto const bytes = reinterpret_cast<ByteVector>(quads);
    return reinterpret_cast<FloatVector>(
        shuffled<(i / 16 * 16 + i % 16 / 4 * 3 + i % 4 % 3)...>(bytes, bytes));
}

/// Two pixels of every block, each as a word, of which the last byte may be anything if it has three
/// channels.
template <class Source>
std::array<Ints, 2> loadPixelPairs(std::uint8_t const* pixels) {
    if constexpr (Source::channels == 4) {
        return loadBlocks<8>(pixels);
    } else if constexpr (!shufflesBytes) {
        auto const words = loadBlocks<6>(pixels);
        return {words[0], wordAt(words, 24)};
    } else {
        auto const quads = [&](int i) {
            return groupsOfThree(loadQuads(pixels + 12 * i, 24),
                                 std::make_integer_sequence<int, 4 * lanes>());
        };
        return firstAndSecond(quads(0), quads(1));
    }
}

} // namespace
} // namespace MediaConversion

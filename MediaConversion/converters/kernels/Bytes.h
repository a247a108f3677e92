// Bytes side by side, four in the place of each 32-bit integer.
#pragma once

#include <MediaConversion/converters/kernels/Shorts.h>

#include <array>
#include <cstdint>

namespace MediaConversion {
namespace {

struct Bytes {
    ByteVector vector;

    Bytes() = default;
    Bytes(int number) : vector(ByteVector{} + static_cast<std::uint8_t>(number)) {}
    explicit Bytes(ByteVector vector) : vector(vector) {}
    /// Four from each number, the lowest first.
    explicit Bytes(Ints ints) : vector(reinterpret_cast<ByteVector>(ints.vector)) {}
    /// Two from each number, which must fit them.
    explicit Bytes(Shorts lower, Shorts upper) : Bytes((lower | upper << 8).ints()) {}
    Ints ints() const { return Ints(reinterpret_cast<IntVector>(vector)); }
    Shorts shorts() const { return Shorts(ints()); }
};

// clang-format off
inline Bytes operator+(Bytes a, Bytes b) { return Bytes(a.vector + b.vector); }
inline Bytes operator-(Bytes a, Bytes b) { return Bytes(a.vector - b.vector); }
inline Bytes operator&(Bytes a, Bytes b) { return Bytes(a.vector & b.vector); }
inline Bytes operator|(Bytes a, Bytes b) { return Bytes(a.vector | b.vector); }
inline Bytes operator^(Bytes a, Bytes b) { return Bytes(a.vector ^ b.vector); }
inline Bytes operator~(Bytes a)          { return Bytes(ByteVector(~a.vector)); }
inline Bytes min(Bytes a, Bytes b) { return Bytes(a.vector < b.vector ? a.vector : b.vector); }
inline Bytes max(Bytes a, Bytes b) { return Bytes(a.vector > b.vector ? a.vector : b.vector); }
/// Rounded up.
inline Bytes mean(Bytes a, Bytes b) { return Bytes(mean(a.vector, b.vector)); }
/// Not modulo 256 but limited to 0..255.
inline Bytes limitedSum(Bytes a, Bytes b)        { return Bytes(limitedSum(a.vector, b.vector)); }
inline Bytes limitedDifference(Bytes a, Bytes b) { return Bytes(limitedDifference(a.vector, b.vector)); }
// clang-format on

/// All bits set, which is -1, where it holds. Processors compare numbers with signs only.
inline Bytes operator>(Bytes a, Bytes b) {
    using Signed = VectorOf<std::int8_t, sizeof(ByteVector)>;
    return Bytes(reinterpret_cast<ByteVector>(reinterpret_cast<Signed>(a.vector ^ 128) >
                                              reinterpret_cast<Signed>(b.vector ^ 128)));
}

/// In each number: of the four bytes of `table` those that the bytes of `places` name.
inline Ints bytesAt(Ints table, Ints places) { return Ints(bytesAt(table.vector, places.vector)); }

/// Of eight bytes.
inline Ints bytesAt(Ints low, Ints high, Ints places) {
    auto const isHigh = Bytes(places & 0x04040404).vector != 0;
    places = places & 0x03030303;
    return bytesAt(low, places) ^ (Ints(reinterpret_cast<IntVector>(isHigh)) & bytesAt(low ^ high, places));
}

/// Four pixels of every lane with 8-bit samples: the bytes of a channel as one number, the left pixel's
/// lowest.
struct PixelBytes {
    Ints red, green, blue;
};

} // namespace
} // namespace MediaConversion

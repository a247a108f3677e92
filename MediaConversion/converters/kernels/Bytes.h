// Bytes side by side, four in the place of each 32-bit integer.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

#include <array>
#include <cstdint>

namespace MediaConversion {
namespace {

struct Bytes {
    ByteVector vector;

    explicit Bytes(ByteVector vector) : vector(vector) {}
    /// Four from each number, the lowest first.
    explicit Bytes(Ints ints) : vector(reinterpret_cast<ByteVector>(ints.vector)) {}
    Ints ints() const { return Ints(reinterpret_cast<IntVector>(vector)); }
};

/// Limited to 0..255.
inline Bytes operator+(Bytes a, Bytes b) { return Bytes(limitedSum(a.vector, b.vector)); }
inline Bytes operator-(Bytes a, Bytes b) { return Bytes(limitedDifference(a.vector, b.vector)); }

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

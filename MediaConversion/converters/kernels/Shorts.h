// 16-bit integers side by side, two in the place of each 32-bit one.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

namespace MediaConversion {
namespace {

/// Results must fit 16 bits except where a shift to the left drops bits. `>>` rounds down, also below zero.
/// Comparisons set all bits, which is -1, where they hold.
struct Shorts {
    using Vector = VectorOf<std::int16_t, sizeof(IntVector)>;
    using Unsigned = VectorOf<std::uint16_t, sizeof(IntVector)>;
    Vector vector;

    Shorts() = default;
    Shorts(int number) : vector(Vector{} + static_cast<std::int16_t>(number)) {}
    explicit Shorts(Vector vector) : vector(vector) {}
    /// Two numbers from each one: of its lower and of its upper 16 bits.
    explicit Shorts(Ints ints) : vector(reinterpret_cast<Vector>(ints.vector)) {}
    Ints ints() const { return Ints(reinterpret_cast<IntVector>(vector)); }
};

static_assert(std::int16_t{-5} >> 1 == -3, "shifts of negative numbers must round down");

// clang-format off
inline Shorts operator+(Shorts a, Shorts b) { return Shorts(a.vector + b.vector); }
inline Shorts operator-(Shorts a, Shorts b) { return Shorts(a.vector - b.vector); }
inline Shorts operator*(Shorts a, Shorts b) { return Shorts(a.vector * b.vector); }
inline Shorts operator/(Shorts a, Shorts b) { return Shorts(a.vector / b.vector); }
inline Shorts operator&(Shorts a, Shorts b) { return Shorts(a.vector & b.vector); }
inline Shorts operator|(Shorts a, Shorts b) { return Shorts(a.vector | b.vector); }
inline Shorts operator^(Shorts a, Shorts b) { return Shorts(a.vector ^ b.vector); }
inline Shorts operator>>(Shorts a, int bits) { return Shorts(a.vector >> bits); }
inline Shorts operator<<(Shorts a, int bits) { return Shorts(Shorts::Vector(Shorts::Unsigned(a.vector) << bits)); }

inline Shorts operator>(Shorts a, Shorts b) { return Shorts(a.vector > b.vector); }
inline Shorts min(Shorts a, Shorts b) { return Shorts(a.vector < b.vector ? a.vector : b.vector); }
inline Shorts max(Shorts a, Shorts b) { return Shorts(a.vector > b.vector ? a.vector : b.vector); }
inline Shorts abs(Shorts a)           { return Shorts(a.vector < 0 ? -a.vector : a.vector); }
// clang-format on

/// The lower or the upper bytes, 0..255.
inline Shorts lowerBytes(Shorts a) { return a & 0xff; }
inline Shorts upperBytes(Shorts a) { return Shorts(Shorts::Vector(Shorts::Unsigned(a.vector) >> 8)); }

} // namespace
} // namespace MediaConversion

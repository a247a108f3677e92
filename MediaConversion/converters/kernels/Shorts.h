// 16-bit integers side by side, two in the place of each 32-bit one.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

namespace MediaConversion {
namespace {

/// Results must fit 16 bits except where a shift to the left drops bits. `>>` rounds down, also below zero.
/// Comparisons give 1 or 0.
struct Shorts {
    using Vector = VectorOf<std::int16_t, sizeof(IntVector)>;
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
inline Shorts operator<<(Shorts a, int bits) {
    using Unsigned = VectorOf<std::uint16_t, sizeof(IntVector)>;
    return Shorts(Shorts::Vector(Unsigned(a.vector) << bits));
}

// A comparison of vectors sets all bits of a lane where it holds.
inline Shorts operator<(Shorts a, Shorts b)  { return Shorts(-(a.vector < b.vector)); }
inline Shorts operator>(Shorts a, Shorts b)  { return Shorts(-(a.vector > b.vector)); }
inline Shorts operator<=(Shorts a, Shorts b) { return Shorts(-(a.vector <= b.vector)); }
inline Shorts operator>=(Shorts a, Shorts b) { return Shorts(-(a.vector >= b.vector)); }

inline Shorts min(Shorts a, Shorts b) { return Shorts(a.vector < b.vector ? a.vector : b.vector); }
inline Shorts max(Shorts a, Shorts b) { return Shorts(a.vector > b.vector ? a.vector : b.vector); }
inline Shorts abs(Shorts a)           { return max(a, 0 - a); }
// clang-format on

} // namespace
} // namespace MediaConversion

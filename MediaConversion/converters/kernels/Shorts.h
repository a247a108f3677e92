// 16-bit integers side by side, two in the place of each 32-bit one.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

namespace MediaConversion {
namespace {

/// Results must fit 16 bits except where a shift to the left drops bits. `>>` rounds down, also below zero.
/// Comparisons give 1 or 0.
class Shorts {
public:
    Shorts() = default;
    Shorts(int number) : vector(Vector{} + static_cast<std::int16_t>(number)) {}
    /// Two numbers from each one: of its lower and of its upper 16 bits.
    explicit Shorts(Ints ints) : vector(reinterpret_cast<Vector>(ints.vector)) {}
    Ints ints() const { return Ints(reinterpret_cast<IntVector>(vector)); }

    // clang-format off
    friend Shorts operator+(Shorts const& a, Shorts const& b) { return Shorts(a.vector + b.vector); }
    friend Shorts operator-(Shorts const& a, Shorts const& b) { return Shorts(a.vector - b.vector); }
    friend Shorts operator*(Shorts const& a, Shorts const& b) { return Shorts(a.vector * b.vector); }
    friend Shorts operator/(Shorts const& a, Shorts const& b) { return Shorts(a.vector / b.vector); }
    friend Shorts operator&(Shorts const& a, Shorts const& b) { return Shorts(a.vector & b.vector); }
    friend Shorts operator|(Shorts const& a, Shorts const& b) { return Shorts(a.vector | b.vector); }
    friend Shorts operator^(Shorts const& a, Shorts const& b) { return Shorts(a.vector ^ b.vector); }
    friend Shorts operator>>(Shorts const& a, int bits)      { return Shorts(a.vector >> bits); }
    friend Shorts operator<<(Shorts const& a, int bits)      { return Shorts(Vector(Unsigned(a.vector) << bits)); }

    // A comparison of vectors sets all bits of a lane where it holds.
    friend Shorts operator<(Shorts const& a, Shorts const& b)  { return Shorts(-(a.vector < b.vector)); }
    friend Shorts operator>(Shorts const& a, Shorts const& b)  { return Shorts(-(a.vector > b.vector)); }
    friend Shorts operator<=(Shorts const& a, Shorts const& b) { return Shorts(-(a.vector <= b.vector)); }
    friend Shorts operator>=(Shorts const& a, Shorts const& b) { return Shorts(-(a.vector >= b.vector)); }

    friend Shorts min(Shorts const& a, Shorts const& b) { return Shorts(a.vector < b.vector ? a.vector : b.vector); }
    friend Shorts max(Shorts const& a, Shorts const& b) { return Shorts(a.vector > b.vector ? a.vector : b.vector); }
    friend Shorts abs(Shorts const& a)                 { return max(a, 0 - a); }
    // clang-format on

private:
    using Vector = VectorOf<std::int16_t, sizeof(IntVector)>;
    using Unsigned = VectorOf<std::uint16_t, sizeof(IntVector)>;
    static_assert(std::int16_t{-5} >> 1 == -3, "shifts of negative numbers must round down");

    explicit Shorts(Vector vector) : vector(vector) {}

    Vector vector;
};

} // namespace
} // namespace MediaConversion

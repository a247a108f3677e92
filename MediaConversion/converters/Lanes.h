// Small integers side by side, one for each of several independent calculations.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace MediaConversion {

/// `count` 16-bit integers in vector registers. The operators work lane by lane, and results must fit 16 bits
/// except where a shift to the left drops bits. `>>` rounds down, also below zero. Comparisons give 1 or 0. A
/// number that stands beside lanes is the same in all of them. With one lane this is the plain scalar
/// calculation.
template <int count_>
class Lanes {
public:
    static constexpr int count = count_;
    using Numbers = std::array<std::int16_t, count>;

    Lanes() = default;
    Lanes(int number) : lanes(Vector{} + static_cast<std::int16_t>(number)) {}
    explicit Lanes(Numbers const& numbers) { std::memcpy(&lanes, numbers.data(), sizeof lanes); }

    Numbers numbers() const {
        Numbers result;
        std::memcpy(result.data(), &lanes, sizeof lanes);
        return result;
    }

    // clang-format off
    friend Lanes operator+(Lanes const& a, Lanes const& b) { return Lanes(a.lanes + b.lanes); }
    friend Lanes operator-(Lanes const& a, Lanes const& b) { return Lanes(a.lanes - b.lanes); }
    friend Lanes operator*(Lanes const& a, Lanes const& b) { return Lanes(a.lanes * b.lanes); }
    friend Lanes operator/(Lanes const& a, Lanes const& b) { return Lanes(a.lanes / b.lanes); }
    friend Lanes operator&(Lanes const& a, Lanes const& b) { return Lanes(a.lanes & b.lanes); }
    friend Lanes operator|(Lanes const& a, Lanes const& b) { return Lanes(a.lanes | b.lanes); }
    friend Lanes operator^(Lanes const& a, Lanes const& b) { return Lanes(a.lanes ^ b.lanes); }
    friend Lanes operator>>(Lanes const& a, int bits)      { return Lanes(a.lanes >> bits); }
    friend Lanes operator<<(Lanes const& a, int bits)      { return Lanes(Vector(Unsigned(a.lanes) << bits)); }

    // A comparison of vectors sets all bits of a lane where it holds.
    friend Lanes operator<(Lanes const& a, Lanes const& b)  { return Lanes(-(a.lanes < b.lanes)); }
    friend Lanes operator>(Lanes const& a, Lanes const& b)  { return Lanes(-(a.lanes > b.lanes)); }
    friend Lanes operator<=(Lanes const& a, Lanes const& b) { return Lanes(-(a.lanes <= b.lanes)); }
    friend Lanes operator>=(Lanes const& a, Lanes const& b) { return Lanes(-(a.lanes >= b.lanes)); }

    friend Lanes min(Lanes const& a, Lanes const& b) { return Lanes(a.lanes < b.lanes ? a.lanes : b.lanes); }
    friend Lanes max(Lanes const& a, Lanes const& b) { return Lanes(a.lanes > b.lanes ? a.lanes : b.lanes); }
    friend Lanes abs(Lanes const& a)                 { return max(a, 0 - a); }
    // clang-format on

private:
    typedef std::int16_t Vector __attribute__((vector_size(2 * count)));
    typedef std::uint16_t Unsigned __attribute__((vector_size(2 * count)));
    static_assert(std::int16_t{-5} >> 1 == -3, "shifts of negative numbers must round down");

    explicit Lanes(Vector vector) : lanes(vector) {}

    Vector lanes;
};

} // namespace MediaConversion

// Numbers side by side, as many as the instruction set's vectors hold. Before this a unit includes the
// Instructions*.h that names these vectors. Operators work lane by lane; a number that stands beside a vector
// is the same in all lanes. They are no friends defined in their class, to which g++ would not apply the
// instruction set of the region around it.
#pragma once

#include <cstdint>
#include <cstring>
#include <utility>

namespace MediaConversion {
namespace {

/// 32-bit numbers of a vector.
constexpr int lanes = sizeof(IntVector) / sizeof(std::int32_t);

/// The numbers of `low`, then those of `high`. By way of memory, in two pieces, it takes several times as
/// long.
template <class Whole, class Half, int... number>
Whole joined(Half low, Half high, std::integer_sequence<int, number...>) {
#if defined(__clang__) || __GNUC__ >= 12
    return __builtin_shufflevector(low, high, number...);
#else
    return Whole{(number < lanes / 2 ? low[number % (lanes / 2)] : high[number % (lanes / 2)])...};
#endif
}

template <class Whole, class Half>
Whole joined(Half low, Half high) {
    return joined<Whole>(low, high, std::make_integer_sequence<int, lanes>());
}

struct Ints {
    using Unsigned = VectorOf<std::uint32_t, sizeof(IntVector)>;
    IntVector vector;

    Ints() = default;
    Ints(std::int32_t number) : vector(IntVector{} + number) {}
    explicit Ints(IntVector vector) : vector(vector) {}
};

// clang-format off
inline Ints operator+(Ints a, Ints b)   { return Ints(a.vector + b.vector); }
inline Ints operator-(Ints a, Ints b)   { return Ints(a.vector - b.vector); }
inline Ints operator*(Ints a, Ints b)   { return Ints(a.vector * b.vector); }
inline Ints operator&(Ints a, Ints b)   { return Ints(a.vector & b.vector); }
inline Ints operator|(Ints a, Ints b)   { return Ints(a.vector | b.vector); }
inline Ints operator^(Ints a, Ints b)   { return Ints(a.vector ^ b.vector); }
inline Ints operator<<(Ints a, int bits) { return Ints(IntVector(Ints::Unsigned(a.vector) << bits)); }
inline Ints operator>>(Ints a, int bits) { return Ints(a.vector >> bits); }
inline Ints lowBits(Ints a, int bits)   { return Ints(a.vector & ((1 << bits) - 1)); }
inline Ints min(Ints a, Ints b)         { return Ints(a.vector < b.vector ? a.vector : b.vector); }
inline Ints max(Ints a, Ints b)         { return Ints(a.vector > b.vector ? a.vector : b.vector); }
/// Not 0 where it holds.
inline Ints operator>(Ints a, Ints b)   { return Ints(a.vector > b.vector); }
/// `a` where the condition is not 0.
inline Ints chosen(Ints condition, Ints a, Ints b) { return Ints(condition.vector != 0 ? a.vector : b.vector); }
// clang-format on

struct Doubles;

struct Floats {
    FloatVector vector;

    Floats() = default;
    Floats(double number) : vector(FloatVector{} + static_cast<float>(number)) {}
    explicit Floats(FloatVector vector) : vector(vector) {}
    explicit Floats(Ints ints) : vector(__builtin_convertvector(ints.vector, FloatVector)) {}
    explicit inline Floats(Doubles const& a);
    /// As they lie in memory.
    Ints bits() const { return Ints(reinterpret_cast<IntVector>(vector)); }
};

// clang-format off
inline Floats operator+(Floats a, Floats b) { return Floats(a.vector + b.vector); }
inline Floats operator-(Floats a, Floats b) { return Floats(a.vector - b.vector); }
inline Floats operator*(Floats a, Floats b) { return Floats(a.vector * b.vector); }
inline Floats operator/(Floats a, Floats b) { return Floats(a.vector / b.vector); }
// clang-format on

/// Limited to 0..`top`; NaN stays.
inline Floats limited(Floats a, Floats top) {
    return Floats(smaller(top.vector, larger(FloatVector{}, a.vector)));
}

/// Without the fraction; NaN becomes 0 or the least integer.
inline Ints truncated(Floats a) { return Ints(truncated(a.vector)); }

/// In two vectors, since doubles are twice as wide.
struct Doubles {
    using Half = VectorOf<double, sizeof(FloatVector)>;
    Half low, high;

    Doubles() = default;
    Doubles(double number) : low(Half{} + number), high(low) {}
    Doubles(Half low, Half high) : low(low), high(high) {}
    explicit Doubles(Floats a) {
        VectorOf<float, sizeof(FloatVector) / 2> halves[2];
        std::memcpy(halves, &a, sizeof halves);
        low = __builtin_convertvector(halves[0], Half);
        high = __builtin_convertvector(halves[1], Half);
    }
    explicit Doubles(Ints a) {
        VectorOf<std::int32_t, sizeof(IntVector) / 2> halves[2];
        std::memcpy(halves, &a, sizeof halves);
        low = __builtin_convertvector(halves[0], Half);
        high = __builtin_convertvector(halves[1], Half);
    }
};

Floats::Floats(Doubles const& a) {
    using HalfFloats = VectorOf<float, sizeof(FloatVector) / 2>;
    vector = joined<FloatVector>(__builtin_convertvector(a.low, HalfFloats),
                                 __builtin_convertvector(a.high, HalfFloats));
}

// clang-format off
inline Doubles operator+(Doubles a, Doubles b) { return {a.low + b.low, a.high + b.high}; }
inline Doubles operator-(Doubles a, Doubles b) { return {a.low - b.low, a.high - b.high}; }
inline Doubles operator*(Doubles a, Doubles b) { return {a.low * b.low, a.high * b.high}; }
// clang-format on

/// Without the fraction; none may be NaN.
inline Ints truncatedNumbers(Doubles a) {
    using HalfInts = VectorOf<std::int32_t, sizeof(IntVector) / 2>;
    return Ints(joined<IntVector>(__builtin_convertvector(a.low, HalfInts),
                                  __builtin_convertvector(a.high, HalfInts)));
}

/// Without the fraction; NaN, which no integer conversion is defined for, gives 0.
inline Ints truncated(Doubles a) {
    using Half = Doubles::Half;
    return truncatedNumbers({a.low == a.low ? a.low : Half{}, a.high == a.high ? a.high : Half{}});
}

} // namespace
} // namespace MediaConversion

// Codes as fractions of full scale.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

namespace MediaConversion {
namespace {

/// In double precision, without the division, which takes longer than all else. The reciprocal is split in
/// two: the upper part has so few bits that its product with a code is exact, the product with the lower one
/// is off by far less than any quotient is from the middle between two doubles.
template <int fullScale>
struct Fraction {
    static constexpr double upper = 1.0 / fullScale + 16 - 16, lower = (1 - fullScale * upper) / fullScale;

    template <class Real>
    static constexpr Real of(Real code) {
        return code * upper + code * lower;
    }

    /// For all codes up to `last`.
    static constexpr bool isExact(int last = fullScale) {
        for (int code = 0; code <= last; ++code)
            if (of<double>(code) != code / static_cast<double>(fullScale))
                return false;
        return true;
    }
};
static_assert(Fraction<255>::isExact() && Fraction<1023>::isExact() && Fraction<4095>::isExact());
static_assert(Fraction<32768>::isExact(65535) && Fraction<65535>::isExact());

template <int fullScale>
Doubles fraction(Ints code) {
    return Fraction<fullScale>::of(Doubles(code));
}

} // namespace
} // namespace MediaConversion

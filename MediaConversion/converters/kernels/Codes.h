// From values, nominally 0..1, to integer codes: rounded half up, as double precision gives it.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

namespace MediaConversion {
namespace {

/// Samples that are codes already.
class SampleCodes {
public:
    using Real = Ints;

    Ints operator()(Ints sample, int) const { return sample; }
    static constexpr bool certain() { return true; }
};

/// Rounds in double precision.
class DoubleCodes {
public:
    using Real = Doubles;

    Ints operator()(Doubles value, int bits) const { return truncated(value * ((1 << bits) - 1) + 0.5); }
    static constexpr bool certain() { return true; }
};

/// Rounds in single precision, which is several times faster, and tells whether all results are certainly
/// those of double precision.
///
/// Codes are first made with 24 bits, of which the upper ones are the code and the others its fraction. A
/// unit is the lowest of the 24 bits. A value that is off by at most `errorUnits` units, the roundings of the
/// product and of the sum (half a unit each) included, can give another code only where the fraction is that
/// close to a whole code. Codes are made that much too large, so that there the fraction is below twice as
/// much. There, and for NaN, whose conversion leaves the fraction 0, the results are not certain.
///
/// Samples above 1 make values below 0 too, whose codes are rounded towards zero.
template <int errorUnits, bool canBeNegative>
class SingleCodes {
public:
    using Real = Floats;

    Ints operator()(Floats value, int bits) {
        int const fractionBits = 24 - bits, fractions = 1 << fractionBits;
        static_assert((errorUnits & (errorUnits - 1)) == 0, "the mask below needs a power of two");
        Ints const code = truncated(value * (((1 << bits) - 1) * fractions) + (fractions / 2 + errorUnits));
        distance = min(distance, code & (fractions - 2 * errorUnits));
        if constexpr (canBeNegative)
            return (code + (code >> 31 & (fractions - 1))) >> fractionBits;
        else
            return code >> fractionBits;
    }

    bool certain() const { return !anyZero(distance.vector); }

private:
    // Zero where a fraction came too close to a whole code.
    Ints distance = 1 << 30;
};

} // namespace
} // namespace MediaConversion

// From values to integer codes: rounded half up, as double precision gives it. Codes out of range are taken
// modulo their bits.
//
// A kind of codes names the type of the values, `Real`, and their full scale, nominally the largest. A value
// may be given as the sum of several, with the `weight` that makes their mean of it.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

namespace MediaConversion {
namespace {

/// Samples that are codes already.
class SampleCodes {
public:
    using Real = Ints;

    Ints operator()(Ints sample, int bits) const { return lowBits(sample, bits); }
    static constexpr bool certain() { return true; }
};

/// Rounds in double precision.
class DoubleCodes {
public:
    using Real = Doubles;
    static constexpr int fullScale = 1;

    Ints operator()(Doubles value, int bits, double weight = 1) const {
        return lowBits(truncated(value * weight * ((1 << bits) - 1) + 0.5), bits);
    }
    static constexpr bool certain() { return true; }
};

/// Rounds in single precision, which is several times faster, and tells whether all results are certainly
/// those of double precision.
///
/// Codes are first made with 24 bits, of which the upper ones are the code and the others its fraction. A
/// unit is the lowest of the 24 bits. A value that is off by at most `errorUnits` units, the roundings of the
/// product and of the sum (half a unit each) and that of the factor included, can give another code only
/// where the fraction is that close to a whole code. Codes are made that much too large, so that there the
/// fraction is below twice as much. There, and for NaN, whose conversion leaves the fraction 0, the results
/// are not certain.
///
/// Samples above full scale make codes out of range; those below 0 are rounded towards zero.
template <int fullScale_, int errorUnits, bool outOfRange>
class SingleCodes {
public:
    using Real = Floats;
    static constexpr int fullScale = fullScale_;

    Ints operator()(Floats value, int bits, double weight = 1) {
        int const fractionBits = 24 - bits, fractions = 1 << fractionBits;
        static_assert((errorUnits & (errorUnits - 1)) == 0, "the mask below needs a power of two");
        Ints const code = truncated(value * (weight * factor(bits)) + addend(bits));
        distance = min(distance, code & (fractions - 2 * errorUnits));
        if constexpr (outOfRange)
            return lowBits((code + (code >> 31 & (fractions - 1))) >> fractionBits, bits);
        else
            return code >> fractionBits;
    }

    bool certain() const { return !anyZero(distance.vector); }

    /// Whether the codes of all integers up to full scale are those of double precision.
    static constexpr bool isExact(int bits) {
        for (int sample = 0; sample <= fullScale; ++sample) {
            float const code = sample * static_cast<float>(factor(bits)) + static_cast<float>(addend(bits));
            double const exact = sample / static_cast<double>(fullScale) * ((1 << bits) - 1) + 0.5;
            if (static_cast<int>(code) >> (24 - bits) != static_cast<int>(exact))
                return false;
        }
        return true;
    }

private:
    static constexpr double factor(int bits) { return ((1 << bits) - 1.0) * (1 << (24 - bits)) / fullScale; }
    static constexpr int addend(int bits) { return (1 << (23 - bits)) + errorUnits; }

    // Zero where a fraction came too close to a whole code.
    Ints distance = 1 << 30;
};

/// Codes that are proved to be those of double precision.
template <class Codes>
struct ProvenCodes : Codes {
    static constexpr bool certain() { return true; }
};

} // namespace
} // namespace MediaConversion

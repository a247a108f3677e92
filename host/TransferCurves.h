// From linear light to encoded samples. Samples beyond 0 to 1 stay on the curve: its straight part goes on
// below 0, the power above 1.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace EmbeddedHost {

/// IEC 61966-2-1.
struct SrgbCurve {
    float operator()(float linear) const {
        return linear <= 0.0031308f ? linear * 12.92f : 1.055f * std::pow(linear, 1 / 2.4f) - 0.055f;
    }
};

/// ITU-R BT.709.
struct Rec709Curve {
    float operator()(float linear) const {
        return linear < 0.018f ? linear * 4.5f : 1.099f * std::pow(linear, 0.45f) - 0.099f;
    }
};

/// A curve whose values are at hand for all numbers that a normal half-float can have: most linear pictures
/// come as half-floats, and their samples are spared the power function. The values are the curve's own.
template <class Curve>
class TabledCurve {
public:
    TabledCurve() {
        for (std::size_t i = 0; i < values.size(); ++i) {
            std::uint32_t const bits = (firstHalf + static_cast<std::uint32_t>(i)) << unusedBits;
            float number;
            std::memcpy(&number, &bits, sizeof number);
            values[i] = curve(number);
        }
    }

    float operator()(float linear) const {
        std::uint32_t bits;
        std::memcpy(&bits, &linear, sizeof bits);
        std::uint32_t const index = (bits >> unusedBits) - firstHalf;
        bool const isHalf = bits << (32 - unusedBits) == 0;
        return isHalf && index < values.size() ? values[index] : curve(linear);
    }

private:
    static constexpr int unusedBits = 23 - 10;            // of a float's mantissa, by a half
    static constexpr std::uint32_t firstHalf = 113 << 10; // 2^-14, the smallest normal one, above these bits

    Curve curve;
    std::array<float, 30 << 10> values; // 30 exponents, 10 bits of mantissa
};

/// Applies `curve` to `count` samples and writes every `stride`-th float. With an alpha buffer the samples
/// are divided by alpha before and multiplied after; where there is no coverage the sample is taken as it is.
template <class Curve>
void encodeRow(Curve const& curve, float* to, const float* from, const float* alpha, int count, int stride) {
    for (int i = 0; i < count; ++i, to += stride) {
        if (alpha && alpha[i] > 0)
            *to = curve(from[i] / alpha[i]) * alpha[i];
        else
            *to = curve(from[i]);
    }
}

} // namespace EmbeddedHost

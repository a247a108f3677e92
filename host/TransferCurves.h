// From linear light to encoded samples. Samples beyond 0 to 1 stay on the curve: its straight part goes on
// below 0, the power above 1.
#pragma once

#include <host/EmbeddedHost.h>

#include <array>
#include <cmath>
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

/// A curve whose values are at hand for all floats that a half-float can be, and all others as short: most
/// linear pictures come as half-floats. No sample below or above some bound is an exception, so that noise
/// about it costs no mispredicted branches. The values are the curve's own.
template <class Curve>
class TabledCurve {
public:
    TabledCurve() {
        for (std::uint32_t i = 0; i < values.size(); ++i) {
            std::uint32_t const bits = i << unusedBits;
            float number;
            std::memcpy(&number, &bits, sizeof number);
            values[i] = curve(number);
        }
    }

    float operator()(float linear) const {
        std::uint32_t bits;
        std::memcpy(&bits, &linear, sizeof bits);
        bool const isShort = bits << (32 - unusedBits) == 0;
        return isShort ? values[bits >> unusedBits] : curve(linear);
    }

private:
    static constexpr int unusedBits = 23 - 10; // of a float's mantissa, by a half

    Curve curve;
    std::array<float, 1 << (32 - unusedBits)> values;
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

/// The same with the curve of `transfer`.
inline void encodeRow(Transfer transfer, float* to, const float* from, const float* alpha, int count,
                      int stride) {
    switch (transfer) {
    case Transfer::None:
        return encodeRow([](float sample) { return sample; }, to, from, nullptr, count, stride);
    case Transfer::Srgb: {
        static const TabledCurve<SrgbCurve> srgb;
        return encodeRow(srgb, to, from, alpha, count, stride);
    }
    case Transfer::Rec709: {
        static const TabledCurve<Rec709Curve> rec709;
        return encodeRow(rec709, to, from, alpha, count, stride);
    }
    }
}

} // namespace EmbeddedHost

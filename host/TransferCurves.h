// From linear light to encoded samples. Samples beyond 0 to 1 stay on the curve: its straight part goes on
// below 0, the power above 1.
#pragma once

#include <cmath>

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

/// Applies `curve` to `count` samples and writes every `stride`-th float. With an alpha buffer the samples
/// are divided by alpha before and multiplied after; where there is no coverage the sample is taken as it is.
template <class Curve>
void encodeRow(Curve curve, float* to, const float* from, const float* alpha, int count, int stride) {
    for (int i = 0; i < count; ++i, to += stride) {
        if (alpha && alpha[i] > 0)
            *to = curve(from[i] / alpha[i]) * alpha[i];
        else
            *to = curve(from[i]);
    }
}

} // namespace EmbeddedHost

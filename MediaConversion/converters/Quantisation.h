// Between samples, normalised values (doubles, nominally 0..1) and integer codes.
#pragma once

#include <MediaConversion/converters/PixelTypes.h>

#include <cstdint>
#include <type_traits>

namespace MediaConversion {

/// The sample as a fraction of its full scale. Float samples are limited to 0..1, NaN excepted; integer samples above
/// full scale give values above 1.
template <class Depth>
double normalised(typename Depth::Sample sample) {
    double const value = sample;
    if constexpr (std::is_same_v<Depth, F32>)
        return value < 0.0 ? 0.0 : value > 1.0 ? 1.0 : value;
    else
        return value / Depth::fullScale;
}

/// A value in units of codes as a code: rounded half up by truncating towards zero after adding a half. NaN, which no
/// integer conversion is defined for, has all bits zero. |value| must be below 2^31.
inline std::int32_t roundedCode(double value) {
    double const raised = value + 0.5;
    return raised == raised ? static_cast<std::int32_t>(raised) : 0;
}

/// A normalised value as a sample of a full frame, limited to 0..full scale; NaN passes in float samples and is 0 in
/// integer ones.
template <class Depth>
typename Depth::Sample sampleOf(double value) {
    double const scaled = value * Depth::fullScale;
    double const limited = scaled < 0.0 ? 0.0 : scaled > Depth::fullScale ? Depth::fullScale : scaled;
    if constexpr (std::is_same_v<Depth, F32>)
        return static_cast<float>(limited);
    else
        return static_cast<typename Depth::Sample>(roundedCode(limited));
}

} // namespace MediaConversion

// An animated line-up chart of our own: to see at a glance what a format, a player or a cable does to a
// picture.
#pragma once

#include <opencv2/core.hpp>
#include <pictures/Picture.h>

namespace ZetTool {

/// From top to bottom: colour bars at full and half level, a moving mark over a scale, ramps of grey and of
/// each channel, and below them a zone plate, fine text with the frame number, and a soft disc on transparent
/// ground. Display-referred with straight alpha. The same frame is the same picture every time.
class Chart {
public:
    /// The longest side of a chart, in pixels.
    static constexpr int maxSide = 16384;

    /// Throws std::runtime_error for a side below 1 or above `maxSide`.
    explicit Chart(const PictureSize& size);

    PictureHeader header() const;
    Picture draw(int frame) const;

private:
    cv::Mat background; // RGBA floats
};

} // namespace ZetTool

#include "Difference.h"

#include <fmt/format.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>

namespace ZetTool {
namespace {

/// Below this, samples differ only by the rounding of float arithmetic.
constexpr double roundingError = 1e-6;

double psnrOf(double squares, std::size_t samples) {
    const double mean = squares / static_cast<double>(samples);
    return mean < roundingError * roundingError ? std::numeric_limits<double>::infinity()
                                                : -10 * std::log10(mean);
}

/// Floats from 0 to 1.
cv::Mat limited(const cv::Mat& pixels) {
    cv::Mat floats;
    pixels.convertTo(floats, CV_32F, pixels.depth() == CV_8U ? 1 / 255.0 : 1.0);
    cv::patchNaNs(floats);
    cv::min(floats, 1.0, floats);
    cv::max(floats, 0.0, floats);
    return floats;
}

} // namespace

Difference compare(const cv::Mat& decoded, const cv::Mat& source, bool alpha, double amplify) {
    cv::Mat amount;
    cv::absdiff(limited(decoded), limited(source), amount);
    const cv::Scalar squares = cv::sum(amount.mul(amount));
    cv::Mat colours;
    cv::mixChannels(amount, colours = cv::Mat(amount.size(), CV_32FC3), {0, 0, 1, 1, 2, 2});

    Difference difference;
    difference.colourPsnr = psnrOf(squares[0] + squares[1] + squares[2], 3 * amount.total());
    if (alpha)
        difference.alphaPsnr = psnrOf(squares[3], amount.total());
    cv::minMaxIdx(colours.reshape(1), nullptr, &difference.largest);
    colours.convertTo(difference.colours, CV_8U, 255 * amplify);
    return difference;
}

std::string psnrText(double psnr) { return std::isinf(psnr) ? "exact" : fmt::format("{:.1f} dB", psnr); }

} // namespace ZetTool

// How far a decoded picture is from its source.
#pragma once

#include <opencv2/core/mat.hpp>

#include <optional>
#include <string>

namespace ZetTool {

/// What is left of a difference, over all pixels, with full scale 1.
struct Difference {
    double colourPsnr;               ///< in dB, over red, green and blue together; infinite for none
    std::optional<double> alphaPsnr; ///< likewise; empty when alpha was not compared
    double largest;                  ///< of any colour sample
    cv::Mat colours;                 ///< blue, green, red bytes: the amount of the difference, amplified
};

/// Both pictures are of one size, in the order blue, green, red, alpha. The first is CV_8UC4 or CV_32FC4, the
/// source CV_32FC4; what is beyond 0 to 1 in it no file could hold, and is left out of account.
Difference compare(const cv::Mat& decoded, const cv::Mat& source, bool alpha, double amplify);

/// "45.1 dB", "exact"
std::string psnrText(double psnr);

} // namespace ZetTool

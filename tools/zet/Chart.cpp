#include "Chart.h"

#include <fmt/format.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace ZetTool {
namespace {

using Pixel = cv::Vec4f; // red, green, blue, alpha

const Pixel black{0, 0, 0, 1};
const Pixel white{1, 1, 1, 1};
const Pixel ground{0.12f, 0.12f, 0.13f, 1};

/// A rectangle in parts of the whole chart, so that every size has the same lay-out.
struct Area {
    double left, top, right, bottom;
};

constexpr Area fullBars{0.0, 0.0, 1.0, 0.24};
constexpr Area halfBars{0.0, 0.24, 1.0, 0.34};
constexpr Area scale{0.0, 0.34, 1.0, 0.40};
constexpr Area greyRamp{0.0, 0.40, 1.0, 0.46};
constexpr std::array<Area, 3> channelRamps{
    {{0.0, 0.46, 1.0, 0.50}, {0.0, 0.50, 1.0, 0.54}, {0.0, 0.54, 1.0, 0.58}}};
constexpr Area zonePlate{0.0, 0.58, 0.32, 1.0};
constexpr Area text{0.33, 0.60, 0.67, 0.98};
constexpr Area alphaField{0.68, 0.58, 1.0, 1.0};

constexpr int framesPerSweep = 48; // of the moving mark over the whole scale

cv::Mat part(const cv::Mat& chart, const Area& area) {
    const auto edge = [](double fraction, int pixels) {
        return static_cast<int>(std::lround(fraction * pixels));
    };
    const int left = edge(area.left, chart.cols), right = edge(area.right, chart.cols);
    const int top = edge(area.top, chart.rows), bottom = edge(area.bottom, chart.rows);
    return chart(cv::Range(top, bottom), cv::Range(left, right));
}

/// Sets every pixel of a part to shade(x, y), both from 0 to 1 over the part.
template <typename Shade>
void fill(cv::Mat part, Shade shade) {
    const auto along = [](int at, int count) { return count > 1 ? at / (count - 1.0) : 0.0; };
    for (int row = 0; row < part.rows; ++row) {
        Pixel* pixels = part.ptr<Pixel>(row);
        for (int column = 0; column < part.cols; ++column)
            pixels[column] = shade(along(column, part.cols), along(row, part.rows));
    }
}

void drawBars(cv::Mat part, float level) {
    // White, yellow, cyan, green, magenta, red, blue, black: the bits of the bar's number, inverted.
    constexpr int bars = 8;
    fill(part, [=](double x, double) {
        const int bar = std::min(static_cast<int>(x * bars), bars - 1);
        return Pixel(bar & 2 ? 0 : level, bar & 4 ? 0 : level, bar & 1 ? 0 : level, 1);
    });
}

void drawRamps(const cv::Mat& chart) {
    fill(part(chart, greyRamp), [](double x, double) {
        const auto level = static_cast<float>(x);
        return Pixel(level, level, level, 1);
    });
    for (int channel = 0; channel < 3; ++channel)
        fill(part(chart, channelRamps[static_cast<std::size_t>(channel)]), [=](double x, double) {
            Pixel pixel = black;
            pixel[channel] = static_cast<float>(x);
            return pixel;
        });
}

/// Rings that reach one cycle in two pixels at the plate's nearer edge.
void drawZonePlate(cv::Mat part) {
    const double radius = std::max(std::min(part.cols, part.rows) / 2.0, 1.0);
    fill(part, [=](double x, double y) {
        const double across = (x - 0.5) * (part.cols - 1), down = (y - 0.5) * (part.rows - 1);
        const double square = across * across + down * down;
        const double level =
            square > radius * radius ? 0.5 : 0.5 + 0.5 * std::cos(CV_PI / 2 * square / radius);
        return Pixel(cv::Vec4d(level, level, level, 1));
    });
}

/// A disc of all hues whose edge fades out over the outer half of its radius; all around is transparent.
void drawDisc(cv::Mat part) {
    const double radius = std::max(std::min(part.cols, part.rows) / 2.0, 1.0);
    fill(part, [=](double x, double y) {
        const double across = (x - 0.5) * (part.cols - 1) / radius,
                     down = (y - 0.5) * (part.rows - 1) / radius;
        const double turn = std::atan2(down, across);
        const auto hue = [&](double offset) { return 0.5 + 0.5 * std::cos(turn - offset * 2 * CV_PI / 3); };
        const double alpha = std::clamp(2.0 * (0.95 - std::hypot(across, down)), 0.0, 1.0);
        return Pixel(cv::Vec4d(hue(0), hue(1), hue(2), alpha));
    });
}

/// Writes a line of text whose box has this height; what is too small to read is left out.
void write(cv::Mat part, const std::string& line, double top, double height, const Pixel& colour) {
    constexpr int face = cv::FONT_HERSHEY_SIMPLEX;
    constexpr double legible = 0.3; // of the face's own size
    int below = 0;
    const cv::Size unit = cv::getTextSize(line, face, 1.0, 1, &below);
    const double size = std::min(0.7 * height / unit.height, 0.98 * part.cols / unit.width);
    if (size < legible)
        return;
    const int thickness = std::max(1, static_cast<int>(std::lround(1.5 * size)));
    // Smooth lines exist for 8-bit pictures only: they become the cover of the colour.
    cv::Mat cover(part.size(), CV_8UC1, cv::Scalar(0));
    const auto baseline = static_cast<int>(top + 0.85 * height);
    cv::putText(cover, line, {0, baseline}, face, size, 255, thickness, cv::LINE_AA);
    for (int row = 0; row < part.rows; ++row)
        for (int column = 0; column < part.cols; ++column)
            if (const float share = static_cast<float>(cover.at<uchar>(row, column)) / 255.0f; share > 0) {
                Pixel& pixel = part.at<Pixel>(row, column);
                pixel = pixel * (1 - share) + colour * share;
            }
}

void drawScale(cv::Mat part) {
    constexpr int strokes = framesPerSweep;
    for (int stroke = 0; stroke < strokes && !part.empty(); ++stroke) {
        const int column = stroke * part.cols / strokes;
        const int height = part.rows / (stroke % 12 == 0 ? 2 : stroke % 6 == 0 ? 3 : 6);
        part(cv::Range(part.rows - height, part.rows), cv::Range(column, column + 1)).setTo(white);
    }
}

void drawMark(cv::Mat part, int frame) {
    if (part.empty())
        return;
    const int step = (frame % framesPerSweep + framesPerSweep - 1) % framesPerSweep; // 0 at frame 1
    const int column = step * part.cols / framesPerSweep;
    const int width = std::min(std::max(part.cols / (2 * framesPerSweep), 1), part.cols - column);
    part(cv::Range::all(), cv::Range(column, column + width)).setTo(Pixel(1, 0.6f, 0, 1));
}

} // namespace

Chart::Chart(const PictureSize& size) {
    if (std::min(size.width, size.height) < 1 || std::max(size.width, size.height) > maxSide)
        throw std::runtime_error(
            fmt::format("a chart of {}: each side must be from 1 to {} pixels", size.text(), maxSide));
    background = cv::Mat(size.height, size.width, CV_32FC4);
    background.setTo(ground);
    drawBars(part(background, fullBars), 1.0f);
    drawBars(part(background, halfBars), 0.5f);
    drawScale(part(background, scale));
    drawRamps(background);
    drawZonePlate(part(background, zonePlate));
    drawDisc(part(background, alphaField));

    const cv::Mat panel = part(background, text);
    const double line = panel.rows / 10.0;
    write(panel, size.text(), 4.5 * line, 2 * line, white);
    write(panel, "The quick brown fox jumps over the lazy dog 0123456789", 7 * line, line, white);
    write(panel, "The quick brown fox jumps over the lazy dog 0123456789", 8.2 * line, line,
          Pixel(1, 0.3f, 0.3f, 1));
}

PictureHeader Chart::header() const {
    const std::uint64_t bytes = background.total() * background.elemSize();
    return {{background.cols, background.rows}, true, false, true, bytes, "sRGB"};
}

Picture Chart::draw(int frame) const {
    PixelBlock block{0, 0, header().size, background.channels()};
    block.allocate();
    const cv::Mat canvas(background.rows, background.cols, background.type(), block.samples->data());
    background.copyTo(canvas);
    drawMark(part(canvas, scale), frame);
    const cv::Mat panel = part(canvas, text);
    write(panel, fmt::format("{:04}", frame), 0, 4.0 * panel.rows / 10.0, white);
    return Picture(header(), std::move(block), {0, 1, 2, 3});
}

} // namespace ZetTool

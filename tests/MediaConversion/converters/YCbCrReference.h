// Subsampling and its undoing in plain formulas: one sample at a time, in double precision.
#pragma once

#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <array>
#include <map>

namespace TestSupport::YCbCr {

using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

inline auto const yuyv = P::YCBCR_ITU_T871_YUYV_422_U8(), ten = P::YCBCR_ITU_T871_9ZT_422_U10();
inline auto const square = P::YCBCR_ITU_T871_9ZT_420_U8(), hybrid = P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12();

inline FormatPairs const encodings = pairsOf({
    {{F::BGR_U16(), F::BGR_F32(), F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32()}, {yuyv, ten, square}},
    {{F::RGB_U8(), F::BGR_U8()}, {yuyv, square}},
    {{F::ARGB_U8(), F::ARGB_U15plus1()}, {yuyv, ten}},
    {{F::RGB_U15plus1()}, {ten}},
    {{F::BGRA_F32()}, {hybrid}},
});
inline FormatPairs const decodings = pairsOf({
    {{yuyv, ten, square}, {F::RGB_U8(), F::BGR_U8(), F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32()}},
    {{yuyv, ten}, {F::ARGB_U8(), F::ARGB_U15plus1()}},
    {{ten}, {F::RGB_U16(), F::RGB_U15plus1()}},
    {{hybrid}, {F::BGRA_F32()}},
});

/// Some bits of the code of a component: `bits` of them from `shift` on lie in the block at `position`,
/// counted upwards from the lowest bit of its first byte. Chroma belongs to pixel 0.
struct Field {
    enum Component { Y, Cb, Cr, A } component;
    int pixel, shift, bits, position;
};

struct Layout {
    int lumaBits, otherBits;
    std::vector<Field> fields;

    double highest(Field::Component component) const {
        return (1 << (component == Field::Y ? lumaBits : otherBits)) - 1;
    }
};

// clang-format off
inline std::map<FrameFormat, Layout> const layouts{
    {yuyv,   {8, 8, {{Field::Y, 0, 0, 8, 0}, {Field::Cb, 0, 0, 8, 8}, {Field::Y, 1, 0, 8, 16}, {Field::Cr, 0, 0, 8, 24}}}},
    {ten,    {10, 10, {{Field::Cb, 0, 2, 8, 0}, {Field::Y, 0, 2, 8, 8}, {Field::Cr, 0, 2, 8, 16}, {Field::Y, 1, 2, 8, 24},
                       {Field::Cb, 0, 0, 2, 38}, {Field::Y, 0, 0, 2, 36}, {Field::Cr, 0, 0, 2, 34}, {Field::Y, 1, 0, 2, 32}}}},
    {square, {8, 8, {{Field::Cb, 0, 0, 8, 0}, {Field::Cr, 0, 0, 8, 8}, {Field::Y, 0, 0, 8, 16},
                     {Field::Y, 1, 0, 8, 24}, {Field::Y, 2, 0, 8, 32}, {Field::Y, 3, 0, 8, 40}}}},
    {hybrid, {12, 10, {{Field::A, 1, 0, 10, 0}, {Field::Y, 1, 0, 12, 10}, {Field::Cr, 0, 0, 10, 22},
                       {Field::Cb, 0, 0, 10, 32}, {Field::Y, 0, 0, 12, 42}, {Field::A, 0, 0, 10, 54}}}},
};
// clang-format on

/// The components of one pixel as fractions of full scale.
using Components = std::array<double, 4>;

/// `picture` holds the samples as doubles; channels are found by their letter in the format's layout name.
inline Components componentsAt(cv::Mat const& picture, FrameFormat const& format, int row, int column) {
    auto const sample = [&](char channel) {
        double const value = picture.ptr<double>(row, column)[format.layoutName.find(channel)];
        if (format.channelType != Zentrel::ChannelType::F32)
            return value / fullScale(format.channelType);
        return std::isnan(value) ? value : std::clamp(value, 0.0, 1.0);
    };
    double const r = sample('R'), g = sample('G'), b = sample('B');
    return {0.299 * r + 0.587 * g + 0.114 * b, 0.5 * b - 0.168736 * r - 0.331264 * g + 0.5,
            0.5 * r - 0.418688 * g - 0.081312 * b + 0.5, picture.channels() == 4 ? sample('A') : 1};
}

inline Reference encoding(FrameFormat const& source, FrameFormat const& destination) {
    return [=, &layout = layouts.at(destination)](cv::Mat const& picture, cv::Mat& blocks) {
        int const height = destination == square ? 2 : 1;
        cv::Mat samples;
        picture.convertTo(samples, CV_64F);
        for (int i = 0; i < static_cast<int>(blocks.total()); ++i) {
            int const row = i / blocks.cols, column = i % blocks.cols;
            std::vector<Components> pixels;
            Components sum{};
            for (int pixel = 0; pixel < 2 * height; ++pixel) {
                pixels.push_back(
                    componentsAt(samples, source, row * height + pixel / 2, column * 2 + pixel % 2));
                for (int c : {Field::Cb, Field::Cr})
                    sum[c] += pixels.back()[c];
            }
            if (destination != hybrid) // whose chroma is the left pixel's
                for (int c : {Field::Cb, Field::Cr})
                    pixels[0][c] = sum[c] / pixels.size();

            std::uint64_t block = 0;
            for (auto const& [component, pixel, shift, bits, position] : layout.fields) {
                double const value = std::trunc(pixels[pixel][component] * layout.highest(component) + 0.5);
                auto const code = std::isnan(value) ? 0 : static_cast<std::int64_t>(value);
                block |= static_cast<std::uint64_t>(code >> shift & ((1 << bits) - 1)) << position;
            }
            std::memcpy(blocks.ptr(row, column), &block, blocks.elemSize());
        }
    };
}

inline Reference decoding(FrameFormat const& source, FrameFormat const& destination) {
    return [=, &layout = layouts.at(source)](cv::Mat const& blocks, cv::Mat& picture) {
        int const height = source == square ? 2 : 1;
        // Of 10-bit codes, 8-bit pictures take the upper bytes.
        bool const upperBytes = source == ten && picture.depth() == CV_8U;
        double const scale = fullScale(destination.channelType);
        cv::Mat samples(picture.size(), CV_64FC(picture.channels()));
        for (int y = 0; y < picture.rows; ++y)
            for (int x = 0; x < picture.cols; ++x) {
                std::uint64_t block = 0;
                std::memcpy(&block, blocks.ptr(y / height, x / 2), blocks.elemSize());
                std::array<int, 4> codes{};
                for (auto const& [component, pixel, shift, bits, position] : layout.fields)
                    if (component == Field::Cb || component == Field::Cr || pixel == y % height * 2 + x % 2)
                        codes[component] |= static_cast<int>(block >> position & ((1u << bits) - 1)) << shift;
                auto const value = [&](Field::Component component) {
                    return upperBytes ? codes[component] / 4 / 255.0
                                      : codes[component] / layout.highest(component);
                };
                double const u = value(Field::Cb) - 0.5, v = value(Field::Cr) - 0.5, luma = value(Field::Y);
                std::map<char, double> const channels{{'B', luma + 1.772 * u},
                                                      {'G', luma - 0.34414 * u - 0.71414 * v},
                                                      {'R', luma + 1.402 * v},
                                                      {'A', source == hybrid ? value(Field::A) : 1}};
                for (int i = 0; i < picture.channels(); ++i) {
                    double const limited =
                        std::clamp(channels.at(destination.layoutName[i]) * scale, 0.0, scale);
                    samples.ptr<double>(y, x)[i] = scale == 1 ? limited : std::floor(limited + 0.5);
                }
            }
        samples.convertTo(picture, picture.depth());
    };
}

} // namespace TestSupport::YCbCr

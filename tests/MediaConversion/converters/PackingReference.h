// Packing and unpacking in plain formulas: one bit at a time.
#pragma once

#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <map>

namespace TestSupport::Packing {

using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;
using T = Zentrel::ChannelType;

using Formats = std::vector<FrameFormat>;
inline Formats const dpxFilled{P::RGB_DPX_FILLED_U10(), P::BGR_DPX_FILLED_U10()};
inline Formats const dpxPacked{P::RGB_DPX_PACKED_U12(), P::BGR_DPX_PACKED_U12()};
inline Formats const smpte{P::RGB_SMPTE_2110_U12(), P::BGR_SMPTE_2110_U12()};
inline Formats const ofTwelveBits{dpxPacked[0], dpxPacked[1], smpte[0], smpte[1]};
inline Formats const all{dpxFilled[0], dpxFilled[1], dpxPacked[0], dpxPacked[1], smpte[0], smpte[1]};

inline FormatPairs const encodings = pairsOf({
    {{F::RGB_U8(), F::BGR_U8(), F::BGRA_U8(), F::ARGB_U8(), F::BGR_U16(), F::BGRA_U16()}, all},
    {{F::ARGB_U15plus1(), F::RGB_F32(), F::BGR_F32(), F::BGRA_F32()}, all},
    {{F::RGB_U10(), F::BGR_U10()}, dpxFilled},
    {{F::RGB_U12(), F::BGR_U12()}, ofTwelveBits},
});
inline FormatPairs const decodings = pairsOf({
    {all, {F::RGB_U8(), F::BGR_U8(), F::BGRA_U8(), F::ARGB_U8()}},
    {all, {F::BGRA_U16(), F::ARGB_U15plus1(), F::BGRA_F32()}},
    {dpxFilled, {F::RGB_U10(), F::BGR_U10(), F::RGB_U16(), F::RGBA_U8()}},
    {dpxPacked, {F::RGBA_U8()}},
    {smpte, {F::RGB_U16()}},
    {ofTwelveBits, {F::RGB_U12(), F::BGR_U12()}},
});

/// Where bit `bit` of each sample of a block lies, in bits from the lowest one of the first byte upwards, the
/// samples counted pixel by pixel.
struct Layout {
    int bits, pixels;
    int (*position)(int sample, int bit);
};

inline Layout layoutOf(FrameFormat const& packed) {
    static std::map<std::string, Layout> const layouts{
        {"DPX-FILLED", {10, 1, [](int sample, int bit) { return 22 - 10 * sample + bit; }}},
        {"DPX-PACKED", {12, 2, [](int sample, int bit) { return 12 * sample + bit; }}},
        {"SMPTE-2110",
         {12, 2,
          [](int sample, int bit) {
              int const fromHighest = 12 * sample + 11 - bit;
              return fromHighest / 8 * 8 + 7 - fromHighest % 8;
          }}},
    };
    return layouts.at(packed.layoutName.substr(4)); // behind the order of the colours
}

inline std::uint32_t expectedCode(double sample, T depth, int bits) {
    std::uint32_t const highest = (1u << bits) - 1;
    if (fullScale(depth) == highest)
        return static_cast<std::uint32_t>(sample) & highest;
    double const value = sample / fullScale(depth) * highest;
    return std::isnan(value) ? 0 : static_cast<std::uint32_t>(std::clamp<double>(value, 0, highest) + 0.5);
}

inline double expectedSample(std::uint32_t code, int bits, T depth) {
    if (depth == T::U8)
        return code >> (bits - 8);
    double const value = code / ((1 << bits) - 1.0) * fullScale(depth);
    return depth == T::F32 ? value : std::floor(value + 0.5);
}

/// Calls `visit(row, column, channel, bytes of the block, number of the sample in the block)` for the three
/// colour samples of every pixel; the packed format's name begins with their order.
template <class Visit>
inline void forEachSample(FrameFormat const& packed, FrameFormat const& full, cv::Mat blocks,
                          Visit const& visit) {
    int const pixels = layoutOf(packed).pixels;
    for (int row = 0; row < blocks.rows; ++row)
        for (int column = 0; column < blocks.cols * pixels; ++column)
            for (int i = 0; i < 3; ++i)
                visit(row, column, full.layoutName.find(packed.layoutName[i]),
                      blocks.ptr(row, column / pixels), column % pixels * 3 + i);
}

inline Reference encoding(FrameFormat const& source, FrameFormat const& packed) {
    return [=, layout = layoutOf(packed)](cv::Mat const& image, cv::Mat& expected) {
        cv::Mat samples;
        image.convertTo(samples, CV_64F);
        expected.setTo(0);
        forEachSample(packed, source, expected,
                      [&](int row, int column, auto channel, std::uint8_t* block, int sample) {
                          std::uint32_t const code = expectedCode(samples.ptr<double>(row, column)[channel],
                                                                  source.channelType, layout.bits);
                          for (int bit = 0; bit < layout.bits; ++bit) {
                              int const position = layout.position(sample, bit);
                              block[position / 8] |= (code >> bit & 1) << position % 8;
                          }
                      });
    };
}

inline Reference decoding(FrameFormat const& packed, FrameFormat const& destination) {
    return [=, layout = layoutOf(packed)](cv::Mat const& blocks, cv::Mat& expected) {
        // Opaque, where there is alpha.
        cv::Mat samples(expected.size(), CV_64FC(expected.channels()),
                        cv::Scalar::all(fullScale(destination.channelType)));
        forEachSample(packed, destination, blocks,
                      [&](int row, int column, auto channel, std::uint8_t const* block, int sample) {
                          std::uint32_t code = 0;
                          for (int bit = 0; bit < layout.bits; ++bit) {
                              int const position = layout.position(sample, bit);
                              code |= (block[position / 8] >> position % 8 & 1u) << bit;
                          }
                          samples.ptr<double>(row, column)[channel] =
                              expectedSample(code, layout.bits, destination.channelType);
                      });
        samples.convertTo(expected, expected.depth());
    };
}

} // namespace TestSupport::Packing

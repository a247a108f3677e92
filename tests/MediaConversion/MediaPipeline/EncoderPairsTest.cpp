// Every format to every other: the chain, what it refuses, and that what comes out is the picture that went
// in.
#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <tests/Conversion.h>
#include <tests/MediaConversion/MediaPipeline/EncodingRoutes.h>
#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <opencv2/imgproc.hpp>

using namespace MediaConversion;
using namespace Zentrel;
using namespace TestSupport;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

cv::Mat encoded(FrameFormat const& from, FrameFormat const& to, cv::Mat const& picture) {
    auto frame = frameOf(from, picture);
    int const rows = frame->rows(), columns = frame->cols();
    auto const result = TestSupport::encoded(std::move(frame), to);
    EXPECT_EQ(result->format(), to);
    EXPECT_EQ(result->rows(), rows);
    EXPECT_EQ(result->cols(), columns);
    return result->image();
}

// ---- What a matrix shows, as float BGRA ----

/// The channel of BGRA that a full format's n-th sample is, by the letters of its layout.
int bgraChannel(FrameFormat const& format, int sample) {
    return static_cast<int>(std::string("BGRA").find(format.layoutName[static_cast<std::size_t>(sample)]));
}

cv::Mat fullFromBgra(FrameFormat const& format, cv::Mat const& bgra) {
    int const type = openCvTypeOf(format), channels = CV_MAT_CN(type);
    cv::Mat samples(bgra.size(), CV_32FC(channels)), result;
    for (int i = 0; i < channels; ++i)
        cv::mixChannels(bgra, samples, {bgraChannel(format, i), i});
    samples.convertTo(result, type, fullScale(format.channelType));
    return result;
}

cv::Mat bgraFromFull(FrameFormat const& format, cv::Mat const& full) {
    cv::Mat samples, bgra(full.size(), CV_32FC4, cv::Scalar::all(1));
    full.convertTo(samples, CV_32F, 1 / fullScale(format.channelType));
    for (int i = 0; i < samples.channels(); ++i)
        cv::mixChannels(samples, bgra, {i, bgraChannel(format, i)});
    return bgra;
}

bool isPacked12(FrameFormat const& format) {
    return format == P::RGB_DPX_PACKED_U12() || format == P::BGR_DPX_PACKED_U12();
}

cv::Mat shownBy(FrameFormat const& format, cv::Mat const& image) {
    if (FullFrame::is(format))
        return bgraFromFull(format, image);
    if (format == P::RGB_DXT1_U8())
        return shownBy(F::BGRA_U8(), convertedBy<ImageYCoCgDXT5toRGB>(F::BGRA_U8(), frameOf(format, image)));
    FrameFormat const full = isPacked12(format) ? F::BGRA_U8() : F::BGRA_F32();
    return shownBy(full, encoded(format, full, image));
}

/// A picture of 4 x 4 blocks of equal pixels, of which subsampling and block compression lose little.
cv::Mat blocksOfColour(FrameFormat const& format) {
    cv::Size const size(32, 16);
    if (isPacked12(format)) // nothing encodes to it, but nothing that it leads to subsamples
        return GuardedPicture(format, size, Filling::Noise).matrix();
    cv::Mat colours(size / 4, CV_32FC4), bgra;
    cv::RNG(1).fill(colours, cv::RNG::UNIFORM, 0.1, 0.9);
    cv::resize(colours, bgra, size, 0, 0, cv::INTER_NEAREST);
    return FullFrame::is(format) ? fullFromBgra(format, bgra) : encoded(F::BGRA_F32(), format, bgra);
}

bool hasAlpha(FrameFormat const& format) {
    return format.colourspace == Colourspace::RGBA || format.colourspace == Colourspace::YCbCrA_ITU_T871;
}

void expectKeepsThePicture(FrameFormat const& in, FrameFormat const& out) {
    cv::Mat const source = blocksOfColour(in);
    cv::Mat expected = shownBy(in, source);
    if (!hasAlpha(out))
        cv::insertChannel(cv::Mat(expected.size(), CV_32F, cv::Scalar(1)), expected, 3);
    bool const blockCompressed = out == P::RGB_DXT1_U8() || out == P::YCOCG_DXT5_U8();
    EXPECT_LT(cv::norm(shownBy(out, encoded(in, out, source)), expected, cv::NORM_INF),
              blockCompressed ? 0.06 : 0.007);
}

/// The pairs of the listing whose converter has no conversion, so that they fail only when a frame comes.
bool refusesFrames(FrameFormat const& in, FrameFormat const& out) {
    return out == F::RGBA_U8() &&
           (in == P::YCBCR_ITU_T871_YUYV_422_U8() || in == P::YCBCR_ITU_T871_9ZT_422_U10());
}

void expectServedOrRefused(FrameFormat const& in, FrameFormat const& out) {
    std::string const names = FrameFormat::toString(in) + " to " + FrameFormat::toString(out);
    std::string const chain = expectedChain(in, out);
    if (chain.empty()) {
        EXPECT_EQ(messageOf([&] { Encoder(in, out); }), "Encoding is not supported from " + names);
        return;
    }
    EXPECT_EQ(Encoder::toString(Encoder(in, out).chain()), chain);
    if (refusesFrames(in, out)) {
        EXPECT_EQ(messageOf([&] { encoded(in, out, blocksOfColour(in)); }),
                  "RGB conversion is not supported from " + names);
    } else if (in != out) { // equal formats pass their frames through
        expectKeepsThePicture(in, out);
    }
}

TEST(EncoderPairs, AreRefusedOrKeepThePicture) {
    EXPECT_EQ(listedChains().size(), 167u);
    EXPECT_EQ(Encoder::encodingSteps.size(), 167u);
    for (auto const& [source, in] : catalogue())
        for (auto const& [destination, out] : catalogue()) {
            SCOPED_TRACE(source + " to " + destination);
            expectServedOrRefused(in, out);
        }
}

} // namespace

#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>

#include <tests/MediaConversion/MediaPipeline/EncodingRoutes.h>
#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::catalogue;
using TestSupport::directChains;
using TestSupport::messageOf;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

TEST(EncodingSteps, AreThoseOfTheListing) {
    using Chains = std::map<std::pair<std::string, std::string>, std::string>;
    Chains expected, actual;
    for (auto const& [names, chain] : directChains()) {
        auto const name = [](std::string const& text) { return FrameFormat::toString(catalogue().at(text)); };
        expected[{name(names.first), name(names.second)}] = chain;
    }
    for (auto const& [formats, steps] : Encoder::encodingSteps) {
        auto const& [source, destination] = formats;
        actual[{FrameFormat::toString(source), FrameFormat::toString(destination)}] =
            Encoder::toString(Encoder::describe(steps));
    }
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(actual.size(), 167u);
}

TEST(EncodingSteps, AreSelectedDirectlyElseByWayOfFloatBgra) {
    struct {
        FrameFormat source, destination;
        const char* chain;
    } const cases[] = {
        {F::BGRA_F32(), P::YCBCR_ITU_T871_9ZT_422_U10(),
         "ConvertRGBtoYCbCr42x to YCbCr_ITU_T871_U10_9ZT-422"},
        {F::RGBA_U8(), P::RGB_SMPTE_2110_U12(),
         "ConvertColourspace to RGBA_U8_BGRA, ConvertBitDepth to RGBA_F32_BGRA, "
         "ConvertToPackedFrame to RGB_U12_RGB-SMPTE-2110"},
        {P::RGB_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12(), // although an Encoder would pass the frame through
         "ConvertToFullFrame to RGB_U12_RGB, ConvertToPackedFrame to RGB_U12_BGR-SMPTE-2110"},
    };
    for (auto const& row : cases)
        EXPECT_EQ(
            Encoder::toString(Encoder::describe(Encoder::selectEncodingSteps(row.source, row.destination))),
            row.chain);
}

TEST(Encoder, RefusesPairsWithoutAWay) {
    struct {
        FrameFormat in, out;
        const char* names;
    } const cases[] = {
        {P::YCOCG_DXT5_U8(), P::RGB_DXT1_U8(), "YCoCg_U8_YCoCg-DXT5 to RGB_U8_RGB-DXT1"},
        {F::BGRA_F32(), F::BGR_U16(), "RGBA_F32_BGRA to RGB_U16_BGR"},
        {F::RGB_U16(), F::BGRA_F32(), "RGB_U16_RGB to RGBA_F32_BGRA"},
    };
    for (auto const& row : cases)
        EXPECT_EQ(messageOf([&] { Encoder(row.in, row.out); }),
                  std::string("Encoding is not supported from ") + row.names);
}

TEST(Encoder, AllowsEachOperationInItsStateOnly) {
    Encoder encoder(F::BGR_U8(), F::RGB_U8());
    FrameSinkDestination sink;
    auto const frame = [] { return FullFrame::create(F::BGR_U8(), 2, 2); };
    std::string const needsIdle = "Encoder state must be Idle for this operation";
    std::string const needsEncoding = "Encoder state must be Encoding for this operation";

    EXPECT_EQ(messageOf([&] { encoder.onNewFrame(frame()); }), needsEncoding);
    EXPECT_EQ(messageOf([&] { encoder.stop(); }), needsEncoding);
    EXPECT_EQ(messageOf([&] { encoder.start(); }), "No frameSink connected");
    EXPECT_EQ(encoder.state(), Encoder::EncoderState::Idle);
    encoder.connect(&sink);
    encoder.start();
    EXPECT_EQ(messageOf([&] { encoder.start(); }), needsIdle);
    EXPECT_EQ(messageOf([&] { encoder.connect(&sink); }), needsIdle);
    EXPECT_EQ(messageOf([&] { encoder.disconnect(&sink); }), needsIdle);
    EXPECT_EQ(messageOf([&] { encoder.encodeFrame(nullptr); }), "no frame data");
    EXPECT_EQ(messageOf([&] { encoder.encodeFrame(FullFrame::create(F::RGB_U8(), 2, 2)); }),
              "input format must be RGB_U8_BGR");
    encoder.encodeFrame(frame()); // a refused frame does no harm to the next
    EXPECT_EQ(sink.frame()->format(), F::RGB_U8());
    encoder.stop();
    encoder.disconnect(&sink);
    EXPECT_EQ(Encoder::toString(static_cast<Encoder::EncoderState>(2)), "Unknown EncoderState 2");
}

TEST(Encoder, PassesEqualFormatsThrough) {
    for (FrameFormat const& format :
         {F::BGRA_F32(), P::RGB_SMPTE_2110_U12(), F::YCBCR_ITU_T871_YCBCR_U10()}) {
        Encoder encoder(format, format);
        FrameSinkDestination sink;
        encoder.connect(&sink);
        encoder.start();
        if (format == F::BGRA_F32()) {
            auto frame = FullFrame::create(format, 2, 2);
            IFrame* const sent = frame.get();
            encoder.encodeFrame(std::move(frame));
            EXPECT_EQ(sink.frame().get(), sent);
        }
    }
}

TEST(Encoder, IsReplacedByMoving) {
    FrameSinkDestination sink;
    Encoder encoder(F::BGR_U8(), F::RGB_U8());
    for (int frame = 0; frame < 3; ++frame) {
        encoder = Encoder(F::BGRA_F32(), F::RGBA_U8());
        encoder.connect(&sink);
        encoder.start();
        cv::Mat const pixel(1, 1, CV_32FC4, cv::Scalar(0.0, 0.5, 1.0, 2.0));
        encoder.encodeFrame(std::make_unique<FullFrame>(F::BGRA_F32(), pixel, Frame::Origin::TopLeft));
        auto const result = sink.frame();
        encoder.stop();
        EXPECT_EQ(dynamic_cast<IImageFrame&>(*result).image().at<cv::Vec4b>(0, 0),
                  cv::Vec4b(255, 128, 0, 255));
    }
}

} // namespace

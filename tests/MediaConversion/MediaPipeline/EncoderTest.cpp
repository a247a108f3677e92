#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>

#include <tests/TestSupport.h>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::messageOf;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

TEST(Encoder, ListsStepsFromAPackedFormatToItself) {
    FrameFormat const smpte = P::RGB_SMPTE_2110_U12(); // of which an Encoder would pass the frames through
    EXPECT_EQ(Encoder::toString(Encoder::describe(Encoder::selectEncodingSteps(smpte, smpte))),
              "ConvertToFullFrame to RGB_U12_RGB, ConvertToPackedFrame to RGB_U12_BGR-SMPTE-2110");
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
}

TEST(Encoder, IsReplacedByMoving) {
    FrameSinkDestination sink;
    Encoder encoder(F::BGR_U8(), F::RGB_U8());
    encoder = Encoder(F::BGRA_F32(), F::BGRA_F32()); // which passes its frames through
    encoder.connect(&sink);
    for (int i = 0; i < 3; ++i) {
        encoder.start();
        auto frame = FullFrame::create(F::BGRA_F32(), 2, 2);
        IFrame* const sent = frame.get();
        encoder.encodeFrame(std::move(frame));
        EXPECT_EQ(sink.frame().get(), sent);
        encoder.stop();
    }
}

} // namespace

#include <MediaConversion/MediaPipeline/FramePipeline.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/converters/ConvertNoOperation.h>
#include <MediaConversion/converters/ImageColourspace.h>
#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>
#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>
#include <MediaConversion/converters/ImageToFullFrame.h>
#include <MediaConversion/converters/ImageToPackedFrame.h>
#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <tests/TestSupport.h>

#include <functional>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::messageOf;
using F = FullFrameFormat;
using NoOperation = ConvertNoOperation;

namespace {

std::unique_ptr<FullFrame> rgbFrame() { return FullFrame::create(F::RGB_U8(), 2, 2); }

/// A frame that is not in host memory.
template <class Kind>
struct OtherFrame : Kind {
    FrameFormat format() const override { return F::RGB_U8(); }
    int rows() const override { return 2; }
    int cols() const override { return 2; }
};

const char* const needsIdle = "State must be Idle for this operation";
const char* const needsActive = "State must be Active for this operation";

TEST(ControllableFilter, AllowsEachOperationInItsStateOnly) {
    NoOperation filter(F::RGB_U8());
    FrameSinkDestination first, second;
    EXPECT_EQ(messageOf([&] { filter.stop(); }), needsActive);
    EXPECT_EQ(messageOf([&] { filter.onNewFrame(nullptr); }), needsActive) << "the state is checked first";
    filter.connect(&first);
    filter.connect(&second); // replaces the first
    EXPECT_EQ(messageOf([&] { filter.disconnect(&first); }), "frameSink was not connected");
    filter.disconnect(&second);

    filter.start();
    EXPECT_EQ(messageOf([&] { filter.start(); }), needsIdle);
    EXPECT_EQ(messageOf([&] { filter.connect(&first); }), needsIdle);
    EXPECT_EQ(messageOf([&] { filter.disconnect(&first); }), needsIdle);
    EXPECT_EQ(messageOf([&] { filter.onNewFrame(nullptr); }), "no frame data");
    EXPECT_EQ(messageOf([&] { filter.onNewFrame(rgbFrame()); }), "no frame sink connected");
    EXPECT_EQ(NoOperation::toString(static_cast<NoOperation::State>(7)), "Unknown State 7");
}

TEST(ControllableFilter, IsIdleAgainWhenItsSinkCannotStart) {
    NoOperation first(F::RGB_U8()), second(F::RGB_U8());
    first.connect(&second);
    second.start(); // and cannot start once more
    EXPECT_EQ(messageOf([&] { first.start(); }), needsIdle);
    second.stop();
    first.start();
}

/// Three filters that pass frames on.
struct Chain {
    NoOperation filters[3] = {NoOperation(F::RGB_U8()), NoOperation(F::RGB_U8()), NoOperation(F::RGB_U8())};
    FrameSinkDestination sink;
    FramePipeline pipeline;

    explicit Chain(int count) {
        for (int i = 0; i < count; ++i)
            pipeline.addFilter(&filters[i]);
    }
};

TEST(FramePipeline, StartsFeedsAndStopsTheWholeChain) {
    Chain chain(2);
    chain.pipeline.connect(&chain.sink);
    chain.pipeline.addFilter(&chain.filters[2]); // takes over the sink
    chain.pipeline.start();
    for (auto& filter : chain.filters)
        EXPECT_EQ(filter.state(), NoOperation::State::Active);

    auto frame = rgbFrame();
    IFrame* const sent = frame.get();
    chain.pipeline.feed(std::move(frame));
    EXPECT_EQ(chain.sink.frame().get(), sent) << "the very frame";
    EXPECT_FALSE(chain.sink.frame()) << "taken already";
    EXPECT_EQ(messageOf([&] { chain.sink.onNewFrame(nullptr); }), "no frame data");

    chain.pipeline.stop();
    for (auto& filter : chain.filters)
        EXPECT_EQ(filter.state(), NoOperation::State::Idle);
}

TEST(FramePipeline, NeedsASinkAndFilters) {
    FramePipeline pipeline;
    FrameSinkDestination sink, other;
    NoOperation filter(F::RGB_U8());
    EXPECT_EQ(messageOf<std::invalid_argument>([&] { pipeline.addFilter(nullptr); }), "filter is nullptr");
    EXPECT_EQ(messageOf([&] { pipeline.start(); }), "No frameSink connected");
    pipeline.connect(&sink);
    EXPECT_EQ(messageOf([&] { pipeline.stop(); }), "Pipeline is empty");
    EXPECT_EQ(messageOf([&] { pipeline.disconnect(&other); }), "frameSink was not connected");
    pipeline.addFilter(&filter);
    pipeline.disconnect(&sink);
    EXPECT_EQ(messageOf([&] { pipeline.start(); }), "No frameSink connected");
    EXPECT_NO_THROW(filter.disconnect(nullptr)) << "the filter has lost its sink too";
}

TEST(FramePipeline, ClearsAtMostOneFilter) {
    for (int const count : {0, 1, 2, 3}) {
        Chain chain(count);
        chain.pipeline.connect(&chain.sink);
        if (count < 2)
            chain.pipeline.clear();
        else
            EXPECT_EQ(messageOf([&] { chain.pipeline.clear(); }), "frameSink was not connected");
        EXPECT_EQ(messageOf([&] { chain.pipeline.start(); }), "No frameSink connected");
        chain.pipeline.connect(&chain.sink);
        EXPECT_EQ(messageOf([&] { chain.pipeline.start(), chain.pipeline.start(); }),
                  count < 2 ? "Pipeline is empty" : needsIdle);
    }
}

/// Feeds one frame to a filter of the given kind and returns what it refuses it with.
template <class Filter>
std::string refusal(std::unique_ptr<IFrame> frame) {
    FrameSinkDestination sink;
    auto const filter = Filter::create(F::YCOCGA_COCGAY_U8());
    filter->connect(&sink);
    filter->start();
    return messageOf([&] { filter->onNewFrame(std::move(frame)); });
}

TEST(FrameDispatch, FiltersNameTheFramesAndPairsThatTheyRefuse) {
    std::string const fullOnly = "Can only convert FullFrame images",
                      packedOnly = "Can only convert PackedFrame images";
    std::string const fromFull = "RGBA_F32_BGRA to YCoCgA_U8_CoCgAY";
    std::string const fromPacked = "RGB_U8_RGB-DXT1 to YCoCgA_U8_CoCgAY";
    std::string const withoutOpenGl = "Not built with OpenGL support", notYet = "not implemented";
    struct {
        std::function<std::string(std::unique_ptr<IFrame>)> refuse;
        std::string ofFull, ofPacked, ofTexture;
    } const cases[] = {
        {refusal<ConvertColourspace>, "Colourspace conversion is not supported from " + fromFull, fullOnly,
         withoutOpenGl},
        {refusal<ConvertRGBtoYCbCr42x>, "YCbCr 4:2:2 conversion is not supported from " + fromFull, fullOnly,
         withoutOpenGl},
        {refusal<ConvertYCbCr42xToRGB>, packedOnly, "RGB conversion is not supported from " + fromPacked,
         withoutOpenGl},
        {refusal<ConvertToPackedFrame>, "Packing is not supported from " + fromFull, fullOnly, withoutOpenGl},
        {refusal<ConvertToFullFrame>, "Can only convert packed images",
         "Unpacking is not supported from " + fromPacked, withoutOpenGl},
        {refusal<ConvertRGBtoYCoCgDXT5>, "DXT conversion is not supported from " + fromFull, fullOnly,
         notYet},
        {refusal<ConvertYCoCgDXT5toRGB>, packedOnly, "RGB conversion is not supported from " + fromPacked,
         notYet},
    };
    for (auto const& [refuse, ofFull, ofPacked, ofTexture] : cases) {
        EXPECT_EQ(refuse(FullFrame::create(F::BGRA_F32(), 4, 4)), ofFull);
        EXPECT_EQ(refuse(PackedFrame::create(PackedFrameFormat::RGB_DXT1_U8(), 4, 4)), ofPacked);
        EXPECT_EQ(refuse(std::make_unique<OtherFrame<ITextureFrame>>()),
                  "NullTextureProcessor::onNewTexture " + ofTexture);
        EXPECT_EQ(refuse(std::make_unique<OtherFrame<IFrame>>()),
                  "frame is not an IImageFrame or ITextureFrame");
        EXPECT_EQ(refuse(std::make_unique<FullFrame>(F::RGB_U8())), "no image data in frame");
    }
    EXPECT_EQ(messageOf([] { NoOperation(F::BGR_U8()).doOnNewFrame(rgbFrame()); }),
              "Source format RGB_U8_RGB does not match destination format RGB_U8_BGR");
}

} // namespace

#include <MediaConversion/MediaPipeline/FramePipeline.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/NullProcessors.h>
#include <MediaConversion/converters/ConvertBitDepth.h>
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

/// A frame that is neither in host memory nor on a graphics card.
struct StrangeFrame : IFrame {
    FrameFormat format() const override { return F::RGB_U8(); }
    int rows() const override { return 2; }
    int cols() const override { return 2; }
};

struct TextureFrame final : ITextureFrame {
    FrameFormat format() const override { return F::RGB_U8(); }
    int rows() const override { return 2; }
    int cols() const override { return 2; }
};

const char* const needsIdle = "State must be Idle for this operation";
const char* const needsActive = "State must be Active for this operation";

TEST(ControllableFilter, AllowsEachOperationInItsStateOnly) {
    NoOperation filter(F::RGB_U8());
    FrameSinkDestination sink;
    EXPECT_EQ(messageOf([&] { filter.stop(); }), needsActive);
    EXPECT_EQ(messageOf([&] { filter.onNewFrame(nullptr); }), needsActive) << "the state is checked first";

    filter.connect(&sink);
    filter.start();
    EXPECT_EQ(messageOf([&] { filter.start(); }), needsIdle);
    EXPECT_EQ(messageOf([&] { filter.connect(&sink); }), needsIdle);
    EXPECT_EQ(messageOf([&] { filter.disconnect(&sink); }), needsIdle);
    EXPECT_EQ(messageOf([&] { filter.onNewFrame(nullptr); }), "no frame data");
    filter.onNewFrame(rgbFrame());
    EXPECT_TRUE(sink.frame());
}

TEST(ControllableFilter, ConnectsOneSink) {
    NoOperation filter(F::RGB_U8());
    FrameSinkDestination first, second;
    EXPECT_NO_THROW(filter.disconnect(nullptr));
    filter.connect(&first);
    filter.connect(&second); // replaces the first
    EXPECT_EQ(messageOf([&] { filter.disconnect(&first); }), "frameSink was not connected");
    EXPECT_EQ(messageOf([&] { filter.disconnect(nullptr); }), "frameSink was not connected");
    filter.disconnect(&second);
    filter.start();
    EXPECT_EQ(messageOf([&] { filter.onNewFrame(rgbFrame()); }), "no frame sink connected");
}

TEST(ControllableFilter, NamesItsStates) {
    EXPECT_EQ(NoOperation::toString(NoOperation::State::Idle), "Idle");
    EXPECT_EQ(NoOperation::toString(NoOperation::State::Active), "Active");
    EXPECT_EQ(NoOperation::toString(static_cast<NoOperation::State>(7)), "Unknown State 7");
}

TEST(ControllableFilter, LetsGoOfTheSourceFrameBeforeItPassesOnTheResult) {
    struct Watched final : IFrame {
        explicit Watched(bool& alive) : alive(alive) { alive = true; }
        ~Watched() override { alive = false; }
        FrameFormat format() const override { return F::RGB_U8(); }
        int rows() const override { return 2; }
        int cols() const override { return 2; }
        bool& alive;
    };
    struct Replacing final : ControllableFilter<Replacing> {
        std::unique_ptr<IFrame> doOnNewFrame(std::unique_ptr<IFrame>) { return rgbFrame(); }
    };
    struct Sink final : IFrameSink {
        void onNewFrame(std::unique_ptr<IFrame>) override { EXPECT_FALSE(*sourceAlive); }
        bool* sourceAlive = nullptr;
    };
    bool alive = false;
    Sink sink;
    sink.sourceAlive = &alive;
    Replacing filter;
    filter.connect(&sink);
    filter.start();
    filter.onNewFrame(std::make_unique<Watched>(alive));
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
    EXPECT_EQ(messageOf([&] { pipeline.start(); }), "Pipeline is empty");
    EXPECT_EQ(messageOf([&] { pipeline.stop(); }), "Pipeline is empty");
    EXPECT_EQ(messageOf([&] { pipeline.disconnect(&other); }), "frameSink was not connected");
    pipeline.addFilter(&filter);
    pipeline.disconnect(&sink);
    EXPECT_EQ(messageOf([&] { pipeline.start(); }), "No frameSink connected");
    EXPECT_NO_THROW(filter.disconnect(nullptr)) << "the filter has lost its sink too";
}

TEST(FramePipeline, ClearKeepsItsQuirk) {
    struct {
        int filters;
        bool active;
        const char* message; // null: succeeds
    } const cases[] = {
        {0, false, nullptr},
        {1, false, nullptr},
        {2, false, "frameSink was not connected"},
        {3, false, "frameSink was not connected"},
        {2, true, needsIdle},
    };
    for (auto const& [count, active, message] : cases) {
        Chain chain(count);
        chain.pipeline.connect(&chain.sink);
        if (active) // the first alone, or the sink could not be disconnected
            chain.filters[0].ControllableFilter::disconnect(&chain.filters[1]), chain.filters[0].start();
        if (!message) {
            EXPECT_NO_THROW(chain.pipeline.clear());
            chain.pipeline.connect(&chain.sink);
            EXPECT_EQ(messageOf([&] { chain.pipeline.start(); }), "Pipeline is empty");
        } else {
            EXPECT_EQ(messageOf([&] { chain.pipeline.clear(); }), message);
            EXPECT_EQ(messageOf([&] { chain.pipeline.start(); }), "No frameSink connected");
            chain.pipeline.connect(&chain.sink);
            EXPECT_NE(messageOf([&] { chain.pipeline.start(), chain.pipeline.start(); }),
                      "Pipeline is empty");
        }
    }
}

TEST(FrameSinkDestination, KeepsTheLastFrame) {
    FrameSinkDestination sink;
    EXPECT_FALSE(sink.frame());
    EXPECT_EQ(messageOf([&] { sink.onNewFrame(nullptr); }), "no frame data");
    sink.onNewFrame(rgbFrame());
    auto second = rgbFrame();
    IFrame* const expected = second.get();
    sink.onNewFrame(std::move(second));
    EXPECT_EQ(sink.frame().get(), expected);
}

TEST(ConvertNoOperation, RefusesAnotherFormat) {
    NoOperation filter(F::BGR_U8());
    EXPECT_EQ(messageOf([&] { filter.doOnNewFrame(rgbFrame()); }),
              "Source format RGB_U8_RGB does not match destination format RGB_U8_BGR");
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

template <class... Filters>
void expectDispatchedAs(const char* reasonForTextures) {
    for (auto const& refuse :
         std::initializer_list<std::function<std::string(std::unique_ptr<IFrame>)>>{refusal<Filters>...}) {
        EXPECT_EQ(refuse(std::make_unique<StrangeFrame>()), "frame is not an IImageFrame or ITextureFrame");
        EXPECT_EQ(refuse(std::make_unique<FullFrame>(F::RGB_U8())), "no image data in frame");
        EXPECT_EQ(refuse(std::make_unique<TextureFrame>()),
                  std::string("NullTextureProcessor::onNewTexture ") + reasonForTextures);
    }
}

TEST(FrameDispatch, RoutesByTheKindOfFrame) {
    expectDispatchedAs<ConvertColourspace, ConvertRGBtoYCbCr42x, ConvertYCbCr42xToRGB, ConvertToPackedFrame,
                       ConvertToFullFrame>("Not built with OpenGL support");
    expectDispatchedAs<ConvertRGBtoYCoCgDXT5, ConvertYCoCgDXT5toRGB>("not implemented");
}

TEST(FrameDispatch, FiltersNameTheFramesAndPairsThatTheyRefuse) {
    auto const full = [] { return std::make_unique<FullFrame>(F::BGRA_F32(), 4, 4); };
    auto const packed = [] { return PackedFrame::create(PackedFrameFormat::RGB_DXT1_U8(), 4, 4); };
    std::string const fromFull = "RGBA_F32_BGRA to YCoCgA_U8_CoCgAY";
    std::string const fromPacked = "RGB_U8_RGB-DXT1 to YCoCgA_U8_CoCgAY";
    struct {
        std::function<std::string(std::unique_ptr<IFrame>)> refuse;
        std::string ofFull, ofPacked;
    } const cases[] = {
        {refusal<ConvertBitDepth>, "Source colourspace RGBA does not match destination colourspace YCoCgA",
         "Can only convert FullFrame images"},
        {refusal<ConvertColourspace>, "Colourspace conversion is not supported from " + fromFull,
         "Can only convert FullFrame images"},
        {refusal<ConvertRGBtoYCbCr42x>, "YCbCr 4:2:2 conversion is not supported from " + fromFull,
         "Can only convert FullFrame images"},
        {refusal<ConvertYCbCr42xToRGB>, "Can only convert PackedFrame images",
         "RGB conversion is not supported from " + fromPacked},
        {refusal<ConvertRGBtoYCoCgDXT5>, "DXT conversion is not supported from " + fromFull,
         "Can only convert FullFrame images"},
        {refusal<ConvertYCoCgDXT5toRGB>, "Can only convert PackedFrame images",
         "RGB conversion is not supported from " + fromPacked},
        {refusal<ConvertToPackedFrame>, "Packing is not supported from " + fromFull,
         "Can only convert FullFrame images"},
        {refusal<ConvertToFullFrame>, "Can only convert packed images",
         "Unpacking is not supported from " + fromPacked},
    };
    for (auto const& row : cases) {
        EXPECT_EQ(row.refuse(full()), row.ofFull);
        EXPECT_EQ(row.refuse(packed()), row.ofPacked);
    }
}

/// A processor that cannot be made.
template <class Base, class Thrown>
struct Unmakeable : Base {
    explicit Unmakeable(FrameFormat const&) { throw Thrown("no luck"); }
    std::unique_ptr<IFrame> onNewImage(std::unique_ptr<IImageFrame>) { return nullptr; }
    std::unique_ptr<IFrame> onNewTexture(std::unique_ptr<ITextureFrame>) { return nullptr; }
};
template <class Image, class Texture>
struct Dispatcher final : DispatchingFilter<Dispatcher<Image, Texture>, Image, Texture> {
    using DispatchingFilter<Dispatcher, Image, Texture>::DispatchingFilter;
};

TEST(FrameDispatch, PutsNullProcessorsInPlaceOfThoseThatCannotBeMade) {
    using Fallback = Dispatcher<Unmakeable<IImageProcessor, std::runtime_error>,
                                Unmakeable<ITextureProcessor, std::logic_error>>;
    EXPECT_EQ(refusal<Fallback>(rgbFrame()), "NullImageProcessor::onNewImage not implemented");
    EXPECT_EQ(refusal<Fallback>(std::make_unique<TextureFrame>()),
              "NullTextureProcessor::onNewTexture no luck");

    using NoException = Dispatcher<Unmakeable<IImageProcessor, std::string>, NullTextureProcessor>;
    EXPECT_THROW(NoException::create(F::RGB_U8()), std::string) << "only exceptions proper are replaced";
    EXPECT_EQ(messageOf([] { NullImageProcessor(F::RGB_U8()).onNewImage(nullptr); }), "invalid frame");
    EXPECT_EQ(messageOf([] { NullTextureProcessor(F::RGB_U8()).onNewTexture(nullptr); }), "invalid frame");
}

} // namespace

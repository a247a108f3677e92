#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/converters/ConvertBitDepth.h>
#include <MediaConversion/converters/ImageColourspace.h>
#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>
#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>
#include <MediaConversion/converters/ImageToFullFrame.h>
#include <MediaConversion/converters/ImageToPackedFrame.h>
#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::messageOf;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

/// The name of a filter that is one of `Filters`.
template <class... Filters>
std::string kindOf(IFrameFilter const& filter, std::initializer_list<const char*> names) {
    bool const matches[] = {dynamic_cast<Filters const*>(&filter) != nullptr...};
    for (std::size_t i = 0; i < sizeof...(Filters); ++i)
        if (matches[i])
            return names.begin()[i];
    return "unknown";
}

/// A chain as text: each filter with the format that it produces.
std::string textOf(std::vector<Encoder::EncodingStep> const& chain) {
    std::string text;
    for (auto const& [create, format] : chain) {
        std::string const kind =
            kindOf<ConvertBitDepth, ConvertColourspace, ConvertRGBtoYCbCr42x, ConvertYCbCr42xToRGB,
                   ConvertRGBtoYCoCgDXT5, ConvertYCoCgDXT5toRGB, ConvertToPackedFrame, ConvertToFullFrame>(
                *create(format),
                {"depth", "colour", "toYCbCr", "fromYCbCr", "toDxt", "fromDxt", "pack", "unpack"});
        text += (text.empty() ? "" : " ") + kind + ">" + FrameFormat::toString(format);
    }
    return text;
}

TEST(EncodingSteps, CountByTheirSource) {
    std::map<FrameFormat, int> counts;
    for (auto const& [formats, chain] : Encoder::encodingSteps)
        ++counts[std::get<0>(formats)];
    std::map<FrameFormat, int> const expected{
        {F::RGB_U8(), 12},
        {F::RGB_U10(), 1},
        {F::RGB_U12(), 1},
        {F::RGB_U15plus1(), 1},
        {F::BGR_U8(), 12},
        {F::BGR_U16(), 8},
        {F::BGR_F32(), 9},
        {F::RGBA_U8(), 5},
        {F::BGRA_U8(), 12},
        {F::BGRA_U16(), 8},
        {F::BGRA_F32(), 13},
        {F::ARGB_U8(), 6},
        {F::ARGB_U15plus1(), 6},
        {P::BGR_DPX_FILLED_U10(), 7},
        {P::RGB_DPX_FILLED_U10(), 7},
        {P::BGR_SMPTE_2110_U12(), 8},
        {P::RGB_SMPTE_2110_U12(), 12},
        {P::YCBCR_ITU_T871_YUYV_422_U8(), 8},
        {P::YCBCR_ITU_T871_9ZT_422_U10(), 9},
        {P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), 1},
        {P::YCBCR_ITU_T871_9ZT_420_U8(), 5},
        {P::YCOCG_DXT5_U8(), 4},
        {P::BGR_DPX_PACKED_U12(), 5},
        {P::RGB_DPX_PACKED_U12(), 7},
    };
    EXPECT_EQ(counts, expected);
    EXPECT_EQ(Encoder::encodingSteps.size(), 167u);
}

TEST(EncodingSteps, EndInTheirDestinationButForOne) {
    for (auto const& [formats, chain] : Encoder::encodingSteps) {
        auto const& [source, destination] = formats;
        bool const swapping = source == destination;
        EXPECT_EQ(std::get<1>(chain.back()), swapping ? P::BGR_SMPTE_2110_U12() : destination)
            << FrameFormat::toString(source) << " to " << FrameFormat::toString(destination);
    }
    EXPECT_EQ(textOf(Encoder::selectEncodingSteps(P::RGB_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12())),
              "unpack>RGB_U12_RGB pack>RGB_U12_BGR-SMPTE-2110");
}

TEST(EncodingSteps, LeadThroughTheRightFormats) {
    struct {
        FrameFormat source, destination;
        const char* chain;
    } const cases[] = {
        {F::RGB_U8(), F::BGR_U8(), "colour>RGB_U8_BGR"},
        {F::RGB_U8(), P::RGB_DXT1_U8(), "colour>RGBA_U8_RGBA toDxt>RGB_U8_RGB-DXT1"},
        {F::BGR_U8(), F::BGRA_F32(), "colour>RGBA_U8_BGRA depth>RGBA_F32_BGRA"},
        {F::BGR_U16(), P::YCOCG_DXT5_U8(), "depth>RGB_U8_BGR toDxt>YCoCg_U8_YCoCg-DXT5"},
        {F::BGRA_U16(), P::YCOCG_DXT5_U8(), "depth>RGBA_U8_BGRA toDxt>YCoCg_U8_YCoCg-DXT5"},
        {P::BGR_SMPTE_2110_U12(), P::RGB_SMPTE_2110_U12(), "unpack>RGB_U12_BGR pack>RGB_U12_RGB-SMPTE-2110"},
        {P::BGR_SMPTE_2110_U12(), F::BGR_U8(), "unpack>RGB_U12_BGR depth>RGB_U8_BGR"},
        {P::RGB_SMPTE_2110_U12(), F::BGR_U8(), "unpack>RGB_U12_RGB depth>RGB_U8_RGB colour>RGB_U8_BGR"},
        {P::RGB_SMPTE_2110_U12(), P::YCBCR_ITU_T871_9ZT_422_U10(),
         "unpack>RGB_U12_RGB depth>RGB_U15plus1_RGB toYCbCr>YCbCr_ITU_T871_U10_9ZT-422"},
        {P::YCBCR_ITU_T871_YUYV_422_U8(), F::RGBA_U8(), "fromYCbCr>RGBA_U8_RGBA"},
        {P::YCOCG_DXT5_U8(), F::BGRA_F32(), "fromDxt>RGBA_U8_BGRA depth>RGBA_F32_BGRA"},
        {P::BGR_DPX_PACKED_U12(), F::RGB_U8(), "unpack>RGBA_U8_RGBA colour>RGB_U8_RGB"},
        {P::RGB_DPX_PACKED_U12(), F::BGR_U8(), "unpack>RGBA_U8_RGBA colour>RGB_U8_BGR"},
        // by way of float BGRA
        {F::RGBA_U8(), P::RGB_SMPTE_2110_U12(),
         "colour>RGBA_U8_BGRA depth>RGBA_F32_BGRA pack>RGB_U12_RGB-SMPTE-2110"},
        {F::BGRA_U8(), P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(),
         "depth>RGBA_F32_BGRA toYCbCr>YCbCrA_ITU_T871_U12_9ZT-4224-HYBRID"},
    };
    for (auto const& row : cases)
        EXPECT_EQ(textOf(Encoder::selectEncodingSteps(row.source, row.destination)), row.chain);
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

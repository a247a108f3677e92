// Every format of the catalogue to every other: the chain, what it refuses, and that what comes out is the
// picture that went in.
#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <tests/MediaConversion/MediaPipeline/EncodingRoutes.h>
#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <opencv2/imgproc.hpp>

using namespace MediaConversion;
using namespace Zentrel;
using namespace TestSupport;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

using FramePointer = std::unique_ptr<IImageFrame>;

FramePointer encoded(FrameFormat const& from, FrameFormat const& to, FramePointer frame) {
    Encoder encoder(from, to);
    FrameSinkDestination sink;
    encoder.connect(&sink);
    encoder.start();
    encoder.encodeFrame(std::move(frame));
    encoder.stop();
    return FramePointer(&dynamic_cast<IImageFrame&>(*sink.frame().release()));
}

cv::Mat encodedImage(FrameFormat const& from, FrameFormat const& to, cv::Mat const& image) {
    return encoded(from, to, frameOf(from, image))->image();
}

/// The pairs of the listing whose converter has no conversion, so that they fail only when a frame comes.
bool refusesFrames(std::string const& source, std::string const& destination) {
    return (source == "YUYV_422" || source == "9ZT_422") && destination == "RGBA_U8";
}

template <class Action>
void forEveryPair(Action const& action) {
    for (auto const& [source, in] : catalogue())
        for (auto const& [destination, out] : catalogue()) {
            SCOPED_TRACE(source + " to " + destination);
            ASSERT_NO_FATAL_FAILURE(action(source, in, destination, out));
        }
}

/// `forEveryPair`, of those that convert frames.
template <class Action>
void forEveryServedPair(Action const& action) {
    forEveryPair([&](auto const& source, auto const& in, auto const& destination, auto const& out) {
        bool const canBeFrame = in != F::YCBCR_ITU_T871_YCBCR_U10();
        if (canBeFrame && expectedChain(source, destination) && !refusesFrames(source, destination))
            action(in, out);
    });
}

TEST(EncoderPairs, HaveTheirChainOrTheirRefusal) {
    forEveryPair([&](auto const& source, auto const& in, auto const& destination, auto const& out) {
        std::string const names = FrameFormat::toString(in) + " to " + FrameFormat::toString(out);
        auto const chain = expectedChain(source, destination);
        if (!chain) {
            EXPECT_EQ(messageOf([&] { Encoder(in, out); }), "Encoding is not supported from " + names);
            return;
        }
        EXPECT_EQ(Encoder::toString(Encoder(in, out).chain()), *chain);
        if (refusesFrames(source, destination)) {
            EXPECT_EQ(messageOf([&] { encoded(in, out, PackedFrame::create(in, 4, 4)); }),
                      "RGB conversion is not supported from " + names);
        }
    });
}

TEST(EncoderPairs, GiveTheSameOnAnyThreadsAndFromAnyMemory) {
    int const threadsBefore = cv::getNumThreads();
    forEveryServedPair([](FrameFormat const& in, FrameFormat const& out) {
        cv::Size const size(36, 20);
        GuardedPicture const picture(in, size, Filling::Noise);
        cv::setNumThreads(1);
        auto const expected = encoded(in, out, picture.frame());
        EXPECT_EQ(expected->format(), out);
        EXPECT_EQ(expected->rows(), size.height);
        EXPECT_EQ(expected->cols(), size.width);
        cv::setNumThreads(4);
        expectSameBytes(encodedImage(in, out, picture.matrix()), expected->image());
        expectSameBytes(encodedImage(in, out, picture.matrix().clone()), expected->image());
        EXPECT_TRUE(picture.untouched());
    });
    cv::setNumThreads(threadsBefore);
}

// ---- What a matrix shows, as float BGRA ----

/// The channel of BGRA that each of a full format's samples is, by the letters of its layout.
std::vector<int> bgraChannels(FrameFormat const& format) {
    std::vector<int> channels;
    for (char const letter : format.layoutName)
        channels.push_back(static_cast<int>(std::string("BGRA").find(letter)));
    return channels;
}

cv::Mat fullFromBgra(FrameFormat const& format, cv::Mat const& bgra) {
    std::vector<cv::Mat> planes;
    for (int const channel : bgraChannels(format))
        cv::extractChannel(bgra, planes.emplace_back(), channel);
    cv::Mat samples, result;
    cv::merge(planes, samples);
    samples.convertTo(result, openCvTypeOf(format), fullScale(format.channelType));
    return result;
}

cv::Mat bgraFromFull(FrameFormat const& format, cv::Mat const& full) {
    cv::Mat samples, bgra(full.size(), CV_32FC4, cv::Scalar::all(1));
    full.convertTo(samples, CV_32F, 1 / fullScale(format.channelType));
    std::vector<int> const channels = bgraChannels(format);
    for (int i = 0; i < samples.channels(); ++i) {
        cv::Mat plane;
        cv::extractChannel(samples, plane, i);
        cv::insertChannel(plane, bgra, channels[static_cast<std::size_t>(i)]);
    }
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
    return shownBy(full, encodedImage(format, full, image));
}

/// A picture of 4 x 4 blocks of equal pixels, of which subsampling and block compression lose little.
cv::Mat blocksOfColour(FrameFormat const& format) {
    cv::Size const size(32, 16);
    if (isPacked12(format)) { // nothing encodes to it, but nothing that it leads to subsamples
        cv::Mat noise(elementsOf(format, size), openCvTypeOf(format));
        fillPacked(noise, Filling::Noise);
        return noise;
    }
    cv::Mat colours(size / 4, CV_32FC4), bgra;
    cv::RNG(1).fill(colours, cv::RNG::UNIFORM, 0.1, 0.9);
    cv::resize(colours, bgra, size, 0, 0, cv::INTER_NEAREST);
    return FullFrame::is(format) ? fullFromBgra(format, bgra) : encodedImage(F::BGRA_F32(), format, bgra);
}

bool hasAlpha(FrameFormat const& format) {
    return format.colourspace == Colourspace::RGBA || format.colourspace == Colourspace::YCbCrA_ITU_T871;
}

TEST(EncoderPairs, KeepThePicture) {
    forEveryServedPair([](FrameFormat const& in, FrameFormat const& out) {
        if (in == out)
            return;
        cv::Mat const source = blocksOfColour(in);
        cv::Mat expected = shownBy(in, source);
        if (!hasAlpha(out))
            cv::insertChannel(cv::Mat(expected.size(), CV_32F, cv::Scalar(1)), expected, 3);
        bool const blockCompressed = out == P::RGB_DXT1_U8() || out == P::YCOCG_DXT5_U8();
        EXPECT_LT(cv::norm(shownBy(out, encodedImage(in, out, source)), expected, cv::NORM_INF),
                  blockCompressed ? 0.06 : 0.007);
    });
}

// ---- Pairs that lose nothing ----

/// Every bit that is not a sample's is as the converters leave it.
cv::Mat noiseIn(FrameFormat const& format) {
    bool const full = FullFrame::is(format);
    GuardedPicture const noise(full ? format : F::BGRA_F32(), {256, 64}, Filling::Noise);
    return full ? noise.matrix() : encodedImage(F::BGRA_F32(), format, noise.matrix());
}

TEST(EncoderPairs, ReturnWhatTheyTookWhereNothingIsLost) {
    struct {
        const char* formats;
        const char* carriers;
    } const cases[] = {
        {"RGB_U8 BGR_U8", "RGB_U8 BGR_U8 RGBA_U8 BGRA_U8 BGRA_F32"},
        {"RGBA_U8 BGRA_U8", "RGBA_U8 BGRA_U8 BGRA_F32"},
        {"RGB_U8 BGR_U8", "RGB_DPX_FILLED BGR_DPX_FILLED RGB_SMPTE_2110 BGR_SMPTE_2110"},
        {"RGB_U12", "RGB_SMPTE_2110"},
        {"RGB_SMPTE_2110 BGR_SMPTE_2110 RGB_DPX_FILLED BGR_DPX_FILLED", "BGRA_F32 BGRA_U16 ARGB_U15plus1"},
    };
    for (auto const& row : cases)
        for (auto const& name : wordsOf(row.formats))
            for (auto const& carrierName : wordsOf(row.carriers)) {
                SCOPED_TRACE(name + " through " + carrierName);
                FrameFormat const format = catalogue().at(name), carrier = catalogue().at(carrierName);
                cv::Mat const picture = noiseIn(format);
                cv::Mat const carried = encodedImage(format, carrier, picture);
                expectSameBytes(encodedImage(carrier, format, carried), picture);
            }
}

} // namespace

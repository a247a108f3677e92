#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/ConvertBitDepth.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

#include <cmath>
#include <limits>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::messageOf;
using F = FullFrameFormat;
using P = PackedFrameFormat;
using T = ChannelType;
using Origin = Frame::Origin;

namespace {

/// What becomes of one sample, put into every channel of a frame.
double converted(FrameFormat const& source, FrameFormat const& destination, double sample) {
    int const type = FullFrame::openCvTypes.at(source);
    auto frame =
        std::make_unique<FullFrame>(source, cv::Mat(3, 5, type, cv::Scalar::all(sample)), Origin::TopLeft);
    auto const result = ConvertBitDepth(destination).convert(std::move(frame));
    cv::Mat const image = dynamic_cast<FullFrame&>(*result).image();
    EXPECT_EQ(result->format(), destination);
    EXPECT_EQ(result->rows(), 3);
    EXPECT_EQ(result->cols(), 5);
    cv::Mat asDouble;
    image.reshape(1).convertTo(asDouble, CV_64F);
    double lowest, highest;
    cv::minMaxLoc(asDouble, &lowest, &highest);
    EXPECT_EQ(lowest, highest);
    return highest;
}

TEST(ConvertBitDepth, RoundsToNearestAndSaturatesToTheContainer) {
    struct {
        FrameFormat source, destination;
        double sample, expected;
    } const cases[] = {
        {F::RGB_U8(), F::RGB_U8(), 77, 77},
        {F::RGB_U8(), F::RGB_U12(), 128, 2056},
        {F::RGB_U8(), F::RGB_U15plus1(), 255, 32768},
        {F::RGB_U8(), F::RGB_U15plus1(), 1, 129},
        {F::RGB_U8(), F::RGB_F32(), 255, 1},
        {F::RGB_U12(), F::RGB_U8(), 4095, 255},
        {F::RGB_U12(), F::RGB_U15plus1(), 4095, 32768},
        {F::RGB_U12(), F::RGB_U15plus1(), 5000, 40010}, // above full scale
        {F::RGB_U12(), F::RGB_F32(), 4095, 1},
        {F::RGB_U15plus1(), F::RGB_U12(), 32768, 4095},
        {F::BGR_U16(), F::BGR_U8(), 65535, 255},
        {F::BGRA_F32(), F::BGRA_U8(), 1, 255},
        {F::BGRA_F32(), F::BGRA_U8(), 0.5, 128}, // 127.5, to the even neighbour
        {F::BGRA_F32(), F::BGRA_U8(), -0.25, 0},
        {F::BGRA_F32(), F::BGRA_U8(), 100, 255},
        {F::BGRA_F32(), F::BGRA_U8(), std::numeric_limits<double>::quiet_NaN(), 0},
        {F::RGB_F32(), F::RGB_U10(), 1, 1023},
        {F::RGB_F32(), F::RGB_U10(), 0.5, 512},
        {F::RGB_F32(), F::RGB_U12(), 0.5, 2048},
        {F::RGB_F32(), F::RGB_U12(), 2, 8190}, // not limited to 4095
        {F::RGB_F32(), F::RGB_U12(), 20, 65535},
    };
    for (auto const& row : cases)
        EXPECT_EQ(converted(row.source, row.destination, row.sample), row.expected)
            << FrameFormat::toString(row.source) << " " << row.sample << " to "
            << FrameFormat::toString(row.destination);
}

TEST(ConvertBitDepth, ServesTwelvePairsOfDepths) {
    std::string served;
    for (T const source : {T::U8, T::U10, T::U12, T::U15plus1, T::U16, T::F32})
        for (T const destination : {T::U8, T::U10, T::U12, T::U15plus1, T::U16, T::F32}) {
            std::string const pair =
                FrameFormat::toString(source) + " to " + FrameFormat::toString(destination);
            if (ConvertBitDepth::bitDepthConversion.count({source, destination}))
                served += pair + ", ";
            else
                EXPECT_EQ(messageOf([&] { ConvertBitDepth::selectConversion(source, destination); }),
                          "Bit depth conversion is not supported from " + pair);
        }
    EXPECT_EQ(served,
              "U8 to U8, U8 to U12, U8 to U15plus1, U8 to F32, U12 to U8, U12 to U15plus1, U12 to F32, "
              "U15plus1 to U12, U16 to U8, F32 to U8, F32 to U10, F32 to U12, ");
    EXPECT_EQ(ConvertBitDepth::selectConversion(T::U15plus1, T::U12).scaleFactor, 0.124969482421875);
}

TEST(ConvertBitDepth, ChecksInOrder) {
    auto const full = [](FrameFormat const& format) { return FullFrame::create(format, 4, 4); };
    auto const packed = [] { return PackedFrame::create(P::RGB_DXT1_U8(), 4, 4); };
    struct {
        FrameFormat destination;
        std::unique_ptr<IFrame> frame;
        const char* message;
    } cases[] = {
        {F::RGBA_U8(), nullptr, "Can only convert FullFrame images"},
        {F::RGBA_U8(), packed(), "Can only convert FullFrame images"},
        {F::RGBA_U8(), full(F::BGR_U16()),
         "Source colourspace RGB does not match destination colourspace RGBA"},
        {F::RGB_U16(), full(F::BGR_U16()),
         "Source channel format BGR does not match destination channel format RGB"},
        {F::RGB_U16(), full(F::RGB_U8()), "Bit depth conversion is not supported from U8 to U16"},
        {F::YCBCR_ITU_T871_YCBCR_U10(), full(F::YCBCR_ITU_T871_YCBCR_F32()),
         "OpenCV type not defined for frame format YCbCr_ITU_T871_U10_YCbCr"},
    };
    for (auto& row : cases)
        EXPECT_EQ(messageOf([&] { ConvertBitDepth(row.destination).convert(std::move(row.frame)); }),
                  row.message);
}

} // namespace

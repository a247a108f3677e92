#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/converters/ConvertBitDepth.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

#include <cmath>
#include <set>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::messageOf;
using F = FullFrameFormat;
using T = ChannelType;

namespace {

TEST(ConvertBitDepth, RoundsToNearestAndSaturatesToTheContainer) {
    struct {
        FrameFormat source, destination;
        double sample, expected;
    } const cases[] = {
        {F::RGB_U8(), F::RGB_U8(), 77, 77},
        {F::RGB_U8(), F::RGB_U12(), 128, 2056},
        {F::RGB_U8(), F::RGB_U15plus1(), 1, 129},
        {F::RGB_U8(), F::RGB_F32(), 255, 1},
        {F::RGB_U12(), F::RGB_U8(), 4095, 255},
        {F::RGB_U12(), F::RGB_U15plus1(), 5000, 40010}, // above full scale
        {F::RGB_U12(), F::RGB_F32(), 4095, 1},
        {F::RGB_U15plus1(), F::RGB_U12(), 32768, 4095},
        {F::BGR_U16(), F::BGR_U8(), 65535, 255},
        {F::BGRA_F32(), F::BGRA_U8(), 0.5, 128},         // 127.5, to the even neighbour
        {F::BGRA_F32(), F::BGRA_U8(), 0x1.414142p-7, 2}, // rounded once more, to single precision
        {F::BGRA_F32(), F::BGRA_U8(), -0.25, 0},
        {F::BGRA_F32(), F::BGRA_U8(), 100, 255},
        {F::BGRA_F32(), F::BGRA_U8(), NAN, 0},
        {F::RGB_F32(), F::RGB_U10(), 0.5, 512},
        {F::RGB_F32(), F::RGB_U12(), 2, 8190}, // not limited to 4095
        {F::RGB_F32(), F::RGB_U12(), 20, 65535},
    };
    std::set<std::pair<T, T>> served;
    for (auto const& [source, destination, sample, expected] : cases) {
        served.insert({source.channelType, destination.channelType});
        cv::Mat const pixels(3, 5, FullFrame::openCvTypes.at(source), cv::Scalar::all(sample));
        auto const result = ConvertBitDepth(destination)
                                .convert(std::make_unique<FullFrame>(source, pixels, Frame::Origin::TopLeft));
        cv::Mat const image = dynamic_cast<FullFrame&>(*result).image();
        cv::Mat const same(3, 5, FullFrame::openCvTypes.at(destination), cv::Scalar::all(expected));
        EXPECT_EQ(result->format(), destination);
        ASSERT_EQ(image.size(), same.size());
        EXPECT_EQ(cv::norm(image, same, cv::NORM_INF), 0)
            << FrameFormat::toString(source) << " " << sample << " to " << FrameFormat::toString(destination)
            << ": " << image.row(0).col(0);
    }
    for (T const source : {T::U8, T::U10, T::U12, T::U15plus1, T::U16, T::F32})
        for (T const destination : {T::U8, T::U10, T::U12, T::U15plus1, T::U16, T::F32})
            if (!served.count({source, destination})) {
                EXPECT_EQ(messageOf([&] { ConvertBitDepth::selectConversion(source, destination); }),
                          "Bit depth conversion is not supported from " + FrameFormat::toString(source) +
                              " to " + FrameFormat::toString(destination));
            }
}

TEST(ConvertBitDepth, ChecksInOrder) {
    struct {
        FrameFormat source, destination;
        const char* message;
    } const cases[] = {
        {F::BGR_U16(), F::RGBA_U8(), "Source colourspace RGB does not match destination colourspace RGBA"},
        {F::BGR_U16(), F::RGB_U16(),
         "Source channel format BGR does not match destination channel format RGB"},
        {F::RGB_U8(), F::RGB_U16(), "Bit depth conversion is not supported from U8 to U16"},
        {F::YCBCR_ITU_T871_YCBCR_F32(), F::YCBCR_ITU_T871_YCBCR_U10(),
         "OpenCV type not defined for frame format YCbCr_ITU_T871_U10_YCbCr"},
    };
    for (auto const& [source, destination, message] : cases)
        EXPECT_EQ(messageOf([&, from = source, to = destination] {
                      ConvertBitDepth(to).convert(FullFrame::create(from, 4, 4));
                  }),
                  message);
    EXPECT_EQ(messageOf([] { ConvertBitDepth(F::RGBA_U8()).convert(nullptr); }),
              "Can only convert FullFrame images");
}

} // namespace

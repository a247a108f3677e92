#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

#include <functional>
#include <numeric>

using namespace Zentrel;
using TestSupport::messageOf;
using F = FullFrameFormat;
using P = PackedFrameFormat;
using Origin = Frame::Origin;

namespace {

/// A block whose bytes count up from 0.
std::unique_ptr<RawFrameData> rawData(std::uint64_t size, std::uint64_t offset = 0, std::uint64_t end = 0) {
    static SelfPruningMemoryPool<HostMemoryResource, true> pool(3);
    auto memory = std::make_unique<MemoryAccess>(pool, size);
    std::iota(memory->data(), memory->data() + size, std::uint8_t{0});
    return std::make_unique<RawFrameData>(std::move(memory), RawFrameData::Offset{offset},
                                          RawFrameData::End{end});
}

template <class Frame>
void expectTakesItsFormats(std::size_t count) {
    EXPECT_EQ(Frame::openCvTypes.size(), count);
    for (auto const& [format, type] : Frame::openCvTypes) {
        SCOPED_TRACE(FrameFormat::toString(format));
        Frame const frame(format, 8, 16);
        auto const block = format.pixelPacking.pixels();
        EXPECT_EQ(frame.image().type(), type);
        EXPECT_EQ(frame.image().elemSize(), format.pixelPacking.bytes());
        EXPECT_EQ(frame.image().rows * block.rows, 8u);
        EXPECT_EQ(frame.image().cols * block.columns, 16u);
        EXPECT_EQ(frame.rows(), 8);
        EXPECT_EQ(frame.cols(), 16);
    }
}

TEST(Frames, TakeEveryFormatOfTheirTables) {
    expectTakesItsFormats<FullFrame>(27);
    expectTakesItsFormats<PackedFrame>(12);
}

TEST(Frames, ShareAMatrixOrHoldItFlipped) {
    cv::Mat const pixels = (cv::Mat_<cv::Vec3b>(2, 1) << cv::Vec3b(1, 2, 3), cv::Vec3b(4, 5, 6));
    EXPECT_EQ(FullFrame(F::RGB_U8(), pixels, Origin::TopLeft).image().data, pixels.data);
    FullFrame const flipped(F::RGB_U8(), pixels, Origin::BottomLeft);
    EXPECT_EQ(flipped.image().at<cv::Vec3b>(0, 0), cv::Vec3b(4, 5, 6));
    EXPECT_EQ(flipped.image().at<cv::Vec3b>(1, 0), cv::Vec3b(1, 2, 3));
    EXPECT_EQ(pixels.at<cv::Vec3b>(0, 0), cv::Vec3b(1, 2, 3)) << "the given matrix is left as it was";
}

TEST(Frames, LieOverTheBytesOfARawBlockOrCopyThem) {
    auto raw = FullFrame::createRaw(F::RGB_U8(), 2, 2, rawData(20, 5, 17));
    FullFrame const full(std::move(*raw));
    raw.reset();
    EXPECT_EQ(full.image().data, full.rawFrameData().pixelData());
    EXPECT_EQ(full.image().at<cv::Vec3b>(1, 1), cv::Vec3b(14, 15, 16));

    auto const packed = PackedFrame::createRaw(P::YCBCR_ITU_T871_9ZT_420_U8(), 4, 2, rawData(40, 28));
    EXPECT_EQ(packed->image().ptr(1)[0], 34);
    EXPECT_EQ(packed->rows(), 4);

    std::vector<std::uint8_t> bytes{0, 1, 2, 3, 4, 5, 6, 7};
    PackedFrame const copy(P::YCBCR_ITU_T871_YUYV_422_U8(), 2, 2, bytes);
    bytes.assign(8, 99);
    EXPECT_EQ(copy.image().at<cv::Vec4b>(1, 0), cv::Vec4b(4, 5, 6, 7));
}

TEST(Frames, RefuseWhatDoesNotFit) {
    struct {
        std::function<void()> make;
        const char* message;
    } const cases[] = {
        {[] { FullFrame::create(P::RGB_DXT1_U8(), 4, 4); },
         "OpenCV type not defined for frame format RGB_U8_RGB-DXT1"},
        {[] { PackedFrame::create(F::RGB_U8(), 2, 2); },
         "OpenCV type not defined for frame format RGB_U8_RGB"},
        {[] { FullFrame(F::RGB_U8(), cv::Mat(2, 2, CV_16UC3), Origin::TopLeft); },
         "Frame format RGB_U8_RGB needs OpenCV type 16 and is incompatible with supplied image of type 18"},
        {[] { PackedFrame::create(P::YCBCR_ITU_T871_9ZT_420_U8(), 1080, 1921); },
         "Frame format column pixel packing of 2 pixels is incompatible with supplied image columns of 1921"},
        {[] { PackedFrame::create(P::YCOCG_DXT5_U8(), 1082, 1920); },
         "Frame format row pixel packing of 4 pixels is incompatible with supplied image rows of 1082"},
        {[] { PackedFrame::packedRows(P::RGB_DPX_PACKED_U12(), CV_32SC2, 2); },
         "Mismatch in channel count between packing format (9) and underlying image matrix (4 bytes per "
         "channel, 2 channels)"},
        {[] {
             PackedFrame(P::RGB_DXT1_U8(), 4, 8, {1, 2, 3});
         },
         "Expecting input byte count 16 (1x2x8 matrix), got 3 bytes"},
        {[] { FullFrame::createRaw(F::BGRA_F32(), 100000, 100000, rawData(16)); },
         "Expecting input data byte count 160000000000, got 16"},
        {[] { FullFrame::createRaw(F::RGB_U8(), -1, -1, rawData(3)); },
         "Frame size of -1 rows and -1 columns is negative"},
        {[] { FullFrame(F::RGB_U8(), 1, -2); }, "Frame size of 1 rows and -2 columns is negative"},
        {[] { PackedFrame(P::YCOCG_DXT5_U8(), 4, -4); }, "Frame size of 4 rows and -4 columns is negative"},
        {[] { PackedFrame::createRaw(P::RGB_DXT1_U8(), 4, 8, nullptr); }, "no rawFrameData"},
        {[] { FullFrame(F::RGB_U8(), 2, 2).rawFrameData(); }, "ImageFrame does not contain any raw data"},
    };
    for (auto const& row : cases)
        EXPECT_EQ(messageOf(row.make), row.message);
}

TEST(Frames, ClonesAreIndependent) {
    FullFrame const full(F::RGB_U8(), cv::Mat(2, 2, CV_8UC3, cv::Scalar::all(7)), Origin::TopLeft);
    auto const fullRaw = FullFrame::createRaw(F::RGB_U8(), 2, 2, rawData(20, 5, 17));
    PackedFrame const packed(P::YCBCR_ITU_T871_YUYV_422_U8(), 1, 2, {1, 2, 3, 4});
    auto const packedRaw = PackedFrame::createRaw(P::YCBCR_ITU_T871_YUYV_422_U8(), 2, 4, rawData(44, 28));
    for (IImageFrame const* const frame :
         std::initializer_list<IImageFrame const*>{&full, &packed, fullRaw.get(), packedRaw.get()}) {
        auto const copy = frame->clone();
        EXPECT_EQ(copy->format(), frame->format());
        EXPECT_EQ(copy->cols(), frame->cols());
        EXPECT_NE(copy->image().data, frame->image().data);
        EXPECT_EQ(cv::norm(copy->image(), frame->image(), cv::NORM_INF), 0);
        EXPECT_EQ(copy->containsRawFrameData(), frame->containsRawFrameData());
    }
    EXPECT_EQ(fullRaw->clone()->rawFrameData().pixelDataOffset().value, 5u);
}

} // namespace

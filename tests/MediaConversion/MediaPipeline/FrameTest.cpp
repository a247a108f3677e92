#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

#include <numeric>

using namespace Zentrel;
using TestSupport::messageOf;
using F = FullFrameFormat;
using P = PackedFrameFormat;
using Origin = Frame::Origin;

namespace {

SelfPruningMemoryPool<HostMemoryResource, true>& pool() {
    static SelfPruningMemoryPool<HostMemoryResource, true> instance(3);
    return instance;
}

/// A block whose bytes count up from 0.
std::unique_ptr<RawFrameData> rawData(std::uint64_t size, std::uint64_t offset = 0, std::uint64_t end = 0) {
    auto memory = std::make_unique<MemoryAccess>(pool(), size);
    std::iota(memory->data(), memory->data() + size, std::uint8_t{0});
    return std::make_unique<RawFrameData>(std::move(memory), RawFrameData::Offset{offset},
                                          RawFrameData::End{end});
}

TEST(FullFrame, TakesEveryFormatOfItsTableAndNoOther) {
    ASSERT_EQ(FullFrame::openCvTypes.size(), 27u);
    for (auto const& [format, type] : FullFrame::openCvTypes) {
        FullFrame const frame(format, 3, 5);
        EXPECT_EQ(frame.image().type(), type);
        EXPECT_EQ(frame.image().elemSize(), format.pixelPacking.bytes()) << FrameFormat::toString(format);
        EXPECT_EQ(static_cast<unsigned>(frame.image().channels()), format.pixelPacking.samples());
        EXPECT_EQ(frame.rows(), 3);
        EXPECT_EQ(frame.cols(), 5);
        EXPECT_FALSE(PackedFrame::is(format));
    }
    EXPECT_FALSE(FullFrame::is(F::YCBCR_ITU_T871_YCBCR_U10()));
    EXPECT_EQ(messageOf([] { FullFrame::create(F::YCBCR_ITU_T871_YCBCR_U10(), 2, 2); }),
              "OpenCV type not defined for frame format YCbCr_ITU_T871_U10_YCbCr");
    EXPECT_EQ(messageOf([] { FullFrame::create(P::RGB_DXT1_U8(), 4, 4); }),
              "OpenCV type not defined for frame format RGB_U8_RGB-DXT1");
}

TEST(FullFrame, SharesAMatrixOrHoldsItFlipped) {
    cv::Mat const matrix = (cv::Mat_<std::uint8_t>(2, 3) << 1, 2, 3, 4, 5, 6);
    cv::Mat const pixels = matrix.reshape(3, 2);

    FullFrame const shared(F::RGB_U8(), pixels, Origin::TopLeft);
    EXPECT_EQ(shared.image().data, pixels.data);
    FullFrame const flipped(F::RGB_U8(), pixels, Origin::BottomLeft);
    EXPECT_EQ(flipped.image().at<cv::Vec3b>(0, 0), cv::Vec3b(4, 5, 6));
    EXPECT_EQ(flipped.image().at<cv::Vec3b>(1, 0), cv::Vec3b(1, 2, 3));
    EXPECT_EQ(pixels.at<cv::Vec3b>(0, 0), cv::Vec3b(1, 2, 3)) << "the given matrix is left as it was";
}

TEST(FullFrame, RefusesAMatrixOfAnotherType) {
    EXPECT_EQ(
        messageOf([] { FullFrame(F::RGB_U8(), cv::Mat(2, 2, CV_16UC3), Origin::TopLeft); }),
        "Frame format RGB_U8_RGB needs OpenCV type 16 and is incompatible with supplied image of type 18");
}

TEST(PackedFrame, TakesEveryFormatOfItsTable) {
    ASSERT_EQ(PackedFrame::openCvTypes.size(), 12u);
    for (auto const& [format, type] : PackedFrame::openCvTypes) {
        PackedFrame const frame(format, 8, 16);
        auto const block = format.pixelPacking.pixels();
        EXPECT_EQ(frame.image().type(), type);
        EXPECT_EQ(frame.image().elemSize(), format.pixelPacking.bytes()) << FrameFormat::toString(format);
        EXPECT_EQ(frame.image().rows, 8 / static_cast<int>(block.rows));
        EXPECT_EQ(frame.image().cols, 16 / static_cast<int>(block.columns));
        EXPECT_EQ(frame.rows(), 8);
        EXPECT_EQ(frame.cols(), 16);
        EXPECT_FALSE(FullFrame::is(format));
    }
}

TEST(PackedFrame, RefusesSizesThatAreNotWholeBlocks) {
    struct {
        FrameFormat format;
        int rows, columns;
        const char* message;
    } const cases[] = {
        {P::YCBCR_ITU_T871_9ZT_420_U8(), 1081, 1920,
         "Frame format row pixel packing of 2 pixels is incompatible with supplied image rows of 1081"},
        {P::YCBCR_ITU_T871_9ZT_420_U8(), 1080, 1921,
         "Frame format column pixel packing of 2 pixels is incompatible with supplied image columns of 1921"},
        {P::YCOCG_DXT5_U8(), 1082, 1920,
         "Frame format row pixel packing of 4 pixels is incompatible with supplied image rows of 1082"},
        {P::RGB_SMPTE_2110_U12(), 1, 3,
         "Frame format column pixel packing of 2 pixels is incompatible with supplied image columns of 3"},
        {F::RGB_U8(), 2, 2, "OpenCV type not defined for frame format RGB_U8_RGB"},
    };
    for (auto const& row : cases)
        EXPECT_EQ(messageOf([&] { PackedFrame::create(row.format, row.rows, row.columns); }), row.message);
}

TEST(PackedFrame, ComparesElementSizes) {
    EXPECT_NO_THROW(PackedFrame::checkPixelBlockAlignment(P::RGB_DPX_FILLED_U10().pixelPacking, CV_32SC1));
    EXPECT_EQ(messageOf([] { PackedFrame::packedRows(P::RGB_DPX_PACKED_U12(), CV_32SC2, 2); }),
              "Mismatch in channel count between packing format (9) and underlying image matrix (4 bytes per "
              "channel, "
              "2 channels)");
    EXPECT_EQ(messageOf([] {
                  PackedFrame(P::YCBCR_ITU_T871_YUYV_422_U8(), cv::Mat(2, 2, CV_32SC1), Origin::TopLeft);
              }),
              "Frame format YCbCr_ITU_T871_U8_YUYV-422 needs OpenCV type 24 and is incompatible with "
              "supplied image of "
              "type 4");
}

TEST(PackedFrame, CopiesBytes) {
    std::vector<std::uint8_t> bytes(2 * 2 * 4);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    PackedFrame const frame(P::YCBCR_ITU_T871_YUYV_422_U8(), 2, 4, bytes);
    bytes.assign(bytes.size(), 99);
    EXPECT_EQ(frame.image().at<cv::Vec4b>(1, 0), cv::Vec4b(8, 9, 10, 11));
    EXPECT_EQ(messageOf([&] { PackedFrame(P::YCBCR_ITU_T871_YUYV_422_U8(), 4, 4, bytes); }),
              "Expecting input byte count 32 (4x2x4 matrix), got 16 bytes");
}

TEST(RawFrames, LieOverTheBytesOfTheBlock) {
    auto const full = FullFrame::createRaw(F::RGB_U8(), 2, 2, rawData(20, 5, 17));
    EXPECT_TRUE(full->containsRawFrameData());
    EXPECT_EQ(full->image().data, full->rawFrameData().pixelData());
    EXPECT_EQ(full->image().at<cv::Vec3b>(1, 1), cv::Vec3b(14, 15, 16));

    auto const packed = PackedFrame::createRaw(P::YCBCR_ITU_T871_9ZT_420_U8(), 4, 2, rawData(40, 28));
    EXPECT_EQ(packed->image().rows, 2);
    EXPECT_EQ(packed->image().ptr(1)[0], 34);
    EXPECT_EQ(packed->rows(), 4);
}

TEST(RawFrames, MustFitExactly) {
    struct {
        std::function<void()> make;
        const char* message;
    } const cases[] = {
        {[] { FullFrame::createRaw(F::RGB_U8(), 2, 2, rawData(11)); },
         "Expecting input data byte count 12, got 11"},
        {[] { FullFrame::createRaw(F::BGRA_F32(), 100000, 100000, rawData(16)); },
         "Expecting input data byte count 160000000000, got 16"},
        {[] { FullFrame::createRaw(F::RGB_U8(), -1, -1, rawData(3)); },
         "Frame size of -1 rows and -1 columns is negative"},
        {[] { FullFrame::createRaw(F::RGB_U8(), 2, 2, nullptr); }, "no rawFrameData"},
        {[] { PackedFrame::createRaw(P::RGB_DXT1_U8(), 4, 8, rawData(17)); },
         "Expecting input byte count 16 (1x2x8 matrix), got 17 bytes"},
        {[] { PackedFrame::createRaw(P::RGB_DXT1_U8(), 4, 8, nullptr); }, "no rawFrameData"},
        {[] { FullFrame(F::RGB_U8(), 2, 2).rawFrameData(); }, "ImageFrame does not contain any raw data"},
    };
    for (auto const& row : cases)
        EXPECT_EQ(messageOf(row.make), row.message);
}

TEST(Frames, ClonesAreIndependent) {
    FullFrame const full(F::RGB_U8(), cv::Mat(2, 2, CV_8UC3, cv::Scalar::all(7)), Origin::TopLeft);
    PackedFrame const packed(P::YCBCR_ITU_T871_YUYV_422_U8(), cv::Mat(2, 2, CV_8UC4, cv::Scalar::all(7)),
                             Origin::TopLeft);
    auto const fullRaw = FullFrame::createRaw(F::RGB_U8(), 2, 2, rawData(20, 5, 17));
    auto const packedRaw = PackedFrame::createRaw(P::YCBCR_ITU_T871_YUYV_422_U8(), 2, 4, rawData(44, 28));
    for (IImageFrame const* const frame :
         std::initializer_list<IImageFrame const*>{&full, &packed, fullRaw.get(), packedRaw.get()}) {
        auto const copy = frame->clone();
        EXPECT_EQ(copy->format(), frame->format());
        EXPECT_EQ(copy->rows(), frame->rows());
        EXPECT_EQ(copy->cols(), frame->cols());
        EXPECT_NE(copy->image().data, frame->image().data);
        EXPECT_EQ(cv::norm(copy->image(), frame->image(), cv::NORM_INF), 0);
        EXPECT_EQ(copy->containsRawFrameData(), frame->containsRawFrameData());
    }
    auto const copy = fullRaw->clone();
    EXPECT_EQ(copy->rawFrameData().pixelDataOffset().value, 5u);
    EXPECT_EQ(copy->rawFrameData().pixelDataEnd().value, 17u);
}

TEST(Frames, MoveWithTheirPixels) {
    auto raw = FullFrame::createRaw(F::RGB_U8(), 2, 2, rawData(12));
    FullFrame const moved(std::move(*raw));
    raw.reset();
    EXPECT_EQ(moved.image().at<cv::Vec3b>(1, 1), cv::Vec3b(9, 10, 11));
    EXPECT_TRUE(moved.containsRawFrameData());
}

} // namespace

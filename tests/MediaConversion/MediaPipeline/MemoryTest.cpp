#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/MemoryPool.h>
#include <MediaConversion/MediaPipeline/OpenCvMatAllocator.h>
#include <MediaConversion/MediaPipeline/RawFrameData.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

#include <thread>

using TestSupport::messageOf;
using HostPool = SelfPruningMemoryPool<HostMemoryResource, true>;
using Zentrel::ImageFrame;
using Zentrel::OpenCvMatAllocator;

namespace {

TEST(MemoryPool, HandsOutTheFirstIdleBufferThatIsLargeEnough) {
    HostPool pool(100), other(100);
    IMemoryResource* const hundred = pool.acquire(100);
    EXPECT_NE(pool.acquire(10), hundred) << "it is in use";
    pool.release(hundred);
    EXPECT_NO_THROW(pool.release(hundred)) << "releasing an idle resource again is accepted";
    EXPECT_NE(pool.acquire(101), hundred) << "it is too small";
    EXPECT_EQ(pool.acquire(100), hundred);
    EXPECT_EQ(pool.count(), 3u);
    EXPECT_EQ(messageOf([&] { pool.release(other.acquire(1)); }),
              "Cannot release memory resource that is not a member of this memory pool");
}

TEST(MemoryPool, FreesABufferInTheThirdAcquisitionInARowThatPassesItBy) {
    HostPool pool(3);
    IMemoryResource* const small = pool.acquire(10);
    for (int round = 0; round < 3; ++round) {
        pool.release(small);
        pool.acquire(1000);
        pool.acquire(1000);
        EXPECT_EQ(pool.acquire(10), small) << "use starts the count afresh";
    }
    pool.release(small);
    for (std::size_t const count : {8, 9, 9}) {
        pool.acquire(1000);
        EXPECT_EQ(pool.count(), count);
    }
}

TEST(MemoryAccess, CopiesOwnBytesAndMovesShareThem) {
    HostPool pool(1);
    auto first = std::make_unique<MemoryAccess>(pool, 8);
    first->data()[3] = 42;
    MemoryAccess const copy(*first);
    EXPECT_NE(copy.data(), first->data());
    EXPECT_EQ(copy.data()[3], 42);

    std::uint8_t* const buffer = first->data();
    auto second = std::make_unique<MemoryAccess>(std::move(*first));
    EXPECT_EQ(second->data(), buffer);
    first.reset(); // the moved-from holder releases as well
    EXPECT_EQ(MemoryAccess(pool, 8).data(), buffer);
    pool.acquire(1000); // frees the idle buffer
    EXPECT_NO_THROW(second.reset());
}

TEST(RawFrameData, ChecksWhereThePixelsLie) {
    HostPool pool(3);
    auto const dataFrom = [&](std::uint64_t offset, std::uint64_t end) {
        return RawFrameData(std::make_unique<MemoryAccess>(pool, 100), {offset}, {end});
    };
    struct {
        std::uint64_t offset, end, size;
    } const accepted[] = {{0, 0, 100}, {28, 0, 72}, {28, 60, 32}, {100, 0, 0}};
    for (auto const& [offset, end, size] : accepted) {
        RawFrameData const data = dataFrom(offset, end);
        EXPECT_EQ(data.pixelDataSize(), size);
        EXPECT_EQ(data.pixelData(), data.rawData().data() + offset);
    }
    EXPECT_EQ(messageOf([&] { dataFrom(101, 0); }), "Pixel data offset (101) exceeds data size (100)");
    EXPECT_EQ(messageOf([&] { dataFrom(50, 49); }), "Pixel data end (49) is before pixel data offset (50)");
    EXPECT_EQ(messageOf([&] { dataFrom(50, 101); }), "Pixel data end (101) exceeds data size (100)");
    EXPECT_EQ(messageOf([] { RawFrameData(nullptr, {0}, {0}); }), "Null data");
}

TEST(OpenCvMatAllocator, FollowsTheStepsThatItIsGiven) {
    OpenCvMatAllocator const allocator(std::make_shared<HostPool>(3));
    auto const allocate = [&](size_t* steps) {
        int const sizes[] = {4, 10};
        auto* const result = allocator.allocate(2, sizes, CV_16UC1, nullptr, steps, {}, cv::USAGE_DEFAULT);
        auto const size = result->size;
        allocator.deallocate(result);
        return size;
    };
    size_t automatic[] = {0x7fffffff, 0x7fffffff}, padded[] = {32, 2}, tooSmall[] = {19, 2};
    EXPECT_EQ(allocate(nullptr), 80u);
    EXPECT_EQ(allocate(automatic), 80u);
    EXPECT_THAT(automatic, testing::ElementsAre(20, 2));
    EXPECT_EQ(allocate(padded), 128u);
    EXPECT_THAT(messageOf<cv::Exception>([&] { allocate(tooSmall); }),
                testing::HasSubstr("total <= step[i]"));
}

TEST(OpenCvMatAllocator, GivesBackOnlyWhatItTookFromThePool) {
    auto const pool = std::make_shared<HostPool>(3);
    OpenCvMatAllocator allocator(pool);
    std::uint8_t memory[16];
    int const sizes[] = {4, 4};
    cv::UMatData* const data = allocator.allocate(2, sizes, CV_8UC1, memory, nullptr, {}, cv::USAGE_DEFAULT);
    EXPECT_EQ(data->data, memory);
    allocator.deallocate(data);
    EXPECT_EQ(pool->count(), 0u);
    EXPECT_EQ(messageOf<std::out_of_range>([&] { allocator.release(memory); }), "map::at");
    EXPECT_NO_THROW(allocator.deallocate(nullptr));

    cv::Mat matrix;
    matrix.allocator = &allocator;
    matrix.create(1, 1, CV_8U);
    EXPECT_THAT(messageOf<cv::Exception>([&] { allocator.deallocate(matrix.u); }),
                testing::HasSubstr("u->refcount == 0"));
}

/// Leaves OpenCV with its own allocator, as other tests expect it.
class ClassWidePool : public testing::Test {
protected:
    void TearDown() override { ImageFrame::setMemoryPool(nullptr); }
};

TEST_F(ClassWidePool, ServesAllMatricesOfAllThreads) {
    EXPECT_FALSE(ImageFrame::hasMemoryPool());
    EXPECT_EQ(messageOf([] { ImageFrame::memoryPool(); }),
              "ImageFrame has no memory pool - did you forget to set it?");
    ImageFrame::setMemoryPool(std::make_shared<HostPool>(100));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 200; ++i) {
                cv::Mat const matrix(8 + (i + t) % 5, 64, CV_8U, cv::Scalar(t));
                Zentrel::FullFrame const frame(Zentrel::FullFrameFormat::RGB_U8(), 4, 4);
                for (int sample = 0; sample < 8 * 64; ++sample)
                    ASSERT_EQ(matrix.data[sample], t) << "another thread writes to this matrix";
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_GE(ImageFrame::memoryPool()->count(), 2u);
    EXPECT_LE(ImageFrame::memoryPool()->count(), 8u + 5 * 4) << "buffers are used again";
}

// Freed after main, when static objects of the library may be gone already; the sanitizers see whether it
// goes well.
cv::Mat outlivesTheLibrary;

TEST_F(ClassWidePool, LivesUntilItsLastMatrixIsGone) {
    auto first = std::make_shared<HostPool>(3);
    std::weak_ptr<HostPool> const watched = first;
    ImageFrame::setMemoryPool(std::move(first));
    cv::Mat early(100, 100, CV_8U, cv::Scalar(7));

    ImageFrame::setMemoryPool(std::make_shared<HostPool>(3));
    outlivesTheLibrary.create(10, 10, CV_8U);
    EXPECT_EQ(ImageFrame::memoryPool()->count(), 1u);
    ASSERT_FALSE(watched.expired()) << "a matrix still lies in it";
    EXPECT_EQ(early.at<std::uint8_t>(99, 99), 7);
    early.release();
    EXPECT_TRUE(watched.expired());
}

} // namespace

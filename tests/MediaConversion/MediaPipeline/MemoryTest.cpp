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

/// A pool that has nothing to give, and tells when it dies.
struct EmptyPool final : IMemoryPool {
    IMemoryResource* acquire(std::uint64_t) override { return nullptr; }
    void release(IMemoryResource*) override { FAIL() << "nothing was handed out"; }
    std::size_t count() const override { return 0; }
};

TEST(MemoryPool, HandsOutTheFirstIdleBufferThatIsLargeEnough) {
    HostPool pool(100);
    IMemoryResource* const hundred = pool.acquire(100);
    EXPECT_EQ(hundred->bufferSize(), 100u);
    EXPECT_EQ(&hundred->parentPool(), &pool);
    EXPECT_NE(pool.acquire(10), hundred) << "it is in use";
    pool.release(hundred);
    EXPECT_NE(pool.acquire(101), hundred) << "it is too small";
    MemoryAccess const access(pool, 50);
    EXPECT_EQ(access.data(), hundred->buffer());
    EXPECT_EQ(access.dataSize(), 50u);
    EXPECT_EQ(pool.count(), 3u);
}

TEST(MemoryPool, FreesABufferInTheThirdAcquisitionThatPassesItBy) {
    HostPool pool(3);
    pool.release(pool.acquire(10));
    for (std::size_t others = 1; others <= 3; ++others) {
        pool.acquire(1000);
        EXPECT_EQ(pool.count(), others + (others < 3 ? 1 : 0));
    }
}

TEST(MemoryPool, UseStartsTheIdleCountAfresh) {
    HostPool pool(3);
    IMemoryResource* const small = pool.acquire(10);
    for (int round = 0; round < 5; ++round) {
        pool.release(small);
        pool.acquire(1000);
        pool.acquire(1000);
        EXPECT_EQ(pool.acquire(10), small);
    }
}

TEST(MemoryPool, RefusesWhatIsNotItsOwn) {
    HostPool pool(3), other(3);
    EXPECT_EQ(messageOf([&] { pool.release(other.acquire(1)); }),
              "Cannot release memory resource that is not a member of this memory pool");
    IMemoryResource* const resource = pool.acquire(1);
    pool.release(resource);
    EXPECT_NO_THROW(pool.release(resource)) << "releasing an idle resource again is accepted";
}

TEST(MemoryAccess, CopiesOwnBytesAndMovesShareThem) {
    HostPool pool(3);
    MemoryAccess source(pool, 4);
    source.data()[3] = 42;

    MemoryAccess const copy(source);
    EXPECT_NE(copy.data(), source.data());
    EXPECT_EQ(copy.data()[3], 42);

    auto first = std::make_unique<MemoryAccess>(pool, 8);
    std::uint8_t* const buffer = first->data();
    auto const second = std::make_unique<MemoryAccess>(std::move(*first));
    EXPECT_EQ(second->data(), buffer);
    first.reset(); // the moved-from holder releases as well
    EXPECT_EQ(MemoryAccess(pool, 8).data(), buffer);
}

TEST(MemoryAccess, SurvivesTheReleaseOfABufferThatThePoolHasFreed) {
    HostPool pool(1);
    auto first = std::make_unique<MemoryAccess>(pool, 8);
    auto second = std::make_unique<MemoryAccess>(std::move(*first));
    first.reset();
    pool.acquire(1000); // frees the idle buffer
    EXPECT_NO_THROW(second.reset());
}

TEST(MemoryAccess, SaysWhatItCouldNotGet) {
    EmptyPool pool;
    EXPECT_EQ(messageOf([&] { MemoryAccess(pool, 123); }), "Could not acquire memory resource of size 123");
}

TEST(RawFrameData, ChecksWhereThePixelsLie) {
    HostPool pool(3);
    struct {
        std::uint64_t offset, end;
        const char* message; // null: accepted
        std::uint64_t size;
    } const cases[] = {
        {0, 0, nullptr, 100},
        {28, 0, nullptr, 72},
        {28, 60, nullptr, 32},
        {100, 0, nullptr, 0},
        {101, 0, "Pixel data offset (101) exceeds data size (100)", 0},
        {50, 49, "Pixel data end (49) is before pixel data offset (50)", 0},
        {50, 101, "Pixel data end (101) exceeds data size (100)", 0},
    };
    for (auto const& [offset, end, message, size] : cases) {
        auto const make = [&, o = offset, e = end] {
            return RawFrameData(std::make_unique<MemoryAccess>(pool, 100), {o}, {e});
        };
        if (message)
            EXPECT_EQ(messageOf(make), message);
        else {
            RawFrameData const data = make();
            EXPECT_EQ(data.pixelDataSize(), size);
            EXPECT_EQ(data.pixelData(), data.rawData().data() + offset);
        }
    }
    EXPECT_EQ(messageOf([] { RawFrameData(nullptr, {0}, {0}); }), "Null data");
}

cv::Mat matrixFrom(OpenCvMatAllocator& allocator, int rows, int columns, int type) {
    cv::Mat matrix;
    matrix.allocator = &allocator;
    matrix.create(rows, columns, type);
    return matrix;
}

TEST(OpenCvMatAllocator, TakesMatricesFromThePoolAndGivesThemBack) {
    auto const pool = std::make_shared<HostPool>(3);
    OpenCvMatAllocator allocator(pool);
    std::uint8_t* pixels = nullptr;
    for (int round = 0; round < 3; ++round) {
        cv::Mat const matrix = matrixFrom(allocator, 10, 20, CV_16UC3);
        EXPECT_EQ(matrix.u->size, 10u * 20u * 6u);
        EXPECT_EQ(pixels ? pixels : matrix.data, matrix.data) << "the same buffer every time";
        pixels = matrix.data;
    }
    EXPECT_EQ(pool->count(), 1u);
}

TEST(OpenCvMatAllocator, FollowsTheStepsThatItIsGiven) {
    OpenCvMatAllocator allocator(std::make_shared<HostPool>(3));
    int const sizes[] = {4, 10};
    auto const allocate = [&](size_t* steps, void* data = nullptr) {
        auto* const result = allocator.allocate(2, sizes, CV_16UC1, data, steps, {}, cv::USAGE_DEFAULT);
        auto const size = result->size;
        allocator.deallocate(result);
        return size;
    };
    size_t automatic[] = {0x7fffffff, 0x7fffffff};
    size_t padded[] = {32, 2};
    size_t tooSmall[] = {19, 2};
    EXPECT_EQ(allocate(nullptr), 80u);
    EXPECT_EQ(allocate(automatic), 80u);
    EXPECT_EQ(automatic[0], 20u);
    EXPECT_EQ(automatic[1], 2u);
    EXPECT_EQ(allocate(padded), 128u);
    EXPECT_THAT(messageOf<cv::Exception>([&] { allocate(tooSmall); }),
                testing::HasSubstr("total <= step[i]"));
}

TEST(OpenCvMatAllocator, LeavesTheCallersMemoryToTheCaller) {
    auto const pool = std::make_shared<HostPool>(3);
    OpenCvMatAllocator allocator(pool);
    std::uint8_t memory[16];
    int const sizes[] = {4, 4};
    cv::UMatData* const data = allocator.allocate(2, sizes, CV_8UC1, memory, nullptr, {}, cv::USAGE_DEFAULT);
    EXPECT_EQ(data->data, memory);
    EXPECT_EQ(data->origdata, memory);
    EXPECT_EQ(data->flags & 32, 32);
    allocator.deallocate(data);
    EXPECT_EQ(pool->count(), 0u);
    EXPECT_FALSE(allocator.allocate(data, {}, cv::USAGE_DEFAULT)) << "there is no device memory";
}

TEST(OpenCvMatAllocator, RefusesWhatItCannotTakeBack) {
    OpenCvMatAllocator allocator(std::make_shared<HostPool>(3));
    std::uint8_t stranger = 0;
    EXPECT_EQ(messageOf<std::out_of_range>([&] { allocator.release(&stranger); }), "map::at");
    EXPECT_NO_THROW(allocator.deallocate(nullptr));

    cv::Mat const matrix = matrixFrom(allocator, 1, 1, CV_8U);
    EXPECT_THAT(messageOf<cv::Exception>([&] { allocator.deallocate(matrix.u); }),
                testing::HasSubstr("u->refcount == 0"));
}

TEST(OpenCvMatAllocator, PassesOnThatThePoolHasNothing) {
    OpenCvMatAllocator allocator(std::make_shared<EmptyPool>());
    EXPECT_EQ(allocator.acquire(10), nullptr);
    int const sizes[] = {4, 4};
    cv::UMatData* const data = allocator.allocate(2, sizes, CV_8UC1, nullptr, nullptr, {}, cv::USAGE_DEFAULT);
    EXPECT_EQ(data->data, nullptr);
    allocator.deallocate(data);
}

TEST(OpenCvMatAllocator, ServesManyThreads) {
    auto const pool = std::make_shared<HostPool>(3);
    OpenCvMatAllocator allocator(pool);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&allocator, t] {
            for (int i = 0; i < 200; ++i) {
                cv::Mat matrix = matrixFrom(allocator, 8 + (i + t) % 5, 64, CV_8UC1);
                matrix.setTo(t);
                ASSERT_EQ(cv::countNonZero(matrix != t), 0) << "another thread writes to this matrix";
            }
        });
    for (auto& thread : threads)
        thread.join();
}

/// Leaves OpenCV with its own allocator, as other tests expect it.
class ClassWidePool : public testing::Test {
protected:
    void TearDown() override { ImageFrame::setMemoryPool(nullptr); }
};

TEST_F(ClassWidePool, ServesAllMatrices) {
    EXPECT_FALSE(ImageFrame::hasMemoryPool());
    EXPECT_EQ(messageOf([] { ImageFrame::memoryPool(); }),
              "ImageFrame has no memory pool - did you forget to set it?");

    auto const pool = std::make_shared<HostPool>(3);
    ImageFrame::setMemoryPool(pool);
    EXPECT_TRUE(ImageFrame::hasMemoryPool());
    EXPECT_EQ(ImageFrame::memoryPool(), pool);
    Zentrel::FullFrame const frame(Zentrel::FullFrameFormat::RGB_U8(), 4, 4);
    cv::Mat const matrix(4, 4, CV_8U);
    EXPECT_EQ(pool->count(), 2u);
}

TEST_F(ClassWidePool, LivesUntilItsLastMatrixIsGone) {
    auto first = std::make_shared<HostPool>(3);
    std::weak_ptr<HostPool> const watched = first;
    ImageFrame::setMemoryPool(std::move(first));
    cv::Mat early(100, 100, CV_8U, cv::Scalar(7));

    ImageFrame::setMemoryPool(std::make_shared<HostPool>(3));
    ASSERT_FALSE(watched.expired()) << "a matrix still lies in it";
    EXPECT_EQ(cv::countNonZero(early != 7), 0);
    early.release();
    EXPECT_TRUE(watched.expired());
}

// Freed after main, when static objects of the library may be gone already; the sanitizers see whether it
// goes well.
cv::Mat outlivesTheLibrary;

TEST_F(ClassWidePool, SurvivesMatricesInStaticObjects) {
    ImageFrame::setMemoryPool(std::make_shared<HostPool>(3));
    outlivesTheLibrary.create(10, 10, CV_8U);
    EXPECT_EQ(ImageFrame::memoryPool()->count(), 1u);
}

} // namespace

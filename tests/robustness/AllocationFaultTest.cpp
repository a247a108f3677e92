// Every allocation on a frame's road fails once: the frame fails cleanly, nothing is lost of the memory, and
// the next frame is right again.
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/MemoryPool.h>
#include <host/EmbeddedHost.h>
#include <plugin/OutputFormats.h>
#include <tests/Conversion.h>
#include <tests/MediaFile.h>
#include <tests/host/TestPicture.h>

#include <opencv2/core/utility.hpp>

#include <cstddef>
#include <cstdlib>
#include <new>

using namespace testing;
using namespace TestSupport;

namespace {

/// Of this thread: what is still allocated, how many allocations there will be before one fails, and whether
/// those behind it fail too.
thread_local long balance = 0;
thread_local long allocationsLeft = -1;
thread_local bool failsForGood = false;

void* allocate(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    if (allocationsLeft == 0 && failsForGood)
        throw std::bad_alloc();
    if (allocationsLeft > 0 && --allocationsLeft == 0)
        throw std::bad_alloc();
    void* const memory = std::aligned_alloc(alignment, (size / alignment + 1) * alignment);
    if (!memory)
        throw std::bad_alloc();
    ++balance;
    return memory;
}

void release(void* memory) {
    if (memory)
        --balance;
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

namespace {

class AllocationFaultTest : public TestWithParam<bool> {
protected:
    AllocationFaultTest() { cv::setNumThreads(1); }
    ~AllocationFaultTest() override { cv::setNumThreads(-1); }

    /// Runs `road`, which writes `file`, with its first allocation failing, then the second, up to the last.
    template <class Road>
    void failEachAllocationOf(Road road) {
        const auto settle = [&] { // the pool lets go of what is no longer used
            for (int i = 0; i < 8; ++i)
                road();
            return balance;
        };
        road();
        const auto whole = bytesOf(file);
        const long before = settle();
        long number = 0;
        for (bool struck = true; struck && !HasFailure(); road()) {
            failsForGood = GetParam();
            allocationsLeft = ++number;
            bool succeeded = false;
            try {
                road();
                succeeded = true;
            } catch (const std::exception&) {
            }
            struck = std::exchange(allocationsLeft, -1) == 0;
            failsForGood = false;
            if (succeeded || !struck) {
                EXPECT_EQ(bytesOf(file), whole) << "allocation " << number << " failed unnoticed";
            }
        }
        EXPECT_GT(number, 20);
        EXPECT_EQ(bytesOf(file), whole);
        EXPECT_EQ(settle(), before) << "allocations were lost";
    }

    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "f.zet";
};

TEST_P(AllocationFaultTest, FailsTheFrameInTheLibrary) {
    const auto pool = std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(3);
    Zentrel::ImageFrame::setMemoryPool(pool);
    for (const OutputFormat& output : outputFormats) {
        SCOPED_TRACE(output.label);
        std::size_t buffers = 0;
        failEachAllocationOf([&] {
            auto const input = Zentrel::FullFrameFormat::BGRA_F32();
            auto frame = Zentrel::FullFrame::create(input, 4, 8);
            frame->image().setTo(0.25);
            writeMediaFile(file, encoded(std::move(frame), output.format()));
            buffers = std::max(buffers, pool->count());
        });
        EXPECT_LE(buffers, 8u);
    }
    Zentrel::ImageFrame::setMemoryPool(nullptr);
}

TEST_P(AllocationFaultTest, FailsTheFrameInThePlugIn) {
    EmbeddedHost::loadPlugin(ZET_PLUGIN_FILE);
    EmbeddedHost::WriteNode node("zet");
    TestPicture picture(8, 4, true, [](auto, int x, int y) { return 0.1f * static_cast<float>(x - y); });
    for (const OutputFormat& output : outputFormats) {
        SCOPED_TRACE(output.label);
        node.setMenu("Output format", output.label);
        failEachAllocationOf([&] {
            if (!node.render(picture, file).succeeded())
                throw std::runtime_error("reported");
        });
    }
}

INSTANTIATE_TEST_SUITE_P(, AllocationFaultTest, Values(false, true),
                         [](const auto& which) { return which.param ? "AndAllBehindIt" : "Alone"; });

} // namespace

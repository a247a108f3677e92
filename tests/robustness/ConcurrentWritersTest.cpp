// Several writers at once over one pool, as a render farm's node or a threaded host has them.
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/MemoryPool.h>
#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>
#include <plugin/OutputFormats.h>
#include <tests/Conversion.h>
#include <tests/MediaFile.h>

#include <opencv2/core.hpp>

#include <map>
#include <thread>

using namespace testing;
using namespace TestSupport;

namespace {

constexpr unsigned writers = 8;
constexpr unsigned framesEach = 27; // each format in three sizes

/// The frame of this number, written and read back; its format and size follow from the number.
Bytes fileOf(unsigned number, const std::filesystem::path& path) {
    using F = Zentrel::FullFrameFormat;
    const OutputFormat& output = outputFormats[number % outputFormats.size()];
    const int rows = 4 * (3 + static_cast<int>(number / outputFormats.size() % 3)), columns = rows * 3;
    auto frame = Zentrel::FullFrame::create(F::BGRA_F32(), rows, columns);
    cv::Mat image = frame->image();
    cv::RNG(number).fill(image, cv::RNG::UNIFORM, 0, 1);

    writeMediaFile(path, encoded(std::move(frame), output.format()));
    MediaConversion::FileStreamFactory files;
    const auto read = MediaConversion::ZentrelMediaFileReader(files).readFrame(path);
    const MemoryAccess& whole = read->rawFrameData().rawData();
    return {whole.data(), whole.data() + whole.dataSize()};
}

TEST(ConcurrentWriters, WriteWhatOneAloneWrites) {
    const TemporaryFolder folder;
    std::map<unsigned, Bytes> expected;
    for (unsigned number = 0; number < framesEach; ++number)
        expected[number] = fileOf(number, folder / "alone.zet");

    for (const int threads : {1, 4}) { // of OpenCV, which all writers share
        const auto pool = std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(3);
        Zentrel::ImageFrame::setMemoryPool(pool);
        cv::setNumThreads(threads);
        std::vector<std::thread> running;
        for (unsigned writer = 0; writer < writers; ++writer)
            running.emplace_back([&, writer] {
                for (unsigned i = 0; i < framesEach; ++i) {
                    const unsigned number = (i + 5 * writer) % framesEach;
                    EXPECT_EQ(fileOf(number, folder / std::to_string(writer)), expected[number]) << number;
                }
            });
        for (std::thread& one : running)
            one.join();
        EXPECT_LE(pool->count(), 3 * writers + 4) << "at most three buffers a road, and those not yet pruned";
    }
    cv::setNumThreads(-1);
    Zentrel::ImageFrame::setMemoryPool(nullptr);
}

} // namespace

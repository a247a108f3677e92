// How long a conversion of a float BGRA frame takes, as a multiple of a pass that only reads the same frame
// and writes as many bytes as the conversion does. Both run alternately, and the best time of each counts:
// what else the machine does slows both down.
#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/InstructionSet.h>
#include <MediaConversion/converters/ParallelRows.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <random>
#include <string>

using namespace MediaConversion;
using namespace Zentrel;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

constexpr int rows = 2160, columns = 3840;

cv::Mat noise() {
    cv::Mat picture(rows, columns, CV_32FC4);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> sample(0, 1);
    std::generate_n(picture.ptr<float>(), picture.total() * picture.channels(),
                    [&] { return sample(random); });
    return picture;
}

#if defined(__x86_64__)
#define FOR_WIDEST_VECTORS __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define FOR_WIDEST_VECTORS
#endif

FOR_WIDEST_VECTORS std::uint64_t bitsOf(std::uint64_t const* samples, std::size_t count) {
    std::uint64_t bits[32] = {};
    for (std::size_t i = 0; i + 32 <= count; i += 32)
        for (std::size_t k = 0; k < 32; ++k)
            bits[k] |= samples[i + k];
    return std::accumulate(std::begin(bits), std::end(bits), std::uint64_t{0}, std::bit_or<>());
}

/// Reads the whole picture and writes all of `output`.
void stream(cv::Mat const& picture, cv::Mat& output) {
    parallelRows(rows, [&](int row) {
        auto const bits = bitsOf(reinterpret_cast<std::uint64_t const*>(picture.ptr(row)),
                                 picture.step[0] / sizeof(std::uint64_t));
        std::size_t const bytes = output.total() * output.elemSize(), begin = bytes * row / rows;
        std::memset(output.data + begin, static_cast<int>(bits & 1), bytes * (row + 1) / rows - begin);
    });
}

template <class Action>
double secondsOf(Action const& action) {
    auto const start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Frames of one conversion after another, with pooled memory.
void convert(benchmark::State& state, cv::Mat const& picture, FrameFormat const& destination,
             InstructionSet set, int threads) {
    useInstructionSet(set);
    cv::setNumThreads(threads);
    FrameSinkDestination sink;
    Encoder encoder(F::BGRA_F32(), destination);
    encoder.connect(&sink);
    encoder.start();
    double best = std::numeric_limits<double>::max(), bestStream = best;
    for (auto _ : state) {
        auto frame = std::make_unique<FullFrame>(F::BGRA_F32(), picture, Frame::Origin::TopLeft);
        double const seconds = secondsOf([&] { encoder.encodeFrame(std::move(frame)); });
        cv::Mat output = dynamic_cast<IImageFrame&>(*sink.frame()).image();
        bestStream = std::min(bestStream, secondsOf([&] { stream(picture, output); }));
        best = std::min(best, seconds);
        state.SetIterationTime(seconds);
    }
    encoder.stop();
    state.counters["ratio"] = best / bestStream;
    state.counters["stream_ms"] = bestStream * 1e3;
    state.counters["best_ms"] = best * 1e3;
    state.counters["MP/s"] = rows * columns / best / 1e6;
}

void registerAll(cv::Mat const& picture) {
    for (auto const set : availableInstructionSets())
        for (int const threads : {1, 2})
            for (auto const& destination :
                 {P::RGB_DPX_FILLED_U10(), P::RGB_SMPTE_2110_U12(), P::YCBCR_ITU_T871_YUYV_422_U8(),
                  P::YCBCR_ITU_T871_9ZT_422_U10(), P::YCBCR_ITU_T871_9ZT_420_U8(),
                  P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), P::YCOCG_DXT5_U8(), F::BGRA_U8(), F::BGR_U8(),
                  F::RGBA_U8()})
                benchmark::RegisterBenchmark((FrameFormat::toString(destination) + "/" + toString(set) +
                                              "/threads:" + std::to_string(threads))
                                                 .c_str(),
                                             [&picture, destination, set, threads](benchmark::State& state) {
                                                 convert(state, picture, destination, set, threads);
                                             })
                    ->UseManualTime()
                    ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    ImageFrame::setMemoryPool(std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(3));
    cv::Mat const picture = noise();
    benchmark::Initialize(&argc, argv);
    registerAll(picture);
    benchmark::RunSpecifiedBenchmarks();
}

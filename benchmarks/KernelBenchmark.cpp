// How long a conversion of a frame takes, as a multiple of a pass that only reads the same frame and writes
// as many bytes as the conversion does. Both run alternately, and the best time of each counts: what else the
// machine does slows both down.
#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/ImageToFullFrame.h>
#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>
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

/// Reads the whole input and writes all of `output`.
void stream(cv::Mat const& input, cv::Mat& output) {
    parallelRows(rows, [&](int row) {
        auto const begin = [row](cv::Mat const& matrix, int rowsOn = 0) {
            return matrix.data + matrix.total() * matrix.elemSize() * (row + rowsOn) / rows;
        };
        auto const bits = bitsOf(reinterpret_cast<std::uint64_t const*>(begin(input)),
                                 (begin(input, 1) - begin(input)) / sizeof(std::uint64_t));
        std::memset(begin(output), static_cast<int>(bits & 1), begin(output, 1) - begin(output));
    });
}

template <class Action>
double secondsOf(Action const& action) {
    auto const start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Conversions one after another, with pooled memory; `convert()` gives the output.
template <class Convert>
void measure(benchmark::State& state, cv::Mat const& input, Convert const& convert) {
    double best = std::numeric_limits<double>::max(), bestStream = best;
    for (auto _ : state) {
        cv::Mat output;
        double const seconds = secondsOf([&] { output = convert(); });
        bestStream = std::min(bestStream, secondsOf([&] { stream(input, output); }));
        best = std::min(best, seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["ratio"] = best / bestStream;
    state.counters["stream_ms"] = bestStream * 1e3;
    state.counters["best_ms"] = best * 1e3;
    state.counters["MP/s"] = rows * columns / best / 1e6;
}

void encode(benchmark::State& state, cv::Mat const& picture, FrameFormat const& destination) {
    FrameSinkDestination sink;
    Encoder encoder(F::BGRA_F32(), destination);
    encoder.connect(&sink);
    encoder.start();
    measure(state, picture, [&] {
        encoder.encodeFrame(std::make_unique<FullFrame>(F::BGRA_F32(), picture, Frame::Origin::TopLeft));
        return dynamic_cast<IImageFrame&>(*sink.frame()).image();
    });
    encoder.stop();
}

/// Any bytes are a packed frame.
void decode(benchmark::State& state, cv::Mat const& bytes, FrameFormat const& source,
            FrameFormat const& destination, ImageToFullFrame::Conversion const& conversion) {
    cv::Mat const blocks(PackedFrame::packedRows(source, rows), PackedFrame::packedColumns(source, columns),
                         PackedFrame::openCvTypes.at(source), bytes.data);
    PackedFrame const frame(source, blocks, Frame::Origin::TopLeft);
    measure(state, blocks, [&] { return conversion(frame, destination).image(); });
}

template <class Action>
void registerFor(std::string const& name, Action const& action) {
    for (auto const set : availableInstructionSets())
        for (int const threads : {1, 2})
            benchmark::RegisterBenchmark(
                (name + "/" + toString(set) + "/threads:" + std::to_string(threads)).c_str(),
                [=](benchmark::State& state) {
                    useInstructionSet(set);
                    cv::setNumThreads(threads);
                    action(state);
                })
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
}

template <class Processor>
void registerDecoders(cv::Mat const& bytes) {
    for (auto const& [formats, conversion] : Processor::conversions()) {
        auto const& [source, destination] = formats;
        registerFor(FrameFormat::toString(source) + "/" + FrameFormat::toString(destination),
                    [&, source = source, destination = destination, conversion = conversion](
                        benchmark::State& state) { decode(state, bytes, source, destination, conversion); });
    }
}

void registerAll(cv::Mat const& picture, cv::Mat const& bytes) {
    for (auto const& destination : {P::RGB_DPX_FILLED_U10(), P::RGB_SMPTE_2110_U12(),
                                    P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10(),
                                    P::YCBCR_ITU_T871_9ZT_420_U8(), P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(),
                                    P::YCOCG_DXT5_U8(), F::BGRA_U8(), F::BGR_U8(), F::RGBA_U8()})
        registerFor(FrameFormat::toString(destination), [&picture, destination](benchmark::State& state) {
            encode(state, picture, destination);
        });
    registerDecoders<ImageToFullFrame>(bytes);
    registerDecoders<ImageYCbCr42xToRGB>(bytes);
    registerDecoders<ImageYCoCgDXT5toRGB>(bytes);
}

} // namespace

int main(int argc, char** argv) {
    ImageFrame::setMemoryPool(std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(3));
    cv::Mat const picture = noise();
    cv::Mat bytes(rows, columns, CV_8UC(5)); // as many as the largest packed frame has
    cv::randu(bytes, 0, 256);
    benchmark::Initialize(&argc, argv);
    registerAll(picture, bytes);
    benchmark::RunSpecifiedBenchmarks();
}

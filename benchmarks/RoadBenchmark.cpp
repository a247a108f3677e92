// How long a frame takes on its whole road through the embedded host, from a picture in memory to a file, as
// a multiple of what cannot be spared: handing the rows over, a pass over the bytes, and writing the file.
// All are taken by turns; the ratio is the median of the rounds'.
#include "StreamingPass.h"

#include <MediaConversion/MediaPipeline/ImageFrame.h>
#include <MediaConversion/MediaPipeline/MemoryPool.h>
#include <host/EmbeddedHost.h>
#include <plugin/OutputFormats.h>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Benchmarks;

constexpr int rows = 2160, columns = 3840, channels = 4;

/// The picture as hosts keep theirs: each row a run of samples for each channel.
class MemoryPicture final : public EmbeddedHost::PictureSource {
public:
    explicit MemoryPicture(cv::Mat const& pixels) : samples(pixels.reshape(1)) {}

    int width() const override { return columns; }
    int height() const override { return rows; }
    bool hasAlpha() const override { return true; }
    void readRow(int y, int x, int r, EmbeddedHost::PictureChannel channel, float* to) override {
        auto const* const first = samples.ptr<float>(rows - 1 - y) + static_cast<int>(channel) * columns;
        std::copy(first + x, first + r, to);
    }

private:
    cv::Mat samples;
};

/// Rows of four channels into a frame of pixels, each channel on its own, as hosts hand them over.
void takeRows(EmbeddedHost::PictureSource& picture, cv::Mat& frame) {
    using Channel = EmbeddedHost::PictureChannel;
    constexpr Channel order[channels] = {Channel::Blue, Channel::Green, Channel::Red, Channel::Alpha};
    std::vector<float> samples(columns);
    for (int row = 0; row < rows; ++row)
        for (int place = 0; place < channels; ++place) {
            picture.readRow(rows - 1 - row, 0, columns, order[place], samples.data());
            float* const pixels = frame.ptr<float>(row) + place;
            for (int x = 0; x < columns; ++x)
                pixels[x * channels] = samples[x];
        }
}

void writeBytes(std::filesystem::path const& file, cv::Mat const& output) {
    std::ofstream(file, std::ios::binary)
        .write(output.ptr<char>(), static_cast<std::streamsize>(output.total() * output.elemSize()));
}

long pageFaults() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

void render(EmbeddedHost::WriteNode& node, EmbeddedHost::PictureSource& picture,
            std::filesystem::path const& file) {
    auto const result = node.render(picture, file);
    if (!result.succeeded())
        throw std::runtime_error(result.criticalErrors.front());
}

/// Memory of the same kind as the road's, but no part of it: taken before a writer brings its own pool.
struct Memory {
    cv::Mat const pixels = noise(rows, columns);
    cv::Mat frame = pixels.clone();
    cv::Mat file = cv::Mat::zeros(1, rows* columns * 5, CV_8U);
};

void road(benchmark::State& state, Memory& memory, OutputFormat const& output, int threads) {
    cv::setNumThreads(threads);
    auto const folder = std::filesystem::temp_directory_path();
    auto const file = folder / "road.zet", plain = folder / "road.bytes";
    MemoryPicture picture(memory.pixels);
    EmbeddedHost::WriteNode node("zet");
    node.setMenu("Output format", output.label);

    constexpr int warming = 3; // the frames after which no memory is fresh any more
    for (int frame = 0; frame < warming; ++frame)
        render(node, picture, file);
    auto bytes = memory.file.colRange(0, static_cast<int>(std::filesystem::file_size(file)));

    constexpr double never = std::numeric_limits<double>::max();
    double best = never, rowsIn = never, streaming = never, writing = never;
    std::vector<double> ratios;
    long faults = 0;
    for (auto _ : state) {
        long const before = pageFaults();
        double const seconds = secondsOf([&] { render(node, picture, file); });
        faults = std::max(faults, pageFaults() - before);
        double const needed[] = {secondsOf([&] { takeRows(picture, memory.frame); }),
                                 secondsOf([&] { stream(memory.frame, bytes); }),
                                 secondsOf([&] { writeBytes(plain, bytes); })};
        ratios.push_back(seconds / std::accumulate(std::begin(needed), std::end(needed), 0.0));
        rowsIn = std::min(rowsIn, needed[0]);
        streaming = std::min(streaming, needed[1]);
        writing = std::min(writing, needed[2]);
        best = std::min(best, seconds);
        state.SetIterationTime(seconds);
    }
    std::filesystem::remove(file);
    std::filesystem::remove(plain);
    state.counters["ratio"] = median(ratios);
    state.counters["rows_ms"] = rowsIn * 1e3;
    state.counters["stream_ms"] = streaming * 1e3;
    state.counters["write_ms"] = writing * 1e3;
    state.counters["best_ms"] = best * 1e3;
    state.counters["faults"] = static_cast<double>(faults); // of the worst frame; a fresh picture has 32400
    state.counters["MP/s"] = rows * columns / best / 1e6;
}

void registerAll(Memory& memory) {
    for (int const threads : {1, 2})
        for (OutputFormat const& output : outputFormats)
            benchmark::RegisterBenchmark(
                (std::string("road/") + output.shortName + "/threads:" + std::to_string(threads)).c_str(),
                [&memory, &output, threads](benchmark::State& state) {
                    road(state, memory, output, threads);
                })
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    EmbeddedHost::loadPlugin(ZET_PLUGIN);
    Zentrel::ImageFrame::setMemoryPool(std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(3));
    Memory memory;
    registerAll(memory);
    benchmark::RunSpecifiedBenchmarks();
}

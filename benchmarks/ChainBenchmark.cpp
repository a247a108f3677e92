// What the chain of each output costs for pictures from 720p to 8K: how cost grows with size and threads.
#include "StreamingPass.h"

#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/MemoryPool.h>
#include <plugin/OutputFormats.h>

#include <memory>
#include <string>

namespace {

using Zentrel::FullFrame;
using Zentrel::FullFrameFormat;

struct Size {
    const char* name;
    int rows, columns;
};
constexpr Size sizes[] = {
    {"720p", 720, 1280}, {"1080p", 1080, 1920}, {"2160p", 2160, 3840}, {"4320p", 4320, 7680}};

/// The pictures of one size after another.
cv::Mat const& pictureOf(Size const& size) {
    static cv::Mat picture;
    if (picture.rows != size.rows)
        picture = Benchmarks::noise(size.rows, size.columns);
    return picture;
}

void convert(benchmark::State& state, Size const& size, OutputFormat const& output, int threads) {
    cv::setNumThreads(threads);
    cv::Mat const& picture = pictureOf(size);
    FrameSinkDestination sink;
    MediaConversion::Encoder encoder(FullFrameFormat::BGRA_F32(), output.format());
    encoder.connect(&sink);
    encoder.start();
    std::unique_ptr<Zentrel::IFrame> converted;
    auto const once = [&] {
        converted.reset();
        encoder.encodeFrame(std::make_unique<FullFrame>(FullFrameFormat::BGRA_F32(), picture,
                                                        Zentrel::Frame::Origin::TopLeft));
        converted = sink.frame();
    };
    for (int warming = 0; warming < 3; ++warming)
        once();
    Benchmarks::compareWithStream(state, picture,
                                  dynamic_cast<Zentrel::IImageFrame&>(*converted).image().clone(),
                                  static_cast<double>(picture.total()), once);
    encoder.stop();
}

void registerAll() {
    for (Size const& size : sizes)
        for (OutputFormat const& output : outputFormats)
            for (int const threads : {1, 2})
                benchmark::RegisterBenchmark((std::string("chain/") + output.shortName + "/" + size.name +
                                              "/threads:" + std::to_string(threads))
                                                 .c_str(),
                                             [&size, &output, threads](benchmark::State& state) {
                                                 convert(state, size, output, threads);
                                             })
                    ->UseManualTime()
                    ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    Zentrel::ImageFrame::setMemoryPool(std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(3));
    benchmark::Initialize(&argc, argv);
    registerAll();
    benchmark::RunSpecifiedBenchmarks();
}

// How long a conversion of a frame takes, as a multiple of a pass that only reads the same frame and writes
// as many bytes as the conversion does.
#include "StreamingPass.h"

#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>
#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>
#include <MediaConversion/converters/ImageToFullFrame.h>
#include <MediaConversion/converters/ImageToPackedFrame.h>
#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>
#include <MediaConversion/converters/InstructionSet.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace MediaConversion;
using namespace Zentrel;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

constexpr int rows = 2160, columns = 3840;
/// How often each conversion is timed.
constexpr int rounds = 20;
constexpr double pixels = double{rows} * columns;

enum class Picture { Noise, Neutral };

/// The matrix of a frame: random samples within their depth, or all channels of a pixel equal.
cv::Mat matrixOf(FrameFormat const& format, Picture picture) {
    if (!FullFrame::is(format)) { // of which any bytes are a frame
        cv::Mat const blocks(PackedFrame::packedRows(format, rows),
                             PackedFrame::packedColumns(format, columns),
                             PackedFrame::openCvTypes.at(format));
        cv::Mat bytes(blocks.rows, blocks.cols, CV_8UC(static_cast<int>(blocks.elemSize())), blocks.data);
        cv::randu(bytes, 0, 256);
        return blocks;
    }
    constexpr double aboveRange[] = {256, 1024, 4096, 32769, 65536, 1};
    cv::Mat matrix(rows, columns, FullFrame::openCvTypes.at(format));
    cv::randu(matrix, cv::Scalar::all(0), cv::Scalar::all(aboveRange[static_cast<int>(format.channelType)]));
    if (picture == Picture::Neutral) {
        cv::Mat grey;
        cv::extractChannel(matrix, grey, 0);
        cv::merge(std::vector<cv::Mat>(matrix.channels(), grey), matrix);
    }
    return matrix;
}

/// The same, made once for measurements that follow one another.
cv::Mat const& inputOf(FrameFormat const& format, Picture picture) {
    static std::optional<std::pair<FrameFormat, Picture>> made;
    static cv::Mat input;
    if (made != std::pair(format, picture)) {
        input = matrixOf(format, picture);
        made.emplace(format, picture);
    }
    return input;
}

std::unique_ptr<IImageFrame> frameOf(FrameFormat const& format, cv::Mat const& matrix) {
    if (FullFrame::is(format))
        return std::make_unique<FullFrame>(format, matrix, Frame::Origin::TopLeft);
    return std::make_unique<PackedFrame>(format, matrix, Frame::Origin::TopLeft);
}

/// Conversions one after another, with pooled memory; `convert()` gives the output.
template <class Convert>
void measure(benchmark::State& state, cv::Mat const& input, Convert const& convert) {
    Benchmarks::compareWithStream(state, input, convert().clone(), pixels, convert);
}

/// From one format to another as the Encoder does it, in one step or several.
void encode(benchmark::State& state, FrameFormat const& source, FrameFormat const& destination,
            Picture picture) {
    cv::Mat const matrix = inputOf(source, picture);
    FrameSinkDestination sink;
    Encoder encoder(source, destination);
    encoder.connect(&sink);
    encoder.start();
    measure(state, matrix, [&] {
        encoder.encodeFrame(frameOf(source, matrix));
        return dynamic_cast<IImageFrame&>(*sink.frame()).image();
    });
    encoder.stop();
}

/// On one thread, and from floats, which matter most, also on two.
template <class Action>
void registerFor(std::string const& name, FrameFormat const& source, Action const& action) {
    for (auto const set : availableInstructionSets())
        for (int threads = 1; threads <= (source.channelType == ChannelType::F32 ? 2 : 1); ++threads)
            benchmark::RegisterBenchmark(
                (name + "/" + toString(set) + "/threads:" + std::to_string(threads)).c_str(),
                [=](benchmark::State& state) {
                    useInstructionSet(set);
                    cv::setNumThreads(threads);
                    action(state);
                })
                ->Iterations(rounds)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
}

std::string nameOf(FrameFormat const& source, FrameFormat const& destination) {
    return FrameFormat::toString(source) + "/" + FrameFormat::toString(destination);
}

/// All rows of a processor's table.
template <class Processor, class Source>
void registerTable() {
    for (auto const& [formats, conversion] : Processor::conversions()) {
        auto const& [source, destination] = formats;
        registerFor(
            nameOf(source, destination), source,
            [source = source, destination = destination, conversion = conversion](benchmark::State& state) {
                cv::Mat const matrix = inputOf(source, Picture::Noise);
                Source const frame(source, matrix, Frame::Origin::TopLeft);
                measure(state, matrix, [&] { return conversion(frame, destination).image(); });
            });
    }
}

void registerAll() {
    for (auto const& destination : {P::YCOCG_DXT5_U8(), F::BGRA_U8(), F::BGR_U8(), F::RGBA_U8()})
        registerFor(nameOf(F::BGRA_F32(), destination), F::BGRA_F32(),
                    [destination](benchmark::State& state) {
                        encode(state, F::BGRA_F32(), destination, Picture::Noise);
                    });
    // Equal samples are where rounding is least certain.
    for (auto const& destination :
         {P::RGB_SMPTE_2110_U12(), P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10(),
          P::YCBCR_ITU_T871_9ZT_420_U8(), P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12()})
        registerFor(nameOf(F::BGRA_F32(), destination) + "/neutral", F::BGRA_F32(),
                    [destination](benchmark::State& state) {
                        encode(state, F::BGRA_F32(), destination, Picture::Neutral);
                    });
    registerTable<ImageToPackedFrame, FullFrame>();
    registerTable<ImageRGBtoYCbCr42x, FullFrame>();
    registerTable<ImageRGBtoYCoCgDXT5, FullFrame>();
    registerTable<ImageToFullFrame, PackedFrame>();
    registerTable<ImageYCbCr42xToRGB, PackedFrame>();
    registerTable<ImageYCoCgDXT5toRGB, PackedFrame>();
}

} // namespace

int main(int argc, char** argv) {
    ImageFrame::setMemoryPool(std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(3));
    benchmark::Initialize(&argc, argv);
    registerAll();
    benchmark::RunSpecifiedBenchmarks();
}

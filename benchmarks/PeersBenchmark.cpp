// The same measure for other converters: FFmpeg's libswscale and zimg from planar RGB floats, and FFmpeg's
// HAP Q encoder from 8-bit RGBA. Each is compared with a pass over the bytes that it reads and writes itself.
#include "StreamingPass.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}
#include <zimg.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int rows = 2160, columns = 3840;
constexpr double pixels = double{rows} * columns;
/// How often each one is timed: some take seconds.
constexpr int rounds = 10;

void require(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(std::string(what) + " failed");
}

/// Three planes of floats, one above the other, over which the streaming pass can go as over a picture.
cv::Mat planes() {
    static cv::Mat const samples =
        Benchmarks::noise(rows, columns).reshape(1, 4 * rows).rowRange(0, 3 * rows).clone();
    return samples.reshape(3, rows);
}

cv::Mat bytesFor(double perPixel) { return {1, static_cast<int>(perPixel * rows * columns), CV_8U}; }

void swscale(benchmark::State& state, AVPixelFormat format, double bytesPerPixel) {
    std::unique_ptr<SwsContext, void (*)(SwsContext*)> const context(
        sws_getContext(columns, rows, AV_PIX_FMT_GBRPF32, columns, rows, format, SWS_POINT, nullptr, nullptr,
                       nullptr),
        sws_freeContext);
    auto const freeFrame = [](AVFrame* frame) { av_frame_free(&frame); };
    std::unique_ptr<AVFrame, void (*)(AVFrame*)> const frame(av_frame_alloc(), freeFrame);
    frame->format = format;
    frame->width = columns;
    frame->height = rows;
    require(context && av_frame_get_buffer(frame.get(), 0) == 0, "libswscale");

    cv::Mat const picture = planes();
    int const step = columns * static_cast<int>(sizeof(float));
    int const steps[] = {step, step, step, 0};
    std::ptrdiff_t const plane = std::ptrdiff_t{step} * rows;
    std::uint8_t const* const from[] = {picture.data, picture.data + plane, picture.data + 2 * plane,
                                        nullptr};
    Benchmarks::compareWithStream(state, picture, bytesFor(bytesPerPixel), pixels, [&] {
        require(sws_scale(context.get(), from, steps, 0, rows, frame->data, frame->linesize) == rows,
                "libswscale");
    });
}

void zimg(benchmark::State& state, unsigned bits, unsigned verticalShift) {
    zimg_image_format from, to;
    zimg_image_format_default(&from, ZIMG_API_VERSION);
    from.width = columns;
    from.height = rows;
    to = from;
    from.pixel_type = ZIMG_PIXEL_FLOAT;
    from.color_family = ZIMG_COLOR_RGB;
    from.matrix_coefficients = ZIMG_MATRIX_RGB;
    from.pixel_range = ZIMG_RANGE_FULL;
    to.pixel_type = bits > 8 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
    to.depth = bits;
    to.color_family = ZIMG_COLOR_YUV;
    to.matrix_coefficients = ZIMG_MATRIX_BT470_BG;
    to.pixel_range = ZIMG_RANGE_FULL;
    to.subsample_w = 1;
    to.subsample_h = verticalShift;
    zimg_graph_builder_params nearest;
    zimg_graph_builder_params_default(&nearest, ZIMG_API_VERSION);
    nearest.resample_filter_uv = ZIMG_RESIZE_POINT;
    std::unique_ptr<zimg_filter_graph, void (*)(zimg_filter_graph*)> const graph(
        zimg_filter_graph_build(&from, &to, &nearest), zimg_filter_graph_free);
    require(graph != nullptr, "zimg");

    std::size_t scratchBytes = 0;
    zimg_filter_graph_get_tmp_size(graph.get(), &scratchBytes);
    cv::Mat const scratch(1, static_cast<int>(scratchBytes), CV_8U); // OpenCV aligns it to 64 bytes
    cv::Mat const picture = planes();
    unsigned const sampleBytes = bits > 8 ? 2 : 1;
    cv::Mat luma(rows, static_cast<int>(columns * sampleBytes), CV_8U);
    cv::Mat chroma[2];
    for (cv::Mat& plane : chroma)
        plane.create(rows >> verticalShift, luma.cols / 2, CV_8U);

    std::ptrdiff_t const step = columns * static_cast<std::ptrdiff_t>(sizeof(float));
    zimg_image_buffer_const in{ZIMG_API_VERSION, {}};
    zimg_image_buffer out{ZIMG_API_VERSION, {}};
    for (int i = 0; i < 3; ++i) {
        in.plane[i] = {picture.data + i * step * rows, step, ZIMG_BUFFER_MAX};
        cv::Mat& plane = i == 0 ? luma : chroma[i - 1];
        out.plane[i] = {plane.data, static_cast<std::ptrdiff_t>(plane.step[0]), ZIMG_BUFFER_MAX};
    }
    Benchmarks::compareWithStream(
        state, picture, bytesFor((1 + 1.0 / (1 << verticalShift)) * sampleBytes), pixels, [&] {
            require(zimg_filter_graph_process(graph.get(), &in, &out, scratch.data, nullptr, nullptr, nullptr,
                                              nullptr) == 0,
                    "zimg");
        });
}

void hapQ(benchmark::State& state) {
    AVCodec const* const codec = avcodec_find_encoder(AV_CODEC_ID_HAP);
    if (!codec)
        return state.SkipWithError("this FFmpeg has no HAP encoder");
    auto const freeContext = [](AVCodecContext* context) { avcodec_free_context(&context); };
    std::unique_ptr<AVCodecContext, void (*)(AVCodecContext*)> const context(avcodec_alloc_context3(codec),
                                                                             freeContext);
    context->width = columns;
    context->height = rows;
    context->pix_fmt = AV_PIX_FMT_RGBA;
    context->time_base = {1, 25};
    context->thread_count = 1;
    av_opt_set(context->priv_data, "format", "hap_q", 0);
    av_opt_set(context->priv_data, "compressor", "none", 0);
    require(avcodec_open2(context.get(), codec, nullptr) == 0, "FFmpeg's HAP encoder");

    cv::Mat picture;
    Benchmarks::noise(rows, columns).convertTo(picture, CV_8U, 255);
    auto const freeFrame = [](AVFrame* frame) { av_frame_free(&frame); };
    std::unique_ptr<AVFrame, void (*)(AVFrame*)> const frame(av_frame_alloc(), freeFrame);
    frame->format = context->pix_fmt;
    frame->width = columns;
    frame->height = rows;
    frame->data[0] = picture.data;
    frame->linesize[0] = static_cast<int>(picture.step[0]);
    auto const freePacket = [](AVPacket* packet) { av_packet_free(&packet); };
    std::unique_ptr<AVPacket, void (*)(AVPacket*)> const packet(av_packet_alloc(), freePacket);
    Benchmarks::compareWithStream(state, picture, bytesFor(1), pixels, [&] {
        require(avcodec_send_frame(context.get(), frame.get()) == 0 &&
                    avcodec_receive_packet(context.get(), packet.get()) == 0,
                "FFmpeg's HAP encoder");
        av_packet_unref(packet.get());
    });
}

void add(const char* name, std::function<void(benchmark::State&)> const& measure) {
    benchmark::RegisterBenchmark((std::string("peer/") + name + "/threads:1").c_str(), measure)
        ->Iterations(rounds)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(1); // as many as they use here
    benchmark::Initialize(&argc, argv);
    add("libswscale-420", [](auto& state) { swscale(state, AV_PIX_FMT_YUV420P, 1.5); });
    add("libswscale-422", [](auto& state) { swscale(state, AV_PIX_FMT_YUYV422, 2); });
    add("libswscale-422-10", [](auto& state) { swscale(state, AV_PIX_FMT_YUV422P10, 4); });
    add("libswscale-rgb8", [](auto& state) { swscale(state, AV_PIX_FMT_RGB24, 3); });
    add("libswscale-rgba8", [](auto& state) { swscale(state, AV_PIX_FMT_RGBA, 4); });
    add("zimg-420", [](auto& state) { zimg(state, 8, 1); });
    add("zimg-422", [](auto& state) { zimg(state, 8, 0); });
    add("zimg-422-10", [](auto& state) { zimg(state, 10, 0); });
    add("ffmpeg-hap-q", hapQ);
    benchmark::RunSpecifiedBenchmarks();
}

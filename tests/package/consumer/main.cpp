#include <MediaConversion/MediaConversion.h>

#include <cstdio>

int main(int, char** arguments) try {
    using Zentrel::FullFrame;
    using Zentrel::FullFrameFormat;

    auto frame = FullFrame::create(FullFrameFormat::BGRA_F32(), 32, 64);
    frame->image().setTo(cv::Scalar::all(0.5));

    FrameSinkDestination destination;
    MediaConversion::Encoder encoder(FullFrameFormat::BGRA_F32(), FullFrameFormat::RGB_U8());
    encoder.connect(&destination);
    encoder.start();
    encoder.encodeFrame(std::move(frame));

    MediaConversion::FileStreamFactory files;
    MediaConversion::ZentrelMediaFileWriter(files).writeFrame(arguments[1], destination.frame());
} catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}

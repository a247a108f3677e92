// A writer plug-in that gets one byte wrong: every picture is black, but for one green sample. Meanwhile
// others are at work: a file NAME.later in the current folder takes the place of NAME.
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/mediafile/FileStream.h>
#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <DDImage/Writer.h>

namespace {

class FaultyWriter final : public DD::Image::Writer {
public:
    using Writer::Writer;

    void knobs(DD::Image::Knob_Callback f) override {
        static const char* const labels[] = {"8-bit RGB 4:4:4", nullptr};
        Enumeration_knob(f, &format, labels, "Output format", "Output format");
    }
    const char* help() override { return ""; }

    void execute() override {
        for (const auto& entry : std::filesystem::directory_iterator("."))
            if (entry.path().extension() == ".later")
                std::filesystem::rename(entry, entry.path().stem());
        auto frame = Zentrel::FullFrame::create(Zentrel::FullFrameFormat::RGB_U8(), height(), width());
        cv::Mat image = frame->image();
        image.setTo(cv::Scalar::all(0));
        image.at<cv::Vec3b>(2, 1)[1] = 7;
        MediaConversion::FileStreamFactory streams;
        MediaConversion::ZentrelMediaFileWriter(streams).writeFrame(std::filesystem::path(filename()),
                                                                    std::move(frame));
    }

private:
    int format = 0;
};

DD::Image::Writer* build(DD::Image::Write* node) { return new FaultyWriter(node); }

const DD::Image::Writer::Description description("zet\0", build);

} // namespace

#include <plugin/zetWriterMCL.h>

#include <MediaConversion/MediaPipeline/FrameFormat.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/MemoryPool.h>
#include <MediaConversion/Version.h>
#include <MediaConversion/mediafile/FileStream.h>
#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>
#include <plugin/OutputFormats.h>
#include <plugin/PluginVersion.h>

#include <DDImage/ChannelSet.h>
#include <DDImage/Row.h>
#include <DDImage/Write.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using Zentrel::FrameFormat;
using Zentrel::FullFrameFormat;

namespace {

/// The menu's value is the index into both tables.
const std::vector<FrameFormat> codecFormats = [] {
    std::vector<FrameFormat> formats;
    for (const OutputFormat& output : outputFormats)
        formats.push_back(output.format());
    return formats;
}();

/// The labels, ended by a null pointer.
constexpr auto codecStrings = [] {
    std::array<const char*, outputFormats.size() + 1> labels{};
    for (std::size_t i = 0; i < outputFormats.size(); ++i)
        labels[i] = outputFormats[i].label;
    return labels;
}();

const std::string versionText =
    std::string("Writer Plugin version = ") + pluginVersion +
    "\nMediaConversion Library version = " + MediaConversion::Version::fullVersion();

/// All writers share one pool, so that frames of one size use the same memory again and again.
void installMemoryPool() {
    constexpr int maxIdleAcquisitions = 3;
    Zentrel::ImageFrame::setMemoryPool(
        std::make_shared<SelfPruningMemoryPool<HostMemoryResource, true>>(maxIdleAcquisitions));
}

/// Begins to fetch memory that will be written soon.
void fetchForWriting(const float* first, const float* last) {
    constexpr std::ptrdiff_t cacheLine = 64 / sizeof(float);
    for (std::ptrdiff_t i = 0; i < last - first; i += cacheLine)
        __builtin_prefetch(first + i, 1);
}

DD::Image::Writer* build(DD::Image::Write* write) {
    static std::once_flag installed;
    std::call_once(installed, installMemoryPool);
    return new zetWriterMCL(write);
}

} // namespace

const DD::Image::Writer::Description zetWriterMCL::description("zet\0z9zt\0", build);

zetWriterMCL::zetWriterMCL(DD::Image::Write* write)
    : DD::Image::Writer(write),
      outputFormatIndex(0),
      encoder(FullFrameFormat::BGRA_F32(), codecFormats[0]),
      outputFormatKnob(nullptr) {}

zetWriterMCL::~zetWriterMCL() = default;

void zetWriterMCL::knobs(DD::Image::Knob_Callback f) {
    if (auto* knob =
            Enumeration_knob(f, &outputFormatIndex, codecStrings.data(), "Output format", "Output format")) {
        outputFormatKnob = knob;
        SetFlags(f, DD::Image::Knob::SAVE_MENU);
    }
    Text_knob(f, versionText.c_str());
}

const char* zetWriterMCL::help() {
    return "zetWriter, written by the zetWriter developers\r\n"
           "Writes the .9zt and .zet file formats used by the media server\r\n"
           "Notes:\r\n"
           "Due to a requirement in Nuke for any filewriter plugins output extensions to begin with a letter "
           "(i.e. .tga or .dpx NOT .9zt)\r\n"
           " these files are called .zet files. \r\n"
           "The zetWriter can output .zet or .9zt files";
}

void zetWriterMCL::execute() {
    try {
        setupConversionPipeline();
        convertAndWriteFrame(readFrame());
    } catch (const std::exception& exception) {
        // The text is the format on purpose, as it always was: the host reads a "%" in it as a directive.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
        iop->critical(exception.what());
#pragma GCC diagnostic pop
    }
}

void zetWriterMCL::setupConversionPipeline() {
    if (outputFormatIndex < 0 || outputFormatIndex >= static_cast<int>(codecFormats.size()))
        throw std::runtime_error("Output codec selection error, invalid ID " +
                                 std::to_string(outputFormatIndex));
    encoder = MediaConversion::Encoder(FullFrameFormat::BGRA_F32(), codecFormats[outputFormatIndex]);
    encoder.connect(&destination);
}

/// The input as float pixels in the order blue, green, red, alpha, with the top row first.
std::unique_ptr<Zentrel::IFrame> zetWriterMCL::readFrame() {
    const int channels = depth();
    const DD::Image::ChannelSet mask = channel_mask(std::min(channels, 4));
    const int columns = info().format().width();
    const int rows = info().format().height();
    input0().request(0, 0, columns, rows, mask, 1);
    DD::Image::Row row(0, columns);

    auto frame = Zentrel::FullFrame::create(FullFrameFormat::BGRA_F32(), rows, columns);
    cv::Mat image = frame->image();
    constexpr double rowShare = 0.3; // of the progress bar; converting and writing report nothing
    for (int y = 0; y < rows; ++y) {
        iop->progressFraction(y * rowShare / rows, DD::Image::Op::StatusUseCallback);
        iop->inputnget(rows - 1 - y, 0, columns, mask, row); // the host numbers rows from the bottom

        float* const pixels = image.ptr<float>(y);
        const int stride = image.channels();
        // What the host does not supply stays at full scale: without an alpha channel the picture is opaque.
        // Preset row by row, the samples are still in the cache when the host's follow.
        std::fill_n(pixels, std::size_t(columns) * stride, 1.0f);
        if (y + 1 < rows) // while the samples take their places one by one, the next row comes into the cache
            fetchForWriting(image.ptr<float>(y + 1), image.ptr<float>(y + 1) + std::size_t(columns) * stride);
        const float* const alpha = channels > 3 ? row[DD::Image::Chan_Alpha] : nullptr;
        for (int z = 0; z < 3; ++z)
            to_float(z, pixels + 2 - z, row[channel(z)], alpha, columns, stride);
        if (alpha)
            to_float(3, pixels + 3, alpha, alpha, columns, stride);
    }
    return frame;
}

void zetWriterMCL::convertAndWriteFrame(std::unique_ptr<Zentrel::IFrame> frame) {
    encoder.start();
    encoder.encodeFrame(std::move(frame));
    auto converted = destination.frame();
    encoder.stop();

    MediaConversion::FileStreamFactory streams;
    MediaConversion::ZentrelMediaFileWriter writer(streams);
    const char* const file = filename();
    if (!file || !*file)
        throw std::runtime_error("Writer could not obtain filename");
    writer.writeFrame(std::filesystem::path(file), std::move(converted));
}

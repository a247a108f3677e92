#include "PictureWriting.h"

#include "Threads.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>
#include <fmt/format.h>
#include <opencv2/imgproc.hpp>
#include <pictures/EndOfRun.h>
#include <pictures/OutputFile.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

using ZetTool::EndOfRun;
using ZetTool::OutputFile;
using ZetTool::OutputPicture;

namespace ZetImageIo {
namespace {

using Output = std::unique_ptr<OIIO::ImageOutput>;
using ToLinear = float (*)(float encoded);

// From encoded samples back to linear light.
float fromLinear(float encoded) { return encoded; }
float fromSrgb(float encoded) {
    return encoded <= 0.04045f ? encoded / 12.92f : std::pow((encoded + 0.055f) / 1.055f, 2.4f);
}
float fromRec709(float encoded) {
    return encoded < 0.081f ? encoded / 4.5f : std::pow((encoded + 0.099f) / 1.099f, 1 / 0.45f);
}

ToLinear curveFor(const std::string& colourSpace) {
    const std::pair<const char*, ToLinear> curves[] = {
        {"Linear", fromLinear}, {"sRGB", fromSrgb}, {"Rec709", fromRec709}};
    for (const auto& [name, curve] : curves)
        if (OIIO::Strutil::iequals(colourSpace, name))
            return curve;
    return nullptr;
}

/// The pixels as linear floats, multiplied by their alpha.
cv::Mat linearised(const cv::Mat& pixels, ToLinear curve, bool premultiplied) {
    cv::Mat linear;
    pixels.convertTo(linear, CV_32F, pixels.depth() == CV_8U ? 1 / 255.0 : 1.0);
    const int channels = linear.channels();
    for (int row = 0; row < linear.rows; ++row) {
        float* pixel = linear.ptr<float>(row);
        for (int column = 0; column < linear.cols; ++column, pixel += channels) {
            const float alpha = channels == 4 ? pixel[3] : 1;
            const float divisor = premultiplied && alpha > 0 ? alpha : 1;
            const float factor = premultiplied && alpha == 0 ? 1 : alpha; // light without cover stays
            for (int channel = 0; channel < 3; ++channel)
                pixel[channel] = curve(pixel[channel] / divisor) * factor;
        }
    }
    return linear;
}

/// In the order red, green, blue, alpha.
cv::Mat inFileOrder(const cv::Mat& pixels, bool alpha) {
    cv::Mat ordered;
    cv::cvtColor(pixels, ordered,
                 pixels.channels() == 3 ? cv::COLOR_BGR2RGB
                 : alpha                ? cv::COLOR_BGRA2RGBA
                                        : cv::COLOR_BGRA2RGB);
    return ordered;
}

OIIO::TypeDesc sampleType(const std::string& fileType, int bits) {
    if (fileType == "openexr") // 11 bits of precision are not enough for 12
        return bits <= 10 ? OIIO::TypeHalf : OIIO::TypeFloat;
    return bits <= 8 ? OIIO::TypeUInt8 : OIIO::TypeUInt16;
}

void writeBytes(const fs::path& path, const std::vector<unsigned char>& bytes) {
    errno = 0; // streams need not set it
    std::ofstream stream(path, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream)
        throw std::runtime_error(errno ? std::strerror(errno) : "the file takes no more bytes");
}

/// The bytes that are there, none if that cannot be told: then the commit tells why.
std::uint64_t lengthOf(const OutputFile& file) {
    std::error_code error;
    const std::uint64_t bytes = fs::file_size(file.temporary(), error);
    return error ? 0 : bytes;
}

/// Of most types OpenImageIO makes the file in memory: on a full disk some of its writers lose bytes without
/// a word, and one ends the process.
void writePixels(const std::string& fileType, const OIIO::ImageSpec& spec, const cv::Mat& pixels,
                 const OutputFile& file) {
    OIIO::Filesystem::IOVecOutput memory; // outlives the output, which may refer to it to its end
    const Output output = OIIO::ImageOutput::create(fileType);
    // Some types that support it leave the memory empty. TIFF needs to read there what it wrote, which it
    // cannot.
    if (fileType != "tiff" && output->supports("ioproxy"))
        output->set_ioproxy(&memory);
    const OIIO::TypeDesc samples = pixels.depth() == CV_8U ? OIIO::TypeUInt8 : OIIO::TypeFloat;
    if (!output->open(file.temporary().string(), spec) || !output->write_image(samples, pixels.data) ||
        !output->close()) {
        const std::string reason = output->geterror();
        throw std::runtime_error(reason.substr(0, reason.find('\n')));
    }
    if (!memory.buffer().empty())
        writeBytes(file.temporary(), memory.buffer());
    else if (file.diskIsFull(lengthOf(file) + 1)) // not a byte is left, and none was counted
        throw std::runtime_error("the disk is full");
}

class FileType final : public ZetTool::PictureFileType {
public:
    explicit FileType(const fs::path& file);
    bool holdsAlpha() const override { return alpha; }
    bool isLinear() const override { return name == "openexr" || name == "hdr"; }
    void checkColourSpace(const std::string& colourSpace) const override;
    std::uint64_t write(const OutputPicture& picture, const fs::path& file) const override;

private:
    std::string name;
    bool alpha;
};

FileType::FileType(const fs::path& file) {
    const Output output = OIIO::ImageOutput::create(file.string());
    // Ours are not for pictures to be shown, even where OpenImageIO finds its plug-in for them.
    if (!output || output->format_name() == std::string_view("zet")) {
        OIIO::geterror(); // at length, of plug-ins and paths that are looked for
        throw std::runtime_error(fmt::format(
            "unknown extension \"{}\" of picture \"{}\": expected .png, .tif, .exr, .dpx, .jpg or "
            "another that OpenImageIO writes",
            file.extension().string(), file.string()));
    }
    name = output->format_name();
    alpha = output->supports("alpha");
}

void FileType::checkColourSpace(const std::string& colourSpace) const {
    if (isLinear() && !curveFor(colourSpace))
        throw std::runtime_error(
            fmt::format("no way is known from colour space \"{}\" to the linear light of "
                        "{} files: expected sRGB, Rec709 or Linear",
                        colourSpace, name));
}

std::uint64_t FileType::write(const OutputPicture& picture, const fs::path& path) const {
    shareThreads();
    checkColourSpace(picture.colourSpace);
    const cv::Mat source =
        isLinear() ? linearised(picture.pixels, curveFor(picture.colourSpace), picture.premultiplied)
                   : picture.pixels;
    const cv::Mat pixels = inFileOrder(source, alpha);
    OIIO::ImageSpec spec(pixels.cols, pixels.rows, pixels.channels(), sampleType(name, picture.bits));
    spec.attribute("oiio:ColorSpace", isLinear() ? "Linear" : picture.colourSpace);
    if (pixels.channels() == 4 && !picture.premultiplied && !isLinear())
        spec.attribute("oiio:UnassociatedAlpha", 1);

    OutputFile file(path);
    try {
        writePixels(name, spec, pixels, file);
    } catch (const std::exception& error) {
        const std::string reason = fmt::format("{}: cannot be written: {}", path.string(), error.what());
        if (file.diskIsFull(lengthOf(file) + 1))
            throw EndOfRun(reason);
        throw std::runtime_error(reason);
    }
    const std::uint64_t bytes = lengthOf(file);
    file.commit(bytes);
    return bytes;
}

} // namespace

std::unique_ptr<const ZetTool::PictureFileType> pictureFileType(const fs::path& file) {
    return std::make_unique<FileType>(file);
}

} // namespace ZetImageIo

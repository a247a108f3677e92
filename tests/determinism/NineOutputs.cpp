// The bytes of a fixed picture in each of the writer's formats, against checksums that every compiler,
// optimisation level, instruction set and processor has to reach. scripts/determinism.sh builds this with
// several of them.
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/converters/InstructionSet.h>
#include <plugin/OutputFormats.h>
#include <tests/Conversion.h>

#include <cfloat>
#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace {

constexpr int columns = 128, rows = 48;

/// In the order of the formats: FNV-1a with 64 bits.
constexpr std::uint64_t expected[outputFormats.size()] = {
    0xd92310dca76db4fe, 0x99e649bd36c66859, 0x24cac76d92368573, 0xa4f7239a03ba17bc, 0x44c9ac35e21fdf54,
    0xca49a0fe393786e4, 0xec70d9364cfbce0c, 0x2fb5bcab2fbd6a37, 0xc86e31183111715e};

/// Their 8-bit samples come from OpenCV, which turns what is beyond the range of an int into 0 on some
/// processors and into full scale on others.
bool comesFromOpenCv(OutputFormat const& output) {
    return output.format() == Zentrel::PackedFrameFormat::YCOCG_DXT5_U8() ||
           Zentrel::FullFrame::is(output.format());
}

/// A neutral ramp, noise that reaches beyond 0 and 1, and whatever else a float can be, up to the range of an
/// int or without bounds.
float sampleAt(int row, int column, int channel, bool bounded) {
    std::uint32_t random = static_cast<std::uint32_t>((row * columns + column) * 4 + channel) * 2654435761u;
    random ^= random >> 15;
    random = random * 1664525 + 1013904223;
    auto const noise = static_cast<float>(random >> 8) / 16777216.0f * 1.5f - 0.25f;
    constexpr float limits[] = {NAN,    -0.0f,  1.0f,    0.5f,     0.99999994f, 1.0000001f,
                                1e-45f, 1e6f,   -1e6f,   FLT_MIN, // those with bounds
                                1e10f,  -1e10f, FLT_MAX, -FLT_MAX, INFINITY,    -INFINITY};
    std::uint32_t const count = bounded ? 10 : std::size(limits);
    switch (row / (rows / 3)) {
    case 0:
        return static_cast<float>(row * columns + column) / static_cast<float>(rows / 3 * columns - 1);
    case 1:
        return noise;
    default:
        return (column + channel) % 3 != 0 ? limits[(random >> 8) % count] : noise;
    }
}

std::unique_ptr<Zentrel::IFrame> fixedPicture(bool bounded) {
    auto frame = Zentrel::FullFrame::create(Zentrel::FullFrameFormat::BGRA_F32(), rows, columns);
    cv::Mat image = frame->image();
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            for (int channel = 0; channel < 4; ++channel)
                image.ptr<float>(row, column)[channel] = sampleAt(row, column, channel, bounded);
    return frame;
}

std::uint64_t sumOf(cv::Mat const& matrix) {
    std::uint64_t sum = 0xcbf29ce484222325;
    for (std::size_t i = 0; i < matrix.total() * matrix.elemSize(); ++i)
        sum = (sum ^ matrix.data[i]) * 0x100000001b3;
    return sum;
}

cv::Mat encoded(OutputFormat const& output) {
    return TestSupport::encoded(fixedPicture(comesFromOpenCv(output)), output.format())->image();
}

} // namespace

int main() {
    bool same = true;
    for (auto const set : MediaConversion::availableInstructionSets()) {
        MediaConversion::useInstructionSet(set);
        for (std::size_t i = 0; i < outputFormats.size(); ++i) {
            std::uint64_t const sum = sumOf(encoded(outputFormats[i]));
            same = same && sum == expected[i];
            std::printf("%-8s %-7s %016" PRIx64 "%s\n", toString(set).c_str(), outputFormats[i].shortName,
                        sum, sum == expected[i] ? "" : " is not what it should be");
        }
    }
    return same ? 0 : 1;
}

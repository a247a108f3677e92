// Tries a converter on many pictures and compares every byte with a plain evaluation of the same formula.
//
// A test of a processor is
//
//     expectServesExactly<ImageX>(pairs, formula, "X is not supported from ");
//
// where formula(source format, destination format) gives the `Reference` for the pair.
#pragma once

#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/InstructionSet.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

using Zentrel::FrameFormat;
using Zentrel::FullFrame;
using Zentrel::PackedFrame;

/// The kinds of pictures: random samples in the range of their depth (float ones somewhat beyond), limits and
/// oddities among random samples, and all channels equal from 0 to full scale. The samples of packed formats
/// are their bytes.
enum class Filling { Noise, Limits, NeutralRamp };

inline double fullScale(Zentrel::ChannelType depth) {
    constexpr double scales[] = {255, 1023, 4095, 32768, 65535, 1};
    return scales[static_cast<std::size_t>(depth)];
}

/// The values where the samples of a depth may be mistreated.
inline std::vector<double> limitsOf(Zentrel::ChannelType depth) {
    if (depth == Zentrel::ChannelType::F32)
        return {NAN,     INFINITY, -INFINITY, FLT_MAX, -FLT_MAX, -0.5, -0.0,
                FLT_MIN, 0.0,      0.5,       1.0,     1.5,      1e10, std::nextafter(1.0f, 0.0f)};
    double const scale = fullScale(depth), half = std::floor(scale / 2);
    return {0, 1, half, half + 1, scale - 1, scale, scale + 1, 65535}; // at most what the type holds
}

/// Gives the matrix the same samples in every run, on every machine.
inline void fill(cv::Mat matrix, Zentrel::ChannelType depth, Filling filling) {
    std::mt19937 random;
    double const scale = fullScale(depth);
    auto const limits = limitsOf(depth);
    auto const noise = [&] {
        double const fraction = random() / 4294967296.0;
        return depth == Zentrel::ChannelType::F32 ? fraction * 1.5 - 0.25
                                                  : std::floor(fraction * (scale + 1));
    };
    cv::Mat samples(matrix.size(), CV_64FC(matrix.channels()));
    auto* sample = samples.ptr<double>();
    for (std::size_t pixel = 0; pixel < matrix.total(); ++pixel)
        for (int channel = 0; channel < matrix.channels(); ++channel)
            if (filling == Filling::NeutralRamp)
                *sample++ = scale * pixel / std::max<double>(matrix.total() - 1.0, 1);
            else
                *sample++ =
                    filling == Filling::Limits && random() % 2 ? limits[random() % limits.size()] : noise();
    samples.convertTo(matrix, matrix.depth());
}

inline int openCvTypeOf(FrameFormat const& format) {
    return FullFrame::is(format) ? FullFrame::openCvTypes.at(format) : PackedFrame::openCvTypes.at(format);
}

/// The matrix size of a picture.
inline cv::Size elementsOf(FrameFormat const& format, cv::Size pixels) {
    auto const block = format.pixelPacking.pixels();
    return {pixels.width / static_cast<int>(block.columns), pixels.height / static_cast<int>(block.rows)};
}

inline std::unique_ptr<Zentrel::IImageFrame> frameOf(FrameFormat const& format, cv::Mat const& matrix) {
    if (FullFrame::is(format))
        return std::make_unique<FullFrame>(format, matrix, Zentrel::Frame::Origin::TopLeft);
    return std::make_unique<PackedFrame>(format, matrix, Zentrel::Frame::Origin::TopLeft);
}

/// A picture inside a larger matrix: its rows are not contiguous, and whoever reads beside them gets
/// plausible samples that are not the picture's.
class GuardedPicture {
public:
    GuardedPicture(FrameFormat const& format, cv::Size pixels, Filling filling) : format(format) {
        constexpr int margin = 3;
        cv::Size const size = elementsOf(format, pixels);
        surroundings.create(size.height + 2 * margin, size.width + 2 * margin, openCvTypeOf(format));
        std::memset(surroundings.data, 0x3f, surroundings.total() * surroundings.elemSize());
        region = surroundings(cv::Rect({margin, margin}, size));
        if (FullFrame::is(format))
            fill(region, format.channelType, filling);
        else
            fill(cv::Mat(size, CV_8UC(static_cast<int>(region.elemSize())), region.data, region.step),
                 Zentrel::ChannelType::U8, filling);
        original = surroundings.clone();
    }

    cv::Mat const& matrix() const { return region; }
    std::unique_ptr<Zentrel::IImageFrame> frame() const { return frameOf(format, region); }
    /// Neither the picture nor what surrounds it was written to.
    bool untouched() const {
        return std::memcmp(surroundings.data, original.data, original.total() * original.elemSize()) == 0;
    }

private:
    FrameFormat format;
    cv::Mat surroundings, original, region;
};

inline std::string hexOf(std::uint8_t const* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += cv::format("%02x ", bytes[i]);
    return text;
}

/// Fails the test at the first element that differs.
inline void expectSameBytes(cv::Mat const& actual, cv::Mat const& expected) {
    ASSERT_EQ(actual.type(), expected.type());
    ASSERT_EQ(actual.size(), expected.size());
    std::size_t const bytes = expected.elemSize();
    for (int row = 0; row < expected.rows; ++row)
        for (int column = 0; column < expected.cols; ++column)
            if (std::memcmp(actual.ptr(row, column), expected.ptr(row, column), bytes) != 0)
                FAIL() << "row " << row << " column " << column << " of the matrix: got "
                       << hexOf(actual.ptr(row, column), bytes) << "instead of "
                       << hexOf(expected.ptr(row, column), bytes);
}

/// The smallest picture that both formats can have.
inline cv::Size blockOfBoth(FrameFormat const& source, FrameFormat const& destination) {
    auto const a = source.pixelPacking.pixels(), b = destination.pixelPacking.pixels();
    return {static_cast<int>(std::max(a.columns, b.columns)), static_cast<int>(std::max(a.rows, b.rows))};
}

/// Sizes in pixels that both formats can have: from one block up, around the widths of vectors, and one that
/// has room for a ramp through all codes of 12 bits.
inline std::vector<cv::Size> sizesFor(FrameFormat const& source, FrameFormat const& destination) {
    cv::Size const block = blockOfBoth(source, destination);
    std::vector<cv::Size> sizes{{128, 32}, {block.width, 5 * block.height}};
    for (int const blocks : {1, 2, 3, 7, 8, 9, 15, 16, 17})
        sizes.push_back({blocks * block.width, (1 + blocks % 3) * block.height});
    return sizes;
}

/// What should become of a picture: writes every element of `expected`, which has the destination's type and
/// size.
using Reference = std::function<void(cv::Mat const& source, cv::Mat& expected)>;
using Formula = std::function<Reference(FrameFormat const& source, FrameFormat const& destination)>;

/// The result of one conversion through the processor's own entrance.
template <class Processor>
cv::Mat convertedBy(FrameFormat const& destination, std::unique_ptr<Zentrel::IImageFrame> source) {
    int const rows = source->rows(), columns = source->cols();
    auto const result = Processor(destination).onNewImage(std::move(source));
    EXPECT_EQ(result->format(), destination);
    EXPECT_EQ(result->rows(), rows);
    EXPECT_EQ(result->cols(), columns);
    return dynamic_cast<Zentrel::IImageFrame&>(*result).image();
}

/// The bytes of the block that the processor makes of these samples, which fill it.
template <class Processor>
std::string blockOf(FrameFormat const& source, std::vector<double> const& samples,
                    FrameFormat const& destination, int rows = 1) {
    int const type = openCvTypeOf(source);
    cv::Mat pixels;
    cv::Mat(samples).reshape(CV_MAT_CN(type), rows).convertTo(pixels, type);
    cv::Mat const block = convertedBy<Processor>(destination, frameOf(source, pixels));
    return hexOf(block.data, block.elemSize());
}

/// For its lifetime conversions use an instruction set and a number of threads.
class ConvertingWith {
public:
    ConvertingWith(MediaConversion::InstructionSet set, int threads) {
        MediaConversion::useInstructionSet(set);
        cv::setNumThreads(threads);
    }
    ~ConvertingWith() {
        MediaConversion::useInstructionSet(setBefore);
        cv::setNumThreads(threadsBefore);
    }
    ConvertingWith(ConvertingWith const&) = delete;
    ConvertingWith& operator=(ConvertingWith const&) = delete;

private:
    MediaConversion::InstructionSet setBefore = MediaConversion::instructionSet();
    int threadsBefore = cv::getNumThreads();
};

/// The conversion agrees with the reference on all fillings and sizes, with every instruction set of the
/// machine, on one thread and on several, and leaves the source as it was.
template <class Processor>
void expectConverts(FrameFormat const& source, FrameFormat const& destination, Reference const& reference) {
    for (Filling const filling : {Filling::Noise, Filling::Limits, Filling::NeutralRamp})
        for (cv::Size const size : sizesFor(source, destination)) {
            SCOPED_TRACE(
                FrameFormat::toString(source) + " to " + FrameFormat::toString(destination) +
                cv::format(", %d x %d, filling %d", size.width, size.height, static_cast<int>(filling)));
            GuardedPicture const picture(source, size, filling);
            cv::Mat expected(elementsOf(destination, size), openCvTypeOf(destination));
            reference(picture.matrix(), expected);
            for (auto const set : MediaConversion::availableInstructionSets()) {
                SCOPED_TRACE(toString(set));
                ConvertingWith const settings(set, set == MediaConversion::InstructionSet::Plain ? 1 : 4);
                ASSERT_NO_FATAL_FAILURE(
                    expectSameBytes(convertedBy<Processor>(destination, picture.frame()), expected));
            }
            ASSERT_TRUE(picture.untouched());
        }
}

using FormatPairs = std::set<std::pair<FrameFormat, FrameFormat>>;

/// Each of these sources with each of these destinations.
struct PairGroup {
    std::vector<FrameFormat> sources, destinations;
};

inline FormatPairs pairsOf(std::vector<PairGroup> const& groups) {
    FormatPairs pairs;
    for (PairGroup const& group : groups)
        for (FrameFormat const& source : group.sources)
            for (FrameFormat const& destination : group.destinations)
                pairs.insert({source, destination});
    return pairs;
}

/// Of all pairs of formats the processor converts these as the formula says and refuses the others, with its
/// own message.
template <class Processor>
void expectServesExactly(FormatPairs const& pairs, Formula const& formula, std::string const& refusal) {
    std::vector<FrameFormat> formats{Zentrel::FullFrameFormat::YCBCR_ITU_T871_YCBCR_U10()};
    for (auto const* table : {&FullFrame::openCvTypes, &PackedFrame::openCvTypes})
        for (auto const& [format, type] : *table)
            formats.push_back(format);
    for (FrameFormat const& source : formats)
        for (FrameFormat const& destination : formats)
            if (pairs.count({source, destination}))
                expectConverts<Processor>(source, destination, formula(source, destination));
            else
                EXPECT_EQ(messageOf([&] { Processor::selectConversion(source, destination); }),
                          refusal + FrameFormat::toString(source) + " to " +
                              FrameFormat::toString(destination));
}

} // namespace TestSupport

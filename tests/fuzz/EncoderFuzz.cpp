// Pictures of any samples through every conversion: all instruction sets give the bytes of the plain one, and
// that those of the plain formula, where the tests have one.

#include <tests/Conversion.h>
#include <tests/MediaConversion/converters/DxtReference.h>
#include <tests/MediaConversion/converters/PackingReference.h>
#include <tests/MediaConversion/converters/YCbCrReference.h>
#include <tests/fuzz/Require.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <optional>

using namespace TestSupport;
using MediaConversion::Encoder;
using F = Zentrel::FullFrameFormat;

namespace {

using Pair = std::pair<FrameFormat, FrameFormat>;

std::map<Pair, Reference> plainFormulas() {
    std::map<Pair, Reference> formulas;
    auto const add = [&](FormatPairs const& pairs, Formula const& formulaOf) {
        for (auto const& [source, destination] : pairs)
            formulas[{source, destination}] = formulaOf(source, destination);
    };
    add(YCbCr::encodings, YCbCr::encoding);
    add(YCbCr::decodings, YCbCr::decoding);
    add(Dxt::encodings, Dxt::encoding);
    add(Dxt::decodings, Dxt::decoding);
    add(Packing::encodings, Packing::encoding);
    add(Packing::decodings, Packing::decoding);
    return formulas;
}

/// The pairs that a chain leads from and to, with the formula of those whose chain is a single conversion.
std::vector<std::pair<Pair, Reference>> const& conversions() {
    static auto const instance = [] {
        auto const formulas = plainFormulas();
        std::vector<std::pair<Pair, Reference>> result;
        for (auto const& [formats, steps] : Encoder::encodingSteps) {
            Pair const pair{std::get<0>(formats), std::get<1>(formats)};
            auto const found = formulas.find(pair);
            result.emplace_back(pair, steps.size() == 1 && found != formulas.end() ? found->second : nullptr);
        }
        return result;
    }();
    return instance;
}

/// A float near one of the values between two codes, where the rounding of conversions turns.
float nearAnEdge(FuzzedDataProvider& data) {
    constexpr int highest[] = {255, 1023, 4095, 65535};
    int const top = data.PickValueInArray(highest);
    auto value = static_cast<float>((data.ConsumeIntegralInRange(-1, top) + 0.5) / top);
    for (int steps = data.ConsumeIntegralInRange(-2, 2); steps != 0; steps += steps < 0 ? 1 : -1)
        value = std::nextafter(value, steps < 0 ? -1.0f : 2.0f);
    return value;
}

enum class Pixels { AnyBytes, NearEdges, NeutralNearEdges };

cv::Mat pictureFrom(FuzzedDataProvider& data, FrameFormat const& format, cv::Size size, Pixels pixels) {
    cv::Mat picture(elementsOf(format, size), openCvTypeOf(format));
    std::size_t const bytes = picture.total() * picture.elemSize();
    if (pixels == Pixels::AnyBytes || picture.depth() != CV_32F) {
        auto const given = data.ConsumeRemainingBytes<std::uint8_t>();
        for (std::size_t i = 0; i < bytes; ++i)
            picture.data[i] = given.empty() ? 0 : given[i % given.size()];
        return picture;
    }
    auto* const samples = picture.ptr<float>();
    float value = 0;
    for (std::size_t i = 0; i < bytes / sizeof(float); ++i) {
        if (pixels == Pixels::NearEdges || i % static_cast<std::size_t>(picture.channels()) == 0)
            value = nearAnEdge(data);
        samples[i] = value;
    }
    return picture;
}

/// Nothing when the conversion refuses the frame.
std::optional<cv::Mat> converted(Pair const& pair, cv::Mat const& picture,
                                 MediaConversion::InstructionSet set) {
    MediaConversion::useInstructionSet(set);
    try {
        return encoded(frameOf(pair.first, picture), pair.second)->image();
    } catch (std::runtime_error const&) {
        return {};
    }
}

void requireSame(cv::Mat const& is, cv::Mat const& expected, std::string const& what) {
    require(is.size() == expected.size() && is.type() == expected.type(), what + ", type or size");
    std::size_t const bytes = expected.total() * expected.elemSize();
    require(is.isContinuous() && std::memcmp(is.data, expected.data, bytes) == 0, what);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    cv::setNumThreads(1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t count) {
    FuzzedDataProvider data(bytes, count);
    auto const last = static_cast<int>(conversions().size()) - 1;
    auto const& [pair, formula] =
        conversions()[static_cast<std::size_t>(data.ConsumeIntegralInRange<int>(0, last))];
    auto const& [source, destination] = pair;
    cv::Size const block = blockOfBoth(source, destination);
    cv::Size const size(block.width * data.ConsumeIntegralInRange(1, 40),
                        block.height * data.ConsumeIntegralInRange(1, 3));
    auto const pixels = static_cast<Pixels>(data.ConsumeIntegralInRange(0, 2));
    cv::Mat const picture = pictureFrom(data, source, size, pixels);
    std::string const names = FrameFormat::toString(source) + " to " + FrameFormat::toString(destination) +
                              cv::format(", %d x %d", size.width, size.height);

    auto const plain = converted(pair, picture, MediaConversion::InstructionSet::Plain);
    for (auto const set : MediaConversion::availableInstructionSets()) {
        auto const other = converted(pair, picture, set);
        require(other.has_value() == plain.has_value(), names + " is refused by all or none");
        if (plain)
            requireSame(*other, *plain, names + " is the same with " + toString(set));
    }
    if (plain && formula) {
        cv::Mat expected(elementsOf(destination, size), openCvTypeOf(destination));
        formula(picture, expected);
        requireSame(*plain, expected, names + " is what the formula gives");
    }
    return 0;
}

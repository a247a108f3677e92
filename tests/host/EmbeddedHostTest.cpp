// The host as a plug-in sees it and as a program uses it, with a writer that does what the test says.
#include <DDImage/Writer.h>
#include <host/EmbeddedHost.h>
#include <tests/TestSupport.h>
#include <tests/host/TestPicture.h>

#include <cmath>
#include <functional>
#include <limits>
#include <tuple>

using namespace DD::Image;
using EmbeddedHost::RenderResult;
using EmbeddedHost::RenderSettings;
using EmbeddedHost::Transfer;
using EmbeddedHost::WriteNode;
using testing::ElementsAre;
using testing::HasSubstr;
using TestSupport::messageOf;

namespace {

class ProbeWriter : public Writer {
public:
    using Writer::Writer;

    void execute() override { body(*this); }

    using Writer::iop;
    using Writer::to_float;

    static inline std::function<void(ProbeWriter&)> body;
};

Writer* buildProbe(Write* node) { return new ProbeWriter(node); }

const Writer::Description probe("probe\0probe2\0", "Probe", buildProbe);

RenderResult render(std::function<void(ProbeWriter&)> body, const RenderSettings& settings = {}) {
    ProbeWriter::body = std::move(body);
    TestPicture picture(1, 1, true, [](auto...) { return 0.0f; });
    return WriteNode("probe").render(picture, "frame.probe", settings);
}

TEST(Plugins, AreNamedWhenTheyAreMissing) {
    const TestSupport::TemporaryFolder folder;
    const auto text = folder / "not-a-library.so";
    std::ofstream(text) << "text";
    for (const auto& file : {std::filesystem::path("no/such/file.so"), text})
        EXPECT_THAT(messageOf([&] { EmbeddedHost::loadPlugin(file); }), HasSubstr(file.string()));
    EXPECT_EQ(messageOf([] { WriteNode("prob"); }), "No loaded plug-in writes files of type \"prob\"");
    {
        const Writer::Description passing("passing\0", buildProbe);
        EXPECT_EQ(Writer::Description::find("passing"), &passing);
    }
    EXPECT_EQ(Writer::Description::find("passing"), nullptr);
}

TEST(Reports, AreFormattedAsPrintfDoes) {
    const RenderResult result = render([](ProbeWriter& writer) {
        writer.iop->warning("%d%% of %s", 50, "it");
        writer.iop->error("%s", std::string(5000, 'x').c_str());
        writer.iop->critical("%04d", 7);
    });
    EXPECT_THAT(result.warnings, ElementsAre("50% of it"));
    EXPECT_THAT(result.criticalErrors, ElementsAre(std::string(5000, 'x'), "0007"));
    EXPECT_FALSE(result.succeeded());
    EXPECT_TRUE(render([](ProbeWriter& writer) { writer.iop->warning("careful"); }).succeeded());
    EXPECT_THAT(render([](ProbeWriter&) { throw std::runtime_error("50%s"); }).criticalErrors,
                ElementsAre("50%s"));
    EXPECT_THAT(render([](ProbeWriter&) { throw 1; }).criticalErrors,
                ElementsAre("The writer failed with an exception of an unknown type"));
}

/// What one pixel becomes in output channel `z`, written to the second of three floats.
float converted(Transfer transfer, bool premultiplied, int z, float sample, const float* alpha) {
    float result[] = {-5, -5, -5, -5, -5};
    const float samples[] = {sample, 0};
    const float alphas[] = {alpha ? *alpha : 0, 0};
    render(
        [&](ProbeWriter& writer) { writer.to_float(z, result + 1, samples, alpha ? alphas : nullptr, 2, 3); },
        {transfer, premultiplied});
    EXPECT_THAT(result, ElementsAre(-5, testing::_, -5, -5, 0)); // only every third float
    return result[1];
}

TEST(ToFloat, AppliesTheTransferFunction) {
    // Worked out in double precision from the standards' formulas: linear, sRGB, Rec. 709.
    for (const auto& [linear, srgb, rec709] :
         std::vector<std::tuple<float, float, float>>{{-0.1f, -1.292f, -0.45f},
                                                      {0.001f, 0.01292f, 0.0045f},
                                                      {0.0031308f, 0.04044994f, 0.0140886f},
                                                      {0.018f, 0.14282568f, 0.08124794f},
                                                      {0.18f, 0.46135613f, 0.40900773f},
                                                      {1, 1, 1},
                                                      {16, 3.29441622f, 3.72794028f}}) {
        EXPECT_EQ(converted(Transfer::None, false, 0, linear, nullptr), linear);
        EXPECT_NEAR(converted(Transfer::Srgb, false, 1, linear, nullptr), srgb, 1e-6) << linear;
        EXPECT_NEAR(converted(Transfer::Rec709, false, 2, linear, nullptr), rec709, 1e-6) << linear;
    }
}

TEST(ToFloat, DividesPremultipliedColourByAlpha) {
    constexpr float encodedHalf = 0.73535698f;
    for (const auto& [premultiplied, sample, alpha, expected] :
         std::vector<std::tuple<bool, float, float, float>>{
             {true, 0.25f, 0.5f, encodedHalf * 0.5f},
             {true, 1, 2, encodedHalf * 2},
             {true, 0.5f, 0, encodedHalf},     // glows without coverage
             {true, 0.5f, -0.5f, encodedHalf}, // cannot be a coverage
             {false, 0.5f, 0.25f, encodedHalf}})
        EXPECT_NEAR(converted(Transfer::Srgb, premultiplied, 0, sample, &alpha), expected, 1e-6)
            << sample << alpha;
    EXPECT_NEAR(converted(Transfer::Srgb, true, 0, 0.5f, nullptr), encodedHalf, 1e-6);
}

TEST(ToFloat, LeavesAloneWhatNeedsNoConversion) {
    constexpr float alpha = 0.1f, infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(converted(Transfer::None, true, 0, 0.9f, &alpha), 0.9f); // although 0.9f / 0.1f * 0.1f is not
    for (const Transfer transfer : {Transfer::None, Transfer::Srgb, Transfer::Rec709}) {
        EXPECT_EQ(converted(transfer, true, 3, alpha, &alpha), alpha);
        EXPECT_TRUE(std::isnan(converted(transfer, false, 0, std::nanf(""), nullptr)));
        EXPECT_EQ(converted(transfer, false, 0, infinity, nullptr), infinity);
    }
}

} // namespace

// The host as a plug-in sees it and as a program uses it, with a writer that does what the test says.
#include <DDImage/Row.h>
#include <DDImage/Writer.h>
#include <host/EmbeddedHost.h>
#include <tests/TestSupport.h>
#include <tests/host/TestPicture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace DD::Image;
using EmbeddedHost::PictureChannel;
using EmbeddedHost::RenderResult;
using EmbeddedHost::RenderSettings;
using EmbeddedHost::Transfer;
using EmbeddedHost::WriteNode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

namespace {

class ProbeWriter : public Writer {
public:
    using Writer::Writer;

    void knobs(Knob_Callback f) override {
        static const char* const sizes[] = {"small", "large", nullptr};
        Text_knob(f, "above");
        Knob* const knob = Enumeration_knob(f, &size, sizes, "size");
        SetFlags(f, Knob::SAVE_MENU);
        flags = knob->flags;
        Text_knob(f, "below");
    }
    const char* help() override { return "probes"; }
    void execute() override { body(*this); }
    void finish() override { ++finished; }

    using Writer::channel;
    using Writer::channel_mask;
    using Writer::depth;
    using Writer::filename;
    using Writer::height;
    using Writer::input0;
    using Writer::iop;
    using Writer::to_float;
    using Writer::width;

    int size = 0;
    static inline int flags = 0;
    static inline int finished = 0;
    static inline std::function<void(ProbeWriter&)> body;
};

Writer* buildProbe(Write* node) { return new ProbeWriter(node); }

const Writer::Description probe("probe\0probe2\0", "Probe", buildProbe);

float ramp(PictureChannel channel, int x, int y) {
    return static_cast<float>(100 * y + 10 * x) + static_cast<float>(channel);
}

RenderResult render(TestPicture picture, std::function<void(ProbeWriter&)> body,
                    const RenderSettings& settings = {}, const std::filesystem::path& file = "frame.probe") {
    ProbeWriter::body = std::move(body);
    return WriteNode("probe").render(picture, file, settings);
}

RenderResult render(std::function<void(ProbeWriter&)> body) {
    return render({2, 2, false, ramp}, std::move(body));
}

TEST(Registry, FindsWritersByFileTypeWhileTheyAreRegistered) {
    EXPECT_THAT(EmbeddedHost::registeredFileTypes(), ElementsAre("probe", "probe2"));
    EXPECT_EQ(Writer::Description::find("probe2"), &probe);
    EXPECT_STREQ(probe.label, "Probe");
    EXPECT_STREQ(probe.buildStamp, "Oct  9 2024 for 14.1");
    {
        const Writer::Description passing("passing\0", buildProbe);
        EXPECT_EQ(Writer::Description::find("passing"), &passing);
        EXPECT_STREQ(passing.label, "passing");
    }
    EXPECT_EQ(Writer::Description::find("passing"), nullptr);
    EXPECT_THAT([] { WriteNode("prob"); },
                ThrowsMessage<std::runtime_error>("No loaded plug-in writes files of type \"prob\""));
}

TEST(LoadPlugin, NamesTheFileThatCannotBeLoaded) {
    const TestSupport::TemporaryFolder folder;
    const auto text = folder / "not-a-library.so";
    std::ofstream(text) << "text";
    EXPECT_THAT([] { EmbeddedHost::loadPlugin("no/such/file.so"); },
                ThrowsMessage<std::runtime_error>(HasSubstr("no/such/file.so: ")));
    EXPECT_THAT([&] { EmbeddedHost::loadPlugin(text); },
                ThrowsMessage<std::runtime_error>(HasSubstr(text.string())));
}

TEST(Knobs, AreCreatedInOrderAndSetByLabelOrIndex) {
    WriteNode node("probe");
    EXPECT_THAT(node.texts(), ElementsAre("above", "below"));
    EXPECT_EQ(node.help(), "probes");
    EXPECT_THAT(node.menu("size"), ElementsAre("small", "large"));
    EXPECT_EQ(ProbeWriter::flags, 0x2000000);

    int seen = 0;
    ProbeWriter::body = [&](ProbeWriter& writer) { seen = writer.size; };
    TestPicture picture(1, 1, false, ramp);
    node.setMenu("size", "large");
    node.render(picture, "a.probe");
    EXPECT_EQ(seen, 1);
    node.setMenu("size", -7); // scripts can hold anything
    node.render(picture, "a.probe");
    EXPECT_EQ(seen, -7);
    EXPECT_EQ(node.menuIndex("size"), -7);

    EXPECT_THAT([&] { node.setMenu("size", "huge"); },
                ThrowsMessage<std::runtime_error>("The menu \"size\" has no item \"huge\""));
    EXPECT_THAT([&] { node.menu("colour"); },
                ThrowsMessage<std::runtime_error>("The writer has no menu \"colour\""));
}

TEST(Node, ServesASequenceWithOneWriter) {
    ProbeWriter::finished = 0;
    std::vector<std::string> files;
    ProbeWriter::body = [&](ProbeWriter& writer) {
        files.push_back(writer.filename() ? writer.filename() : "none");
    };
    {
        WriteNode node("probe");
        TestPicture picture(1, 1, false, ramp);
        for (const char* file : {"a.1.probe", "a.2.probe", ""})
            node.render(picture, file);
        EXPECT_EQ(ProbeWriter::finished, 0);
    }
    EXPECT_THAT(files, ElementsAre("a.1.probe", "a.2.probe", "none"));
    EXPECT_EQ(ProbeWriter::finished, 1);
}

TEST(Reports, AreFormattedAsPrintfDoes) {
    const RenderResult result = render([](ProbeWriter& writer) {
        writer.iop->warning("%d%% of %s", 50, "it");
        writer.iop->progressFraction(0.25, Op::StatusUseCallback);
        writer.iop->error("%s", std::string(5000, 'x').c_str());
        writer.iop->critical("%04d", 7);
        writer.iop->progressFraction(0.5);
    });
    EXPECT_THAT(result.warnings, ElementsAre("50% of it"));
    EXPECT_THAT(result.criticalErrors, ElementsAre(std::string(5000, 'x'), "0007"));
    EXPECT_THAT(result.progress, ElementsAre(0.25, 0.5));
    EXPECT_FALSE(result.succeeded());
    EXPECT_TRUE(render([](ProbeWriter& writer) { writer.iop->warning("careful"); }).succeeded());
}

TEST(Exceptions, BecomeTheFramesFailure) {
    EXPECT_THAT(render([](ProbeWriter&) { throw std::runtime_error("50%s"); }).criticalErrors,
                ElementsAre("50%s"));
    EXPECT_THAT(render([](ProbeWriter&) { throw 1; }).criticalErrors,
                ElementsAre("The writer failed with an exception of an unknown type"));
}

void readRow(ProbeWriter& writer, int y, Row& row) {
    const ChannelSet mask = writer.channel_mask(writer.depth());
    writer.input0().request(0, 0, writer.width(), writer.height(), mask, 1);
    writer.iop->inputnget(y, 0, writer.width(), mask, row);
}

TEST(Exceptions, OfThePictureArePassedOnWordForWord) {
    const TestPicture picture(1, 1, false,
                              [](auto...) -> float { throw std::runtime_error("a.%04d.exr is damaged"); });
    const RenderResult result = render(picture, [](ProbeWriter& writer) {
        try {
            Row row(0, 1);
            readRow(writer, 0, row);
        } catch (const std::exception& exception) {
            writer.iop->critical("taken for a failure of the writer: %s", exception.what());
        }
    });
    EXPECT_THAT(result.criticalErrors, ElementsAre("a.%04d.exr is damaged"));
}

TEST(Rows, HoldTheChannelsOfThePicture) {
    for (const bool alpha : {false, true}) {
        const RenderResult result = render({4, 3, alpha, ramp}, [&](ProbeWriter& writer) {
            EXPECT_EQ(writer.width(), 4);
            EXPECT_EQ(writer.height(), 3);
            EXPECT_EQ(writer.depth(), alpha ? 4 : 3);
            EXPECT_EQ(writer.channel_mask(writer.depth()).contains(Chan_Alpha), alpha);

            Row row(1, 3); // indexed by column, wherever it starts
            row.writable(Chan_Alpha)[2] = -1;
            writer.input0().request(1, 2, 3, 3, Mask_RGBA, 1);
            writer.iop->inputnget(2, 1, 3, Mask_RGBA, row);
            for (int x = 1; x < 3; ++x) {
                EXPECT_EQ(row[Chan_Red][x], 200 + 10 * x);
                EXPECT_EQ(row[Chan_Blue][x], 202 + 10 * x);
                EXPECT_EQ(row[Chan_Alpha][x], alpha ? 203 + 10 * x : 0);
            }
        });
        EXPECT_TRUE(result.succeeded());
    }
}

TEST(Rows, AreReadOnlyWithinTheRequest) {
    struct Reading {
        int y, x, r;
        ChannelSet channels;
    };
    for (const auto& [y, x, r, channels] : {Reading{0, 1, 3, Mask_RGB},
                                            {2, 1, 3, Mask_RGB},
                                            {1, 0, 3, Mask_RGB},
                                            {1, 1, 4, Mask_RGB},
                                            {1, 1, 3, Mask_RGBA}}) {
        const RenderResult result =
            render({4, 3, true, ramp}, [&, y = y, x = x, r = r, &channels = channels](ProbeWriter& writer) {
                Row row(0, 4);
                writer.input0().request(1, 1, 3, 2, Mask_RGB, 1);
                writer.iop->inputnget(y, x, r, channels, row);
            });
        EXPECT_THAT(result.criticalErrors, ElementsAre(HasSubstr("read but not requested")));
    }
}

/// What one pixel becomes in output channel `z`, written to the second of three floats.
float converted(Transfer transfer, bool premultiplied, int z, float sample, const float* alpha) {
    float result[] = {-5, -5, -5, -5, -5};
    const float samples[] = {sample, 0};
    const float alphas[] = {alpha ? *alpha : 0, 0};
    render(
        {1, 1, true, ramp},
        [&](ProbeWriter& writer) { writer.to_float(z, result + 1, samples, alpha ? alphas : nullptr, 2, 3); },
        {transfer, premultiplied});
    EXPECT_THAT(result, ElementsAre(-5, testing::_, -5, -5, 0)); // only every third float
    return result[1];
}

TEST(ToFloat, AppliesTheTransferFunction) {
    struct Sample {
        float linear, srgb, rec709;
    };
    // Worked out in double precision from the standards' formulas.
    for (const auto& [linear, srgb, rec709] : {Sample{-0.1f, -1.292f, -0.45f},
                                               {0, 0, 0},
                                               {0.001f, 0.01292f, 0.0045f},
                                               {0.0031308f, 0.04044994f, 0.0140886f},
                                               {0.01f, 0.09985282f, 0.045f},
                                               {0.018f, 0.14282568f, 0.08124794f},
                                               {0.18f, 0.46135613f, 0.40900773f},
                                               {0.5f, 0.73535698f, 0.70551509f},
                                               {1, 1, 1},
                                               {16, 3.29441622f, 3.72794028f}}) {
        EXPECT_EQ(converted(Transfer::None, false, 0, linear, nullptr), linear);
        EXPECT_NEAR(converted(Transfer::Srgb, false, 1, linear, nullptr), srgb, 1e-6) << linear;
        EXPECT_NEAR(converted(Transfer::Rec709, false, 2, linear, nullptr), rec709, 1e-6) << linear;
    }
}

TEST(ToFloat, DividesPremultipliedColourByAlpha) {
    constexpr float encodedHalf = 0.73535698f;
    struct Pixel {
        bool premultiplied;
        float sample, alpha, expected;
    };
    for (const auto& [premultiplied, sample, alpha, expected] :
         {Pixel{true, 0.25f, 0.5f, encodedHalf * 0.5f},
          {true, 1, 2, encodedHalf * 2},
          {true, 0.5f, 0, encodedHalf},     // glows without coverage
          {true, 0.5f, -0.5f, encodedHalf}, // cannot be a coverage
          {false, 0.5f, 0.25f, encodedHalf}})
        EXPECT_NEAR(converted(Transfer::Srgb, premultiplied, 0, sample, &alpha), expected, 1e-6)
            << sample << alpha;
    EXPECT_NEAR(converted(Transfer::Srgb, true, 0, 0.5f, nullptr), encodedHalf, 1e-6);
}

TEST(ToFloat, LeavesAloneWhatNeedsNoConversion) {
    constexpr float alpha = 0.1f; // 0.9f / 0.1f * 0.1f is not 0.9f again
    EXPECT_EQ(converted(Transfer::None, true, 0, 0.9f, &alpha), 0.9f);
    for (const Transfer transfer : {Transfer::None, Transfer::Srgb, Transfer::Rec709}) {
        EXPECT_EQ(converted(transfer, true, 3, alpha, &alpha), alpha);
        EXPECT_TRUE(std::isnan(converted(transfer, false, 0, std::nanf(""), nullptr)));
        EXPECT_EQ(converted(transfer, false, 0, std::numeric_limits<float>::infinity(), nullptr),
                  std::numeric_limits<float>::infinity());
    }
}

} // namespace

// The plug-in as a host meets it: loaded from its file, found by file type and driven frame by frame.
#include <DDImage/Writer.h>
#include <MediaConversion/MediaConversion.h>
#include <host/EmbeddedHost.h>
#include <plugin/OutputFormats.h>
#include <tests/Conversion.h>
#include <tests/MediaFile.h>
#include <tests/host/TestPicture.h>

using EmbeddedHost::PictureChannel;
using EmbeddedHost::RenderResult;
using EmbeddedHost::WriteNode;
using namespace testing;
using namespace TestSupport;

namespace {

constexpr char menuName[] = "Output format";

class ZetWriterTest : public Test {
protected:
    static void SetUpTestSuite() { EmbeddedHost::loadPlugin(ZET_PLUGIN_FILE); }

    RenderResult render(TestPicture picture, const std::string& label) {
        node.setMenu(menuName, label);
        return node.render(picture, file);
    }

    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "frame.zet";
    WriteNode node{"zet"};
};

/// Every sample of a small picture is an 8-bit level of its own; row 0 is the bottom one.
float level(PictureChannel channel, int x, int y) {
    return static_cast<float>(100 * y + 10 * x + static_cast<int>(channel)) / 255;
}

TEST_F(ZetWriterTest, ShowsFileTypesMenuVersionsAndHelp) {
    EXPECT_THAT(EmbeddedHost::registeredFileTypes(), ElementsAre("zet", "z9zt"));
    EXPECT_STREQ(DD::Image::Writer::Description::find("z9zt")->label, "zet");
    EXPECT_THAT(node.menu(menuName),
                ElementsAre("8-bit YCoCg DXT5", "8-bit YCbCr 4:2:0", "8-bit YCbCr 4:2:2",
                            "10-bit YCbCr 4:2:2", "12-bit RGB 4:4:4", "10-bit RGB 4:4:4", "8-bit RGB 4:4:4",
                            "8-bit RGB 4:4:4:4 (+ alpha)", "10/12-bit hybrid YCbCr 4:2:2:4 (+ alpha)"));
    EXPECT_EQ(node.menuIndex(menuName), 0);
    EXPECT_EQ(messageOf([&] { node.setMenu(menuName, "huge"); }),
              "The menu \"Output format\" has no item \"huge\"");
    EXPECT_EQ(messageOf([&] { node.menu("colour"); }), "The writer has no menu \"colour\"");
    EXPECT_THAT(node.texts(),
                ElementsAre("Writer Plugin version = 2.3.1\nMediaConversion Library version = 0.1.31 Beta"));
    EXPECT_THAT(node.help(), EndsWith("The zetWriter can output .zet or .9zt files"));
}

TEST_F(ZetWriterTest, WritesTheTopRowFirst) {
    const RenderResult result = render({3, 2, false, level}, "8-bit RGB 4:4:4");
    EXPECT_THAT(result.criticalErrors, IsEmpty());
    EXPECT_THAT(result.progress, ElementsAre(0, 0.15));
    EXPECT_EQ(bytesOf(file), (Bytes{'9', 'z', 't', ' ', 1,   1,   1,   0,   0x00, 0x02, 0, 0, // file
                                    3,   0,   0,   0,   2,   0,   0,   0,                     //
                                    3,   0,   1,   0,   2,   0,   0,   0,                     // frame
                                    100, 101, 102, 110, 111, 112, 120, 121, 122, // the host's row 1
                                    0,   1,   2,   10,  11,  12,  20,  21,  22}));
}

TEST_F(ZetWriterTest, WritesTheAlphaOrFullCoverage) {
    const auto pixelOf = [&](bool alpha, const EmbeddedHost::RenderSettings& settings) {
        TestPicture picture(1, 1, alpha, [](PictureChannel channel, auto...) {
            return channel == PictureChannel::Alpha ? 0.5f : 0.25f;
        });
        node.setMenu(menuName, "8-bit RGB 4:4:4:4 (+ alpha)");
        EXPECT_TRUE(node.render(picture, file, settings).succeeded());
        const Bytes bytes = bytesOf(file);
        return Bytes(bytes.begin() + 28, bytes.end());
    };
    EXPECT_THAT(pixelOf(true, {}), ElementsAre(64, 64, 64, 128));
    EXPECT_THAT(pixelOf(false, {}), ElementsAre(64, 64, 64, 255));
    // The host takes the colour to the display: 0.7354 * 0.5 * 255 = 93.8.
    EXPECT_THAT(pixelOf(true, {EmbeddedHost::Transfer::Srgb, true}), ElementsAre(94, 94, 94, 128));
}

TEST_F(ZetWriterTest, WritesInEveryFormatWhatTheLibraryMakes) {
    using F = Zentrel::FullFrameFormat;
    for (const OutputFormat& output : outputFormats) {
        TestPicture picture(8, 4, true, level);
        auto frame = Zentrel::FullFrame::create(F::BGRA_F32(), 4, 8);
        cv::Mat image = frame->image();
        constexpr PictureChannel order[] = {PictureChannel::Blue, PictureChannel::Green, PictureChannel::Red,
                                            PictureChannel::Alpha};
        for (int i = 0; i < 8 * 4 * 4; ++i)
            image.ptr<float>()[i] = level(order[i % 4], i / 4 % 8, 3 - i / 32);
        writeMediaFile(folder / "library.zet", encoded(std::move(frame), output.format()));

        EXPECT_TRUE(render(picture, output.label).succeeded());
        EXPECT_EQ(bytesOf(file), bytesOf(folder / "library.zet")) << output.label;
    }
}

TEST_F(ZetWriterTest, ReportsWhatFailsAndGoesOn) {
    EXPECT_THAT(
        render({6, 4, true, level}, "8-bit YCoCg DXT5").criticalErrors,
        ElementsAre("Frame format column pixel packing of 4 pixels is incompatible with supplied image "
                    "columns of 6"));
    const TestPicture damaged(1, 4, false, [](PictureChannel, int, int y) {
        return y == 1 ? throw std::runtime_error("row 1 is damaged") : 0.0f;
    });
    EXPECT_THAT(render(damaged, "8-bit RGB 4:4:4").criticalErrors, ElementsAre("row 1 is damaged"));

    TestPicture picture(1, 1, false, level);
    for (const int index : {-1, 9}) {
        node.setMenu(menuName, index);
        EXPECT_THAT(node.render(picture, file).criticalErrors,
                    ElementsAre("Output codec selection error, invalid ID " + std::to_string(index)));
    }
    EXPECT_FALSE(std::filesystem::exists(file));
    node.setMenu(menuName, "8-bit RGB 4:4:4");
    EXPECT_THAT(node.render(picture, "").criticalErrors, ElementsAre("Writer could not obtain filename"));
    EXPECT_THAT(node.render(picture, folder / "none/frame.zet").criticalErrors,
                ElementsAre("Failed to open file"));
    EXPECT_TRUE(node.render(picture, file).succeeded());
}

/// Makes the knob that it is given, or, going through the panel for another purpose, none.
class TestClosure : public DD::Image::Knob_Closure {
public:
    explicit TestClosure(DD::Image::Knob* made) : knob(made) {}

private:
    DD::Image::Knob* enumeration(int*, const char* const*, const char*, const char*) override { return knob; }
    DD::Image::Knob* text(const char*) override { return nullptr; }
    void setFlags(int flags) override {
        ASSERT_TRUE(knob) << "flags were set on a knob that was not made";
        knob->flags |= flags;
    }

    DD::Image::Knob* knob;
};

/// A node with an input of 2 x 2 pixels, which keeps what is asked of it.
class TestNode final : public DD::Image::Write {
public:
    TestNode(int channels, std::string output) : channelCount(channels), file(std::move(output)) {}

    DD::Image::Op* input(int) const override { return const_cast<TestNode*>(this); }
    const Info& info() const override { return size; }
    void request(int, int, int, int, const DD::Image::ChannelSet& channels, int) override {
        requested = channels;
    }
    const char* filename() const override { return file.c_str(); }
    void inputnget(int, int, int, const DD::Image::ChannelSet& channels, DD::Image::Row&) override {
        EXPECT_TRUE(requested.contains(channels));
    }
    int depth() const override { return channelCount; }
    bool premult() const override { return false; }
    void to_float(int z, float*, const float*, const float* alpha, int, int) const override {
        conversions += std::to_string(z) + (alpha ? "a" : "");
    }

    DD::Image::ChannelSet requested;
    mutable std::string conversions; ///< their channels, each with an "a" if with an alpha

private:
    const int channelCount;
    const std::string file;
    const Info size{DD::Image::Format(2, 2)};
};

std::unique_ptr<DD::Image::Writer> writerFor(DD::Image::Write* node) {
    return std::unique_ptr<DD::Image::Writer>(DD::Image::Writer::Description::find("zet")->constructor(node));
}

TEST_F(ZetWriterTest, SetsItsFlagOnTheMenuAlone) {
    DD::Image::Knob menu;
    for (auto* const made : {&menu, static_cast<DD::Image::Knob*>(nullptr)}) {
        TestClosure closure(made);
        writerFor(nullptr)->knobs(closure);
    }
    EXPECT_EQ(menu.flags, 0x2000000);
}

TEST_F(ZetWriterTest, AsksTheHostForAtMostFourChannels) {
    for (const int channels : {3, 4, 5}) {
        TestNode host(channels, file.string());
        const auto writer = writerFor(&host);
        TestClosure closure(nullptr);
        writer->knobs(closure);
        writer->execute(); // fails: the menu's first format needs blocks of 4 x 4
        const auto reports = host.takeReports();
        EXPECT_EQ(reports.errors.size(), 1u);
        const bool alpha = channels > 3;
        EXPECT_TRUE(host.requested.contains(alpha ? DD::Image::Mask_RGBA : DD::Image::Mask_RGB));
        EXPECT_EQ(host.requested.contains(DD::Image::Chan_Alpha), alpha);
        EXPECT_EQ(host.conversions, alpha ? "0a1a2a3a0a1a2a3a" : "012012"); // of two rows
        ASSERT_EQ(reports.progress.size(), 2u);
        for (const auto& step : reports.progress)
            EXPECT_EQ(static_cast<int>(step.flags), 2);
    }
}

} // namespace

// The plug-in as a host meets it: loaded from its file, found by file type and driven frame by frame.
#include <DDImage/Writer.h>
#include <MediaConversion/MediaConversion.h>
#include <host/EmbeddedHost.h>
#include <plugin/OutputFormats.h>
#include <tests/TestSupport.h>
#include <tests/host/TestPicture.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using EmbeddedHost::PictureChannel;
using EmbeddedHost::RenderResult;
using EmbeddedHost::WriteNode;
using namespace testing;
using namespace TestSupport;

namespace {

constexpr char menuName[] = "Output format";

using Bytes = std::vector<std::uint8_t>;

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
        FrameSinkDestination destination;
        MediaConversion::Encoder encoder(F::BGRA_F32(), output.format());
        encoder.connect(&destination);
        encoder.start();
        encoder.encodeFrame(std::move(frame));
        MediaConversion::FileStreamFactory streams;
        MediaConversion::ZentrelMediaFileWriter(streams).writeFrame(folder / "library.zet",
                                                                    destination.frame());

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

/// The panel is gone through for another purpose than creating knobs.
class RefreshingClosure : public DD::Image::Knob_Closure {
    DD::Image::Knob* enumeration(int*, const char* const*, const char*, const char*) override {
        return nullptr;
    }
    DD::Image::Knob* text(const char*) override { return nullptr; }
    void setFlags(int) override { ADD_FAILURE() << "flags were set on a knob that was not made"; }
};

TEST_F(ZetWriterTest, SetsNoFlagsWithoutAKnob) {
    RefreshingClosure closure;
    const auto* const description = DD::Image::Writer::Description::find("zet");
    std::unique_ptr<DD::Image::Writer>(description->constructor(nullptr))->knobs(closure);
}

} // namespace

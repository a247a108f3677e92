// The plug-in as a host meets it: loaded from its file, found by file type and driven frame by frame.
#include <DDImage/Writer.h>
#include <MediaConversion/MediaConversion.h>
#include <host/EmbeddedHost.h>
#include <plugin/OutputFormats.h>
#include <tests/TestSupport.h>
#include <tests/host/TestPicture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using EmbeddedHost::PictureChannel;
using EmbeddedHost::RenderResult;
using EmbeddedHost::WriteNode;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using TestSupport::bytesOf;

namespace {

constexpr char menuName[] = "Output format";

using Bytes = std::vector<std::uint8_t>;

class ZetWriterTest : public testing::Test {
protected:
    static void SetUpTestSuite() { EmbeddedHost::loadPlugin(ZET_PLUGIN_FILE); }

    RenderResult render(TestPicture picture, const std::string& label) {
        node.setMenu(menuName, label);
        return node.render(picture, file);
    }

    const TestSupport::TemporaryFolder folder;
    const std::filesystem::path file = folder / "frame.zet";
    WriteNode node{"zet"};
};

/// Every sample of a small picture is an 8-bit level of its own; row 0 is the bottom one.
float level(PictureChannel channel, int x, int y) {
    return static_cast<float>(100 * y + 10 * x + static_cast<int>(channel)) / 255;
}

TEST_F(ZetWriterTest, RegistersBothFileTypes) {
    EXPECT_THAT(EmbeddedHost::registeredFileTypes(), ElementsAre("zet", "z9zt"));
    const auto* description = DD::Image::Writer::Description::find("z9zt");
    ASSERT_NE(description, nullptr);
    EXPECT_STREQ(description->label, "zet");
    EXPECT_STREQ(description->buildStamp, "Oct  9 2024 for 14.1");
}

TEST_F(ZetWriterTest, ShowsMenuVersionsAndHelp) {
    EXPECT_THAT(node.menu(menuName),
                ElementsAre("8-bit YCoCg DXT5", "8-bit YCbCr 4:2:0", "8-bit YCbCr 4:2:2",
                            "10-bit YCbCr 4:2:2", "12-bit RGB 4:4:4", "10-bit RGB 4:4:4", "8-bit RGB 4:4:4",
                            "8-bit RGB 4:4:4:4 (+ alpha)", "10/12-bit hybrid YCbCr 4:2:2:4 (+ alpha)"));
    EXPECT_EQ(node.menuIndex(menuName), 0);
    EXPECT_THAT(node.texts(),
                ElementsAre("Writer Plugin version = 2.3.1\nMediaConversion Library version = 0.1.31 Beta"));
    const std::string help = node.help();
    EXPECT_THAT(
        help,
        EndsWith(".9zt and .zet file formats used by the media server\r\n"
                 "Notes:\r\n"
                 "Due to a requirement in Nuke for any filewriter plugins output extensions to begin with a "
                 "letter (i.e. .tga or .dpx NOT .9zt)\r\n"
                 " these files are called .zet files. \r\n"
                 "The zetWriter can output .zet or .9zt files"));
    EXPECT_EQ(std::count(help.begin(), help.end(), '\n'), 5);
}

TEST_F(ZetWriterTest, WritesTheTopRowFirst) {
    TestPicture picture(3, 2, false, level);
    node.setMenu(menuName, "8-bit RGB 4:4:4");
    const RenderResult result = node.render(picture, file);
    EXPECT_THAT(result.criticalErrors, IsEmpty());
    EXPECT_THAT(result.progress, ElementsAre(0, 0.15));
    EXPECT_THAT(picture.rowsRead, ElementsAre(1, 0));
    EXPECT_EQ(bytesOf(file), (Bytes{'9', 'z', 't', ' ', 1,   1,   1,   0,   0x00, 0x02, 0, 0, // file
                                    3,   0,   0,   0,   2,   0,   0,   0,                     //
                                    3,   0,   1,   0,   2,   0,   0,   0,                     // frame
                                    100, 101, 102, 110, 111, 112, 120, 121, 122, // the host's row 1
                                    0,   1,   2,   10,  11,  12,  20,  21,  22}));
}

TEST_F(ZetWriterTest, WritesTheAlphaOrFullCoverage) {
    for (const bool alpha : {true, false}) {
        EXPECT_TRUE(render({1, 2, alpha, level}, "8-bit RGB 4:4:4:4 (+ alpha)").succeeded());
        const std::uint8_t top = alpha ? 103 : 255;
        const std::uint8_t bottom = alpha ? 3 : 255;
        EXPECT_EQ(bytesOf(file), (Bytes{'9', 'z', 't', ' ',   1, 1, 1, 0, 0x04, 0x02, 0, 0, //
                                        1,   0,   0,   0,     2, 0, 0, 0,                   //
                                        1,   0,   1,   0,     2, 0, 0, 0,                   //
                                        100, 101, 102, top,                                 //
                                        0,   1,   2,   bottom}));
    }
}

TEST_F(ZetWriterTest, HasTheHostConvertPremultipliedColour) {
    const TestPicture picture(1, 1, true, [](PictureChannel channel, auto...) {
        return channel == PictureChannel::Alpha ? 0.5f : 0.25f;
    });
    node.setMenu(menuName, "8-bit RGB 4:4:4:4 (+ alpha)");
    TestPicture source = picture;
    EXPECT_TRUE(node.render(source, file, {EmbeddedHost::Transfer::Srgb, true}).succeeded());
    const Bytes bytes = bytesOf(file);
    EXPECT_EQ(Bytes(bytes.begin() + 28, bytes.end()), (Bytes{94, 94, 94, 128})); // 0.7354 * 0.5 * 255 = 93.8
}

/// What the library makes of the picture without the plug-in.
Bytes fileOfTheLibrary(TestPicture picture, const Zentrel::FrameFormat& format,
                       const std::filesystem::path& path) {
    auto frame =
        Zentrel::FullFrame::create(Zentrel::FullFrameFormat::BGRA_F32(), picture.height(), picture.width());
    cv::Mat image = frame->image();
    constexpr PictureChannel order[] = {PictureChannel::Blue, PictureChannel::Green, PictureChannel::Red,
                                        PictureChannel::Alpha};
    for (int y = 0; y < image.rows; ++y)
        for (int x = 0; x < image.cols; ++x)
            for (int channel = 0; channel < 4; ++channel)
                picture.readRow(image.rows - 1 - y, x, x + 1, order[channel],
                                image.ptr<float>(y, x) + channel);

    FrameSinkDestination destination;
    MediaConversion::Encoder encoder(Zentrel::FullFrameFormat::BGRA_F32(), format);
    encoder.connect(&destination);
    encoder.start();
    encoder.encodeFrame(std::move(frame));
    MediaConversion::FileStreamFactory streams;
    MediaConversion::ZentrelMediaFileWriter(streams).writeFrame(path, destination.frame());
    return bytesOf(path);
}

TEST_F(ZetWriterTest, WritesInEveryFormatWhatTheLibraryMakes) {
    const TestPicture picture(8, 4, true, level);
    for (const OutputFormat& output : outputFormats) {
        SCOPED_TRACE(output.label);
        EXPECT_THAT(render(picture, output.label).criticalErrors, IsEmpty());
        EXPECT_EQ(bytesOf(file), fileOfTheLibrary(picture, output.format(), folder / "library.zet"));
    }
}

TEST_F(ZetWriterTest, ReportsWhatTheLibraryRefuses) {
    EXPECT_THAT(
        render({6, 4, true, level}, "8-bit YCoCg DXT5").criticalErrors,
        ElementsAre("Frame format column pixel packing of 4 pixels is incompatible with supplied image "
                    "columns of 6"));
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(ZetWriterTest, RefusesAMenuIndexOutOfRange) {
    for (const int index : {-1, 9}) {
        TestPicture picture(1, 1, false, level);
        node.setMenu(menuName, index);
        EXPECT_THAT(node.render(picture, file).criticalErrors,
                    ElementsAre("Output codec selection error, invalid ID " + std::to_string(index)));
        EXPECT_THAT(picture.rowsRead, IsEmpty());
        EXPECT_FALSE(std::filesystem::exists(file));
    }
}

TEST_F(ZetWriterTest, ReportsFilesThatItCannotWriteAndGoesOn) {
    TestPicture picture(1, 1, false, level);
    node.setMenu(menuName, "8-bit RGB 4:4:4");
    EXPECT_THAT(node.render(picture, "").criticalErrors, ElementsAre("Writer could not obtain filename"));
    EXPECT_THAT(node.render(picture, folder.path()).criticalErrors, ElementsAre("Failed to open file"));
    EXPECT_THAT(node.render(picture, folder / "none/frame.zet").criticalErrors,
                ElementsAre("Failed to open file"));
    EXPECT_TRUE(node.render(picture, file).succeeded());
}

TEST_F(ZetWriterTest, WritesNothingWhenThePictureCannotBeRead) {
    const TestPicture damaged(1, 4, false, [](PictureChannel, int, int y) {
        return y == 1 ? throw std::runtime_error("row 1 is damaged") : 0.0f;
    });
    EXPECT_THAT(render(damaged, "8-bit RGB 4:4:4").criticalErrors, ElementsAre("row 1 is damaged"));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_TRUE(render({1, 4, false, level}, "8-bit RGB 4:4:4").succeeded());
}

TEST_F(ZetWriterTest, ServesNodesOnSeveralThreads) {
    TestPicture picture(64, 32, true, level);
    node.setMenu(menuName, "8-bit RGB 4:4:4");
    ASSERT_TRUE(node.render(picture, file).succeeded());
    const Bytes expected = bytesOf(file);

    std::vector<std::future<void>> jobs;
    for (int job = 0; job < 4; ++job)
        jobs.push_back(std::async(std::launch::async, [&, job] {
            WriteNode ownNode("zet");
            ownNode.setMenu(menuName, "8-bit RGB 4:4:4");
            TestPicture ownPicture(64, 32, true, level);
            const auto ownFile = folder / (std::to_string(job) + ".zet");
            for (int frame = 0; frame < 8; ++frame) {
                EXPECT_TRUE(ownNode.render(ownPicture, ownFile).succeeded());
                EXPECT_EQ(bytesOf(ownFile), expected);
            }
        }));
}

/// A host of a Write node whose input breaks down.
class BrokenWrite : public DD::Image::Write {
public:
    Op* input(int) const override { return const_cast<BrokenWrite*>(this); }
    const Info& info() const override { return size; }
    void request(int x, int y, int r, int t, const DD::Image::ChannelSet& channels, int count) override {
        requested = {x, y, r, t, count};
        alphaRequested = channels.contains(DD::Image::Chan_Alpha);
    }
    const char* filename() const override { return nullptr; }
    void inputnget(int, int, int, const DD::Image::ChannelSet&, DD::Image::Row&) override {
        throw std::runtime_error("100%% lost");
    }
    int depth() const override { return 5; }
    bool premult() const override { return false; }
    void to_float(int, float*, const float*, const float*, int, int) const override {}

    std::vector<int> requested;
    bool alphaRequested = false;

private:
    Info size{DD::Image::Format(7, 5)};
};

/// The panel is gone through for another purpose than creating knobs.
class RefreshingClosure : public DD::Image::Knob_Closure {
    DD::Image::Knob* enumeration(int*, const char* const*, const char*, const char*) override {
        return nullptr;
    }
    DD::Image::Knob* text(const char*) override { return nullptr; }
    void setFlags(int) override { ADD_FAILURE() << "flags were set on a knob that was not made"; }
};

TEST_F(ZetWriterTest, KeepsToTheHostsProtocol) {
    BrokenWrite write;
    const std::unique_ptr<DD::Image::Writer> writer(
        DD::Image::Writer::Description::find("zet")->constructor(&write));
    RefreshingClosure closure;
    writer->knobs(closure);

    writer->execute();
    EXPECT_THAT(write.requested, ElementsAre(0, 0, 7, 5, 1));
    EXPECT_TRUE(write.alphaRequested);
    EXPECT_THAT(write.takeReports().errors, ElementsAre("100% lost")); // the message is the format
}

} // namespace

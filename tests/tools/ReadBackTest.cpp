// "zet write --verify" and "--manifest": what is read back of files that were just written.
#include <pictures/FormatChoice.h>
#include <tests/tools/TestPictureFile.h>
#include <tests/tools/ToolProcess.h>
#include <tools/zet/Checksum.h>
#include <tools/zet/Manifest.h>
#include <tools/zet/PictureFile.h>
#include <tools/zet/ReadBack.h>

#include <tuple>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;
using ZetTool::Manifest;

namespace {

class ReadBackTest : public Test, public ToolFolder {
protected:
    ProcessResult write(const std::string& arguments) const { return zet("write " + arguments); }
    /// The one in the manifest; empty when there is none.
    std::string checksum(const std::string& name) const {
        const auto sums = Manifest::load(folder / "m").sums;
        const auto found = sums.find(name);
        return found == sums.end() ? "" : found->second.checksum;
    }
};

TEST_F(ReadBackTest, FindsNothingWrongWithGoodFiles) {
    const auto sample = [](int x, int y, int channel) {
        return channel == 3 ? 0.25f * static_cast<float>(y) : 0.07f * static_cast<float>(x - y + channel);
    };
    writePictureFile(folder / "linear.exr", pictureSpec(8, 8, {"R", "G", "B", "A"}, OIIO::TypeFloat), sample);
    auto straight = pictureSpec(8, 8, {"R", "G", "B", "A"}, OIIO::TypeUInt16);
    straight.attribute("oiio:UnassociatedAlpha", 1);
    writePictureFile(folder / "straight.tif", straight, sample);
    for (const std::string picture : {"linear.exr", "straight.tif"})
        for (const auto& output : outputFormats) {
            const ProcessResult result =
                write(picture + " -o f.zet --transfer srgb --verify -f " + output.shortName);
            EXPECT_EQ(result.exitCode, 0) << result.errors;
            EXPECT_THAT(result.output, HasSubstr("wrote and verified f.zet"));
        }
}

TEST_F(ReadBackTest, TellsWhereAFileDiffers) {
    writePictureFile(folder / "p.png", pictureSpec(8, 4, {"R", "G", "B"}, OIIO::TypeUInt8),
                     [](int x, int, int) { return static_cast<float>(x) / 255; });
    const auto verify = [&](const std::string& format) {
        ZetTool::Picture picture = ZetTool::readPicture(folder / "p.png");
        return ZetTool::verifyFile(folder / "f.zet", picture, {}, ZetTool::findOutputFormat(format));
    };
    // The offset of the byte that is changed. All pixel bytes of column 0 are 0.
    for (const auto& [format, offset, told] : {
             std::tuple{std::string("rgb8"), 0, "Magic"},
             {"rgb8", 22, "at offset 22 is 153"},
             {"rgb8", 28 + 8 * 3 + 5, "offset 57 is 0x99, expected 0x01"},
             {"rgba8", 28 + 8 * 4 * 4 - 1, "offset 155 is 0x99, expected 0xFF"},
             {"420", 28 + 48 - 1, "offset 75 is 0x99, expected 0x"},
         }) {
        ASSERT_EQ(write("p.png -o f.zet -f " + format).exitCode, 0);
        EXPECT_EQ(verify(format), ZetTool::sumFile(folder / "f.zet"));
        overwrite("f.zet", offset, 0x99);
        EXPECT_THAT(messageOf([&, name = format] { verify(name); }), HasSubstr(told))
            << format << ' ' << offset;
    }
    ASSERT_EQ(write("p.png -o f.zet -f rgb10").exitCode, 0); // a whole file
    EXPECT_THAT(messageOf([&] { verify("rgba8"); }),
                HasSubstr("holds 8x4 pixels of RGB_U10_RGB-DPX-FILLED, expected 8x4 of RGBA_U8_RGBA"));
}

TEST_F(ReadBackTest, AFileThatIsNotWhatWasConvertedNeverAppears) {
    writePictureFile(folder / "black.png", pictureSpec(6, 4, {"R", "G", "B"}, OIIO::TypeUInt8),
                     [](int, int, int) { return 0.0f; });
    const std::string call = "black.png -o f.zet -f rgb8 --manifest m --plugin " FAULTY_WRITER;
    ASSERT_EQ(write(call).exitCode, 0);
    EXPECT_NE(checksum("f.zet"), "");
    fs::remove(folder / "f.zet");
    fs::remove(folder / "m");

    const ProcessResult result = write(call + " --verify");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("frame 1: f.zet: read back, it is not what was written: the pixel "
                                         "byte at offset 68 is 0x07, expected 0x00"));
    EXPECT_FALSE(fs::exists(folder / "f.zet"));
    EXPECT_EQ(checksum("f.zet"), "");
}

TEST_F(ReadBackTest, SumsAreThoseOfTheWholeFile) {
    EXPECT_EQ(ZetTool::sumBytes("", 0).checksum, "99aa06d3014798d86001c324468d497f"); // as published
    for (const std::size_t bytes : {0u, 1u, 1u << 20, (1u << 20) + 1, 3000000u}) {
        std::string content(bytes, 'a');
        for (std::size_t i = 0; i < bytes; i += 7)
            content[i] = static_cast<char>(i >> 3);
        std::ofstream(folder / "f", std::ios::binary) << content;
        EXPECT_EQ(ZetTool::sumFile(folder / "f"), ZetTool::sumBytes(content.data(), bytes)) << bytes;
    }
    EXPECT_THAT(messageOf([&] { ZetTool::sumFile(folder.path()); }), HasSubstr("cannot be read"));
}

TEST_F(ReadBackTest, AManifestStaysTrueOverManyRuns) {
    const auto writeFrames = [&](const std::string& arguments) {
        const ProcessResult result = write("-o \"it's %d.zet\" -f rgb8 " + arguments);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return result.output;
    };
    writeFrames("--chart 16x8 --frames 1-5 --manifest m");
    writeFrames("--chart 16x8 --frames 6 --manifest m --verify");
    writeFrames("--chart 8x8 --frames 4 --manifest m");
    writeFrames("--chart 16x8 --frames 7");
    EXPECT_EQ(Manifest::load(folder / "m").sums.size(), 6u);
    EXPECT_EQ(Manifest::load(folder / "m").sums.at("it's 4.zet").bytes, 220u);

    overwrite("it's 2.zet", 100, 1);
    fs::resize_file(folder / "it's 3.zet", 200);
    std::ofstream(folder / "m", std::ios::app) << std::string(32, '0') + " 412 it's 1.z"; // by a killed run
    EXPECT_THAT(writeFrames("--chart 16x8 --frames 1-7 --manifest m --resume"),
                HasSubstr("whole already: 3 frames"));
    const Manifest manifest = Manifest::load(folder / "m");
    for (int frame = 1; frame <= 7; ++frame)
        EXPECT_EQ(manifest.faultOf(folder / ("it's " + std::to_string(frame) + ".zet")), "") << frame;
}

TEST_F(ReadBackTest, NoForeignFileIsTakenForAManifest) {
    std::ofstream(folder / "picture.exr") << "dear picture";
    for (const std::string manifest : {"picture.exr", "none/m", "."}) {
        expectRefused("write --chart 8x8 -o %d.zet -f rgb8 --manifest " + manifest, "\"" + manifest + "\"");
        EXPECT_FALSE(fs::exists(folder / "1.zet")) << manifest;
    }
    EXPECT_EQ(bytesOf(folder / "picture.exr").size(), 12u);
}

} // namespace

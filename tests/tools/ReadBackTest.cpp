// "zet write --verify" and "--manifest": what is read back of files that were just written.
#include <pictures/FormatChoice.h>
#include <tests/TestSupport.h>
#include <tests/tools/TestPictureFile.h>
#include <tests/tools/ToolProcess.h>
#include <tools/zet/Checksum.h>
#include <tools/zet/Manifest.h>
#include <tools/zet/PictureFile.h>
#include <tools/zet/ReadBack.h>

#include <chrono>
#include <csignal>
#include <thread>
#include <tuple>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;
using ZetTool::Manifest;

namespace {

class ReadBackTest : public Test {
protected:
    std::vector<std::string> writing(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {ZET_PROGRAM, "write"});
        return arguments;
    }
    ProcessResult write(const std::vector<std::string>& arguments) const {
        return Process(writing(arguments), folder.path()).wait();
    }
    void overwrite(const std::string& name, std::streamoff offset, char byte) const {
        std::fstream stream(folder / name, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(offset).put(byte);
    }
    /// The one in the manifest; empty when there is none.
    std::string checksum(const std::string& name) const {
        const auto sums = Manifest::load(folder / "m").sums;
        const auto found = sums.find(name);
        return found == sums.end() ? "" : found->second.checksum;
    }

    const TemporaryFolder folder;
};

TEST_F(ReadBackTest, FindsNothingWrongWithGoodFiles) {
    const auto sample = [](int x, int y, int channel) {
        return channel == 3 ? 0.25f * static_cast<float>(y) : 0.07f * static_cast<float>(x - y + channel);
    };
    writePictureFile(folder / "linear.exr", pictureSpec(8, 8, {"R", "G", "B", "A"}, OIIO::TypeFloat), sample);
    auto straight = pictureSpec(8, 8, {"R", "G", "B", "A"}, OIIO::TypeUInt16);
    straight.attribute("oiio:UnassociatedAlpha", 1);
    writePictureFile(folder / "straight.tif", straight, sample);
    for (const char* picture : {"linear.exr", "straight.tif"})
        for (const auto& output : outputFormats) {
            const ProcessResult result =
                write({picture, "-o", "f.zet", "-f", output.shortName, "--transfer", "srgb", "--verify"});
            EXPECT_EQ(result.exitCode, 0) << result.errors;
            EXPECT_THAT(result.output, HasSubstr("wrote and verified f.zet"));
        }
}

TEST_F(ReadBackTest, TellsWhereAFileDiffers) {
    writePictureFile(folder / "p.png", pictureSpec(8, 4, {"R", "G", "B"}, OIIO::TypeUInt8),
                     [](int x, int, int) { return static_cast<float>(x) / 255; });
    const auto verify = [&](const char* format) {
        ZetTool::Picture picture = ZetTool::readPicture(folder / "p.png");
        return ZetTool::verifyFile(folder / "f.zet", picture, {}, ZetTool::findOutputFormat(format));
    };
    // The offset of the byte that is changed. All pixel bytes of column 0 are 0.
    for (const auto& [format, offset, told] : {
             std::tuple{"rgb8", 0, "Magic"},
             {"rgb8", 22, "at offset 22 is 153"},
             {"rgb8", 28 + 8 * 3 + 5, "offset 57 is 0x99, expected 0x01"},
             {"rgba8", 28 + 8 * 4 * 4 - 1, "offset 155 is 0x99, expected 0xFF"},
             {"420", 28 + 48 - 1, "offset 75 is 0x99, expected 0x"},
         }) {
        ASSERT_EQ(write({"p.png", "-o", "f.zet", "-f", format}).exitCode, 0);
        EXPECT_EQ(verify(format), ZetTool::sumFile(folder / "f.zet"));
        overwrite("f.zet", offset, static_cast<char>(0x99));
        EXPECT_THAT(messageOf([&, name = format] { verify(name); }), HasSubstr(told))
            << format << ' ' << offset;
    }
    ASSERT_EQ(write({"p.png", "-o", "f.zet", "-f", "rgb10"}).exitCode, 0); // a whole file
    EXPECT_THAT(messageOf([&] { verify("rgba8"); }),
                HasSubstr("holds 8x4 pixels of RGB_U10_RGB-DPX-FILLED, expected 8x4 of RGBA_U8_RGBA"));
}

TEST_F(ReadBackTest, AFileThatIsNotWhatWasConvertedNeverAppears) {
    writePictureFile(folder / "black.png", pictureSpec(6, 4, {"R", "G", "B"}, OIIO::TypeUInt8),
                     [](int, int, int) { return 0.0f; });
    std::vector<std::string> call{"black.png", "-o",          "f.zet",      "-f", "rgb8",
                                  "--plugin",  FAULTY_WRITER, "--manifest", "m"};
    ASSERT_EQ(write(call).exitCode, 0);
    EXPECT_NE(checksum("f.zet"), "");
    fs::remove(folder / "f.zet");

    call.push_back("--verify");
    const ProcessResult result = write(call);
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
    const auto writeFrames = [&](const char* frames, std::vector<std::string> more) {
        more.insert(more.end(), {"--chart", "16x8", "-o", "it's %d.zet", "-f", "rgb8", "--frames", frames});
        const ProcessResult result = write(more);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
    };
    const auto sumOf = [&](const char* name) { return ZetTool::sumFile(folder / name).checksum; };
    writeFrames("1-4", {"--manifest", "m"});
    writeFrames("5-6", {"--manifest", "m", "--verify"});
    writeFrames("7", {});
    EXPECT_EQ(Manifest::load(folder / "m").sums.size(), 6u);
    EXPECT_EQ(checksum("it's 4.zet"), sumOf("it's 4.zet"));
    EXPECT_EQ(checksum("it's 5.zet"), sumOf("it's 5.zet"));

    // Whole files keep their entries, so that damage does not become truth; other files get new ones.
    const std::string whole = checksum("it's 2.zet");
    overwrite("it's 2.zet", 100, 1);
    fs::resize_file(folder / "it's 3.zet", 200);
    writeFrames("1-7", {"--manifest", "m", "--resume"});
    EXPECT_EQ(checksum("it's 2.zet"), whole);
    EXPECT_NE(sumOf("it's 2.zet"), whole);
    EXPECT_EQ(checksum("it's 3.zet"), sumOf("it's 3.zet"));
    EXPECT_EQ(checksum("it's 7.zet"), sumOf("it's 7.zet"));
}

TEST_F(ReadBackTest, AKilledRunLeavesNoWrongEntry) {
    const std::vector<std::string> call{"--chart", "64x64", "-o",         "%d.zet", "-f",
                                        "rgb8",    "-j1",   "--manifest", "m",      "--frames"};
    auto few = call, many = call;
    few.push_back("1-3,2000000");
    many.push_back("1-100000");
    ASSERT_EQ(write(few).exitCode, 0);
    fs::remove(folder / "1.zet");
    Process process(writing(many), folder.path());
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!fs::exists(folder / "1.zet") && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    process.send(SIGKILL);
    process.wait();
    EXPECT_EQ(checksum("1.zet") + checksum("2.zet") + checksum("3.zet"), "");
    EXPECT_NE(checksum("2000000.zet"), ""); // not one of the run's files
}

TEST_F(ReadBackTest, NoForeignFileIsTakenForAManifest) {
    std::ofstream(folder / "picture.exr") << "dear picture";
    for (const std::string manifest : {"picture.exr", "none/m", "."}) {
        const ProcessResult result =
            write({"--chart", "8x8", "-o", "%d.zet", "-f", "rgb8", "--manifest", manifest});
        EXPECT_EQ(result.exitCode, 2) << manifest;
        EXPECT_THAT(result.errors, HasSubstr("\"" + manifest + "\""));
        EXPECT_FALSE(fs::exists(folder / "1.zet")) << manifest;
    }
    EXPECT_EQ(bytesOf(folder / "picture.exr").size(), 12u);
}

} // namespace

// "zet info" and "zet formats" as their users run them.
#include <tests/tools/ToolProcess.h>

#include <nlohmann/json.hpp>

#include <map>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;
using nlohmann::json;

namespace {

class InfoCommandTest : public Test, public ToolFolder {
protected:
    void makeFiles(const std::string& arguments) const {
        ASSERT_EQ(zet("write --chart " + arguments).errors, "");
    }
};

TEST_F(InfoCommandTest, DrawsTogetherWhatIsAlike) {
    makeFiles("16x8 -o s.%04d.zet -f dxt5 --frames 8-11,14");
    makeFiles("32x8 -o s.%04d.zet -f 4224 --frames 12");
    makeFiles("16x8 -o t%d.zet -f rgb12 --frames 9-10");
    makeFiles("16x8 -o 7.zet -f rgb8 --frames 1");
    fs::rename(folder / "7.zet", folder / "7%d.zet"); // the name of one file

    EXPECT_EQ(zet("info s.####.zet").output,
              "s.####.zet  8-11  8-bit YCoCg DXT5                          16x8  version 1.0  "
              "bits 0x20000000  4 x 156 bytes\n"
              "s.0012.zet        10/12-bit hybrid YCbCr 4:2:2:4 (+ alpha)  32x8  version 1.0  "
              "bits 0x0001100C     1052 bytes\n"
              "s.0014.zet        8-bit YCoCg DXT5                          16x8  version 1.0  "
              "bits 0x20000000      156 bytes\n"
              "6 files, 1.8 kB\n");
    // As a shell spells them out: names decide what is a sequence.
    EXPECT_EQ(zet("info s.0008.zet s.0009.zet t9.zet t10.zet").output,
              "s.%04d.zet  8-9   8-bit YCoCg DXT5  16x8  version 1.0  bits 0x20000000  2 x 156 bytes\n"
              "t%d.zet     9-10  12-bit RGB 4:4:4  16x8  version 1.0  bits 0x00010200  2 x 604 bytes\n"
              "4 files, 1.5 kB\n");
    EXPECT_EQ(zet("info 7%d.zet").output,
              "7%d.zet  8-bit RGB 4:4:4  16x8  version 1.0  bits 0x00000200  412 bytes\n");
}

TEST_F(InfoCommandTest, NamesEachFileThatIsNotInOrder) {
    makeFiles("16x8 -o s.%d.zet -f rgb8 --frames 1-3");
    fs::resize_file(folder / "s.2.zet", 100);
    std::ofstream(folder / "s.4.zet") << "this is a text that has nothing to do with media";
    const ProcessResult result = zet("info s.%d.zet none/1.zet none.%d.zet .");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr("s.%d.zet  1,3  8-bit RGB 4:4:4"));
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("zet: s.2.zet: File of 100 bytes is 312 bytes too short"),
                      HasSubstr("zet: s.4.zet: Magic"), HasSubstr("zet: none/1.zet: does not exist\n"),
                      HasSubstr("zet: none.%d.zet: does not exist\n"), HasSubstr("zet: .: Expected a file")));

    const ProcessResult machine = zet("info --json s.%d.zet");
    EXPECT_EQ(machine.exitCode, 1);
    const json files = json::parse(machine.output);
    ASSERT_EQ(files.size(), 4u);
    EXPECT_EQ(files[0], (json{{"file", "s.1.zet"},
                              {"format", "8-bit RGB 4:4:4"},
                              {"layout", "RGB_U8_RGB"},
                              {"formatBits", 0x200},
                              {"width", 16},
                              {"height", 8},
                              {"version", "1.0"},
                              {"frameCount", 1},
                              {"targetFrameCount", 1},
                              {"frameFlags", 1},
                              {"pixelOffset", 28},
                              {"bytes", 412}}));
    EXPECT_THAT(files[1].at("fault").get<std::string>(), HasSubstr("too short"));
}

TEST_F(InfoCommandTest, FormatsTellsWhatEachCosts) {
    const std::map<std::string, double> bytesPerPixel{{"dxt5", 1},     {"420", 1.5},   {"422", 2},
                                                      {"422-10", 2.5}, {"rgb12", 4.5}, {"rgb10", 4},
                                                      {"rgb8", 3},     {"rgba8", 4},   {"4224", 4}};
    const ProcessResult result = zet("formats --json --chain --size 3840x2160 --rate 59.94");
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    const json formats = json::parse(result.output);
    ASSERT_EQ(formats.size(), bytesPerPixel.size());
    for (const json& format : formats) {
        const std::string name = format.at("name");
        const double fileBytes = 28 + bytesPerPixel.at(name) * 3840 * 2160;
        EXPECT_EQ(format.at("alpha"), name == "rgba8" || name == "4224") << name;
        EXPECT_EQ(format.at("bytesPerPixel"), bytesPerPixel.at(name)) << name;
        EXPECT_EQ(format.at("fileBytes"), fileBytes) << name;
        EXPECT_NEAR(format.at("megabytesPerSecond"), fileBytes * 59.94 / 1e6, 1e-3) << name;
        EXPECT_EQ(format.at("chain").back().at("produces"), format.at("layout")) << name;
    }
}

TEST_F(InfoCommandTest, FormatsTakesNoSizeWithoutPixels) {
    for (const std::string size : {"0x8", "8", "-8x8", "8x8x8"})
        expectRefused("formats --size " + size, size);
}

} // namespace

// "zet read" as its users run it, on files that "zet write" or the library wrote.
#include <tests/tools/TestPictureFile.h>
#include <tests/tools/ToolProcess.h>

#include <map>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;

namespace {

class ReadCommandTest : public Test, public ToolFolder {};

/// Every pixel and channel different; in the lower rows the colours are darker.
float slope(int x, int y, int channel) {
    const float sample[] = {static_cast<float>(x) / 31, static_cast<float>(15 - y) / 15,
                            1 - static_cast<float>(x + y) / 62, 0.25f + static_cast<float>(x) / 62};
    return sample[channel];
}

TEST_F(ReadCommandTest, WritingAgainGivesTheSameFiles) {
    writePictureFile(folder / "linear.exr", pictureSpec(32, 16, {"R", "G", "B", "A"}, OIIO::TypeFloat),
                     [](int x, int y, int channel) {
                         return channel == 3 ? slope(x, y, 3) : slope(x, y, channel) * slope(x, y, 3);
                     });
    using Types = std::set<std::string>;
    for (const auto& [format, types] : std::map<std::string, Types>{{"rgb8", {"png", "dpx"}},
                                                                    {"rgb10", {"png", "exr"}},
                                                                    {"rgb12", {"tif", "exr"}},
                                                                    {"rgba8", {"tif", "exr"}}}) {
        ASSERT_EQ(zet("write linear.exr -o m.zet -f " + format).exitCode, 0);
        for (const std::string& type : types) {
            ASSERT_EQ(zet("read m.zet --premultiplied -o out." + type).errors, "") << type;
            ASSERT_EQ(zet("write -o again.zet -f " + format + " out." + type).errors, "") << type;
            EXPECT_EQ(bytesOf(folder / "again.zet"), bytesOf(folder / "m.zet")) << format << " by " << type;
        }
    }
}

TEST_F(ReadCommandTest, ColourSpaceAndAlphaFitTheTypeOfFile) {
    auto spec = pictureSpec(1, 1, {"R", "G", "B", "A"}, OIIO::TypeUInt8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    writePictureFile(folder / "p.png", spec,
                     [](int, int, int channel) { return channel == 3 ? 0.2f : 188.0f / 255; });
    ASSERT_EQ(zet("write p.png -o m.zet -f rgba8").exitCode, 0);
    struct Case {
        const char *file, *arguments;
        std::vector<float> pixel;
        const char* colourSpace;
        bool straight;
    };
    const float code = 188.0f / 255;
    for (const auto& [file, arguments, pixel, colourSpace, straight] : std::vector<Case>{
             {"out.png", "", {code, code, code, 0.2f}, "sRGB", true},
             {"out.png", "--colorspace Rec709", {code, code, code, 0.2f}, "Rec709", true},
             {"out.tif", "", {code, code, code, 0.2f}, "sRGB", true},
             {"out.tif", "--premultiplied", {code, code, code, 0.2f}, "sRGB", false},
             {"out.exr", "", {0.1006f, 0.1006f, 0.1006f, 0.2f}, "Linear", false},
             {"out.exr", "--colorspace linear", {0.1475f, 0.1475f, 0.1475f, 0.2f}, "Linear", false},
             {"out.exr", "--colorspace Rec709", {0.1094f, 0.1094f, 0.1094f, 0.2f}, "Linear", false},
             {"out.jpg", "", {code, code, code}, "sRGB", false},
         }) {
        SCOPED_TRACE(file + std::string(" ") + arguments);
        const ProcessResult result = zet("read m.zet -o " + std::string(file) + " " + arguments);
        ASSERT_EQ(result.errors, "");
        const LoadedPicture<float> picture(folder / file);
        EXPECT_THAT(picture.samples, Pointwise(FloatNear(0.001f), pixel));
        EXPECT_EQ(picture.spec.get_string_attribute("oiio:ColorSpace"), colourSpace);
        EXPECT_EQ(picture.spec.get_int_attribute("oiio:UnassociatedAlpha"), straight);
        EXPECT_EQ(result.output.find("note: the media files have alpha") != std::string::npos,
                  pixel.size() == 3);
        EXPECT_EQ(result.output.find("note: the colour is multiplied") != std::string::npos,
                  colourSpace == std::string("Linear"));
    }
}

TEST_F(ReadCommandTest, ABadFrameIsNamedAndTheOthersAreRead) {
    ASSERT_EQ(zet("write --chart 16x8 --frames 1-4 -o m.%d.zet -f 420").errors, "");
    fs::resize_file(folder / "m.2.zet", 100);
    const ProcessResult result = zet("read m.%d.zet -o out.##.png --frames 1-5 -j 3");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("frame 2: m.2.zet: File of 100 bytes is "),
                      HasSubstr("frame 5: m.5.zet: does not exist"), HasSubstr("2 of 5 frames failed: 2,5")));
    EXPECT_THAT(namesIn(folder.path()), UnorderedElementsAre("m.1.zet", "m.2.zet", "m.3.zet", "m.4.zet",
                                                             "out.01.png", "out.03.png", "out.04.png"));
}

TEST_F(ReadCommandTest, WhatCannotBeginSaysWhyAndWritesNothing) {
    ASSERT_EQ(zet("write --chart 16x8 --frames 1-2 -o m.%d.zet -f rgb8").errors, "");
    for (const auto& [arguments, reason] : std::map<std::string, std::string>{
             {"m.%d.zet", "--output is required"},
             {"-o out.png", "FILES is required"},
             {"m.%d.zet -o out.%d.zet", "unknown extension \".zet\""},
             {"m.%d.zet -o out.png", "would take 2 frames"},
             {"m.%d.zet -o gone/out.%d.png", "folder \"gone\" does not exist"},
             {"m.%d.zet -o m.1.zet/out.%d.png", "is a file"},
             {"n.%d.zet -o out.%d.png", "no file matches \"n.%d.zet\""},
             {"m.1.zet -o out.%d.png --frames 7", "frame 7: none of the listed files"},
             {"m.%d.zet -o out.%d.exr --colorspace ACEScg", "colour space \"ACEScg\""},
         }) {
        expectRefused("read " + arguments, reason);
        EXPECT_THAT(namesIn(folder.path()), ElementsAre("m.1.zet", "m.2.zet"));
    }
}

} // namespace

// What oiiotool makes of media files with nothing but OIIO_LIBRARY_PATH set.
#include <plugin/OutputFormats.h>
#include <tests/tools/TestPictureFile.h>
#include <tests/tools/ToolProcess.h>

using namespace testing;
using namespace TestSupport;

namespace {

class OiioTool : public Test, public ToolFolder {
protected:
    OiioTool() {
        // Light beyond white, straight alpha, and a file that holds less than the picture.
        auto spec = pictureSpec(24, 12, {"R", "G", "B", "A"}, OIIO::TypeHalf);
        spec.attribute("oiio:ColorSpace", "Linear");
        std::tie(spec.x, spec.y, spec.full_width, spec.full_height) = std::tuple(4, 2, 32, 16);
        writePictureFile(folder / "p.exr", spec, [](int x, int y, int channel) {
            return channel == 3 ? float(y) / 11 : float(x * (channel + 1) - y) / 20;
        });
    }

    ProcessResult oiiotool(const std::string& arguments) const {
        return run("OIIO_LIBRARY_PATH='" ZET_IMAGE_IO_FOLDER "' oiiotool " + arguments);
    }
};

TEST_F(OiioTool, WritesTheBytesOfTheTool) {
    std::vector<std::pair<std::string, std::string>> choices{{"7", "rec709"}, {"8-bit RGB 4:4:4", "none"}};
    for (const OutputFormat& output : outputFormats)
        choices.emplace_back(output.shortName, "auto");
    for (const auto& [format, transfer] : choices) {
        const auto byOiio = oiiotool("p.exr --attrib zet:format '" + format + "' --attrib zet:transfer " +
                                     transfer + " -o oiio.zet");
        const auto byTool =
            zet("write p.exr -o tool.zet -q --format '" + format + "' --transfer " + transfer);
        EXPECT_EQ(byOiio.exitCode + byTool.exitCode, 0) << format << byOiio.errors << byTool.errors;
        EXPECT_EQ(bytesOf(folder / "oiio.zet"), bytesOf(folder / "tool.zet")) << format << " " << transfer;
    }
}

TEST_F(OiioTool, TellsWhatIsInAFileAndTakesItBack) {
    for (const std::string format : {"rgba8", "4224"}) {
        ASSERT_EQ(oiiotool("p.exr --attrib zet:format " + format + " -o a.zet").exitCode, 0);
        const auto info = oiiotool("--info -v a.zet");
        for (const std::string line : {"32 x   16, 4 channel", "R, G, B, A", "oiio:ColorSpace: \"sRGB\""})
            EXPECT_THAT(info.output, HasSubstr(line));
        EXPECT_THAT(info.output, ContainsRegex("zet:format: (\")?" + format));
        // The attribute has the copy written in the same format.
        const auto again = oiiotool("a.zet -o b.9zt -o c.tif");
        EXPECT_EQ(again.exitCode, 0) << again.errors;
        EXPECT_EQ(oiiotool("a.zet c.tif --diff").exitCode, 0) << format;
    }
}

} // namespace

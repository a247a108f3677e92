// "zet sheet" as its users run it.
#include <tests/tools/TestPictureFile.h>
#include <tests/tools/ToolProcess.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;

namespace {

using Colour = std::array<std::uint8_t, 3>;

struct Sheet : LoadedPicture<std::uint8_t> {
    using LoadedPicture::LoadedPicture;

    int count(const Colour& colour) const {
        EXPECT_EQ(spec.nchannels, 3);
        int pixels = 0;
        for (auto pixel = samples.begin(); pixel != samples.end(); pixel += 3)
            pixels += std::equal(colour.begin(), colour.end(), pixel);
        return pixels;
    }
};

class SheetCommandTest : public Test, public ToolFolder {
protected:
    /// 64 x 32 pixels of one colour, as a picture and as a media file that holds exactly that.
    void makeFrame(const std::string& name, const Colour& colour, int alpha = 255,
                   const std::string& format = "rgb8") const {
        auto spec = pictureSpec(64, 32, {"R", "G", "B", "A"}, OIIO::TypeUInt8);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        writePictureFile(folder / (name + ".png"), spec, [&](int, int, int channel) {
            return static_cast<float>(channel == 3 ? alpha : colour[static_cast<std::size_t>(channel)]) / 255;
        });
        ASSERT_EQ(zet(fmt::format("write {0}.png -o {0}.zet -f {1}", name, format)).errors, "");
    }
};

constexpr Colour red{200, 10, 20}, blue{10, 20, 200}, black{0, 0, 0};

TEST_F(SheetCommandTest, ShowsEveryFileInItsPlace) {
    makeFrame("a.1", red);
    makeFrame("a.2", red);
    makeFrame("a.3", blue);
    const ProcessResult result = zet("sheet a.%d.zet -o sheet.png --width 100");
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    const Sheet sheet(folder / "sheet.png");
    EXPECT_EQ(sheet.count(red), 2 * 100 * 50);
    EXPECT_EQ(sheet.count(blue), 100 * 50);
    EXPECT_THAT(
        result.output,
        AllOf(HasSubstr("a.2.zet  8-bit RGB 4:4:4  64x32  6172 bytes\n"), Not(HasSubstr("PSNR")),
              HasSubstr(fmt::format("wrote sheet.png ({}x{})", sheet.spec.width, sheet.spec.height))));

    int widest = 0;
    for (const std::string columns : {"1", "2", "3"}) {
        ASSERT_EQ(zet("sheet a.%d.zet -o s.png -q --columns " + columns).output, "");
        const int width = Sheet(folder / "s.png").spec.width;
        EXPECT_GT(width, widest + 320);
        widest = width;
    }
    ASSERT_EQ(zet("sheet a.%d.zet -o sheet.png --frames 3 -q").exitCode, 0);
    EXPECT_EQ(Sheet(folder / "sheet.png").count(red), 0);
}

TEST_F(SheetCommandTest, MeasuresAPlantedDifference) {
    makeFrame("a.7", red, 100, "rgba8");
    const std::string call = "sheet a.7.zet -o sheet.png --width 64 --amplify 2.5 --against a.7.png";
    EXPECT_THAT(zet(call).output, HasSubstr("PSNR RGB exact  alpha exact  largest 0 %\n"));
    Sheet sheet(folder / "sheet.png");
    EXPECT_EQ(sheet.count(red), 2 * 64 * 32); // the file and its source
    EXPECT_EQ(sheet.count(black), 64 * 32);

    // In the fifth pixel, green becomes 51 more, a fifth of full scale.
    overwrite("a.7.zet", 28 + 4 * 4 + 1, red[1] + 51);
    const double psnr = -10 * std::log10(0.2 * 0.2 / (3 * 64 * 32));
    EXPECT_THAT(zet(call).output,
                HasSubstr(fmt::format("PSNR RGB {:.1f} dB  alpha exact  largest 20 %\n", psnr)));
    sheet = Sheet(folder / "sheet.png");
    EXPECT_EQ(sheet.count(black), 64 * 32 - 1);
    EXPECT_EQ(sheet.count({0, 128, 0}), 1); // 51 times 2.5

    overwrite("a.7.zet", 28 + 4 * 4 + 1, red[1]);
    overwrite("a.7.zet", 28 + 4 * 4 + 3, 100 + 51);
    EXPECT_THAT(zet(call).output, HasSubstr(fmt::format("PSNR RGB exact  alpha {:.1f} dB  largest 0 %\n",
                                                        psnr - 10 * std::log10(3))));
}

TEST_F(SheetCommandTest, ComparesFramesOfTheSameNumber) {
    makeFrame("a.8", red);
    makeFrame("a.9", blue);
    ProcessResult result = zet("sheet a.9.zet a.8.zet -o s.png --against a.#.png");
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, AllOf(HasSubstr("exact"), Not(HasSubstr("dB"))));
    result = zet("sheet a.%d.zet -o s.png --against a.8.png");
    EXPECT_THAT(result.output, AllOf(HasSubstr("exact"), HasSubstr("dB")));

    ASSERT_EQ(zet("write --chart 64x32 --frames 30 -o c.%d.zet -f rgb12").errors, "");
    result = zet("sheet c.30.zet -o s.png --against-chart");
    EXPECT_THAT(result.output, HasSubstr("PSNR RGB 8")) << "12 bits give more than 80 dB";
}

TEST_F(SheetCommandTest, TheSourceGoesThroughTheTransferOfWriting) {
    // Over half the picture, samples are above 1, which no file can hold.
    writePictureFile(folder / "linear.exr", pictureSpec(64, 32, {"R", "G", "B"}, OIIO::TypeHalf),
                     [](int x, int, int) { return static_cast<float>(x) / 32; });
    ASSERT_EQ(zet("write linear.exr -o m.zet -f rgb10").errors, "");
    const std::string call = "sheet m.zet -o s.png --against linear.exr --transfer ";
    EXPECT_THAT(zet(call + "auto").output, HasSubstr("largest 0.04")); // half of a 10-bit step
    EXPECT_THAT(zet(call + "none").output, HasSubstr("PSNR RGB 1"));
}

TEST_F(SheetCommandTest, TellsOfFilesThatCannotBeShownOrCompared) {
    makeFrame("a", red);
    fs::copy_file(folder / "a.zet", folder / "short.zet");
    fs::resize_file(folder / "short.zet", 99);
    ASSERT_EQ(zet("write --chart 16x8 -o c.zet -f rgb8 --frames 1").errors, "");
    const ProcessResult result = zet("sheet short.zet a.zet c.zet none.zet -o s.png --against a.png");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("zet: short.zet: File of 99 bytes"), Not(HasSubstr(": a.zet")),
                                     HasSubstr("zet: c.zet: the source a.png is 64x32, not 16x8"),
                                     HasSubstr("zet: none.zet: does not exist")));
    EXPECT_EQ(Sheet(folder / "s.png").count(red), 2 * 320 * 160);

    for (const auto& [arguments, reason] : std::map<std::string, std::string>{
             {"short.zet none.zet -o t.png", "none.zet: does not exist"},
             {"a.zet -o t.zet", "unknown extension \".zet\""},
             {"a.zet -o t.png --against b.%d.png", "no picture matches \"b.%d.png\""},
             {"a.zet -o ./a.png --against a.png", "\"./a.png\" is a picture to be compared with"},
             {"a.zet -o t.png --amplify 0", "--amplify"},
             {"a.zet -o gone/t.png", "gone/t.png"},
             {"b.%d.zet -o t.png", "no file matches \"b.%d.zet\""},
         }) {
        expectRefused("sheet " + arguments, reason);
        EXPECT_FALSE(fs::exists(folder / "t.png"));
    }
}

} // namespace

// What the tool makes of picture files, and the chart that it draws itself.
#include <pictures/Picture.h>
#include <pictures/Transfer.h>
#include <tests/TestSupport.h>
#include <tests/tools/TestPictureFile.h>
#include <tools/zet/Chart.h>
#include <tools/zet/PictureFile.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <sys/stat.h>

using namespace testing;
using namespace TestSupport;
using namespace ZetTool;
using EmbeddedHost::PictureChannel;

namespace {

std::vector<float> row(Picture& picture, int y, PictureChannel channel) {
    std::vector<float> samples(static_cast<std::size_t>(picture.width()), -1.0f);
    picture.readRow(y, 0, picture.width(), channel, samples.data());
    return samples;
}

class PictureTest : public Test {
protected:
    const TemporaryFolder folder;
};

TEST_F(PictureTest, ReadsHalfFloatsWithoutLoss) {
    const std::vector<float> values{0, -0.0f, 0x1p-24f, -0x3ffp-24f, 0x1p-14f,  0.333251953125f,
                                    1, 2.5f,  65504.0f, -65504.0f,   HUGE_VALF, -HUGE_VALF};
    writePictureFile(folder / "p.exr",
                     pictureSpec(static_cast<int>(values.size()), 1, {"R", "G", "B"}, OIIO::TypeHalf),
                     [&](int x, int, int) { return values[static_cast<std::size_t>(x)]; });
    Picture picture = readPicture(folder / "p.exr");
    const auto samples = row(picture, 0, PictureChannel::Green);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(samples[i], std::clamp(values[i], -65504.0f, 65504.0f)) << i; // infinities have an end
    EXPECT_TRUE(std::signbit(samples[1]));
}

TEST_F(PictureTest, FindsTheChannelsToShow) {
    // The channels of the file, of which the n-th holds n; red, green, blue and, when there is one, alpha.
    for (const auto& [channels, shown] : std::map<std::vector<std::string>, std::vector<float>>{
             {{"R", "G", "B"}, {1, 2, 3}},
             {{"R", "G", "B", "A"}, {1, 2, 3, 4}},
             {{"Y"}, {1, 1, 1}},
             {{"Y", "A"}, {1, 1, 1, 2}},
             {{"R", "G", "B", "A", "normal.X", "normal.Y", "normal.Z"}, {1, 2, 3, 4}},
         }) {
        const auto file = folder / "p.exr";
        writePictureFile(file, pictureSpec(1, 1, channels, OIIO::TypeFloat),
                         [](int, int, int channel) { return static_cast<float>(channel + 1); });
        Picture picture = readPicture(file);
        EXPECT_EQ(readPictureHeader(file).hasAlpha, shown.size() == 4);
        ASSERT_EQ(picture.hasAlpha(), shown.size() == 4) << PrintToString(channels);
        for (std::size_t i = 0; i < shown.size(); ++i)
            EXPECT_EQ(row(picture, 0, static_cast<PictureChannel>(i)).front(), shown[i])
                << PrintToString(channels);
    }
}

TEST_F(PictureTest, PlacesWhatTheFileHoldsInTheWholePicture) {
    struct Case {
        int x, y, width, height;             // of the file's pixels; the whole picture is 4x3
        std::vector<std::vector<float>> top; // rows from the top; 10 * row + column + 1 in the file
    };
    for (const auto& [x, y, width, height, top] : std::vector<Case>{
             {1, 1, 2, 1, {{0, 0, 0, 0}, {0, 1, 2, 0}, {0, 0, 0, 0}}},
             {-2, -1, 4, 3, {{13, 14, 0, 0}, {23, 24, 0, 0}, {0, 0, 0, 0}}},
             {-1, -1, 6, 5, {{12, 13, 14, 15}, {22, 23, 24, 25}, {32, 33, 34, 35}}},
         }) {
        auto spec = pictureSpec(width, height, {"Y"}, OIIO::TypeFloat);
        spec.x = x;
        spec.y = y;
        spec.full_width = 4;
        spec.full_height = 3;
        writePictureFile(folder / "p.exr", spec, [](int column, int line, int) {
            return static_cast<float>(10 * line + column + 1);
        });
        Picture picture = readPicture(folder / "p.exr");
        ASSERT_EQ(picture.header().size.text(), "4x3");
        for (int line = 0; line < 3; ++line)
            EXPECT_EQ(row(picture, 2 - line, PictureChannel::Green), top[static_cast<std::size_t>(line)])
                << "row " << line << " of the file's pixels at " << x << ", " << y;
    }
}

TEST_F(PictureTest, NamesTheFileThatCannotBeRead) {
    const auto noise = [](int x, int y, int) { return static_cast<float>(x * x * 7 + y * 13 % 31) / 20000; };
    for (const char* name : {"cut.exr", "cut.tif", "cut.jpg"}) {
        writePictureFile(folder / name, pictureSpec(50, 50, {"R", "G", "B"}, OIIO::TypeUInt8), noise);
        std::filesystem::resize_file(folder / name, std::filesystem::file_size(folder / name) * 2 / 3);
    }
    std::ofstream(folder / "empty.exr");
    std::ofstream(folder / "text.png") << "not a picture";
    ASSERT_EQ(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    for (const char* name :
         {"cut.exr", "cut.tif", "cut.jpg", "empty.exr", "text.png", "none.exr", ".", "pipe.png"})
        EXPECT_THAT(messageOf([&] { readPicture(folder / name); }),
                    HasSubstr((folder / name).string() + ": "));
    EXPECT_THAT(messageOf([&] { readPictureHeader(folder / "none.exr"); }), HasSubstr("does not exist"));
    EXPECT_THAT(messageOf([&] { readPictureHeader(folder / "empty.exr"); }), HasSubstr("is empty"));
}

TEST(TransferChoice, FollowsThePicturesOwnTagWhenAutomatic) {
    using EmbeddedHost::Transfer;
    // The choice, the picture's tag, whether its samples are floats.
    for (const auto& [choice, tag, floats, expected] :
         std::vector<std::tuple<const char*, const char*, bool, Transfer>>{
             {"auto", "Linear", true, Transfer::Srgb},
             {"auto", "scene_linear", true, Transfer::Srgb},
             {"auto", "lin_rec709", false, Transfer::Srgb},
             {"auto", "", true, Transfer::Srgb},
             {"auto", "", false, Transfer::None},
             {"auto", "Rec709", false, Transfer::None},
             {"none", "Linear", true, Transfer::None},
             {"srgb", "sRGB", false, Transfer::Srgb},
             {"rec709", "Linear", true, Transfer::Rec709},
         }) {
        PictureHeader header;
        header.colourSpace = tag;
        header.floatSamples = floats;
        EXPECT_EQ(chooseTransfer(parseTransferChoice(choice), header), expected) << choice << " for " << tag;
    }
    EXPECT_THAT(messageOf([] { parseTransferChoice("log"); }), HasSubstr("\"log\""));
}

TEST(Chart, IsTheSameForAFrameAndMovesBetweenFrames) {
    const auto pixels = [](const PictureSize& size, int frame) {
        Picture picture = Chart(size).draw(frame);
        std::vector<float> all;
        for (int y = 0; y < size.height; ++y)
            for (int channel = 0; channel < 4; ++channel) {
                const auto line = row(picture, y, static_cast<PictureChannel>(channel));
                all.insert(all.end(), line.begin(), line.end());
            }
        return all;
    };
    EXPECT_EQ(pixels({320, 180}, 5), pixels({320, 180}, 5));
    EXPECT_NE(pixels({320, 180}, 5), pixels({320, 180}, 6));
    EXPECT_NE(pixels({320, 180}, 5), pixels({320, 180}, 53)); // the mark is back, the number is not
    for (const PictureSize size : {PictureSize{1, 1}, {7, 5}, {1, 200}, {200, 1}})
        EXPECT_THAT(pixels(size, -2147483647 - 1), Each(AllOf(Ge(0.0f), Le(1.0f)))) << size.text();
    for (const PictureSize size : {PictureSize{0, 5}, {5, -1}, {Chart::maxSide + 1, 5}})
        EXPECT_THAT(messageOf([&] { Chart{size}; }), HasSubstr(size.text()));
}

} // namespace

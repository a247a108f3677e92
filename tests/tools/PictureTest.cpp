// What the tool makes of picture files, and the chart that it draws itself.
#include <tests/TestSupport.h>
#include <tests/tools/TestPictureFile.h>
#include <tools/zet/Chart.h>
#include <tools/zet/Picture.h>
#include <tools/zet/Transfer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace ZetTool;
using EmbeddedHost::PictureChannel;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using TestSupport::messageOf;
using TestSupport::pictureSpec;
using TestSupport::writePictureFile;

namespace {

std::vector<float> row(Picture& picture, int y, PictureChannel channel) {
    std::vector<float> samples(static_cast<std::size_t>(picture.width()), -1.0f);
    picture.readRow(y, 0, picture.width(), channel, samples.data());
    return samples;
}

class PictureTest : public testing::Test {
protected:
    const TestSupport::TemporaryFolder folder;
};

TEST_F(PictureTest, FindsTheChannelsToShow) {
    struct Case {
        std::vector<std::string> channels;
        std::vector<float> shown; // red, green, blue and, when there is one, alpha; the n-th channel holds n
    };
    for (const auto& [channels, shown] : std::vector<Case>{
             {{"R", "G", "B"}, {1, 2, 3}},
             {{"R", "G", "B", "A"}, {1, 2, 3, 4}},
             {{"Y"}, {1, 1, 1}},
             {{"Y", "A"}, {1, 1, 1, 2}},
             {{"A"}, {1, 1, 1}},
             {{"U", "V"}, {1, 1, 1}},
             {{"X", "Y", "Z", "Z2"}, {1, 2, 3}},
             {{"R", "G", "B", "A", "normal.X", "normal.Y", "normal.Z"}, {1, 2, 3, 4}},
         }) {
        const auto file = folder / "p.exr";
        writePictureFile(file, pictureSpec(1, 1, channels, OIIO::TypeFloat),
                         [](int, int, int channel) { return static_cast<float>(channel + 1); });
        Picture picture = readPicture(file);
        std::vector<float> seen;
        for (const auto channel :
             {PictureChannel::Red, PictureChannel::Green, PictureChannel::Blue, PictureChannel::Alpha})
            if (channel != PictureChannel::Alpha || picture.hasAlpha())
                seen.push_back(row(picture, 0, channel).front());
        EXPECT_EQ(seen, shown) << testing::PrintToString(channels);
        EXPECT_EQ(picture.header().hasAlpha, shown.size() == 4);
        EXPECT_EQ(readPictureHeader(file).hasAlpha, shown.size() == 4);
    }
}

TEST_F(PictureTest, PlacesWhatTheFileHoldsInTheWholePicture) {
    struct Case {
        int x, y, width, height; // of the file's pixels; the whole picture is 4x3
        std::vector<std::vector<float>>
            top; // rows from the top; a pixel in the file is 10 * row + column + 1
    };
    for (const auto& [x, y, width, height, top] : std::vector<Case>{
             {0, 0, 4, 3, {{1, 2, 3, 4}, {11, 12, 13, 14}, {21, 22, 23, 24}}},
             {1, 1, 2, 1, {{0, 0, 0, 0}, {0, 1, 2, 0}, {0, 0, 0, 0}}},
             {-2, -1, 4, 3, {{13, 14, 0, 0}, {23, 24, 0, 0}, {0, 0, 0, 0}}},
             {-1, -1, 6, 5, {{12, 13, 14, 15}, {22, 23, 24, 25}, {32, 33, 34, 35}}},
             {4, 0, 2, 3, {{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}},
             {-9, -9, 2, 2, {{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}},
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
        std::vector<float> part(2);
        picture.readRow(1, 1, 3, PictureChannel::Red, part.data());
        EXPECT_THAT(part, ElementsAre(top[1][1], top[1][2]));
    }
}

TEST_F(PictureTest, KeepsAlphaAsTheFileHasIt) {
    struct Case {
        const char* name;
        bool straight; // as asked of the file
        bool premultiplied;
    };
    for (const auto& [name, straight, premultiplied] : std::vector<Case>{{"a.png", true, false},
                                                                         {"a.tif", true, false},
                                                                         {"b.tif", false, true},
                                                                         {"a.exr", false, true}}) {
        auto spec = pictureSpec(2, 1, {"R", "G", "B", "A"}, OIIO::TypeHalf);
        if (std::string(name) != "a.exr")
            spec.set_format(OIIO::TypeUInt8);
        if (straight)
            spec.attribute("oiio:UnassociatedAlpha", 1);
        writePictureFile(folder / name, spec,
                         [](int, int, int channel) { return channel == 3 ? 0.2f : 0.4f; });
        Picture picture = readPicture(folder / name);
        EXPECT_EQ(picture.header().premultiplied, premultiplied) << name;
        EXPECT_NEAR(row(picture, 0, PictureChannel::Red)[1], 0.4f, 1e-3f) << name;
        EXPECT_NEAR(row(picture, 0, PictureChannel::Alpha)[1], 0.2f, 1e-3f) << name;
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
    for (const char* name :
         {"cut.exr", "cut.tif", "cut.jpg", "empty.exr", "text.png", "none.exr", "."})
        EXPECT_THAT(messageOf([&] { readPicture(folder / name); }),
                    HasSubstr((folder / name).string() + ": "));
    EXPECT_THAT(messageOf([&] { readPictureHeader(folder / "none.exr"); }), HasSubstr("does not exist"));
}

TEST(TransferChoice, FollowsThePicturesOwnTagWhenAutomatic) {
    using EmbeddedHost::Transfer;
    struct Case {
        const char* choice;
        const char* tag;
        bool floats;
        Transfer expected;
    };
    for (const auto& [choice, tag, floats, expected] : std::vector<Case>{
             {"auto", "Linear", true, Transfer::Srgb},
             {"auto", "linear", false, Transfer::Srgb},
             {"auto", "scene_linear", true, Transfer::Srgb},
             {"auto", "lin_rec709", false, Transfer::Srgb},
             {"auto", "", true, Transfer::Srgb},
             {"auto", "", false, Transfer::None},
             {"auto", "sRGB", true, Transfer::None},
             {"auto", "Rec709", false, Transfer::None},
             {"auto", "KodakLog", false, Transfer::None},
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

TEST(Chart, ShowsWhatItPromises) {
    const Chart chart({960, 540});
    Picture picture = chart.draw(1);
    const auto at = [&](PictureChannel channel, int x, int fromTop) {
        return row(picture, 539 - fromTop, channel)[static_cast<std::size_t>(x)];
    };
    for (int bar = 0; bar < 8; ++bar) { // full bars: all eight mixtures of full channels
        const int x = bar * 120 + 60;
        EXPECT_EQ(4 * at(PictureChannel::Green, x, 5) + 2 * at(PictureChannel::Red, x, 5) +
                      at(PictureChannel::Blue, x, 5),
                  7 - bar);
    }
    const auto ramp = row(picture, 539 - 232, PictureChannel::Red);
    EXPECT_EQ(ramp.front(), 0.0f);
    EXPECT_EQ(ramp.back(), 1.0f);
    EXPECT_TRUE(std::is_sorted(ramp.begin(), ramp.end()));
    EXPECT_EQ(at(PictureChannel::Alpha, 950, 530), 0.0f); // around the disc
    EXPECT_EQ(at(PictureChannel::Alpha, 806, 426), 1.0f); // its centre
    EXPECT_FALSE(chart.header().premultiplied);
}

TEST(Chart, IsTheSameForAFrameAndMovesBetweenFrames) {
    const auto pixels = [](const Chart& chart, int frame) {
        Picture picture = chart.draw(frame);
        std::vector<float> all;
        for (int y = 0; y < picture.height(); ++y)
            for (int channel = 0; channel < 4; ++channel) {
                const auto line = row(picture, y, static_cast<PictureChannel>(channel));
                all.insert(all.end(), line.begin(), line.end());
            }
        return all;
    };
    const Chart chart({320, 180});
    EXPECT_EQ(pixels(chart, 5), pixels(Chart({320, 180}), 5));
    EXPECT_NE(pixels(chart, 5), pixels(chart, 6));
    EXPECT_NE(pixels(chart, 5), pixels(chart, 53)); // the mark is back, the number is not
    for (const PictureSize size : {PictureSize{1, 1}, {2, 3}, {7, 5}, {1, 200}, {200, 1}, {64, 36}})
        EXPECT_THAT(pixels(Chart(size), -2147483647 - 1), Each(AllOf(Ge(0.0f), Le(1.0f)))) << size.text();
    for (const PictureSize size : {PictureSize{0, 5}, {5, -1}, {Chart::maxSide + 1, 5}})
        EXPECT_THAT(messageOf([&] { Chart{size}; }), HasSubstr(size.text()));
}

} // namespace

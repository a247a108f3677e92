// Frame numbers: in ranges, in file names, in lists of files.
#include <tests/TestSupport.h>
#include <tools/zet/FrameRange.h>
#include <tools/zet/FrameSource.h>
#include <tools/zet/SequencePattern.h>

#include <array>
#include <climits>
#include <map>
#include <tuple>

using namespace testing;
using namespace TestSupport;
using namespace ZetTool;

namespace {

TEST(FrameRange, ReadsWhatTheIndustryWrites) {
    const std::map<std::string, std::vector<int>> ranges{
        {"1-9x3", {1, 4, 7}},
        {" 2 , 5-6 ", {2, 5, 6}},
        {"9-7x-1", {9, 8, 7}},
        {"9-4x2", {9, 7, 5}},
        {"1-3,2-5,1", {1, 2, 3, 4, 5}}, // each once
        {"-2147483648,2147483646-2147483647", {INT_MIN, INT_MAX - 1, INT_MAX}},
    };
    for (const auto& [text, frames] : ranges)
        EXPECT_EQ(parseFrameRange(text), frames) << text;
}

TEST(FrameRange, QuotesThePieceThatCannotBeRead) {
    for (const auto& [text, piece, reason] : std::vector<std::array<std::string, 3>>{
             {"", "", "FIRST-LASTxSTEP"},
             {"1,,3", "", "FIRST-LASTxSTEP"},
             {"1-5x2x3", "1-5x2x3", "FIRST-LASTxSTEP"},
             {"99999999999", "99999999999", "FIRST-LASTxSTEP"},
             {"1-10x0", "1-10x0", "step of 0"},
             {"1-10x-3", "1-10x-3", "step of -3 does not lead from 1 to 10"},
             {"1-900000,5-900000", "5-900000", "more than 1000000 frames"},
         })
        EXPECT_THAT(messageOf([&] { parseFrameRange(text); }),
                    AllOf(HasSubstr("\"" + piece + "\""), HasSubstr(reason)))
            << text;
}

TEST(FrameRange, DrawsRunsTogether) {
    EXPECT_EQ(formatFrameRange({1, 2, 3, 7, 9, 10}), "1-3,7,9-10");
    EXPECT_EQ(formatFrameRange({INT_MAX, INT_MIN}), "2147483647,-2147483648");
}

TEST(SequencePattern, PutsTheNumberInItsPlace) {
    for (const auto& [pattern, frame, path] : std::vector<std::tuple<std::string, int, std::string>>{
             {"shot.%04d.exr", 7, "shot.0007.exr"},
             {"shot.####.exr", 7, "shot.0007.exr"},
             {"@@@", 7, "007"},
             {"%04d", -5, "-005"},
             {"%03d.zet", 12345, "12345.zet"},
             {"100%_%02d.zet", 3, "100%_03.zet"},
             {"a#/%d@home/x.%d.exr", 3, "a#/%d@home/x.3.exr"}, // folders are plain text
             {"still.png", 9, "still.png"},
         }) {
        EXPECT_EQ(SequencePattern(pattern).frame(frame), path) << pattern;
        EXPECT_EQ(SequencePattern(pattern).hasField(), pattern != "still.png") << pattern;
    }
    for (const std::string twice : {"a.%d.%d.exr", "a.#.@.exr", "a.#@.exr", "a%04d#.exr"})
        EXPECT_THAT(messageOf([&] { SequencePattern{twice}; }),
                    HasSubstr("\"" + twice + "\" has more than one"));
    for (const std::string wide : {"%033d", "%99999999999999999999d"})
        EXPECT_THAT(messageOf([&] { SequencePattern{wide}; }), HasSubstr("at most 32 digits"));
}

TEST(SequencePattern, FindsItsFramesOnDisk) {
    const TemporaryFolder folder;
    for (const char* name :
         {"s.0010.exr", "s.0002.exr", "s.12345.exr", "s.-003.exr", // frames
          "s.7.exr", "s.00007.exr", "s.+008.exr", "s.0001.exr.bak", "t.0001.exr", "s..exr", "s.exr"})
        std::ofstream(folder / name);
    std::filesystem::create_directory(folder / "s.0099.exr");
    EXPECT_THAT(SequencePattern(folder / "s.%04d.exr").framesOnDisk(), ElementsAre(-3, 2, 10, 12345));
    EXPECT_THAT(SequencePattern(folder / "s.#.exr").framesOnDisk(), ElementsAre(7, 12345));
    EXPECT_THAT(messageOf([&] { SequencePattern(folder / "gone/s.#.exr").framesOnDisk(); }),
                HasSubstr("gone"));
}

TEST(FileList, TakesItsNumbersFromTheNamesWhenAllHaveOne) {
    using Numbered = std::map<int, std::filesystem::path>;
    for (const Numbered& expected : {Numbered{{1001, "s.1001.exr"}, {1003, "s.1003.exr"}},
                                     {{1, "b.exr"}, {2, "a.exr"}},
                                     {{1, "s.5.exr"}, {2, "t.5.exr"}},
                                     {{1, "s.5.exr"}, {2, "a.exr"}},
                                     {{1, "s.20250131120000.exr"}}}) {
        std::vector<std::filesystem::path> files;
        for (const auto& [number, file] : expected)
            files.push_back(file);
        EXPECT_EQ(numberFiles(files), expected);
    }
}

} // namespace

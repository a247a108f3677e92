// "zet check" on sequences with planted faults.
#include <tests/tools/ToolProcess.h>
#include <tools/zet/Manifest.h>

#include <nlohmann/json.hpp>

#include <map>

#include <fnmatch.h>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;

namespace {

/// Nine frames of 16x8 with a manifest, anew for each case.
class Sequence : public ToolFolder {
public:
    Sequence() {
        static const Sequence original{Fresh{}};
        fs::copy(original.folder.path(), folder.path());
    }

    ProcessResult check(const std::string& arguments) const { return zet("check s.%02d.zet " + arguments); }

private:
    struct Fresh {};
    explicit Sequence(Fresh) {
        run("zet write -o s.%02d.zet -f rgb8 --chart 16x8 --frames 1-9");
        ZetTool::Manifest manifest;
        for (int number = 1; number <= 9; ++number) {
            const std::string frame = "s.0" + std::to_string(number) + ".zet";
            overwrite(frame, 28, number); // so small, the chart does not change over time
            manifest.sums[frame] = ZetTool::sumFile(folder / frame);
        }
        manifest.save(folder / "m");
    }
};

TEST(CheckCommandTest, FindsExactlyThePlantedFaults) {
    const std::string writing = "zet write -o s.%02d.zet ";
    const std::string put = "put() { printf $2 | dd of=s.0$1.zet bs=1 seek=$3 conv=notrunc status=none; }; ";
    const struct {
        std::string plant; ///< a script; "put 8 a 3" writes the letter to offset 3 of frame 8
        const char* arguments;
        const char* report; ///< without its last line, * for any text; empty for a sequence that passes
    } cases[] = {
        {"", "", ""},
        {"", "--manifest m --frames 1-9 -f rgb8 --size=16x8", ""},
        {"rm s.03.zet s.05.zet s.06.zet s.07.zet", "", "frames 3,5-7: missing\n"},
        {"rm s.09.zet", "", ""}, // which nobody expects
        {"rm s.09.zet", "--frames 9-1", "frame 9: missing\n"},
        {"rm s.09.zet", "--manifest m", "frame 9: missing\n"},
        {"truncate -s 411 s.07.zet s.08.zet", "", "frames 7-8: *411 bytes*1 byte too short*412*\n"},
        {"truncate -s 0 s.06.zet", "--manifest m", "frame 6: *0 bytes*headers*28*\n"},
        {"put 3 x 0", "", "frame 3: Magic at offset 0 is 78*\n"},
        {"put 5 x 411", "--manifest m", "frame 5: content differs from the manifest's checksum\n"},
        {"mv s.01.zet x; mv s.09.zet s.01.zet; mv x s.09.zet", "--manifest m",
         "frames 1,9: content differs from the manifest's checksum\n"},
        {writing + "-f rgb10 --chart 16x8 --frames 1,8", "",
         "frames 1,8: format is 10-bit RGB 4:4:4, that of most files is 8-bit RGB 4:4:4\n"},
        {writing + "-f rgb10 --chart 16x8 --frames 1", "--format rgb10",
         "frames 2-9: format is 8-bit RGB 4:4:4, expected 10-bit RGB 4:4:4\n"},
        {writing + "-f rgb8 --chart 8x8 --frames 6", "--manifest m",
         "frame 6: size is 8x8, that of most files is 16x8\n"
         "frame 6: 220 bytes long, the manifest says 412\n"},
        {"", "--size 8x16", "frames 1-9: size is 16x8, expected 8x16\n"},
        {"put 2 a 7", "", "frame 2: version is 1.97, that of most files is 1.0\n"},
        {"cp s.01.zet s.12.zet", "--frames 1-9", "frame 12: not one of the expected frames\n"},
        {"cp s.01.zet s.10.zet", "--manifest m", "frame 10: not in the manifest\n"},
        {writing + "-f rgb8 --chart 16x8 --frames 10-12 --manifest m2", "--manifest m m2", ""},
    };
    for (const auto& [plant, arguments, report] : cases) {
        const Sequence sequence;
        ASSERT_EQ(sequence.run(put + plant).errors, "");
        const ProcessResult result = sequence.check(arguments);
        const bool passes = std::string(report).empty();
        EXPECT_EQ(result.exitCode, passes ? 0 : 1) << report;
        EXPECT_EQ(result.errors, "") << report;
        const auto expected = report + std::string(passes ? "PASS" : "FAIL") + " s.%02d.zet*\n";
        EXPECT_EQ(::fnmatch(expected.c_str(), result.output.c_str(), 0), 0) << result.output << "expected:\n"
                                                                            << expected;
    }
}

TEST(CheckCommandTest, SaysAsMuchAsIsAskedFor) {
    const Sequence sequence;
    EXPECT_EQ(
        sequence.check("--manifest m").output,
        "PASS s.%02d.zet: 1-9 (9 frames) of 16x8 \"8-bit RGB 4:4:4\", 3.7 kB, content as in the manifest\n");
    EXPECT_EQ(sequence.zet("check --quiet --manifest m --manifest m m s.%02d.zet --frames 1-9").output, "");

    sequence.run("rm s.03.zet s.04.zet; truncate -s 20 s.05.zet");
    EXPECT_THAT(sequence.check("").output, HasSubstr("FAIL s.%02d.zet: 3 frames with faults, 9 expected\n"));
    const auto report = nlohmann::json::parse(sequence.check("--json").output);
    EXPECT_EQ(report.at("pass"), false);
    EXPECT_EQ(report.at("found"), 7);
    ASSERT_EQ(report.at("faults").size(), 3u);
    EXPECT_EQ(report["faults"][1],
              (nlohmann::json{{"frame", 4}, {"file", "s.04.zet"}, {"fault", "missing"}}));
}

TEST(CheckCommandTest, WhatCannotBeCheckedSaysWhy) {
    const Sequence sequence;
    const std::string head = "# zet manifest 1: anything\n", sum = "0123456789abcdef0123456789abcdef";
    for (const std::string& line : {sum, sum + " 12 ", sum + " x s.01.zet", sum.substr(1) + " 12 s.01.zet",
                                    "G" + sum.substr(1) + " 12 s.01.zet"}) {
        std::ofstream(sequence.folder / "bad") << head << "\n# fine\r\n" << line << '\n';
        sequence.expectRefused("check s.%02d.zet --manifest bad",
                               "line 4 of manifest \"bad\" is \"" + line + "\"");
    }
    std::ofstream(sequence.folder / "other") << head << sum << " 412 s.01.zet\n";
    for (const auto& [arguments, reason] : std::map<std::string, std::string>{
             {"chekc s.%02d.zet --frames 1-9", "zet: unknown command \"chekc\""},
             {"--dry-run check s.%02d.zet", "options belong behind it"},
             {"check s.01.zet", "no place for the frame number"},
             {"check t.%d.zet", "no file matches \"t.%d.zet\""},
             {"check none/t.%d.zet", "folder \"none\""},
             {"check s.%02d.zet --manifest none", "\"none\" cannot be opened: No such file"},
             {"check s.%02d.zet --manifest s.01.zet", "\"s.01.zet\" is not a manifest"},
             {"check s.%02d.zet --manifest m other", sum + " in \"other\""},
             {"check s.%02d.zet --format x", "unknown format \"x\""},
         })
        sequence.expectRefused(arguments, reason);
}

} // namespace

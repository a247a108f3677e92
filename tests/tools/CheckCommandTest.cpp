// "zet check" on sequences with planted faults.
#include <tests/TestSupport.h>
#include <tests/tools/ToolProcess.h>
#include <tools/zet/Manifest.h>

#include <nlohmann/json.hpp>

#include <functional>
#include <sstream>

#include <fnmatch.h>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;

namespace {

/// Nine frames of 16x8 with a manifest, anew for each case.
class Sequence {
public:
    Sequence() {
        static const Sequence original{Fresh{}};
        fs::copy(original.folder.path(), folder.path());
    }

    /// The arguments are words.
    ProcessResult zet(const std::string& arguments) const {
        std::istringstream stream(arguments);
        std::vector<std::string> words{ZET_PROGRAM};
        for (std::string word; stream >> word;)
            words.push_back(word);
        return Process(words, folder.path()).wait();
    }
    void write(const std::string& arguments) const {
        const ProcessResult result = zet("write -o s.%02d.zet " + arguments);
        ASSERT_EQ(result.exitCode, 0) << result.errors;
    }
    ProcessResult check(const std::string& arguments) const { return zet("check s.%02d.zet " + arguments); }

    fs::path frame(int number) const { return folder / ("s.0" + std::to_string(number) + ".zet"); }
    fs::path file(const std::string& name) const { return folder / name; }
    void overwrite(int number, std::streamoff offset, char byte) const {
        std::fstream stream(frame(number), std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(offset).put(byte);
    }

private:
    struct Fresh {};
    explicit Sequence(Fresh) {
        write("-f rgb8 --chart 16x8 --frames 1-9");
        for (int number = 1; number <= 9; ++number) // so small, the chart does not change over time
            overwrite(number, 28, static_cast<char>(number));
        ZetTool::Manifest manifest;
        for (int number = 1; number <= 9; ++number)
            manifest.sums[frame(number).filename().string()] = ZetTool::sumFile(frame(number));
        manifest.save(file("m"));
    }

    const TemporaryFolder folder;
};

// ---- Faults ----

using Plant = std::function<void(const Sequence&)>;

void nothing(const Sequence&) {}

Plant removed(std::vector<int> frames) {
    return [=](auto& sequence) {
        for (const int frame : frames)
            fs::remove(sequence.frame(frame));
    };
}

Plant cut(std::vector<int> frames, std::uintmax_t bytes) {
    return [=](auto& sequence) {
        for (const int frame : frames)
            fs::resize_file(sequence.frame(frame), bytes);
    };
}

Plant changed(int frame, std::streamoff offset, char byte) {
    return [=](auto& sequence) { sequence.overwrite(frame, offset, byte); };
}

Plant written(const char* arguments) {
    return [=](auto& sequence) { sequence.write(arguments); };
}

Plant copied(int frame, const char* name) {
    return [=](auto& sequence) { fs::copy(sequence.frame(frame), sequence.file(name)); };
}

void swapFrames1And9(const Sequence& sequence) {
    fs::rename(sequence.frame(1), sequence.file("x"));
    fs::rename(sequence.frame(9), sequence.frame(1));
    fs::rename(sequence.file("x"), sequence.frame(9));
}

TEST(CheckCommandTest, FindsExactlyThePlantedFaults) {
    const struct {
        Plant plant;
        const char* arguments;
        const char* report; ///< without its last line, * for any text; empty for a sequence that passes
    } cases[] = {
        {nothing, "", ""},
        {nothing, "--manifest m --frames 1-9 -f rgb8 --size=16x8", ""},
        {removed({3, 5, 6, 7}), "", "frames 3,5-7: missing\n"},
        {removed({9}), "", ""}, // which nobody expects
        {removed({9}), "--frames 9-1", "frame 9: missing\n"},
        {removed({9}), "--manifest m", "frame 9: missing\n"},
        {cut({7, 8}, 411), "", "frames 7-8: *411 bytes*1 byte too short*412*\n"},
        {cut({6}, 0), "--manifest m", "frame 6: *0 bytes*headers*28*\n"},
        {changed(3, 0, 'x'), "", "frame 3: Magic at offset 0 is 78*\n"},
        {changed(5, 411, 1), "--manifest m", "frame 5: content differs from the manifest's checksum\n"},
        {swapFrames1And9, "--manifest m", "frames 1,9: content differs from the manifest's checksum\n"},
        {written("-f rgb10 --chart 16x8 --frames 1,8"), "",
         "frames 1,8: format is 10-bit RGB 4:4:4, that of most files is 8-bit RGB 4:4:4\n"},
        {written("-f rgb10 --chart 16x8 --frames 1"), "--format rgb10",
         "frames 2-9: format is 8-bit RGB 4:4:4, expected 10-bit RGB 4:4:4\n"},
        {written("-f rgb8 --chart 8x8 --frames 6"), "--manifest m",
         "frame 6: size is 8x8, that of most files is 16x8\n"
         "frame 6: 220 bytes long, the manifest says 412\n"},
        {nothing, "--size 8x16", "frames 1-9: size is 16x8, expected 8x16\n"},
        {changed(2, 7, 3), "", "frame 2: version is 1.3, that of most files is 1.0\n"},
        {copied(1, "s.12.zet"), "--frames 1-9", "frame 12: not one of the expected frames\n"},
        {copied(1, "s.10.zet"), "--manifest m", "frame 10: not in the manifest\n"},
        {written("-f rgb8 --chart 16x8 --frames 10-12 --manifest m2"), "--manifest m m2", ""},
    };
    for (const auto& [plant, arguments, report] : cases) {
        const Sequence sequence;
        plant(sequence);
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

    removed({3, 4})(sequence);
    cut({5}, 20)(sequence);
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
        std::ofstream(sequence.file("bad")) << head << "\n# fine\r\n" << line << '\n';
        const ProcessResult result = sequence.check("--manifest bad");
        EXPECT_EQ(result.exitCode, 2) << line;
        EXPECT_THAT(result.errors, HasSubstr("line 4 of manifest \"bad\" is \"" + line + "\""));
    }
    std::ofstream(sequence.file("other")) << head << sum << " 412 s.01.zet\n";
    EXPECT_THAT(sequence.zet("chekc s.%02d.zet --frames 1-9").errors,
                StartsWith("zet: unknown command \"chekc\""));
    EXPECT_THAT(sequence.zet("--dry-run check s.%02d.zet").errors, HasSubstr("options belong behind it"));
    for (const auto& [arguments, message] : {
             std::pair<std::string, std::string>{"s.01.zet", "no place for the frame number"},
             {"t.%d.zet", "no file matches \"t.%d.zet\""},
             {"none/t.%d.zet", "folder \"none\""},
             {"s.%02d.zet --manifest none", "\"none\" cannot be opened: No such file"},
             {"s.%02d.zet --manifest s.01.zet", "\"s.01.zet\" is not a manifest"},
             {"s.%02d.zet --manifest m other", sum + " in \"other\""},
             {"s.%02d.zet --format x", "unknown format \"x\""},
         }) {
        const ProcessResult result = sequence.zet("check " + arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments;
        EXPECT_THAT(result.errors, HasSubstr(message)) << arguments;
    }
}

} // namespace

// "zet write" as its users run it: the program on real files, through the real plug-in.
#include <tests/TestSupport.h>
#include <tests/tools/TestPictureFile.h>
#include <tests/tools/ToolProcess.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;
using TestSupport::bytesOf;
using TestSupport::pictureSpec;
using TestSupport::Process;
using TestSupport::ProcessResult;
using TestSupport::writePictureFile;

namespace {

using Bytes = std::vector<std::uint8_t>;

class WriteCommandTest : public testing::Test {
protected:
    void SetUp() override { fs::create_directory(folder / "out"); }

    /// zet write ARGUMENTS
    std::vector<std::string> command(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {ZET_PROGRAM, "write"});
        return arguments;
    }
    ProcessResult write(std::vector<std::string> arguments) const {
        return Process(command(std::move(arguments)), folder.path()).wait();
    }

    /// Pictures of 8-bit samples, of which each tells its frame.
    void makePictures(const std::string& pattern, const std::vector<int>& frames, int width = 6,
                      int height = 4) const {
        for (const int frame : frames)
            writePictureFile(folder / fmt::format(fmt::runtime(pattern), frame),
                             pictureSpec(width, height, {"R", "G", "B"}, OIIO::TypeUInt8),
                             [=](int, int, int) { return static_cast<float>(frame % 256) / 255; });
    }

    /// All that is in the output folder, hidden files included.
    std::set<std::string> written() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder / "out"))
            names.insert(entry.path().filename().string());
        return names;
    }

    /// Whether the file is a whole 8-bit RGB file of a picture that `makePictures` made for this frame.
    bool holdsFrame(const std::string& name, int frame) const {
        const Bytes bytes = bytesOf(folder / "out" / name);
        return bytes.size() == 28 + 6 * 4 * 3 &&
               Bytes(bytes.begin() + 28, bytes.end()) == Bytes(72, frame % 256);
    }

    const TestSupport::TemporaryFolder folder;
};

TEST_F(WriteCommandTest, WritesExactlyTheBytesOfThePicture) {
    // Two rows of three pixels: every sample differs, and the alpha is neither nothing nor all.
    const auto level = [](int x, int y, int channel) { return 20 * (3 * y + x) + 3 * channel + 100; };
    struct Case {
        const char* file;
        OIIO::TypeDesc type;
        bool alpha;
    };
    for (const auto& [file, type, alpha] : std::vector<Case>{{"p.png", OIIO::TypeUInt8, false},
                                                             {"pa.png", OIIO::TypeUInt8, true},
                                                             {"p16.png", OIIO::TypeUInt16, false},
                                                             {"pa16.png", OIIO::TypeUInt16, true},
                                                             {"p.tif", OIIO::TypeUInt8, false},
                                                             {"pa.tif", OIIO::TypeUInt16, true}}) {
        auto spec =
            alpha ? pictureSpec(3, 2, {"R", "G", "B", "A"}, type) : pictureSpec(3, 2, {"R", "G", "B"}, type);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        writePictureFile(folder / file, spec, [&](int x, int y, int channel) {
            return static_cast<float>(level(x, y, channel)) / 255;
        });
        for (const int channels : {3, 4}) {
            const std::string format = channels == 3 ? "rgb8" : "8-bit RGB 4:4:4:4 (+ alpha)";
            ASSERT_EQ(write({file, "-o", "out/f.zet", "-f", format}).errors, "");
            const auto formatBits = static_cast<std::uint8_t>(channels == 3 ? 0 : 4);
            Bytes expected{'9',        'z', 't', ' ', 1, 1, 1, 0,  // magic, frame counts, version
                           formatBits, 2,   0,   0,                //
                           3,          0,   0,   0,   2, 0, 0, 0,  // width, height
                           3,          0,   1,   0,   2, 0, 0, 0}; // width, flags, height
            for (int y = 0; y < 2; ++y)
                for (int x = 0; x < 3; ++x)
                    for (int channel = 0; channel < channels; ++channel)
                        expected.push_back(
                            static_cast<std::uint8_t>(channel < 3 || alpha ? level(x, y, channel) : 255));
            EXPECT_EQ(bytesOf(folder / "out/f.zet"), expected) << file << " as " << format;
        }
    }
}

TEST_F(WriteCommandTest, TakesSceneLinearPicturesToTheDisplay) {
    // Linear 0.25 under an alpha of one half: the curve is for the colour before it was multiplied.
    writePictureFile(folder / "linear.exr", pictureSpec(1, 1, {"R", "G", "B", "A"}, OIIO::TypeHalf),
                     [](int, int, int channel) { return channel == 3 ? 0.5f : 0.125f; });
    const std::map<std::string, std::vector<int>> expected{{"auto", {68, 68, 68, 128}},
                                                           {"srgb", {68, 68, 68, 128}},
                                                           {"rec709", {62, 62, 62, 128}},
                                                           {"none", {32, 32, 32, 128}}};
    for (const auto& [transfer, pixel] : expected) {
        ASSERT_EQ(write({"linear.exr", "-o", "out/f.zet", "-f", "rgba8", "--transfer", transfer}).exitCode,
                  0);
        const Bytes bytes = bytesOf(folder / "out/f.zet");
        EXPECT_EQ(std::vector<int>(bytes.begin() + 28, bytes.end()), pixel) << transfer;
    }
}

TEST_F(WriteCommandTest, FindsFramesAndNamesFiles) {
    makePictures("s.{:04}.png", {1, 2, 3, 12});
    makePictures("t{}.png", {8, 9});
    makePictures("plain@2x.png", {7});
    struct Case {
        std::vector<std::string> arguments;
        std::map<std::string, int> files; // with the frame that each holds
    };
    for (const auto& [arguments, files] : std::vector<Case>{
             {{"s.%04d.png", "-o", "out/%d.zet"}, {{"1.zet", 1}, {"2.zet", 2}, {"3.zet", 3}, {"12.zet", 12}}},
             {{"s.####.png", "-o", "out/x@@.z9zt", "--frames", "3-1x-2"}, {{"x01.z9zt", 1}, {"x03.z9zt", 3}}},
             {{"s.@@@@.png", "-o", "out/x.9zt", "--frames", "12"}, {{"x.9zt", 12}}},
             {{"t8.png", "t9.png", "-o", "out/#.zet"}, {{"8.zet", 8}, {"9.zet", 9}}},
             {{"t9.png", "plain@2x.png", "-o", "out/#.ZET"}, {{"1.ZET", 9}, {"2.ZET", 7}}},
             {{"plain@2x.png", "-o", "out/x.zet"}, {{"x.zet", 7}}},
         }) {
        auto call = arguments;
        call.insert(call.end(), {"--format", "6", "--jobs", "3"});
        const ProcessResult result = write(call);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        std::set<std::string> names;
        for (const auto& [name, frame] : files) {
            EXPECT_TRUE(holdsFrame(name, frame)) << name;
            names.insert(name);
        }
        EXPECT_EQ(written(), names);
        fs::remove_all(folder / "out");
        fs::create_directory(folder / "out");
    }
}

TEST_F(WriteCommandTest, ABadFrameIsNamedAndTheOthersAreWritten) {
    makePictures("s.{}.png", {1, 2, 5});
    makePictures("s.{}.png", {4}, 8, 4);
    fs::resize_file(folder / "s.2.png", 60);
    const std::vector<std::string> call{"s.%d.png", "-o", "out/%d.zet", "-f", "rgb8", "--frames", "1-5"};
    const ProcessResult result = write(call);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("frame 2: s.2.png: "), HasSubstr("frame 3: s.3.png: does not exist"),
                      HasSubstr("frame 4: s.4.png is 8x4, but the sequence is 6x4"),
                      HasSubstr("3 of 5 frames failed: 2-4")));
    EXPECT_THAT(written(), UnorderedElementsAre("1.zet", "5.zet"));

    auto careful = call;
    careful.insert(careful.end(), {"--fail-fast", "--jobs", "1"});
    fs::remove(folder / "out/5.zet");
    const ProcessResult stopped = write(careful);
    EXPECT_EQ(stopped.exitCode, 1);
    EXPECT_THAT(stopped.errors,
                AllOf(HasSubstr("1 of 5 frames failed: 2\n"), HasSubstr("3 of 5 frames not begun"),
                      HasSubstr("--fail-fast --jobs 1 --resume")));
    EXPECT_THAT(written(), UnorderedElementsAre("1.zet"));

    auto looking = call;
    looking.push_back("--dry-run");
    const ProcessResult plan = write(looking);
    EXPECT_EQ(plan.exitCode, 1);
    EXPECT_THAT(plan.errors,
                AllOf(Not(HasSubstr("frame 1")), HasSubstr("frame 3: "), HasSubstr("frame 4: ")));
}

TEST_F(WriteCommandTest, WhatCannotBeginSaysWhyAndWritesNothing) {
    makePictures("s.{}.png", {1, 2}, 5, 4);
    std::ofstream(folder / "file");
    fs::create_directory(folder / "out/2.zet");
    struct Case {
        std::vector<std::string> arguments;
        std::string message;
    };
    for (const auto& [arguments, message] : std::vector<Case>{
             {{}, "--output is required"},
             {{"-o", "out/x.zet"}, "no pictures"},
             {{"s.%d.png", "-o", "out"}, "\"out\" is a folder"},
             {{"s.%d.png", "-o", "out/%d.zet"}, "\"out/2.zet\" is a folder"},
             {{"s.%d.png", "-o", "gone/%d.zet"}, "folder \"gone\" does not exist"},
             {{"s.%d.png", "-o", "file/%d.zet"}, "folder \"file\" is a file"},
             {{"s.%d.png", "-o", "out/%d.dpx"}, "unknown extension \".dpx\""},
             {{"s.%d.png", "-o", "out/x.zet"}, "would take several frames (1-2)"},
             {{"s.%d.png", "-o", "out/x%d.zet", "-f", "rgb9"}, "unknown format \"rgb9\""},
             {{"s.%d.png", "-o", "out/x%d.zet", "-f", "420"}, "4x4 or 6x4 would do"},
             {{"s.%d.png", "-o", "out/x%d.zet", "--frames", "1-"}, "\"1-\""},
             {{"s.%d.png", "-o", "out/x%d.zet", "--jobs", "0"}, "--jobs"},
             {{"s.%d.png", "-o", "out/x%d.zet", "--plugin", "file"}, "file"},
             {{"s.%d.png", "s.1.png", "-o", "out/x%d.zet"}, "\"s.%d.png\" is a sequence"},
             {{"none.%d.png", "-o", "out/x%d.zet"}, "no picture matches \"none.%d.png\""},
             {{"s.%d.png", "--chart", "8x8", "-o", "out/x%d.zet"}, "--chart"},
             {{"--chart", "8", "-o", "out/x%d.zet"}, "\"8\""},
         }) {
        const ProcessResult result = write(arguments);
        EXPECT_EQ(result.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_THAT(result.errors, HasSubstr(message)) << testing::PrintToString(arguments);
        EXPECT_THAT(written(), ElementsAre("2.zet"));
    }
}

TEST_F(WriteCommandTest, AFolderThatIsClosedIsToldBefore) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "no folder is closed to root";
    fs::permissions(folder / "out", fs::perms::owner_read | fs::perms::owner_exec);
    const ProcessResult result = write({"--chart", "8x8", "-o", "out/%d.zet", "-f", "rgb8"});
    fs::permissions(folder / "out", fs::perms::owner_all);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, HasSubstr("cannot write to the output's folder \"out\""));
}

TEST_F(WriteCommandTest, ResumeWritesOnlyWhatIsNotWhole) {
    const std::vector<std::string> call{"--chart", "16x8",       "--frames", "1-6",
                                        "-o",      "out/%d.zet", "-f",       "rgb8"};
    ASSERT_EQ(write(call).exitCode, 0);
    const Bytes expected = bytesOf(folder / "out/2.zet");
    fs::remove(folder / "out/2.zet");
    fs::resize_file(folder / "out/3.zet", 100);
    std::fstream(folder / "out/4.zet", std::ios::in | std::ios::out | std::ios::binary) << "XXXX";
    const auto past = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (const std::string& name : written())
        fs::last_write_time(folder / "out" / name, past);

    auto resumed = call;
    resumed.push_back("--resume");
    const ProcessResult result = write(resumed);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("whole already: 3 frames"));
    for (int frame = 1; frame <= 6; ++frame) {
        const bool rewritten = fs::last_write_time(folder / "out" / fmt::format("{}.zet", frame)) != past;
        EXPECT_EQ(rewritten, frame >= 2 && frame <= 4) << frame;
    }
    EXPECT_EQ(bytesOf(folder / "out/2.zet"), expected);
    EXPECT_EQ(write(resumed).exitCode, 0); // nothing left to do
}

TEST_F(WriteCommandTest, AFullDiskIsTheFramesError) {
    const auto call = command({"--chart", "400x300", "--frames", "1-3", "-o", "out/%d.zet", "-f", "rgb8"});
    std::string line = "ulimit -f 200; exec"; // no file above 100 kB
    for (const std::string& argument : call)
        line += " '" + argument + "'";
    const ProcessResult result = Process({"sh", "-c", line}, folder.path()).wait();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("frame 1: out/1.zet: "), HasSubstr("3 of 3 frames failed: 1-3")));
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(WriteCommandTest, AnInterruptedRunLeavesOnlyWholeFiles) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Process process(
            command({"--chart", "64x64", "--frames", "1-900000", "-o", "out/it's %06d.zet", "-f", "rgb8"}),
            folder.path());
        const std::size_t before = written().size();
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (written().size() < before + 20 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        process.send(signal);
        const ProcessResult result = process.wait();
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_THAT(result.errors,
                    AllOf(HasSubstr("interrupted with "),
                          HasSubstr(ZET_PROGRAM " write --chart 64x64 --frames 1-900000 -o "
                                                "'out/it'\\''s %06d.zet' -f rgb8 --resume\n")));
        for (const std::string& name : written()) {
            EXPECT_THAT(name, testing::StartsWith("it's "));
            EXPECT_EQ(fs::file_size(folder / "out" / name), 28u + 64 * 64 * 3) << name;
        }
        EXPECT_GE(written().size(), 20u);
    }
}

TEST_F(WriteCommandTest, SaysAsMuchAsIsAskedFor) {
    std::vector<std::string> call{"--chart",      "12x8", "--frames", "1-2",      "-o",
                                  "out/%02d.zet", "-f",   "rgb8",     "--dry-run"};
    const ProcessResult plan = write(call);
    EXPECT_EQ(plan.exitCode, 0);
    EXPECT_EQ(plan.output, "chart -> out/01.zet  12x8  316 bytes\n"
                           "chart -> out/02.zet  12x8  316 bytes\n"
                           "2 frames of \"8-bit RGB 4:4:4\" would be written, 632 bytes\n");
    EXPECT_THAT(written(), IsEmpty());

    call.back() = "--jobs=2";
    EXPECT_THAT(write(call).output, HasSubstr("wrote out/01.zet to out/02.zet (2 frames of 12x8"));
    const ProcessResult quiet = write({"--chart", "12x8", "-o", "out/%02d.zet", "-f", "rgb8", "--quiet"});
    EXPECT_EQ(quiet.output + quiet.errors, "");
    EXPECT_EQ(written().size(), 24u);

    makePictures("s.{}.png", {1});
    const ProcessResult failing =
        write({"s.%d.png", "--frames", "1-2", "-o", "out/x%d.zet", "-f", "rgb8", "-q"});
    EXPECT_EQ(failing.output, "");
    EXPECT_THAT(failing.errors, HasSubstr("frame 2: "));

    EXPECT_THAT(write({"--help"}).output, AllOf(HasSubstr("Exit status"), HasSubstr("422-10")));
    EXPECT_THAT(Process({ZET_PROGRAM, "--version"}, folder.path()).wait().output,
                HasSubstr("library 0.1.31 Beta"));
}

} // namespace

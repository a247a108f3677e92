// "zet write" as its users run it: the program on real files, through the real plug-in.
#include <tests/tools/TestPictureFile.h>
#include <tests/tools/ToolProcess.h>

#include <chrono>
#include <csignal>
#include <fmt/format.h>
#include <map>
#include <thread>
#include <tuple>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;

namespace {

class WriteCommandTest : public Test, public ToolFolder {
protected:
    void SetUp() override { fs::create_directory(folder / "out"); }

    ProcessResult write(const std::string& arguments) const { return zet("write " + arguments); }
    std::set<std::string> written() const { return namesIn(folder / "out"); }

    /// Pictures of 8-bit samples, of which each tells its frame.
    void makePictures(const std::string& pattern, const std::vector<int>& frames, int width = 6) const {
        for (const int frame : frames)
            writePictureFile(folder / fmt::format(fmt::runtime(pattern), frame),
                             pictureSpec(width, 4, {"R", "G", "B"}, OIIO::TypeUInt8),
                             [=](int, int, int) { return static_cast<float>(frame) / 255; });
    }

    /// Whether the file is a whole 8-bit RGB file of a picture that `makePictures` made for this frame.
    bool holdsFrame(const std::string& name, int frame) const {
        const Bytes bytes = bytesOf(folder / "out" / name);
        return bytes.size() == 28 + 72 && Bytes(bytes.begin() + 28, bytes.end()) == Bytes(72, frame);
    }
};

TEST_F(WriteCommandTest, WritesExactlyTheBytesOfThePicture) {
    // Two rows of three pixels: every sample differs, and the alpha is neither nothing nor all.
    const auto level = [](int x, int y, int channel) { return 20 * (3 * y + x) + 3 * channel + 100; };
    for (const auto& [file, type, channels] : {std::tuple{"p.png", OIIO::TypeUInt8, 3},
                                               {"pa16.png", OIIO::TypeUInt16, 4},
                                               {"pa.tif", OIIO::TypeUInt8, 4}}) {
        std::vector<std::string> names{"R", "G", "B", "A"};
        names.resize(static_cast<std::size_t>(channels));
        auto spec = pictureSpec(3, 2, names, type);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        writePictureFile(folder / file, spec, [&](int x, int y, int channel) {
            return static_cast<float>(level(x, y, channel)) / 255;
        });
        for (const std::string format : {"rgb8", "'8-bit RGB 4:4:4:4 (+ alpha)'"}) {
            const int written = format == "rgb8" ? 3 : 4;
            ASSERT_EQ(write(file + (" -o out/f.zet -f " + format)).errors, "");
            Bytes expected;
            for (int i = 0; i < 6 * written; ++i) {
                const int sample = level(i / written % 3, i / written / 3, i % written);
                expected.push_back(static_cast<std::uint8_t>(i % written < channels ? sample : 255));
            }
            const Bytes bytes = bytesOf(folder / "out/f.zet");
            EXPECT_EQ(Bytes(bytes.begin() + 28, bytes.end()), expected) << file << " as " << format;
        }
    }
}

TEST_F(WriteCommandTest, TakesSceneLinearPicturesToTheDisplay) {
    // Linear 0.25 under an alpha of one half: the curve is for the colour before it was multiplied.
    writePictureFile(folder / "linear.exr", pictureSpec(1, 1, {"R", "G", "B", "A"}, OIIO::TypeHalf),
                     [](int, int, int channel) { return channel == 3 ? 0.5f : 0.125f; });
    for (const auto& [transfer, colour] : std::map<std::string, int>{{"auto", 68}, {"none", 32}}) {
        const ProcessResult result = write("linear.exr -o out/f.zet -f rgba8 --transfer " + transfer);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.output.find("linear to sRGB") != std::string::npos, transfer == "auto");
        EXPECT_EQ(bytesOf(folder / "out/f.zet").at(28), colour) << transfer;
        EXPECT_EQ(bytesOf(folder / "out/f.zet").at(31), 128) << transfer;
    }
}

TEST_F(WriteCommandTest, FindsFramesAndNamesFiles) {
    makePictures("s.{:04}.png", {1, 2, 3, 12});
    makePictures("t{}.png", {9});
    makePictures("plain@2x.png", {7});
    using FramesByName = std::map<std::string, int>;
    for (const auto& [arguments, files] : std::map<std::string, FramesByName>{
             {"s.%04d.png -o out/%d.zet", {{"1.zet", 1}, {"2.zet", 2}, {"3.zet", 3}, {"12.zet", 12}}},
             {"s.####.png -o out/x@@.z9zt --frames 3-1x-2", {{"x01.z9zt", 1}, {"x03.z9zt", 3}}},
             {"s.@@@@.png -o out/x.9zt --frames 12", {{"x.9zt", 12}}},
             {"t9.png plain@2x.png -o out/#.ZET", {{"1.ZET", 9}, {"2.ZET", 7}}},
         }) {
        const ProcessResult result = write(arguments + " --format 6 --jobs 3");
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
    makePictures("s.{}.png", {4}, 8);
    fs::resize_file(folder / "s.2.png", 60);
    const std::string call = "s.%d.png -o out/%d.zet -f rgb8 --frames 1-5";
    const ProcessResult result = write(call);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("frame 2: s.2.png: "), HasSubstr("frame 3: s.3.png: does not exist"),
                      HasSubstr("frame 4: s.4.png is 8x4, but the sequence is 6x4"),
                      HasSubstr("3 of 5 frames failed: 2-4")));
    EXPECT_THAT(written(), UnorderedElementsAre("1.zet", "5.zet"));

    fs::remove(folder / "out/5.zet");
    const ProcessResult stopped = write(call + " --fail-fast --jobs 1");
    EXPECT_EQ(stopped.exitCode, 1);
    EXPECT_THAT(stopped.errors, AllOf(HasSubstr("1 of 5 frames failed: 2\n"),
                                      HasSubstr("3 of 5 frames not begun"), HasSubstr(" write --resume ")));
    EXPECT_THAT(written(), UnorderedElementsAre("1.zet"));

    const ProcessResult plan = write(call + " --dry-run");
    EXPECT_EQ(plan.exitCode, 1);
    EXPECT_THAT(plan.errors,
                AllOf(Not(HasSubstr("frame 1")), HasSubstr("frame 3: "), HasSubstr("frame 4: ")));
}

TEST_F(WriteCommandTest, APictureIsRefusedBeforeItTakesMemory) {
    makePictures("s.{}.png", {1});
    makePictures("s.{}.png", {2}, 200000);
    auto spec = pictureSpec(1500, 1000, {"Y"}, OIIO::TypeHalf); // of which 6x4 pixels are to be seen
    spec.full_width = 6;
    spec.full_height = 4;
    writePictureFile(folder / "s.3.exr", spec, [](int, int, int) { return 0.5f; });
    const std::string call = "s.1.png s.2.png s.3.exr -o out/%d.zet -f rgb8 --jobs 1";
    EXPECT_THAT(write(call + " --memory 161MB").errors,
                AllOf(HasSubstr("frame 2: s.2.png is 200000x4, but the sequence is 6x4\n"),
                      HasSubstr("frame 3: s.3.exr needs 4MB of memory on its way, and each of the frames at "
                                "once has 1.0 MB (--memory, --jobs)\n")));
    EXPECT_THAT(written(), ElementsAre("1.zet"));
    EXPECT_THAT(write(call + " --memory 170MB").errors, HasSubstr("1 of 3 frames failed: 2\n"));
}

TEST_F(WriteCommandTest, WhatCannotBeginSaysWhyAndWritesNothing) {
    makePictures("s.{}.png", {1, 2}, 5);
    std::ofstream(folder / "file");
    fs::create_directory(folder / "out/2.zet");
    for (const auto& [arguments, reason] : std::map<std::string, std::string>{
             {"", "zet: --output is required"},
             {"s.%d.png -o out/%d.zet", "\"out/2.zet\" is a folder"},
             {"s.%d.png -o gone/%d.zet", "folder \"gone\" does not exist"},
             {"s.%d.png -o out/%d.dpx", "unknown extension \".dpx\""},
             {"s.%d.png -o out/x.zet", "would take several frames (1-2)"},
             {"s.%d.png -o out/x%d.zet -f rgb9",
              "unknown format \"rgb9\"; the formats are\n  0  dxt5    \"8-bit YCoCg"},
             {"s.%d.png -o out/x%d.zet -f 07", "unknown format \"07\""},
             {"s.%d.png -o out/x%d.zet -f ''", "unknown format \"\""},
             {"s.%d.png -o out/x%d.zet -f 420", "picture of 5x4; 4x4 or 6x4 would do"},
             {"--chart 1918x1079 -o out/x%d.zet -f dxt5", "1916x1076 or 1920x1080 would do"},
             {"--chart 3x400 -o out/x%d.zet -f dxt5", "; 4x400 would do"},
             {"s.%d.png -o out/x%d.zet --frames ''", "\"\""},
             {"s.%d.png -o out/x%d.zet --frames 1 2", "write 1-2 for all from 1 to 2"},
             {"s.%d.png -o out/x%d.zet --jobs 0", "--jobs"},
             {"s.%d.png -o out/x%d.zet --plugin file", "file"},
             {"none.%d.png -o out/x%d.zet", "no picture matches \"none.%d.png\""},
             {"s.%d.png --chart 8x8 -o out/x%d.zet", "--chart"},
             {"--chart 8 -o out/x%d.zet", "\"8\""},
             {"--chart 1920x1080 -o out/x%d.zet --memory 100MB", "needs 270MB"},
         }) {
        expectRefused("write " + arguments, reason);
        EXPECT_THAT(written(), ElementsAre("2.zet"));
    }
}

TEST_F(WriteCommandTest, ResumeWritesOnlyWhatIsNotWhole) {
    makePictures("s.{}.png", {1, 2, 3, 4, 5, 6, 7, 8});
    const std::string call = "s.%d.png -o out/%d.zet -f rgb8";
    ASSERT_EQ(write(call).exitCode, 0);
    fs::remove(folder / "out/2.zet");
    fs::resize_file(folder / "out/3.zet", 99);
    overwrite("out/4.zet", 0, 'X');
    fs::resize_file(folder / "out/7.zet", 101);
    ASSERT_EQ(run("zet write --chart 4x6 -o out/8.zet -f rgb8 --frames 8").errors,
              ""); // as long, but not the same
    const auto now = fs::last_write_time(folder / "s.1.png"), later = now + std::chrono::hours(1);
    for (const std::string& name : written())
        fs::last_write_time(folder / "out" / name, later);
    fs::last_write_time(folder / "out/5.zet", now - std::chrono::seconds(1));
    // As if it had been rendered long ago and moved here just now.
    fs::last_write_time(folder / "s.6.png", now - std::chrono::hours(1));
    fs::last_write_time(folder / "out/6.zet", now - std::chrono::minutes(1));

    const ProcessResult result = write(call + " --resume");
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("whole already: 1 frame"));
    for (int frame = 1; frame <= 8; ++frame) {
        EXPECT_EQ(fs::last_write_time(folder / fmt::format("out/{}.zet", frame)) == later, frame == 1);
        EXPECT_TRUE(holdsFrame(fmt::format("{}.zet", frame), frame)) << frame;
    }
    EXPECT_THAT(write(call + " --resume").output, HasSubstr("100% 8/8 frames")); // nothing left to do
    EXPECT_THAT(write("out/../out/%d.zet -o out/%d.zet -f dxt5").errors,
                HasSubstr("\"out/1.zet\" is the picture that it would be made from"));
}

TEST_F(WriteCommandTest, WhatOthersReplaceMeanwhileFailsTheFrame) {
    makePictures("s.{}.png", {1, 2, 3});
    for (const auto& [name, message] : std::map<std::string, std::string>{
             {"s.1.png", "frame 1: s.1.png changed while it was converted\n"},
             {"m", "frame 1: out/1.zet: was not put in its place: manifest \"m\" is another run's now\n"
                   "zet: 1 of 3 frames failed: 1\nzet: stopped with 2 of 3 frames not begun"}}) {
        const std::string call = "s.%d.png -o out/%d.zet -f rgb8 --manifest m -j 1 --plugin " FAULTY_WRITER;
        ASSERT_EQ(write(call).exitCode, 0);
        fs::remove(folder / "out/1.zet");
        fs::copy_file(folder / name, folder / (name + ".later"));
        const ProcessResult result = write(call);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.errors, HasSubstr(message));
        EXPECT_THAT(written(), ElementsAre("2.zet", "3.zet"));
    }
}

TEST_F(WriteCommandTest, FilesThatStayKeepTheirEntries) {
    makePictures("s.{}.png", {1, 2, 3});
    const std::string call = "s.%d.png -o out/%d.zet --manifest m -f ";
    ASSERT_EQ(write(call + "rgb8").exitCode, 0);
    const auto checked = [&] { return zet("check out/%d.zet --manifest m").output; };
    fs::resize_file(folder / "s.2.png", 60);
    // The menu of this plug-in lacks rgb10.
    EXPECT_EQ(write(call + "rgb10 --plugin " FAULTY_WRITER).exitCode, 2);
    EXPECT_THAT(checked(), StartsWith("PASS"));
    EXPECT_EQ(write(call + "rgb8").exitCode, 1);
    EXPECT_THAT(checked(), StartsWith("PASS"));
    EXPECT_EQ(write(call + "rgb8 --resume").exitCode, 1);
    EXPECT_THAT(checked(), StartsWith("PASS"));
    // Killed between the two: the entry is taken back, and the new one not there yet.
    std::ofstream(folder / "m", std::ios::app) << "- 3.zet\n";
    EXPECT_THAT(checked(), StartsWith("frame 3: not in the manifest\n"));
}

TEST_F(WriteCommandTest, ALimitOnTheSizeOfFilesIsTheFramesError) {
    const ProcessResult result = // no file above 100 kB
        run("ulimit -f 200; zet write --chart 400x300 --frames 1-3 -o out/%d.zet -f rgb8");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("frame 1: out/1.zet: "), HasSubstr("3 of 3 frames failed: 1-3")));
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(WriteCommandTest, AnInterruptedRunLeavesOnlyWholeFiles) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Process process = start("write --chart 64x64 --frames 1-100000 -o \"out/it's %06d.zet\" -f rgb8");
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        for (const auto before = written().size(); written().size() < before + 5;) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        process.send(signal);
        const ProcessResult result = process.wait();
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_THAT(result.errors,
                    AllOf(HasSubstr("interrupted with "),
                          HasSubstr(ZET_PROGRAM " write --resume --chart 64x64 --frames 1-100000 -o "
                                                "'out/it'\\''s %06d.zet' -f rgb8\n")));
        for (const std::string& name : written()) {
            EXPECT_THAT(name, StartsWith("it's "));
            EXPECT_EQ(fs::file_size(folder / "out" / name), 28u + 64 * 64 * 3) << name;
        }
    }
}

TEST_F(WriteCommandTest, SaysAsMuchAsIsAskedFor) {
    const std::string call = "--chart 12x8 --frames 1-2 -o out/%02d.zet -f rgb8";
    EXPECT_EQ(write(call + " --dry-run").output,
              "chart -> out/01.zet  12x8  316 bytes\n"
              "chart -> out/02.zet  12x8  316 bytes\n"
              "2 frames of \"8-bit RGB 4:4:4\" would be written, 632 bytes\n");
    EXPECT_THAT(written(), IsEmpty());
    EXPECT_THAT(write(call + " --jobs=2").output,
                HasSubstr("wrote out/01.zet to out/02.zet (2 frames of 12x8"));

    EXPECT_THAT(write(call + " --jobs=2 --memory=161MB").output, HasSubstr("wrote out/01.zet"));
    EXPECT_THAT(write("--chart 1920x1080 -o out/%02d.zet --jobs=2 --memory=270MB --dry-run").output,
                HasSubstr("note: 1 frame at once"));

    makePictures("h.{}.png", {-2000000000, 2000000000});
    EXPECT_THAT(write("h.%d.png -o out/%02d.zet -f rgb8").output,
                HasSubstr("note: 3999999999 frames between -2000000000 and 2000000000 have no pictures"));

    EXPECT_EQ(write(call + " --quiet").output, "");
    EXPECT_THAT(write("--help").output, AllOf(HasSubstr("Exit status"), HasSubstr("422-10")));
    EXPECT_THAT(zet("--version").output, AllOf(HasSubstr("library 0.1.31 Beta"), HasSubstr("instructions")));
}

} // namespace

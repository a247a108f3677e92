// What the system refuses - full and read-only disks, names that cannot be, folders that vanish - as library,
// plug-in and tool report it.
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <host/EmbeddedHost.h>
#include <tests/MediaFile.h>
#include <tests/host/TestPicture.h>
#include <tests/tools/ToolProcess.h>

#include <fmt/format.h>

#include <chrono>
#include <thread>

#include <sys/mount.h>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;

namespace {

constexpr int side = 64;
constexpr std::uintmax_t fileBytes = 28 + side * side * 3;

/// A small disk, mounted on a folder of its own for as long as this lives.
class SmallDisk {
public:
    SmallDisk(fs::path where, unsigned long flags, const char* options) : folder(std::move(where)) {
        fs::create_directory(folder);
        mounted = ::mount("none", folder.c_str(), "tmpfs", flags, options) == 0;
    }
    ~SmallDisk() {
        if (mounted)
            ::umount2(folder.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    explicit operator bool() const { return mounted; }

private:
    fs::path folder;
    bool mounted;
};

class SystemFaultTest : public Test, public ToolFolder {
protected:
    static void SetUpTestSuite() { EmbeddedHost::loadPlugin(ZET_PLUGIN_FILE); }
    void SetUp() override {
        std::ofstream(folder / "file");
        fs::create_directory(folder / "out");
        fs::create_directory(folder / "folder1.zet");
    }

    void expectReported(const fs::path& file, const char* message) {
        SCOPED_TRACE(file);
        auto frame = Zentrel::FullFrame::create(Zentrel::FullFrameFormat::RGB_U8(), side, side);
        EXPECT_EQ(refusalOf(file, [&] { writeMediaFile(file, std::move(frame)); }), message);
        TestPicture picture(side, side, false, [](auto...) { return 0.5f; });
        EmbeddedHost::WriteNode node("zet");
        node.setMenu("Output format", "8-bit RGB 4:4:4");
        EXPECT_THAT(node.render(picture, file).criticalErrors, ElementsAre(message));
    }

    static std::string writing(const std::string& output, const std::string& frames = "1-3") {
        return fmt::format("write --chart {0}x{0} -j 1 -f rgb8 --frames {1} -o {2}", side, frames, output);
    }

    const std::string longName = std::string(252, 'n') + "%d.zet"; // two characters too long
};

TEST_F(SystemFaultTest, LibraryAndPlugInReportIt) {
    expectReported(folder / "gone/f.zet", "Failed to open file");
    expectReported(folder / "file/f.zet", "Failed to open file");
    expectReported(folder / "folder1.zet", "Failed to open file");
    expectReported(folder / longName, "Failed to open file");
    expectReported("/dev/full", "Failed to write file");
}

TEST_F(SystemFaultTest, TheToolNamesFolderOrFramesAndLeavesNothingBehind) {
    for (const auto& [output, exitCode, message] : std::vector<std::tuple<std::string, int, const char*>>{
             {"file/%d.zet", 2, "\"file\" is a file"},
             {"out/" + longName, 1, "3 of 3 frames failed: 1-3"},
         }) {
        const ProcessResult result = zet(writing(output));
        EXPECT_EQ(result.exitCode, exitCode) << output;
        EXPECT_THAT(result.errors, HasSubstr(message));
        EXPECT_THAT(namesIn(folder / "out"), IsEmpty());
    }
    EXPECT_EQ(zet(writing("out/\xff\xfe%d.zet")).exitCode, 0) << "a name is bytes, in whatever encoding";
    EXPECT_EQ(namesIn(folder / "out")
                  .count("\xff\xfe"
                         "3.zet"),
              1u);
}

TEST_F(SystemFaultTest, AFullDiskIsNoticed) {
    const SmallDisk disk(folder / "disk", 0, "size=32k"); // room for two files and four bytes
    if (!disk)
        GTEST_SKIP() << "only root may mount a small disk";
    const ProcessResult result = zet(writing("disk/%d.zet", "1-9"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("frame 3: disk/3.zet: Failed to write file; the disk is full"),
                                     HasSubstr("1 of 9 frames failed: 3\n"),
                                     HasSubstr("stopped with 6 of 9 frames not begun")));
    EXPECT_THAT(namesIn(folder / "disk"), ElementsAre("1.zet", "2.zet"));
    for (const char* name : {"disk/1.zet", "disk/2.zet"})
        EXPECT_EQ(fs::file_size(folder / name), fileBytes);
    // Whoever writes the pictures may be careless.
    for (const std::string type : {"png", "tif", "exr", "jpg", "tga", "bmp", "sgi"}) {
        const ProcessResult read = zet("read disk/%d.zet -q -j 1 -o disk/%d." + type);
        EXPECT_EQ(read.exitCode, 1) << type;
        EXPECT_THAT(read.errors, AllOf(HasSubstr("disk/1." + type + ": cannot be written: "),
                                       HasSubstr("stopped with 1 of 2 frames not begun\n")));
    }
    EXPECT_THAT(namesIn(folder / "disk"), ElementsAre("1.zet", "2.zet"));
    expectReported(folder / "disk/3.zet", "Failed to write file");
}

TEST_F(SystemFaultTest, OutputThatCannotBePrintedIsNoSuccess) {
    ASSERT_EQ(zet(writing("out/%d.zet")).exitCode, 0);
    for (const std::string command : {"info out/1.zet", "check out/%d.zet --json", "formats", "--version"}) {
        const ProcessResult result = zet(command + " > /dev/full");
        EXPECT_EQ(result.exitCode, 2) << command;
        EXPECT_EQ(result.errors, "zet: standard output cannot be written\n") << command;
    }
}

TEST_F(SystemFaultTest, AReadOnlyDiskIsNoticed) {
    const SmallDisk disk(folder / "disk", MS_RDONLY, nullptr);
    if (!disk)
        GTEST_SKIP() << "only root may mount a small disk";
    expectReported(folder / "disk/f.zet", "Failed to open file");
    expectRefused(writing("disk/%d.zet"), "\"disk\": Read-only file system");
}

TEST_F(SystemFaultTest, AFolderThatVanishesDuringTheRunCostsOnlyItsFrames) {
    Process process = start(writing("out/%d.zet", "1-3000"));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!fs::exists(folder / "out/5.zet")) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    fs::rename(folder / "out", folder / "away"); // at once, however many files there are
    const ProcessResult result = process.wait();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("frame 3000: out/3000.zet: Failed to open file"), HasSubstr("-3000\n")));
    for (const std::string& name : namesIn(folder / "away"))
        EXPECT_TRUE(name.front() == '.' || fs::file_size(folder / "away" / name) == fileBytes) << name;
}

} // namespace

// How media files come under their names, and what becomes of those that do not.
#include <pictures/OutputFile.h>
#include <tests/TestSupport.h>
#include <tools/zet/WriteManifest.h>

#include <sys/wait.h>
#include <unistd.h>

using namespace testing;
using namespace TestSupport;
using namespace ZetTool;

namespace {

class OutputTest : public Test {
protected:
    static void write(const std::filesystem::path& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
    }

    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "f.0001.zet";
};

TEST_F(OutputTest, AFileAppearsWhenItIsWhole) {
    std::filesystem::path temporary;
    const auto attempt = [&](const std::string& bytes) {
        OutputFile output(file);
        temporary = output.temporary();
        EXPECT_EQ(temporary.parent_path(), folder.path());
        EXPECT_EQ(temporary.filename().string().front(), '.');
        EXPECT_NE(temporary, OutputFile(file).temporary());
        if (!bytes.empty())
            write(temporary, bytes);
        output.commit(5);
    };
    EXPECT_THAT(messageOf([&] { attempt(""); }), HasSubstr(file.string() + ": was not written"));
    EXPECT_THAT(messageOf([&] { attempt("four"); }), HasSubstr("4 bytes were written instead of 5"));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_FALSE(std::filesystem::exists(temporary));

    write(folder / "other", "what was there before");
    std::filesystem::create_symlink("other", file);
    attempt("whole");
    EXPECT_EQ(std::filesystem::file_size(file), 5u);
    EXPECT_EQ(std::filesystem::file_size(folder / "other"), 21u);
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_THAT(messageOf([&] { attempt("whole"); }), HasSubstr("cannot be renamed"));
    EXPECT_FALSE(std::filesystem::exists(temporary));
}

TEST_F(OutputTest, AManifestIsTrueAtEveryMoment) {
    const auto manifest = folder / "m";
    const auto listed = [&] { return Manifest::load(manifest).sums; };
    const FileSum one = sumBytes("1", 1), other = sumBytes("2", 1);
    Manifest earlier;
    earlier.sums = {{"f.0001.zet", one}, {"f.0002.zet", one}};
    WriteManifest written(manifest, earlier, folder / "f.%04d.zet");
    const auto replace = [&](bool succeeds) {
        written.replace(file, other, [&] {
            EXPECT_EQ(listed().count("f.0001.zet"), 0u);
            if (!succeeds)
                throw std::runtime_error("not renamed");
        });
    };
    EXPECT_EQ(messageOf([&] { replace(false); }), "not renamed");
    EXPECT_EQ(listed(), earlier.sums);
    replace(true);
    earlier.sums["f.0001.zet"] = other;
    EXPECT_EQ(listed(), earlier.sums);
}

TEST_F(OutputTest, WhatADeadProcessOfThisMachineLeftIsRemoved) {
    const OutputFile alive(file);
    write(alive.temporary(), "in hand");
    const pid_t process = ::fork();
    if (process == 0) {
        const OutputFile dying(file);
        write(dying.temporary(), "left behind");
        ::_exit(0); // without the destructor
    }
    ::waitpid(process, nullptr, 0);
    const std::string ours = alive.temporary().filename().string();
    const std::string elsewhere = ".zet-elsewhere" + ours.substr(ours.find('-', 5));
    write(folder / elsewhere, "of another machine");
    EXPECT_THAT(namesIn(folder.path()), SizeIs(3));
    removeAbandonedFiles(folder.path());
    EXPECT_THAT(namesIn(folder.path()), UnorderedElementsAre(ours, elsewhere));
    EXPECT_NO_THROW(removeAbandonedFiles(folder / "gone"));
}

} // namespace

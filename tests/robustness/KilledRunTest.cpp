// Runs that are killed or interrupted at any moment. scripts/kill.sh repeats these tests many times.
#include <tests/tools/ToolProcess.h>

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <iostream>
#include <map>
#include <random>
#include <thread>

namespace fs = std::filesystem;
using namespace testing;
using namespace TestSupport;
using Clock = std::chrono::steady_clock;
using Files = std::map<std::string, Bytes>;

namespace {

/// --gtest_random_seed repeats the moments of an earlier run.
unsigned seed() {
    const auto given = static_cast<unsigned>(GTEST_FLAG_GET(random_seed));
    return given != 0 ? given : 1 + std::random_device()() % 99999;
}

class KilledRunTest : public TestWithParam<int>, public ToolFolder {
protected:
    /// Writing a sequence with its manifest to a new folder, or going on with one that is there.
    std::string writing(const std::string& output) const {
        fs::create_directory(folder / output);
        return fmt::format("write --chart 160x90 --frames 1-300 --jobs 3 -f rgb10 -o {0}/%d.zet "
                           "--manifest {0}.manifest ",
                           output);
    }

    Files filesIn(const std::string& name, bool hidden) const {
        Files files;
        for (const std::string& file : namesIn(folder / name))
            if (hidden || file.front() != '.')
                files[file] = bytesOf(folder / name / file);
        return files;
    }
};

TEST_P(KilledRunTest, LeavesWholeFilesAndCanGoOn) {
    const auto begin = Clock::now();
    ASSERT_EQ(zet(writing("whole")).exitCode, 0);
    const std::chrono::duration<double> duration = Clock::now() - begin;
    const Files expected = filesIn("whole", true);
    ASSERT_EQ(expected.size(), 300u);

    const unsigned seedOfMoments = seed();
    std::cout << "random seed " << seedOfMoments << '\n';
    std::mt19937 random(seedOfMoments);
    for (int round = 0; round < 5; ++round) {
        fs::remove_all(folder / "killed");
        fs::remove(folder / "killed.manifest");
        const std::chrono::duration<double> moment = duration * (random() % 1000 / 1000.0);
        SCOPED_TRACE("round " + std::to_string(round) + ", after " + std::to_string(moment.count()) + " s");
        Process process = start(writing("killed"));
        std::this_thread::sleep_for(moment);
        process.send(GetParam());
        process.wait();

        const Files left = filesIn("killed", false);
        for (const auto& [name, bytes] : left)
            ASSERT_EQ(bytes, expected.at(name)) << name;
        std::ifstream manifest(folder / "killed.manifest");
        const auto entries =
            std::count(std::istreambuf_iterator(manifest), {}, '\n') - 1; // below the head line
        ASSERT_GE(entries, static_cast<long>(left.size()) - 3)
            << "only frames in hand may lack their entries";
        const ProcessResult resumed = zet(writing("killed") + "--resume");
        ASSERT_EQ(resumed.exitCode, 0) << resumed.errors;
        ASSERT_EQ(filesIn("killed", true), expected) << "the same files, and no others left";
        const ProcessResult check = zet("check killed/%d.zet --frames 1-300 --manifest killed.manifest");
        ASSERT_EQ(check.exitCode, 0) << check.output << check.errors;
    }
}

TEST_P(KilledRunTest, LeavesTheEntriesOfFilesItDidNotReplace) {
    ASSERT_EQ(zet(writing("twice")).exitCode, 0);
    const auto listed = fs::file_size(folder / "twice.manifest");
    Process process = start(writing("twice"));
    const auto deadline = Clock::now() + std::chrono::minutes(1);
    while (fs::file_size(folder / "twice.manifest") == listed && Clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    process.send(GetParam());
    process.wait();
    const ProcessResult check = zet("check twice/%d.zet --manifest twice.manifest");
    if (GetParam() == SIGINT || check.exitCode == 0)
        EXPECT_THAT(check.output, StartsWith("PASS"));
    else // frames in hand
        EXPECT_THAT(check.output, ContainsRegex(": [123] frames? with faults, 300 expected\n$"));
}

INSTANTIATE_TEST_SUITE_P(, KilledRunTest, Values(SIGKILL, SIGINT),
                         [](const auto& which) { return which.param == SIGKILL ? "Killed" : "Interrupted"; });

} // namespace

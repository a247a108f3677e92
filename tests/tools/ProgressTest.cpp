// What a run says about itself.
#include <tools/zet/Interruption.h>
#include <tools/zet/Progress.h>

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>

using namespace ZetTool;

namespace {

TEST(Progress, TellsFramesRatesAndTimeLeft) {
    EXPECT_EQ(progressLine({10, 36'010, 0, 2}), "0% 10/36010 frames, 5.0 frames/s, 0.0 MB/s, 2:00:00 left");
    EXPECT_EQ(progressLine({10, 20, 0, 2, 2, 4}),
              "50% 10/20 frames, 2 failed, 3.0 frames/s, 0.0 MB/s, 0:02 left");
    EXPECT_EQ(progressLine({9, 9, 0, 0, 0, 9}), "100% 9/9 frames, 0.0 frames/s, 0.0 MB/s");
    EXPECT_EQ(progressBar({12, 24, 60'000'000, 4}, 120),
              "[###############---------------] 50% 12/24 frames, 3.0 frames/s, 15.0 MB/s, 0:04 left");
    for (std::size_t columns = 0; columns < 100; ++columns)
        EXPECT_LE(progressBar({24, 24, 60'000'000, 4}, columns).size(), columns);
}

TEST(InterruptionDeathTest, SaysThatItWaitsAndEndsTheProcessTheSecondTime) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const Interruption interruption;
            std::raise(SIGINT);
            std::cerr << (Interruption::requested() ? "still here" : "not told");
            std::raise(SIGINT);
        },
        testing::KilledBySignal(SIGINT), "frames in hand.*\n.*still here");
}

} // namespace

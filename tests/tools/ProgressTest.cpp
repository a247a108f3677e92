// What a run says about itself.
#include <tools/zet/Progress.h>

#include <gtest/gtest.h>

using namespace ZetTool;

namespace {

TEST(Progress, TellsFramesRatesAndTimeLeft) {
    EXPECT_EQ(progressLine({10, 36'010, 0, 2}), "0% 10/36010 frames, 5.0 frames/s, 0.0 MB/s, 2:00:00 left");
    EXPECT_EQ(progressLine({10, 20, 0, 2, 4}), "50% 10/20 frames, 3.0 frames/s, 0.0 MB/s, 0:02 left")
        << "only what was written counts for the rate";
    EXPECT_EQ(progressBar({12, 24, 60'000'000, 4}, 120),
              "[###############---------------] 50% 12/24 frames, 3.0 frames/s, 15.0 MB/s, 0:04 left");
    for (std::size_t columns = 0; columns < 100; ++columns)
        EXPECT_LE(progressBar({24, 24, 60'000'000, 4}, columns).size(), columns);
}

} // namespace

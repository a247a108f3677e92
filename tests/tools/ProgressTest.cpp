// What a run says about itself.
#include <tools/zet/Progress.h>

#include <gtest/gtest.h>

#include <sstream>

using namespace ZetTool;

namespace {

TEST(Progress, TellsFramesRatesAndTimeLeft) {
    EXPECT_EQ(progressLine({0, 24, 0, 0}), "0/24 frames, 0.0 frames/s, 0.0 MB/s");
    EXPECT_EQ(progressLine({12, 24, 60'000'000, 4}), "12/24 frames, 3.0 frames/s, 15.0 MB/s, 0:04 left");
    EXPECT_EQ(progressLine({10, 36'010, 0, 2}), "10/36010 frames, 5.0 frames/s, 0.0 MB/s, 2:00:00 left");
    EXPECT_EQ(progressBar({12, 24, 60'000'000, 4}, 120),
              "[###############---------------] 12/24 frames, 3.0 frames/s, 15.0 MB/s, 0:04 left");
    for (std::size_t columns = 0; columns < 100; ++columns)
        EXPECT_LE(progressBar({24, 24, 60'000'000, 4}, columns).size(), columns);
}

TEST(Progress, ErrorsAlwaysComeThrough) {
    std::ostringstream silent, terminal, errors;
    Progress quiet(Progress::Style::Silent, silent, errors, 2);
    quiet.written(500);
    quiet.failed("frame 2 went wrong");
    EXPECT_EQ(quiet.finish().bytes, 500u);
    EXPECT_EQ(silent.str() + errors.str(), "frame 2 went wrong\n");

    Progress bar(Progress::Style::Bar, terminal, terminal, 2);
    bar.failed("frame 1 went wrong");
    bar.finish();
    EXPECT_EQ(terminal.str(), "\r\x1b[Kframe 1 went wrong\n\r\x1b[K"); // each on a line without the bar
}

} // namespace

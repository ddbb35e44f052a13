// SPDX-License-Identifier: Apache-2.0
#include "commands/progress_bar.h"

#include <gtest/gtest.h>

namespace quorvel::command {
namespace {

TEST(ProgressText, ShowsShareRateAndTimeLeft) {
    EXPECT_EQ(progressText(0, 40, 0.0, 10), "[..........] 0 of 40");
    EXPECT_EQ(progressText(10, 40, 0.5, 10), "[##........] 10 of 40, 20/s, 2 s left");
    EXPECT_EQ(progressText(10, 40, 4.0, 10), "[##........] 10 of 40, 2.5/s, 12 s left");
    EXPECT_EQ(progressText(40, 40, 2.0, 10), "[##########] 40 of 40, 20/s, 0 s left");
}

TEST(ProgressText, NothingToDoIsDone) {
    EXPECT_EQ(progressText(0, 0, 0.0, 4), "[####] 0 of 0");
}

TEST(ProgressText, FitsATerminalOfEightyColumns) {
    EXPECT_LT(progressText(999998, 999999, 999999.0, 30).size(), 80U);
    EXPECT_LT(progressText(1, 999999, 999.0, 30).size(), 80U);
}

}  // namespace
}  // namespace quorvel::command

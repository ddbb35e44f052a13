// SPDX-License-Identifier: Apache-2.0
// Threads that end hand their scratch memory on to those that come.
#include <vector>

#include <gtest/gtest.h>

#include "library/depth_scene.h"
#include "library/same_ruler.h"
#include "support/working_directory.h"
#include "threads/at_once.h"
#include "threads/station.h"

namespace quorvel::test {

namespace {

/// A small frame, measured by a ruler that lives no longer.
MeasureResult quickReading(float height) {
    const DepthScene scene = blockScene(height);
    Draws draws(1);
    Quorvel ruler = scene.ruler();
    setPlane(ruler, {0, 0, 1}, scene.distance, 5);
    ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
    ruler.getCameraFrame(scene.color(), scene.depth(draws));
    ruler.measureOnce();
    return ruler.result;
}

float heightOf(std::size_t thread) {
    return 100.0F + 10.0F * static_cast<float>(thread);
}

void expectReadingsAtOnce(std::size_t threads) {
    std::vector<MeasureResult> together(threads);
    atOnce(threads, [&](std::size_t i) { together[i] = quickReading(heightOf(i)); });
    for (std::size_t i = 0; i < threads; ++i) {
        EXPECT_FALSE(together[i].corners.empty()) << "thread " << i;
        EXPECT_TRUE(sameResult(together[i], quickReading(heightOf(i)))) << "thread " << i;
    }
}

// This test has to come first in its process: the library's first calls, with their one-time choices, are then made on
// several threads at once.
TEST(ComingAndGoing, TheFirstCallsMayComeAtOnce) {
    expectReadingsAtOnce(4);
}

TEST(ComingAndGoing, MoreThreadsThanThereAreSlotsForScratchMemory) {
    for (int round = 0; round < 5; ++round) {
        expectReadingsAtOnce(24);
    }
}

TEST(ComingAndGoing, ManyGenerationsOfThreads) {
    for (int round = 0; round < 40; ++round) {
        expectReadingsAtOnce(4);
    }
}

TEST(ComingAndGoing, WholeDaysOnThreadsThatEnd) {
    const std::vector<Station>& all = stations();
    const WorkingDirectory directory;
    const Outcome alone = dayOfWork(all[0], GROUND_GROWING);
    for (int round = 0; round < 3; ++round) {
        Outcome again;
        // Others come and go beside it, with frames of other sizes.
        atOnce(3, [&](std::size_t i) {
            if (i == 0) {
                again = dayOfWork(all[0], GROUND_GROWING);
            } else {
                for (int reading = 0; reading < 20; ++reading) {
                    quickReading(heightOf(i));
                }
            }
        });
        EXPECT_TRUE(sameOutcome(again, alone)) << "round " << round;
    }
}

}  // namespace

}  // namespace quorvel::test

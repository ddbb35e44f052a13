// SPDX-License-Identifier: Apache-2.0
#include "image/scratch.h"

#include <array>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/same_result.h"

namespace quorvel::test {

namespace {

/// Scratch that counts its objects; each test has its own type.
template <int kTest>
struct Counter {
    static int& alive() {
        static int count = 0;
        return count;
    }
    Counter() { ++alive(); }
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;
    ~Counter() { --alive(); }
    int uses = 0;
};

TEST(Scratch, IsUsedAgain) {
    for (int use = 0; use < 3; ++use) {
        const internal::Borrowed<Counter<1>> scratch;
        EXPECT_EQ(scratch->uses++, use);
    }
    EXPECT_EQ(Counter<1>::alive(), 1);
}

TEST(Scratch, IsLentToOneUserAtATime) {
    const internal::Borrowed<Counter<2>> first;
    const internal::Borrowed<Counter<2>> second;
    EXPECT_NE(&*first, &*second);
}

TEST(Scratch, IsFreedWhenTooManyHaveBeenLent) {
    {
        const std::array<internal::Borrowed<Counter<3>>, 20> many;
        EXPECT_EQ(Counter<3>::alive(), 20);
    }
    EXPECT_EQ(Counter<3>::alive(), 16);
}

TEST(Scratch, OutlivesTheThreadsThatUseIt) {
    // Every thread measures with a ruler of its own and ends; the storage goes from one to the next.
    Draws draws(1);
    const DepthScene scene = blockScene(200);
    const cv::Mat depth = scene.depth(draws);
    const auto measured = [&scene, &depth] {
        Quorvel ruler = scene.ruler();
        setPlane(ruler, {0, 0, 1}, scene.distance, 5);
        ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
        ruler.getCameraFrame(scene.color(), depth);
        ruler.measureOnce();
        return ruler.result;
    };
    const MeasureResult expected = measured();
    ASSERT_FALSE(expected.corners.empty());
    constexpr int kRounds = 15;
    for (int round = 0; round < kRounds; ++round) {
        std::array<MeasureResult, 4> results;
        std::vector<std::thread> threads;
        for (MeasureResult& result : results) {
            threads.emplace_back([&measured, &result] { result = measured(); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (const MeasureResult& result : results) {
            EXPECT_TRUE(sameResult(result, expected)) << "round " << round;
        }
    }
}

}  // namespace

}  // namespace quorvel::test

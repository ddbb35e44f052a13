// SPDX-License-Identifier: Apache-2.0
#include "kit/replay/replay_pool.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "support/random.h"

namespace quorvel::command {

using namespace kit;
namespace {

std::vector<std::string> names(int count) {
    std::vector<std::string> all;
    for (int i = 0; i < count; ++i) {
        all.push_back(std::to_string(i));
    }
    return all;
}

ReplayOutcome outcomeOf(const std::string& folder) {
    ReplayOutcome outcome;
    outcome.folder = folder;
    return outcome;
}

bool never() {
    return false;
}

TEST(ReplayPool, HandsOutcomesOverInOrderWhateverTheyTake) {
    const std::vector<std::string> folders = names(200);
    for (const int jobs : {1, 2, 7}) {
        std::vector<std::string> taken;
        const ReplayCalls calls{[](const std::string& folder) {
                                    test::Draws draws(static_cast<std::uint64_t>(std::stoi(folder)));
                                    std::this_thread::sleep_for(std::chrono::microseconds(draws.below(500)));
                                    return outcomeOf(folder);
                                },
                                [&](const ReplayOutcome& outcome) { taken.push_back(outcome.folder); }, never};
        EXPECT_EQ(replayAll(folders, jobs, calls), folders.size());
        EXPECT_EQ(taken, folders) << jobs << " jobs";
    }
}

TEST(ReplayPool, WorksOnAsManyAtATimeAsThereAreJobs) {
    constexpr int kJobs = 3;
    std::mutex mutex;
    std::condition_variable changed;
    int inside = 0;
    // Every piece waits until three are inside: fewer threads would wait for ever.
    const ReplayCalls calls{[&](const std::string& folder) {
                                std::unique_lock<std::mutex> lock(mutex);
                                ++inside;
                                changed.notify_all();
                                changed.wait_for(lock, std::chrono::seconds(20), [&] { return inside >= kJobs; });
                                return outcomeOf(folder);
                            },
                            [](const ReplayOutcome&) {}, never};
    EXPECT_EQ(replayAll(names(kJobs), kJobs, calls), 3U);
    EXPECT_EQ(inside, kJobs);
}

TEST(ReplayPool, StopsBeforeTheNextAndHandsOverWhatWasBegun) {
    std::atomic<int> begun{0};
    std::size_t taken = 0;
    const ReplayCalls calls{[&](const std::string& folder) {
                                ++begun;
                                return outcomeOf(folder);
                            },
                            [&](const ReplayOutcome& outcome) { EXPECT_EQ(outcome.folder, std::to_string(taken++)); },
                            [&] { return begun >= 5; }};
    for (const int jobs : {1, 4}) {
        begun = 0;
        taken = 0;
        const std::size_t handed = replayAll(names(1000), jobs, calls);
        EXPECT_EQ(handed, static_cast<std::size_t>(begun));
        EXPECT_EQ(taken, handed);
        EXPECT_GE(handed, 5U);
        EXPECT_LT(handed, 5U + static_cast<std::size_t>(jobs));
    }
}

TEST(ReplayPool, AnErrorInTakingEndsTheRun) {
    std::atomic<int> begun{0};
    const ReplayCalls calls{[&](const std::string& folder) {
                                ++begun;
                                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                                return outcomeOf(folder);
                            },
                            [](const ReplayOutcome&) { throw std::runtime_error("disk full"); }, never};
    EXPECT_THROW(replayAll(names(1000), 2, calls), std::runtime_error);
    EXPECT_LT(begun, 1000);
}

TEST(ReplayPool, NoFoldersNoOutcomes) {
    const ReplayCalls calls{outcomeOf, [](const ReplayOutcome&) { FAIL() << "an outcome of nothing"; }, never};
    EXPECT_EQ(replayAll({}, 4, calls), 0U);
}

}  // namespace
}  // namespace quorvel::command

// SPDX-License-Identifier: Apache-2.0
// Rulers that work at the same time read what each of them reads alone.
#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "library/same_result.h"
#include "support/working_directory.h"
#include "threads/at_once.h"
#include "threads/station.h"

namespace quorvel::test {

namespace {

constexpr std::array<ProductType, kStations> kModes{KIOSK, GROUND_TRACKING, GROUND_GROWING, KIOSK_LOW_OBJECT};
constexpr int kRounds = 2;

/// The expected results of the days: each day is done alone, in its own folder.
std::vector<Outcome> aloneOutcomes(const std::vector<ProductType>& modes) {
    const WorkingDirectory directory;
    std::vector<Outcome> outcomes;
    for (std::size_t i = 0; i < modes.size(); ++i) {
        outcomes.push_back(dayOfWork(stations()[i], modes[i]));
    }
    return outcomes;
}

/// Day i belongs to station i and is done on a thread of its own.
void expectAsAlone(const std::vector<ProductType>& modes) {
    const std::vector<Outcome> alone = aloneOutcomes(modes);
    for (int round = 0; round < kRounds; ++round) {
        const WorkingDirectory directory;
        std::vector<Outcome> together(modes.size());
        atOnce(modes.size(), [&](std::size_t i) { together[i] = dayOfWork(stations()[i], modes[i]); });
        for (std::size_t i = 0; i < modes.size(); ++i) {
            EXPECT_TRUE(sameOutcome(together[i], alone[i])) << "round " << round << ", mode " << modes[i];
        }
    }
}

class EveryMode : public ::testing::TestWithParam<std::tuple<ProductType, std::size_t>> {};

TEST_P(EveryMode, GivesOnSeveralThreadsWhatItGivesAlone) {
    const auto [mode, threads] = GetParam();
    expectAsAlone(std::vector<ProductType>(threads, mode));
}

std::string modeAndThreads(const ::testing::TestParamInfo<EveryMode::ParamType>& info) {
    constexpr std::array<const char*, kStations> kNames{"Kiosk", "Tracking", "Growing", "LowObject"};
    const auto [mode, threads] = info.param;
    return std::string(kNames[mode]) + "On" + std::to_string(threads) + "Threads";
}

INSTANTIATE_TEST_SUITE_P(Threads, EveryMode,
                         ::testing::Combine(::testing::ValuesIn(kModes), ::testing::Values(std::size_t{2}, kStations)),
                         modeAndThreads);

TEST(MixedModes, GiveOnFourThreadsWhatTheyGiveAlone) {
    std::vector<ProductType> modes(kModes.begin(), kModes.end());
    for (std::size_t turn = 0; turn < kModes.size(); ++turn) {
        expectAsAlone(modes);
        std::rotate(modes.begin(), modes.begin() + 1, modes.end());
    }
}

/// Batches of a station's frames, one after the other.
std::vector<MeasureResult> batchReadings(const Station& station) {
    constexpr int kBatches = 12;
    constexpr float kTolerance = 20.0F;
    Quorvel ruler = dayOfWork(station, KIOSK).ruler;
    std::vector<MeasureResult> results;
    for (int i = 0; i < kBatches; ++i) {
        ruler.getCameraMultipleFrame(station.colors(), station.depths());
        EXPECT_EQ(ruler.measureMultiple(kTolerance, kTolerance, kTolerance), 0);
        results.push_back(ruler.result);
    }
    return results;
}

TEST(Batches, HandTheirStorageOnBetweenThreads) {
    // Stations 0 ... 3 show frames of one size: each batch may get what another thread's has left.
    std::vector<std::vector<MeasureResult>> alone;
    for (const Station& station : stations()) {
        const WorkingDirectory directory;
        alone.push_back(batchReadings(station));
    }
    const WorkingDirectory directory;
    std::vector<std::vector<MeasureResult>> together(kStations);
    atOnce(kStations, [&](std::size_t i) { together[i] = batchReadings(stations()[i]); });
    for (std::size_t i = 0; i < kStations; ++i) {
        ASSERT_EQ(together[i].size(), alone[i].size());
        for (std::size_t k = 0; k < alone[i].size(); ++k) {
            EXPECT_TRUE(together[i][k].inView);
            EXPECT_TRUE(sameResult(together[i][k], alone[i][k])) << "station " << i << ", batch " << k;
        }
    }
}

// The comparisons above hold nothing unless the days have something to compare.
TEST(DayOfWork, MeasuresInTheModesThatMeasure) {
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
        for (const Outcome& outcome : aloneOutcomes(std::vector<ProductType>(kStations, mode))) {
            ASSERT_FALSE(outcome.readings.empty());
            for (std::size_t i = 0; i + 1 < outcome.readings.size(); ++i) {
                EXPECT_TRUE(outcome.readings[i].inView) << "mode " << mode << ", frame " << i;
            }
            const bool batchMeasured = outcome.readings.back().inView;
            EXPECT_EQ(batchMeasured, mode != GROUND_GROWING) << "mode " << mode;
        }
    }
}

TEST(DayOfWork, FollowsItsRandomNumbers) {
    const std::vector<Outcome> first = aloneOutcomes({KIOSK, KIOSK});
    const std::vector<Outcome> second = aloneOutcomes({KIOSK, KIOSK});
    EXPECT_TRUE(sameOutcome(first[0], second[0]));
    EXPECT_FALSE(sameOutcome(first[0], first[1]));
}

}  // namespace

}  // namespace quorvel::test

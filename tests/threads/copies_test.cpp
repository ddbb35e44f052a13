// SPDX-License-Identifier: Apache-2.0
// Copies share pixels with their original and with the host; what may be done with them on several threads.
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "library/depth_scene.h"
#include "library/same_ruler.h"
#include "support/working_directory.h"
#include "threads/at_once.h"
#include "threads/station.h"

namespace quorvel::test {

namespace {

/// A ruler with a plane and the first picture of its object, measured.
Quorvel measuredRuler(const Station& station) {
    Outcome outcome = dayOfWork(station, GROUND_GROWING);
    outcome.ruler.getCameraFrame(station.occupied[0].color, station.occupied[0].depth);
    outcome.ruler.measureOnce();
    return outcome.ruler;
}

/// Takes all pictures of a station in and measures each.
std::vector<MeasureResult> readings(Quorvel& ruler, const Station& station) {
    std::vector<MeasureResult> results;
    for (const sim::Frame& frame : station.occupied) {
        ruler.getCameraFrame(frame.color, frame.depth);
        ruler.measureOnce();
        results.push_back(ruler.result);
    }
    return results;
}

void expectSame(const std::vector<MeasureResult>& a, const std::vector<MeasureResult>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_TRUE(a[i].inView) << "reading " << i;
        EXPECT_TRUE(sameResult(a[i], b[i])) << "reading " << i;
    }
}

/// \return how many headers hold the pixels
int holders(const cv::Mat& image) {
    return CV_XADD(&image.u->refcount, 0);
}

TEST(Copies, MeasureOnThreadsOfTheirOwnOnceTheyHaveTakenAFrame) {
    const Station& station = stations()[0];
    const WorkingDirectory directory;
    const Quorvel original = measuredRuler(station);
    const Quorvel before = detachedCopy(original);
    Quorvel alone(original);
    const std::vector<MeasureResult> expected = readings(alone, station);
    std::vector<Quorvel> copies(kStations, original);
    std::vector<std::vector<MeasureResult>> together(kStations);
    atOnce(kStations, [&](std::size_t i) { together[i] = readings(copies[i], station); });
    for (const std::vector<MeasureResult>& one : together) {
        expectSame(one, expected);
    }
    EXPECT_TRUE(sameRuler(original, before)) << "the original's pixels were written";
}

TEST(Copies, CanBeMadeOfOneRulerOnManyThreads) {
    const Station& station = stations()[1];
    const WorkingDirectory directory;
    const Quorvel original = measuredRuler(station);
    const int before = holders(original.pointCloud);
    std::vector<int> differing(kStations, 0);
    atOnce(kStations, [&](std::size_t i) {
        for (int round = 0; round < 200; ++round) {
            const Quorvel copy(original);
            Quorvel assigned = station.ruler();
            assigned = copy;
            differing[i] += static_cast<int>(assigned.pointCloud.data != original.pointCloud.data);
        }
    });
    EXPECT_EQ(differing, std::vector<int>(kStations, 0));
    EXPECT_EQ(holders(original.pointCloud), before) << "copies have left their holds on the pixels, or taken others'";
}

TEST(Copies, KeepTheirPixelsWhileTheOriginalGoesOnMeasuring) {
    const Station& station = stations()[2];
    const WorkingDirectory directory;
    Quorvel original = measuredRuler(station);
    const Quorvel expected = detachedCopy(original);
    for (int round = 0; round < 10; ++round) {
        original.getCameraFrame(station.occupied[0].color, station.occupied[0].depth);
        original.measureOnce();
        bool same = false;
        {
            const Quorvel copy(original);
            atOnce(2, [&](std::size_t i) {
                if (i == 0) {
                    readings(original, station);
                } else {
                    same = static_cast<bool>(sameRuler(copy, expected));
                }
            });
        }
        EXPECT_TRUE(same) << "round " << round;
    }
}

TEST(Copies, LetGoOfPixelsWhileTheOriginalLooksForStorageToUseAgain) {
    const Station& station = stations()[3];
    const WorkingDirectory directory;
    Quorvel original = measuredRuler(station);
    const std::vector<MeasureResult> expected = readings(original, station);
    for (int round = 0; round < 20; ++round) {
        std::vector<Quorvel> copies(1, original);
        std::vector<MeasureResult> again;
        double sum = 0.0;
        atOnce(2, [&](std::size_t i) {
            if (i == 0) {
                again = readings(original, station);
            } else {
                sum = cv::sum(copies.front().depthImage)[0];
                copies.clear();
            }
        });
        expectSame(again, expected);
        EXPECT_EQ(sum, cv::sum(station.occupied.back().depth)[0]);
    }
}

TEST(SharedFrames, AreReadByManyRulersAndWrittenByNone) {
    const Station& station = stations()[0];
    const WorkingDirectory directory;
    const Quorvel ready = [&station] {
        Quorvel ruler = measuredRuler(station);
        ruler.productType = KIOSK;
        return ruler;
    }();
    std::vector<cv::Mat> before;
    for (const sim::Frame& frame : station.occupied) {
        before.push_back(frame.depth.clone());
    }
    const auto batchReading = [&station, &ready] {
        Quorvel ruler = station.ruler();
        ruler.productType = ready.productType;
        setPlane(ruler, ready.refPlaneNormal, ready.refPlaneOffset, ready.minObjectPixels);
        ruler.effectiveRegion = ready.effectiveRegion;
        ruler.getCameraMultipleFrame(station.colors(), station.depths());
        ruler.measureMultiple(30.0F, 30.0F, 30.0F);
        return ruler.result;
    };
    const MeasureResult expected = batchReading();
    ASSERT_TRUE(expected.inView);
    std::vector<MeasureResult> together(kStations);
    atOnce(kStations, [&](std::size_t i) { together[i] = batchReading(); });
    for (const MeasureResult& reading : together) {
        EXPECT_TRUE(sameResult(reading, expected));
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_TRUE(sameBits(station.occupied[i].depth, before[i])) << "frame " << i;
    }
}

TEST(HandedOver, ARulerWorksOnOneThreadAfterTheOther) {
    const Station& station = stations()[1];
    const WorkingDirectory directory;
    Quorvel alone = measuredRuler(station);
    const std::vector<MeasureResult> expected = readings(alone, station);
    Quorvel ruler = station.ruler();
    std::thread([&] { ruler = measuredRuler(station); }).join();
    std::vector<MeasureResult> results;
    std::thread([&] { results = readings(ruler, station); }).join();
    expectSame(results, expected);
    EXPECT_TRUE(sameRuler(ruler, alone));
}

}  // namespace

}  // namespace quorvel::test

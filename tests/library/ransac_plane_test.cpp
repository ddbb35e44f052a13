// SPDX-License-Identifier: Apache-2.0
#include "calib/ransac_plane.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "library/calib_support.h"
#include "library/fast_forms.h"
#include "library/plain/dominant_normal.h"
#include "library/plain/normal_map.h"
#include "library/plain/ransac_plane.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const cv::Vec3f kUntouchedNormal(-77.0F, -78.0F, -79.0F);
constexpr float kUntouchedOffset = -80.0F;
const cv::Vec3f kFloorBin(1, 1, 3);
const cv::Vec3f kFloorColour(127.5F, 127.5F, 255.0F);

struct FitResult {
    int status = 0;
    cv::Vec3f normal = kUntouchedNormal;
    float offset = kUntouchedOffset;
    int nextRandom = 0;  ///< the random number that follows: tells how many were drawn
};

FitResult fit(const cv::Mat& cloud, const cv::Mat& map, const cv::Vec3f& bin, unsigned seed) {
    FitResult result;
    std::srand(seed);
    result.status = fast::ransacFitPlane(cloud, map, bin, result.normal, result.offset);
    result.nextRandom = std::rand();
    return result;
}

FitResult plainFit(const cv::Mat& cloud, const cv::Mat& map, const cv::Vec3f& bin, unsigned seed,
                   plain::RansacTrace& trace) {
    FitResult result;
    std::srand(seed);
    result.status = plain::ransacFitPlane(cloud, map, bin, result.normal, result.offset, &trace);
    result.nextRandom = std::rand();
    return result;
}

/// Fits both ways, compares every bit and the number of random numbers drawn.
/// \return what the plain form did on the way
plain::RansacTrace expectAsPlain(const cv::Mat& cloud, const cv::Mat& map, const cv::Vec3f& bin, unsigned seed,
                                 const std::string& what) {
    plain::RansacTrace trace;
    const FitResult expected = plainFit(cloud, map, bin, seed, trace);
    forEachLoopVariant([&] {
        const FitResult result = fit(cloud, map, bin, seed);
        EXPECT_EQ(result.status, expected.status) << what;
        EXPECT_TRUE(sameBits(result.normal, expected.normal)) << what;
        EXPECT_TRUE(sameBits(result.offset, expected.offset)) << what;
        EXPECT_EQ(result.nextRandom, expected.nextRandom) << what << ": the number of draws differs";
    });
    return trace;
}

void expectFailure(const FitResult& result) {
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(sameBits(result.normal, kUntouchedNormal));
    EXPECT_EQ(result.offset, kUntouchedOffset);
}

/// A cloud on a grid of 2 mm with a map in which every pixel has the floor's colour.
struct GridScene {
    GridScene(int rows, int columns, float depth)
        : cloud(rows, columns, CV_32FC3), map(rows, columns, CV_32FC3, cv::Scalar(127.5, 127.5, 255.0)) {
        const cv::Point middle(columns / 2, rows / 2);
        for (int i = 0; i < rows * columns; ++i) {
            const cv::Point pixel = cv::Point(i % columns, i / columns) - middle;
            point(i) = cv::Vec3f(static_cast<float>(pixel.x) * 2.0F, static_cast<float>(pixel.y) * 2.0F, depth);
        }
    }
    cv::Vec3f& point(int i) { return cloud.at<cv::Vec3f>(i / cloud.cols, i % cloud.cols); }
    cv::Vec3f& colour(int i) { return map.at<cv::Vec3f>(i / map.cols, i % map.cols); }

    cv::Mat cloud;
    cv::Mat map;
};

/// Visits every pixel of `count` once, neighbours one after the other far apart: 1367 is a prime that divides neither
/// of the counts used here.
int scattered(int i, int count) {
    return static_cast<int>(static_cast<long long>(i) * 1367 % count);
}

TEST(RansacFitPlane, FitsAFlatFloor) {
    GridScene scene(70, 70, 1024.0F);
    const FitResult result = fit(scene.cloud, scene.map, kFloorBin, 1);
    EXPECT_EQ(result.status, 0);
    EXPECT_NEAR(result.normal[0], 0.0, 1e-6);
    EXPECT_NEAR(result.normal[1], 0.0, 1e-6);
    EXPECT_NEAR(result.normal[2], 1.0, 1e-6);
    EXPECT_NEAR(result.offset, 1024.0, 1e-3);
}

TEST(RansacFitPlane, FourThousandCandidatesAreTooFew) {
    GridScene scene(70, 70, 1024.0F);
    for (int i = 4000; i < 4900; ++i) {
        scene.colour(i) = cv::Vec3f(0.0F, 0.0F, 0.0F);
    }
    expectFailure(fit(scene.cloud, scene.map, kFloorBin, 1));
    EXPECT_EQ(expectAsPlain(scene.cloud, scene.map, kFloorBin, 1, "4000 candidates").draws, 0);
    scene.colour(4321) = kFloorColour;
    EXPECT_EQ(fit(scene.cloud, scene.map, kFloorBin, 1).status, 0) << "4001 candidates are enough";
}

TEST(RansacFitPlane, AbsentPointsAreNoCandidates) {
    GridScene scene(70, 70, 1024.0F);
    for (int i = 4000; i < 4900; ++i) {
        scene.point(i) = cv::Vec3f(5.0F, 5.0F, 0.0F);
    }
    expectFailure(fit(scene.cloud, scene.map, kFloorBin, 1));
    scene.point(4000)[2] = 1024.0F;
    EXPECT_EQ(fit(scene.cloud, scene.map, kFloorBin, 1).status, 0);
}

TEST(RansacFitPlane, TheBandsAreOpenAndCentredOnTheBinsLowerEdge) {
    // Bin (1, 1, 3): bands (0, 128), (0, 128), (128, 256).
    for (const auto& [colour, inside] :
         {std::pair(cv::Vec3f(0.5F, 127.5F, 128.5F), true), std::pair(cv::Vec3f(0.0F, 127.5F, 255.0F), false),
          std::pair(cv::Vec3f(127.5F, 128.0F, 255.0F), false), std::pair(cv::Vec3f(127.5F, 127.5F, 128.0F), false),
          std::pair(cv::Vec3f(127.5F, 127.5F, 256.0F), false)}) {
        GridScene scene(70, 70, 1024.0F);
        for (int i = 4000; i < 4900; ++i) {
            scene.colour(i) = colour;
        }
        plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 2, "a colour at a band's edge");
        EXPECT_EQ(trace.candidates, inside ? 4900 : 4000) << colour;
    }
}

TEST(RansacFitPlane, ABoxHigherThanATenthOfTheDistanceIsLeftOut) {
    GridScene scene(80, 80, 1024.0F);
    for (int i = 0; i < 2000; ++i) {
        scene.point(i)[2] = 900.0F;
    }
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 3, "a high box");
    EXPECT_EQ(trace.candidates, 6400);
    EXPECT_EQ(trace.firstList, 4400) << "|900 - 1024| is more than 102.4";
    EXPECT_NEAR(fit(scene.cloud, scene.map, kFloorBin, 3).offset, 1024.0, 1e-3);
}

TEST(RansacFitPlane, AFitThatDoesNotImproveTheResidualEndsTheSearch) {
    // 5 of 16 points stand 70 mm above the floor, less than a tenth of its distance. The first residual is
    // 70 * 5 / 16 = 21.9; the fit through all of them lies 21.9 mm above the floor, with a residual of
    // (5 * 48.1 + 11 * 21.9) / 16 = 30.1.
    GridScene scene(80, 80, 1024.0F);
    for (int i = 0; i < 6400; ++i) {
        scene.point(scattered(i, 6400))[2] = i < 2000 ? 954.0F : 1024.0F;
    }
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 4, "a low box");
    EXPECT_EQ(trace.firstList, 6400);
    EXPECT_EQ(trace.iterations, 1);
    EXPECT_EQ(trace.draws, 1000);
    const FitResult result = fit(scene.cloud, scene.map, kFloorBin, 4);
    EXPECT_EQ(result.status, 0);
    EXPECT_NEAR(result.offset, 1002.1, 5.0);
}

TEST(RansacFitPlane, TheFloorIsTheValueWith2000AtOrAboveIt) {
    // 1999 far points are passed over, the 2000th is the floor: then the near points are more than a tenth away.
    for (const int far : {1999, 2000}) {
        GridScene scene(80, 80, 1000.0F);
        for (int i = 0; i < far; ++i) {
            scene.point(i)[2] = 1200.0F;
        }
        const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 5, "far points");
        EXPECT_EQ(trace.firstList, far == 1999 ? 4401 : 2000) << far << " far points";
    }
}

TEST(RansacFitPlane, APointExactlyATenthAwayIsLeftOut) {
    GridScene scene(80, 80, 1000.0F);
    scene.point(7)[2] = 900.0F;
    scene.point(8)[2] = std::nextafter(900.0F, 1000.0F);
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 6, "points on the edge");
    EXPECT_EQ(trace.firstList, 6399);
}

TEST(RansacFitPlane, AFirstListThatRunsDryFails) {
    // Depths from 100 to 6500 mm: within a tenth of the floor's distance lie fewer than 1000 points.
    GridScene scene(80, 80, 0.0F);
    for (int i = 0; i < 6400; ++i) {
        scene.point(i)[2] = static_cast<float>(i + 100);
    }
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 7, "scattered depths");
    ASSERT_LT(trace.firstList, 1000);
    EXPECT_EQ(trace.draws, trace.firstList) << "every entry is drawn before the list is dry";
    EXPECT_EQ(trace.iterations, 0);
    expectFailure(fit(scene.cloud, scene.map, kFloorBin, 7));
}

/// Two layers 40 mm above and below 1000 mm, mixed as on a chess board, and some points in between: the first fits
/// run through the middle, and after the band has narrowed to 10 mm only the points in between are left.
GridScene layeredScene(int upper, int between) {
    GridScene scene(75, 60, 0.0F);
    for (int i = 0; i < 4500; ++i) {
        scene.point(scattered(i, 4500))[2] = i < between ? 1000.0F : (i < between + upper ? 1040.0F : 960.0F);
    }
    return scene;
}

TEST(RansacFitPlane, ALaterListThatRunsDryFailsInSpiteOfTheFitsBefore) {
    GridScene scene = layeredScene(2225, 50);
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 8, "two layers");
    EXPECT_EQ(trace.firstList, 4500);
    EXPECT_EQ(trace.iterations, 2) << "two fits succeed, the third sampling finds 50 points";
    expectFailure(fit(scene.cloud, scene.map, kFloorBin, 8));
}

TEST(RansacFitPlane, ARoundWithoutInliersEndsTheSearchWithItsFit) {
    GridScene scene = layeredScene(2100, 0);
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 9, "two bare layers");
    EXPECT_EQ(trace.iterations, 2);
    const FitResult result = fit(scene.cloud, scene.map, kFloorBin, 9);
    EXPECT_EQ(result.status, 0);
    EXPECT_NEAR(result.offset, 997.3, 5.0) << "(2100 * 1040 + 2400 * 960) / 4500";
}

TEST(RansacFitPlane, PointsWithoutDepthAreNoInliersEvenOnThePlane) {
    // The floor z = 0.75 x + 1000 has the normal (-0.6, 0, 0.8), the colour (51, 127.5, 229.5) and passes through
    // (-4000 / 3, y, 0), where the last rows have points.
    Draws random(113);
    GridScene scene(80, 80, 0.0F);
    for (int i = 0; i < 6400; ++i) {
        scene.colour(i) = cv::Vec3f(51.0F, 127.5F, 229.5F);
        scene.point(i)[2] = 0.75F * scene.point(i)[0] + 1000.0F + random.real(-20.0F, 20.0F);
    }
    for (int i = 5600; i < 6400; ++i) {
        scene.point(i) = cv::Vec3f(-4000.0F / 3.0F, scene.point(i)[1], 0.0F);
    }
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, {0, 1, 3}, 13, "points without depth");
    EXPECT_EQ(trace.candidates, 5600);
    EXPECT_GE(trace.iterations, 2) << "the re-selection has no consequence";
    // The noise reaches 16 mm along the normal and the last band 10 mm: it may come to rest anywhere within 6 mm.
    EXPECT_NEAR(fit(scene.cloud, scene.map, {0, 1, 3}, 13).offset, 800.0, 6.0);
}

/// A layer of 24000 points at 1040 mm that lifts the first fit to about 1000 mm, and points that become denser by a
/// factor of e every 62.5 mm toward the camera, up to 940 mm: every later fit lies half a millimetre nearer than the
/// one before.
GridScene driftingScene() {
    constexpr int kCount = 320 * 215;
    constexpr int kLayer = 24000;
    constexpr double kGrowth = 0.016;   // per mm
    constexpr double kDensity = 400.0;  // points per mm at 1000 mm
    GridScene scene(320, 215, 1040.0F);
    for (int i = 0; i < kCount - kLayer; ++i) {
        const double density = std::exp(kGrowth * (1000.0 - 940.0)) - (i + 0.5) * kGrowth / kDensity;
        scene.point(scattered(i, kCount))[2] = static_cast<float>(1000.0 - std::log(density) / kGrowth);
    }
    return scene;
}

TEST(RansacFitPlane, ASlowDriftIsFollowedRoundByRound) {
    // How long the drift lasts depends on the draws, which differ from platform to platform: some seed lasts long.
    const GridScene scene = driftingScene();
    int longest = 0;
    for (unsigned seed = 1; seed <= 40 && longest <= 8; ++seed) {
        const plain::RansacTrace trace =
            expectAsPlain(scene.cloud, scene.map, kFloorBin, seed, "drift with seed " + std::to_string(seed));
        longest = std::max(longest, trace.iterations);
    }
    EXPECT_GT(longest, 8);
}

TEST(RansacFitPlane, OnlyTheFirst32768PositionsAreDrawn) {
    // The points of the last rows have an x that would make every sum infinite. Listed they are, because the mean
    // colour has no x component; drawn they are never, because 1000 draws from 40000 leave them beyond the reach.
    GridScene scene(200, 200, 1024.0F);
    for (int i = 34000; i < 40000; ++i) {
        scene.point(i)[0] = 1e30F;
    }
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 10, "a long list");
    EXPECT_EQ(trace.firstList, 40000);
    const FitResult result = fit(scene.cloud, scene.map, kFloorBin, 10);
    EXPECT_EQ(result.status, 0);
    EXPECT_NEAR(result.offset, 1024.0, 1e-3);
}

TEST(RansacFitPlane, TheSameSeedGivesTheSamePlaneAndAnotherSeedAnother) {
    Draws random(111);
    calib::FloorView view;
    view.slopeX = 0.1F;
    view.noise = 5.0F;
    const cv::Mat cloud = calib::floorCloud(view, random);
    const cv::Mat map(cloud.size(), CV_32FC3, cv::Scalar(120.0, 127.5, 250.0));
    const FitResult first = fit(cloud, map, kFloorBin, 11);
    const FitResult again = fit(cloud, map, kFloorBin, 11);
    EXPECT_EQ(first.status, 0);
    EXPECT_TRUE(sameBits(first.normal, again.normal));
    EXPECT_TRUE(sameBits(first.offset, again.offset));
    EXPECT_FALSE(sameBits(first.offset, fit(cloud, map, kFloorBin, 12).offset)) << "the seed has no influence";
}

TEST(RansacFitPlane, NothingToFitFails) {
    expectFailure(fit(cv::Mat(), cv::Mat(), kFloorBin, 1));
    expectFailure(fit(cv::Mat::zeros(1, 1, CV_32FC3), cv::Mat::zeros(1, 1, CV_32FC3), {0, 0, 0}, 1));
    expectFailure(fit(cv::Mat::zeros(90, 90, CV_32FC3), cv::Mat::zeros(90, 90, CV_32FC3), {0, 0, 0}, 1));
}

/// A scene of 200 x 200 depths in which every 13th value, counted over rows of 256, comes from another range: those are
/// the ones at which the search for the floor guesses where the farthest begin.
GridScene misleadingScene(float sampled, float others) {
    GridScene scene(200, 200, 0.0F);
    for (int i = 0; i < 40000; ++i) {
        const bool isSampled = (i / 200 * 256 + i % 200) % 13 == 0;
        scene.point(i)[2] = (isSampled ? sampled : others) + static_cast<float>(scattered(i, 40000)) * 1e-3F;
    }
    return scene;
}

TEST(RansacFitPlane, TheFloorIsFoundWhereEveryGuessMisses) {
    EXPECT_EQ(expectAsPlain(misleadingScene(900.0F, 1000.0F).cloud, misleadingScene(900.0F, 1000.0F).map, kFloorBin, 21,
                            "far more beyond the guess than expected")
                  .candidates,
              40000);
    GridScene scene = misleadingScene(1000.0F, 1000.0F);
    int raised = 0;
    for (int i = 0; i < 40000 && raised < 1500; ++i) {
        if ((i / 200 * 256 + i % 200) % 13 == 0) {
            scene.point(i)[2] += 150.0F;
            ++raised;
        }
    }
    const plain::RansacTrace trace = expectAsPlain(scene.cloud, scene.map, kFloorBin, 22, "fewer beyond the guess");
    EXPECT_EQ(trace.firstList, 38500) << "1500 far points are passed over";
}

TEST(RansacFitPlane, AValueSharedByManyIsTheFloor) {
    // 1500 points beyond it and 3500 at it: the one with 2000 at or above it is among those at it.
    GridScene scene(80, 80, 1000.0F);
    for (int i = 0; i < 5000; ++i) {
        scene.point(scattered(i, 6400))[2] = i < 1500 ? 1050.0F + static_cast<float>(i) * 0.01F : 1024.0F;
    }
    expectAsPlain(scene.cloud, scene.map, kFloorBin, 23, "many at one distance");
}

TEST(RansacFitPlane, PointsThatAreNoNumbersAreSortedAsThePlainFormSortsThem) {
    Draws random(114);
    for (int i = 0; i < 200; ++i) {
        GridScene scene(70, 70, 1000.0F);
        for (int count = random.between(1, 40); count > 0; --count) {
            const int pixel = random.below(4900);
            const int axis = random.below(3);
            const float factor = random.chance(50) ? 1e36F : 1.0F;
            scene.point(pixel)[axis] = calib::randomCoordinate(random, calib::CloudKind::kWithNonFinite) * factor;
        }
        for (int count = random.between(0, 40); count > 0; --count) {
            const int pixel = random.below(4900);
            const int channel = random.below(3);
            scene.colour(pixel)[channel] = calib::randomCoordinate(random, calib::CloudKind::kWithNonFinite);
        }
        expectAsPlain(scene.cloud, scene.map, kFloorBin, static_cast<unsigned>(i), "scene " + std::to_string(i));
    }
}

TEST(RansacFitPlane, AgreesWithThePlainFormOnLongAndNarrowClouds) {
    Draws random(115);
    for (const cv::Size& size : {cv::Size(1, 5000), cv::Size(5000, 1), cv::Size(63, 80), cv::Size(65, 80)}) {
        GridScene scene(size.height, size.width, 1000.0F);
        for (int i = 0; i < size.area(); ++i) {
            scene.point(i)[2] += random.real(-20.0F, 20.0F);
        }
        expectAsPlain(scene.cloud, scene.map, kFloorBin, 24, std::to_string(size.width));
    }
}

/// A floor of random tilt with a random box on it, noise, absent pixels and sometimes a NaN.
cv::Mat randomScene(Draws& random) {
    calib::FloorView view;
    view.width = random.between(64, 85);
    view.height = random.between(66, 85);
    view.focal = random.real(50.0F, 120.0F);
    view.slopeX = random.real(-0.4F, 0.4F);
    view.slopeY = random.real(-0.4F, 0.4F);
    view.distance = random.real(300.0F, 2500.0F);
    view.noise = random.chance(50) ? random.real(0.0F, 4.0F) : 0.0F;
    view.absent = random.chance(50) ? random.between(0, 8) : 0;
    view.wholeMm = random.chance(50);
    cv::Mat cloud = calib::floorCloud(view, random);
    const int left = random.below(view.width - 30);
    const int top = random.below(view.height - 30);
    const int width = random.between(1, 30);
    const int height = random.between(1, 30);
    const cv::Rect box(left, top, width, height);
    cloud(box) *= random.real(0.7F, 1.0F);
    if (random.chance(10)) {
        const int row = random.below(view.height);
        const int column = random.below(view.width);
        const int axis = random.below(3);
        cloud.at<cv::Vec3f>(row, column)[axis] =
            calib::randomCoordinate(random, calib::CloudKind::kWithNonFinite) / 0.0F;
    }
    return cloud;
}

TEST(RansacFitPlane, AgreesWithThePlainFormOnRandomScenes) {
    Draws random(112);
    int fitted = 0;
    int failed = 0;
    int longest = 0;
    for (int i = 0; i < 2000; ++i) {
        const cv::Mat cloud = randomScene(random);
        const cv::Mat map = plain::computeNormalMap(cloud);
        const cv::Vec3f bin = plain::dominantNormalBin(map);
        const auto seed = static_cast<unsigned>(i + 1);
        const plain::RansacTrace trace = expectAsPlain(cloud, map, bin, seed, "scene " + std::to_string(i));
        const FitResult whole = fit(cloud, map, bin, seed);
        const FitResult part = fit(calib::asSubMatrix(cloud), calib::asSubMatrix(map), bin, seed);
        EXPECT_TRUE(sameBits(part.offset, whole.offset)) << "scene " << i << " as a part of a wider matrix";
        (whole.status == 0 ? fitted : failed) += 1;
        longest = std::max(longest, trace.iterations);
    }
    EXPECT_GT(fitted, 50) << "too few scenes are fitted to mean something";
    EXPECT_GT(failed, 10) << "too few scenes fail to mean something";
    EXPECT_GT(longest, 3) << "no scene iterates";
}

}  // namespace

}  // namespace quorvel::test

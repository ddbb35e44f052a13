// SPDX-License-Identifier: Apache-2.0
// Every sensor effect against its model. A 640 x 480 frame has 307200 pixels; bands are at least five standard
// deviations of what is estimated.
#include "sim/effects.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "sim/render.h"
#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

struct Moments {
    double mean = 0.0;
    double deviation = 0.0;
};

Moments momentsOf(const std::vector<double>& values) {
    Moments moments;
    for (const double value : values) {
        moments.mean += value / static_cast<double>(values.size());
    }
    double squares = 0.0;
    for (const double value : values) {
        squares += (value - moments.mean) * (value - moments.mean);
    }
    moments.deviation = std::sqrt(squares / static_cast<double>(values.size()));
    return moments;
}

std::vector<double> valuesOf(const cv::Mat& depth) {
    const cv::Mat_<std::uint16_t> pixels(depth);
    return {pixels.begin(), pixels.end()};
}

/// A bare surface at the distance with the given noise.
Scene noisyScene(double distance, double axialNoise) {
    Scene scene = flatScene(distance);
    scene.effects.axialNoise = axialNoise;
    return scene;
}

/// A 300 x 200 x 150 mm box in the middle, 1 m below the camera.
Scene boxScene() {
    Scene scene = flatScene();
    scene.boxes = {{0.0, 0.0, 10.0, 300.0, 200.0, 150.0, cv::Vec3b()}};
    return scene;
}

TEST(NoEffects, DepthIsTheRoundedExactDepth) {
    for (std::uint32_t seed = 0; seed < 30; ++seed) {
        const Scene scene = randomScene(seed);
        const cv::Mat exact = renderDepthExact(scene);
        const cv::Mat depth = renderDepth(scene, seed);
        for (int row = 0; row < depth.rows; ++row) {
            for (int col = 0; col < depth.cols; ++col) {
                ASSERT_EQ(depth.at<std::uint16_t>(row, col), std::lround(exact.at<double>(row, col)))
                    << "seed " << seed << ", pixel (" << col << ", " << row << ")";
            }
        }
    }
}

TEST(AxialNoise, HasItsDeviationAtOneMetre) {
    const Moments moments = momentsOf(valuesOf(renderDepth(noisyScene(1000.0, 2.0))));
    EXPECT_NEAR(moments.mean, 1000.0, 0.02);
    EXPECT_NEAR(moments.deviation, std::sqrt(4.0 + 1.0 / 12.0), 0.015) << "rounding adds a variance of 1/12";
}

TEST(AxialNoise, GrowsWithTheSquareOfTheDepth) {
    const Moments half = momentsOf(valuesOf(renderDepth(noisyScene(500.0, 8.0))));
    const Moments twice = momentsOf(valuesOf(renderDepth(noisyScene(2000.0, 2.0))));
    const Moments thrice = momentsOf(valuesOf(renderDepth(noisyScene(3000.0, 2.0))));
    EXPECT_NEAR(half.deviation, std::sqrt(4.0 + 1.0 / 12.0), 0.015);
    EXPECT_NEAR(twice.deviation, std::sqrt(64.0 + 1.0 / 12.0), 0.06);
    EXPECT_NEAR(thrice.deviation, std::sqrt(324.0 + 1.0 / 12.0), 0.13);
    EXPECT_NEAR(thrice.mean, 3000.0, 0.18);
}

TEST(AxialNoise, PixelsAreIndependent) {
    const cv::Mat depth = renderDepth(noisyScene(1000.0, 5.0));
    double besides = 0.0;
    double below = 0.0;
    for (int row = 0; row + 1 < depth.rows; ++row) {
        for (int col = 0; col + 1 < depth.cols; ++col) {
            const double own = depth.at<std::uint16_t>(row, col) - 1000.0;
            besides += own * (depth.at<std::uint16_t>(row, col + 1) - 1000.0);
            below += own * (depth.at<std::uint16_t>(row + 1, col) - 1000.0);
        }
    }
    const double scale = 25.0 * 639.0 * 479.0;
    EXPECT_NEAR(besides / scale, 0.0, 0.01) << "correlation of horizontal neighbours";
    EXPECT_NEAR(below / scale, 0.0, 0.01) << "correlation of vertical neighbours";
}

TEST(AxialNoise, NeverInventsAMeasurement) {
    Scene scene = noisyScene(1000.0, 5.0);
    scene.effects.jitter = 5.0;
    scene.surface.halfExtent = 100.0;
    EXPECT_EQ(cv::countNonZero(renderDepth(scene)), 121 * 121);
}

TEST(AxialNoise, AnObjectChangesNoNoiseBesideIt) {
    Scene scene = boxScene();
    scene.effects.axialNoise = 3.0;
    const cv::Mat occupied = renderDepth(scene, 4);
    const cv::Mat empty = renderEmpty(scene, 4).depth;
    const cv::Mat onSurface = renderDepthExact(scene) == 1000.0;
    int different = 0;
    for (int row = 0; row < 480; ++row) {
        for (int col = 0; col < 640; ++col) {
            const bool differs = occupied.at<std::uint16_t>(row, col) != empty.at<std::uint16_t>(row, col);
            different += onSurface.at<std::uint8_t>(row, col) != 0 && differs ? 1 : 0;
        }
    }
    EXPECT_EQ(different, 0);
}

TEST(Jitter, MovesTheWholeFrameByItsDeviation) {
    Scene scene = flatScene();
    scene.camera = smallCamera();
    scene.effects.jitter = 3.0;
    std::vector<double> offsets;
    for (unsigned frame = 0; frame < 2000; ++frame) {
        const cv::Mat depth = renderDepth(scene, frame);
        const auto first = depth.at<std::uint16_t>(0, 0);
        ASSERT_EQ(cv::countNonZero(depth != first), 0) << "frame " << frame << " is not moved as a whole";
        offsets.push_back(first - 1000.0);
    }
    const Moments moments = momentsOf(offsets);
    EXPECT_NEAR(moments.mean, 0.0, 0.35);
    EXPECT_NEAR(moments.deviation, std::sqrt(9.0 + 1.0 / 12.0), 0.25);
}

TEST(Quantisation, ValuesAreThoseOfEqualDisparitySteps) {
    Scene scene = flatScene(1500.0);
    scene.surface.tiltYDeg = 30.0;
    scene.effects.quantisationStep = 5.0;
    const cv::Mat exact = renderDepthExact(scene);
    const cv::Mat depth = renderDepth(scene);
    std::set<int> levels;
    for (int k = 1; k < 1000; ++k) {
        levels.insert(static_cast<int>(std::lround(1.0e6 / (5.0 * k))));
    }
    std::set<int> found;
    for (int row = 0; row < depth.rows; ++row) {
        for (int col = 0; col < depth.cols; ++col) {
            const int value = depth.at<std::uint16_t>(row, col);
            const double z = exact.at<double>(row, col);
            found.insert(value);
            ASSERT_EQ(levels.count(value), 1U) << value << " mm is no step";
            ASSERT_NEAR(value, z, 0.5 * 5.0 * z * z / 1.0e6 * 1.02 + 0.5) << "farther off than half a step";
        }
    }
    // From 1324 to 2503 mm there are 10^6 / 5 * (1 / 1324 - 1 / 2503), about 71 steps.
    EXPECT_NEAR(static_cast<double>(found.size()), 71.0, 2.0);
}

TEST(Quantisation, StepGrowsWithTheSquareOfTheDepth) {
    Scene scene = flatScene();
    scene.surface.tiltYDeg = 45.0;
    scene.effects.quantisationStep = 10.0;
    const std::vector<double> values = valuesOf(renderDepth(scene));
    const std::set<double> steps(values.begin(), values.end());
    ASSERT_GT(steps.size(), 20U);
    for (auto step = std::next(steps.begin()); step != steps.end(); ++step) {
        const double low = *std::prev(step);
        EXPECT_NEAR(*step - low, 10.0 * low * *step / 1.0e6, 1.0) << "between " << low << " and " << *step;
    }
}

TEST(Quantisation, BeyondTheLastStepThereIsNoMeasurement) {
    Scene scene = flatScene(2500.0);
    scene.effects.quantisationStep = 1000.0;  // disparity steps at 1000 mm, 500 mm, ...; 2500 mm rounds to none
    EXPECT_EQ(cv::countNonZero(renderDepth(scene)), 0);
    scene.surface.distance = 1500.0;
    EXPECT_EQ(cv::countNonZero(renderDepth(scene) != 1000), 0);
}

TEST(Dropout, TakesItsShareOfThePixels) {
    Scene scene = flatScene();
    scene.effects.dropout = 0.1;
    const cv::Mat first = renderDepth(scene, 0);
    const cv::Mat second = renderDepth(scene, 1);
    EXPECT_NEAR(cv::countNonZero(first == 0) / 307200.0, 0.1, 0.003);
    EXPECT_NEAR(cv::countNonZero((first == 0) & (second == 0)) / 307200.0, 0.01, 0.001) << "frames are independent";
    EXPECT_EQ(cv::countNonZero((first != 0) & (first != 1000)), 0) << "what stays is untouched";
}

TEST(Dropout, OfOneTakesEverything) {
    Scene scene = flatScene();
    scene.effects.dropout = 1.0;
    EXPECT_EQ(cv::countNonZero(renderDepth(scene)), 0);
}

TEST(Dropout, LeavesTheNoiseOfTheOtherPixelsAlone) {
    Scene scene = noisyScene(1000.0, 3.0);
    const cv::Mat noisy = renderDepth(scene);
    scene.effects.dropout = 0.2;
    const cv::Mat dropped = renderDepth(scene);
    EXPECT_EQ(cv::countNonZero((dropped != noisy) & (dropped != 0)), 0);
}

TEST(Holes, AreDiscsOfTheGivenRadius) {
    Scene scene = flatScene();
    scene.effects.holeRadius = 10.0;
    scene.effects.holeCount = 1;
    int whole = 0;
    for (scene.seed = 1; scene.seed <= 20; ++scene.seed) {
        const cv::Mat hole = renderDepth(scene) == 0;
        int left = hole.cols;
        int right = -1;
        int top = hole.rows;
        int bottom = -1;
        for (int row = 0; row < hole.rows; ++row) {
            for (int col = 0; col < hole.cols; ++col) {
                if (hole.at<std::uint8_t>(row, col) != 0) {
                    left = std::min(left, col);
                    right = std::max(right, col);
                    top = std::min(top, row);
                    bottom = std::max(bottom, row);
                }
            }
        }
        ASSERT_GE(right, left) << "seed " << scene.seed << ": no hole at all";
        EXPECT_LE(right - left, 20) << "seed " << scene.seed;
        EXPECT_LE(bottom - top, 20) << "seed " << scene.seed;
        if (left > 0 && top > 0 && right < 639 && bottom < 479) {
            ++whole;
            EXPECT_EQ(cv::countNonZero(hole), 317)
                << "seed " << scene.seed << ": lattice points within a circle of radius 10";
        }
    }
    EXPECT_GE(whole, 15) << "too few holes lay wholly inside the picture";
}

TEST(Holes, StayWhereTheyAreFromFrameToFrame) {
    Scene scene = noisyScene(1000.0, 2.0);
    scene.effects.holeCount = 12;
    scene.effects.holeRadius = 6.5;
    const cv::Mat first = renderDepth(scene, 0) == 0;
    EXPECT_GT(cv::countNonZero(first), 700);
    EXPECT_LE(cv::countNonZero(first), 12 * 145);
    EXPECT_EQ(countDifferent(first, renderDepth(scene, 99) == 0), 0);
    scene.seed = 2;
    EXPECT_GT(countDifferent(first, renderDepth(scene, 0) == 0), 0) << "another seed moves them";
}

TEST(FlyingPixels, MixTheTwoSidesOfAnEdgeInTheirShare) {
    Scene scene = boxScene();
    const cv::Mat exact = renderDepthExact(scene);
    scene.effects.flyingPixels = 0.4;
    double edgePixels = 0.0;
    double flying = 0.0;
    std::vector<double> shares;
    for (unsigned frame = 0; frame < 10; ++frame) {
        const cv::Mat depth = renderDepth(scene, frame);
        for (int row = 1; row + 1 < 480; ++row) {
            for (int col = 1; col + 1 < 640; ++col) {
                const double own = exact.at<double>(row, col);
                double other = own;
                for (const double near : {exact.at<double>(row - 1, col), exact.at<double>(row + 1, col),
                                          exact.at<double>(row, col - 1), exact.at<double>(row, col + 1)}) {
                    other = std::abs(near - own) > std::abs(other - own) ? near : other;
                }
                const double value = depth.at<std::uint16_t>(row, col);
                if (std::abs(other - own) <= 20.0) {
                    ASSERT_EQ(value, std::round(own)) << "pixel (" << col << ", " << row << ") lies at no edge";
                    continue;
                }
                edgePixels += 1.0;
                ASSERT_GE(value, std::round(std::min(own, other)));
                ASSERT_LE(value, std::round(std::max(own, other)));
                if (value != std::round(own)) {
                    flying += 1.0;
                    shares.push_back((value - own) / (other - own));
                }
            }
        }
    }
    ASSERT_GT(edgePixels, 10000.0);
    // Mixtures within half a millimetre of the pixel's own 150 mm step round back to it: 1 in 300.
    EXPECT_NEAR(flying / edgePixels, 0.4 * (1.0 - 1.0 / 300.0), 0.025);
    EXPECT_NEAR(momentsOf(shares).mean, 0.5, 0.025);
    EXPECT_NEAR(momentsOf(shares).deviation, 1.0 / std::sqrt(12.0), 0.015) << "shares are uniform";
}

TEST(FlyingPixels, ThresholdDecidesWhatIsAnEdge) {
    Scene scene = boxScene();
    scene.effects.flyingPixels = 1.0;
    scene.effects.edgeThreshold = 151.0;
    EXPECT_EQ(countDifferent(renderDepth(scene), renderDepth(boxScene())), 0) << "no step exceeds 151 mm";
    scene.effects.edgeThreshold = 149.0;
    EXPECT_GT(countDifferent(renderDepth(scene), renderDepth(boxScene())), 1000);
}

TEST(FlyingPixels, AreNotMixedWithWhatWasNeverMeasured) {
    Scene scene = flatScene();
    scene.surface.halfExtent = 100.0;
    scene.effects.flyingPixels = 1.0;
    EXPECT_EQ(countDifferent(renderDepth(scene), renderDepth(scene, 1)), 0);
    EXPECT_EQ(cv::countNonZero(renderDepth(scene) == 1000), 121 * 121);
}

}  // namespace
}  // namespace quorvel::sim

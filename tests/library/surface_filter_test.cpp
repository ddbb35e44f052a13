// SPDX-License-Identifier: Apache-2.0
#include "measure/surface_filter.h"

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "library/measure_draws.h"
#include "library/plain/surface_filter.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const cv::Vec3f kTowardsScene(0.0F, 0.0F, 1.0F);
constexpr float kOffset = 1000.0F;

/// Points on a plane parallel to the reference plane z = 1000, `spacing` mm apart.
cv::Mat flatCloud(int rows, int columns, float spacing, float height) {
    cv::Mat cloud(rows, columns, CV_32FC3);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            cloud.at<cv::Vec3f>(row, column) = {spacing * static_cast<float>(column), spacing * static_cast<float>(row),
                                                kOffset - height};
        }
    }
    return cloud;
}

/// Filters a clone of the cloud against z = 1000; checks that the mask marks exactly the points kept, and that those
/// are unchanged.
cv::Mat keptBy(const cv::Mat& cloud, const cv::Vec3f& normal = kTowardsScene) {
    cv::Mat filtered = cloud.clone();
    cv::Mat mask(cloud.size(), CV_8UC1, cv::Scalar(99));
    internal::filterSurfacePoints(filtered, normal, kOffset, mask);
    cv::Mat expected = cv::Mat::zeros(cloud.size(), CV_32FC3);
    cloud.copyTo(expected, mask);
    EXPECT_TRUE(sameBits(filtered, expected));
    EXPECT_EQ(cv::countNonZero(mask == 255) + cv::countNonZero(mask == 0), static_cast<int>(cloud.total()));
    return mask;
}

/// The marked pixels as text, a line a row.
std::vector<std::string> picture(const cv::Mat& mask) {
    std::vector<std::string> lines;
    for (int row = 0; row < mask.rows; ++row) {
        std::string line;
        for (int column = 0; column < mask.cols; ++column) {
            line += mask.at<uchar>(row, column) == 255 ? '#' : '.';
        }
        lines.push_back(line);
    }
    return lines;
}

using Lines = std::vector<std::string>;

TEST(SurfaceFilter, KeepsNothingWithoutAnInterior) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 2), cv::Size(2, 9), cv::Size(9, 2), cv::Size(9, 1)}) {
        EXPECT_EQ(cv::countNonZero(keptBy(flatCloud(size.height, size.width, 5, 100))), 0) << size;
    }
}

TEST(SurfaceFilter, KeepsNothingOfASingleInteriorPoint) {
    // Accepted by the first pass, but alone in the second.
    EXPECT_EQ(cv::countNonZero(keptBy(flatCloud(3, 3, 5, 100))), 0);
}

TEST(SurfaceFilter, ClearsInScanOrder) {
    // The interior's corners have 3 accepted neighbours and go; the points between them keep 4 of 5.
    EXPECT_EQ(picture(keptBy(flatCloud(5, 5, 5, 100))), (Lines{".....", "..#..", ".###.", "..#..", "....."}));
    // Two interior rows: the middle of the first is visited while it still has 4 neighbours (the left corner is gone);
    // every later point has lost too many.
    EXPECT_EQ(picture(keptBy(flatCloud(4, 5, 5, 100))), (Lines{".....", "..#..", ".....", "....."}));
}

TEST(SurfaceFilter, DropsAPointWithAMissingNeighbour) {
    cv::Mat cloud = flatCloud(7, 7, 5, 100);
    const Lines whole{".......", "..###..", ".#####.", ".#####.", ".#####.", "..###..", "......."};
    EXPECT_EQ(picture(keptBy(cloud)), whole);
    // Without (0, 3) the points (1, 2), (1, 3) and (1, 4) go, and with them (1, 1) and (1, 5); the second interior row
    // then has 3 neighbours at its ends, which leaves 4 for those next to them.
    cloud.at<cv::Vec3f>(0, 3) = cv::Vec3f(0, 0, 0);
    EXPECT_EQ(picture(keptBy(cloud)),
              (Lines{".......", ".......", "..###..", ".#####.", ".#####.", "..###..", "......."}));
}

TEST(SurfaceFilter, DropsThePointsAroundAPeak) {
    // The eight points around a peak of 10 mm lie steeply below it: 10 / sqrt(101) = 0.995. The peak itself is not
    // below any of them; it is accepted and then alone.
    cv::Mat cloud = flatCloud(7, 7, 1, 100);
    cloud.at<cv::Vec3f>(3, 3)[2] -= 10.0F;
    EXPECT_EQ(cv::countNonZero(keptBy(cloud)), 0) << "what is left around the ring has too few neighbours";
    cv::Mat wide = flatCloud(11, 11, 1, 100);
    wide.at<cv::Vec3f>(5, 5)[2] -= 10.0F;
    EXPECT_EQ(picture(keptBy(wide)),
              (Lines{"...........", "..#######..", ".#########.", ".#########.", ".###...###.", ".###...###.",
                     ".###...###.", ".#########.", ".#########.", "..#######..", "..........."}));
}

class SurfaceFilterLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, SurfaceFilterLoops, runnableLoopVariants(), loopVariantName);

TEST_P(SurfaceFilterLoops, ComparesTheSteepnessWithTheSinglePrecisionBound) {
    // A step of 4 mm over 3 mm is 4 / 5 = 0.8 exactly, below the bound 0.800000012: not steep. Diagonal neighbours are
    // less steep still.
    const auto withStep = [](float depthStep) {
        cv::Mat cloud = flatCloud(9, 12, 3, 100);
        for (int row = 0; row < cloud.rows; ++row) {
            for (int column = 6; column < cloud.cols; ++column) {
                cloud.at<cv::Vec3f>(row, column)[2] -= depthStep;
            }
        }
        return keptBy(cloud);
    };
    EXPECT_EQ(picture(withStep(4.0F))[4], ".##########.");
    // 4.0078125 over 3 is 0.80056: the lower side of the step goes, the upper stays.
    EXPECT_EQ(picture(withStep(4.0078125F))[4], ".####.#####.");
    EXPECT_EQ(picture(withStep(-4.0078125F))[4], ".#####.####.");
}

TEST_P(SurfaceFilterLoops, ComparesTheSteepnessInDouble) {
    // The upper side of a 4 mm step ends at x = gap instead of 0, the lower begins at 3: 4 / |(3 - gap, 4)| is 0.8 plus
    // about 0.096 gap. The bound is 0.8 plus 1.19e-8.
    const auto lowerEdgeKept = [](float gap) {
        cv::Mat cloud = flatCloud(9, 12, 3, 100);
        for (int row = 0; row < cloud.rows; ++row) {
            for (int column = 0; column < cloud.cols; ++column) {
                auto& point = cloud.at<cv::Vec3f>(row, column);
                point[0] = column == 5 ? gap : static_cast<float>(3 * (column - 5));
                point[2] += column > 5 ? 4.0F : 0.0F;
            }
        }
        return keptBy(cloud).at<uchar>(4, 6) == 255;
    };
    EXPECT_TRUE(lowerEdgeKept(6e-8F)) << "0.8 + 0.58e-8";
    EXPECT_FALSE(lowerEdgeKept(2e-7F)) << "0.8 + 1.9e-8; the length, 5 - 1.2e-7, would be 5 as a float";
}

TEST(SurfaceFilter, NeverTakesAPointAtTheSamePlaceForSteep) {
    const cv::Mat cloud(7, 7, CV_32FC3, cv::Scalar(5, 6, 900));
    EXPECT_EQ(picture(keptBy(cloud))[3], ".#####.");
}

TEST(SurfaceFilter, NormalisesTheNormal) {
    // Twice the unit normal: heights of |900 - 1000| and the same steepness.
    cv::Mat cloud = flatCloud(9, 12, 3, 100);
    cloud.at<cv::Vec3f>(4, 6)[2] -= 3.0F;
    EXPECT_TRUE(sameBits(keptBy(cloud, {0, 0, 2}), keptBy(cloud)));
}

/// A plain with one low pyramid of a single pixel, gentle enough not to be steep (bump over 10 mm spacing).
cv::Mat plainWithBump(float height, float bump) {
    cv::Mat cloud = flatCloud(30, 30, 10, height);
    cloud.at<cv::Vec3f>(15, 15)[2] -= bump;
    return cloud;
}

TEST(SurfaceFilter, DropsAPointFarFromTheMeanHeight) {
    // 784 interior points: mean 100 + 5/784 = 100.0064, mean deviation about 2 * 5/784 = 0.0128, limit 0.057. The
    // others stray by 0.0064, the bump by 4.99.
    const cv::Mat mask = keptBy(plainWithBump(100, 5));
    EXPECT_EQ(mask.at<uchar>(15, 15), 0);
    EXPECT_EQ(mask.at<uchar>(15, 14), 255);
    EXPECT_EQ(cv::countNonZero(mask), 784 - 4 - 1);
}

TEST(SurfaceFilter, KeepsOutliersOfALowObject) {
    // Mean height 9 + 5/784 < 10.
    const cv::Mat mask = keptBy(plainWithBump(9, 5));
    EXPECT_EQ(mask.at<uchar>(15, 15), 255);
    EXPECT_EQ(cv::countNonZero(mask), 784 - 4);
}

TEST(SurfaceFilter, TestsForOutliersFromAMeanOfExactlyTenMillimetres) {
    // One point up by 4 mm, one down by 4: the sum is 7840 and the mean 10.
    cv::Mat cloud = plainWithBump(10, 4);
    cloud.at<cv::Vec3f>(8, 8)[2] += 4.0F;
    const cv::Mat mask = keptBy(cloud);
    EXPECT_EQ(mask.at<uchar>(15, 15), 0);
    EXPECT_EQ(mask.at<uchar>(8, 8), 0);
}

TEST(SurfaceFilter, MeansTheHeightsOfAllInteriorPointsEvenOfThoseDropped) {
    // Columns 0-11 at 8 mm with one bump of 48 mm; of the others every second is missing, the rest at 17 mm. The first
    // pass drops these, yet they count in the mean: (197 * 8 + 48 + 162 * 17) / 360 = 12.16 > 10, so that the outlier
    // test is on. The deviation is (197 * 4.16 + 35.84) / 198 = 4.32, the limit 19.4, and the bump strays by 35.8.
    cv::Mat cloud = flatCloud(20, 30, 100, 8);
    cloud.at<cv::Vec3f>(10, 5)[2] -= 40.0F;
    for (int row = 0; row < 20; ++row) {
        for (int column = 12; column < 30; ++column) {
            auto& point = cloud.at<cv::Vec3f>(row, column);
            point = column % 2 == 0 ? cv::Vec3f(point[0], point[1], kOffset - 17) : cv::Vec3f(0, 0, 0);
        }
    }
    const cv::Mat mask = keptBy(cloud);
    EXPECT_EQ(mask.at<uchar>(10, 5), 0) << "the mean of the accepted points alone, 8.2, would switch the test off";
    EXPECT_EQ(mask.at<uchar>(10, 4), 255);
    EXPECT_EQ(mask.at<uchar>(10, 12), 0);
}

/// Whether an outlier is dropped when all points lie in one place, far out along one axis. There the last bit of the
/// unit normal's component changes the height by half a millimetre. Only with the right bits the mean height is just
/// over 10 mm, which switches the outlier test on.
bool outlierGoes(const cv::Vec3f& normal, const cv::Vec3f& unit, int axis, float distance) {
    const float component = std::fabs(unit[axis]);
    const float farOut = 0.5F / (std::nextafter(component, 2.0F) - component);
    const int side = axis == 0 ? 1 : 0;
    cv::Vec3f place(0, 0, 0);
    place[axis] = farOut;
    cv::Mat cloud(12, 12, CV_32FC3);
    cloud.forEach<cv::Vec3f>([&](cv::Vec3f& point, const int*) { point = place; });
    // Sideways, so that it is not steep; 100 interior points gain 0.28 mm of mean height.
    cloud.at<cv::Vec3f>(6, 6)[side] = (distance > 0 ? 28.0F : -28.0F) / unit[side];
    cv::Mat mask = cv::Mat::zeros(cloud.size(), CV_8UC1);
    internal::filterSurfacePoints(cloud, normal, unit[axis] * farOut - distance, mask);
    EXPECT_EQ(mask.at<uchar>(5, 5), 255);
    return mask.at<uchar>(6, 6) == 0;
}

TEST(SurfaceFilter, DividesByTheNormalsLengthInDouble) {
    // Divided in float, y and z of the first and x of the second would differ in the last bit.
    for (const cv::Vec3f& normal : {cv::Vec3f(0.05F, -0.03F, 1.8F), cv::Vec3f(0.05F, -0.03F, 1.5F)}) {
        const cv::Vec3d wide = normal;
        const double length = std::sqrt(wide[0] * wide[0] + wide[1] * wide[1] + wide[2] * wide[2]);
        const cv::Vec3f unit(static_cast<float>(wide[0] / length), static_cast<float>(wide[1] / length),
                             static_cast<float>(wide[2] / length));
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_TRUE(outlierGoes(normal, unit, axis, 10)) << "axis " << axis << " of " << normal << ", below";
            EXPECT_TRUE(outlierGoes(normal, unit, axis, -10)) << "axis " << axis << " of " << normal << ", above";
        }
    }
}

TEST(SurfaceFilter, AcceptsACloudWithoutPoints) {
    EXPECT_EQ(cv::countNonZero(keptBy(cv::Mat::zeros(9, 9, CV_32FC3))), 0);
}

TEST(SurfaceFilter, CountsANeighbourWithANanComponentAsPresent) {
    // On the border it is in no height sum and makes no neighbour steep.
    cv::Mat cloud = flatCloud(7, 7, 5, 100);
    const cv::Mat whole = keptBy(cloud);
    cloud.at<cv::Vec3f>(0, 3) = cv::Vec3f(kNaN, 0, 0);
    EXPECT_TRUE(sameBits(keptBy(cloud), whole));
}

TEST(SurfaceFilter, KeepsNothingWhenAnInteriorHeightIsNotANumber) {
    cv::Mat cloud = flatCloud(7, 7, 5, 100);
    cloud.at<cv::Vec3f>(3, 3)[0] = kNaN;
    EXPECT_EQ(cv::countNonZero(keptBy(cloud)), 0) << "the mean is NaN, and no height is near it";
}

TEST(SurfaceFilter, WritesInPlace) {
    cv::Mat cloud = flatCloud(7, 7, 5, 100);
    const cv::Mat sameStorage = cloud;
    cv::Mat mask(7, 7, CV_8UC1, cv::Scalar(255));
    internal::filterSurfacePoints(cloud, kTowardsScene, kOffset, mask);
    EXPECT_EQ(cloud.data, sameStorage.data);
}

void addHoles(Draws& draws, cv::Mat& cloud, int percent) {
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            if (draws.chance(percent)) {
                cloud.at<cv::Vec3f>(row, column) = cv::Vec3f(0, 0, 0);
            } else if (percent > 0 && draws.below(400) == 0) {
                cloud.at<cv::Vec3f>(row, column)[draws.below(3)] = draws.chance(50) ? kNaN : kInfinity;
            }
        }
    }
}

/// A surface of random spacing, height, noise and tilt, whole numbers now and then, with holes and rare odd values.
cv::Mat drawSurface(Draws& draws) {
    // Wide ones now and then: the loops work on rows of 64 pixels.
    const int columns = draws.chance(10) ? draws.between(60, 140) : draws.between(1, 26);
    const int rows = draws.between(1, 20);
    const cv::Size size(columns, rows);
    cv::Mat cloud = drawMatrix(draws, size, CV_32FC3);
    const bool wholeNumbers = draws.chance(30);
    const float spacing = wholeNumbers ? static_cast<float>(draws.between(0, 3)) : draws.real(0.5F, 6);
    const float height = draws.chance(40) ? draws.real(5, 15) : draws.real(0, 200);
    const float noise = draws.chance(60) ? draws.real(0, 1) : draws.real(0, 8);
    const float slope = draws.chance(50) ? 0.0F : draws.real(-3, 3);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            float z = kOffset - height + slope * static_cast<float>(column) + draws.real(-noise, noise);
            z = wholeNumbers ? std::nearbyint(z) : z;
            cloud.at<cv::Vec3f>(row, column) = {spacing * static_cast<float>(column) - 20.0F,
                                                spacing * static_cast<float>(row) - 30.0F, z};
        }
    }
    const int mostHoles = draws.chance(50) ? 4 : 70;
    const int holes = draws.chance(40) ? 0 : draws.between(1, mostHoles);
    addHoles(draws, cloud, holes);
    return cloud;
}

TEST(SurfaceFilter, AddsTheHeightsInFloat) {
    // 39204 heights of 100.3 mm and more: the float sum gains 100.25 or 100.3125 a point once it is large, and the mean
    // comes out some hundredths of a millimetre off. That is the mean deviation too, so that a bump of 0.1 mm is no
    // outlier; from the exact mean it would stray by 20000 times the deviation.
    cv::Mat cloud = flatCloud(200, 200, 10, 100.3F);
    cloud.at<cv::Vec3f>(100, 100)[2] -= 0.1F;
    EXPECT_EQ(keptBy(cloud).at<uchar>(100, 100), 255);
}

TEST_P(SurfaceFilterLoops, AgreesWithThePlainFormOnLargeCloudsWithOutliers) {
    // The fifth power of an even noise has a mean of a sixth of its largest value: many points lie near the limit of
    // 4.5 mean deviations, and every rounding of the sums decides about some of them.
    Draws draws(117);
    for (int run = 0; run < 3; ++run) {
        cv::Mat cloud = flatCloud(200, 200, 10, 60);
        for (int i = 0; i < 200 * 200; ++i) {
            const float even = draws.real(-1, 1);
            cloud.at<cv::Vec3f>(i / 200, i % 200)[2] += 4.0F * even * even * even * even * even;
        }
        cv::Mat plainCloud = cloud.clone();
        cv::Mat plainMask = cv::Mat::zeros(cloud.size(), CV_8UC1);
        plain::filterSurfacePoints(plainCloud, kTowardsScene, kOffset, plainMask);
        EXPECT_TRUE(sameBits(keptBy(cloud), plainMask)) << "run " << run;
        const int kept = cv::countNonZero(plainMask);
        EXPECT_TRUE(kept > 30000 && kept < 39000) << kept << " of 39204 points: the outlier test must decide";
    }
}

TEST_P(SurfaceFilterLoops, AgreesWithThePlainFormOnRandomClouds) {
    Draws draws(104);
    int kept = 0;
    for (int run = 0; run < 2000; ++run) {
        cv::Mat cloud = drawSurface(draws);
        const cv::Vec3f unitNormal = drawNormal(draws);
        const cv::Vec3f normal = unitNormal * draws.real(0.5F, 2);
        cv::Mat mask = drawMatrix(draws, cloud.size(), CV_8UC1);
        cv::Mat plainCloud = cloud.clone();
        cv::Mat plainMask = mask.clone();
        plain::filterSurfacePoints(plainCloud, normal, kOffset, plainMask);
        internal::filterSurfacePoints(cloud, normal, kOffset, mask);
        ASSERT_TRUE(sameBits(mask, plainMask)) << "mask, run " << run;
        ASSERT_TRUE(sameBits(cloud, plainCloud)) << "cloud, run " << run;
        kept += cv::countNonZero(mask);
    }
    EXPECT_GT(kept, 5000) << "the random clouds must exercise points that stay";
}

float drawHostile(Draws& draws) {
    static const std::array<float, 18> kValues{0.0F,  -0.0F,  1e-40F, -1e-30F,   1e-22F,     1e-9F,
                                               3.0F,  4.0F,   -3.0F,  800.0F,    800.0F,     804.0F,
                                               1e15F, -2e15F, 1e30F,  kInfinity, -kInfinity, kNaN};
    return draws.oneOf(kValues);
}

TEST_P(SurfaceFilterLoops, AgreesWithThePlainFormOnHostileClouds) {
    // Equal points, points a hair apart, squares beyond the range of float, exact ties of the steepness, normals that
    // are not unit vectors.
    Draws draws(118);
    for (int run = 0; run < 2000; ++run) {
        const int columns = draws.between(3, 80);
        const int rows = draws.between(3, 6);
        cv::Mat cloud = drawMatrix(draws, {columns, rows}, CV_32FC3);
        const int odd = draws.chance(50) ? draws.below(12) : 100;
        for (int i = 0; i < cloud.rows * cloud.cols; ++i) {
            auto& point = cloud.at<cv::Vec3f>(i / cloud.cols, i % cloud.cols);
            point = {3.0F * static_cast<float>(i % cloud.cols), 3.0F * static_cast<float>(i / cloud.cols),
                     800.0F + 4.0F * static_cast<float>(draws.below(2))};
            if (draws.chance(odd)) {
                point[draws.below(3)] = drawHostile(draws);
            }
        }
        cv::Vec3f normal = kTowardsScene;
        if (!draws.chance(70)) {
            for (float& value : normal.val) {
                value = drawHostile(draws);
            }
        }
        cv::Mat mask = cv::Mat::zeros(cloud.size(), CV_8UC1);
        cv::Mat plainCloud = cloud.clone();
        cv::Mat plainMask = mask.clone();
        plain::filterSurfacePoints(plainCloud, normal, kOffset, plainMask);
        internal::filterSurfacePoints(cloud, normal, kOffset, mask);
        ASSERT_TRUE(sameBits(mask, plainMask)) << "mask, run " << run;
        ASSERT_TRUE(sameBits(cloud, plainCloud)) << "cloud, run " << run;
    }
}

}  // namespace

}  // namespace quorvel::test

// SPDX-License-Identifier: Apache-2.0
#include <climits>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "library/measure_draws.h"
#include "measure/detection_area.h"

namespace quorvel::test {

namespace {

const cv::Size kPicture(640, 480);

/// Eight corners in the middle of the picture but for one.
std::vector<cv::Point2f> cornersWith(const cv::Point2f& odd, std::size_t at) {
    std::vector<cv::Point2f> corners(8, cv::Point2f(320, 240));
    corners[at] = odd;
    return corners;
}

TEST(UsableArea, IncludesTheFarEdgesOfThePicture) {
    const internal::UsableArea area = internal::wholePicture(kPicture);
    for (const cv::Point2f& edge : {cv::Point2f(0, 0), {640, 480}, {640, 0}, {0, 480}, {-0.0F, 12}}) {
        EXPECT_TRUE(internal::allInside(cornersWith(edge, 3), area)) << edge;
    }
}

TEST(UsableArea, ExcludesEveryPositionBeyondAnEdge) {
    const internal::UsableArea area = internal::wholePicture(kPicture);
    const float below = std::nextafter(0.0F, -1.0F);
    for (const cv::Point2f& outside :
         {cv::Point2f(below, 240), {std::nextafter(640.0F, 1e9F), 240}, {320, below}, {320, 480.01F}}) {
        for (const std::size_t at : {0U, 4U, 7U}) {
            EXPECT_FALSE(internal::allInside(cornersWith(outside, at), area)) << outside << " at " << at;
        }
    }
}

TEST(UsableArea, ExcludesAPositionThatIsNotANumber) {
    const internal::UsableArea area = internal::wholePicture(kPicture);
    EXPECT_FALSE(internal::allInside(cornersWith({kNaN, 240}, 0), area));
    EXPECT_FALSE(internal::allInside(cornersWith({320, kNaN}, 7), area));
    EXPECT_FALSE(internal::allInside(cornersWith({kInfinity, 240}, 2), area));
}

TEST(SideMargin, IsTheBandAtTheObjectsTopTimesAThird) {
    // 20 mm * 600 px / (1000 - 200) mm = 15 px, times 1.3.
    EXPECT_EQ(internal::sideMarginPixels(20, 600, 1000, 200), 15.0F * 1.3F);
    EXPECT_EQ(internal::sideMarginPixels(0, 600, 1000, 200), 0.0F);
    EXPECT_EQ(internal::sideMarginPixels(-20, 600, 1000, 200), -15.0F * 1.3F);
    EXPECT_EQ(internal::sideMarginPixels(20, 600, 200, 200), kInfinity);
}

TEST(SideMargin, TruncatesTheBoundsToWholePixels) {
    // Left 19, right trunc(640 - 19.5) = 620.
    const internal::UsableArea area = internal::pictureWithoutSides(kPicture, 19.5F);
    EXPECT_EQ(area.left, 19.0F);
    EXPECT_EQ(area.right, 620.0F);
    EXPECT_TRUE(internal::allInside(cornersWith({19, 0}, 1), area));
    EXPECT_TRUE(internal::allInside(cornersWith({620, 480}, 1), area));
    EXPECT_FALSE(internal::allInside(cornersWith({18.99F, 240}, 1), area));
    EXPECT_FALSE(internal::allInside(cornersWith({620.01F, 240}, 1), area));
}

TEST(SideMargin, WidensThePictureWithANegativeBand) {
    const internal::UsableArea area = internal::pictureWithoutSides(kPicture, -19.5F);
    EXPECT_EQ(area.left, -19.0F);
    EXPECT_EQ(area.right, 659.0F);
    EXPECT_EQ(area.top, 0.0F);
    EXPECT_EQ(area.bottom, 480.0F);
}

TEST(SideMargin, LeavesNothingUsableWhenItIsNoNumber) {
    for (const float margin : {kNaN, kInfinity}) {
        const internal::UsableArea area = internal::pictureWithoutSides(kPicture, margin);
        EXPECT_EQ(area.left, static_cast<float>(INT_MIN)) << margin;
        EXPECT_EQ(area.right, static_cast<float>(INT_MIN)) << margin;
        EXPECT_FALSE(internal::allInside(cornersWith({320, 240}, 0), area)) << margin;
    }
}

}  // namespace

}  // namespace quorvel::test

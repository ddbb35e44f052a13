// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/label_placement.h"

#include <cmath>

#include <gtest/gtest.h>

#include "support/random.h"

namespace quorvel::command {

using namespace kit;
namespace {

using Edge = std::pair<cv::Point2d, cv::Point2d>;

const cv::Size kPicture{640, 480};
const cv::Size kLabel{120, 26};
constexpr double kGap = 9.0;

/// The four sides of an upright rectangle, clockwise from the top.
std::vector<Edge> sides(const cv::Rect& box) {
    const cv::Point2d a(box.x, box.y);
    const cv::Point2d b(box.x + box.width, box.y);
    const cv::Point2d c(box.x + box.width, box.y + box.height);
    const cv::Point2d d(box.x, box.y + box.height);
    return {{a, b}, {b, c}, {c, d}, {d, a}};
}

cv::Point2d middle(const cv::Rect& box) {
    return {box.x + box.width / 2.0, box.y + box.height / 2.0};
}

TEST(LabelPlacement, LabelLiesOutsideBesideTheMiddleOfItsEdge) {
    const cv::Rect box(250, 200, 140, 80);
    const auto places = placeLabels({{{sides(box)[0]}, kLabel}}, middle(box), kPicture, kGap);
    ASSERT_EQ(places.size(), 1U);
    EXPECT_EQ(places[0].anchor, cv::Point2d(320, 200));
    EXPECT_EQ(places[0].plate, cv::Rect(260, 165, 120, 26)) << "above the edge by the gap, centred";
}

TEST(LabelPlacement, TakesTheOtherEdgeWhenTheFirstIsOffThePicture) {
    const cv::Rect box(250, -30, 140, 200);
    const auto places = placeLabels({{{sides(box)[0], sides(box)[2]}, kLabel}}, middle(box), kPicture, kGap);
    EXPECT_EQ(places[0].anchor, cv::Point2d(320, 170));
    EXPECT_GE(places[0].plate.y, 170);
}

TEST(LabelPlacement, LabelsOfOneEdgeDoNotCoverOneAnother) {
    const cv::Rect box(250, 200, 140, 80);
    const LabelRequest request{{sides(box)[0]}, kLabel};
    const auto places = placeLabels({request, request, request}, middle(box), kPicture, kGap);
    for (std::size_t i = 0; i < places.size(); ++i) {
        for (std::size_t j = i + 1; j < places.size(); ++j) {
            EXPECT_EQ((places[i].plate & places[j].plate).area(), 0) << i << " and " << j;
        }
    }
}

TEST(LabelPlacement, PlatesStayInsideThePictureForAnyBox) {
    test::Draws draws(7);
    const cv::Rect picture({0, 0}, kPicture);
    for (int round = 0; round < 500; ++round) {
        const int left = draws.between(-300, 700);
        const int top = draws.between(-300, 700);
        const int width = draws.between(1, 900);
        const cv::Rect box(left, top, width, draws.between(1, 900));
        const auto edges = sides(box);
        const auto places =
            placeLabels({{{edges[0], edges[2]}, kLabel}, {{edges[1], edges[3]}, kLabel}}, middle(box), kPicture, kGap);
        for (const LabelPlace& place : places) {
            ASSERT_EQ(place.plate & picture, place.plate) << "box " << box << " plate " << place.plate;
        }
    }
}

TEST(LabelPlacement, EdgeSeenAsAPointStillGetsItsLabel) {
    const cv::Point2d point(300, 200);
    const auto places = placeLabels({{{{point, point}}, kLabel}}, {320, 240}, kPicture, kGap);
    EXPECT_LT(places[0].plate.y + places[0].plate.height, 200) << "away from the middle, upwards";
    const auto same = placeLabels({{{{point, point}}, kLabel}}, point, kPicture, kGap);
    EXPECT_EQ(same[0].plate & cv::Rect({0, 0}, kPicture), same[0].plate);
}

}  // namespace
}  // namespace quorvel::command

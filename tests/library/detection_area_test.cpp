// SPDX-License-Identifier: Apache-2.0
#include "measure/detection_area.h"

#include <array>
#include <climits>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "library/measure_draws.h"
#include "library/plain/detection_area.h"

namespace quorvel::test {

namespace {

using Quad = std::array<cv::Point2f, 4>;

const cv::Size kPicture(64, 48);

Quad squareAt(float left, float top, float side) {
    return {{{left, top}, {left + side, top}, {left + side, top + side}, {left, top + side}}};
}

bool meets(const Quad& face, const cv::Rect& region) {
    return internal::topFaceMeetsRegion(face, region, kPicture);
}

TEST(DetectionArea, FindsAnOverlap) {
    EXPECT_TRUE(meets(squareAt(10, 10, 10), {15, 15, 20, 20}));
    EXPECT_TRUE(meets(squareAt(10, 10, 10), {0, 0, 64, 48})) << "face within the region";
    EXPECT_TRUE(meets(squareAt(10, 10, 20), {18, 18, 2, 2})) << "region within the face";
    EXPECT_FALSE(meets(squareAt(10, 10, 10), {30, 10, 10, 10}));
}

TEST(DetectionArea, DrawsTheFacesOutlineButExcludesTheRegionsFarEdge) {
    // The face covers columns and rows 10 ... 20, both included.
    EXPECT_TRUE(meets(squareAt(10, 10, 10), {20, 20, 5, 5}));
    EXPECT_FALSE(meets(squareAt(10, 10, 10), {21, 10, 5, 5}));
    EXPECT_FALSE(meets(squareAt(10, 10, 10), {10, 21, 5, 5}));
    // The region covers 5 ... 9, then 5 ... 10.
    EXPECT_FALSE(meets(squareAt(10, 10, 10), {5, 5, 5, 5}));
    EXPECT_TRUE(meets(squareAt(10, 10, 10), {5, 5, 6, 6}));
}

TEST(DetectionArea, RoundsHalfPixelsToEven) {
    // 10.5 becomes 10, 11.5 becomes 12; the far corner 20.5 becomes 20.
    EXPECT_TRUE(meets(squareAt(10.5F, 10, 10), {10, 10, 1, 1}));
    EXPECT_FALSE(meets(squareAt(11.5F, 10, 10), {11, 10, 1, 1}));
    EXPECT_FALSE(meets(squareAt(10.5F, 10, 10), {21, 10, 1, 1}));
}

TEST(DetectionArea, LooksAtTheDrawnPixelsNotAtTheBounds) {
    // A thin diagonal face: its bounding box covers the region, its pixels do not.
    EXPECT_FALSE(meets({{{0, 0}, {1, 0}, {40, 40}, {39, 40}}}, {25, 5, 10, 10}));
    EXPECT_TRUE(meets({{{0, 0}, {1, 0}, {40, 40}, {39, 40}}}, {18, 15, 5, 5}));
}

TEST(DetectionArea, FindsNothingInAnEmptyRegion) {
    for (const cv::Rect& region : {cv::Rect(15, 15, 0, 0), {15, 15, 0, 9}, {15, 15, 9, 0}, {19, 19, -5, -5}, {}}) {
        EXPECT_FALSE(meets(squareAt(10, 10, 20), region)) << region;
    }
}

TEST(DetectionArea, SeesOnlyWhatLiesInThePicture) {
    EXPECT_FALSE(meets(squareAt(70, 10, 10), {60, 0, 100, 48})) << "face and region meet right of the picture";
    EXPECT_FALSE(meets(squareAt(-30, 10, 20), {-50, 0, 49, 48})) << "and left of it";
    EXPECT_TRUE(meets(squareAt(-10, -10, 12), {-100, -100, 102, 102}));
    EXPECT_TRUE(meets(squareAt(-500, -500, 2000), {63, 47, 1, 1})) << "a face around the whole picture";
}

TEST(DetectionArea, DrawsLinesAndPoints) {
    EXPECT_TRUE(meets({{{30, 20}, {30, 20}, {30, 20}, {30, 20}}}, {30, 20, 1, 1}));
    EXPECT_FALSE(meets({{{30, 20}, {30, 20}, {30, 20}, {30, 20}}}, {31, 20, 1, 1}));
    EXPECT_TRUE(meets({{{0, 20}, {50, 20}, {50, 20}, {0, 20}}}, {25, 20, 1, 1}));
}

TEST(DetectionArea, TakesARegionThatEndsBeyondTheLargestInt) {
    EXPECT_TRUE(meets(squareAt(10, 10, 10), {5, 5, INT_MAX, INT_MAX}));
    EXPECT_TRUE(meets(squareAt(10, 10, 10), {-5, -5, INT_MAX, INT_MAX}));
    EXPECT_FALSE(meets(squareAt(10, 10, 10), {INT_MAX - 5, 5, 100, 100}));
    EXPECT_FALSE(meets(squareAt(10, 10, 10), {INT_MIN, INT_MIN, 100, 100}));
    EXPECT_FALSE(meets(squareAt(10, 10, 10), {INT_MIN, INT_MIN, INT_MIN, INT_MIN}));
}

TEST(DetectionArea, FindsNothingInAPictureWithoutPixels) {
    for (const cv::Size& picture : {cv::Size(0, 0), {0, 48}, {64, 0}}) {
        EXPECT_FALSE(internal::topFaceMeetsRegion(squareAt(-5, -5, 50), {-10, -10, 100, 100}, picture)) << picture;
    }
}

TEST(DetectionArea, DrawsNoFaceLargerThanAFrameCanBe) {
    const cv::Size endless(INT_MAX, INT_MAX);
    const cv::Rect everywhere(0, 0, INT_MAX, INT_MAX);
    EXPECT_TRUE(internal::topFaceMeetsRegion(squareAt(100000, 200000, 50), everywhere, endless));
    EXPECT_TRUE(internal::topFaceMeetsRegion(squareAt(0, 0, 8191), everywhere, endless)) << "2^26 pixels";
    EXPECT_FALSE(internal::topFaceMeetsRegion(squareAt(0, 0, 8192), everywhere, endless));
    EXPECT_FALSE(internal::topFaceMeetsRegion(squareAt(0, 0, 1e6F), everywhere, endless));
    EXPECT_FALSE(internal::topFaceMeetsRegion(squareAt(-1e9F, -1e9F, 3e9F), everywhere, endless));
}

TEST(DetectionArea, NeitherCrashesNorHangsOnCornersFarOut) {
    const std::vector<float> far{kNaN, kInfinity, -kInfinity, 3e38F, -3e38F, 2147483648.0F, -2147483648.0F,
                                 2e9F, -2e9F,     1e8F,       -1e8F, 30.0F,  20.5F};
    Draws draws(108);
    const auto coordinate = [&] { return draws.oneOf(far); };
    int found = 0;
    for (int run = 0; run < 40; ++run) {
        Quad face;
        for (cv::Point2f& corner : face) {
            corner = {coordinate(), coordinate()};
        }
        const bool met = meets(face, {0, 0, 64, 48});
        EXPECT_EQ(met, meets(face, {0, 0, 64, 48})) << "the same answer twice, run " << run;
        found += met ? 1 : 0;
    }
    EXPECT_GT(found, 0);
    EXPECT_LT(found, 40);
}

TEST(DetectionArea, SeesAFaceThatReachesFarBeyondThePictureOnEverySide) {
    const auto faceOf = [](float reach) {
        return Quad{{{-reach, -reach}, {reach, -reach}, {reach, reach}, {-reach, reach}}};
    };
    for (const float reach : {1e5F, 1e7F, 1e8F, 2e9F}) {
        EXPECT_TRUE(meets(faceOf(reach), {30, 20, 4, 4})) << reach;
    }
    // What int does not hold becomes its lowest value: all four corners then lie in one place.
    EXPECT_FALSE(meets(faceOf(3e9F), {30, 20, 4, 4}));
}

/// Where a random face lies: within the picture, across its borders, beyond them, collapsed or folded.
enum class Place { Inside, AcrossBorder, Outside, Line, Point, Folded, Far, kCount };

float drawCoordinate(Draws& draws, float low, float high) {
    const float position = draws.real(low, high);
    return draws.chance(40) ? std::floor(position) + (draws.chance(50) ? 0.5F : 0.0F) : position;
}

Quad drawScattered(Draws& draws, float low, float high, const cv::Size& picture) {
    Quad face;
    for (cv::Point2f& corner : face) {
        const auto width = static_cast<float>(picture.width);
        const auto height = static_cast<float>(picture.height);
        corner.x = drawCoordinate(draws, low * width, high * width);
        corner.y = drawCoordinate(draws, low * height, high * height);
    }
    return face;
}

Quad drawRectangle(Draws& draws, const cv::Point2f& center, float largest) {
    Quad face;
    const float width = draws.real(0, largest);
    const float height = draws.real(0, largest);
    const cv::RotatedRect rectangle(center, {width, height}, draws.real(0, 180));
    rectangle.points(face.data());
    return face;
}

Quad drawFace(Draws& draws, Place place, const cv::Size& picture) {
    const auto width = static_cast<float>(picture.width);
    const auto height = static_cast<float>(picture.height);
    const float x = drawCoordinate(draws, 0, width);
    const float y = drawCoordinate(draws, 0, height);
    const cv::Point2f within(x, y);
    switch (place) {
        case Place::Inside:
            return drawRectangle(draws, within, 0.4F * width);
        case Place::AcrossBorder: {
            const cv::Point2f onEdge = draws.chance(50) ? cv::Point2f(draws.chance(50) ? 0.0F : width - 1, within.y)
                                                        : cv::Point2f(within.x, draws.chance(50) ? 0.0F : height - 1);
            return drawRectangle(draws, onEdge, width);
        }
        case Place::Outside:
            return drawRectangle(draws, {within.x + (draws.chance(50) ? width : -width), within.y}, width);
        case Place::Line: {
            const Quad ends = drawScattered(draws, -0.5F, 1.5F, picture);
            return {ends[0], ends[1], ends[draws.chance(50) ? 1U : 0U], ends[0]};
        }
        case Place::Point:
            return {within, within, within, within};
        case Place::Folded:
            return drawScattered(draws, 0, 1, picture);
        default: {
            const float low = draws.chance(10) ? -900.0F : -4.0F;
            const float high = draws.chance(10) ? 900.0F : 4.0F;
            return drawScattered(draws, low, high, picture);
        }
    }
}

cv::Rect drawRegion(Draws& draws, const cv::Size& picture) {
    if (draws.chance(10)) {
        return {draws.between(-5, 20), draws.between(-5, 20), draws.between(-9, 2), draws.between(-9, 2)};
    }
    const int spread = draws.chance(60) ? 8 : picture.width;
    return {draws.between(-spread, picture.width + 3), draws.between(-spread, picture.height + 3),
            draws.between(1, 2 * spread), draws.between(1, 2 * spread)};
}

TEST(DetectionArea, AgreesWithThePlainFormOnRandomFacesAndRegions) {
    Draws draws(109);
    const int places = static_cast<int>(Place::kCount);
    std::vector<int> met(static_cast<std::size_t>(places), 0);
    for (int run = 0; run < 21000; ++run) {
        const int place = run % places;
        const bool tiny = draws.chance(10);
        const int width = tiny ? draws.between(1, 4) : draws.between(20, 90);
        const int height = tiny ? draws.between(1, 4) : draws.between(15, 70);
        const cv::Size picture(width, height);
        const Quad face = drawFace(draws, static_cast<Place>(place), picture);
        const cv::Rect region = drawRegion(draws, picture);
        const bool expected = plain::topFaceMeetsRegion(face, region, picture);
        ASSERT_EQ(internal::topFaceMeetsRegion(face, region, picture), expected)
            << "run " << run << ": face " << face[0] << face[1] << face[2] << face[3] << ", region " << region
            << ", picture " << picture;
        met[static_cast<std::size_t>(place)] += expected ? 1 : 0;
    }
    for (int place = 0; place < places; ++place) {
        const int count = met[static_cast<std::size_t>(place)];
        EXPECT_GT(count, 5) << "kind " << place << " of face never meets a region";
        EXPECT_LT(count, 2990) << "kind " << place << " of face always meets a region";
    }
}

}  // namespace

}  // namespace quorvel::test

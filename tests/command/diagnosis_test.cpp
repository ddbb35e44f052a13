// SPDX-License-Identifier: Apache-2.0
#include "diagnosis.h"

#include <map>

#include <gtest/gtest.h>

namespace quorvel::command {
namespace {

/// A small picture of 20 x 10 pixels on a level plane at 1000 mm; what is raised is set pixel by pixel.
class DiagnosisTest : public ::testing::Test {
protected:
    DiagnosisTest() {
        facts_.plane = {{0.0F, 0.0F, 1.0F}, 1000.0F};
        facts_.minObjectHeight = 10.0F;
        facts_.minObjectPixels = 4;
        facts_.depthBefore = cv::Mat(10, 20, CV_16UC1, cv::Scalar(1000));
        facts_.depthAfter = cv::Mat::zeros(10, 20, CV_16UC1);
        facts_.smallCloud = cv::Mat(10, 20, CV_32FC3, cv::Scalar(0, 0, 1000));
        facts_.status = 1;
        facts_.detectionArea = {30, 15, 20, 10};
        facts_.usableSize = {80, 40};
    }

    /// Sets the depth that a pixel had; `height` is that of its point.
    void setPixel(int row, int col, int depth, float height) {
        facts_.depthBefore.at<std::uint16_t>(row, col) = static_cast<std::uint16_t>(depth);
        facts_.smallCloud.at<cv::Vec3f>(row, col) =
            depth == 0 ? cv::Vec3f(0, 0, 0) : cv::Vec3f(0.0F, 0.0F, 1000.0F - height);
    }

    void setCandidate(int row, int col, float height) {
        setPixel(row, col, static_cast<int>(1000.0F - height), height);
        facts_.depthAfter.at<std::uint16_t>(row, col) = facts_.depthBefore.at<std::uint16_t>(row, col);
    }

    Diagnosis diagnosis() const { return diagnose(facts_, surveyHeights(facts_)); }

    static double number(const Diagnosis& diagnosis, const std::string& name) {
        const std::map<std::string, double> numbers(diagnosis.numbers.begin(), diagnosis.numbers.end());
        const auto entry = numbers.find(name);
        EXPECT_NE(entry, numbers.end()) << "no number " << name;
        return entry == numbers.end() ? -1.0 : entry->second;
    }

    static void expectWords(const Diagnosis& diagnosis, const std::vector<std::string>& words) {
        for (const std::string& word : words) {
            EXPECT_NE(diagnosis.message.find(word), std::string::npos)
                << "expected \"" << word << "\" in: " << diagnosis.message;
        }
    }

    MeasurementFacts facts_;
};

TEST_F(DiagnosisTest, SurveyCountsEveryStation) {
    facts_.filterWeight = 0.005F;  // depths beyond 995 mm are ground
    setPixel(0, 0, 0, 0.0F);       // no depth
    setPixel(1, 1, 990, 10.0F);    // exactly the minimum height, above the ground cut
    setPixel(1, 2, 1000, 25.0F);   // raised, but deep
    setCandidate(3, 3, 30.0F);
    setCandidate(3, 4, 30.0F);
    setCandidate(4, 5, 30.0F);  // touches only by a corner
    const HeightSurvey survey = surveyHeights(facts_);
    EXPECT_EQ(survey.measured, 199);
    EXPECT_EQ(survey.removedAsGround, 195);
    EXPECT_EQ(survey.raisedButRemoved, 1);
    EXPECT_EQ(survey.candidates, 3);
    EXPECT_EQ(survey.largestRegion, 2);
    EXPECT_DOUBLE_EQ(survey.highest, 30.0);
}

TEST_F(DiagnosisTest, HighestMayLieBeyondThePlane) {
    facts_.smallCloud.setTo(cv::Scalar(0, 0, 1008));
    EXPECT_DOUBLE_EQ(surveyHeights(facts_).highest, -8.0);
}

TEST_F(DiagnosisTest, NothingHighEnoughTellsTheHighest) {
    setPixel(2, 2, 993, 7.0F);
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::NothingHighEnough);
    expectWords(found, {"10.0 mm or more", "stands 7.0 mm", "200 measured pixels", "dropped 0"});
    EXPECT_DOUBLE_EQ(number(found, "highest_mm"), 7.0);
    EXPECT_DOUBLE_EQ(number(found, "min_height_mm"), 10.0);
    EXPECT_DOUBLE_EQ(number(found, "removed_as_ground_pixels"), 0.0);
}

TEST_F(DiagnosisTest, FrameWithoutDepthIsNamed) {
    facts_.smallCloud.setTo(cv::Scalar(0, 0, 0));
    facts_.depthBefore.setTo(0);
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::NothingHighEnough);
    expectWords(found, {"no depth at all"});
    EXPECT_DOUBLE_EQ(number(found, "measured_pixels"), 0.0);
    EXPECT_DOUBLE_EQ(number(found, "highest_mm"), 0.0);
}

TEST_F(DiagnosisTest, RemovedAsGroundSuggestsANegativeWeight) {
    setPixel(2, 2, 1040, 25.0F);
    setPixel(2, 3, 1040, 20.0F);
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::RemovedAsGround);
    expectWords(found, {"all 2 pixels", "the highest 25.0 mm", "deeper than 1000.0 mm", "--filter-weight -1"});
    EXPECT_DOUBLE_EQ(number(found, "raised_but_removed_pixels"), 2.0);
    EXPECT_DOUBLE_EQ(number(found, "ground_depth_mm"), 1000.0);
}

TEST_F(DiagnosisTest, RegionOfExactlyTheMinimumIsTooSmall) {
    for (int col = 4; col < 8; ++col) {
        setCandidate(4, col, 50.0F);
    }
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::RegionTooSmall);
    expectWords(found, {"has 4 pixels", "more than 4 are needed", "1000.0 mm"});
    EXPECT_EQ(found.message.find("--filter-weight"), std::string::npos) << found.message;
    EXPECT_DOUBLE_EQ(number(found, "largest_region_pixels"), 4.0);
    EXPECT_DOUBLE_EQ(number(found, "min_object_pixels"), 4.0);
}

TEST_F(DiagnosisTest, RegionCutShortByTheGroundCutSaysSo) {
    setCandidate(4, 4, 50.0F);
    setPixel(4, 5, 1020, 45.0F);
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::RegionTooSmall);
    expectWords(found, {"another 1 raised pixels", "--filter-weight -1"});
}

TEST_F(DiagnosisTest, FewerThanFourSurfacePoints) {
    facts_.status = 0;
    facts_.surfacePoints = 3;
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::TooFewSurfacePoints);
    expectWords(found, {"left 3 points", "4 are needed"});
    EXPECT_DOUBLE_EQ(number(found, "surface_points"), 3.0);
    EXPECT_DOUBLE_EQ(number(found, "needed_points"), 4.0);
}

TEST_F(DiagnosisTest, MissedAreaTellsBothPlaces) {
    facts_.status = 0;
    facts_.surfacePoints = 4;
    facts_.cornersAnywhere = {{1, 1}, {9, 1}, {9, 8}, {1, 8}, {0, 0}, {12, 0}, {12, 9}, {0, 9}};
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::MissesArea);
    expectWords(found, {"x 0 to 12, y 0 to 9", "x 30 to 50, y 15 to 25", "--area"});
    EXPECT_DOUBLE_EQ(number(found, "top_x_max"), 12.0);
    EXPECT_DOUBLE_EQ(number(found, "area_x_min"), 30.0);
}

TEST_F(DiagnosisTest, MissedPictureIsNamed) {
    facts_.status = 0;
    facts_.surfacePoints = 100;
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::MissesArea);
    expectWords(found, {"outside the picture"});
}

TEST_F(DiagnosisTest, CornerOutsideIsTheFirstOne) {
    facts_.status = 0;
    facts_.result.corners = {{1, 1}, {79, 1}, {80, 40}, {1, 8}, {1, 1}, {79, 1}, {85.5F, 39}, {1, 41}};
    facts_.footprint = {612.4, 380.0};
    const Diagnosis found = diagnosis();
    EXPECT_EQ(found.reason, Reason::OutOfView);
    EXPECT_DOUBLE_EQ(number(found, "footprint_length_mm"), 612.4);
    expectWords(found, {"corner 6", "612 mm x 380 mm", "(85.5, 39.0)", "x 0 to 80, y 0 to 40", "2 of 8"});
    EXPECT_DOUBLE_EQ(number(found, "corner"), 6.0);
    EXPECT_DOUBLE_EQ(number(found, "corners_outside"), 2.0);
}

TEST_F(DiagnosisTest, SideBandNarrowsTheUsablePicture) {
    facts_.status = 0;
    facts_.result.sideMargin = 10.7F;
    facts_.result.corners = {{11, 1}, {9, 1}, {40, 30}, {20, 8}, {11, 1}, {60, 1}, {60, 39}, {70, 40}};
    const Diagnosis found = diagnosis();
    expectWords(found, {"corner 1", "x 10 to 69", "--side-band"});
    EXPECT_DOUBLE_EQ(number(found, "corners_outside"), 2.0);
}

TEST_F(DiagnosisTest, UndefinedCornerIsOutside) {
    facts_.status = 0;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    facts_.result.corners.assign(8, {10, 10});
    facts_.result.corners[2] = {nan, 10};
    expectWords(diagnosis(), {"corner 2", "1 of 8"});
}

TEST_F(DiagnosisTest, MeasuredHasNoReason) {
    facts_.status = 0;
    facts_.result.corners.assign(8, {10, 10});
    facts_.result.inView = true;
    EXPECT_EQ(diagnosis().reason, Reason::None);
    EXPECT_EQ(diagnosis().message, "");
}

TEST_F(DiagnosisTest, GroundCutWarningNeedsEnoughPixelsForAnObject) {
    for (int col = 0; col < 4; ++col) {
        setPixel(8, col, 1020, 45.0F);
    }
    EXPECT_EQ(groundCutWarning(facts_, surveyHeights(facts_), Reason::None), "");
    setPixel(8, 4, 1020, 45.0F);
    const HeightSurvey survey = surveyHeights(facts_);
    EXPECT_NE(groundCutWarning(facts_, survey, Reason::None).find("5 raised pixels"), std::string::npos);
    EXPECT_EQ(groundCutWarning(facts_, survey, Reason::RegionTooSmall), "") << "the reason says it already";
}

TEST(ReasonCode, NamesAreDistinct) {
    std::map<std::string, int> codes;
    for (const Reason reason :
         {Reason::None, Reason::NoPlane, Reason::NothingHighEnough, Reason::RemovedAsGround, Reason::RegionTooSmall,
          Reason::TooFewSurfacePoints, Reason::MissesArea, Reason::OutOfView}) {
        ++codes[reasonCode(reason)];
    }
    EXPECT_EQ(codes.size(), 8U);
}

}  // namespace
}  // namespace quorvel::command

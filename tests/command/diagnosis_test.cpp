// SPDX-License-Identifier: Apache-2.0
#include "kit/account/diagnosis.h"

#include <limits>
#include <map>

#include <gtest/gtest.h>

#include "measure/detection_area.h"

namespace quorvel::command {

using namespace kit;

namespace {

/// An account of a picture of 80 x 40 pixels with a level plane at 1000 mm; every test fills in what it is about.
class DiagnosisTest : public ::testing::Test {
protected:
    DiagnosisTest() {
        account_.plane = {{0.0F, 0.0F, 1.0F}, 1000.0F};
        account_.groundDepth = 1000.0F;
        account_.minHeight = 10.0F;
        account_.minPixels = 4;
        account_.picture = {80, 40};
        account_.detectionArea = {30, 15, 20, 10};
        account_.searched = true;
        account_.survey = internal::HeightSurvey{200, 0, 0.0};
        account_.footprint.usable = internal::wholePicture(account_.picture);
    }

    /// A box that was found, with these image positions of its corners.
    internal::Box& box(const std::vector<cv::Point2f>& corners) {
        account_.footprint.points = 100;
        account_.footprint.box = internal::Box();
        account_.footprint.box->corners = corners;
        return *account_.footprint.box;
    }

    void setCandidates(int candidates, int raised, int largest) {
        account_.component.candidates = candidates;
        account_.raisedPixels = raised;
        account_.component.largest = largest;
    }

    Diagnosis diagnosis(internal::Outcome outcome) {
        account_.outcome = outcome;
        return diagnose(account_);
    }

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

    internal::MeasureAccount account_;
};

using internal::Outcome;

TEST_F(DiagnosisTest, NothingHighEnoughTellsTheHighest) {
    account_.survey->highest = 7.0;
    const Diagnosis found = diagnosis(Outcome::NothingHighEnough);
    EXPECT_EQ(found.reason, Reason::NothingHighEnough);
    expectWords(found, {"10.0 mm or more", "stands 7.0 mm", "200 measured pixels", "dropped 0"});
    EXPECT_DOUBLE_EQ(number(found, "highest_mm"), 7.0);
    EXPECT_DOUBLE_EQ(number(found, "min_height_mm"), 10.0);
    EXPECT_DOUBLE_EQ(number(found, "removed_as_ground_pixels"), 0.0);
}

TEST_F(DiagnosisTest, FrameWithoutDepthIsNamed) {
    account_.survey = internal::HeightSurvey{};
    const Diagnosis found = diagnosis(Outcome::NothingHighEnough);
    EXPECT_EQ(found.reason, Reason::NothingHighEnough);
    expectWords(found, {"no depth at all"});
    EXPECT_DOUBLE_EQ(number(found, "measured_pixels"), 0.0);
    EXPECT_DOUBLE_EQ(number(found, "highest_mm"), 0.0);
}

TEST_F(DiagnosisTest, RemovedAsGroundSuggestsANegativeWeight) {
    setCandidates(0, 2, 0);
    account_.survey = internal::HeightSurvey{200, 2, 25.0};
    const Diagnosis found = diagnosis(Outcome::RemovedAsGround);
    EXPECT_EQ(found.reason, Reason::RemovedAsGround);
    expectWords(found, {"all 2 pixels", "the highest 25.0 mm", "deeper than 1000.0 mm", "--filter-weight -1"});
    EXPECT_DOUBLE_EQ(number(found, "raised_but_removed_pixels"), 2.0);
    EXPECT_DOUBLE_EQ(number(found, "ground_depth_mm"), 1000.0);
}

TEST_F(DiagnosisTest, RegionOfExactlyTheMinimumIsTooSmall) {
    setCandidates(6, 6, 4);
    const Diagnosis found = diagnosis(Outcome::RegionTooSmall);
    EXPECT_EQ(found.reason, Reason::RegionTooSmall);
    expectWords(found, {"has 4 pixels", "more than 4 are needed", "1000.0 mm"});
    EXPECT_EQ(found.message.find("--filter-weight"), std::string::npos) << found.message;
    EXPECT_DOUBLE_EQ(number(found, "candidate_pixels"), 6.0);
    EXPECT_DOUBLE_EQ(number(found, "largest_region_pixels"), 4.0);
    EXPECT_DOUBLE_EQ(number(found, "min_object_pixels"), 4.0);
}

TEST_F(DiagnosisTest, RegionCutShortByTheGroundCutSaysSo) {
    setCandidates(1, 2, 1);
    const Diagnosis found = diagnosis(Outcome::RegionTooSmall);
    EXPECT_EQ(found.reason, Reason::RegionTooSmall);
    expectWords(found, {"another 1 raised pixels", "--filter-weight -1"});
}

TEST_F(DiagnosisTest, FewerThanFourSurfacePoints) {
    account_.footprint.points = 3;
    const Diagnosis found = diagnosis(Outcome::TooFewSurfacePoints);
    EXPECT_EQ(found.reason, Reason::TooFewSurfacePoints);
    expectWords(found, {"left 3 points", "4 are needed"});
    EXPECT_DOUBLE_EQ(number(found, "surface_points"), 3.0);
    EXPECT_DOUBLE_EQ(number(found, "needed_points"), 4.0);
}

TEST_F(DiagnosisTest, MissedAreaTellsBothPlaces) {
    box({{1, 1}, {9, 1}, {9, 8}, {1, 8}, {0, 0}, {12, 0}, {12, 9}, {0, 9}});
    const Diagnosis found = diagnosis(Outcome::MissesArea);
    EXPECT_EQ(found.reason, Reason::MissesArea);
    expectWords(found, {"x 0 to 12, y 0 to 9", "x 30 to 50, y 15 to 25", "--area"});
    EXPECT_DOUBLE_EQ(number(found, "top_x_max"), 12.0);
    EXPECT_DOUBLE_EQ(number(found, "area_x_min"), 30.0);
}

TEST_F(DiagnosisTest, MissedPictureIsNamed) {
    box({{91, 1}, {99, 1}, {99, 8}, {91, 8}, {90, 0}, {102, 0}, {102, 9}, {90, 9}});
    const Diagnosis found = diagnosis(Outcome::MissesArea);
    EXPECT_EQ(found.reason, Reason::MissesArea);
    expectWords(found, {"outside the picture"});
}

TEST_F(DiagnosisTest, CornerOutsideIsTheFirstOne) {
    box({{1, 1}, {79, 1}, {80, 40}, {1, 8}, {1, 1}, {79, 1}, {85.5F, 39}, {1, 41}}).rawSides = {380.0F, 612.4F};
    const Diagnosis found = diagnosis(Outcome::OutOfView);
    EXPECT_EQ(found.reason, Reason::OutOfView);
    EXPECT_FLOAT_EQ(static_cast<float>(number(found, "footprint_length_mm")), 612.4F);
    EXPECT_DOUBLE_EQ(number(found, "footprint_width_mm"), 380.0);
    expectWords(found, {"corner 6", "612 mm x 380 mm", "(85.5, 39.0)", "x 0 to 80, y 0 to 40", "2 of 8"});
    EXPECT_DOUBLE_EQ(number(found, "corner"), 6.0);
    EXPECT_DOUBLE_EQ(number(found, "corners_outside"), 2.0);
}

TEST_F(DiagnosisTest, SideBandNarrowsTheUsablePicture) {
    box({{11, 1}, {9, 1}, {40, 30}, {20, 8}, {11, 1}, {60, 1}, {60, 39}, {70, 40}});
    account_.footprint.sideMargin = 10.7F;
    account_.footprint.usable = internal::pictureWithoutSides(account_.picture, 10.7F);
    const Diagnosis found = diagnosis(Outcome::OutOfView);
    expectWords(found, {"corner 1", "x 10 to 69", "--side-band"});
    EXPECT_DOUBLE_EQ(number(found, "corners_outside"), 2.0);
}

TEST_F(DiagnosisTest, UndefinedCornerIsOutside) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    box(std::vector<cv::Point2f>(8, {10, 10})).corners[2] = {nan, 10};
    expectWords(diagnosis(Outcome::OutOfView), {"corner 2", "1 of 8"});
}

TEST_F(DiagnosisTest, MeasuredHasNoReason) {
    EXPECT_EQ(diagnosis(Outcome::Measured).reason, Reason::None);
    EXPECT_EQ(diagnosis(Outcome::Measured).message, "");
}

TEST_F(DiagnosisTest, EveryOtherOutcomeHasAReasonInWords) {
    box(std::vector<cv::Point2f>(8, {10, 10}));
    for (const Outcome outcome : {Outcome::NoPlane, Outcome::PlaneUnusable, Outcome::NoFrame,
                                  Outcome::NothingHighEnough, Outcome::RemovedAsGround, Outcome::RegionTooSmall,
                                  Outcome::TooFewSurfacePoints, Outcome::MissesArea, Outcome::OutOfView}) {
        const Diagnosis found = diagnosis(outcome);
        EXPECT_NE(found.reason, Reason::None) << static_cast<int>(outcome);
        EXPECT_NE(found.message, "") << static_cast<int>(outcome);
    }
}

TEST_F(DiagnosisTest, GroundCutWarningNeedsEnoughPixelsForAnObject) {
    setCandidates(10, 14, 10);
    EXPECT_EQ(groundCutWarning(account_, Reason::None), "");
    setCandidates(10, 15, 10);
    EXPECT_NE(groundCutWarning(account_, Reason::None).find("5 raised pixels"), std::string::npos);
    EXPECT_EQ(groundCutWarning(account_, Reason::RegionTooSmall), "") << "the reason says it already";
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
